// HTML: its encoding, its text, and the names of charsets.
#include "localmapi/rtf/Charsets.h"
#include "localmapi/rtf/HtmlText.h"
#include "platform/CodePage.h"
#include "tests/localmapi/rtf/RtfTesting.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace localmapi::testing {
namespace {

struct Row {
    const char* name;
    std::string_view html;
    std::string_view expected;
};

std::string TextIn(std::string_view html) {
    return ToUtf8(rtf::TextOfHtml(FromUtf8(html)));
}

TEST(HtmlText, IsWhatAReaderSees) {
    constexpr Row rows[] = {
        {"plain", "a b", "a b"},
        {"spaces collapse", "  a \r\n\t b  ", "a b"},
        {"spaces around tags", "a <b> b</b> c<i>d</i>", "a b cd"},
        {"paragraphs", "<p>a</p><p>b</p>", "a\r\n\r\nb"},
        {"paragraphs not closed", "<P>a<P>b", "a\r\n\r\nb"},
        {"divisions", "<div>a</div><div><div>b</div></div>c", "a\r\nb\r\nc"},
        {"line breaks", "a<br>b<br/>c<br />d", "a\r\nb\r\nc\r\nd"},
        {"empty lines", "<div>a<br></div><div><br></div><div>b</div>", "a\r\n\r\nb"},
        {"break before a paragraph", "a<br><p>b", "a\r\n\r\nb"},
        {"nothing before and behind", "<br><p></p><div>a</div><br><p>", "a"},
        {"cells", "<table><tr><td>a</td><td>b</td></tr><tr><td>c<td>d</table>e", "a\tb\r\nc\td\r\ne"},
        {"blocks in cells", "<tr><td><p>a</p></td><td><div>b</div></td></tr><tr><th><p>c</p>", "a\tb\r\nc"},
        {"lines in a cell", "<tr><td>a<br>b</td><td>c</td></tr>", "a\r\nb\tc"},
        {"empty cells", "<tr><td></td><td>a</td><td></td><td>b</td></tr>", "a\tb"},
        {"table in a cell", "<tr><td><table><tr><td>a</td></tr><tr><td>b</td></tr></table></td><td>c</td></tr>",
         "a\r\nb\r\nc"},
        {"list", "x<ul><li>a</li><li><p>b</p></li></ul>y", "x\r\n\r\n* a\r\n* b\r\n\r\ny"},
        {"list not closed", "<ol><li>a<li>b</ol>c", "* a\r\n* b\r\n\r\nc"},
        {"preformatted", "a<pre>\r\n b\r\n  c\td\n\n</pre>e", "a\r\n\r\n b\r\n  c\td\r\n\r\ne"},
        {"head",
         "<html><head><title>T &amp; t</title><style>s<!-- { } --></style><script>a<b;'</p>'</script>"
         "<meta a=b></head><body>a</body></html>",
         "a"},
        {"head without its end", "<head><title>t</title><body>a", "a"},
        {"title without its end", "<title>t<body>a", "t\r\na"},
        {"style without its end", "a<style>b{}", "a"},
        {"comments", "a<!-- b > --><!--c--->d<!-->e<!--f", "ade"},
        {"conditional", "<!--[if mso]><p>x</p><![endif]-->a<![if !mso]>b<![endif]><!--[if !mso]><!-->c<!--<![endif]-->",
         "abc"},
        {"office", "a<xml><o:P>12</o:P></xml><o:p>&nbsp;</o:p>b<?xml:namespace prefix=o/>", "a\u00A0b"},
        {"other names are not ours", "a<o:p>b</o:p><pre-x>c<trx>d<paragraphs>e", "abcde"},
        {"quotes", "<a title=\"x>y\" b='>' c = \">\">a</a>", "a"},
        {"apostrophe in a value", "<a alt=it's>a</a> it's", "a it's"},
        {"quote not closed", "<a href=\"x>a</a> b", "a b"},
        {"quotes that hide the end", "<a x=\">\"<b y=\">\"a", "\"\"a"},
        {"no tag", "1 < 2 <3 a<>b </ p>c", "1 < 2 <3 a<>b c"},
        {"tag not closed", "a <b", "a <b"},
        {"declaration not closed", "a <!b", "a <!b"},
        {"zeros and controls",
         "a\x01\x1F"
         "b",
         "ab"},
        {"soft hyphen", "a\u00AD&shy;b", "ab"},
        {"script in upper case", "<SCRIPT>x</script >a</SCRIPTX>", "a"},
        {"end tags alone", "a</p>b</li></td></tr></pre>c", "a\r\n\r\nb\r\n\r\nc"},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(TextIn(row.html), row.expected) << row.name;
    }
}

TEST(HtmlText, ResolvesReferences) {
    constexpr Row rows[] = {
        {"named", "&lt;&gt;&amp;&quot;&apos;&eacute;&Eacute;", "<>&\"'\u00E9\u00C9"},
        {"beyond Latin-1", "&euro;&hellip;&ndash;&alpha;&rarr;&thetasym;&Scaron;&ccaron;",
         "\u20AC\u2026\u2013\u03B1\u2192\u03D1\u0160\u010D"},
        {"space", "a&nbsp;&nbsp;b", "a\u00A0\u00A0b"},
        {"without a semicolon", "&lt &copy2 &eacutex &rsquo s", "< \u00A92 \u00E9x \u2019 s"},
        {"not known", "&foo; &; & &amplify &hellipsis", "&foo; &; & &lify &hellipsis"},
        {"decimal and hexadecimal", "&#65;&#x42;&#X43;&#8364", "ABC\u20AC"},
        {"Windows' range", "&#128;&#150;&#x92;&#159;", "\u20AC\u2013\u2019\u0178"},
        {"beyond 16 bits", "&#128512;&#x1F600;", "\U0001F600\U0001F600"},
        {"pair", "&#55357;&#56832;", "\U0001F600"},
        {"half a pair", "&#55357;x&#56832;&#55357;&#65;", "\uFFFDx\uFFFD\uFFFDA"},
        {"no character", "&#0;&#x110000;&#99999999999999999999;", "\uFFFD\uFFFD\uFFFD"},
        {"no number", "&#; &#x; &#xg; &#", "&#; &#x; &#xg; &#"},
        {"white space", "a&#10;&#13;&#9;b&#7;c", "a bc"},
        {"not twice", "&amp;lt;", "&lt;"},
        {"not in tags", "<a b=\"&gt;\">c", "c"},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(TextIn(row.html), row.expected) << row.name;
    }
}

TEST(HtmlText, OfHostilePagesTakesNoTime) {
    constexpr std::string_view kRepeated[] = {
        "<",          "<a ",     "<a b=\"", "<a b=\">\"", "<a b='><a b=\">", "</",     "<!",
        "<!--",       "<title>", "<xml>",   "</title",    "<pre>",           "<li>",   "<td>",
        "<tr>",       "<br>",    "&",       "&#",         "&#55357;",        "&eacut", "=\"",
        "<a =\t\t\t", "<p",      "<style>",
    };
    for (const std::string_view repeated : kRepeated) {
        std::string html;
        for (std::size_t i = 0; i < 1'000'000 / repeated.size(); ++i) {
            html += repeated;
        }
        EXPECT_LE(rtf::TextOfHtml(FromUtf8(html)).size(), html.size() * 2) << repeated;
        EXPECT_LE(rtf::DecodeHtml(ViewOf(html), 0).size(), html.size());
    }
}

TEST(HtmlBytes, AreDecodedByWhatIsMostToBeBelieved) {
    struct PageRow {
        const char* name;
        std::string_view html;
        UINT declared;
        std::string_view expected;
    };
    constexpr std::string_view kUtf16 = {"<\0b\0>\0\x3D\x04", 8};
    constexpr PageRow rows[] = {
        {"empty", "", 65001, ""},
        {"ASCII", "<b>", 0, "<b>"},
        {"mark of UTF-8", "\xEF\xBB\xBF\xC3\xA9", 1252, "\u00E9"},
        {"mark of UTF-16", {"\xFF\xFE\xE9\0", 4}, 1252, "\u00E9"},
        {"mark of UTF-16, big end first", "\xFE\xFF\x04\x3D", 1252, "\u043D"},
        {"UTF-16 without a mark", kUtf16, 1252, "<b>\u043D"},
        {"declared", "\xE9\xEF", 1251, "\u0439\u043F"},
        {"own", "<meta charset=windows-1251>\xEF", 0, "<meta charset=windows-1251>\u043F"},
        {"own, in a content type", "<META http-equiv=x content='text/html; charset=koi8-r'>\xD0", 0,
         "<META http-equiv=x content='text/html; charset=koi8-r'>\u043F"},
        {"own, of the second meta", "<meta name=a><meta charset = \"cp1251\">\xEF", 0,
         "<meta name=a><meta charset = \"cp1251\">\u043F"},
        {"own of XML", "<?xml encoding=\"windows-1251\"?>\xEF", 0, "<?xml encoding=\"windows-1251\"?>\u043F"},
        {"declared against a stale own", "<meta charset=koi8-r>\xEF", 1251, "<meta charset=koi8-r>\u043F"},
        {"own where the declared fails", "<meta charset=windows-1251>\xEF", 65001, "<meta charset=windows-1251>\u043F"},
        {"UTF-8 said by the HTML", "<meta charset=utf-8>\xC3\xA9", 1252, "<meta charset=utf-8>\u00E9"},
        {"UTF-8 said wrongly", "<meta charset=utf-8>\xE9", 1252, "<meta charset=utf-8>\u00E9"},
        {"UTF-8 said by nobody", "\xC3\xA9", 0, "\u00E9"},
        {"no UTF-8 and nothing said", "\xE9\x80", 0, "\u00E9\u20AC"},
        {"Latin-1 is Windows'", "\x93", 28591, "\u201C"},
        {"ASCII that is not", "\x93", 20127, "\u201C"},
        {"page that nobody has", "\xE9", 4711, "\u00E9"},
        {"wide page of narrow bytes", "<b>\xC3\xA9", 1200, "<b>\u00E9"},
        {"broken UTF-8", "a\xC3z", 65001, "a\uFFFDz"},
        {"double-byte", "\x82\xA0", 932, "\u3042"},
        {"seven bits", "\x1B$B$\"\x1B(B", 50220, "\u3042"},
    };
    constexpr UINT kJapaneseMail = 50220;
    for (const PageRow& row : rows) {
        if (row.declared == kJapaneseMail && !IsValidCodePage(kJapaneseMail)) {
            continue;  // a part of Windows that Wine lacks
        }
        EXPECT_EQ(ToUtf8(rtf::DecodeHtml(ViewOf(row.html), row.declared)), row.expected) << row.name;
    }
}

TEST(Charsets, AreKnownByTheirNamesAndByTheirNicknames) {
    struct NameRow {
        std::string_view name;
        UINT page;  // 0: not known
    };
    constexpr NameRow rows[] = {
        {"utf-8", 65001},
        {"UTF8", 65001},
        {"us-ascii", 20127},
        {"ANSI_X3.4-1968", 20127},
        {"iso-8859-1", 28591},
        {"ISO_8859-1:1987", 28591},
        {"latin1", 28591},
        {"iso-8859-2", 28592},
        {"iso-8859-8-i", 38598},
        {"iso-8859-15", 28605},
        {"windows-1250", 1250},
        {"Windows-1258", 1258},
        {"cp1251", 1251},
        {"x-cp1251", 1251},
        {"ibm852", 852},
        {"koi8-r", 20866},
        {"koi8-u", 21866},
        {"gb2312", 936},
        {"GBK", 936},
        {"gb18030", 54936},
        {"hz-gb-2312", 52936},
        {"big5", 950},
        {"Big5-HKSCS", 950},
        {"euc-kr", 949},
        {"ks_c_5601-1987", 949},
        {"iso-2022-kr", 50225},
        {"iso-2022-jp", 50220},
        {"shift_jis", 932},
        {"x-sjis", 932},
        {"windows-31j", 932},
        {"euc-jp", 51932},
        {"tis-620", 874},
        {"windows-874", 874},
        {"macintosh", 10000},
        {"utf-16", 1200},
        {"utf-7", 65000},
        {"  \"utf-8\" ", 65001},
        {"", 0},
        {"-", 0},
        {"cp", 0},
        {"cp1234567", 0},
        {"x-unknown", 0},
        {"utf-9", 0},
        {"aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa", 0},
    };
    for (const NameRow& row : rows) {
        EXPECT_EQ(rtf::CodePageOfCharset(row.name).value_or(0), row.page) << row.name;
    }
}

}  // namespace
}  // namespace localmapi::testing
