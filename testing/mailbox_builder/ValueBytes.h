// From the values of the model to the bytes of a file: [MS-PST] 2.3.3.3, 2.3.3.4. Any thread.
#pragma once

#include "testing/mailbox_builder/HeapWriter.h"
#include "testing/mailbox_builder/Model.h"

#include <cstdint>
#include <string>

namespace mailbox_builder {

// The types of properties that a writer has to tell apart; [MS-OXCDATA] 2.11.1 has them all.
inline constexpr std::uint16_t kMultiple = 0x1000;
inline constexpr std::uint16_t kShort = 0x0002;
inline constexpr std::uint16_t kLong = 0x0003;
inline constexpr std::uint16_t kBoolean = 0x000B;
inline constexpr std::uint16_t kObject = 0x000D;
inline constexpr std::uint16_t kString8 = 0x001E;
inline constexpr std::uint16_t kUnicode = 0x001F;
inline constexpr std::uint16_t kTime = 0x0040;
inline constexpr std::uint16_t kBinary = 0x0102;

// How texts stand in a file: a file of 8-bit strings has no others.
struct TextRules {
    bool isAnsi = false;
    unsigned codePage = 1252;

    // The type that a property of `type` has in such a file.
    constexpr std::uint16_t StoredType(std::uint16_t type) const noexcept {
        return isAnsi && (type & ~kMultiple) == kUnicode ? static_cast<std::uint16_t>(type - 1) : type;
    }
};

// Bytes of a value of a type whose values are all equally long; 0 for the others and for unknown types.
unsigned FixedSize(std::uint16_t type) noexcept;

// Whether a property of `type` can have such a value.
bool Suits(std::uint16_t type, const Value& value) noexcept;

// The bytes of a value that is to stand as `stored`, the type that StoredType or a table's column gives: texts are
// converted between the kinds. Content is borrowed from `value`. The value suits the type but for that.
StoredValue ToStored(std::uint16_t stored, const Value& value, const TextRules& rules);

// About as many bytes as the value has, for sizes of messages. Wide text counts two bytes a unit in every file.
std::uint64_t SizeOf(const Value& value) noexcept;

std::string ToCodePage(const CStringW& text, unsigned codePage);
CStringW FromCodePage(const std::string& text, unsigned codePage);

// A GUID as it stands in files.
Bytes BytesOf(const GUID& guid);

}  // namespace mailbox_builder
