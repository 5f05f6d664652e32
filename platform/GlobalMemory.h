// Global memory blocks: the HGLOBAL under a memory stream or a memory byte array, whose owner may let it grow.
// A block is used by one thread at a time; different blocks are independent.
#pragma once

#include "platform/BaseTypes.h"

#ifndef _WIN32

inline constexpr UINT GMEM_FIXED = 0x0000;     // the handle is the address of the bytes
inline constexpr UINT GMEM_MOVEABLE = 0x0002;  // the handle stays, the bytes may move while no lock is held
inline constexpr UINT GMEM_ZEROINIT = 0x0040;  // bytes that an allocation adds are 0
inline constexpr UINT GMEM_MODIFY = 0x0080;    // GlobalReAlloc: change the attributes, not the size
inline constexpr UINT GMEM_SHARE = 0x2000;     // ignored, as on Windows
inline constexpr UINT GHND = GMEM_MOVEABLE | GMEM_ZEROINIT;
inline constexpr UINT GPTR = GMEM_FIXED | GMEM_ZEROINIT;

// Allocates a block of `dwBytes` bytes. Null when memory is short. Size 0 with GMEM_MOVEABLE gives a handle without
// bytes, which GlobalReAlloc can give some.
[[nodiscard]] HGLOBAL GlobalAlloc(UINT uFlags, SIZE_T dwBytes) noexcept;

// Changes the size of a block, keeping its contents up to the smaller size; with GMEM_ZEROINIT the added bytes are 0.
// A movable block without a lock moves freely and keeps its handle. A locked or fixed block moves only with
// GMEM_MOVEABLE, which ends the validity of the addresses that were given for it: a fixed one then has the new handle
// that is returned. Null on failure; the block is as it was. Linux: without GMEM_MOVEABLE a locked or fixed block never
// grows, since nothing here grows in place for certain, and GMEM_MODIFY gives the handle back unchanged.
[[nodiscard]] HGLOBAL GlobalReAlloc(HGLOBAL hMem, SIZE_T dwBytes, UINT uFlags) noexcept;

// Gives the address of the block's bytes, and holds them there until as many calls of GlobalUnlock. Null for a handle
// without bytes.
LPVOID GlobalLock(HGLOBAL hMem) noexcept;

// Takes one lock back. TRUE while others remain, and always for a fixed block; FALSE when it was the last one.
BOOL GlobalUnlock(HGLOBAL hMem) noexcept;

// Gives the number of bytes. Linux: exactly what was asked for, where Windows may round up.
SIZE_T GlobalSize(HGLOBAL hMem) noexcept;

// Frees the block, locked or not, and gives null. Null is allowed.
HGLOBAL GlobalFree(HGLOBAL hMem) noexcept;

#endif
