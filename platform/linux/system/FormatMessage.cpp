#include "platform/LastError.h"
#include "platform/WideText.h"
#include "platform/linux/system/Failure.h"
#include "platform/linux/system/SystemTexts.h"
#include "platform/linux/system/TextBuffer.h"
#include "platform/linux/system/Utf8.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <optional>
#include <vector>

namespace vx_system {

namespace {

// Bounds what one insert may ask for: wider fields are no text for people.
constexpr int kWidestField = 65'535;

// The values behind %1, %2 and so on, which can be asked for in any order and more than once. A va_list gives them in
// theirs only, so they are drawn up to the highest number that was asked for, and kept.
class Arguments {
public:
    Arguments(DWORD flags, va_list* arguments) noexcept
        : m_isArray((flags & FORMAT_MESSAGE_ARGUMENT_ARRAY) != 0), m_given(arguments) {}

    // The value of %`number`, counted from 1; nothing when no arguments were given.
    std::optional<DWORD_PTR> At(std::size_t number) {
        if (m_given == nullptr) {
            return std::nullopt;
        }
        if (m_isArray) {
            return reinterpret_cast<const DWORD_PTR*>(m_given)[number - 1];
        }
        while (m_drawn.size() < number) {
            // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): the caller of FormatMessageW started it.
            m_drawn.push_back(va_arg(*m_given, DWORD_PTR));
        }
        return m_drawn[number - 1];
    }

private:
    bool m_isArray;
    va_list* m_given;  // not owned; a DWORD_PTR array in disguise when m_isArray
    std::vector<DWORD_PTR> m_drawn;
};

// What stands between the exclamation marks of %1!08X!.
struct FieldFormat {
    enum class Size { Default, Short, Long, Wide64 };

    std::string flags;
    int width = 0;
    int precision = -1;  // none given
    Size size = Size::Default;
    char conversion = 's';

    [[nodiscard]] bool AlignsLeft() const noexcept { return flags.find('-') != std::string::npos; }
};

// Reads a FieldFormat; nothing when the text is none, or asks for more than kWidestField.
class FieldParser {
public:
    explicit FieldParser(WideView text) noexcept : m_text(text) {}

    std::optional<FieldFormat> Parse() {
        FieldFormat field;
        while (!m_text.empty() && WideView("-+ #0"_w).find(m_text.front()) != WideView::npos) {
            field.flags.push_back(static_cast<char>(Next()));
        }
        field.width = Number();
        if (Skip("."_w)) {
            field.precision = Number();
        }
        field.size = ParseSize();
        if (m_text.size() != 1 || WideView("sScCdiuxXop"_w).find(m_text.front()) == WideView::npos) {
            return std::nullopt;
        }
        field.conversion = static_cast<char>(Next());
        if (field.width > kWidestField || field.precision > kWidestField) {
            return std::nullopt;
        }
        return field;
    }

private:
    WCHAR Next() noexcept {
        const WCHAR unit = m_text.front();
        m_text.remove_prefix(1);
        return unit;
    }

    bool Skip(WideView prefix) noexcept {
        const bool there = m_text.starts_with(prefix);
        m_text.remove_prefix(there ? prefix.size() : 0);
        return there;
    }

    int Number() noexcept {
        int number = 0;
        while (!m_text.empty() && m_text.front() >= '0' && m_text.front() <= '9') {
            number = std::min(number * 10 + (Next() - '0'), kWidestField + 1);
        }
        return number;
    }

    FieldFormat::Size ParseSize() noexcept {
        if (Skip("I64"_w) || Skip("ll"_w)) {
            return FieldFormat::Size::Wide64;
        }
        if (Skip("I32"_w)) {
            return FieldFormat::Size::Default;
        }
        if (Skip("I"_w)) {
            return FieldFormat::Size::Wide64;  // as wide as a pointer
        }
        if (Skip("h"_w)) {
            return FieldFormat::Size::Short;
        }
        return Skip("l"_w) || Skip("w"_w) ? FieldFormat::Size::Long : FieldFormat::Size::Default;
    }

    WideView m_text;
};

CStringW Pad(CStringW text, const FieldFormat& field) {
    const auto width = static_cast<std::size_t>(field.width);
    if (text.size() < width) {
        text.insert(field.AlignsLeft() ? text.size() : 0, width - text.size(), ' ');
    }
    return text;
}

// Reads no further than the precision, so that a text with one needs no terminator.
CStringW TextOf(DWORD_PTR value, const FieldFormat& field) {
    const std::size_t most = field.precision < 0 ? SIZE_MAX : static_cast<std::size_t>(field.precision);
    const bool isNarrow =
        field.size == FieldFormat::Size::Short || (field.conversion == 'S' && field.size == FieldFormat::Size::Default);
    if (value == 0) {
        return CStringW(WideView("(null)"_w).substr(0, most));
    }
    if (isNarrow) {
        const auto* text = reinterpret_cast<const char*>(value);
        const std::size_t length = most == SIZE_MAX ? std::strlen(text) : ::strnlen(text, most);
        return FromUtf8(std::string_view(text, length));
    }
    const auto* text = reinterpret_cast<const WCHAR*>(value);
    std::size_t length = 0;
    while (length < most && text[length] != 0) {
        ++length;
    }
    return CStringW(text, length);
}

// The widths of Windows: `l` is 32 bits, as no prefix is. As 64 bits, sign-extended for the signed conversions.
long long IntegerOf(DWORD_PTR value, const FieldFormat& field) noexcept {
    const bool isSigned = field.conversion == 'd' || field.conversion == 'i';
    switch (field.size) {
        case FieldFormat::Size::Wide64: return static_cast<long long>(value);
        case FieldFormat::Size::Short:
            return isSigned ? static_cast<std::int16_t>(value) : static_cast<std::uint16_t>(value);
        default:
            return isSigned ? static_cast<long long>(static_cast<std::int32_t>(value))
                            : static_cast<long long>(static_cast<std::uint32_t>(value));
    }
}

CStringW NumberOf(DWORD_PTR value, FieldFormat field) {
    if (field.conversion == 'p') {  // as Windows prints a pointer
        field.conversion = 'X';
        field.precision = 16;
        field.size = FieldFormat::Size::Wide64;
    }
    const std::string format = "%" + field.flags + "*.*ll" + field.conversion;
    constexpr std::size_t kRoomOfDigits = 32;  // 22 octal digits of 64 bits, sign and prefix
    std::string out(kRoomOfDigits + static_cast<std::size_t>(std::max(field.width, field.precision)), '\0');
    const int length =
        std::snprintf(out.data(), out.size(), format.c_str(), field.width, field.precision, IntegerOf(value, field));
    out.resize(length < 0 ? 0 : static_cast<std::size_t>(length));
    return CStringW(out.begin(), out.end());
}

CStringW Format(DWORD_PTR value, const FieldFormat& field) {
    switch (field.conversion) {
        case 's':
        case 'S': return Pad(TextOf(value, field), field);
        case 'c':
        case 'C': return Pad(CStringW(1, static_cast<WCHAR>(value)), field);
        default: return NumberOf(value, field);
    }
}

// One pass over a message. Its outcome is `Text`, or nothing for a message that cannot be carried out.
class MessageFormatter {
public:
    MessageFormatter(DWORD flags, WideView message, va_list* arguments) noexcept
        : m_message(message),
          m_arguments(flags, arguments),
          m_ignoresInserts((flags & FORMAT_MESSAGE_IGNORE_INSERTS) != 0),
          m_joinsLines((flags & FORMAT_MESSAGE_MAX_WIDTH_MASK) != 0) {}

    std::optional<CStringW> Text() {
        while (m_at < m_message.size()) {
            const WCHAR unit = m_message[m_at++];
            if (unit == '%') {
                if (!Escape()) {
                    return std::nullopt;
                }
            } else if (unit == '\r' || unit == '\n') {
                LineBreak(unit);
            } else {
                m_text.push_back(unit);
            }
        }
        return std::move(m_text);
    }

private:
    void LineBreak(WCHAR unit) {
        if (unit == '\r' && m_at < m_message.size() && m_message[m_at] == '\n') {
            ++m_at;
        }
        m_text.append(m_joinsLines ? WideView(" "_w) : WideView("\r\n"_w));
    }

    // What stands behind a percent sign. False when that makes no sense.
    bool Escape() {
        if (m_at == m_message.size()) {
            return false;
        }
        const WCHAR unit = m_message[m_at++];
        switch (unit) {
            case 'n': m_text.append("\r\n"_w); return true;
            case 'r': m_text.push_back('\r'); return true;
            case 't': m_text.push_back('\t'); return true;
            case '0': m_at = m_message.size(); return true;
            default: break;
        }
        if (m_ignoresInserts) {
            m_text.append({'%', unit});
            return true;
        }
        if (unit >= '1' && unit <= '9') {
            return Insert(static_cast<std::size_t>(unit - '0'));
        }
        m_text.push_back(unit);
        return true;
    }

    bool Insert(std::size_t number) {
        if (m_at < m_message.size() && m_message[m_at] >= '0' && m_message[m_at] <= '9') {
            number = number * 10 + static_cast<std::size_t>(m_message[m_at++] - '0');
        }
        std::optional<FieldFormat> field = FieldFormat();
        if (m_at < m_message.size() && m_message[m_at] == '!') {
            const std::size_t end = m_message.find(WCHAR{'!'}, m_at + 1);
            if (end == WideView::npos) {
                return false;
            }
            field = FieldParser(m_message.substr(m_at + 1, end - m_at - 1)).Parse();
            m_at = end + 1;
        }
        const std::optional<DWORD_PTR> value = field ? m_arguments.At(number) : std::nullopt;
        if (!value) {
            return false;
        }
        m_text.append(Format(*value, *field));
        return true;
    }

    WideView m_message;
    std::size_t m_at = 0;  // the next unit to read
    Arguments m_arguments;
    bool m_ignoresInserts;
    bool m_joinsLines;
    CStringW m_text;
};

// Hands `text` out as the flags ask for it.
DWORD Deliver(const CStringW& text, DWORD flags, LPWSTR buffer, DWORD size) noexcept {
    const auto needed = static_cast<DWORD>(text.size()) + 1;
    if ((flags & FORMAT_MESSAGE_ALLOCATE_BUFFER) != 0) {
        const DWORD room = std::max(needed, size);
        auto* block = static_cast<LPWSTR>(LocalAlloc(LMEM_FIXED, SIZE_T{room} * sizeof(WCHAR)));
        *reinterpret_cast<LPWSTR*>(buffer) = block;
        return block == nullptr ? 0 : CopyText(text, block, room);
    }
    return size < needed ? FailWith(ERROR_INSUFFICIENT_BUFFER, 0U) : CopyText(text, buffer, size);
}

bool FlagsMakeSense(DWORD flags, LPCVOID source) noexcept {
    const DWORD width = flags & FORMAT_MESSAGE_MAX_WIDTH_MASK;
    if ((flags & FORMAT_MESSAGE_FROM_HMODULE) != 0 || (width != 0 && width != FORMAT_MESSAGE_MAX_WIDTH_MASK)) {
        return false;
    }
    return (flags & FORMAT_MESSAGE_FROM_STRING) != 0 ? source != nullptr : (flags & FORMAT_MESSAGE_FROM_SYSTEM) != 0;
}

DWORD FormatInto(DWORD flags, LPCVOID source, DWORD messageId, LPWSTR buffer, DWORD size, va_list* arguments) {
    CStringW message;
    if ((flags & FORMAT_MESSAGE_FROM_STRING) != 0) {
        message = static_cast<LPCWSTR>(source);
    } else {
        message = FromUtf8(SystemText(messageId));
        if (message.empty()) {
            return FailWith(ERROR_MR_MID_NOT_FOUND, 0U);
        }
    }
    const std::optional<CStringW> text = MessageFormatter(flags, message, arguments).Text();
    if (!text) {
        return FailWith(ERROR_INVALID_PARAMETER, 0U);
    }
    return text->empty() ? FailWith(ERROR_NO_WORK_DONE, 0U) : Deliver(*text, flags, buffer, size);
}

}  // namespace

}  // namespace vx_system

DWORD FormatMessageW(DWORD flags, LPCVOID source, DWORD messageId, DWORD /*languageId*/, LPWSTR buffer, DWORD size,
                     va_list* arguments) noexcept {
    using namespace vx_system;
    if (buffer == nullptr) {
        return FailWith(ERROR_INVALID_PARAMETER, 0U);
    }
    if ((flags & FORMAT_MESSAGE_ALLOCATE_BUFFER) != 0) {
        *reinterpret_cast<LPWSTR*>(buffer) = nullptr;
    }
    if (!FlagsMakeSense(flags, source)) {
        return FailWith(ERROR_INVALID_PARAMETER, 0U);
    }
    return Guarded<DWORD>(0, [&] { return FormatInto(flags, source, messageId, buffer, size, arguments); });
}
