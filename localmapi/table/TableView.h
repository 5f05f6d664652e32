// Which rows of a source a table shows, and in which order. Knows nothing of columns and cursors. One thread at a time.
//
// Sorting and restricting only say what is wanted; the rows are arranged when somebody asks for one. So a table that is
// sorted and then restricted by an indexed property reads a few rows whatever their number, and any other reads each
// row once: the values that it is sorted by are kept.
#pragma once

#include "localmapi/model/RowSource.h"
#include "localmapi/table/Conditions.h"
#include "localmapi/table/SortKeys.h"
#include "mapi/MapiRestrictions.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace localmapi {

class TableView {
public:
    explicit TableView(std::unique_ptr<RowSource> rows) : m_source(std::move(rows)) {}

    // Shows the rows that satisfy a restriction, of which a copy is taken; all for null. What OwnedRestriction says of
    // it; the view stays as it was then.
    HRESULT Restrict(const SRestriction* restriction);

    // Shows the rows in an order; in that of the source for null, and for no columns. MAPI_E_TOO_COMPLEX for categories,
    // for a row for each of several values, and for more than kMostSorts columns; MAPI_E_INVALID_PARAMETER for a column
    // without a type that has an order.
    static constexpr ULONG kMostSorts = 64;
    HRESULT Sort(const SSortOrderSet* sorts);

    std::span<const SSortOrder> SortOrder() const noexcept { return m_sorts; }

    // Rows shown, and the number in the source of the one at a position below that.
    std::size_t Count();
    std::size_t RowAt(std::size_t position);

    // The position of the first row from `from` on that satisfies a restriction; of the last one up to and with `from`
    // when `backward`. A `from` past the end is the end.
    std::optional<std::size_t> Find(const OwnedRestriction& restriction, std::size_t from, bool backward);

    RowSource& Source() noexcept { return *m_source; }

private:
    // Positions from `begin` up to, not with, `end`.
    struct Range {
        std::size_t begin;
        std::size_t end;
    };

    std::size_t SourceCount();
    void Arrange();
    void ArrangeRows(std::vector<RowNumber>& rows);
    std::optional<std::size_t> PositionOf(RowNumber row);
    std::optional<std::size_t> FindAmong(std::span<const RowNumber> candidates, const OwnedRestriction& restriction,
                                         Range range, bool backward);
    Range Narrowed(const SRestriction& restriction, Range range);
    Range NarrowedByKey(const SPropertyRestriction& restriction, Range range);

    std::unique_ptr<RowSource> m_source;
    std::unique_ptr<OwnedRestriction> m_restriction;  // null: all rows
    std::vector<SSortOrder> m_sorts;
    std::unique_ptr<SortKeys> m_keys;  // for m_sorts; null for none
    bool m_isArranged = true;
    bool m_isWhole = true;          // all rows in the source's order: m_rows is empty
    std::vector<RowNumber> m_rows;  // holds when arranged
};

}  // namespace localmapi
