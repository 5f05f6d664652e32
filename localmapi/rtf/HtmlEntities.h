// The names of characters in HTML.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace localmapi::rtf {

// The longest name that is known.
inline constexpr std::size_t kLongestEntity = 8;

// The character that the name (without "&" and ";") stands for: those of HTML 4, those of ASCII's punctuation, and the
// letters of Latin Extended-A. Names are case-sensitive.
std::optional<std::uint16_t> FindEntity(std::string_view name) noexcept;

// The same for the names that also count without a semicolon, whatever follows them.
std::optional<std::uint16_t> FindOpenEntity(std::string_view name) noexcept;

// The character of a numeric reference, as browsers read it: 0x80 to 0x9F are those of Windows-1252; what is no
// character is U+FFFD, but the two halves of a surrogate pair are left for the caller to join.
std::uint32_t CharacterOfReference(std::uint32_t number) noexcept;

}  // namespace localmapi::rtf
