#include "platform/CodePage.h"
#include "provider/Common/Format.h"
#include "tests/provider/Common/LogTestSupport.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstdio>
#include <string>

namespace {

// What the C library writes for the same value.
template <typename T>
std::string AsC(const char* format, T value) {
    char text[1024];
    std::snprintf(text, sizeof(text), format, value);
    return text;
}

template <typename T>
void ExpectAsC(const char* format, T value, const char* ours = nullptr) {
    EXPECT_EQ(Ascii(Vx::FormatString(Wide(ours == nullptr ? format : ours), value)), AsC(format, value))
        << format << " of " << value;
}

TEST(Format, WritesNumbersAsTheCLibraryDoes) {
    for (const char* format :
         {"%d",    "%i",   "%u",    "%x",    "%X",     "%o",    "%c",   "%5d|", "%-5d|", "%05d", "%+d",
          "% d",   "%+u",  "%.3d",  "%8.3d", "%08.3d", "%-08d", "%.0d", "%.0x", "%#x",   "%#X",  "%#o",
          "%#.5o", "%#8x", "%#08x", "%08X",  "%hd",    "%hu",   "%hx",  "%hhd", "%hhu",  "%hho", "a%%b%d%%"}) {
        for (const int value : {0, 1, -1, 7, 65, 127, 128, 255, -128, 32767, 32768, 65535, INT_MIN, INT_MAX}) {
            const bool isCharacter = std::string_view(format) == "%c";
            if (!isCharacter || (value > 0 && value < 128)) {
                ExpectAsC(format, value);
                ExpectAsC(format, static_cast<unsigned>(value));
                ExpectAsC(format, static_cast<short>(value));
                ExpectAsC(format, static_cast<unsigned short>(value));
            }
        }
    }
    EXPECT_EQ(Ascii(Vx::FormatString("%#.0o"_w, 0)), "0");  // as [C17] 7.21.6.1 says; not every library does it
    struct Wider {
        const char* c;
        const char* ours;
    };
    for (const auto& [c, ours] : {Wider{"%lld", "%I64d"}, Wider{"%lld", "%lld"}, Wider{"%lld", "%d"},
                                  Wider{"%llu", "%I64u"}, Wider{"%llx", "%zx"}, Wider{"%024llX", "%024jX"}}) {
        for (const long long value : {0LL, -1LL, LLONG_MIN, LLONG_MAX, 1LL << 40}) {
            ExpectAsC(c, value, ours);
        }
    }
    for (const char* format :
         {"%f", "%.0f", "%10.2f|", "%-10.2f|", "%010.2f", "%+e", "% .3E", "%g", "%G", "%.0g", "%.10g", "%012g", "%F"}) {
        for (const double value : {0.0, -0.0, 1.5, -2.25, 1e-7, 123456789.125, 1e300, -1e-300, double(INFINITY)}) {
            ExpectAsC(format, value);
        }
    }
}

TEST(Format, TakesTextOfEveryKindAndReadsNoMoreOfItThanThereIs) {
    const CStringW owned = "owned"_w;
    const std::string narrow = "narrow";
    const WCHAR unterminated[3] = {'a', 'b', 'c'};
    const WCHAR* beginning = owned.c_str();
    const WCHAR* nothing = nullptr;
    struct Convertible {
        const WCHAR* text;
        // NOLINTNEXTLINE(google-explicit-constructor): texts of others convert this way.
        operator const WCHAR*() const { return text; }
    };
    const Convertible convertible{"converted"_w};
    const struct {
        const char* name;
        CStringW text;
        const char* expected;
    } rows[] = {
        {"owned wide", Vx::FormatString("<%s>"_w, owned), "<owned>"},
        {"borrowed wide, part of a text", Vx::FormatString("<%s>"_w, WideView(owned).substr(1, 3)), "<wne>"},
        {"narrow under %s", Vx::FormatString("<%s>"_w, narrow), "<narrow>"},
        {"narrow under %hs and %S", Vx::FormatString("<%hs%S>"_w, "one", narrow.c_str()), "<onenarrow>"},
        {"wide under %hs", Vx::FormatString("<%hs>"_w, beginning), "<owned>"},
        {"an object that gives text", Vx::FormatString("<%s>"_w, convertible), "<converted>"},
        {"null, typed and not", Vx::FormatString("<%s%ls>"_w, nothing, nullptr), "<(null)(null)>"},
        {"array without a terminator", Vx::FormatString("<%s>"_w, unterminated), "<abc>"},
        {"width", Vx::FormatString("<%7s%-7s>"_w, owned, narrow), "<  ownednarrow >"},
        {"precision", Vx::FormatString("<%.2s%.3s>"_w, owned, narrow), "<ownar>"},
        {"both from arguments", Vx::FormatString("<%*.*s>"_w, 5, 2, beginning), "<   ow>"},
        {"negative width and precision", Vx::FormatString("<%*.*s>"_w, -6, -1, beginning), "<owned >"},
        {"percent signs in an argument", Vx::FormatString("<%s>"_w, "100%s %d%%"_w), "<100%s %d%%>"},
        {"zero inside", Vx::FormatString("<%s>"_w, WideView("ab\0cd"_w, 5)), "<ab>"},
        {"a pointer", Vx::FormatString("%p"_w, reinterpret_cast<void*>(0xBEEF)), "000000000000BEEF"},
        {"a handle as a number", Vx::FormatString("0x%08X"_w, reinterpret_cast<void*>(0xBEEF)), "0x0000BEEF"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Ascii(row.text), row.expected) << row.name;
    }

    // A buffer that its precision bounds, at the end of its allocation: reading on is a fault that sanitizers see.
    const auto exact = std::make_unique<char[]>(4);
    exact[0] = exact[1] = exact[2] = exact[3] = 'x';
    EXPECT_EQ(Ascii(Vx::FormatString("%.4s"_w, exact.get())), "xxxx");
}

TEST(Format, LeavesStandingWhatNoArgumentFits) {
    int untouched = 5;
    const struct {
        const char* name;
        CStringW text;
        const char* expected;
    } rows[] = {
        {"missing", Vx::FormatString("%d %s %x"_w, 1), "1 %s %x"},
        {"number for text", Vx::FormatString("<%s>"_w, 0x12345678), "<%s>"},
        {"text for number", Vx::FormatString("<%5d>"_w, "text"_w), "<%5d>"},
        {"text for character", Vx::FormatString("<%c>"_w, "text"_w), "<%c>"},
        {"number for real, real for number", Vx::FormatString("<%f%d>"_w, 1, 1.0), "<%f%d>"},
        {"pointer for text", Vx::FormatString("<%s>"_w, static_cast<void*>(&untouched)), "<%s>"},
        {"the next argument is in its place", Vx::FormatString("%s %s"_w, 1, "b"_w), "%s b"},
        {"left over", Vx::FormatString("%d"_w, 1, 2), "1"},
        {"text for a width", Vx::FormatString("<%*d>"_w, "text"_w, 1), "<%*d>"},
        {"width without bounds", Vx::FormatString("<%10000d%*d%*d>"_w, 1, INT_MAX, 1, INT_MIN, 1), "<%10000d%*d%*d>"},
        {"precision without bounds", Vx::FormatString("<%.99999999999f>"_w, 1.0), "<%.99999999999f>"},
        {"more digits than are kept", Vx::FormatString("<%.600f>"_w, 1.0), "<%.600f>"},
        {"no write through %n", Vx::FormatString("<%n>"_w, &untouched), "<%n>"},
        {"unknown letter", Vx::FormatString("<%y%d>"_w, 3), "<%y3>"},
        {"cut off at the end", Vx::FormatString("%d%08"_w, 3), "3%08"},
        {"lone at the end", Vx::FormatString("%d%"_w, 3), "3%"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Ascii(row.text), row.expected) << row.name;
    }
    EXPECT_EQ(untouched, 5);

    for (const char* text : {"100%", "%s%s%s%n", "50%% of %d", "%"}) {
        EXPECT_EQ(Ascii(Vx::FormatString(Wide(text))), text) << "a format without arguments is text";
    }
}

TEST(Format, MeasuresTheWholeTextAndWritesWhatFits) {
    const auto args = Vx::MakeFormatArgs(12345, "tail"_w);
    const std::string whole = "<12345 tail>";
    for (std::size_t capacity = 0; capacity <= whole.size() + 2; ++capacity) {
        const auto out = std::make_unique<WCHAR[]>(capacity);
        EXPECT_EQ(Vx::FormatText(out.get(), capacity, "<%d %s>"_w, args), static_cast<int>(whole.size()));
        if (capacity > 0) {
            EXPECT_EQ(Ascii(WideView(out.get())), whole.substr(0, capacity - 1)) << "capacity " << capacity;
        }
    }
}

TEST(Format, ReadsNarrowTextInTheAnsiCodePage) {
    std::string text = "\xC3\xA9\xC3\xA9";  // with it, byte 256 and byte 512 lie inside a character
    for (int i = 0; i < 300; ++i) {
        text += i % 7 == 0 ? " \xC3\xA9" : i % 5 == 0 ? "a" : "\xE2\x82\xAC";  // several pieces of the decoder's
    }
    for (std::size_t length = 1; length <= text.size(); ++length) {
        const std::string_view part(text.data(), length);  // ends in the middle of a character, or behind it
        CStringW expected(length, WCHAR{0});
        const auto count = static_cast<std::size_t>(MultiByteToWideChar(
            CP_ACP, 0, part.data(), static_cast<int>(length), expected.data(), static_cast<int>(length)));
        expected.resize(count);
        ASSERT_EQ(Vx::FormatString("%s"_w, part), expected) << length;
        ASSERT_EQ(Vx::FormatString("%*s"_w, count + 2, part), "  "_w + expected) << length;
    }
}

}  // namespace
