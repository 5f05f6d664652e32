// Pages that Windows keeps outside of these functions, or that not every Windows has: the Unicode pages, the 7-bit ones
// and GB 18030. Expectations are from the standards.
#include "tests/platform/text/Conversion.h"

#include <thread>

#include <iconv.h>

namespace vx_text_tests {
namespace {

using namespace std::string_view_literals;

TEST(MorePages, ConvertThePublishedCharactersExactly) {
    const Sample samples[] = {
        {"Latin 1 DOS with the euro", 858, "\xD5\x84", {0x20AC, 0x00E4}},
        {"EBCDIC Latin 2", 870, "\xC1", "A"_w},
        {"EBCDIC Latin 1, open systems", 1047, "\xAD\xBD", "[]"_w},
        {"EBCDIC with the euro", 1140, "\x9F\xC1", {0x20AC, 'A'}},
        {"German EBCDIC with the euro", 1141, "\x9F\xC0", {0x20AC, 0x00E4}},
        {"Danish EBCDIC with the euro", 1142, "\x5A\xC0", {0x20AC, 0x00E6}},
        {"international EBCDIC with the euro", 1148, "\x9F\x4A", {0x20AC, '['}},
        {"German EBCDIC", 20273, "\xC0", {0x00E4}},
        {"Danish EBCDIC", 20277, "\xC0", {0x00E6}},
        {"Finnish EBCDIC", 20278, "\xC0\x71\xE0", {0x00E4, 0x5C, 0x00C9}},
        {"Italian EBCDIC", 20280, "\xC0", {0x00E0}},
        {"Spanish EBCDIC", 20284, "\x7B", {0x00D1}},
        {"British EBCDIC", 20285, "\x5B", {0x00A3}},
        {"Japanese EBCDIC", 20290, "\x81", {0xFF71}},
        {"French EBCDIC", 20297, "\xC0", {0x00E9}},
        {"Arabic EBCDIC", 20420, "\xC1", "A"_w},
        {"Greek EBCDIC", 20423, "\x41", {0x0391}},
        {"Hebrew EBCDIC", 20424, "\x41", {0x05D0}},
        {"Icelandic EBCDIC", 20871, "\xC0\x4A", {0x00FE, 0x00DE}},
        {"Cyrillic EBCDIC", 21025, "\xC1", "A"_w},
        {"Mac Cyrillic", 10007, "\x80\xE0", {0x0410, 0x0430}},
        {"Mac Ukrainian", 10017, "\x80\xA2", {0x0410, 0x0490}},
        {"Mac Central European", 10029, "\x84", {0x0104}},
        {"logical Hebrew", 38598, "\xE0\xFA", {0x05D0, 0x05EA}},
        {"euro of the Greek set's later edition", 28597, "\xA4", {0x20AC}},
        {"EUC-JP", 51932, "a\xB4\xC1\xBB\xFA\x8E\xB1\xA1\xC1", {'a', 0x6F22, 0x5B57, 0xFF71, 0xFF5E}},
        {"EUC-CN", 51936, "\xC4\xE3", {0x4F60}},
        {"EUC-KR", 51949, "\xB0\xA1", {0xAC00}},
        {"ISO-2022-JP", 50220, "a\x1B$B4A;z\x1B(Bb", {'a', 0x6F22, 0x5B57, 'b'}},
        {"ISO-2022-JP over lines", 50220, "\x1B$B4A\x1B(B\r\n\x1B$B;z\x1B(B", {0x6F22, '\r', '\n', 0x5B57}},
        {"ISO-2022-JP with NEC's digit", 50220, "\x1B$B-!\x1B(B", {0x2460}},
        {"halfwidth kana by escape", 50221, "\x1B(I16\x1B$B4A\x1B(B", {0xFF71, 0xFF76, 0x6F22}},
        {"halfwidth kana by shift", 50222, "\x0E\x31\x36\x0F\x1B$B4A\x1B(B", {0xFF71, 0xFF76, 0x6F22}},
        {"ISO-2022-KR", 50225, "\x1B$)Ca\x0E\x30\x21\x0F!\n", {'a', 0xAC00, '!', '\n'}},
        {"ISO-2022-KR without Korean", 50225, "abc\n", "abc\n"_w},
        {"ISO-2022-CN", 50227, "a\x1B$)A\x0E\x44\x63\x0F\nb\x1B$)A\x0E\x3A\x43\x0F", {'a', 0x4F60, '\n', 'b', 0x597D}},
        {"HZ, the RFC's example", 52936, "This. ~{<:Ky2;S{#,NpJ)l6HK!#~}Bye.", {'T',    'h',    'i',    's',    '.',
                                                                                ' ',    0x5DF1, 0x6240, 0x4E0D, 0x6B32,
                                                                                0xFF0C, 0x52FF, 0x65BD, 0x65BC, 0x4EBA,
                                                                                0x3002, 'B',    'y',    'e',    '.'}},
        {"HZ tilde", 52936, "~~a", "~a"_w},
        {"GB 18030 of one, two and four bytes",
         54936,
         "a\xC4\xE3\x81\x30\x84\x36\x84\x31\xA4\x39",
         {'a', 0x4F60, 0x00A5, 0xFFFF}},
        {"GB 18030 beyond the BMP",
         54936,
         "\x90\x30\x81\x30\x94\x39\xFC\x36\xE3\x32\x9A\x35",
         {0xD800, 0xDC00, 0xD83D, 0xDE00, 0xDBFF, 0xDFFF}},
        {"UTF-8 beyond the BMP", 65001, "a\xF0\x9F\x98\x80", {'a', 0xD83D, 0xDE00}},
        {"UTF-16", 1200, "a\0\x60\x4F\x3D\xD8\0\xDE"sv, {'a', 0x4F60, 0xD83D, 0xDE00}},
        {"UTF-16, big-endian", 1201, "\0a\x4F\x60\xD8\x3D\xDE\0"sv, {'a', 0x4F60, 0xD83D, 0xDE00}},
        {"UTF-32", 65005, "a\0\0\0\0\xF6\x01\0"sv, {'a', 0xD83D, 0xDE00}},
        {"UTF-32, big-endian", 65006, "\0\0\0a\0\x01\xF6\0"sv, {'a', 0xD83D, 0xDE00}},
        {"UTF-32 by Windows' number", 12000, "a\0\0\0"sv, "a"_w},
        {"UTF-32, big-endian, by Windows' number", 12001, "\0\0\0a"sv, "a"_w},
    };
    for (const Sample& sample : samples) {
        ExpectExactBothWays(sample);
        EXPECT_TRUE(IsValidCodePage(sample.page)) << sample.page;
    }
}

TEST(MorePages, WriteBackEverythingThatTheyRead) {
    constexpr UINT kPages[] = {858,   870,   1047,  1140,  1141,  1142,  1143,  1144,  1145,  1146,
                               1147,  1148,  1149,  10007, 10017, 10029, 20273, 20277, 20278, 20280,
                               20284, 20285, 20290, 20297, 20420, 20423, 20424, 20871, 20880, 20905,
                               20936, 20949, 21025, 38598, 51932, 51936, 51949};
    for (const UINT page : kPages) {
        ExpectRepertoireToRoundTrip(page);
    }
    // The pages that have all of Unicode.
    for (const UINT page : {1200u, 1201u, 54936u, 65000u, 65001u, 65005u, 65006u}) {
        SCOPED_TRACE(page);
        for (std::uint32_t first = 0x10; first < 0x110000; first += 0x800) {
            CStringW text;
            for (std::uint32_t value = first; value < first + 0x7F8 && value < 0x110000; value += 7) {
                // GB 18030 has moved some of the private use area since its first edition.
                const bool isMoved = page == 54936 && value >= 0xE78D && value <= 0xE864;
                if (value >= 0x10000) {
                    text += static_cast<WCHAR>(0xD7C0 + (value >> 10));
                    text += static_cast<WCHAR>(0xDC00 | (value & 0x3FF));
                } else if ((value < 0xD800 || value > 0xDFFF) && !isMoved) {
                    text += static_cast<WCHAR>(value);
                }
            }
            ASSERT_TRUE(text.empty() || Decode(page, Encode(page, text)) == text) << "from U+" << std::hex << first;
        }
    }
}

// Readers are kinder than writers.
TEST(MorePages, ReadTextThatTheyWouldNotWrite) {
    struct Row {
        const char* name;
        UINT page;
        std::string_view bytes;
        CStringW text;
    };
    const Row rows[] = {
        {"roman and the edition of 1978", 50220, "\x1B(J\\~\x1B$@4A\x1B(J", {'\\', '~', 0x6F22}},
        {"announced edition of 1990", 50220, "\x1B&@\x1B$B4A\x1B(B", {0x6F22}},
        {"kana by escape in the page without", 50220, "\x1B(I1\x1B(B", {0xFF71}},
        {"kana of 8 bits", 50222, "a\xB1", {'a', 0xFF71}},
        {"blank and line break between pairs", 50220, "\x1B$B4A \n;z", {0x6F22, ' ', '\n', 0x5B57}},
        {"pair cut off", 50220, "\x1B$B4", {'?'}},
        {"pair cut off by an escape", 50220, "\x1B$B4\x1B(Ba", {'?', 'a'}},
        {"escape cut off", 50220, "a\x1B$", {'a', 0x1B, '$'}},
        {"unknown escape", 50220, "\x1B%G", {0x1B, '%', 'G'}},
        {"set that is not converted", 50220, "\x1B$(D\"/\x1B(Ba", {'?', 'a'}},
        {"Korean without its designation", 50225, "\x0E\x30\x21\x0F", {0xAC00}},
        {"Korean of 8 bits", 50225, "\xB0\xA1", {0xAC00}},
        {"Chinese plane that is not converted", 50227, "\x1B$)G\x0E\x44\x21\x0F\x61", {'?', 'a'}},
        {"HZ run ended by the line", 52936, "~{Dc\na", {0x4F60, '\n', 'a'}},
        {"HZ line that goes on", 52936, "a~\nb", {'a', 'b'}},
        {"HZ with an unknown escape", 52936, "~x", {'~', 'x'}},
        {"HZ tilde at the end", 52936, "~", {'~'}},
        {"HZ pair cut off", 52936, "~{D", {'?'}},
        {"GB 18030 cut after three bytes", 54936, "\x81\x30\x84", {0xFFFD, '0', 0xFFFD}},
        {"GB 18030 with a bad fourth byte", 54936, "\x81\x30\xC4\xE3", {0xFFFD, '0', 0x4F60}},
        {"GB 18030 behind the last code", 54936, "\xE3\x32\x9A\x36", {0xFFFD, '2', 0xFFFD, '6'}},
        {"GB 18030 lead before ASCII", 54936, "\x81 a", {0xFFFD, ' ', 'a'}},
        {"EUC-JP lead before ASCII", 51932, "\xB4", {0x30FB}},
        {"UTF-16 of an odd count", 1200, "a\0b"sv, {'a', 0xFFFD}},
        {"UTF-16 with a lone surrogate",
         1200,
         "\x3D\xD8"
         "a\0"sv,
         {0xD83D, 'a'}},
        {"UTF-32 cut off", 65005, "a\0\0\0b\0\0"sv, {'a', 0xFFFD}},
        {"UTF-32 surrogate and beyond the last", 65005, "\0\xD8\0\0\0\0\x11\0"sv, {0xFFFD, 0xFFFD}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << "page " << row.page << ", " << row.name);
        EXPECT_EQ(Decode(row.page, row.bytes), row.text);
    }
}

TEST(MorePages, RefuseInvalidTextWhereTheyTakeTheFlag) {
    struct Row {
        UINT page;
        std::string_view bytes;
    };
    for (const Row& row :
         {Row{1200, "\x3D\xD8"sv}, Row{1200, "a\0b"sv}, Row{1201, "\xDE\0\xD8\x3D"sv}, Row{65005, "\0\0\x11\0"sv},
          Row{65006, "a"sv}, Row{54936, "\x81\x30"sv}, Row{51932, "\xA9\xA1"sv}}) {
        EXPECT_EQ(DecodeError(row.page, row.bytes, MB_ERR_INVALID_CHARS), ERROR_NO_UNICODE_TRANSLATION) << row.page;
    }
    const WCHAR lone[] = {0xDC00};
    for (const UINT page : {1200u, 65005u, 54936u}) {
        EXPECT_EQ(ToBytes(page, WC_ERR_INVALID_CHARS, {lone, 1}, nullptr, 0), 0) << page;
        EXPECT_EQ(GetLastError(), ERROR_NO_UNICODE_TRANSLATION) << page;
        EXPECT_NE(ToBytes(page, 0, {lone, 1}, nullptr, 0), 0) << page;
    }
}

// Text cannot smuggle a change of character sets into the bytes.
TEST(MorePages, WriteNoEscapesOfTheText) {
    EXPECT_EQ(Encode(50220, "a\x1B$Bb\x0E"_w), "a?$Bb?");
    EXPECT_EQ(Encode(50225, "\x0F"_w), "?");
    EXPECT_EQ(Encode(52936, "~{ab~}"_w), "~~{ab~~}");
}

// The two-byte tables hold more than the 7-bit sets.
TEST(MorePages, WriteOnlyTheCharactersOfTheirSet) {
    EXPECT_EQ(Encode(50225, CStringW{0xAC02, 0xAC00}), "\x1B$)C?\x0E\x30\x21\x0F");
    EXPECT_EQ(Encode(50227, CStringW{0x4E02, 0xE000}), "??");
    EXPECT_EQ(Encode(52936, CStringW{0x4E02, 0xE234}), "??");
    EXPECT_EQ(Encode(50220, CStringW{0x4E28, 0xE000, 0x0E01}), "\x1B$By-\x1B(B??");
}

// Every cell of JIS X 0208 against the C library's set of the same contents.
TEST(MorePages, PlaceJapaneseAsTheCLibraryDoes) {
    const iconv_t converter = iconv_open("UTF-16LE", "EUC-JP-MS");
    int cells = 0;
    for (unsigned first = 0xA1; first < 0xFF; ++first) {
        for (unsigned second = 0xA1; second < 0xFF; ++second) {
            char bytes[] = {static_cast<char>(first), static_cast<char>(second)};
            WCHAR expected = 0;
            char* source = bytes;
            std::size_t sourceLeft = 2;
            char* target = reinterpret_cast<char*>(&expected);
            std::size_t targetLeft = 2;
            if (iconv(converter, &source, &sourceLeft, &target, &targetLeft) == 0 && targetLeft == 0
                && (expected < 0xE000 || expected > 0xF8FF)) {
                EXPECT_EQ(Decode(51932, {bytes, 2}), CStringW(1, expected)) << std::hex << first << ' ' << second;
                ++cells;
            } else {
                iconv(converter, nullptr, nullptr, nullptr, nullptr);
            }
        }
    }
    iconv_close(converter);
    EXPECT_GT(cells, 6879);  // the characters of the standard, and NEC's
}

TEST(MorePages, FoldHalfwidthKanaOnlyIn50220) {
    CStringW all;
    CStringW folded;
    for (WCHAR unit = 0xFF61; unit <= 0xFF9F; ++unit) {
        all += unit;
    }
    EXPECT_EQ(Decode(50221, Encode(50221, all)), all);
    EXPECT_EQ(Decode(50222, Encode(50222, all)), all);
    folded = Decode(50220, Encode(50220, all));
    ASSERT_EQ(folded.size(), all.size());
    EXPECT_EQ(folded.substr(0, 8), CStringW({0x3002, 0x300C, 0x300D, 0x3001, 0x30FB, 0x30F2, 0x30A1, 0x30A3}));
    EXPECT_EQ(folded.substr(folded.size() - 4), CStringW({0x30EF, 0x30F3, 0x309B, 0x309C}));
}

TEST(MorePages, CountTheWideTerminatorOfAnUnknownLength) {
    WCHAR text[4] = {};
    // Units 0061, 6200 and 0000: the zeros in the middle belong to two units and end nothing.
    EXPECT_EQ(MultiByteToWideChar(1200, 0, "a\0\0b\0\0", -1, text, 4), 3);
    EXPECT_EQ(WideView(text, 3), CStringW({'a', 0x6200, 0}));
    EXPECT_EQ(MultiByteToWideChar(65006, 0, "\0\0\0a\0\0\0\0", -1, text, 4), 2);
    EXPECT_EQ(WideCharToMultiByte(1200, 0, "a"_w, -1, nullptr, 0, nullptr, nullptr), 4);
}

TEST(MorePages, AreBuiltOnceHoweverManyThreadsAskFirst) {
    std::vector<std::thread> threads;
    std::vector<CStringW> texts(8);
    for (CStringW& text : texts) {
        threads.emplace_back([&text] { text = Decode(50220, "\x1B$B4A\x1B(B") + Decode(54936, "\xC4\xE3"); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (const CStringW& text : texts) {
        EXPECT_EQ(text, CStringW({0x6F22, 0x4F60}));
    }
}

}  // namespace
}  // namespace vx_text_tests
