// Whether rows satisfy a restriction. One thread at a time.
#pragma once

#include "localmapi/model/RowSource.h"
#include "localmapi/props/MapiMemory.h"
#include "localmapi/table/SortKeys.h"
#include "mapi/MapiRestrictions.h"

#include <cstddef>
#include <optional>
#include <unordered_map>
#include <vector>

namespace localmapi {

// A restriction of one's own. The node and what it points at live as long as this.
class OwnedRestriction {
public:
    // Takes a deep copy. What CopyRestriction says of it, and MAPI_E_TOO_COMPLEX for what no table here answers: patterns
    // (RELOP_RE), members of distribution lists, contents of other things than texts and bytes.
    HRESULT Assign(const SRestriction& restriction);

    const SRestriction& operator*() const noexcept { return m_root; }

    // Whether the answer for a row depends on the rows before it: RES_COUNT.
    bool Counts() const noexcept { return m_counts; }

private:
    Arena m_memory;
    SRestriction m_root{};
    bool m_counts = false;
};

// One pass over rows. What a row lacks satisfies no condition on it, RELOP_NE included; of several values any may
// satisfy it. A value too large for a row exists, and has the size kLargestCell + 1 as far as its size is asked.
class Matcher {
public:
    // `keys` gives the values that it has, so that they are not read again; null for none. All outlive the matcher.
    Matcher(RowSource& rows, SortKeys* keys, const SRestriction& restriction) noexcept
        : m_rows(rows), m_keys(keys), m_restriction(restriction) {}

    bool Matches(RowNumber row);

private:
    struct Known {
        ULONG id;
        Cell cell;
    };

    bool Holds(const SRestriction& restriction, RowNumber row);
    bool HoldsWithin(const SSubRestriction& restriction, RowNumber row);
    bool HoldsForFirst(const SCountRestriction& restriction, RowNumber row);
    bool CompareTwo(const SComparePropsRestriction& restriction, RowNumber row);
    bool CompareSize(const SSizeRestriction& restriction, RowNumber row);
    Cell Value(RowNumber row, ULONG tag);

    RowSource& m_rows;
    SortKeys* m_keys;
    const SRestriction& m_restriction;
    Arena m_memory;              // of one row
    std::vector<Known> m_known;  // of that row
    std::unordered_map<const SCountRestriction*, ULONG> m_counted;
};

// The rows that can satisfy a restriction, if the source's indexes tell: a few that are to be matched, in ascending order
// of their numbers. Nothing when any row may.
std::optional<std::vector<RowNumber>> IndexedRows(RowSource& rows, const SRestriction& restriction);

}  // namespace localmapi
