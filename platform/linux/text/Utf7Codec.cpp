#include "platform/linux/text/Utf7Codec.h"

#include <string_view>

namespace vx_text {
namespace {

constexpr std::string_view kBase64 = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// The value of a base64 digit; -1 for any other byte.
constexpr int DigitValue(std::uint8_t byte) noexcept {
    constexpr auto kValues = [] {
        std::array<std::int8_t, 256> values{};
        values.fill(-1);
        for (std::size_t i = 0; i < kBase64.size(); ++i) {
            values[static_cast<std::uint8_t>(kBase64[i])] = static_cast<std::int8_t>(i);
        }
        return values;
    }();
    return kValues[byte];
}

constexpr bool IsDirect(WCHAR unit) noexcept {
    constexpr std::string_view kPunctuation = "'(),-./:? \t\r\n";
    if (unit > 0x7F) {
        return false;
    }
    const char c = static_cast<char>(unit);
    return c == '\0' || (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z')
           || kPunctuation.find(c) != std::string_view::npos;
}

// Decodes the digits at the beginning of `bytes` and gives how many there were.
std::size_t DecodeShifted(Bytes bytes, WideSink& out) noexcept {
    std::uint32_t bits = 0;
    int pending = 0;
    std::size_t i = 0;
    for (; i < bytes.size() && !out.Overflowed(); ++i) {
        const int digit = DigitValue(bytes[i]);
        if (digit < 0) {
            break;
        }
        bits = bits << 6 | static_cast<std::uint32_t>(digit);
        pending += 6;
        if (pending >= 16) {
            pending -= 16;
            out.Put(static_cast<WCHAR>(bits >> pending));
        }
    }
    return i;
}

void EncodeShifted(WideView text, ByteSink& out) noexcept {
    const auto put = [&out](std::uint32_t digit) { out.Put(static_cast<std::uint8_t>(kBase64[digit & 0x3F])); };
    std::uint32_t bits = 0;
    int pending = 0;
    out.Put('+');
    for (const WCHAR unit : text) {
        bits = bits << 16 | unit;
        pending += 16;
        while (pending >= 6) {
            pending -= 6;
            put(bits >> pending);
        }
    }
    if (pending > 0) {
        put(bits << (6 - pending));
    }
    out.Put('-');
}

}  // namespace

bool Utf7Codec::Decode(Bytes bytes, WideSink& out) const noexcept {
    while (!bytes.empty() && !out.Overflowed()) {
        if (bytes[0] != '+') {
            out.Put(bytes[0]);
            bytes = bytes.subspan(1);
            continue;
        }
        const std::size_t digits = DecodeShifted(bytes.subspan(1), out);
        bytes = bytes.subspan(1 + digits);
        if (!bytes.empty() && bytes[0] == '-') {
            if (digits == 0) {
                out.Put(u'+');
            }
            bytes = bytes.subspan(1);
        }
    }
    return true;
}

bool Utf7Codec::Encode(WideView text, ByteSink& out, const EncodeOptions&) const noexcept {
    const auto isShifted = [](WCHAR unit) { return unit != u'+' && !IsDirect(unit); };
    while (!text.empty() && !out.Overflowed()) {
        if (text[0] == u'+') {
            out.Put({'+', '-'});
            text.remove_prefix(1);
        } else if (IsDirect(text[0])) {
            out.Put(static_cast<std::uint8_t>(text[0]));
            text.remove_prefix(1);
        } else {
            std::size_t run = 1;
            while (run < text.size() && isShifted(text[run])) {
                ++run;
            }
            EncodeShifted(text.substr(0, run), out);
            text.remove_prefix(run);
        }
    }
    return true;
}

}  // namespace vx_text
