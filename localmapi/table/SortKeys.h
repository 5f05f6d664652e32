// The values that a table is sorted by, each read once from its row and kept: numbers and times in nine bytes a row,
// everything else as a value. One thread at a time.
#pragma once

#include "localmapi/model/RowSource.h"
#include "localmapi/props/MapiMemory.h"
#include "mapi/MapiRestrictions.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace localmapi {

// Rows of a source, by number. A table has fewer than 2^32.
using RowNumber = std::uint32_t;

// What a row has for a property.
struct Cell {
    enum class State : std::uint8_t { Missing, TooLarge, There };

    State state = State::Missing;
    SPropValue value{};  // when it is there; texts of one row's page are wide
};

// The cell, with its texts made wide. What a value points at lies in `memory`. What cannot be read is missing.
Cell ReadCell(RowSource& rows, std::size_t row, ULONG id, ValueMemory& memory);

// The cells of one property, read as they are asked for.
class KeyColumn {
public:
    // What sorts before what: numbers of the column's type, texts, all else, rows without a value.
    enum class Rank : std::uint8_t { Number, Text, Other, None };

    KeyColumn(RowSource& rows, ULONG id, std::size_t count);

    ULONG Id() const noexcept { return m_id; }

    // What the value points at lives as long as the column.
    Cell At(RowNumber row);

    Rank RankOf(RowNumber row);

    // The rank that a value would have; Other for a number of another type than the column's.
    Rank RankOf(const SPropValue& value) const noexcept;

    // A number that is in the order of the values: one of two rows of one rank that has the smaller number sorts first.
    // Rows with the same number are equal when the rank is Number or None, and need to be compared otherwise.
    std::uint64_t OrderOf(RowNumber row);

    // The text of a row of the rank Text.
    const WCHAR* TextOf(RowNumber row) { return At(row).value.Value.lpszW; }

    // True when some value that was read so far has the rank Other: it may be several values, of which any may match.
    bool HasOthers() const noexcept { return m_hasOthers; }

private:
    enum class State : std::uint8_t { Unread, Missing, TooLarge, Inline, Boxed };

    State Load(RowNumber row);
    const SPropValue& Boxed(RowNumber row) const noexcept;
    SPropValue Inline(RowNumber row) const noexcept;

    RowSource* m_source;  // not owned; outlives the column
    ULONG m_id;
    ULONG m_type = PT_NULL;             // of the numbers that stand inline: the first type met
    std::size_t m_count;                // of rows
    std::vector<State> m_states;        // a row each, as is the next; both empty until a row is asked for
    std::vector<std::uint64_t> m_bits;  // the bytes of a number, or a pointer to an SPropValue in m_values
    Arena m_values;
    Arena m_scratch;
    bool m_hasOthers = false;
};

// The columns of a sort order, and the order itself. It is total: rows whose values are all equal stand in the order of
// their numbers. Rows without a value stand behind those with one, in either direction.
class SortKeys {
public:
    SortKeys(RowSource& rows, std::span<const SSortOrder> sorts);

    // Puts the rows in order. Reads each column of each row at most once.
    void Sort(std::vector<RowNumber>& rows);

    // Below 0 when `left` stands before `right`; 0 only for a row and itself.
    int Compare(RowNumber left, RowNumber right) { return CompareFrom(0, left, right); }

    // The column of a property; null when the order has none for it.
    KeyColumn* Column(ULONG id) noexcept;

    KeyColumn& First() noexcept { return *m_columns.front().column; }
    bool IsFirstDescending() const noexcept { return m_columns.front().descending; }

private:
    struct SortColumn {
        std::unique_ptr<KeyColumn> column;
        bool descending;
    };

    static int CompareIn(SortColumn& sort, RowNumber left, RowNumber right);
    int CompareFrom(std::size_t column, RowNumber left, RowNumber right);

    std::vector<SortColumn> m_columns;  // at least one
};

}  // namespace localmapi
