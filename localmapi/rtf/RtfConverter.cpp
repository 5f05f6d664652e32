#include "localmapi/rtf/RtfConverter.h"

#include "localmapi/rtf/CodePageText.h"

#include <algorithm>

namespace localmapi::rtf {

namespace {

using Kind = RtfToken::Kind;

constexpr std::uint32_t kFirstBeyondUnit = 0x10000;
constexpr std::uint32_t kLastCharacter = 0x10FFFF;
constexpr std::int32_t kMostFallback = 1 << 16;

// Where fonts of pictures have their characters in Unicode.
constexpr std::uint16_t kSymbolArea = 0xF000;

}  // namespace

CStringW RtfConverter::Run() {
    for (RtfToken token = m_tokens.Next(); token.kind != Kind::End; token = m_tokens.Next()) {
        if (m_fallbackLeft > 0 && IsFallback(token)) {
            continue;
        }
        switch (token.kind) {
            case Kind::GroupBegin: BeginGroup(); break;
            case Kind::GroupEnd:
                if (!EndGroup()) {
                    FlushRun();
                    return std::move(m_text);
                }
                break;
            case Kind::Word: OnWord(token); break;
            case Kind::Symbol: OnSymbol(token.text.front()); break;
            case Kind::HexByte:
            case Kind::Text: OnBytes(token.text); break;
            case Kind::Binary:
            case Kind::End: break;
        }
        m_isStarred = token.kind == Kind::Symbol && token.text == "*";
    }
    FlushRun();
    return std::move(m_text);
}

void RtfConverter::BeginGroup() {
    if (m_outer.size() < kDeepestGroup) {
        m_outer.push_back(m_group);
    } else {
        ++m_unkept;
    }
}

// False at the end of the outermost group.
bool RtfConverter::EndGroup() {
    if (m_unkept > 0) {
        --m_unkept;
        return true;
    }
    if (m_outer.empty()) {
        return false;
    }
    m_group = m_outer.back();
    m_outer.pop_back();
    return !m_outer.empty();
}

// Takes from the token what stands behind a \u for readers that do not know it; true when nothing of it is left.
bool RtfConverter::IsFallback(RtfToken& token) {
    if (token.kind == Kind::GroupBegin || token.kind == Kind::GroupEnd
        || (token.kind == Kind::Word && token.text == "u")) {
        m_fallbackLeft = 0;  // the writer left out what it had announced
        return false;
    }
    if (token.kind != Kind::Text) {
        --m_fallbackLeft;
        return true;
    }
    const std::size_t count = std::min(token.text.size(), static_cast<std::size_t>(m_fallbackLeft));
    m_fallbackLeft -= static_cast<std::int32_t>(count);
    token.text.remove_prefix(count);
    return token.text.empty();
}

void RtfConverter::OnWord(const RtfToken& word) {
    const RtfKeyword* keyword = FindRtfKeyword(word.text);
    if (m_isStarred) {
        OnDestination(keyword);
        return;
    }
    if (keyword == nullptr) {
        return;
    }
    const bool isOn = !word.hasParameter || word.parameter != 0;
    switch (keyword->action) {
        case RtfAction::Character: PutCharacter(keyword->value, keyword->entity); break;
        case RtfAction::LineBreak: PutLineBreak(); break;
        case RtfAction::Tab: PutUnit('\t'); break;
        case RtfAction::SkipDestination:
        case RtfAction::BothForms:
        case RtfAction::FontTable: OnDestination(keyword); break;
        case RtfAction::Font:
        case RtfAction::FontCharset:
        case RtfAction::FontCodePage: OnFontTableWord(keyword->action, word.parameter); break;
        case RtfAction::DefaultFont:
            m_defaultFont = word.parameter;
            m_group.font = word.parameter;
            break;
        case RtfAction::Plain:
            m_group.font = m_defaultFont;
            Set(kHidden, false);
            break;
        case RtfAction::Charset:
            m_charsetPage = keyword->value;
            m_isPageKnown = false;
            break;
        case RtfAction::AnsiCodePage:
            m_ansiPage = word.parameter > 0 ? UsablePage(static_cast<UINT>(word.parameter)) : 0;
            m_isPageKnown = false;
            break;
        case RtfAction::Unicode:
            if (word.hasParameter) {
                OnUnicode(word.parameter);
            }
            break;
        case RtfAction::FallbackCount: m_group.fallbackCount = std::clamp(word.parameter, 0, kMostFallback); break;
        case RtfAction::Hidden: Set(kHidden, isOn); break;
        case RtfAction::HtmlRtf: Set(kHtmlRtf, isOn); break;
        case RtfAction::UnicodeForm:
        case RtfAction::HtmlTag:
        case RtfAction::FromHtml:
        case RtfAction::FromText: break;
    }
}

// A word that says what its group is for. The document itself is for text, whatever a damaged one says.
void RtfConverter::OnDestination(const RtfKeyword* keyword) {
    if (m_outer.size() < 2) {
        return;
    }
    if (keyword == nullptr) {
        Set(kSkipped, true);
        return;
    }
    switch (keyword->action) {
        case RtfAction::FontTable: Set(kFontTable, true); break;
        case RtfAction::BothForms: Set(kEightBitForm, true); break;
        case RtfAction::UnicodeForm: Set(kEightBitForm, false); break;
        case RtfAction::HtmlTag: Set(m_output == Output::Html ? kHtmlTag : kSkipped, true); break;
        default: Set(kSkipped, true); break;
    }
}

void RtfConverter::OnFontTableWord(RtfAction action, std::int32_t parameter) {
    if (!Has(kFontTable)) {
        if (action == RtfAction::Font) {
            m_group.font = parameter;
        }
        return;
    }
    m_isPageKnown = false;
    if (action == RtfAction::Font) {
        m_definedFont = parameter;
    } else if (action == RtfAction::FontCharset) {
        m_fonts[m_definedFont].byCharset = PageOfFontCharset(parameter);
    } else {
        m_fonts[m_definedFont].byCodePage = parameter > 0 ? UsablePage(static_cast<UINT>(parameter)) : 0;
    }
}

// Numbers beyond 32767 are written as negative ones; some writers do not, and some go beyond 16 bits.
void RtfConverter::OnUnicode(std::int32_t value) {
    m_fallbackLeft = m_group.fallbackCount;
    const auto character = static_cast<std::uint32_t>(value < 0 ? value + 0x10000 : value);
    if (character != 0 && character <= kLastCharacter) {
        PutUnit(character);
    }
}

void RtfConverter::OnSymbol(char symbol) {
    switch (symbol) {
        case '\n': PutLineBreak(); break;
        case '~': PutCharacter(0x00A0, "&nbsp;"); break;
        case '_':
            // In HTML it stands for a soft hyphen: [MS-OXRTFEX] 2.1.3.2.
            PutCharacter(0x2011, "&shy;");
            break;
        case '\t': PutUnit('\t'); break;
        case '\\':
        case '{':
        case '}': OnBytes({&symbol, 1}); break;
        default: break;  // \- is where a word may be broken, \* is known to Run, others say nothing
    }
}

void RtfConverter::OnBytes(std::string_view bytes) {
    if (!IsShown()) {
        return;
    }
    const UINT page = PageOfText();
    if (page != m_runPage) {
        FlushRun();
        m_runPage = page;
    }
    if (m_run.empty() && IsAscii(bytes) && IsAsciiSuperset(page)) {
        AppendAscii(m_text, bytes);
    } else {
        m_run.append(bytes);
    }
}

bool RtfConverter::IsShown() const noexcept {
    constexpr std::uint8_t kNever = kSkipped | kEightBitForm | kFontTable;
    if (m_output == Output::Text) {
        return !Has(kNever | kHtmlRtf | kHidden);
    }
    return !Has(kNever) && (Has(kHtmlTag) || !Has(kHtmlRtf));
}

void RtfConverter::Set(std::uint8_t flag, bool on) noexcept {
    m_group.flags = static_cast<std::uint8_t>(on ? m_group.flags | flag : m_group.flags & ~flag);
}

UINT RtfConverter::PageOfText() {
    if (m_isPageKnown && m_knownFont == m_group.font) {
        return m_knownPage;
    }
    const auto font = m_fonts.find(m_group.font);
    UINT page = 0;
    if (font != m_fonts.end()) {
        page = font->second.byCodePage != 0 ? font->second.byCodePage : font->second.byCharset;
        // The pictures are in the font; the HTML has the characters that they were asked for with.
        page = page == kSymbolPage && m_output == Output::Html ? 0 : page;
    }
    m_knownPage = page != 0 ? page : DocumentPage();
    m_knownFont = m_group.font;
    m_isPageKnown = true;
    return m_knownPage;
}

void RtfConverter::PutUnit(std::uint32_t unit) {
    if (!IsShown()) {
        return;
    }
    FlushRun();
    if (unit >= kFirstBeyondUnit) {
        unit -= kFirstBeyondUnit;
        m_text.push_back(static_cast<WCHAR>(0xD800 + (unit >> 10)));
        unit = 0xDC00 + (unit & 0x3FF);
    }
    m_text.push_back(static_cast<WCHAR>(unit));
}

void RtfConverter::PutCharacter(std::uint16_t character, std::string_view entity) {
    if (m_output == Output::Text || entity.empty()) {
        PutUnit(character);
    } else if (IsShown()) {
        FlushRun();
        AppendAscii(m_text, entity);
    }
}

void RtfConverter::PutLineBreak() {
    if (IsShown()) {
        FlushRun();
        AppendAscii(m_text, "\r\n");
    }
}

void RtfConverter::FlushRun() {
    if (m_run.empty()) {
        return;
    }
    if (m_runPage != kSymbolPage) {
        AppendDecoded(m_text, m_run, m_runPage);
    } else {
        // ASCII stays: ordinary text that was left in such a font by mistake is more common than pictures below 0x80.
        for (const char c : m_run) {
            const auto byte = static_cast<unsigned char>(c);
            m_text.push_back(static_cast<WCHAR>(byte < 0x80 ? byte : kSymbolArea + byte));
        }
    }
    m_run.clear();
}

}  // namespace localmapi::rtf
