// UTF-16, which the provider speaks, and UTF-8, which files, terminals and arguments speak. What is no character on one
// side (an unpaired surrogate, bytes that are not UTF-8) becomes U+FFFD on the other. Any thread.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>

namespace vxhost {

// Takes the character that begins at text[at], and moves `at` behind it. `at` is less than the size.
char32_t NextCharacter(std::u16string_view text, std::size_t& at) noexcept;
char32_t NextCharacter(std::string_view text, std::size_t& at) noexcept;

void AppendUtf8(std::string& out, char32_t character);

std::string ToUtf8(std::u16string_view text);
std::u16string ToUtf16(std::string_view text);

// A path as an argument gave it, and a path as it is shown and given on. An argument that is not UTF-8 names its file on
// Linux all the same; only what is shown of it is not exact.
std::filesystem::path ToPath(std::string_view text);
std::string PathText(const std::filesystem::path& path);

// Whether two texts are the same but for case. Knows the letters of the Latin, Greek and Cyrillic alphabets.
bool EqualIgnoringCase(std::u16string_view a, std::u16string_view b) noexcept;

}  // namespace vxhost
