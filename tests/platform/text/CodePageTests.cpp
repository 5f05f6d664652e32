// Pages and rules that every system has: expectations are from the published mapping tables and [Unicode].
#include "tests/platform/text/Conversion.h"

namespace vx_text_tests {
namespace {

TEST(CodePage, ConvertsThePublishedCharactersExactly) {
    const Sample samples[] = {
        {"EBCDIC letters and bracket", 37, "\xC8\x85\x93\x93\x96\xBA", "Hello["_w},
        {"box drawing", 437, "\x82\xB3\xE1", {0x00E9, 0x2502, 0x00DF}},
        {"EBCDIC international bracket", 500, "\x4A\xC1", "[A"_w},
        {"Greek DOS", 737, "\x80\x98", {0x0391, 0x03B1}},
        {"Baltic DOS", 775, "\xB5", {0x0104}},
        {"Latin 1 DOS", 850, "\x84\xD5", {0x00E4, 0x0131}},
        {"Latin 2 DOS", 852, "\xA4", {0x0104}},
        {"Cyrillic DOS", 855, "\xA0", {0x0430}},
        {"Turkish DOS", 857, "\x8D\x98", {0x0131, 0x0130}},
        {"Portuguese DOS", 860, "\x84", {0x00E3}},
        {"Icelandic DOS", 861, "\x8B\x8D", {0x00D0, 0x00DE}},
        {"Hebrew DOS", 862, "\x80", {0x05D0}},
        {"French-Canadian DOS", 863, "\x8D", {0x2017}},
        {"percent sign of Arabic DOS", 864, "%", "%"_w},
        {"Nordic DOS", 865, "\x9D", {0x00D8}},
        {"Russian DOS", 866, "\x80\xE0", {0x0410, 0x0440}},
        {"modern Greek DOS", 869, "\xA4", {0x0391}},
        {"Thai", 874, "\xA1\x80", {0x0E01, 0x20AC}},
        {"Greek EBCDIC", 875, "\x41\x6A", {0x0391, 0x007C}},
        {"kana and kanji", 932, "\x82\xA0\x83\x5C\xB1\x8A\xBF", {0x3042, 0x30BD, 0xFF71, 0x6F22}},
        {"fullwidth tilde, not wave dash", 932, "\x81\x60", {0xFF5E}},
        {"NEC's circled digit", 932, "\x87\x40", {0x2460}},
        {"IBM's small roman numeral", 932, "\xFA\x40", {0x2170}},
        {"user-defined", 932, "\xF0\x40", {0xE000}},
        {"simplified Chinese and the euro", 936, "\xC4\xE3\xBA\xC3\x80", {0x4F60, 0x597D, 0x20AC}},
        {"GBK beyond GB 2312", 936, "\x81\x40", {0x4E02}},
        {"user-defined", 936, "\xAA\xA1\xF8\xA1\xA1\x40", {0xE000, 0xE234, 0xE4C6}},
        {"Hangul, and beyond KS X 1001", 949, "\xB0\xA1\x81\x41", {0xAC00, 0xAC02}},
        {"traditional Chinese", 950, "\xA4\xA4\xA4\xE5", {0x4E2D, 0x6587}},
        {"user-defined", 950, "\xFA\x40\x8E\x40\x81\x40", {0xE000, 0xE311, 0xEEB8}},
        {"the later of two box corners", 950, "\xF9\xF9", {0x2550}},
        {"Central European", 1250, "\xE8\xA5", {0x010D, 0x0104}},
        {"Cyrillic", 1251, "\xCF\xF0\xE8", {0x041F, 0x0440, 0x0438}},
        {"typographic and undefined", 1252, "\x80\x93\x94\x81", {0x20AC, 0x201C, 0x201D, 0x0081}},
        {"Greek", 1253, "\xC1", {0x0391}},
        {"Turkish", 1254, "\xFD\xDD", {0x0131, 0x0130}},
        {"Hebrew, with a point", 1255, "\xE0\xC7\xCA", {0x05D0, 0x05B7, 0x05BA}},
        {"Arabic and Persian", 1256, "\xC7\x81", {0x0627, 0x067E}},
        {"Baltic", 1257, "\xF0", {0x0161}},
        {"Vietnamese: marks are not composed", 1258, "a\xD2\xFE", {0x0061, 0x0309, 0x20AB}},
        {"Johab", 1361, "\x88\x61", {0xAC00}},
        {"Macintosh", 10000, "\x80\xDB", {0x00C4, 0x20AC}},
        {"Russian", 20866, "\xF0\xD2\xC9", {0x041F, 0x0440, 0x0438}},
        {"Ukrainian, and Belarusian short u", 21866, "\xA4\xAE", {0x0454, 0x045E}},
        {"Latin 1", 28591, "\x80\xE4\xFF", {0x0080, 0x00E4, 0x00FF}},
        {"Latin 2", 28592, "\xB1", {0x0105}},
        {"Latin 3", 28593, "\xA1", {0x0126}},
        {"Latin 4", 28594, "\xA1", {0x0104}},
        {"Cyrillic", 28595, "\xB0", {0x0410}},
        {"Arabic", 28596, "\xC7", {0x0627}},
        {"Greek", 28597, "\xC1", {0x0391}},
        {"Hebrew", 28598, "\xE0", {0x05D0}},
        {"Turkish", 28599, "\xFD", {0x0131}},
        {"Baltic", 28603, "\xC0", {0x0104}},
        {"Latin 9", 28605, "\xA4", {0x20AC}},
        {"UTF-8 of one to three bytes", 65001, "a\xC3\xA4\xE2\x82\xAC", {0x0061, 0x00E4, 0x20AC}},
        {"UTF-8 at the borders of its lengths",
         65001,
         "\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xEF\xBF\xBF",
         {0x007F, 0x0080, 0x07FF, 0x0800, 0xFFFF}},
    };
    for (const Sample& sample : samples) {
        ExpectExactBothWays(sample);
    }
}

TEST(CodePage, WritesBackEverythingThatItReads) {
    constexpr UINT kPages[] = {37,    437,   500,   737,   775,   850,   852,   855,   857,   860,
                               861,   862,   863,   864,   865,   866,   869,   874,   875,   932,
                               936,   949,   950,   1026,  1250,  1251,  1252,  1253,  1254,  1255,
                               1256,  1257,  1258,  1361,  10000, 20127, 20866, 21866, 28591, 28592,
                               28593, 28594, 28595, 28596, 28597, 28598, 28599, 28603, 28605};
    for (const UINT page : kPages) {
        ExpectRepertoireToRoundTrip(page);
    }
}

// A byte or two of a page: what they become, and whether MB_ERR_INVALID_CHARS lets them pass.
TEST(CodePage, ReplacesWhatIsInvalidOrFailsWhenAskedTo) {
    struct Row {
        const char* name;
        UINT page;
        std::string_view bytes;
        CStringW text;
        bool isStrictlyValid;
    };
    constexpr WCHAR kDot = 0x30FB;
    const Row rows[] = {
        {"C1 control of an ANSI page", 1252, "\x8D", {0x008D}, true},
        {"undefined, as private use", 1253, "\xAA\xFF", {0xF8F9, 0xF8FB}, false},
        {"undefined, as private use", 1255, "\xD9", {0xF88D}, false},
        {"undefined, as private use", 874, "\xDB\xFF", {0xF8C1, 0xF8C8}, false},
        {"undefined, as private use", 28596, "\xA1\xFF", {0xF7C8, 0xF7F4}, false},
        {"single byte out of range", 932, "\xA0\xFD", {0xF8F0, 0xF8F1}, false},
        {"single byte out of range", 936, "\xFF", {0xF8F5}, false},
        {"pair of the private use area", 936, "\xA2\xAB", {0xE766}, true},
        {"highest bit of ASCII", 20127, "\xE1", {'a'}, true},
        {"lead byte at the end", 932, "a\x81", {'a', kDot}, false},
        {"lead byte at the end", 949, "a\xB0", {'a', '?'}, false},
        {"lead byte before NUL", 932, std::string_view("\x81\0b", 3), {kDot, 0, 'b'}, false},
        {"pair with a bad trail", 932, "\x81\x20\x62", {kDot, 'b'}, false},
        {"pair with a bad trail", 936, "\x81\x20\x62", {'?', 'b'}, false},
        {"pair without a meaning", 932, "\x85\x40\x62", {kDot, 'b'}, false},
        {"the replacement itself", 932, "\x81\x45", {kDot}, true},
        {"the replacement itself", 936, "?", {'?'}, true},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << "page " << row.page << ", " << row.name);
        EXPECT_EQ(Decode(row.page, row.bytes), row.text);
        EXPECT_EQ(
            DecodeError(row.page, row.bytes, MB_ERR_INVALID_CHARS),
            row.isStrictlyValid ? static_cast<DWORD>(ERROR_SUCCESS) : static_cast<DWORD>(ERROR_NO_UNICODE_TRANSLATION));
    }
}

TEST(CodePage, Utf8ReplacesABrokenSequence) {
    constexpr WCHAR kBad = 0xFFFD;
    const BrokenUtf8 rows[] = {
        {"lone continuation", "\x80", {kBad}},
        {"two cut to one", "\xC2\x41", {kBad, 'A'}},
        {"overlong NUL", "\xC0\x80", {kBad, kBad}},
        {"three cut to two", "\xE2\x82\x41", {kBad, 'A'}},
        {"three cut at the end", "\xE2\x82", {kBad}},
        {"four cut to three", "\xF0\x9F\x98\x41", {kBad, 'A'}},
        {"four cut at the end", "\xF0\x9F\x98", {kBad}},
        {"bytes that begin nothing", "\xF5\xF8\xFE\xFF", {kBad, kBad, kBad, kBad}},
    };
    for (const BrokenUtf8& row : rows) {
        ExpectReplaced(row);
    }
}

TEST(CodePage, Utf8CarriesPairsAndReplacesLoneSurrogates) {
    const CStringW pair{0xD83D, 0xDE00};
    EXPECT_EQ(Decode(CP_UTF8, "\xF0\x9F\x98\x80"), pair);
    EXPECT_EQ(Encode(CP_UTF8, pair, WC_ERR_INVALID_CHARS), "\xF0\x9F\x98\x80");
    EXPECT_EQ(Decode(CP_UTF8, "\xF4\x8F\xBF\xBF"), CStringW({0xDBFF, 0xDFFF}));

    for (const CStringW& lone : {CStringW{0xD83D}, CStringW{0xDE00}, CStringW{0xD83D, 'A'}, CStringW{0xDE00, 0xD83D}}) {
        std::string expected;
        for (const WCHAR unit : lone) {
            expected += unit == 'A' ? "A" : "\xEF\xBF\xBD";
        }
        EXPECT_EQ(Encode(CP_UTF8, lone), expected);
        EXPECT_EQ(Encode(CP_UTF8, lone, WC_ERR_INVALID_CHARS), "");
        EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_NO_UNICODE_TRANSLATION));
    }
}

// RFC 2152, and what this system's writer makes of the choices that it leaves.
TEST(CodePage, Utf7ReadsAnythingAndWritesTheStrictForm) {
    struct Row {
        const char* name;
        std::string_view bytes;
        CStringW text;
        bool isWrittenSo;
    };
    const Row rows[] = {
        {"the RFC's first example", "A+ImIDkQ.", {'A', 0x2262, 0x0391, '.'}, false},
        {"the same as it is written", "A+ImIDkQ-.", {'A', 0x2262, 0x0391, '.'}, true},
        {"the RFC's second example", "Hi Mom -+Jjo--", {'H', 'i', ' ', 'M', 'o', 'm', ' ', '-', 0x263A, '-'}, true},
        {"the RFC's third example", "+ZeVnLIqe-", {0x65E5, 0x672C, 0x8A9E}, true},
        {"plus sign", "1+-1", {'1', '+', '1'}, true},
        {"plus sign behind a run", "+IKw-+-", {0x20AC, '+'}, true},
        {"optional characters", "+ACEAIg-", {'!', '"'}, true},
        {"surrogate pair", "+2D3eAA-", {0xD83D, 0xDE00}, true},
        {"run without an end", "+IKw", {0x20AC}, false},
        {"run ended by what is no digit", "+IKw a", {0x20AC, ' ', 'a'}, false},
        {"bits that fill no unit", "+IKwA-b", {0x20AC, 'b'}, false},
        {"digit that begins no unit", "+A-b", {'b'}, false},
        {"byte that is not ASCII", "\xFF", {0x00FF}, false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(Decode(CP_UTF7, row.bytes), row.text);
        if (row.isWrittenSo) {
            EXPECT_EQ(Encode(CP_UTF7, row.text), row.bytes);
        }
    }
}

TEST(CodePage, WritesADefaultForWhatThePageLacks) {
    struct Row {
        const char* name;
        UINT page;
        DWORD flags;
        CStringW text;
        const char* defaultChar;
        std::string_view bytes;
        bool usesDefault;
    };
    const Row rows[] = {
        {"the page's own", 1252, 0, {'a', 0x4E00, 'b'}, nullptr, "a?b", true},
        {"the page's own, EBCDIC", 37, 0, {0x4E00}, nullptr, "\x6F", true},
        {"the caller's", 1252, 0, {'a', 0x4E00, 'b'}, "!", "a!b", true},
        {"the caller's, of two bytes", 932, 0, {0x4E00, 0x0E01}, "\x81\x45", "\x88\xEA\x81\x45", true},
        {"not needed", 1252, 0, {'a', '?', 0x20AC}, "!", "a?\x80", false},
        {"each half of a pair", 932, 0, {0xD83D, 0xDE00}, nullptr, "??", true},
        {"best fit: letter", 1252, 0, {0x0100, 0x017E}, "!", "A\x9E", false},
        {"best fit refused", 1252, WC_NO_BEST_FIT_CHARS, {0x0100, 0x017E}, "!", "!\x9E", true},
        {"best fit: letters in a page of another script", 1251, 0, {0x00C9, 0x00E9, 0x0142}, "!", "Eel", false},
        {"best fit: Latin Extended-A",
         20127,
         0,
         {0x0108, 0x010D, 0x0113, 0x0114, 0x0123, 0x0130, 0x0131, 0x013A, 0x0148, 0x0157, 0x0165, 0x0178, 0x017C},
         "!",
         "CceEgIilnrtYz",
         false},
        {"best fit: fullwidth", 1250, 0, {0xFF21, 0xFF5E}, "!", "A~", false},
        {"best fit: fullwidth, EBCDIC", 37, 0, {0xFF21}, "!", "\xC1", false},
        {"best fit: quotes, dashes and blanks", 28591, 0, {0x2018, 0x201D, 0x2013, 0x2003}, "!", "'\"- ", false},
        {"best fit: cent and pound", 932, 0, {0x00A2, 0x00A3}, "!", "\x81\x91\x81\x92", false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << "page " << row.page << ", " << row.name);
        for (const int room : {0, 16}) {
            char buffer[16] = {};
            BOOL usedDefault = row.usesDefault ? FALSE : TRUE;
            const int size =
                WideCharToMultiByte(row.page, row.flags, row.text.data(), static_cast<int>(row.text.size()),
                                    room == 0 ? nullptr : buffer, room, row.defaultChar, &usedDefault);
            EXPECT_EQ(size, static_cast<int>(row.bytes.size()));
            EXPECT_EQ(usedDefault != FALSE, row.usesDefault);
            if (room != 0) {
                EXPECT_EQ(std::string_view(buffer, static_cast<std::size_t>(size)), row.bytes);
            }
        }
    }
}

TEST(CodePage, CountsTheTerminatorOfATextOfUnknownLength) {
    constexpr UINT kPages[] = {1252, 932, CP_UTF8, CP_UTF7};
    for (const UINT page : kPages) {
        for (const int unknown : {-1, -7}) {
            SCOPED_TRACE(testing::Message() << "page " << page << ", length " << unknown);
            WCHAR wide[4] = {1, 1, 1, 1};
            EXPECT_EQ(MultiByteToWideChar(page, 0, "abc", unknown, nullptr, 0), 4);
            EXPECT_EQ(MultiByteToWideChar(page, 0, "abc", unknown, wide, 4), 4);
            EXPECT_EQ(WideView(wide, 4), WideView("abc\0"_w, 4));
            EXPECT_EQ(MultiByteToWideChar(page, 0, "abc", unknown, wide, 3), 0);

            char bytes[4] = {1, 1, 1, 1};
            EXPECT_EQ(WideCharToMultiByte(page, 0, "abc"_w, unknown, nullptr, 0, nullptr, nullptr), 4);
            EXPECT_EQ(WideCharToMultiByte(page, 0, "abc"_w, unknown, bytes, 4, nullptr, nullptr), 4);
            EXPECT_EQ(std::string_view(bytes, 4), std::string_view("abc\0", 4));
        }
    }
}

TEST(CodePage, RefusesArgumentsThatMakeNoSense) {
    struct Row {
        const char* name;
        UINT page;
        DWORD flags;
        const char* bytes;
        int size;
        bool hasBuffer;
        int room;
        DWORD error;
    };
    const Row rows[] = {
        {"no such page", 99999, 0, "a", 1, true, 8, ERROR_INVALID_PARAMETER},
        {"no such page, whatever the flags", 99999, 0x10, "a", 1, true, 8, ERROR_INVALID_PARAMETER},
        {"nothing to convert", 1252, 0, "a", 0, true, 8, ERROR_INVALID_PARAMETER},
        {"no input", 1252, 0, nullptr, 1, true, 8, ERROR_INVALID_PARAMETER},
        {"negative room", CP_UTF8, 0, "a", 1, true, -1, ERROR_INVALID_PARAMETER},
        {"room without a buffer", CP_UTF8, 0, "a", 1, false, 8, ERROR_INVALID_PARAMETER},
        {"unknown flag", 1252, 0x10, "a", 1, true, 8, ERROR_INVALID_FLAGS},
        {"unknown flag", CP_UTF8, 0x10, "a", 1, true, 8, ERROR_INVALID_FLAGS},
        {"flag of others", CP_UTF7, MB_ERR_INVALID_CHARS, "a", 1, true, 8, ERROR_INVALID_FLAGS},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        WCHAR wide[8] = {kWideCanary};
        SetLastError(ERROR_SUCCESS);
        EXPECT_EQ(
            MultiByteToWideChar(row.page, row.flags, row.bytes, row.size, row.hasBuffer ? wide : nullptr, row.room), 0);
        EXPECT_EQ(GetLastError(), row.error);
        EXPECT_EQ(wide[0], kWideCanary);

        const WCHAR* const text = row.bytes == nullptr ? nullptr : "a"_w;
        char bytes[8] = {kCanary};
        const DWORD flags = row.flags == 0x10 ? 0x1 : row.flags;
        SetLastError(ERROR_SUCCESS);
        EXPECT_EQ(WideCharToMultiByte(row.page, flags, text, row.size, row.hasBuffer ? bytes : nullptr, row.room,
                                      nullptr, nullptr),
                  0);
        EXPECT_EQ(GetLastError(), row.error);
        EXPECT_EQ(bytes[0], kCanary);
    }
    EXPECT_EQ(WideCharToMultiByte(CP_UTF7, 0, "a"_w, 1, nullptr, 0, "?", nullptr), 0);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
}

TEST(CodePage, DescribesItsBytes) {
    struct Row {
        UINT page;
        UINT maxCharSize;
        BYTE defaultChar;
        std::string_view leadBytes;
    };
    const Row rows[] = {
        {37, 1, 0x6F, ""},
        {1252, 1, '?', ""},
        {932, 2, '?', "\x81\x9F\xE0\xFC"},
        {936, 2, '?', "\x81\xFE"},
        {1361, 2, '?', "\x84\xD3\xD8\xDE\xE0\xF9"},
        {CP_UTF8, 4, '?', ""},
        {CP_UTF7, 5, '?', ""},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.page);
        CPINFO info;
        std::memset(&info, 0xCC, sizeof info);
        EXPECT_TRUE(IsValidCodePage(row.page));
        ASSERT_TRUE(GetCPInfo(row.page, &info));
        EXPECT_EQ(info.MaxCharSize, row.maxCharSize);
        EXPECT_EQ(info.DefaultChar[0], row.defaultChar);
        std::string leads(row.leadBytes);
        leads.resize(MAX_LEADBYTES);
        EXPECT_EQ(std::memcmp(info.LeadByte, leads.data(), MAX_LEADBYTES), 0);
    }
    CPINFO info;
    EXPECT_FALSE(GetCPInfo(99999, &info));
    EXPECT_FALSE(IsValidCodePage(99999));
    EXPECT_FALSE(IsValidCodePage(CP_ACP));
    ASSERT_TRUE(GetCPInfo(CP_ACP, &info));
    EXPECT_TRUE(IsValidCodePage(GetACP()));
}

}  // namespace
}  // namespace vx_text_tests
