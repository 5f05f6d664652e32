// From the values of the engine to those of MAPI. Any thread for each value.
#pragma once

#include "localmapi/base/ByteSource.h"
#include "localmapi/base/Result.h"
#include "localmapi/props/MapiMemory.h"
#include "localmapi/pst/ltp/PropertyContext.h"
#include "mapi/MapiTypes.h"
#include "platform/WideText.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>

namespace localmapi::pst {

// A value in the form in which files keep it: little-endian numbers, texts without terminators.
struct MadeValue {
    ULONG tag;
    Bytes bytes;
};
Bytes LittleEndian(std::uint64_t number, unsigned width);
inline MadeValue MadeLong(ULONG tag, std::uint64_t number) {
    return {tag, LittleEndian(number, 4)};
}
Bytes BytesOfText(WideView text);

// The tag that MAPI knows a property by; nothing for what it is not offered. Types that only servers understand are
// offered as the bytes that they are.
std::optional<ULONG> OfferedTag(std::uint16_t id, PropertyType type) noexcept;

// True for a value of Unicode text that may be 8-bit text all the same, see Text(): only then the code page of Unicode
// values matters.
inline bool MayBeNarrow(const PropertyValue& value) noexcept {
    return value.type == PropertyType::Unicode && value.bytes.Size() % 2 != 0;
}

// The bytes of a value, of texts up to their terminator if they have one. TooLarge above `limit` before anything is
// read; Corrupt or ReadFailed.
Result<Bytes> WholeBytes(PropertyValue& value, UINT codePage, std::uint64_t limit);

// The value of a tag from such bytes; what it points at lies in `memory`. Corrupt when they are no value of the type.
Status ToValue(ULONG tag, Bytes bytes, ValueMemory& memory, SPropValue& value);
Status ToValue(ULONG tag, PropertyValue& stored, UINT codePage, std::uint64_t limit, ValueMemory& memory,
               SPropValue& value);

// The bytes of a text, binary or object by position. A text ends before the terminator that some writers store.
Result<std::unique_ptr<ByteSource>> ToByteSource(PropertyValue stored, UINT codePage);

// A stored subject without its mark ([MS-PST] 2.5.3.1.1), as PT_UNICODE or PT_STRING8 bytes, and where the prefix ends
// in it. A subject without a mark has the prefix that it looks like: up to three letters, a colon and a space
// ([MS-OXCMSG] 2.2.1.9).
struct SubjectParts {
    Bytes text;
    std::size_t prefix = 0;  // bytes
};
SubjectParts SplitSubjectBytes(Bytes stored, bool isWide);

}  // namespace localmapi::pst
