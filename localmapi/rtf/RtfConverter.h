// The walk over an RTF document that gives either its text or the HTML in it: [MS-OXRTFEX] 2.1.3.2 and 2.1.3.3. One
// document an object.
#pragma once

#include "localmapi/base/Bytes.h"
#include "localmapi/rtf/RtfKeywords.h"
#include "localmapi/rtf/RtfTokenizer.h"
#include "platform/WideText.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace localmapi::rtf {

class RtfConverter {
public:
    enum class Output : std::uint8_t { Text, Html };

    RtfConverter(ByteView rtf, Output output) : m_tokens(rtf), m_output(output) {}

    // Reads up to the end of the outermost group. Called once.
    CStringW Run();

private:
    // Groups within each other whose state is kept. HTML in RTF has a few hundred; deeper groups share the state of the
    // last one that is kept.
    static constexpr std::size_t kDeepestGroup = 4096;

    // Why text of a group is not shown, and where it belongs.
    enum Flags : std::uint8_t {
        kSkipped = 1,       // a destination that is not text
        kEightBitForm = 2,  // said again in Unicode
        kFontTable = 4,
        kHtmlRtf = 8,   // there for readers of RTF only
        kHtmlTag = 16,  // HTML markup
        kHidden = 32,
    };

    // What `}` restores.
    struct Group {
        std::int32_t font = 0;
        std::int32_t fallbackCount = 1;  // characters that follow a \u for readers that do not know it
        std::uint8_t flags = 0;
    };

    // Pages of a font of the table; 0 is the document's.
    struct Font {
        UINT byCharset = 0;
        UINT byCodePage = 0;  // counts more
    };

    void BeginGroup();
    bool EndGroup();
    bool IsFallback(RtfToken& token);
    void OnWord(const RtfToken& word);
    void OnDestination(const RtfKeyword* keyword);
    void OnFontTableWord(RtfAction action, std::int32_t parameter);
    void OnUnicode(std::int32_t value);
    void OnSymbol(char symbol);
    void OnBytes(std::string_view bytes);

    bool IsShown() const noexcept;
    bool Has(std::uint8_t flags) const noexcept { return (m_group.flags & flags) != 0; }
    void Set(std::uint8_t flag, bool on) noexcept;
    UINT PageOfText();
    UINT DocumentPage() const noexcept { return m_ansiPage != 0 ? m_ansiPage : m_charsetPage; }

    void PutUnit(std::uint32_t unit);
    void PutCharacter(std::uint16_t character, std::string_view entity);
    void PutLineBreak();
    void FlushRun();

    RtfTokenizer m_tokens;
    Output m_output;
    CStringW m_text;

    Group m_group;               // the current one
    std::vector<Group> m_outer;  // those around it
    std::size_t m_unkept = 0;    // groups beyond kDeepestGroup that are open
    bool m_isStarred = false;    // \* came just before
    std::int32_t m_fallbackLeft = 0;

    UINT m_charsetPage = 1252;
    UINT m_ansiPage = 0;
    std::int32_t m_defaultFont = 0;
    std::unordered_map<std::int32_t, Font> m_fonts;
    std::int32_t m_definedFont = 0;  // the entry of the font table that is being read

    // Page of the text in the current font; valid while the font is m_knownFont.
    UINT m_knownPage = 0;
    bool m_isPageKnown = false;
    std::int32_t m_knownFont = 0;

    // Bytes of one page, not decoded yet: a double-byte character may come in two tokens.
    std::string m_run;
    UINT m_runPage = 0;
};

}  // namespace localmapi::rtf
