#include "host/Text.h"

#include <algorithm>
#include <type_traits>

namespace vxhost {

namespace {

constexpr char32_t kReplacement = 0xFFFD;

constexpr bool IsHighSurrogate(char32_t unit) noexcept {
    return unit >= 0xD800 && unit <= 0xDBFF;
}

constexpr bool IsLowSurrogate(char32_t unit) noexcept {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

void AppendUtf16(std::u16string& out, char32_t character) {
    if (character < 0x10000) {
        out += static_cast<char16_t>(character);
        return;
    }
    character -= 0x10000;
    out += static_cast<char16_t>(0xD800 + (character >> 10));
    out += static_cast<char16_t>(0xDC00 + (character & 0x3FF));
}

constexpr char16_t Lower(char16_t unit) noexcept {
    const auto plus = [unit](unsigned distance) { return static_cast<char16_t>(unit + distance); };
    if ((unit >= 'A' && unit <= 'Z') || (unit >= 0xC0 && unit <= 0xDE && unit != 0xD7)  // Latin-1
        || (unit >= 0x391 && unit <= 0x3AB) || (unit >= 0x410 && unit <= 0x42F)) {      // Greek, Cyrillic
        return plus(0x20);
    }
    if (unit >= 0x400 && unit <= 0x40F) {
        return plus(0x50);
    }
    // Pairs of an even capital and an odd small letter, and the stretches where it is the other way round.
    const bool oddFirst = (unit >= 0x139 && unit <= 0x148) || (unit >= 0x179 && unit <= 0x17E);
    const bool inPairs = (unit >= 0x100 && unit <= 0x137 && unit != 0x130) || (unit >= 0x14A && unit <= 0x177)
                         || (unit >= 0x460 && unit <= 0x481) || (unit >= 0x48A && unit <= 0x4BF);
    return oddFirst ? plus(unit & 1U) : inPairs && (unit & 1U) == 0 ? plus(1) : unit;
}

}  // namespace

char32_t NextCharacter(std::u16string_view text, std::size_t& at) noexcept {
    const char32_t unit = text[at++];
    if (IsHighSurrogate(unit) && at < text.size() && IsLowSurrogate(text[at])) {
        return 0x10000 + ((unit - 0xD800) << 10) + (char32_t{text[at++]} - 0xDC00);
    }
    return IsHighSurrogate(unit) || IsLowSurrogate(unit) ? kReplacement : unit;
}

char32_t NextCharacter(std::string_view text, std::size_t& at) noexcept {
    const auto byte = [&](std::size_t index) { return static_cast<unsigned char>(text[index]); };
    const unsigned first = byte(at++);
    if (first < 0x80) {
        return first;
    }
    struct Form {
        unsigned mask, mark;
        std::size_t more;
        char32_t least;  // below it the form is longer than it need be
    };
    static constexpr Form kForms[] = {{0xE0, 0xC0, 1, 0x80}, {0xF0, 0xE0, 2, 0x800}, {0xF8, 0xF0, 3, 0x10000}};
    const auto* const form =
        std::find_if(std::begin(kForms), std::end(kForms), [&](const Form& f) { return (first & f.mask) == f.mark; });
    if (form == std::end(kForms)) {
        return kReplacement;
    }
    char32_t character = first & ~form->mask;
    std::size_t end = at;
    for (; end < at + form->more; ++end) {
        if (end >= text.size() || (byte(end) & 0xC0) != 0x80) {
            return kReplacement;
        }
        character = (character << 6) | (byte(end) & 0x3F);
    }
    if (character < form->least || character > 0x10FFFF || (character >= 0xD800 && character <= 0xDFFF)) {
        return kReplacement;
    }
    at = end;
    return character;
}

void AppendUtf8(std::string& out, char32_t character) {
    const auto tail = [&](unsigned shift) { return static_cast<char>(0x80 | ((character >> shift) & 0x3F)); };
    if (character < 0x80) {
        out += static_cast<char>(character);
    } else if (character < 0x800) {
        out += static_cast<char>(0xC0 | (character >> 6));
        out += tail(0);
    } else if (character < 0x10000) {
        out += static_cast<char>(0xE0 | (character >> 12));
        out += tail(6);
        out += tail(0);
    } else {
        out += static_cast<char>(0xF0 | (character >> 18));
        out += tail(12);
        out += tail(6);
        out += tail(0);
    }
}

std::string ToUtf8(std::u16string_view text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        AppendUtf8(out, NextCharacter(text, at));
    }
    return out;
}

std::u16string ToUtf16(std::string_view text) {
    std::u16string out;
    out.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        AppendUtf16(out, NextCharacter(text, at));
    }
    return out;
}

std::filesystem::path ToPath(std::string_view text) {
    if constexpr (std::is_same_v<std::filesystem::path::value_type, wchar_t>) {
        const std::u16string wide = ToUtf16(text);
        return std::filesystem::path(wide.begin(), wide.end());
    } else {
        return std::filesystem::path(text.begin(), text.end());
    }
}

std::string PathText(const std::filesystem::path& path) {
    const auto& native = path.native();
    if constexpr (std::is_same_v<std::filesystem::path::value_type, wchar_t>) {
        return ToUtf8(std::u16string(native.begin(), native.end()));
    } else {
        return ToUtf8(ToUtf16(std::string(native.begin(), native.end())));
    }
}

bool EqualIgnoringCase(std::u16string_view a, std::u16string_view b) noexcept {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char16_t x, char16_t y) { return Lower(x) == Lower(y); });
}

}  // namespace vxhost
