// The task allocator: memory that one side of a COM call allocates and the other side frees (names in STATSTG, texts
// that a function returns). Any thread.
#pragma once

#include "platform/BaseTypes.h"
#include "platform/Unknown.h"

#ifndef _WIN32

// Allocates `cb` bytes, not cleared, aligned for any type. Size 0 gives a valid block of no bytes. Null when memory is
// short. The block is freed with CoTaskMemFree or the allocator of CoGetMalloc, by any module of the process.
[[nodiscard]] LPVOID CoTaskMemAlloc(SIZE_T cb) noexcept;

// Changes the size of a block, which may move; its contents are kept up to the smaller size. A null `pv` allocates; a
// size of 0 frees the block and gives null. On failure gives null and leaves the block as it was.
[[nodiscard]] LPVOID CoTaskMemRealloc(LPVOID pv, SIZE_T cb) noexcept;

// Frees a block. Null is allowed and does nothing.
void CoTaskMemFree(LPVOID pv) noexcept;

// Gives the task allocator as an object, with a reference of the caller's own. `dwMemContext` is 1; anything else is
// E_INVALIDARG. Linux: the object lives as long as the process, GetSize may give a little more than was asked for, and
// DidAlloc always answers -1 ("cannot tell").
HRESULT CoGetMalloc(DWORD dwMemContext, LPMALLOC* ppMalloc) noexcept;

#endif
