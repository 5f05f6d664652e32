// Bytes of a body to UTF-16, whatever page they claim to be in. Any thread.
#pragma once

#include "platform/WideText.h"

#include <optional>
#include <string_view>

namespace localmapi::rtf {

inline constexpr UINT kWesternPage = 1252;
inline constexpr UINT kUtf8Page = 65001;
inline constexpr UINT kUtf16Page = 1200;
inline constexpr UINT kUtf16BigEndianPage = 1201;

// The page that converts text of `codePage` on this system: itself, one that holds it, or 0 when there is none.
UINT UsablePage(UINT codePage) noexcept;

// True when bytes below 0x80 are ASCII's characters in a text of the page, wherever they stand. Not so in the 7-bit
// pages with shifts, in EBCDIC, in UTF-16 and in UTF-32.
bool IsAsciiSuperset(UINT codePage) noexcept;

bool IsAscii(std::string_view bytes) noexcept;

// Appends bytes that IsAscii holds for.
void AppendAscii(CStringW& text, std::string_view bytes);

// Appends the text that the bytes are in `codePage`, or in 1252 when that page is not to be had. Never fails: invalid
// bytes become the page's replacement.
void AppendDecoded(CStringW& text, std::string_view bytes, UINT codePage);

// The text, or nothing when there is no such page or bytes are invalid in it. The 7-bit pages call nothing invalid.
std::optional<CStringW> DecodeStrictly(std::string_view bytes, UINT codePage);

}  // namespace localmapi::rtf
