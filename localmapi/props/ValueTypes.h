// The types that a property value may have, and how its bytes are found: for what handles values of every type alike.
#pragma once

#include "mapi/MapiTypes.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace localmapi {

enum class ValueKind : std::uint8_t {
    None,      // nothing in the value
    Number,    // `size` bytes within the value
    Guid,      // a pointer to 16 bytes
    Text8,     // a pointer to a terminated text
    TextWide,  // likewise
    Binary,    // a count and a pointer
    Tree,      // a pointer to a restriction or to actions
};

struct ValueType {
    ULONG type;
    ValueKind kind;
    std::uint8_t size;  // of one value, or of the element that stands for it in an array
    bool mayBeMultiple;
};

inline constexpr auto kValueTypes = std::to_array<ValueType>({
    {PT_NULL, ValueKind::None, 0, false},
    {PT_I2, ValueKind::Number, 2, true},
    {PT_LONG, ValueKind::Number, 4, true},
    {PT_R4, ValueKind::Number, 4, true},
    {PT_DOUBLE, ValueKind::Number, 8, true},
    {PT_CURRENCY, ValueKind::Number, 8, true},
    {PT_APPTIME, ValueKind::Number, 8, true},
    {PT_ERROR, ValueKind::Number, 4, false},
    {PT_BOOLEAN, ValueKind::Number, 2, false},
    {PT_OBJECT, ValueKind::None, 0, false},
    {PT_I8, ValueKind::Number, 8, true},
    {PT_STRING8, ValueKind::Text8, sizeof(LPSTR), true},
    {PT_UNICODE, ValueKind::TextWide, sizeof(LPWSTR), true},
    {PT_SYSTIME, ValueKind::Number, 8, true},
    {PT_CLSID, ValueKind::Guid, sizeof(GUID), true},
    {PT_SVREID, ValueKind::Binary, sizeof(SBinary), false},
    {PT_SRESTRICTION, ValueKind::Tree, 0, false},
    {PT_ACTIONS, ValueKind::Tree, 0, false},
    {PT_BINARY, ValueKind::Binary, sizeof(SBinary), true},
});

inline constexpr bool IsMultiple(ULONG tag) noexcept {
    return (tag & MV_FLAG) != 0;
}

// The type in a tag, or, with MV_FLAG, that of its elements; null for one that there is not. MV_INSTANCE in a tag is of
// no account: the value is one of the elements or all of them, as MV_FLAG says.
constexpr const ValueType* ValueTypeOf(ULONG tag) noexcept {
    for (const ValueType& row : kValueTypes) {
        if (row.type == (PROP_TYPE(tag) & ~MVI_FLAG)) {
            return IsMultiple(tag) && !row.mayBeMultiple ? nullptr : &row;
        }
    }
    return nullptr;
}

// What every multi-valued member of a value looks like.
struct Elements {
    ULONG count;
    void* first;
};
static_assert(sizeof(Elements) == sizeof(SBinaryArray) && offsetof(Elements, first) == offsetof(SBinaryArray, lpbin));

inline Elements ElementsOf(const SPropValue& value) noexcept {
    Elements elements;
    std::memcpy(&elements, &value.Value, sizeof(elements));
    return elements;
}

inline void SetElements(SPropValue& value, ULONG count, void* first) noexcept {
    const Elements elements{count, first};
    std::memcpy(&value.Value, &elements, sizeof(elements));
}

// One of several values as a value of its own, which borrows its text or bytes. `index` is below the count; the value
// is valid.
SPropValue ElementAt(const SPropValue& value, ULONG index) noexcept;

}  // namespace localmapi
