#include "localmapi/rtf/RtfKeywords.h"

#include <algorithm>
#include <array>

namespace localmapi::rtf {

namespace {

// Sorted by name.
constexpr auto kKeywords = std::to_array<RtfKeyword>({
    {"aftncn", RtfAction::SkipDestination},
    {"aftnsep", RtfAction::SkipDestination},
    {"aftnsepc", RtfAction::SkipDestination},
    {"annotation", RtfAction::SkipDestination},
    {"ansi", RtfAction::Charset, 1252},
    {"ansicpg", RtfAction::AnsiCodePage},
    {"atnauthor", RtfAction::SkipDestination},
    {"atnid", RtfAction::SkipDestination},
    {"background", RtfAction::SkipDestination},
    {"bkmkend", RtfAction::SkipDestination},
    {"bkmkstart", RtfAction::SkipDestination},
    {"bullet", RtfAction::Character, 0x2022, "&bull;"},
    {"cell", RtfAction::Tab},
    {"colorschememapping", RtfAction::SkipDestination},
    {"colortbl", RtfAction::SkipDestination},
    {"column", RtfAction::LineBreak},
    {"cpg", RtfAction::FontCodePage},
    {"datafield", RtfAction::SkipDestination},
    {"datastore", RtfAction::SkipDestination},
    {"deff", RtfAction::DefaultFont},
    {"docvar", RtfAction::SkipDestination},
    {"emdash", RtfAction::Character, 0x2014, "&mdash;"},
    {"emspace", RtfAction::Character, 0x2003, "&emsp;"},
    {"endash", RtfAction::Character, 0x2013, "&ndash;"},
    {"enspace", RtfAction::Character, 0x2002, "&ensp;"},
    {"f", RtfAction::Font},
    {"fcharset", RtfAction::FontCharset},
    {"filetbl", RtfAction::SkipDestination},
    {"fldinst", RtfAction::SkipDestination},
    {"fonttbl", RtfAction::FontTable},
    {"footer", RtfAction::SkipDestination},
    {"footerf", RtfAction::SkipDestination},
    {"footerl", RtfAction::SkipDestination},
    {"footerr", RtfAction::SkipDestination},
    {"footnote", RtfAction::SkipDestination},
    {"formfield", RtfAction::SkipDestination},
    {"fromhtml", RtfAction::FromHtml},
    {"fromtext", RtfAction::FromText},
    {"ftncn", RtfAction::SkipDestination},
    {"ftnsep", RtfAction::SkipDestination},
    {"ftnsepc", RtfAction::SkipDestination},
    {"generator", RtfAction::SkipDestination},
    {"header", RtfAction::SkipDestination},
    {"headerf", RtfAction::SkipDestination},
    {"headerl", RtfAction::SkipDestination},
    {"headerr", RtfAction::SkipDestination},
    {"htmlrtf", RtfAction::HtmlRtf},
    {"htmltag", RtfAction::HtmlTag},
    {"info", RtfAction::SkipDestination},
    {"latentstyles", RtfAction::SkipDestination},
    {"ldblquote", RtfAction::Character, 0x201C, "&ldquo;"},
    {"line", RtfAction::LineBreak},
    {"listoverridetable", RtfAction::SkipDestination},
    {"listtable", RtfAction::SkipDestination},
    {"lquote", RtfAction::Character, 0x2018, "&lsquo;"},
    {"ltrmark", RtfAction::Character, 0x200E, "&lrm;"},
    {"mac", RtfAction::Charset, 10000},
    {"mhtmltag", RtfAction::SkipDestination},
    {"nestcell", RtfAction::Tab},
    {"nestrow", RtfAction::LineBreak},
    {"nonshppict", RtfAction::SkipDestination},
    {"objalias", RtfAction::SkipDestination},
    {"objclass", RtfAction::SkipDestination},
    {"objdata", RtfAction::SkipDestination},
    {"objname", RtfAction::SkipDestination},
    {"objsect", RtfAction::SkipDestination},
    {"page", RtfAction::LineBreak},
    {"par", RtfAction::LineBreak},
    {"pc", RtfAction::Charset, 437},
    {"pca", RtfAction::Charset, 850},
    {"pict", RtfAction::SkipDestination},
    {"plain", RtfAction::Plain},
    {"pntext", RtfAction::SkipDestination},
    {"pntxta", RtfAction::SkipDestination},
    {"pntxtb", RtfAction::SkipDestination},
    {"private", RtfAction::SkipDestination},
    {"qmspace", RtfAction::Character, 0x2005},
    {"rdblquote", RtfAction::Character, 0x201D, "&rdquo;"},
    {"revtbl", RtfAction::SkipDestination},
    {"row", RtfAction::LineBreak},
    {"rquote", RtfAction::Character, 0x2019, "&rsquo;"},
    {"rsidtbl", RtfAction::SkipDestination},
    {"rtlmark", RtfAction::Character, 0x200F, "&rlm;"},
    {"rxe", RtfAction::SkipDestination},
    {"sect", RtfAction::LineBreak},
    {"shpinst", RtfAction::SkipDestination},
    {"softcol", RtfAction::LineBreak},
    {"softline", RtfAction::LineBreak},
    {"softpage", RtfAction::LineBreak},
    {"sp", RtfAction::SkipDestination},
    {"stylesheet", RtfAction::SkipDestination},
    {"tab", RtfAction::Tab},
    {"tc", RtfAction::SkipDestination},
    {"template", RtfAction::SkipDestination},
    {"themedata", RtfAction::SkipDestination},
    {"txe", RtfAction::SkipDestination},
    {"u", RtfAction::Unicode},
    {"uc", RtfAction::FallbackCount},
    {"ud", RtfAction::UnicodeForm},
    {"upr", RtfAction::BothForms},
    {"userprops", RtfAction::SkipDestination},
    {"v", RtfAction::Hidden},
    {"xe", RtfAction::SkipDestination},
    {"xmlnstbl", RtfAction::SkipDestination},
    {"zwbo", RtfAction::Character, 0x200B},
    {"zwj", RtfAction::Character, 0x200D, "&zwj;"},
    {"zwnbo", RtfAction::Character, 0x2060},
    {"zwnj", RtfAction::Character, 0x200C, "&zwnj;"},
});
constexpr bool ByName(const RtfKeyword& a, const RtfKeyword& b) {
    return a.name < b.name;
}
static_assert(std::is_sorted(kKeywords.begin(), kKeywords.end(), ByName));

constexpr std::size_t LongestName() {
    std::size_t longest = 0;
    for (const RtfKeyword& row : kKeywords) {
        longest = std::max(longest, row.name.size());
    }
    return longest;
}

// Where the words of each first letter begin, and in the last place where all end.
constexpr auto kFirstByLetter = [] {
    std::array<std::uint8_t, 'z' - 'a' + 2> first{};
    std::size_t row = 0;
    for (std::size_t letter = 0; letter < first.size(); ++letter) {
        while (row < kKeywords.size() && static_cast<std::size_t>(kKeywords[row].name.front() - 'a') < letter) {
            ++row;
        }
        first[letter] = static_cast<std::uint8_t>(row);
    }
    return first;
}();
static_assert(kKeywords.size() < 256);

struct CharsetPage {
    std::int32_t charset;
    UINT page;
};
constexpr auto kCharsetPages = std::to_array<CharsetPage>({
    {0, 0},                         // ANSI: that of the document
    {1, 0},                         // default
    {2, kSymbolPage}, {77, 10000},  // Macintosh
    {128, 932},                     // Shift-JIS
    {129, 949},                     // Hangul
    {130, 1361},                    // Johab
    {134, 936},                     // simplified Chinese
    {136, 950},                     // traditional Chinese
    {161, 1253},                    // Greek
    {162, 1254},                    // Turkish
    {163, 1258},                    // Vietnamese
    {177, 1255},                    // Hebrew
    {178, 1256},                    // Arabic
    {186, 1257},                    // Baltic
    {204, 1251},                    // Cyrillic
    {222, 874},                     // Thai
    {238, 1250},                    // Central Europe
    {254, 437},                     // DOS
    {255, 850},
});

}  // namespace

const RtfKeyword* FindRtfKeyword(std::string_view name) noexcept {
    if (name.empty() || name.size() > LongestName() || name.front() < 'a' || name.front() > 'z') {
        return nullptr;
    }
    const auto letter = static_cast<std::size_t>(name.front() - 'a');
    const auto* end = kKeywords.data() + kFirstByLetter[letter + 1];
    for (const auto* row = kKeywords.data() + kFirstByLetter[letter]; row != end; ++row) {
        if (row->name == name) {
            return row;
        }
    }
    return nullptr;
}

UINT PageOfFontCharset(std::int32_t charset) noexcept {
    const auto* found = std::find_if(kCharsetPages.begin(), kCharsetPages.end(),
                                     [charset](const CharsetPage& row) { return row.charset == charset; });
    return found != kCharsetPages.end() ? found->page : 0;
}

}  // namespace localmapi::rtf
