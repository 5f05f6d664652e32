#include "localmapi/profile/TextEscapes.h"

#include "localmapi/props/Values.h"
#include "platform/CodePage.h"

#include <algorithm>
#include <iterator>
#include <limits>

namespace localmapi::profile {

namespace {

struct NamedEscape {
    char unit;
    char letter;
};
constexpr NamedEscape kNamed[] = {{'"', '"'}, {'\\', '\\'}, {'\n', 'n'}, {'\r', 'r'}, {'\t', 't'}};

constexpr bool IsHighSurrogate(WCHAR unit) noexcept {
    return (unit & 0xFC00) == 0xD800;
}
constexpr bool IsLowSurrogate(WCHAR unit) noexcept {
    return (unit & 0xFC00) == 0xDC00;
}
constexpr bool IsControl(WCHAR unit) noexcept {
    return unit < 0x20 || (unit >= 0x7F && unit < 0xA0) || unit == 0x2028 || unit == 0x2029;
}

std::string HexEscape(char kind, unsigned value, int digits) {
    std::string text = {'\\', kind};
    for (int digit = digits - 1; digit >= 0; --digit) {
        text += HexDigit(value >> (4 * digit));
    }
    return text;
}

// The escape of a unit, empty for one that stands for itself. `next` is the unit behind it, or 0.
std::string EscapeOf(WCHAR unit, WCHAR before, WCHAR next) {
    const auto* const named =
        std::ranges::find_if(kNamed, [unit](const NamedEscape& row) { return unit == static_cast<WCHAR>(row.unit); });
    if (named != std::end(kNamed)) {
        return {'\\', named->letter};
    }
    const bool isAlone =
        (IsHighSurrogate(unit) && !IsLowSurrogate(next)) || (IsLowSurrogate(unit) && !IsHighSurrogate(before));
    return isAlone || IsControl(unit) ? HexEscape('u', unit, 4) : std::string();
}

// Reads the inside of a quoted text: runs of plain characters go to `plain`, escapes to `unit` and `byte`, which may
// refuse what they get.
class QuotedReader {
public:
    QuotedReader(std::string_view text, std::string& reason) : m_text(text), m_reason(&reason) {}

    template <class OnPlain, class OnUnit, class OnByte>
    bool Read(OnPlain plain, OnUnit unit, OnByte byte) {
        if (m_text.size() < 2 || m_text.front() != '"') {
            return Refuse("the text does not stand in quotation marks");
        }
        for (m_at = 1;;) {
            const std::size_t stop = m_text.find_first_of("\"\\", m_at);
            if (stop == std::string_view::npos) {
                return Refuse("the text's closing quotation mark is missing");
            }
            const std::string_view run = m_text.substr(m_at, stop - m_at);
            if (run.find('\0') != std::string_view::npos) {
                return Refuse(kHoldsZero);
            }
            if (!run.empty() && !plain(run)) {
                return Refuse("the text is not UTF-8");
            }
            m_at = stop + 1;
            if (m_text[stop] == '"') {
                return m_at == m_text.size() || Refuse("something stands behind the text's closing quotation mark");
            }
            if (!ReadEscape(unit, byte)) {
                return false;
            }
        }
    }

private:
    static constexpr std::string_view kHoldsZero = "a text cannot hold a zero";

    template <class OnUnit, class OnByte>
    bool ReadEscape(OnUnit unit, OnByte byte) {
        const char letter = m_at < m_text.size() ? m_text[m_at++] : '\0';
        const auto* const named = std::ranges::find(kNamed, letter, &NamedEscape::letter);
        if (named != std::end(kNamed)) {
            unit(static_cast<WCHAR>(named->unit));
            return true;
        }
        const std::size_t digits = letter == 'u' ? 4 : letter == 'x' ? 2 : 0;
        const auto value = ParseHex(m_text.substr(m_at, digits));
        if (digits == 0 || !value || value->size() != digits / 2) {
            return Refuse("a backslash stands before neither \" \\ n r t nor uXXXX nor xXX");
        }
        m_at += digits;
        unsigned number = 0;
        for (const std::byte part : *value) {
            number = number << 8 | std::to_integer<unsigned>(part);
        }
        if (number == 0) {
            return Refuse(kHoldsZero);
        }
        if (letter == 'u') {
            unit(static_cast<WCHAR>(number));
            return true;
        }
        return byte(static_cast<char>(number)) || Refuse("\\x stands in a text that is not string8");
    }

    bool Refuse(std::string_view why) {
        *m_reason = why;
        return false;
    }

    std::string_view m_text;
    std::size_t m_at = 0;
    std::string* m_reason;
};

int HexValue(char digit) noexcept {
    if (digit >= '0' && digit <= '9') {
        return digit - '0';
    }
    const char lower = static_cast<char>(digit | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

}  // namespace

std::string Quoted(WideView text) {
    std::string quoted = "\"";
    std::size_t plain = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const std::string escape =
            EscapeOf(text[i], i == 0 ? WCHAR{} : text[i - 1], i + 1 < text.size() ? text[i + 1] : WCHAR{});
        if (!escape.empty()) {
            quoted += ToNarrow(text.substr(plain, i - plain), CP_UTF8) + escape;
            plain = i + 1;
        }
    }
    return quoted + ToNarrow(text.substr(plain), CP_UTF8) + "\"";
}

std::string QuotedBytes(std::string_view text) {
    const CStringW wide = ToWide(text, CP_ACP);
    if (ToNarrow(wide, CP_ACP) == text) {
        return Quoted(wide);
    }
    std::string quoted = "\"";
    for (const char byte : text) {
        const auto unit = static_cast<unsigned char>(byte);
        const std::string escape = unit < 0x80 ? EscapeOf(unit, 0, 0) : HexEscape('x', unit, 2);
        quoted += escape.empty() ? std::string(1, byte) : escape;
    }
    return quoted + "\"";
}

std::optional<CStringW> ParseQuoted(std::string_view text, std::string& reason) {
    CStringW parsed;
    const bool isGood = QuotedReader(text, reason)
                            .Read(
                                [&](std::string_view plain) {
                                    const auto wide = FromUtf8(plain);
                                    parsed += wide.value_or(CStringW());
                                    return wide.has_value();
                                },
                                [&](WCHAR unit) { parsed += unit; }, [](char) { return false; });
    return isGood ? std::optional(std::move(parsed)) : std::nullopt;
}

std::optional<std::string> ParseQuotedBytes(std::string_view text, std::string& reason) {
    std::string parsed;
    CStringW pending;  // what comes before the next single byte: pairs of surrogates must not be torn
    const auto flush = [&] {
        parsed += ToNarrow(pending, CP_ACP);
        pending.clear();
    };
    const bool isGood = QuotedReader(text, reason)
                            .Read(
                                [&](std::string_view plain) {
                                    const auto wide = FromUtf8(plain);
                                    pending += wide.value_or(CStringW());
                                    return wide.has_value();
                                },
                                [&](WCHAR unit) { pending += unit; },
                                [&](char byte) {
                                    flush();
                                    parsed += byte;
                                    return true;
                                });
    flush();
    return isGood ? std::optional(std::move(parsed)) : std::nullopt;
}

std::string HexText(ByteView bytes) {
    std::string text;
    text.reserve(bytes.Size() * 2);
    for (const std::byte byte : bytes.Span()) {
        const auto value = std::to_integer<unsigned>(byte);
        text += {HexDigit(value >> 4), HexDigit(value)};
    }
    return text;
}

std::optional<Bytes> ParseHex(std::string_view digits) {
    Bytes bytes;
    bytes.reserve(digits.size() / 2);
    for (std::size_t i = 0; i + 1 < digits.size(); i += 2) {
        const int high = HexValue(digits[i]);
        const int low = HexValue(digits[i + 1]);
        if (high < 0 || low < 0) {
            return std::nullopt;
        }
        bytes.push_back(static_cast<std::byte>(high << 4 | low));
    }
    return digits.size() % 2 == 0 ? std::optional(std::move(bytes)) : std::nullopt;
}

std::string_view Trimmed(std::string_view text) noexcept {
    static constexpr std::string_view kBlanks = " \t\r";
    const std::size_t begin = text.find_first_not_of(kBlanks);
    if (begin == std::string_view::npos) {
        return {};
    }
    return text.substr(begin, text.find_last_not_of(kBlanks) - begin + 1);
}

std::optional<CStringW> FromUtf8(std::string_view text) {
    if (text.empty()) {
        return CStringW();
    }
    if (text.size() > static_cast<std::size_t>(std::numeric_limits<int>::max())) {
        return std::nullopt;
    }
    const int size = static_cast<int>(text.size());
    const int units = MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text.data(), size, nullptr, 0);
    CStringW wide(static_cast<std::size_t>(units), WCHAR{});
    const bool isDone =
        units > 0 && MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text.data(), size, wide.data(), units) > 0;
    return isDone ? std::optional(std::move(wide)) : std::nullopt;
}

}  // namespace localmapi::profile
