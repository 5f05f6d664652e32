// Texts and bytes in the spelling of profile files. Any thread.
#pragma once

#include "localmapi/base/Bytes.h"
#include "platform/WideText.h"

#include <optional>
#include <string>
#include <string_view>

namespace localmapi::profile {

// A text in quotation marks, as UTF-8. What would break the line or is no character is escaped.
std::string Quoted(WideView text);

// The same for a text in the system's ANSI page; bytes that are no text of it are escaped one by one.
std::string QuotedBytes(std::string_view text);

// Nothing for what is no such text, with what is wrong with it in `reason`.
std::optional<CStringW> ParseQuoted(std::string_view text, std::string& reason);
std::optional<std::string> ParseQuotedBytes(std::string_view text, std::string& reason);

// Two hexadecimal digits a byte. Nothing for what is not that.
std::string HexText(ByteView bytes);
std::optional<Bytes> ParseHex(std::string_view digits);

// The last four bits as an upper-case digit.
constexpr char HexDigit(unsigned bits) noexcept {
    return "0123456789ABCDEF"[bits & 0xF];
}

// Without blanks at its ends.
std::string_view Trimmed(std::string_view text) noexcept;

// Strict: nothing for what is not UTF-8.
std::optional<CStringW> FromUtf8(std::string_view text);

}  // namespace localmapi::profile
