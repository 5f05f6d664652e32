// What the elements of HTML do to the text in them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace localmapi::rtf {

enum class HtmlTag : std::uint8_t {
    Inline,     // nothing; so do unknown ones
    Line,       // stands on lines of its own
    Paragraph,  // and has an empty line before and behind it
    LineBreak,
    ListItem,
    Row,
    Cell,
    Preformatted,  // a paragraph whose white space counts
    Hidden,        // up to its end tag there is no markup, and nothing that is shown
    Title,         // the same, but where the end tag is missing the text goes on
    OfficeData,    // likewise
};

// The longest name that is not Inline.
inline constexpr std::size_t kLongestTag = 10;

// `name` is in lower case.
HtmlTag FindHtmlTag(std::string_view name) noexcept;

}  // namespace localmapi::rtf
