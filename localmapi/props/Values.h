// What can be done with property values whatever object they belong to: copied, measured, compared, matched, and their
// texts turned from one width to the other. Any thread.
//
// A value of an unknown type, with a null pointer where bytes are promised, or with counts that cannot be, is refused
// before it is followed; but pointers of callers have to point at what their type says.
#pragma once

#include "localmapi/base/Bytes.h"
#include "localmapi/props/MapiMemory.h"
#include "mapi/MapiRestrictions.h"
#include "mapi/MapiTypes.h"
#include "platform/WideText.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace localmapi {

// ---- Making values --------------------------------------------------------------------------------------------------

inline SPropValue ErrorValue(ULONG tag, SCODE code) noexcept {
    SPropValue value{};
    value.ulPropTag = CHANGE_PROP_TYPE(tag, PT_ERROR);
    value.Value.err = code;
    return value;
}

SPropValue LongValue(ULONG tag, std::int32_t number) noexcept;
SPropValue BoolValue(ULONG tag, bool truth) noexcept;

// The bytes are copied into `memory`. A text is terminated; `tag` is of type PT_UNICODE or PT_STRING8.
SPropValue BinaryValue(ULONG tag, ByteView bytes, ValueMemory& memory);
SPropValue WideValue(ULONG tag, WideView text, ValueMemory& memory);
SPropValue NarrowValue(ULONG tag, std::string_view text, ValueMemory& memory);

// From the bytes that files keep values in: little-endian numbers, texts without terminators, elements of fixed size one
// behind the other. Nothing for a type that is not of that kind (texts and binaries with several values, objects), and
// for too few bytes. A Boolean may have one byte or two.
std::optional<SPropValue> ValueFromBytes(ULONG tag, ByteView bytes, ValueMemory& memory);

// ---- Reading values -------------------------------------------------------------------------------------------------

// False for a value of a type that MAPI does not have, or whose pointers are null where they must not be.
bool IsValid(const SPropValue& value) noexcept;

// Bytes of the value alone, as PR_MESSAGE_SIZE and RES_SIZE count them: of a text with its terminator, of several
// values their sum, of PT_BOOLEAN two. 0 for what has no value (PT_NULL, PT_OBJECT), and for restrictions and actions.
std::uint64_t SizeOf(const SPropValue& value) noexcept;

inline ByteView BytesOf(const SBinary& binary) noexcept {
    return {reinterpret_cast<const std::byte*>(binary.lpb), binary.cb};
}

// ---- Copying --------------------------------------------------------------------------------------------------------

// A deep copy: what the copy points at lies in `memory`. PT_OBJECT, PT_ERROR and PT_NULL copy as they stand;
// restrictions and actions deeply. MAPI_E_INVALID_PARAMETER for a value that is not valid; of restrictions and actions,
// what CopyRestriction says.
HRESULT CopyValue(const SPropValue& from, ValueMemory& memory, SPropValue& to);

// What CopyValue takes from its memory for a valid value: one block of this many bytes, a multiple of
// ValueMemory::kAlignment, or none at all when it is 0. Restrictions and actions take several blocks and are 0 here.
std::size_t PointedSize(const SPropValue& value) noexcept;

// Whether a value is a restriction or actions.
bool IsTree(const SPropValue& value) noexcept;

// Makes the pointers of a value, all into one block, point into another: what pointed at `from` + n points at `to` + n.
// The block's bytes are at `block` meanwhile, wherever the pointers lead. False for a tree and for an unknown type.
bool Relocate(SPropValue& value, const void* from, void* block, const void* to) noexcept;

// A deep copy of a restriction. MAPI_E_TOO_COMPLEX beyond kDeepestRestriction levels or kLargestRestriction nodes;
// MAPI_E_INVALID_PARAMETER for a null pointer, a value that is not valid, or a kind of node that there is not.
inline constexpr unsigned kDeepestRestriction = 256;
inline constexpr std::size_t kLargestRestriction = 100'000;
HRESULT CopyRestriction(const SRestriction& from, ValueMemory& memory, SRestriction& to);

// ---- Types and text widths -----------------------------------------------------------------------------------------

// Whether a value of the type is a number: all of it lies within eight bytes of the value itself.
bool IsNumberType(ULONG type) noexcept;

inline constexpr bool IsTextType(ULONG type) noexcept {
    return (type & ~MV_FLAG) == PT_STRING8 || (type & ~MV_FLAG) == PT_UNICODE;
}

// The type in which a property of type `stored` is given when type `asked` is asked for; PT_NULL when the property is
// none such. PT_UNSPECIFIED asks for the stored type, of a text in the width that `wide` tells; texts are given in both
// widths, a server's entry id as PT_BINARY.
ULONG GivenType(ULONG asked, ULONG stored, bool wide) noexcept;

// `text` in a code page, and back. What a page lacks becomes its replacement character; never fails. Where the page is
// none that the system converts: to CP_ACP, and from UTF-8 if the bytes are valid UTF-8, else from 1252.
std::string ToNarrow(WideView text, UINT codePage);
CStringW ToWide(std::string_view text, UINT codePage);

// Makes a PT_STRING8 value PT_UNICODE, or the other way, as `type` says (several values too); other values stay. The
// new texts lie in `memory`.
void ChangeWidth(SPropValue& value, ULONG type, UINT codePage, ValueMemory& memory);

// ---- Comparing ------------------------------------------------------------------------------------------------------

// The order of two values: below, at or above 0; a total order, so that values can be sorted by it. Texts compare
// without regard to case, unit by unit; binaries byte by byte, what has fewer first; of several values the first that
// differ; a number that is none (NaN) above all numbers. Types without an order are equal. Values of two types stand in
// the order of the types, but texts of two widths compare as wide ones, in the system's code page.
int Compare(const SPropValue& left, const SPropValue& right);

// `left relop right` for RELOP_LT to RELOP_NE. Equality of texts is exact, their order as in Compare. False when the
// types differ, but for widths of texts, and for other relops.
bool Holds(const SPropValue& left, ULONG relop, const SPropValue& right);

// RES_CONTENT: whether `value` has `pattern` in it as `fuzzyLevel` says (FL_*); texts of both widths, and binaries. Of
// several values any. FL_LOOSE is FL_IGNORECASE and FL_IGNORENONSPACE; binaries match exactly.
bool Contains(const SPropValue& value, const SPropValue& pattern, ULONG fuzzyLevel);

}  // namespace localmapi
