#include "testing/scripted_mapi/Table.h"

#include "mapi/MapiCodes.h"
#include "mapi/MapiFlags.h"
#include "testing/scripted_mapi/Conditions.h"

#include <algorithm>
#include <numeric>
#include <span>

namespace scripted_mapi {

IMAPITable* NewTable(const std::shared_ptr<Context>& context, std::vector<Bag> rows) {
    return new Table(context, std::move(rows));
}

Table::Table(const std::shared_ptr<Context>& context, std::vector<Bag> rows)
    : Object(context), m_all(std::move(rows)), m_order(m_all.size()) {
    std::iota(m_order.begin(), m_order.end(), std::size_t{0});
    m_shown = m_order;
}

void Table::ApplyColumns(const SPropTagArray* columns) {
    m_columns.assign(&columns->aulPropTag[0], &columns->aulPropTag[0] + columns->cValues);
}

void Table::ApplyRestriction(const SRestriction* restriction) {
    m_shown.clear();
    for (const std::size_t place : m_order) {
        if (Satisfies(m_all[place], restriction)) {
            m_shown.push_back(place);
        }
    }
    m_cursor = 0;
}

void Table::ApplyOrder(const SSortOrderSet& order) {
    const std::span keys(&order.aSort[0], order.cSorts);
    const auto isBefore = [&](std::size_t a, std::size_t b) {
        for (const SSortOrder& key : keys) {
            const int comparison = CompareValues(m_all[a].Read(key.ulPropTag), m_all[b].Read(key.ulPropTag));
            if (comparison != 0) {
                return key.ulOrder == TABLE_SORT_DESCEND ? comparison > 0 : comparison < 0;
            }
        }
        return false;
    };
    std::stable_sort(m_order.begin(), m_order.end(), isBefore);
    std::stable_sort(m_shown.begin(), m_shown.end(), isBefore);
    m_cursor = 0;
}

bool Table::Place(BOOKMARK bookmark, std::size_t& place) const {
    switch (bookmark) {
        case BOOKMARK_BEGINNING: place = 0; return true;
        case BOOKMARK_CURRENT: place = m_cursor; return true;
        case BOOKMARK_END: place = m_shown.size(); return true;
        default: return false;
    }
}

LPSRowSet Table::TakeRows(std::size_t count) {
    count = std::min(count, m_shown.size() - m_cursor);
    auto* rows = static_cast<LPSRowSet>(memory::Allocate(CbNewSRowSet(count)));
    rows->cRows = static_cast<ULONG>(count);
    for (std::size_t i = 0; i < count; ++i) {
        const Bag& bag = m_all[m_shown[m_cursor++]];
        std::vector<Value> values;
        for (const ULONG tag : m_columns) {
            values.push_back(bag.Read(tag));
        }
        if (m_columns.empty()) {
            values = bag.All();
        }
        (&rows->aRow[0])[i] = {0, static_cast<ULONG>(values.size()), AllocateValues(values)};
    }
    return rows;
}

HRESULT Table::SetColumns(LPSPropTagArray columns, ULONG flags) {
    if (const auto answer = Enter("IMAPITable::SetColumns", TagsText(columns), Hex8(flags))) {
        return *answer;
    }
    ApplyColumns(columns);
    return S_OK;
}

HRESULT Table::GetRowCount(ULONG flags, ULONG* count) {
    if (const auto answer = Enter("IMAPITable::GetRowCount", Hex8(flags))) {
        return *answer;
    }
    *count = static_cast<ULONG>(m_shown.size());
    return S_OK;
}

HRESULT Table::SeekRow(BOOKMARK origin, LONG rowCount, LONG* sought) {
    if (const auto answer = Enter("IMAPITable::SeekRow", origin, rowCount)) {
        return *answer;
    }
    std::size_t from = 0;
    if (!Place(origin, from)) {
        return MAPI_E_INVALID_BOOKMARK;
    }
    const auto start = static_cast<LONG>(from);
    const LONG place = std::clamp<LONG>(start + rowCount, 0, static_cast<LONG>(m_shown.size()));
    m_cursor = static_cast<std::size_t>(place);
    if (sought != nullptr) {
        *sought = place - start;
    }
    return S_OK;
}

HRESULT Table::QueryPosition(ULONG* row, ULONG* numerator, ULONG* denominator) {
    if (const auto answer = Enter("IMAPITable::QueryPosition")) {
        return *answer;
    }
    *row = static_cast<ULONG>(m_cursor);
    *numerator = *row;
    *denominator = static_cast<ULONG>(m_shown.size());
    return S_OK;
}

HRESULT Table::FindRow(LPSRestriction restriction, BOOKMARK origin, ULONG flags) {
    if (const auto answer = Enter("IMAPITable::FindRow", RestrictionText(restriction), origin, Hex8(flags))) {
        return *answer;
    }
    std::size_t from = 0;
    if (!Place(origin, from)) {
        return MAPI_E_INVALID_BOOKMARK;
    }
    const auto matches = [&](std::size_t place) { return Satisfies(m_all[place], restriction); };
    const auto start = m_shown.begin() + static_cast<std::ptrdiff_t>(from);
    if ((flags & DIR_BACKWARD) != 0) {
        const auto found = std::find_if(std::make_reverse_iterator(start), m_shown.rend(), matches);
        if (found == m_shown.rend()) {
            return MAPI_E_NOT_FOUND;
        }
        m_cursor = static_cast<std::size_t>(m_shown.rend() - found) - 1;
        return S_OK;
    }
    const auto found = std::find_if(start, m_shown.end(), matches);
    if (found == m_shown.end()) {
        return MAPI_E_NOT_FOUND;
    }
    m_cursor = static_cast<std::size_t>(found - m_shown.begin());
    return S_OK;
}

HRESULT Table::Restrict(LPSRestriction restriction, ULONG flags) {
    if (const auto answer = Enter("IMAPITable::Restrict", RestrictionText(restriction), Hex8(flags))) {
        return *answer;
    }
    ApplyRestriction(restriction);
    return S_OK;
}

HRESULT Table::SortTable(LPSSortOrderSet order, ULONG flags) {
    if (const auto answer = Enter("IMAPITable::SortTable", SortText(order), Hex8(flags))) {
        return *answer;
    }
    ApplyOrder(*order);
    return S_OK;
}

HRESULT Table::QueryRows(LONG rowCount, ULONG flags, LPSRowSet* rows) {
    if (const auto answer = Enter("IMAPITable::QueryRows", rowCount, Hex8(flags))) {
        return *answer;
    }
    if (rowCount < 0) {
        return MAPI_E_NO_SUPPORT;
    }
    *rows = TakeRows(static_cast<std::size_t>(rowCount));
    return S_OK;
}

HRESULT Table::QueryAllRows(LPSPropTagArray columns, LPSRestriction restriction, LPSSortOrderSet order, LONG maximum,
                            LPSRowSet* rows) {
    if (columns != nullptr) {
        ApplyColumns(columns);
    }
    if (restriction != nullptr) {
        ApplyRestriction(restriction);
    }
    if (order != nullptr) {
        ApplyOrder(*order);
    }
    m_cursor = 0;
    if (maximum > 0 && m_shown.size() > static_cast<std::size_t>(maximum)) {
        return MAPI_E_TABLE_TOO_BIG;
    }
    *rows = TakeRows(m_shown.size());
    return S_OK;
}

}  // namespace scripted_mapi
