#include "localmapi/table/TableView.h"

#include "localmapi/props/Values.h"
#include "mapi/MapiCodes.h"

#include <algorithm>
#include <limits>
#include <numeric>
#include <utility>

namespace localmapi {

namespace {

// The first position of a range for which `test` holds, when it holds for all behind one for which it does.
template <class Test>
std::size_t FirstWhere(std::size_t begin, std::size_t end, Test test) {
    while (begin < end) {
        const std::size_t middle = begin + (end - begin) / 2;
        if (test(middle)) {
            end = middle;
        } else {
            begin = middle + 1;
        }
    }
    return begin;
}

// What `relop` becomes when both sides are negated.
ULONG Turned(ULONG relop) noexcept {
    switch (relop) {
        case RELOP_LT: return RELOP_GT;
        case RELOP_LE: return RELOP_GE;
        case RELOP_GT: return RELOP_LT;
        case RELOP_GE: return RELOP_LE;
        default: return relop;
    }
}

HRESULT CheckSort(const SSortOrder& sort) noexcept {
    const ULONG type = PROP_TYPE(sort.ulPropTag);
    if (type == PT_NULL || type == PT_OBJECT || type == PT_ERROR) {
        return MAPI_E_INVALID_PARAMETER;
    }
    const bool isSupported = (type & MV_INSTANCE) == 0 && sort.ulOrder <= TABLE_SORT_DESCEND;
    return isSupported ? S_OK : MAPI_E_TOO_COMPLEX;
}

}  // namespace

HRESULT TableView::Restrict(const SRestriction* restriction) {
    std::unique_ptr<OwnedRestriction> owned;
    if (restriction != nullptr) {
        owned = std::make_unique<OwnedRestriction>();
        if (const HRESULT result = owned->Assign(*restriction); FAILED(result)) {
            return result;
        }
    }
    m_restriction = std::move(owned);
    m_isArranged = false;
    return S_OK;
}

HRESULT TableView::Sort(const SSortOrderSet* sorts) {
    std::vector<SSortOrder> wanted;
    if (sorts != nullptr) {
        if (sorts->cCategories > 0 || sorts->cSorts > kMostSorts) {
            return MAPI_E_TOO_COMPLEX;
        }
        wanted.assign(sorts->aSort, sorts->aSort + sorts->cSorts);
    }
    for (const SSortOrder& sort : wanted) {
        if (const HRESULT result = CheckSort(sort); FAILED(result)) {
            return result;
        }
    }
    m_sorts = std::move(wanted);
    m_keys.reset();
    m_isArranged = false;
    return S_OK;
}

std::size_t TableView::SourceCount() {
    return std::min<std::size_t>(m_source->Count(), std::numeric_limits<RowNumber>::max());
}

std::size_t TableView::Count() {
    Arrange();
    return m_isWhole ? SourceCount() : m_rows.size();
}

std::size_t TableView::RowAt(std::size_t position) {
    Arrange();
    return m_isWhole ? position : m_rows[position];
}

// ---- Arranging ------------------------------------------------------------------------------------------------------

void TableView::Arrange() {
    if (m_isArranged) {
        return;
    }
    if (!m_sorts.empty() && m_keys == nullptr) {
        m_keys = std::make_unique<SortKeys>(*m_source, m_sorts);
    }
    std::vector<RowNumber> rows;
    m_isWhole = m_restriction == nullptr && m_keys == nullptr;
    if (!m_isWhole) {
        ArrangeRows(rows);
    }
    m_rows = std::move(rows);
    m_isArranged = true;
}

void TableView::ArrangeRows(std::vector<RowNumber>& rows) {
    const bool counts = m_restriction != nullptr && m_restriction->Counts();
    std::optional<std::vector<RowNumber>> indexed;
    if (m_restriction != nullptr && !counts) {
        indexed = IndexedRows(*m_source, **m_restriction);
    }
    if (indexed) {
        rows = *std::move(indexed);
    } else {
        rows.resize(SourceCount());
        std::iota(rows.begin(), rows.end(), RowNumber{0});
    }
    if (counts && m_keys != nullptr) {
        m_keys->Sort(rows);  // the first rows in the order of the table are those that count
    }
    if (m_restriction != nullptr) {
        // The keys know no row yet that an index gives, and are as large as the table once they know one.
        Matcher matcher(*m_source, indexed ? nullptr : m_keys.get(), **m_restriction);
        std::erase_if(rows, [&matcher](RowNumber row) { return !matcher.Matches(row); });
        rows.shrink_to_fit();
    }
    if (!counts && m_keys != nullptr) {
        m_keys->Sort(rows);
    }
}

// ---- Finding --------------------------------------------------------------------------------------------------------

std::optional<std::size_t> TableView::Find(const OwnedRestriction& restriction, std::size_t from, bool backward) {
    const std::size_t count = Count();
    if (count == 0) {
        return std::nullopt;
    }
    Range range = backward ? Range{0, std::min(from, count - 1) + 1} : Range{std::min(from, count), count};
    if (!restriction.Counts()) {
        if (const auto candidates = IndexedRows(*m_source, *restriction)) {
            return FindAmong(*candidates, restriction, range, backward);
        }
        range = Narrowed(*restriction, range);
    }
    Matcher matcher(*m_source, m_keys.get(), *restriction);
    for (std::size_t i = range.begin; i < range.end; ++i) {
        const std::size_t position = backward ? range.end - 1 - (i - range.begin) : i;
        if (matcher.Matches(static_cast<RowNumber>(RowAt(position)))) {
            return position;
        }
    }
    return std::nullopt;
}

std::optional<std::size_t> TableView::FindAmong(std::span<const RowNumber> candidates,
                                                const OwnedRestriction& restriction, Range range, bool backward) {
    Matcher matcher(*m_source, m_keys.get(), *restriction);
    std::optional<std::size_t> best;
    for (const RowNumber row : candidates) {
        const auto position = PositionOf(row);
        const bool isInside = position && *position >= range.begin && *position < range.end;
        const bool isBetter = isInside && (!best || (backward ? *position > *best : *position < *best));
        if (isBetter && matcher.Matches(row)) {
            best = position;
        }
    }
    return best;
}

std::optional<std::size_t> TableView::PositionOf(RowNumber row) {
    if (m_isWhole) {
        return row < SourceCount() ? std::optional<std::size_t>(row) : std::nullopt;
    }
    const std::size_t position = FirstWhere(0, m_rows.size(), [this, row](std::size_t at) {
        return m_keys == nullptr ? m_rows[at] >= row : m_keys->Compare(m_rows[at], row) >= 0;
    });
    const bool isShown = position < m_rows.size() && m_rows[position] == row;
    return isShown ? std::optional(position) : std::nullopt;
}

// Conditions on the first column of the order hold for rows side by side, whose ends are found by halving.
TableView::Range TableView::Narrowed(const SRestriction& restriction, Range range) {
    if (m_keys == nullptr) {
        return range;
    }
    if (restriction.rt == RES_PROPERTY) {
        return NarrowedByKey(restriction.res.resProperty, range);
    }
    if (restriction.rt == RES_AND) {
        for (ULONG i = 0; i < restriction.res.resAnd.cRes; ++i) {
            range = Narrowed(restriction.res.resAnd.lpRes[i], range);
        }
    }
    return range;
}

TableView::Range TableView::NarrowedByKey(const SPropertyRestriction& restriction, Range range) {
    KeyColumn& column = m_keys->First();
    const SPropValue& bound = *restriction.lpProp;
    const KeyColumn::Rank rank = column.RankOf(bound);
    const bool isOrder = restriction.relop <= RELOP_EQ;
    if (PROP_ID(restriction.ulPropTag) != column.Id() || !isOrder || rank == KeyColumn::Rank::Other
        || column.HasOthers()) {
        return range;
    }
    const bool isDescending = m_keys->IsFirstDescending();
    const ULONG relop = isDescending ? Turned(restriction.relop) : restriction.relop;
    // Below, at or above 0 as the row at a position stands before, at or behind the bound.
    const auto side = [&](std::size_t position) {
        const RowNumber row = m_rows[position];
        if (const KeyColumn::Rank has = column.RankOf(row); has != rank) {
            return has < rank ? -1 : 1;
        }
        const int order = Compare(column.At(row).value, bound);
        return isDescending ? -order : order;
    };
    const auto rankBegins = [&](std::size_t at) { return column.RankOf(m_rows[at]) >= rank; };
    const auto rankEnds = [&](std::size_t at) { return column.RankOf(m_rows[at]) > rank; };
    const auto from = [&](std::size_t at) { return side(at) >= 0; };
    const auto behind = [&](std::size_t at) { return side(at) > 0; };

    const bool hasLow = relop == RELOP_GT || relop == RELOP_GE || relop == RELOP_EQ;
    const bool hasHigh = relop == RELOP_LT || relop == RELOP_LE || relop == RELOP_EQ;
    Range narrow = range;
    if (!hasLow) {
        narrow.begin = FirstWhere(range.begin, range.end, rankBegins);
    } else {
        narrow.begin =
            relop == RELOP_GT ? FirstWhere(range.begin, range.end, behind) : FirstWhere(range.begin, range.end, from);
    }
    if (!hasHigh) {
        narrow.end = FirstWhere(narrow.begin, range.end, rankEnds);
    } else {
        narrow.end =
            relop == RELOP_LT ? FirstWhere(narrow.begin, range.end, from) : FirstWhere(narrow.begin, range.end, behind);
    }
    return narrow;
}

}  // namespace localmapi
