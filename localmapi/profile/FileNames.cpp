#include "localmapi/profile/FileNames.h"

#include "localmapi/profile/TextEscapes.h"
#include "localmapi/props/Values.h"
#include "platform/CodePage.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace localmapi::profile {

namespace {

// "~" is kept for numbers behind names that are taken.
constexpr std::string_view kForbidden = "/\\:*?\"<>|%~";

// With any number from 1 to 9 behind them, or the three superscript digits of Latin-1.
constexpr std::string_view kNumberedDevices[] = {"com", "lpt"};
constexpr std::string_view kDevices[] = {"con", "prn", "aux", "nul", "conin$", "conout$"};

std::string LowerAscii(std::string_view text) {
    std::string lower(text);
    for (char& letter : lower) {
        letter = letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter + ('a' - 'A')) : letter;
    }
    return lower;
}

// What stands before the first dot decides, and blanks before that dot do not count.
bool IsDevice(std::string_view name) {
    const std::string_view base = Trimmed(name.substr(0, name.find('.')));
    const std::string lower = LowerAscii(base);
    const auto isNumbered = [&lower](std::string_view device) {
        const std::string_view number = std::string_view(lower).substr(std::min(device.size(), lower.size()));
        return lower.starts_with(device)
               && ((number.size() == 1 && number[0] >= '0' && number[0] <= '9') || number == "\xC2\xB9"
                   || number == "\xC2\xB2" || number == "\xC2\xB3");
    };
    return std::ranges::find(kDevices, std::string_view(lower)) != std::end(kDevices)
           || std::ranges::any_of(kNumberedDevices, isNumbered);
}

bool IsEdge(std::string_view name, std::size_t at) {
    return at == 0 || at + 1 == name.size();
}

bool IsPlain(std::string_view name, std::size_t at) {
    const auto byte = static_cast<unsigned char>(name[at]);
    const bool isEdgeBlank = (byte == ' ' || byte == '.') && IsEdge(name, at);
    return byte >= 0x20 && byte != 0x7F && kForbidden.find(name[at]) == std::string_view::npos && !isEdgeBlank;
}

constexpr bool IsContinuation(char byte) noexcept {
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

}  // namespace

CStringW FileStemOf(WideView name) {
    const std::string text = ToNarrow(name, CP_UTF8);
    std::string stem;
    for (std::size_t i = 0; i < text.size();) {
        std::size_t end = i + 1;  // of the character
        while (end < text.size() && IsContinuation(text[end])) {
            ++end;
        }
        std::string part = text.substr(i, end - i);
        if (!IsPlain(text, i) || (i == 0 && IsDevice(text))) {
            const auto byte = static_cast<unsigned char>(text[i]);
            part = {'%', HexDigit(byte >> 4), HexDigit(byte)};
        }
        if (stem.size() + part.size() > kLongestStem) {
            break;
        }
        stem += part;
        i = end;
    }
    return ToWide(stem, CP_UTF8);
}

CStringW NameOfFileStem(WideView stem) {
    const std::string text = ToNarrow(stem, CP_UTF8);
    std::string name;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = text[i] == '%' ? ParseHex(std::string_view(text).substr(i + 1, 2)) : std::nullopt;
        const bool isEscape = byte && byte->size() == 1;
        name += isEscape ? static_cast<char>(byte->front()) : text[i];
        i += isEscape ? 2 : 0;
    }
    return ToWide(name, CP_UTF8);
}

}  // namespace localmapi::profile
