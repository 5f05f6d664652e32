#include "localmapi/rtf/Charsets.h"
#include "localmapi/rtf/CodePageText.h"
#include "localmapi/rtf/HtmlText.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <optional>
#include <string_view>

namespace localmapi::rtf {

namespace {

// How far into the body a charset is looked for. Style sheets and comments may come before it.
constexpr std::size_t kCharsetWithin = std::size_t{64} << 10;

struct Mark {
    std::string_view bytes;
    UINT page;
};
constexpr Mark kMarks[] = {{"\xEF\xBB\xBF", kUtf8Page}, {"\xFF\xFE", kUtf16Page}, {"\xFE\xFF", kUtf16BigEndianPage}};

bool IsSpace(char c) noexcept {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\f';
}

// `lower` is in lower case.
std::size_t FindIgnoringCase(std::string_view text, std::string_view lower, std::size_t from) {
    const auto found =
        std::search(text.begin() + static_cast<std::ptrdiff_t>(from), text.end(), lower.begin(), lower.end(),
                    [](char a, char b) { return (a >= 'A' && a <= 'Z' ? static_cast<char>(a - 'A' + 'a') : a) == b; });
    return found == text.end() ? std::string_view::npos : static_cast<std::size_t>(found - text.begin());
}

// The value that follows `name` and an equals sign in a tag, without quotes; empty when there is none.
std::string_view ValueOf(std::string_view tag, std::string_view name) {
    const std::size_t at = FindIgnoringCase(tag, name, 0);
    if (at == std::string_view::npos) {
        return {};
    }
    std::string_view rest = tag.substr(at + name.size());
    const auto skip = [&rest](auto isSkipped) {
        rest.remove_prefix(
            static_cast<std::size_t>(std::find_if_not(rest.begin(), rest.end(), isSkipped) - rest.begin()));
    };
    skip(IsSpace);
    if (!rest.starts_with('=')) {
        return {};
    }
    skip([](char c) { return c == '=' || c == '"' || c == '\'' || IsSpace(c); });
    return rest.substr(0, rest.find_first_of("\"' \t\r\n;/>"));
}

// The page that the first <meta> with a charset names, or the XML declaration. What calls itself UTF-16 and could be
// read so far is no such thing, and UTF-7 serves nobody but those who want to hide markup.
UINT PageInHtml(std::string_view html) {
    html = html.substr(0, kCharsetWithin);
    std::string_view charset;
    if (html.starts_with("<?xml")) {
        charset = ValueOf(html.substr(0, html.find('>')), "encoding");
    }
    std::size_t at = FindIgnoringCase(html, "<meta", 0);
    while (charset.empty() && at != std::string_view::npos) {
        const std::string_view tag = html.substr(at, html.find('>', at) - at);
        charset = ValueOf(tag, "charset");
        at = FindIgnoringCase(html, "<meta", at + tag.size());
    }
    const UINT page = CodePageOfCharset(charset).value_or(0);
    constexpr UINT kUtf7Page = 65000;
    return page == kUtf16Page || page == kUtf16BigEndianPage ? kUtf8Page : page == kUtf7Page ? 0 : page;
}

// The page that text is really in when it is said to be in `page`; 0 when that says nothing. Bytes that have got so far
// are not in one of the wide pages.
UINT Meant(UINT page) noexcept {
    constexpr UINT kAscii = 20127;
    constexpr UINT kLatin1 = 28591;
    constexpr UINT kWide[] = {kUtf16Page, kUtf16BigEndianPage, 12000, 12001, 65005, 65006};
    if (std::find(std::begin(kWide), std::end(kWide), page) != std::end(kWide)) {
        return 0;
    }
    return page == kAscii || page == kLatin1 ? kWesternPage : page;
}

// UTF-16 of HTML without a mark: markup is ASCII, so every other byte of its beginning is zero.
UINT Utf16Page(std::string_view html) noexcept {
    if (html.size() < 4) {
        return 0;
    }
    if (html[0] != 0 && html[1] == 0 && html[2] != 0 && html[3] == 0) {
        return kUtf16Page;
    }
    return html[0] == 0 && html[1] != 0 && html[2] == 0 && html[3] != 0 ? kUtf16BigEndianPage : 0;
}

CStringW Decoded(std::string_view html, UINT page) {
    CStringW text;
    AppendDecoded(text, html, page);
    return text;
}

// True for pages in which bytes below 0x80 may be other characters than ASCII's.
bool NeedsItsPage(UINT page) noexcept {
    return page != 0 && UsablePage(page) != 0 && !IsAsciiSuperset(page);
}

}  // namespace

CStringW DecodeHtml(ByteView html, UINT declaredPage) {
    std::string_view bytes(reinterpret_cast<const char*>(html.Data()), html.Size());
    for (const Mark& mark : kMarks) {
        if (bytes.starts_with(mark.bytes)) {
            return Decoded(bytes.substr(mark.bytes.size()), mark.page);
        }
    }
    if (const UINT page = Utf16Page(bytes); page != 0) {
        return Decoded(bytes, page);
    }
    const UINT declared = Meant(declaredPage);
    const UINT own = Meant(PageInHtml(bytes));
    if (IsAscii(bytes)) {
        return Decoded(bytes, NeedsItsPage(declared) ? declared : NeedsItsPage(own) ? own : kWesternPage);
    }
    const bool isUtf8Said = declared == kUtf8Page || own == kUtf8Page;
    for (const UINT page : {isUtf8Said ? kUtf8Page : 0, declared, own, kUtf8Page}) {
        if (page != 0) {
            if (auto text = DecodeStrictly(bytes, page)) {
                return *std::move(text);
            }
        }
    }
    return Decoded(bytes, UsablePage(declared) != 0 ? declared : UsablePage(own) != 0 ? own : kWesternPage);
}

}  // namespace localmapi::rtf
