// Property tags by their published names ([MS-OXPROPS], and the MAPI reference for those of the client side).
//
// The tags are the rows of PropTagRows.inc: a name, a type and an id. A row of text gives three names: PR_SUBJECT_W for
// wide text, PR_SUBJECT_A for 8-bit text, and PR_SUBJECT, which is the wide form. A program that wants a table of all
// of them, by name, includes the rows with macros of its own.
#pragma once

#include "mapi/MapiTypes.h"

#define VX_TAG(name, type, id) inline constexpr ULONG name = PROP_TAG(type, id);
#define VX_TEXT_TAG(name, id)                                   \
    inline constexpr ULONG name##_W = PROP_TAG(PT_UNICODE, id); \
    inline constexpr ULONG name##_A = PROP_TAG(PT_STRING8, id); \
    inline constexpr ULONG name = name##_W;
#define VX_TEXTS_TAG(name, id)                                     \
    inline constexpr ULONG name##_W = PROP_TAG(PT_MV_UNICODE, id); \
    inline constexpr ULONG name##_A = PROP_TAG(PT_MV_STRING8, id); \
    inline constexpr ULONG name = name##_W;
#include "mapi/PropTagRows.inc"
#undef VX_TAG
#undef VX_TEXT_TAG
#undef VX_TEXTS_TAG
