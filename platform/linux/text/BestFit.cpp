#include "platform/linux/text/BestFit.h"

#include "platform/WideText.h"
#include "platform/linux/text/PageMapping.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace vx_text {
namespace {

// U+00C0 to U+017F without their accents, in the order of the code points; a blank for a letter that has no such form.
constexpr std::string_view kLetters =
    "AAAAAAACEEEEIIII"
    "DNOOOOO OUUUUYT "
    "aaaaaaaceeeeiiii"
    "dnooooo ouuuuyty"
    "AaAaAaCcCcCcCcDd"
    "DdEeEeEeEeEeGgGg"
    "GgGgHhHhIiIiIiIi"
    "Ii  JjKk LlLlLl "
    " LlNnNnNn   OoOo"
    "OoOoRrRrRrSsSsSs"
    "SsTtTtTtUuUuUuUu"
    "UuUuWwYyYZzZzZz ";
constexpr WCHAR kFirstLetter = 0xC0;
static_assert(kLetters.size() == 0x180 - kFirstLetter);

struct WidePair {
    WCHAR unit;
    WCHAR wide;
};

constexpr WidePair kWide[] = {
    {0x00A0, 0x3000}, {0x00A2, 0xFFE0}, {0x00A3, 0xFFE1}, {0x00A5, 0xFFE5}, {0x00A6, 0xFFE4},
    {0x00AB, 0x226A}, {0x00AC, 0xFFE2}, {0x00B7, 0x30FB}, {0x00BB, 0x226B}, {0x2014, 0x2015},
    {0x2022, 0x30FB}, {0x2212, 0xFF0D}, {0x301C, 0xFF5E},
};

struct AsciiRow {
    char ascii;
    WideView units;
};

constexpr AsciiRow kAscii[] = {
    {' ', u"\u00A0\u2000\u2001\u2002\u2003\u2004\u2005\u2006\u3000"},
    {'"', u"\u02BA\u201C\u201D\u201E\u2033"},
    {'\'', u"\u02B9\u02BC\u2018\u2019\u2032"},
    {',', u"\u201A"},
    {'-', u"\u00AD\u2010\u2011\u2013\u2014\u2212"},
    {'.', u"\u00B7\u2022\u2026"},
    {'/', u"\u2044"},
    {'1', u"\u00B9"},
    {'2', u"\u00B2"},
    {'3', u"\u00B3"},
    {'<', u"\u00AB\u2039"},
    {'>', u"\u00BB\u203A"},
    {'R', u"\u00AE"},
    {'T', u"\u2122"},
    {'Y', u"\u00A5"},
    {'^', u"\u02C6"},
    {'`', u"\u02CB\u2035"},
    {'a', u"\u00AA"},
    {'c', u"\u00A2\u00A9"},
    {'f', u"\u0192"},
    {'o', u"\u00BA"},
    {'x', u"\u00D7"},
    {'|', u"\u00A6"},
    {'~', u"\u02DC\u301C"},
};

WCHAR WideAlike(WCHAR unit) noexcept {
    const auto* const pair = std::ranges::find(kWide, unit, &WidePair::unit);
    return pair == std::end(kWide) ? kNoUnit : pair->wide;
}

WCHAR AsciiAlike(WCHAR unit) noexcept {
    if (unit >= 0xFF01 && unit <= 0xFF5E) {  // the fullwidth forms of ASCII
        return static_cast<WCHAR>(unit - 0xFF01 + '!');
    }
    if (unit >= kFirstLetter && unit < kFirstLetter + kLetters.size()) {
        const char letter = kLetters[static_cast<std::size_t>(unit - kFirstLetter)];
        if (letter != ' ') {
            return static_cast<WCHAR>(letter);
        }
    }
    const auto* const row = std::ranges::find_if(
        kAscii, [unit](const AsciiRow& candidate) { return candidate.units.find(unit) != WideView::npos; });
    return row == std::end(kAscii) ? kNoUnit : static_cast<WCHAR>(row->ascii);
}

}  // namespace

Alike LooksLike(WCHAR unit) noexcept {
    return {WideAlike(unit), AsciiAlike(unit)};
}

}  // namespace vx_text
