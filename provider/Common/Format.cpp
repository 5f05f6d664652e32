#include "provider/Common/Format.h"

#include "platform/CodePage.h"

#include <algorithm>
#include <charconv>
#include <climits>
#include <cmath>
#include <utility>

namespace Vx {

namespace {

// Above it a width or precision is taken for no conversion, so that a wrong argument for * cannot fill the memory.
constexpr int kLargestField = 9999;

constexpr WCHAR kReplacement = 0xFFFD;

// Where the text goes: counts all of it, keeps what fits.
class Output {
public:
    Output(WCHAR* out, std::size_t capacity) noexcept : m_out(out), m_room(capacity == 0 ? 0 : capacity - 1) {}

    void Put(WCHAR unit) noexcept {
        if (m_length < m_room) {
            m_out[m_length] = unit;
        }
        ++m_length;
    }

    void Fill(char character, std::size_t count) noexcept {
        for (; count > 0; --count) {
            Put(static_cast<WCHAR>(character));
        }
    }

    void Append(WideView text) noexcept {
        if (m_length < m_room) {
            text.copy(m_out + m_length, m_room - m_length);
        }
        m_length += text.size();
    }

    void Append(std::string_view ascii) noexcept {
        for (const char character : ascii) {
            Put(static_cast<WCHAR>(character));
        }
    }

    std::size_t Length() const noexcept { return m_length; }

private:
    WCHAR* m_out;
    std::size_t m_room;
    std::size_t m_length = 0;
};

// What stands between a percent sign and its letter.
struct Conversion {
    bool left = false;       // -
    bool plus = false;       // +
    bool blank = false;      // a blank
    bool zero = false;       // 0
    bool alternate = false;  // #
    int width = 0;
    int precision = -1;          // -1: none given
    std::size_t cutToBytes = 8;  // by h (2) or hh (1)
    WCHAR letter = 0;
};

struct LengthModifier {
    std::string_view spelling;
    std::size_t cutToBytes;
};

// Longer ones before those that they begin with.
constexpr LengthModifier kLengthModifiers[] = {
    {"hh", 1}, {"h", 2}, {"ll", 8}, {"l", 8}, {"I64", 8}, {"I32", 8},
    {"I", 8},  {"j", 8}, {"z", 8},  {"t", 8}, {"w", 8},   {"L", 8},
};

bool BeginsWith(WideView text, std::string_view ascii) noexcept {
    return text.size() >= ascii.size() && std::equal(ascii.begin(), ascii.end(), text.begin(), [](char a, WCHAR b) {
               return static_cast<WCHAR>(a) == b;
           });
}

constexpr bool IsDigit(WCHAR unit) noexcept {
    return unit >= '0' && unit <= '9';
}

// The units of a narrow text of at most `limit` bytes, given one by one to `sink`.
template <typename Sink>
void DecodeNarrow(const char* text, std::size_t limit, const Sink& sink) noexcept {
    constexpr std::size_t kChunk = 256;
    const auto byteAt = [text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    for (std::size_t i = 0; i < limit && text[i] != '\0';) {
        if (byteAt(i) < 0x80) {
            sink(static_cast<WCHAR>(byteAt(i++)));
            continue;
        }
        // In every ANSI code page a byte below 0x30 stands for itself, so the text may be cut before one.
        std::size_t bytes = 1;
        while (bytes < kChunk && i + bytes < limit && byteAt(i + bytes) >= 0x30) {
            ++bytes;
        }
        WCHAR units[2 * kChunk];
        const int count = MultiByteToWideChar(CP_ACP, 0, text + i, static_cast<int>(bytes), units, 2 * kChunk);
        for (int k = 0; k < count; ++k) {
            sink(units[k]);
        }
        if (count <= 0) {
            sink(kReplacement);
        }
        i += bytes;
    }
}

std::size_t ZeroTerminatedLength(const WCHAR* text, std::size_t limit) noexcept {
    std::size_t length = 0;
    while (length < limit && text[length] != 0) {
        ++length;
    }
    return length;
}

// Walks one format. Each Print... gives false, and has printed nothing, when the argument does not fit the letter.
class Formatter {
public:
    Formatter(Output& output, FormatArgs args) noexcept : m_output(output), m_args(args) {}

    void Run(WideView format) noexcept {
        while (!format.empty()) {
            const std::size_t percent = std::min(format.find(static_cast<WCHAR>('%')), format.size());
            m_output.Append(format.substr(0, percent));
            format.remove_prefix(percent);
            if (!format.empty()) {
                format.remove_prefix(RunConversion(format));
            }
        }
    }

private:
    // Prints the conversion that `format` begins with, or what stands there, and gives the units done with.
    std::size_t RunConversion(WideView format) noexcept {
        Conversion conversion;
        std::size_t length = 1;
        const bool fieldsFit = ParseFields(format, length, conversion);
        if (length == format.size()) {
            m_output.Append(format);
            return length;
        }
        conversion.letter = format[length++];
        if (conversion.letter == '%') {
            m_output.Put('%');
        } else if (!IsLetter(conversion.letter)) {
            m_output.Put('%');  // a lone percent sign: what follows it may be a conversion
            return 1;
        } else if (const FormatArg* arg = Next(); arg == nullptr || !fieldsFit || !Print(conversion, *arg)) {
            m_output.Append(format.substr(0, length));
        }
        return length;
    }

    static bool IsLetter(WCHAR unit) noexcept {
        constexpr std::string_view kLetters = "diuoxXeEfFgGcCsSp";
        return unit < 0x80 && kLetters.find(static_cast<char>(unit)) != kLetters.npos;
    }

    // Everything up to the letter. False when a width or precision is out of bounds or lacks its argument.
    bool ParseFields(WideView format, std::size_t& at, Conversion& conversion) noexcept {
        for (bool more = true; more && at < format.size();) {
            switch (format[at]) {
                case '-': conversion.left = true; break;
                case '+': conversion.plus = true; break;
                case ' ': conversion.blank = true; break;
                case '0': conversion.zero = true; break;
                case '#': conversion.alternate = true; break;
                default: more = false; continue;
            }
            ++at;
        }
        bool fit = ParseNumber(format, at, conversion.width);
        if (conversion.width < 0) {
            conversion.left = true;
            conversion.width = -conversion.width;
        }
        if (at < format.size() && format[at] == '.') {
            conversion.precision = 0;
            fit = ParseNumber(format, ++at, conversion.precision) && fit;
        }
        for (const LengthModifier& modifier : kLengthModifiers) {
            if (BeginsWith(format.substr(at), modifier.spelling)) {
                conversion.cutToBytes = modifier.cutToBytes;
                at += modifier.spelling.size();
                break;
            }
        }
        return fit;
    }

    // Digits, or the argument that * stands for; neither leaves `number` alone.
    bool ParseNumber(WideView format, std::size_t& at, int& number) noexcept {
        if (at < format.size() && format[at] == '*') {
            ++at;
            const FormatArg* arg = Next();
            if (arg == nullptr || !arg->IsInteger()) {
                return false;
            }
            const auto value = static_cast<std::int64_t>(arg->Bits());
            if (value < -kLargestField || value > kLargestField) {
                return false;
            }
            number = static_cast<int>(value);
            return true;
        }
        if (at < format.size() && IsDigit(format[at])) {
            number = 0;
        }
        for (; at < format.size() && IsDigit(format[at]); ++at) {
            number = std::min(number * 10 + (format[at] - '0'), kLargestField + 1);
        }
        return number <= kLargestField;
    }

    const FormatArg* Next() noexcept { return m_next < m_args.size() ? &m_args[m_next++] : nullptr; }

    bool Print(const Conversion& conversion, const FormatArg& arg) noexcept {
        switch (conversion.letter) {
            case 's':
            case 'S': return PrintText(conversion, arg);
            case 'c':
            case 'C': return PrintCharacter(conversion, arg);
            case 'p': return PrintPointer(conversion, arg);
            case 'd':
            case 'i':
            case 'u':
            case 'o':
            case 'x':
            case 'X': return PrintInteger(conversion, arg);
            default: return PrintReal(conversion, arg);
        }
    }

    bool PrintText(const Conversion& conversion, const FormatArg& arg) noexcept {
        if (!arg.IsText()) {
            return false;
        }
        std::size_t limit = arg.TextLimit();
        if (conversion.precision >= 0) {
            limit = std::min(limit, static_cast<std::size_t>(conversion.precision));
        }
        if (arg.Text() == nullptr) {
            PutText(conversion, "(null)"_w);
        } else if (arg.GetKind() == FormatArg::Kind::Wide) {
            PutText(conversion, WideView(arg.WideText(), ZeroTerminatedLength(arg.WideText(), limit)));
        } else {
            PrintNarrow(conversion, arg.NarrowText(), limit);
        }
        return true;
    }

    void PrintNarrow(const Conversion& conversion, const char* text, std::size_t limit) noexcept {
        std::size_t units = 0;
        if (conversion.width > 0) {
            DecodeNarrow(text, limit, [&units](WCHAR) { ++units; });
        }
        const std::size_t padding = Padding(conversion, units);
        m_output.Fill(' ', conversion.left ? 0 : padding);
        DecodeNarrow(text, limit, [this](WCHAR unit) { m_output.Put(unit); });
        m_output.Fill(' ', conversion.left ? padding : 0);
    }

    bool PrintCharacter(const Conversion& conversion, const FormatArg& arg) noexcept {
        if (!arg.IsInteger()) {
            return false;
        }
        // A single byte beyond ASCII may be no character at all in the code page.
        const bool isByte = arg.Bytes() == 1 && (arg.Bits() & 0xFF) >= 0x80;
        const WCHAR unit = isByte ? kReplacement : static_cast<WCHAR>(arg.Bits());
        PutText(conversion, WideView(&unit, 1));
        return true;
    }

    bool PrintPointer(const Conversion& conversion, const FormatArg& arg) noexcept {
        if (arg.GetKind() == FormatArg::Kind::Real) {
            return false;
        }
        const std::uint64_t address = arg.IsText() ? reinterpret_cast<std::uintptr_t>(arg.Text()) : arg.Bits();
        Conversion digits = conversion;
        digits.letter = 'X';
        digits.precision = 16;
        digits.alternate = false;
        return PrintInteger(digits, FormatArg::OfPointer(address));
    }

    bool PrintInteger(const Conversion& conversion, const FormatArg& arg) noexcept {
        if (!arg.IsInteger() && arg.GetKind() != FormatArg::Kind::Pointer) {
            return false;
        }
        // As in C, what is narrower than an int has become one, and h and hh cut it down again.
        const std::size_t bytes = std::min(conversion.cutToBytes, std::max<std::size_t>(arg.Bytes(), 4));
        const auto unusedBits = static_cast<unsigned>(64 - 8 * bytes);
        std::uint64_t magnitude = arg.Bits() << unusedBits >> unusedBits;
        std::string_view prefix;
        if (conversion.letter == 'd' || conversion.letter == 'i') {
            const auto value = static_cast<std::int64_t>(arg.Bits() << unusedBits) >> unusedBits;
            prefix = Sign(conversion, value < 0);
            magnitude = value < 0 ? 0 - static_cast<std::uint64_t>(value) : static_cast<std::uint64_t>(value);
        }

        const int base = conversion.letter == 'o' ? 8 : conversion.letter == 'x' || conversion.letter == 'X' ? 16 : 10;
        char digits[24];
        char* end = std::to_chars(digits, std::end(digits), magnitude, base).ptr;
        if (magnitude == 0 && conversion.precision == 0) {
            end = digits;
        }
        if (conversion.letter == 'X') {
            MakeUpperCase(digits, end);
        }
        const auto count = static_cast<std::size_t>(end - digits);
        std::size_t zeros = 0;
        if (conversion.precision > static_cast<int>(count)) {
            zeros = static_cast<std::size_t>(conversion.precision) - count;
        }
        if (conversion.alternate && base == 8 && zeros == 0 && (count == 0 || digits[0] != '0')) {
            zeros = 1;
        }
        if (conversion.alternate && base == 16 && magnitude != 0) {
            prefix = conversion.letter == 'x' ? "0x" : "0X";
        }
        PutNumber(conversion, prefix, zeros, {digits, count}, conversion.zero && conversion.precision < 0);
        return true;
    }

    bool PrintReal(const Conversion& conversion, const FormatArg& arg) noexcept {
        if (arg.GetKind() != FormatArg::Kind::Real) {
            return false;
        }
        const bool isUpperCase = conversion.letter < 'a';
        const WCHAR kind = static_cast<WCHAR>(isUpperCase ? conversion.letter + ('a' - 'A') : conversion.letter);
        const auto format = kind == 'e'   ? std::chars_format::scientific
                            : kind == 'f' ? std::chars_format::fixed
                                          : std::chars_format::general;
        char digits[512];  // the largest number takes 309 before the point; a precision that needs more does not fit
        const int precision = conversion.precision < 0 ? 6 : conversion.precision;
        const auto [end, error] = std::to_chars(digits, std::end(digits), std::fabs(arg.Real()), format, precision);
        if (error != std::errc()) {
            return false;
        }
        if (isUpperCase) {
            MakeUpperCase(digits, end);
        }
        PutNumber(conversion, Sign(conversion, std::signbit(arg.Real())), 0,
                  {digits, static_cast<std::size_t>(end - digits)}, conversion.zero && std::isfinite(arg.Real()));
        return true;
    }

    static std::string_view Sign(const Conversion& conversion, bool negative) noexcept {
        return negative ? "-" : conversion.plus ? "+" : conversion.blank ? " " : "";
    }

    static void MakeUpperCase(char* first, const char* last) noexcept {
        for (; first != last; ++first) {
            if (*first >= 'a' && *first <= 'z') {
                *first = static_cast<char>(*first - ('a' - 'A'));
            }
        }
    }

    static std::size_t Padding(const Conversion& conversion, std::size_t length) noexcept {
        const auto width = static_cast<std::size_t>(conversion.width);
        return width > length ? width - length : 0;
    }

    void PutText(const Conversion& conversion, WideView text) noexcept {
        const std::size_t padding = Padding(conversion, text.size());
        m_output.Fill(' ', conversion.left ? 0 : padding);
        m_output.Append(text);
        m_output.Fill(' ', conversion.left ? padding : 0);
    }

    // Sign or prefix, zeros, digits, filled up to the width: with zeros behind the prefix if `padWithZeros`, unless the
    // number stands at the left.
    void PutNumber(const Conversion& conversion, std::string_view prefix, std::size_t zeros, std::string_view digits,
                   bool padWithZeros) noexcept {
        std::size_t padding = Padding(conversion, prefix.size() + zeros + digits.size());
        if (padWithZeros && !conversion.left) {
            zeros += std::exchange(padding, 0);
        }
        m_output.Fill(' ', conversion.left ? 0 : padding);
        m_output.Append(prefix);
        m_output.Fill('0', zeros);
        m_output.Append(digits);
        m_output.Fill(' ', conversion.left ? padding : 0);
    }

    Output& m_output;
    FormatArgs m_args;
    std::size_t m_next = 0;
};

}  // namespace

int FormatText(WCHAR* out, std::size_t capacity, WideView format, FormatArgs args) noexcept {
    Output output(out, capacity);
    if (args.empty()) {
        output.Append(format);
    } else {
        Formatter(output, args).Run(format);
    }
    if (capacity > 0) {
        out[std::min(output.Length(), capacity - 1)] = 0;
    }
    return output.Length() <= INT_MAX ? static_cast<int>(output.Length()) : -1;
}

CStringW FormatToString(WideView format, FormatArgs args) {
    WCHAR buffer[256];
    const int length = FormatText(buffer, std::size(buffer), format, args);
    if (length < 0) {
        return {};
    }
    const auto count = static_cast<std::size_t>(length);
    if (count < std::size(buffer)) {
        return CStringW(buffer, count);
    }
    CStringW text(count, WCHAR{0});
    FormatText(text.data(), count + 1, format, args);
    return text;
}

}  // namespace Vx
