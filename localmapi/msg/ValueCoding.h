// How property values stand in a message file: numbers in the value area of the property stream, everything else in
// streams of its own ([MS-OXMSG] 2.1.3, 2.1.4, 2.4.2). Any thread.
#pragma once

#include "localmapi/base/Bytes.h"
#include "localmapi/props/MapiMemory.h"
#include "mapi/MapiTypes.h"
#include "platform/Guid.h"
#include "platform/WideText.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace localmapi::msg {

enum class ValueForm : std::uint8_t {
    Unknown,  // a type that these files do not have
    Area,     // in the value area
    Stream,   // one stream
    Object,   // a storage, rarely a stream
    Packed,   // several values of fixed size, in one stream
    Parts,    // several values of variable size: a stream of their lengths, and a stream each
};
ValueForm FormOf(ULONG tag) noexcept;

inline bool IsText(ULONG tag) noexcept {
    return PROP_TYPE(tag) == PT_STRING8 || PROP_TYPE(tag) == PT_UNICODE;
}

// What ends a text of the type; nothing for other types.
unsigned TerminatorSize(ULONG tag) noexcept;

// `size` without the terminator that a text's last bytes are. `tail` holds the last bytes of the text, two of them or
// all. The odd byte of wide text goes too.
std::uint64_t SizeWithoutTerminator(ULONG tag, std::uint64_t size, ByteView tail) noexcept;
ByteView WithoutTerminator(ULONG tag, ByteView bytes) noexcept;

// The content of a value's streams.
struct StreamValue {
    Bytes main;
    std::vector<Bytes> parts;  // of Parts
};

// What the value area says of a value: of the Stream form its size with terminator, else that of its main stream.
std::uint32_t DeclaredSize(ULONG tag, std::uint64_t streamSize) noexcept;

// ---- Writing. The value is valid (IsValid).

std::uint64_t AreaOf(const SPropValue& value) noexcept;
StreamValue StreamsOf(const SPropValue& value);

// Bytes of one entry in the main stream of the Parts form.
unsigned LengthEntrySize(ULONG tag) noexcept;

// ---- Reading

// The value of an area, whose bytes beyond the type's own size may be anything.
std::optional<SPropValue> ValueOfArea(ULONG tag, std::uint64_t area, ValueMemory& memory);

// A value of the Parts form from its parts, terminators stripped here.
SPropValue ValueOfParts(ULONG tag, const std::vector<ByteView>& parts, ValueMemory& memory);

// Little-endian.
void AppendNumber(Bytes& bytes, std::uint64_t number, unsigned width);
void AppendBytes(Bytes& bytes, ByteView more);
void AppendUtf16(Bytes& bytes, WideView text);
void AppendGuid(Bytes& bytes, const GUID& guid);

}  // namespace localmapi::msg
