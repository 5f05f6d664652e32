#include "host/TerminalText.h"

#include "host/Text.h"

#include <algorithm>
#include <array>

namespace vxhost {

namespace {

struct Range {
    char32_t first, last;
};

template <std::size_t N>
bool IsIn(const std::array<Range, N>& ranges, char32_t c) {
    return std::any_of(ranges.begin(), ranges.end(), [c](const Range& r) { return c >= r.first && c <= r.last; });
}

// The blocks that terminals draw two columns wide.
constexpr auto kWide = std::to_array<Range>({{0x1100, 0x115F},
                                             {0x2E80, 0x303E},
                                             {0x3041, 0xA4CF},
                                             {0xA960, 0xA97F},
                                             {0xAC00, 0xD7A3},
                                             {0xF900, 0xFAFF},
                                             {0xFE30, 0xFE6F},
                                             {0xFF00, 0xFF60},
                                             {0xFFE0, 0xFFE6},
                                             {0x1F300, 0x1F64F},
                                             {0x1F900, 0x1F9FF},
                                             {0x20000, 0x3FFFD}});

// Marks that are drawn over the character before them.
constexpr auto kCombining = std::to_array<Range>({{0x0300, 0x036F},
                                                  {0x0483, 0x0489},
                                                  {0x0591, 0x05BD},
                                                  {0x0610, 0x061A},
                                                  {0x064B, 0x065F},
                                                  {0x0E31, 0x0E31},
                                                  {0x0E34, 0x0E3A},
                                                  {0x0E47, 0x0E4E},
                                                  {0x1AB0, 0x1AFF},
                                                  {0x20D0, 0x20FF},
                                                  {0xFE00, 0xFE0F},
                                                  {0xFE20, 0xFE2F}});

// Marks of direction, and others that have no shape.
constexpr auto kShapeless =
    std::to_array<Range>({{0x061C, 0x061C}, {0x200B, 0x200F}, {0x202A, 0x202E}, {0x2060, 0x206F}});

constexpr bool IsControl(char32_t c) noexcept {
    return c < 0x20 || (c >= 0x7F && c < 0xA0);
}

constexpr bool IsLineEnd(char32_t c) noexcept {
    return c == '\n' || c == '\r' || c == 0x0B || c == 0x0C || c == 0x85 || c == 0x2028 || c == 0x2029;
}

void AppendPrintable(std::string& out, char32_t c) {
    if (c == '\t' || IsLineEnd(c)) {
        out += ' ';
    } else if (IsControl(c) || IsIn(kShapeless, c)) {
        out += '?';
    } else {
        AppendUtf8(out, c);
    }
}

std::size_t ColumnsOf(char32_t c) {
    return c < 0x300 ? 1 : IsIn(kCombining, c) ? 0 : IsIn(kWide, c) ? 2 : 1;
}

constexpr std::string_view kMissing = "...";

}  // namespace

std::string Printable(std::u16string_view text) {
    std::string out;
    for (std::size_t at = 0; at < text.size();) {
        AppendPrintable(out, NextCharacter(text, at));
    }
    return out;
}

std::string PrintableLines(std::u16string_view text) {
    std::string out;
    for (std::size_t at = 0; at < text.size();) {
        const char32_t c = NextCharacter(text, at);
        if (c == '\r' && at < text.size() && text[at] == '\n') {
            continue;
        }
        if (c == '\t') {
            out += '\t';
        } else if (IsLineEnd(c)) {
            out += '\n';
        } else {
            AppendPrintable(out, c);
        }
    }
    return out;
}

std::size_t ColumnsOf(std::string_view text) {
    std::size_t columns = 0;
    for (std::size_t at = 0; at < text.size();) {
        columns += ColumnsOf(NextCharacter(text, at));
    }
    return columns;
}

std::string Fitted(std::string_view text, std::size_t columns) {
    if (ColumnsOf(text) <= columns) {
        return std::string(text);
    }
    const std::string_view missing = kMissing.substr(0, columns);
    std::size_t used = missing.size();
    std::size_t end = 0;
    for (std::size_t at = 0; at < text.size(); end = at) {
        used += ColumnsOf(NextCharacter(text, at));
        if (used > columns) {
            break;
        }
    }
    return std::string(text.substr(0, end)) + std::string(missing);
}

std::vector<std::size_t> Table::Widths() const {
    constexpr std::size_t kWidest = 60;
    std::vector<std::size_t> widths;
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
        std::size_t width = ColumnsOf(m_columns[i].title);
        for (const auto& row : m_rows) {
            const std::size_t cell = ColumnsOf(row[i]);
            width = cell <= kWidest ? std::max(width, cell) : width;
        }
        widths.push_back(width);
    }
    return widths;
}

std::string Table::Text(bool isColoured) const {
    const std::vector<std::size_t> widths = Widths();
    std::string text;
    const auto appendRow = [&](auto cellOf) {
        for (std::size_t i = 0; i < m_columns.size(); ++i) {
            const std::string& cell = cellOf(i);
            const std::size_t columns = ColumnsOf(cell);
            const std::string padding(columns < widths[i] ? widths[i] - columns : 0, ' ');
            const bool isLast = i + 1 == m_columns.size();
            text += m_columns[i].align == Align::Right ? padding + cell : cell + (isLast ? std::string() : padding);
            text += isLast ? "" : "  ";
        }
    };
    text += isColoured ? "\x1b[1m" : "";
    appendRow([&](std::size_t i) -> const std::string& { return m_columns[i].title; });
    text += isColoured ? "\x1b[0m\n" : "\n";
    for (const auto& row : m_rows) {
        appendRow([&](std::size_t i) -> const std::string& { return row[i]; });
        text += '\n';
    }
    return text;
}

}  // namespace vxhost
