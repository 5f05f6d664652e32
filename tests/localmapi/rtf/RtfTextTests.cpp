// Text and HTML out of RTF, row by row; every row is a rule of [RTF] or [MS-OXRTFEX], or damage that real files have.
#include "localmapi/rtf/RtfText.h"
#include "tests/localmapi/rtf/RtfTesting.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace localmapi::testing {
namespace {

using rtf::RtfKind;

struct Row {
    const char* name;
    std::string_view rtf;
    std::string_view expected;
};

std::string TextIn(std::string_view rtf) {
    return ToUtf8(rtf::TextOf(ViewOf(rtf)));
}

std::string HtmlIn(std::string_view rtf) {
    return ToUtf8(rtf::HtmlOf(ViewOf(rtf)));
}

TEST(RtfKinds, AreToldByTheFirstWords) {
    struct KindRow {
        const char* name;
        std::string_view rtf;
        RtfKind kind;
        UINT page;  // 0: none
    };
    constexpr KindRow rows[] = {
        {"empty", "", RtfKind::NotRtf, 0},
        {"text", "rtf1", RtfKind::NotRtf, 0},
        {"other word", "{\\rtx1\\ansi}", RtfKind::NotRtf, 0},
        {"nothing else", "{\\rtf", RtfKind::Rtf, 0},
        {"true RTF", "{\\rtf1\\ansi\\ansicpg1251\\deff0{\\fonttbl}\\fromhtml1", RtfKind::Rtf, 1251},
        {"HTML", "{\\rtf1\\ansi\\ansicpg65001\\fromhtml1 \\fbidi \\deff0{\\fonttbl}", RtfKind::EncapsulatedHtml, 65001},
        {"page behind it", "{\\rtf1\\ansi\\fromhtml1\\deff0\\ansicpg932{", RtfKind::EncapsulatedHtml, 932},
        {"text inside", "{\\rtf1\\ansi\\ansicpg0\\fromtext\\fbidi\\deff0{", RtfKind::EncapsulatedText, 0},
        {"not HTML", "{\\rtf1\\ansi\\fromhtml0{", RtfKind::Rtf, 0},
        {"after text", "{\\rtf1 x\\fromhtml1\\ansicpg1250}", RtfKind::Rtf, 0},
        {"line ends before", "\r\n{\\rtf1\r\n\\ansi\r\n\\fromtext", RtfKind::EncapsulatedText, 0},
    };
    for (const KindRow& row : rows) {
        EXPECT_EQ(rtf::KindOf(ViewOf(row.rtf)), row.kind) << row.name;
        EXPECT_EQ(rtf::AnsiCodePage(ViewOf(row.rtf)).value_or(0), row.page) << row.name;
    }
}

TEST(RtfText, IsWhatAReaderSees) {
    constexpr Row rows[] = {
        {"plain", "{\\rtf1\\ansi hello}", "hello"},
        {"no RTF", "hello", ""},
        {"one space is swallowed", "{\\rtf1\\ansi\\b  a\\b0 b\\i\\par c}", " ab\r\nc"},
        {"line ends of the source", "{\\rtf1 a\r\nb\nc\rd}", "abcd"},
        {"escaped", "{\\rtf1 \\{\\\\\\}}", "{\\}"},
        {"breaks", "{\\rtf1 a\\line b\\sect c\\page d\\\ne\\\r\nf\\row g}", "a\r\nb\r\nc\r\nd\r\ne\r\nf\r\ng"},
        {"cells", "{\\rtf1 a\\cell b\\nestcell c\\tab d}", "a\tb\tc\td"},
        {"symbols", "{\\rtf1 \\lquote a\\rquote\\ldblquote b\\rdblquote\\endash\\emdash\\bullet\\~\\_c\\-d}",
         "\u2018a\u2019\u201Cb\u201D\u2013\u2014\u2022\u00A0\u2011cd"},
        {"unknown words", "{\\rtf1\\foo12 a\\bar-3b\\foo- c}", "ab- c"},
        {"destinations",
         "{\\rtf1{\\fonttbl{\\f0 Arial;}}{\\colortbl;\\red0;}{\\stylesheet{\\s0 Normal;}}"
         "{\\info{\\title T}}{\\*\\generator G}{\\header H}{\\pict 0102}a}",
         "a"},
        {"field", "{\\rtf1 a {\\field{\\*\\fldinst HYPERLINK \"http://x\"}{\\fldrslt link}} b}", "a link b"},
        {"old field", "{\\rtf1 {\\field{\\fldinst PAGE}{\\fldrslt 7}}}", "7"},
        {"object", "{\\rtf1 {\\object\\objemb{\\*\\objdata 0102}{\\result shown}}}", "shown"},
        {"both forms", "{\\rtf1 {\\upr{8bit ?}{\\*\\ud{uni \\u9731 ?}}}z}", "uni \u2603z"},
        {"hidden", "{\\rtf1 a{\\v b}c\\v d\\v0 e\\v f\\plain g}", "aceg"},
        {"binary", "{\\rtf1 a\\bin5 }}}}}b\\bin0 c}", "abc"},
        {"binary beyond the end", "{\\rtf1 a\\bin999999 }b}", "a"},
        {"htmlrtf", "{\\rtf1\\fromtext a\\htmlrtf b\\htmlrtf0 c{\\htmlrtf d}e}", "ace"},
        {"markup is not text", "{\\rtf1 {\\*\\htmltag64 <p>}a}", "a"},
        {"behind the end", "{\\rtf1 a}b{c}", "a"},
        {"zero at the end", std::string_view("{\\rtf1 a}\0", 10), "a"},
        {"not closed", "{\\rtf1 {\\b a", "a"},
        {"closed too often", "{\\rtf1 a}}}b", "a"},
        {"cut in a word", "{\\rtf1 a\\pa", "a"},
        {"cut in an escape", "{\\rtf1 a\\", "a"},
        {"cut in a byte", "{\\rtf1 a\\'4", "a4"},
        {"parameter too long", "{\\rtf1 \\b99999999999999999999 a\\u99999999999999999999 ?b}", "ab"},
        {"destination in the document itself", "{\\rtf1\\info a}", "a"},
        {"word of another case", "{\\rtf1 a\\PAR b}", "ab"},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(TextIn(row.rtf), row.expected) << row.name;
    }
}

TEST(RtfText, ReadsUnicodeAndPassesOverWhatStandsInForIt) {
    constexpr Row rows[] = {
        {"one character", "{\\rtf1 \\u9731?a}", "\u2603a"},
        {"negative", "{\\rtf1 \\u-3?a}", "\uFFFDa"},
        {"too large for 16 bits", "{\\rtf1 \\u65533?\\u128512?}", "\uFFFD\U0001F600"},
        {"pair", "{\\rtf1 \\u-10179?\\u-8704?}", "\U0001F600"},
        {"half a pair", "{\\rtf1 \\u-10179?x}", "<D83D>x"},
        {"none follows", "{\\rtf1\\uc0 \\u9731 a}", "\u2603a"},
        {"two bytes", "{\\rtf1\\uc2 \\u9731\\'83\\'41a}", "\u2603a"},
        {"word", "{\\rtf1 \\u9731\\bullet a}", "\u2603a"},
        {"symbol", "{\\rtf1 \\u9731\\{a}", "\u2603a"},
        {"group ends it", "{\\rtf1 {\\uc3\\u9731 x}ab}", "\u2603ab"},
        {"count is restored", "{\\rtf1 {\\uc3\\u9731 xyz}\\u9731 xa}", "\u2603\u2603a"},
        {"line end does not count", "{\\rtf1 \\u9731\r\n?a}", "\u2603a"},
        {"left out before the next", "{\\rtf1 \\u9731\\u9732 ?a}", "\u2603\u2604a"},
        {"binary counts once", "{\\rtf1 \\u9731\\bin3 abcd}", "\u2603d"},
        {"zero", "{\\rtf1 a\\u0 ?b}", "ab"},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(TextIn(row.rtf), row.expected) << row.name;
    }
}

TEST(RtfText, IsDecodedInThePageOfItsFont) {
    constexpr std::string_view kFonts =
        "{\\fonttbl{\\f0\\fcharset0 Arial;}{\\f1\\fcharset204 Arial Cyr;}{\\f2\\fcharset128 MS Gothic;}"
        "{\\f3\\fcharset2 Symbol;}{\\f4\\fcharset1 X;}{\\f5\\fcharset0\\cpg1253 Y;}\\f6\\fcharset238 Z;}";
    constexpr Row rows[] = {
        {"document's page", "\\'e9", "\u00E9"},
        {"raw byte", "\xE9", "\u00E9"},
        {"Cyrillic", "\\f1\\'ef\\'f0", "\u043F\u0440"},
        {"page of the entry", "\\f5\\'e1", "\u03B1"},
        {"entry without a group", "\\f6\\'e8", "\u010D"},
        {"unknown font", "\\f77\\'e9", "\u00E9"},
        {"default charset", "\\f4\\'e9", "\u00E9"},
        {"double-byte, escaped", "\\f2\\'82\\'a0", "\u3042"},
        {"double-byte, second as a character", "\\f2\\'83A\\'83C", "\u30A2\u30A4"},
        {"double-byte, raw", "\\f2\x82\xA0z", "\u3042z"},
        {"double-byte over a line end", "\\f2\\'82\r\n\\'a0", "\u3042"},
        {"double-byte, second is a backslash", "\\f2\\'83\\\\x", "\u30BDx"},
        {"formatting within a character", "\\f2\\'82{\\b\\'a0}", "\u3042"},
        {"font restored", "{\\f1\\'ef}\\'e9", "\u043F\u00E9"},
        {"plain", "\\f1\\'ef\\plain\\'e9", "\u043F\u00E9"},
        {"symbols", "\\f3 J\\'b7", "J\uF0B7"},
    };
    for (const Row& row : rows) {
        const std::string rtf = "{\\rtf1\\ansi\\ansicpg1252\\deff0" + std::string(kFonts) + std::string(row.rtf) + '}';
        EXPECT_EQ(TextIn(rtf), row.expected) << row.name;
    }
}

TEST(RtfText, IsDecodedInThePageOfTheDocument) {
    constexpr Row rows[] = {
        {"UTF-8", "{\\rtf1\\ansi\\ansicpg65001 \\'e2\\'98\\'83}", "\u2603"},
        {"Big5", "{\\rtf1\\ansi\\ansicpg950 \\'a4\\'a4\\'a4\\'e5}", "\u4E2D\u6587"},
        {"Macintosh", "{\\rtf1\\mac \\'8e}", "\u00E9"},
        {"DOS", "{\\rtf1\\pc \\'82}", "\u00E9"},
        {"page of a font without a charset", "{\\rtf1\\ansi\\ansicpg1251{\\fonttbl{\\f0 A;}}\\f0\\'ef}", "\u043F"},
        {"no page", "{\\rtf1\\ansi\\ansicpg0 \\'80}", "\u20AC"},
        {"page that nobody has", "{\\rtf1\\ansi\\ansicpg4711 \\'80}", "\u20AC"},
        {"page named late", "{\\rtf1 \\'e9{\\b\\ansicpg1251\\'ef}}", "\u00E9\u043F"},
        {"default font", "{\\rtf1\\ansi\\deff3{\\fonttbl{\\f3\\fcharset161 G;}}\\'e1}", "\u03B1"},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(TextIn(row.rtf), row.expected) << row.name;
    }
}

TEST(RtfHtml, IsTakenOutOfItsRtf) {
    constexpr Row rows[] = {
        {"tags", "{\\*\\htmltag18 <html>}{\\*\\htmltag64 <p>}text{\\*\\htmltag72 </p>}", "<html><p>text</p>"},
        {"no number", "{\\*\\htmltag <br>}", "<br>"},
        {"empty tag", "a{\\*\\htmltag64}b", "ab"},
        {"for RTF only", "a\\htmlrtf {\\f1 \\htmlrtf0 b\\htmlrtf }\\htmlrtf0 c", "abc"},
        {"tag for RTF only", "\\htmlrtf x{\\*\\htmltag84 &lt;}<\\htmlrtf0 y", "&lt;y"},
        {"switched off by its group", "{\\htmlrtf1 x}y", "y"},
        {"line ends", "{\\*\\htmltag <a\\par b\\line c\\tab d>}\\par\\line\\tab", "<a\r\nb\r\nc\td>\r\n\r\n\t"},
        {"escapes in tags", "{\\*\\htmltag <style>\\{\\\\\\}\\'e9\\u9731 ?</style>}",
         "<style>{\\}\u00E9\u2603</style>"},
        {"characters with names", "\\lquote a\\rquote\\ldblquote b\\rdblquote\\bullet\\endash\\emdash\\~\\_",
         "&lsquo;a&rsquo;&ldquo;b&rdquo;&bull;&ndash;&mdash;&nbsp;&shy;"},
        {"mhtml", "{\\*\\mhtmltag64 <img src=\"x\">}{\\*\\htmltag64 <img src=\"cid:1\">}", "<img src=\"cid:1\">"},
        {"group within a tag", "{\\*\\htmltag <a {\\b href}>}b", "<a href>b"},
        {"hidden is not hidden", "\\v a\\v0 b", "ab"},
        {"other destinations", "{\\*\\foo x}{\\pntext y}{\\fonttbl{\\f9 z;}}a", "a"},
        {"in a font of pictures", "{\\fonttbl{\\f9\\fcharset2 Wingdings;}}\\f9\\'b7", "\u00B7"},
        {"tag not closed", "a{\\*\\htmltag <b>", "a<b>"},
    };
    for (const Row& row : rows) {
        const std::string rtf = "{\\rtf1\\ansi\\ansicpg1252\\fromhtml1 \\deff0" + std::string(row.rtf) + '}';
        EXPECT_EQ(HtmlIn(rtf), row.expected) << row.name;
    }
    EXPECT_EQ(HtmlIn("{\\rtf1\\fromtext {\\*\\htmltag <p>}}"), "") << "only of encapsulated HTML";
    EXPECT_EQ(
        TextIn("{\\rtf1\\fromhtml1 {\\*\\htmltag <p>}a{\\*\\htmltag <p>}b{\\*\\htmltag84 &amp;}\\htmlrtf &\\htmlrtf0}"),
        "a\r\n\r\nb&");
}

// A structure of the form that mail programs write, with everything within everything.
TEST(RtfHtml, OfAWholeMessageIsWhole) {
    constexpr std::string_view kRtf =
        "{\\rtf1\\ansi\\ansicpg1252\\fromhtml1 \\fbidi \\deff0{\\fonttbl\r\n{\\f0\\fswiss\\fcharset0 Arial;}\r\n"
        "{\\f1\\fnil\\fcharset204 Arial Cyr;}}\r\n{\\colortbl\\red0\\green0\\blue0;}\r\n\\uc1\\pard\\plain\\deftab360 "
        "\\f0\\fs24 \r\n"
        "{\\*\\htmltag18 <html>}\r\n{\\*\\htmltag34 <head>}{\\*\\htmltag161 \\par }{\\*\\htmltag241 <style>}"
        "{\\*\\htmltag241 p \\{color:red\\}}{\\*\\htmltag249 </style>}{\\*\\htmltag41 </head>}\r\n"
        "{\\*\\htmltag50 <body>}\\htmlrtf \\lang1033 \\htmlrtf0 \r\n"
        "{\\*\\htmltag64 <p>}\\htmlrtf {\\htmlrtf0 \r\n{\\*\\htmltag84 <b>}\\htmlrtf {\\b \\htmlrtf0 "
        "\\htmlrtf\\f1\\htmlrtf0 \\'cf\\'f0{\\*\\htmltag92 </b>}\\htmlrtf }\\htmlrtf0 "
        "{\\*\\htmltag84 &nbsp;}\\htmlrtf \\'a0\\htmlrtf0 \\htmlrtf \\par }\\htmlrtf0 \r\n{\\*\\htmltag72 </p>}"
        "{\\*\\htmltag58 </body>}{\\*\\htmltag27 </html>}}\r\n";
    EXPECT_EQ(HtmlIn(kRtf),
              "<html><head>\r\n<style>p {color:red}</style></head><body><p><b>\u041F\u0440</b>&nbsp;</p>"
              "</body></html>");
    EXPECT_EQ(TextIn(kRtf), "\u041F\u0440\u00A0");
}

// Bytes that would take the square of their number, or the stack, if anything here did.
TEST(RtfText, OfHostileDocumentsTakesNoTime) {
    constexpr std::size_t kCount = 500'000;
    struct Hostile {
        const char* name;
        std::string_view repeated;
        std::string_view last;
        std::string_view expected;
    };
    constexpr Hostile rows[] = {
        {"groups", "{", "deep", "deep"},
        {"groups closed", "{\\b}", "flat}", "flat"},
        {"fonts", "{\\fonttbl{\\f1\\fcharset204}}", "x}", "x"},
        {"fallbacks", "\\uc65536\\u0 ", "}", ""},
        {"backslashes", "\\", "}", ""},
        {"lone leads", "\\'82", "}", ""},
    };
    for (const Hostile& row : rows) {
        std::string rtf = "{\\rtf1 ";
        for (std::size_t i = 0; i < kCount; ++i) {
            rtf += row.repeated;
        }
        rtf += row.last;
        const std::string text = TextIn(rtf);
        if (!row.expected.empty()) {
            EXPECT_EQ(text, row.expected) << row.name;
        }
    }
}

}  // namespace
}  // namespace localmapi::testing
