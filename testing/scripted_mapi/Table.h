// IMAPITable over bags of properties, as they are when the table is made: columns, one-level sorting, restricting,
// finding and reading forward. Calls are noted as "IMAPITable::...".
#pragma once

#include "testing/StubInterfaces.h"
#include "testing/scripted_mapi/Object.h"

namespace scripted_mapi {

class Table final : public Object<vx_testing::StubTable> {
public:
    // Rows show all their own properties until columns are set.
    Table(const std::shared_ptr<Context>& context, std::vector<Bag> rows);

    HRESULT STDMETHODCALLTYPE SetColumns(LPSPropTagArray columns, ULONG flags) override;
    HRESULT STDMETHODCALLTYPE GetRowCount(ULONG flags, ULONG* count) override;
    HRESULT STDMETHODCALLTYPE SeekRow(BOOKMARK origin, LONG rowCount, LONG* sought) override;
    HRESULT STDMETHODCALLTYPE QueryPosition(ULONG* row, ULONG* numerator, ULONG* denominator) override;
    HRESULT STDMETHODCALLTYPE FindRow(LPSRestriction restriction, BOOKMARK origin, ULONG flags) override;
    HRESULT STDMETHODCALLTYPE Restrict(LPSRestriction restriction, ULONG flags) override;
    HRESULT STDMETHODCALLTYPE SortTable(LPSSortOrderSet order, ULONG flags) override;
    HRESULT STDMETHODCALLTYPE QueryRows(LONG rowCount, ULONG flags, LPSRowSet* rows) override;

    // What HrQueryAllRows does with a table, without a note of its steps.
    HRESULT QueryAllRows(LPSPropTagArray columns, LPSRestriction restriction, LPSSortOrderSet order, LONG maximum,
                         LPSRowSet* rows);

private:
    bool IsInterface(REFIID iid) const override { return iid == IID_IMAPITable; }

    void ApplyColumns(const SPropTagArray* columns);
    void ApplyRestriction(const SRestriction* restriction);
    void ApplyOrder(const SSortOrderSet& order);
    bool Place(BOOKMARK bookmark, std::size_t& place) const;
    LPSRowSet TakeRows(std::size_t count);

    std::vector<Bag> m_all;
    std::vector<std::size_t> m_order;  // places in m_all, sorted
    std::vector<std::size_t> m_shown;  // those of m_order that the restriction lets through
    std::vector<ULONG> m_columns;      // empty: all
    std::size_t m_cursor = 0;          // place in m_shown
};

}  // namespace scripted_mapi
