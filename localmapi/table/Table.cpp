#include "localmapi/table/Table.h"

#include "localmapi/props/RowSets.h"
#include "localmapi/props/Values.h"
#include "localmapi/table/RowBuilder.h"
#include "localmapi/table/TableView.h"
#include "mapi/MapiCodes.h"
#include "mapi/MapiGuids.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <map>
#include <span>
#include <utility>
#include <vector>

namespace localmapi {

namespace {

// The columns in the width that a table was asked for in.
std::vector<ULONG> InWidth(std::vector<ULONG> columns, bool wide) {
    for (ULONG& column : columns) {
        column = CHANGE_PROP_TYPE(column, GivenType(PT_UNSPECIFIED, PROP_TYPE(column), wide));
    }
    return columns;
}

class Table final : public ComObject<IMAPITable> {
public:
    Table(std::unique_ptr<RowSource> rows, ComPtr<IUnknown> keeps, ULONG flags, SharedLock lock, ULONG tableType)
        : ComObject(std::move(lock)),
          m_keeps(std::move(keeps)),
          m_view(std::move(rows)),
          m_builder(m_view.Source(), (flags & MAPI_UNICODE) != 0),
          m_shown(InWidth(m_view.Source().Columns(), (flags & MAPI_UNICODE) != 0)),
          m_columns(m_shown),
          m_type(tableType) {}

    HRESULT STDMETHODCALLTYPE GetLastError(HRESULT result, ULONG flags, LPMAPIERROR* error) override {
        return GiveLastError(result, flags, error);
    }

    // ---- Notifications and state: nothing ever changes, and nothing takes time behind a call's back.

    HRESULT STDMETHODCALLTYPE Advise(ULONG, LPMAPIADVISESINK sink, ULONG_PTR* connection) override {
        if (sink == nullptr || connection == nullptr) {
            return MAPI_E_INVALID_PARAMETER;
        }
        return Guarded([&] {
            m_sinks.emplace(m_nextSink, ComPtr<IMAPIAdviseSink>(sink));
            *connection = m_nextSink++;
            return S_OK;
        });
    }
    HRESULT STDMETHODCALLTYPE Unadvise(ULONG_PTR connection) override {
        ComPtr<IMAPIAdviseSink> released;  // after the lock
        return Guarded([&] {
            const auto found = m_sinks.find(connection);
            if (found == m_sinks.end()) {
                return MAPI_E_NOT_FOUND;
            }
            released = std::move(found->second);
            m_sinks.erase(found);
            return S_OK;
        });
    }
    HRESULT STDMETHODCALLTYPE GetStatus(ULONG* status, ULONG* type) override {
        if (status == nullptr || type == nullptr) {
            return MAPI_E_INVALID_PARAMETER;
        }
        *status = TBLSTAT_COMPLETE;
        *type = m_type;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE WaitForCompletion(ULONG, ULONG, ULONG* status) override {
        if (status != nullptr) {
            *status = TBLSTAT_COMPLETE;
        }
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Abort() override { return S_OK; }

    // ---- Columns

    HRESULT STDMETHODCALLTYPE SetColumns(LPSPropTagArray columns, ULONG) override {
        if (columns == nullptr || columns->cValues == 0) {
            return MAPI_E_INVALID_PARAMETER;
        }
        return Guarded([&] {
            m_columns.assign(columns->aulPropTag, columns->aulPropTag + columns->cValues);
            return S_OK;
        });
    }
    HRESULT STDMETHODCALLTYPE QueryColumns(ULONG flags, LPSPropTagArray* columns) override;

    // ---- Rows, order, position

    HRESULT STDMETHODCALLTYPE GetRowCount(ULONG, ULONG* count) override {
        if (count == nullptr) {
            return MAPI_E_INVALID_PARAMETER;
        }
        return Guarded([&] {
            *count = static_cast<ULONG>(m_view.Count());
            return S_OK;
        });
    }
    HRESULT STDMETHODCALLTYPE SeekRow(BOOKMARK origin, LONG count, LONG* sought) override;
    HRESULT STDMETHODCALLTYPE SeekRowApprox(ULONG numerator, ULONG denominator) override;
    HRESULT STDMETHODCALLTYPE QueryPosition(ULONG* row, ULONG* numerator, ULONG* denominator) override;
    HRESULT STDMETHODCALLTYPE FindRow(LPSRestriction restriction, BOOKMARK origin, ULONG flags) override;
    HRESULT STDMETHODCALLTYPE Restrict(LPSRestriction restriction, ULONG) override {
        return Guarded([&] { return Rearranged(m_view.Restrict(restriction)); });
    }
    HRESULT STDMETHODCALLTYPE SortTable(LPSSortOrderSet sorts, ULONG) override {
        return Guarded([&] { return Rearranged(m_view.Sort(sorts)); });
    }
    HRESULT STDMETHODCALLTYPE QuerySortOrder(LPSSortOrderSet* sorts) override;
    HRESULT STDMETHODCALLTYPE QueryRows(LONG count, ULONG flags, LPSRowSet* rows) override;
    HRESULT STDMETHODCALLTYPE CreateBookmark(BOOKMARK* bookmark) override;
    HRESULT STDMETHODCALLTYPE FreeBookmark(BOOKMARK bookmark) override;

    // ---- Categories: none

    HRESULT STDMETHODCALLTYPE ExpandRow(ULONG, LPBYTE, ULONG, ULONG, LPSRowSet*, ULONG*) override {
        return MAPI_E_NO_SUPPORT;
    }
    HRESULT STDMETHODCALLTYPE CollapseRow(ULONG, LPBYTE, ULONG, ULONG*) override { return MAPI_E_NO_SUPPORT; }
    HRESULT STDMETHODCALLTYPE GetCollapseState(ULONG, ULONG, LPBYTE, ULONG*, LPBYTE*) override {
        return MAPI_E_NO_SUPPORT;
    }
    HRESULT STDMETHODCALLTYPE SetCollapseState(ULONG, ULONG, LPBYTE, BOOKMARK*) override { return MAPI_E_NO_SUPPORT; }

protected:
    bool Implements(REFIID interfaceId) const override { return interfaceId == IID_IMAPITable; }

private:
    // The numbers below it are the published ones.
    static constexpr BOOKMARK kFirstBookmark = BOOKMARK_END + 1;
    static constexpr std::size_t kMostBookmarks = 65'536;  // a client that frees none

    // Puts cursor and bookmarks back when sorting or restricting has succeeded.
    HRESULT Rearranged(HRESULT result) {
        if (SUCCEEDED(result)) {
            m_position = 0;
            m_bookmarks.clear();
        }
        return result;
    }

    // The position of a bookmark; false when there is no such bookmark.
    bool PositionOf(BOOKMARK bookmark, std::size_t& position);

    ComPtr<IUnknown> m_keeps;  // before the view, which borrows from it
    TableView m_view;
    RowBuilder m_builder;
    std::vector<ULONG> m_shown;    // the columns that the source offers
    std::vector<ULONG> m_columns;  // those chosen
    ULONG m_type;
    std::size_t m_position = 0;  // of the next row to be read; the count of rows at the end
    std::map<BOOKMARK, std::size_t> m_bookmarks;
    BOOKMARK m_nextBookmark = kFirstBookmark;
    std::map<ULONG_PTR, ComPtr<IMAPIAdviseSink>> m_sinks;
    ULONG m_nextSink = 1;
};

HRESULT Table::QueryColumns(ULONG flags, LPSPropTagArray* columns) {
    if (columns == nullptr) {
        return MAPI_E_INVALID_PARAMETER;
    }
    *columns = nullptr;
    return Guarded([&] {
        std::vector<ULONG> tags = m_columns;
        if ((flags & TBL_ALL_COLUMNS) != 0) {
            tags = m_shown;
            std::ranges::copy_if(m_columns, std::back_inserter(tags), [&tags](ULONG column) {
                return std::ranges::find(tags, PROP_ID(column), PROP_ID) == tags.end();
            });
        }
        auto array = MakeRoot<SPropTagArray>(CbNewSPropTagArray(tags.size()));
        array->cValues = static_cast<ULONG>(tags.size());
        std::ranges::copy(tags, array->aulPropTag);
        *columns = array.release();
        return S_OK;
    });
}

// ---- Position -------------------------------------------------------------------------------------------------------

bool Table::PositionOf(BOOKMARK bookmark, std::size_t& position) {
    switch (bookmark) {
        case BOOKMARK_BEGINNING: position = 0; return true;
        case BOOKMARK_CURRENT: position = m_position; return true;
        case BOOKMARK_END: position = m_view.Count(); return true;
        default: break;
    }
    const auto found = m_bookmarks.find(bookmark);
    if (found == m_bookmarks.end()) {
        return false;
    }
    position = found->second;
    return true;
}

HRESULT Table::SeekRow(BOOKMARK origin, LONG count, LONG* sought) {
    return Guarded([&] {
        std::size_t from = 0;
        if (!PositionOf(origin, from)) {
            return MAPI_E_INVALID_BOOKMARK;
        }
        if (origin == BOOKMARK_BEGINNING && count == 0) {
            m_position = 0;  // needs no count of rows, for which they would have to be arranged
        } else {
            const auto rows = static_cast<std::int64_t>(m_view.Count());
            m_position =
                static_cast<std::size_t>(std::clamp<std::int64_t>(static_cast<std::int64_t>(from) + count, 0, rows));
        }
        if (sought != nullptr) {
            *sought = static_cast<LONG>(static_cast<std::int64_t>(m_position) - static_cast<std::int64_t>(from));
        }
        return S_OK;
    });
}

HRESULT Table::SeekRowApprox(ULONG numerator, ULONG denominator) {
    if (denominator == 0) {
        return MAPI_E_INVALID_PARAMETER;
    }
    return Guarded([&] {
        const std::size_t rows = m_view.Count();
        m_position = numerator >= denominator ? rows : std::size_t{numerator} * rows / denominator;
        return S_OK;
    });
}

HRESULT Table::QueryPosition(ULONG* row, ULONG* numerator, ULONG* denominator) {
    if (row == nullptr || numerator == nullptr || denominator == nullptr) {
        return MAPI_E_INVALID_PARAMETER;
    }
    return Guarded([&] {
        *row = static_cast<ULONG>(m_position);
        *numerator = static_cast<ULONG>(m_position);
        *denominator = std::max<ULONG>(static_cast<ULONG>(m_view.Count()), 1);
        return S_OK;
    });
}

HRESULT Table::FindRow(LPSRestriction restriction, BOOKMARK origin, ULONG flags) {
    if (restriction == nullptr) {
        return MAPI_E_INVALID_PARAMETER;
    }
    return Guarded([&] {
        std::size_t from = 0;
        if (!PositionOf(origin, from)) {
            return MAPI_E_INVALID_BOOKMARK;
        }
        OwnedRestriction owned;
        if (const HRESULT result = owned.Assign(*restriction); FAILED(result)) {
            return result;
        }
        const auto found = m_view.Find(owned, from, (flags & DIR_BACKWARD) != 0);
        m_position = found.value_or(m_position);
        return found ? S_OK : MAPI_E_NOT_FOUND;
    });
}

HRESULT Table::CreateBookmark(BOOKMARK* bookmark) {
    if (bookmark == nullptr) {
        return MAPI_E_INVALID_PARAMETER;
    }
    return Guarded([&] {
        if (m_bookmarks.size() >= kMostBookmarks || m_nextBookmark == std::numeric_limits<BOOKMARK>::max()) {
            return MAPI_E_UNABLE_TO_COMPLETE;
        }
        m_bookmarks.emplace(m_nextBookmark, m_position);
        *bookmark = m_nextBookmark++;
        return S_OK;
    });
}

HRESULT Table::FreeBookmark(BOOKMARK bookmark) {
    return Guarded([&] {
        const bool isKnown = bookmark < kFirstBookmark || m_bookmarks.erase(bookmark) > 0;
        return isKnown ? S_OK : MAPI_E_INVALID_BOOKMARK;
    });
}

// ---- Rows -----------------------------------------------------------------------------------------------------------

HRESULT Table::QuerySortOrder(LPSSortOrderSet* sorts) {
    if (sorts == nullptr) {
        return MAPI_E_INVALID_PARAMETER;
    }
    *sorts = nullptr;
    return Guarded([&] {
        const std::span<const SSortOrder> order = m_view.SortOrder();
        auto set = MakeRoot<SSortOrderSet>(CbNewSSortOrderSet(order.size()));
        set->cSorts = static_cast<ULONG>(order.size());
        set->cCategories = 0;
        set->cExpanded = 0;
        std::ranges::copy(order, set->aSort);
        *sorts = set.release();
        return S_OK;
    });
}

HRESULT Table::QueryRows(LONG count, ULONG flags, LPSRowSet* rows) {
    if (rows == nullptr) {
        return MAPI_E_INVALID_PARAMETER;
    }
    *rows = nullptr;
    return Guarded([&] {
        const std::size_t all = m_view.Count();
        const auto wanted = static_cast<std::size_t>(count < 0 ? -std::int64_t{count} : std::int64_t{count});
        const std::size_t begin = count < 0 ? m_position - std::min(wanted, m_position) : m_position;
        const std::size_t end = count < 0 ? m_position : m_position + std::min(wanted, all - m_position);
        RowSetPointer set = MakeRowSet(end - begin);
        for (std::size_t position = begin; position < end; ++position) {
            set->aRow[set->cRows] = m_builder.Build(m_view.RowAt(position), m_columns);
            ++set->cRows;
        }
        if ((flags & TBL_NOADVANCE) == 0) {
            m_position = count < 0 ? begin : end;
        }
        *rows = set.release();
        return S_OK;
    });
}

}  // namespace

ComPtr<IMAPITable> MakeTable(std::unique_ptr<RowSource> rows, ComPtr<IUnknown> keeps, ULONG flags, SharedLock lock,
                             ULONG tableType) {
    return ComPtr<IMAPITable>::Adopt(
        MakeObject<Table>(std::move(rows), std::move(keeps), flags, std::move(lock), tableType).Detach());
}

}  // namespace localmapi
