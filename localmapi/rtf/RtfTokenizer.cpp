#include "localmapi/rtf/RtfTokenizer.h"

#include <algorithm>
#include <array>
#include <limits>

namespace localmapi::rtf {

namespace {

using Kind = RtfToken::Kind;

bool IsLetter(char c) noexcept {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool IsDigit(char c) noexcept {
    return c >= '0' && c <= '9';
}

int HexDigit(char c) noexcept {
    if (IsDigit(c)) {
        return c - '0';
    }
    const char lower = static_cast<char>(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

// What ends a run of text. Line ends and zeros are no part of the text.
constexpr auto kEndsText = [] {
    std::array<bool, 256> ends{};
    for (const char c : {'{', '}', '\\', '\r', '\n', '\0'}) {
        ends[static_cast<unsigned char>(c)] = true;
    }
    return ends;
}();

bool EndsText(char c) noexcept {
    return kEndsText[static_cast<unsigned char>(c)];
}

}  // namespace

RtfToken RtfTokenizer::Next() {
    while (!m_rest.empty()) {
        const char first = m_rest.front();
        if (!EndsText(first)) {
            const auto* end = std::find_if(m_rest.begin() + 1, m_rest.end(), EndsText);
            return {Kind::Text, false, 0, Take(static_cast<std::size_t>(end - m_rest.begin()))};
        }
        switch (first) {
            case '{': return {Kind::GroupBegin, false, 0, Take(1)};
            case '}': return {Kind::GroupEnd, false, 0, Take(1)};
            case '\\': return ReadControl();
            default: Take(1);
        }
    }
    return {};
}

std::string_view RtfTokenizer::Take(std::size_t count) {
    const std::string_view taken = m_rest.substr(0, count);
    m_rest.remove_prefix(taken.size());
    return taken;
}

RtfToken RtfTokenizer::ReadControl() {
    Take(1);
    if (m_rest.empty()) {
        return {};
    }
    const char first = m_rest.front();
    if (IsLetter(first)) {
        return ReadWord();
    }
    if (first == '\'') {
        return ReadHexByte();
    }
    if (first == '\r' || first == '\n') {
        Take(m_rest.starts_with("\r\n") ? 2 : 1);
        return {Kind::Symbol, false, 0, "\n"};
    }
    return {Kind::Symbol, false, 0, Take(1)};
}

RtfToken RtfTokenizer::ReadWord() {
    const auto* end = std::find_if_not(m_rest.begin(), m_rest.end(), IsLetter);
    RtfToken word{Kind::Word, false, 0, Take(static_cast<std::size_t>(end - m_rest.begin()))};
    ReadParameter(word);
    if (m_rest.starts_with(' ')) {
        Take(1);
    }
    if (word.text == "bin") {
        Take(static_cast<std::size_t>(std::max(word.parameter, 0)));
        word.kind = Kind::Binary;
    }
    return word;
}

void RtfTokenizer::ReadParameter(RtfToken& word) {
    const bool isNegative = m_rest.size() > 1 && m_rest[0] == '-' && IsDigit(m_rest[1]);
    if (isNegative) {
        Take(1);
    }
    constexpr std::int64_t kMost = std::numeric_limits<std::int32_t>::max();
    std::int64_t value = 0;
    std::size_t digits = 0;
    for (; digits < m_rest.size() && IsDigit(m_rest[digits]); ++digits) {
        value = std::min(value * 10 + (m_rest[digits] - '0'), kMost);
    }
    Take(digits);
    word.hasParameter = digits > 0;
    word.parameter = static_cast<std::int32_t>(isNegative ? -value : value);
}

// An apostrophe without two digits is left out, as other readers do.
RtfToken RtfTokenizer::ReadHexByte() {
    const int high = m_rest.size() > 1 ? HexDigit(m_rest[1]) : -1;
    const int low = m_rest.size() > 2 ? HexDigit(m_rest[2]) : -1;
    if (high < 0 || low < 0) {
        return {Kind::Symbol, false, 0, Take(1)};
    }
    Take(3);
    m_byte = static_cast<char>(high << 4 | low);
    return {Kind::HexByte, false, 0, {&m_byte, 1}};
}

}  // namespace localmapi::rtf
