// Named properties by their published names, [MS-OXPROPS]. A named property has no tag of its own: each store gives the
// name an id from 0x8000 on, which IMAPIProp::GetIDsFromNames tells.
//
// The constants are the rows of NamedPropRows.inc; a program that wants a table of all of them, by name, includes the
// rows with a macro of its own.
#pragma once

#include "mapi/MapiGuids.h"
#include "mapi/MapiTypes.h"
#include "platform/WideText.h"

// A name that is a number within a property set, and the type that its values have.
struct NamedProperty {
    const GUID* set;
    LONG id;
    ULONG type;
};

// A name that is a text within a property set. Case counts.
struct TextNamedProperty {
    const GUID* set;
    LPCWSTR name;
    ULONG type;
};

#define VX_NAMED(name, set, id, type) inline constexpr NamedProperty name = {&set, id, type};
#include "mapi/NamedPropRows.inc"
#undef VX_NAMED

inline constexpr TextNamedProperty PidNameKeywords = {&PS_PUBLIC_STRINGS, "Keywords"_w, PT_MV_UNICODE};
inline constexpr TextNamedProperty PidNameContentClass = {&PS_INTERNET_HEADERS, "Content-Class"_w, PT_UNICODE};
inline constexpr TextNamedProperty PidNameContentType = {&PS_INTERNET_HEADERS, "Content-Type"_w, PT_UNICODE};
