// Deep copies in MAPI's memory: property arrays, restrictions, and the actions of rules.
//
// Every copy is made of MAPI allocations: with a `parent` (a block of MAPIAllocateBuffer) all of them go with it, and
// freeing it frees the copy; without one the result is a root for MAPIFreeBuffer. On failure the result is null, and
// what was made without a parent is freed again; with a parent it stays until that is freed.
//
// Trees from elsewhere are not trusted: a restriction or action nested deeper than kMaxCopyDepth, or of more than
// kMaxCopyNodes nodes, is MAPI_E_TOO_COMPLEX, and a kind that is not published is MAPI_E_INVALID_PARAMETER. Pointers
// and counts are the caller's word. Any thread; nothing here throws.
#pragma once

#include "mapi/MapiRestrictions.h"

// A level of nesting is some stack frames; published clients nest a handful.
inline constexpr ULONG kMaxCopyDepth = 256;
// Nodes are what one copy may cost: nodes that several parents share are copied for each.
inline constexpr ULONG kMaxCopyNodes = 65536;

// Copies an array of properties as one block. Each failure is reported in the log.
HRESULT HrDupPropset(int count, LPSPropValue props, LPVOID parent, LPSPropValue* copy) noexcept;

// A null source gives a null copy.
HRESULT HrCopyRestriction(const SRestriction* source, LPVOID parent, LPSRestriction* copy) noexcept;
HRESULT HrCopyActions(const ACTIONS* source, LPVOID parent, LPACTIONS* copy) noexcept;

// Copies `count` restrictions into an array of the caller's, which goes with `parent`; MAPI_E_INVALID_PARAMETER without
// one. The array holds nothing of use after a failure.
HRESULT HrCopyRestrictionArray(const SRestriction* source, LPVOID parent, ULONG count, LPSRestriction copy) noexcept;

// Whether a property holds a restriction or actions, which MAPI's PropCopyMore does not copy.
bool IsCopiedHere(const SPropValue& prop) noexcept;

// Copies such a property, with what it points at. A failure is reported in the log.
HRESULT HrCopySpecialProp(const SPropValue& source, LPVOID parent, SPropValue& copy) noexcept;
