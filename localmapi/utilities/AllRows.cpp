#include "localmapi/com/ComObject.h"
#include "localmapi/props/RowSets.h"
#include "localmapi/utilities/Utilities.h"
#include "mapi/MapiCodes.h"
#include "mapi/MapiFlags.h"

#include <algorithm>
#include <limits>
#include <utility>
#include <vector>

namespace localmapi {

namespace {

// Rows asked for at once. A table may always give fewer.
constexpr LONG kAtOnce = 1000;

HRESULT Prepare(IMAPITable& table, SPropTagArray* columns, SRestriction* restriction, SSortOrderSet* sorts) {
    HRESULT result = columns == nullptr ? S_OK : table.SetColumns(columns, TBL_BATCH);
    if (SUCCEEDED(result) && restriction != nullptr) {
        result = table.Restrict(restriction, TBL_BATCH);
    }
    if (SUCCEEDED(result) && sorts != nullptr) {
        result = table.SortTable(sorts, TBL_BATCH);
    }
    return FAILED(result) ? result : table.SeekRow(BOOKMARK_BEGINNING, 0, nullptr);
}

// Moves the rows of all sets into one; the sets are left empty.
RowSetPointer Joined(std::vector<RowSetPointer>& sets) {
    std::size_t count = 0;
    for (const RowSetPointer& set : sets) {
        count += set->cRows;
    }
    RowSetPointer all = MakeRowSet(count);
    for (const RowSetPointer& set : sets) {
        std::copy_n(set->aRow, set->cRows, all->aRow + all->cRows);
        all->cRows += std::exchange(set->cRows, 0);
    }
    return all;
}

HRESULT ReadAll(IMAPITable& table, std::size_t most, LPSRowSet* rows) {
    std::vector<RowSetPointer> sets;
    for (std::size_t count = 0;;) {
        LPSRowSet got = nullptr;
        const HRESULT result = table.QueryRows(kAtOnce, 0, &got);
        RowSetPointer set(got);
        if (FAILED(result)) {
            return result;
        }
        if (set == nullptr || set->cRows == 0) {
            break;
        }
        count += set->cRows;
        if (count > most) {
            return MAPI_E_TABLE_TOO_BIG;
        }
        sets.push_back(std::move(set));
    }
    *rows = (sets.size() == 1 ? std::move(sets.front()) : Joined(sets)).release();
    return S_OK;
}

}  // namespace

HRESULT HrQueryAllRows(LPMAPITABLE table, LPSPropTagArray columns, LPSRestriction restriction, LPSSortOrderSet sorts,
                       LONG most, LPSRowSet* rows) noexcept {
    if (table == nullptr || rows == nullptr) {
        return MAPI_E_INVALID_PARAMETER;
    }
    *rows = nullptr;
    if (const HRESULT result = Prepare(*table, columns, restriction, sorts); FAILED(result)) {
        return result;
    }
    try {
        return ReadAll(*table, most > 0 ? static_cast<std::size_t>(most) : std::numeric_limits<std::size_t>::max(),
                       rows);
    } catch (...) {
        return ResultOfException();
    }
}

}  // namespace localmapi
