#include "tests/localmapi/rtf/RtfTesting.h"

#include <cstdint>
#include <cstdio>

namespace localmapi::testing {

CStringW FromUtf8(std::string_view text) {
    CStringW wide;
    for (std::size_t i = 0; i < text.size();) {
        const auto first = static_cast<unsigned char>(text[i++]);
        int more = first >= 0xF0 ? 3 : first >= 0xE0 ? 2 : first >= 0xC0 ? 1 : 0;
        std::uint32_t character = more == 0 ? first : first & (0x3FU >> more);
        for (; more > 0; --more) {
            character = character << 6 | (static_cast<unsigned char>(text[i++]) & 0x3FU);
        }
        if (character >= 0x10000) {
            wide.push_back(static_cast<WCHAR>(0xD800 + ((character - 0x10000) >> 10)));
            character = 0xDC00 + (character & 0x3FF);
        }
        wide.push_back(static_cast<WCHAR>(character));
    }
    return wide;
}

std::string ToUtf8(WideView text) {
    std::string bytes;
    const auto put = [&bytes](std::uint32_t value) { bytes.push_back(static_cast<char>(value)); };
    for (std::size_t i = 0; i < text.size(); ++i) {
        std::uint32_t character = text[i];
        const bool isPair = character >= 0xD800 && character < 0xDC00 && i + 1 < text.size() && text[i + 1] >= 0xDC00
                            && text[i + 1] < 0xE000;
        if (isPair) {
            character = 0x10000 + ((character - 0xD800) << 10) + (text[++i] - 0xDC00U);
        }
        if (!isPair && character >= 0xD800 && character < 0xE000) {
            char shown[8];
            std::snprintf(shown, sizeof(shown), "<%04X>", static_cast<unsigned>(character));
            bytes += shown;
        } else if (character < 0x80) {
            put(character);
        } else if (character < 0x800) {
            put(0xC0 | character >> 6);
            put(0x80 | (character & 0x3F));
        } else if (character < 0x10000) {
            put(0xE0 | character >> 12);
            put(0x80 | (character >> 6 & 0x3F));
            put(0x80 | (character & 0x3F));
        } else {
            put(0xF0 | character >> 18);
            put(0x80 | (character >> 12 & 0x3F));
            put(0x80 | (character >> 6 & 0x3F));
            put(0x80 | (character & 0x3F));
        }
    }
    return bytes;
}

}  // namespace localmapi::testing
