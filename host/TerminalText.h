// Foreign text on a terminal and in tables. Any thread.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace vxhost {

// The text, in UTF-8, on one line and without anything that a terminal would take for a command: controls, and marks
// that turn the direction of text around, become blanks and "?".
std::string Printable(std::u16string_view text);

// The same for text of several lines: line ends, of any form, and tabs stay.
std::string PrintableLines(std::u16string_view text);

// The columns that a UTF-8 text takes: two for the wide characters of East Asia, none for combining marks.
std::size_t ColumnsOf(std::string_view text);

// The front of a UTF-8 text that fits into so many columns, with "..." at its end where something is missing.
std::string Fitted(std::string_view text, std::size_t columns);

// Columns that begin one below the other, two blanks apart. Cells are printable UTF-8; one that is much wider than most
// pushes the rest of its row to the right, so that it does not cost all rows their width.
class Table {
public:
    enum class Align { Left, Right };
    struct Column {
        std::string title;
        Align align = Align::Left;
    };

    explicit Table(std::vector<Column> columns) : m_columns(std::move(columns)) {}

    void Add(std::vector<std::string> cells) { m_rows.push_back(std::move(cells)); }

    // Ends in a line end. The titles are in bold with `isColoured`.
    std::string Text(bool isColoured) const;

private:
    std::vector<std::size_t> Widths() const;

    std::vector<Column> m_columns;
    std::vector<std::vector<std::string>> m_rows;
};

}  // namespace vxhost
