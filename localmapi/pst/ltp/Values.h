// From the bytes of values to numbers, texts and lists. Any thread.
#pragma once

#include "localmapi/base/Bytes.h"
#include "localmapi/base/Result.h"
#include "localmapi/base/Utf16.h"
#include "localmapi/pst/ltp/PropertyContext.h"
#include "platform/WideText.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace localmapi::pst {

// The number that a value of one of the fixed-size types up to eight bytes is: sign-extended integers, 0 or 1 of a
// Boolean, ticks of 100 ns since 1601 of a Time, the bits of a floating-point number. Nothing for other types, and for
// a value that is cut short or cannot be read.
std::optional<std::int64_t> Integer(PropertyValue& value);

// Text from bytes of a code page, up to the first zero byte. Where the page is 1200 or cannot be converted: UTF-8 if the
// bytes are valid UTF-8, else 1252. Never fails; what is no text becomes replacement characters.
CStringW FromCodePage(ByteView bytes, UINT codePage);

// The text of a Unicode or String8 value; the latter is in `codePage`. A Unicode value whose bytes are no UTF-16 (an
// odd count of them and no zero byte) is taken for String8. Corrupt for other types; TooLarge; as ReadAll.
Result<CStringW> Text(PropertyValue& value, UINT codePage);

// The elements of a value of a multiple type: [MS-PST] 2.3.3.4.
class ValueList {
public:
    // Takes the bytes of a value. Corrupt when its offsets are not in order or lie outside of it.
    static Result<ValueList> Parse(PropertyType type, Bytes bytes);

    std::size_t Count() const noexcept { return m_ends.size(); }

    // Fixed-size elements have their type's size; texts have no terminator. Borrowed from the list.
    ByteView At(std::size_t index) const noexcept;

private:
    Bytes m_bytes;
    std::uint32_t m_first = 0;          // where the first element begins
    std::vector<std::uint32_t> m_ends;  // where each ends and the next begins
};

}  // namespace localmapi::pst
