// SAFEARRAY: an array that knows its dimensions, its bounds and what its elements own, with Windows' layout.
//
// An array has one owner, who destroys it; a lock count tells that somebody works on its elements, and keeps it from
// being destroyed or resized. The count may be changed by any thread; the elements are for one thread at a time.
//
// Elements are owned by the array: destroying it frees texts, releases interfaces and clears VARIANTs, copying it makes
// owners of the copies.
//
// Linux: all arrays are made by SafeArrayCreate, SafeArrayCreateVector and SafeArrayCopy. A descriptor that a caller
// laid out himself (FADF_AUTO, FADF_STATIC, FADF_EMBEDDED) can be read and locked; destroying, resizing and copying it
// is refused with E_INVALIDARG. Arrays of VT_RECORD cannot be made. An array holds at most 2^32 - 1 bytes of elements.
#pragma once

#include "platform/BaseTypes.h"
#include "platform/ResultCodes.h"
#include "platform/Variant.h"

#include <cstddef>

#ifndef _WIN32

struct SAFEARRAYBOUND {
    ULONG cElements;
    LONG lLbound;
};

// 16 bytes before it, in the same block, lie facts that the flags announce: the interface identifier of the elements
// (FADF_HAVEIID), or in the last four bytes their VARTYPE (FADF_HAVEVARTYPE).
struct SAFEARRAY {
    USHORT cDims;
    USHORT fFeatures;             // FADF_...
    ULONG cbElements;             // bytes of one element
    ULONG cLocks;                 // not destroyed, not resized while above 0
    void* pvData;                 // the elements; the first dimension's index runs fastest
    SAFEARRAYBOUND rgsabound[1];  // cDims of them, the last dimension first
};
using LPSAFEARRAY = SAFEARRAY*;

static_assert(sizeof(SAFEARRAYBOUND) == 8 && sizeof(SAFEARRAY) == 32);
static_assert(offsetof(SAFEARRAY, cLocks) == 8 && offsetof(SAFEARRAY, pvData) == 16);
static_assert(offsetof(SAFEARRAY, rgsabound) == 24);

inline constexpr USHORT FADF_AUTO = 0x0001;
inline constexpr USHORT FADF_STATIC = 0x0002;
inline constexpr USHORT FADF_EMBEDDED = 0x0004;
inline constexpr USHORT FADF_FIXEDSIZE = 0x0010;
inline constexpr USHORT FADF_RECORD = 0x0020;
inline constexpr USHORT FADF_HAVEIID = 0x0040;
inline constexpr USHORT FADF_HAVEVARTYPE = 0x0080;
inline constexpr USHORT FADF_BSTR = 0x0100;
inline constexpr USHORT FADF_UNKNOWN = 0x0200;
inline constexpr USHORT FADF_DISPATCH = 0x0400;
inline constexpr USHORT FADF_VARIANT = 0x0800;
inline constexpr USHORT FADF_RESERVED = 0xF008;  // of the implementation

// An array of `cDims` dimensions, `rgsabound` in the order of the indices, all elements zero (VT_EMPTY, null). Null for
// a type that no element has, for no dimensions, and when memory is short. The caller owns it: SafeArrayDestroy.
SAFEARRAY* SafeArrayCreate(VARTYPE vt, UINT cDims, SAFEARRAYBOUND* rgsabound) noexcept;

// An array of one dimension in a single block.
SAFEARRAY* SafeArrayCreateVector(VARTYPE vt, LONG lLbound, ULONG cElements) noexcept;

// Gives up all elements and frees the array. S_OK for null. DISP_E_ARRAYISLOCKED while it is locked, with nothing
// done. A locked array nested in it is left to whoever locked it.
// Linux: needs neither memory nor stack for nested arrays, whatever their depth; the order in which elements are given
// up is not defined.
HRESULT SafeArrayDestroy(SAFEARRAY* psa) noexcept;

// Gives up all elements, but keeps the descriptor for SafeArrayDestroy. Afterwards the elements are zero, or there are
// none (`pvData` null).
HRESULT SafeArrayDestroyData(SAFEARRAY* psa) noexcept;

// A deep copy, unlocked, in *ppsaOut: nested arrays too. Null for null. *ppsaOut is null on failure: E_INVALIDARG for a
// null out pointer, E_OUTOFMEMORY, DISP_E_BADVARTYPE when an element is no VARIANT.
// Linux: nested arrays take no stack.
HRESULT SafeArrayCopy(SAFEARRAY* psa, SAFEARRAY** ppsaOut) noexcept;

// Gives the array a new last dimension: elements past its end are given up, new ones are zero. E_INVALIDARG for null,
// DISP_E_ARRAYISLOCKED while it is locked or when its size is fixed, E_OUTOFMEMORY; the array is then as it was. Moves
// the elements.
HRESULT SafeArrayRedim(SAFEARRAY* psa, SAFEARRAYBOUND* psaboundNew) noexcept;

// Locks and unlocks; each lock needs its unlock. E_INVALIDARG for null, E_UNEXPECTED for the 65,536th lock and for an
// unlock without a lock.
HRESULT SafeArrayLock(SAFEARRAY* psa) noexcept;
HRESULT SafeArrayUnlock(SAFEARRAY* psa) noexcept;

// SafeArrayLock with the address of the first element, and SafeArrayUnlock.
HRESULT SafeArrayAccessData(SAFEARRAY* psa, void** ppvData) noexcept;
HRESULT SafeArrayUnaccessData(SAFEARRAY* psa) noexcept;

// Number of dimensions, and bytes of one element. 0 for null.
UINT SafeArrayGetDim(SAFEARRAY* psa) noexcept;
UINT SafeArrayGetElemsize(SAFEARRAY* psa) noexcept;

// First and last index of dimension `nDim`, counted from 1. The last index of an empty dimension is one less than the
// first. DISP_E_BADINDEX for a dimension that is not there, E_INVALIDARG for null.
HRESULT SafeArrayGetLBound(SAFEARRAY* psa, UINT nDim, LONG* plLbound) noexcept;
HRESULT SafeArrayGetUBound(SAFEARRAY* psa, UINT nDim, LONG* plUbound) noexcept;

// Type of the elements. E_INVALIDARG for null, and when neither the descriptor nor the flags tell it.
HRESULT SafeArrayGetVartype(SAFEARRAY* psa, VARTYPE* pvt) noexcept;

// Address of the element at `rgIndices`, which has an index for each dimension. DISP_E_BADINDEX for one that is out of
// bounds, E_INVALIDARG for null. The array is not locked by it.
HRESULT SafeArrayPtrOfIndex(SAFEARRAY* psa, LONG* rgIndices, void** ppvData) noexcept;

// Copies an element out to `pv` (which is overwritten as it stands), or in from it, as VariantCopy would: the copy owns
// what it holds, and the element's former content is given up. For putting, a BSTR or an interface is `pv` itself.
// SafeArrayPtrOfIndex's codes, E_OUTOFMEMORY, VariantCopy's codes; E_INVALIDARG for a null `pv` where a value is
// needed.
HRESULT SafeArrayGetElement(SAFEARRAY* psa, LONG* rgIndices, void* pv) noexcept;
HRESULT SafeArrayPutElement(SAFEARRAY* psa, LONG* rgIndices, void* pv) noexcept;

#endif
