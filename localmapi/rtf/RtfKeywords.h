// The control words that mean something for the text of a document. All others are formatting.
#pragma once

#include "platform/BaseTypes.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace localmapi::rtf {

enum class RtfAction : std::uint8_t {
    Character,  // stands for a character
    LineBreak,
    Tab,
    SkipDestination,  // the group holds nothing that is shown
    FontTable,
    Font,
    FontCharset,
    FontCodePage,
    DefaultFont,
    Plain,
    Charset,  // the document's, by one of four words
    AnsiCodePage,
    Unicode,
    FallbackCount,
    BothForms,    // \upr: a group in 8-bit text, and another that says the same in Unicode
    UnicodeForm,  // \ud
    Hidden,
    HtmlTag,
    HtmlRtf,
    FromHtml,
    FromText,
};

struct RtfKeyword {
    std::string_view name;
    RtfAction action;
    std::uint16_t value = 0;       // the character, or the document's code page
    std::string_view entity = {};  // the character in HTML, where it has a name
};

// Null for a word without meaning for the text. Words are case-sensitive.
const RtfKeyword* FindRtfKeyword(std::string_view name) noexcept;

// The page of text in a font with this \fcharset: 0 for that of the document, kSymbolPage for fonts of pictures.
inline constexpr UINT kSymbolPage = 42;
UINT PageOfFontCharset(std::int32_t charset) noexcept;

}  // namespace localmapi::rtf
