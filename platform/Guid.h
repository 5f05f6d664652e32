// GUIDs: structure, comparison, and a maker for the family {xxxxxxxx-0000-0000-C000-000000000046}.
#pragma once

#include "platform/BaseTypes.h"

#include <cstdint>
#include <cstring>

#ifndef _WIN32

struct GUID {
    std::uint32_t Data1;
    std::uint16_t Data2;
    std::uint16_t Data3;
    std::uint8_t Data4[8];
};
static_assert(sizeof(GUID) == 16 && alignof(GUID) == 4);

using IID = GUID;
using CLSID = GUID;
using REFGUID = const GUID&;
using REFIID = const IID&;
using REFCLSID = const CLSID&;

inline bool operator==(const GUID& a, const GUID& b) noexcept {
    return std::memcmp(&a, &b, sizeof(GUID)) == 0;
}
inline bool operator!=(const GUID& a, const GUID& b) noexcept {
    return !(a == b);
}
inline BOOL IsEqualGUID(REFGUID a, REFGUID b) noexcept {
    return a == b ? TRUE : FALSE;
}
inline BOOL IsEqualIID(REFIID a, REFIID b) noexcept {
    return a == b ? TRUE : FALSE;
}
inline BOOL IsEqualCLSID(REFCLSID a, REFCLSID b) noexcept {
    return a == b ? TRUE : FALSE;
}

inline constexpr GUID GUID_NULL = {0, 0, 0, {0, 0, 0, 0, 0, 0, 0, 0}};

#endif

// The identifier {first-0000-0000-C000-000000000046}, the family that OLE and MAPI were given.
constexpr GUID OleGuid(std::uint32_t first) noexcept {
    return GUID{first, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
}
