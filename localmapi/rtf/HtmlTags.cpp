#include "localmapi/rtf/HtmlTags.h"

#include <algorithm>
#include <array>

namespace localmapi::rtf {

namespace {

struct TagRow {
    std::string_view name;
    HtmlTag tag;
};

// Sorted by name.
constexpr auto kTags = std::to_array<TagRow>({
    {"address", HtmlTag::Line},
    {"article", HtmlTag::Line},
    {"aside", HtmlTag::Line},
    {"blockquote", HtmlTag::Paragraph},
    {"body", HtmlTag::Line},
    {"br", HtmlTag::LineBreak},
    {"caption", HtmlTag::Line},
    {"center", HtmlTag::Line},
    {"dd", HtmlTag::Line},
    {"details", HtmlTag::Line},
    {"dialog", HtmlTag::Line},
    {"dir", HtmlTag::Line},
    {"div", HtmlTag::Line},
    {"dl", HtmlTag::Paragraph},
    {"dt", HtmlTag::Line},
    {"fieldset", HtmlTag::Line},
    {"figcaption", HtmlTag::Line},
    {"figure", HtmlTag::Line},
    {"footer", HtmlTag::Line},
    {"form", HtmlTag::Line},
    {"frame", HtmlTag::Line},
    {"frameset", HtmlTag::Line},
    {"h1", HtmlTag::Paragraph},
    {"h2", HtmlTag::Paragraph},
    {"h3", HtmlTag::Paragraph},
    {"h4", HtmlTag::Paragraph},
    {"h5", HtmlTag::Paragraph},
    {"h6", HtmlTag::Paragraph},
    {"head", HtmlTag::Line},
    {"header", HtmlTag::Line},
    {"hgroup", HtmlTag::Line},
    {"hr", HtmlTag::Line},
    {"html", HtmlTag::Line},
    {"isindex", HtmlTag::Line},
    {"legend", HtmlTag::Line},
    {"li", HtmlTag::ListItem},
    {"listing", HtmlTag::Preformatted},
    {"main", HtmlTag::Line},
    {"menu", HtmlTag::Line},
    {"nav", HtmlTag::Line},
    {"noframes", HtmlTag::Line},
    {"ol", HtmlTag::Paragraph},
    {"optgroup", HtmlTag::Line},
    {"option", HtmlTag::Line},
    {"p", HtmlTag::Paragraph},
    {"plaintext", HtmlTag::Preformatted},
    {"pre", HtmlTag::Preformatted},
    {"script", HtmlTag::Hidden},
    {"section", HtmlTag::Line},
    {"select", HtmlTag::Line},
    {"style", HtmlTag::Hidden},
    {"summary", HtmlTag::Line},
    {"table", HtmlTag::Line},
    {"tbody", HtmlTag::Line},
    {"td", HtmlTag::Cell},
    {"textarea", HtmlTag::Preformatted},
    {"tfoot", HtmlTag::Line},
    {"th", HtmlTag::Cell},
    {"thead", HtmlTag::Line},
    {"title", HtmlTag::Title},
    {"tr", HtmlTag::Row},
    {"ul", HtmlTag::Paragraph},
    {"xml", HtmlTag::OfficeData},
    {"xmp", HtmlTag::Preformatted},
});
static_assert(std::is_sorted(kTags.begin(), kTags.end(),
                             [](const TagRow& a, const TagRow& b) { return a.name < b.name; }));
static_assert(std::all_of(kTags.begin(), kTags.end(),
                          [](const TagRow& row) { return row.name.size() <= kLongestTag; }));

}  // namespace

HtmlTag FindHtmlTag(std::string_view name) noexcept {
    const auto* found = std::lower_bound(kTags.begin(), kTags.end(), name,
                                         [](const TagRow& row, std::string_view key) { return row.name < key; });
    return found != kTags.end() && found->name == name ? found->tag : HtmlTag::Inline;
}

}  // namespace localmapi::rtf
