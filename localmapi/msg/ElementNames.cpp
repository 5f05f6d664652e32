#include "localmapi/msg/ElementNames.h"

#include <algorithm>

namespace localmapi::msg {

namespace {

constexpr WideView kValuePrefix = "__substg1.0_"_w;
constexpr unsigned kDigits = 8;

void AppendHex(CStringW& text, std::uint32_t number) {
    constexpr WideView kHexDigits = "0123456789ABCDEF"_w;
    for (unsigned i = kDigits; i-- > 0;) {
        text += kHexDigits[(number >> (4 * i)) & 0xF];
    }
}

constexpr WCHAR Upper(WCHAR unit) noexcept {
    return unit >= 'a' && unit <= 'z' ? static_cast<WCHAR>(unit - 'a' + 'A') : unit;
}

std::optional<std::uint32_t> ParseHex(WideView digits) noexcept {
    if (digits.empty() || digits.size() > kDigits) {
        return std::nullopt;
    }
    std::uint32_t number = 0;
    for (const WCHAR given : digits) {
        const WCHAR digit = Upper(given);
        const bool isLetter = digit >= 'A' && digit <= 'F';
        if (!isLetter && (digit < '0' || digit > '9')) {
            return std::nullopt;
        }
        number = number << 4 | static_cast<std::uint32_t>(isLetter ? digit - 'A' + 10 : digit - '0');
    }
    return number;
}

}  // namespace

CStringW ValueName(ULONG tag) {
    CStringW name(kValuePrefix);
    AppendHex(name, tag);
    return name;
}

CStringW ValueName(ULONG tag, std::uint32_t index) {
    CStringW name = ValueName(tag);
    name += static_cast<WCHAR>('-');
    AppendHex(name, index);
    return name;
}

CStringW NumberedName(WideView prefix, std::uint32_t number) {
    CStringW name(prefix);
    AppendHex(name, number);
    return name;
}

std::optional<ValueElement> ParseValueName(WideView name) {
    if (!HasPrefix(name, kValuePrefix)) {
        return std::nullopt;
    }
    const WideView digits = name.substr(kValuePrefix.size());
    const auto tag = digits.size() >= kDigits ? ParseHex(digits.substr(0, kDigits)) : std::nullopt;
    if (!tag) {
        return std::nullopt;
    }
    const WideView rest = digits.substr(kDigits);
    if (rest.empty()) {
        return ValueElement{*tag, std::nullopt};
    }
    const auto index = rest[0] == '-' ? ParseHex(rest.substr(1)) : std::nullopt;
    return index ? std::optional(ValueElement{*tag, index}) : std::nullopt;
}

bool HasPrefix(WideView name, WideView prefix) noexcept {
    return name.size() >= prefix.size() && IsSameName(name.substr(0, prefix.size()), prefix);
}

std::optional<std::uint32_t> NumberBehind(WideView name, WideView prefix) noexcept {
    return ParseHex(name.substr(prefix.size()));
}

bool IsSameName(WideView left, WideView right) noexcept {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](WCHAR a, WCHAR b) { return Upper(a) == Upper(b); });
}

std::string Printable(WideView name) {
    std::string text;
    for (const WCHAR unit : name) {
        text += unit >= ' ' && unit < 0x7F ? static_cast<char>(unit) : '?';
    }
    return text;
}

}  // namespace localmapi::msg
