#include "localmapi/rtf/HtmlText.h"

#include "localmapi/rtf/HtmlEntities.h"
#include "localmapi/rtf/HtmlTags.h"
#include "localmapi/rtf/TextLayout.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace localmapi::rtf {

namespace {

constexpr std::size_t kNone = WideView::npos;
constexpr WCHAR kSoftHyphen = 0xAD;

enum class Class : std::uint8_t { Plain, Space, Markup, Reference, Dropped };

// Of the first 256 code units; all others are plain.
constexpr auto kClasses = [] {
    std::array<Class, 256> classes{};
    for (std::size_t control = 0; control < 0x20; ++control) {
        classes[control] = Class::Dropped;
    }
    for (const char space : {' ', '\t', '\n', '\f', '\r'}) {
        classes[static_cast<unsigned char>(space)] = Class::Space;
    }
    classes['<'] = Class::Markup;
    classes['&'] = Class::Reference;
    classes[kSoftHyphen] = Class::Dropped;
    return classes;
}();

Class ClassOf(WCHAR unit) noexcept {
    return unit < kClasses.size() ? kClasses[unit] : Class::Plain;
}

bool IsLetter(WCHAR unit) noexcept {
    return (unit >= 'a' && unit <= 'z') || (unit >= 'A' && unit <= 'Z');
}

bool IsLetterOrDigit(WCHAR unit) noexcept {
    return IsLetter(unit) || (unit >= '0' && unit <= '9');
}

char Lower(WCHAR unit) noexcept {
    return static_cast<char>(unit >= 'A' && unit <= 'Z' ? unit - 'A' + 'a' : unit);
}

bool IsHighSurrogate(std::uint32_t unit) noexcept {
    return unit >= 0xD800 && unit < 0xDC00;
}

bool IsLowSurrogate(std::uint32_t unit) noexcept {
    return unit >= 0xDC00 && unit < 0xE000;
}

// ASCII letters and digits of a name, as far as names that are known go. A longer name is cut one beyond that, so that
// it is not taken for one of them.
template <std::size_t kLongest>
class ShortName {
public:
    explicit ShortName(WideView text, bool lowerCase) noexcept {
        while (m_size < m_chars.size() && m_size < text.size() && IsLetterOrDigit(text[m_size])) {
            const WCHAR unit = text[m_size];
            m_chars[m_size++] = lowerCase ? Lower(unit) : static_cast<char>(unit);
        }
    }
    std::string_view View() const noexcept { return {m_chars.data(), m_size}; }

private:
    std::array<char, kLongest + 1> m_chars{};
    std::size_t m_size = 0;
};

class HtmlReader {
public:
    explicit HtmlReader(WideView html) : m_html(html) {}

    CStringW Run();

private:
    enum class Edge : std::uint8_t { Start, End };

    void ReadPlain();
    void ReadMarkup();
    void ReadTag(Edge edge, std::size_t nameAt);
    void SkipTo(std::size_t closing, std::size_t closingSize);
    std::size_t FindTagEnd(std::size_t at);
    std::size_t FindQuoteEnd(WCHAR quote, std::size_t at);
    void Apply(HtmlTag tag, Edge edge);
    void SkipContent(HtmlTag tag, std::string_view name);
    std::size_t FindEndTag(std::string_view name) const;

    void ReadReference();
    bool ReadNumericReference();
    bool ReadNamedReference();
    struct Number {
        std::uint32_t value = 0;
        std::size_t size = 0;  // of the whole reference; 0 when it is none
    };
    Number NumberAt(std::size_t at) const;
    void PutCharacter(std::uint32_t character);
    WCHAR At(std::size_t at) const noexcept { return at < m_html.size() ? m_html[at] : WCHAR{}; }

    WideView m_html;
    std::size_t m_at = 0;
    TextLayout m_layout;

    // Searches that failed are not made again: everything is read in a time that grows with its size only.
    bool m_isMarkupOver = false;      // no '>' follows
    bool m_areQuotesBroken = false;   // a tag had no end outside of its quotes
    bool m_hasNoSingleQuote = false;  // none follows
    bool m_hasNoDoubleQuote = false;
    std::array<bool, 16> m_hasNoEndTag{};  // by HtmlTag
};

CStringW HtmlReader::Run() {
    while (m_at < m_html.size()) {
        const WCHAR unit = m_html[m_at];
        switch (ClassOf(unit)) {
            case Class::Plain: ReadPlain(); break;
            case Class::Space:
                m_layout.PutSpace(unit);
                ++m_at;
                break;
            case Class::Markup: ReadMarkup(); break;
            case Class::Reference: ReadReference(); break;
            case Class::Dropped: ++m_at; break;
        }
    }
    return m_layout.Take();
}

void HtmlReader::ReadPlain() {
    std::size_t end = m_at + 1;
    while (end < m_html.size() && ClassOf(m_html[end]) == Class::Plain) {
        ++end;
    }
    m_layout.Put(m_html.substr(m_at, end - m_at));
    m_at = end;
}

// At '<'.
void HtmlReader::ReadMarkup() {
    const WCHAR next = At(m_at + 1);
    if (m_isMarkupOver) {
        m_layout.PutUnit(m_html[m_at++]);
    } else if (IsLetter(next)) {
        ReadTag(Edge::Start, m_at + 1);
    } else if (next == '/' && IsLetter(At(m_at + 2))) {
        ReadTag(Edge::End, m_at + 2);
    } else if (next == '!' && At(m_at + 2) == '-' && At(m_at + 3) == '-') {
        // "<!-->" is a whole comment.
        const std::size_t closing = m_html.find("-->"_w, m_at + 2);
        m_at = closing == kNone ? m_html.size() : closing + 3;
    } else if (next == '!' || next == '?' || next == '/') {
        const std::size_t closing = m_html.find(WCHAR{'>'}, m_at);
        m_isMarkupOver = closing == kNone;
        m_at = closing == kNone ? m_at : closing + 1;
    } else {
        m_layout.PutUnit(m_html[m_at++]);
    }
}

void HtmlReader::ReadTag(Edge edge, std::size_t nameAt) {
    const std::size_t end = FindTagEnd(nameAt);
    if (end == kNone) {
        m_isMarkupOver = true;
        return;
    }
    const ShortName<kLongestTag> name(m_html.substr(nameAt, end - nameAt), true);
    const HtmlTag tag = FindHtmlTag(name.View());
    // "o:p" is not "o", and "<p-x>" not "<p>".
    const WCHAR behind = m_html[nameAt + name.View().size()];
    const bool isWholeName = behind == '>' || behind == '/' || ClassOf(behind) == Class::Space;
    const bool isEmptyElement = m_html[end - 1] == '/';
    m_at = end + 1;
    if (!isWholeName) {
        return;
    }
    if (tag == HtmlTag::Hidden || tag == HtmlTag::Title || tag == HtmlTag::OfficeData) {
        if (edge == Edge::Start && !isEmptyElement) {
            SkipContent(tag, name.View());
        }
        return;
    }
    Apply(tag, edge);
}

// The '>' that ends the tag. Values of attributes may hold one, in quotes.
std::size_t HtmlReader::FindTagEnd(std::size_t at) {
    if (!m_areQuotesBroken) {
        for (std::size_t i = at; i < m_html.size(); ++i) {
            if (m_html[i] == '>') {
                return i;
            }
            if (m_html[i] != '=') {
                continue;
            }
            while (ClassOf(At(i + 1)) == Class::Space && i + 1 < m_html.size()) {
                ++i;
            }
            if (const WCHAR quote = At(i + 1); quote == '"' || quote == '\'') {
                const std::size_t closing = FindQuoteEnd(quote, i + 2);
                i = closing == kNone ? i : closing;
            }
        }
        m_areQuotesBroken = true;
    }
    return m_html.find(WCHAR{'>'}, at);
}

std::size_t HtmlReader::FindQuoteEnd(WCHAR quote, std::size_t at) {
    bool& hasNone = quote == '"' ? m_hasNoDoubleQuote : m_hasNoSingleQuote;
    const std::size_t closing = hasNone ? kNone : m_html.find(quote, at);
    hasNone = closing == kNone;
    return closing;
}

void HtmlReader::Apply(HtmlTag tag, Edge edge) {
    const bool isStart = edge == Edge::Start;
    switch (tag) {
        case HtmlTag::Line: m_layout.Separate(1); break;
        case HtmlTag::Paragraph: m_layout.Separate(2); break;
        case HtmlTag::LineBreak: m_layout.BreakLine(); break;
        case HtmlTag::ListItem: isStart ? m_layout.BeginItem() : m_layout.EndItem(); break;
        case HtmlTag::Row: m_layout.BeginOrEndRow(); break;
        case HtmlTag::Cell: isStart ? m_layout.BeginCell() : m_layout.EndCell(); break;
        case HtmlTag::Preformatted: isStart ? m_layout.BeginPreformatted() : m_layout.EndPreformatted(); break;
        case HtmlTag::Inline:
        case HtmlTag::Hidden:
        case HtmlTag::Title:
        case HtmlTag::OfficeData: break;
    }
}

// Behind the start tag of an element that is not shown.
void HtmlReader::SkipContent(HtmlTag tag, std::string_view name) {
    bool& hasNoEndTag = m_hasNoEndTag[static_cast<std::size_t>(tag)];
    const std::size_t endTag = hasNoEndTag ? kNone : FindEndTag(name);
    if (endTag != kNone) {
        m_at = endTag;
    } else if (tag == HtmlTag::Hidden) {
        m_at = m_html.size();
    } else {
        hasNoEndTag = true;
    }
}

std::size_t HtmlReader::FindEndTag(std::string_view name) const {
    for (std::size_t at = m_html.find("</"_w, m_at); at != kNone; at = m_html.find("</"_w, at + 2)) {
        const WideView rest = m_html.substr(at + 2);
        if (ShortName<kLongestTag>(rest, true).View() == name) {
            return at;
        }
    }
    return kNone;
}

// At '&'.
void HtmlReader::ReadReference() {
    if (!(At(m_at + 1) == '#' ? ReadNumericReference() : ReadNamedReference())) {
        m_layout.PutUnit(m_html[m_at++]);
    }
}

bool HtmlReader::ReadNumericReference() {
    const Number number = NumberAt(m_at);
    if (number.size == 0) {
        return false;
    }
    m_at += number.size;
    std::uint32_t character = CharacterOfReference(number.value);
    if (IsHighSurrogate(character)) {
        // Some writers give the two halves of a character one by one.
        const Number second = NumberAt(m_at);
        if (second.size > 0 && IsLowSurrogate(second.value)) {
            m_at += second.size;
            character = 0x10000 + ((character - 0xD800) << 10) + (second.value - 0xDC00);
        }
    }
    PutCharacter(IsHighSurrogate(character) || IsLowSurrogate(character) ? 0xFFFD : character);
    return true;
}

HtmlReader::Number HtmlReader::NumberAt(std::size_t at) const {
    if (At(at) != '&' || At(at + 1) != '#') {
        return {};
    }
    const bool isHex = (At(at + 2) | 0x20) == 'x';
    const std::size_t first = at + (isHex ? 3 : 2);
    std::size_t end = first;
    std::uint32_t value = 0;
    for (;; ++end) {
        const std::uint32_t unit = At(end);
        const std::uint32_t letter = unit | 0x20;
        std::uint32_t digit = 0;
        if (unit >= '0' && unit <= '9') {
            digit = unit - '0';
        } else if (isHex && letter >= 'a' && letter <= 'f') {
            digit = letter - 'a' + 10;
        } else {
            break;
        }
        constexpr std::uint32_t kTooLarge = 0x110000;
        value = std::min(value * (isHex ? 16 : 10) + digit, kTooLarge);
    }
    if (end == first) {
        return {};
    }
    return {value, end - at + (At(end) == ';' ? 1 : 0)};
}

bool HtmlReader::ReadNamedReference() {
    const ShortName<kLongestEntity> longName(m_html.substr(m_at + 1), false);
    std::string_view name = longName.View();
    auto character = FindEntity(name);
    while (!character && name.size() > 1) {
        name.remove_suffix(1);
        character = FindOpenEntity(name);
    }
    if (!character) {
        return false;
    }
    m_at += 1 + name.size();
    m_at += At(m_at) == ';' ? 1 : 0;
    PutCharacter(*character);
    return true;
}

void HtmlReader::PutCharacter(std::uint32_t character) {
    if (character >= 0x10000) {
        m_layout.PutUnit(static_cast<WCHAR>(0xD800 + ((character - 0x10000) >> 10)));
        m_layout.PutUnit(static_cast<WCHAR>(0xDC00 + (character & 0x3FF)));
        return;
    }
    const auto unit = static_cast<WCHAR>(character);
    switch (ClassOf(unit)) {
        case Class::Space: m_layout.PutSpace(unit); break;
        case Class::Dropped: break;
        default: m_layout.PutUnit(unit);
    }
}

}  // namespace

CStringW TextOfHtml(WideView html) {
    return HtmlReader(html).Run();
}

}  // namespace localmapi::rtf
