#include "provider/WholeTable.h"

#include "mapi/MapiFlags.h"
#include "provider/ImportProcs.h"
#include "provider/MAPIUtils.h"

TableRead ReadWholeTable(IMAPITable* table, const SPropTagArray* columns, VxLpRowsPtr<SRowSet>& rows) {
    HRESULT hr = CMapiUtil::SetColumns(table, const_cast<LPSPropTagArray>(columns), 0);
    if (FAILED(hr)) {
        return {TableStep::Columns, hr};
    }
    hr = CMapiUtil::SeekRow(table, BOOKMARK_BEGINNING, 0, nullptr);
    if (FAILED(hr)) {
        return {TableStep::Seek, hr};
    }
    hr = HrQueryAllRows(table, nullptr, nullptr, nullptr, 0, &rows);
    if (FAILED(hr) || rows.get() == nullptr) {
        return {TableStep::Rows, hr};
    }
    return {TableStep::Done, S_OK};
}

const WCHAR* FailureFormat(TableStep step) noexcept {
    switch (step) {
        case TableStep::Columns: return "SetColumns failed (%x)"_w;
        case TableStep::Seek: return "SeekRow failed (%x)"_w;
        case TableStep::Rows: return "HrQueryAllRows failed (%x)"_w;
        case TableStep::Done: break;
    }
    return ""_w;
}

bool ReadWholeTable(IMAPITable* table, const SPropTagArray* columns, VxLpRowsPtr<SRowSet>& rows,
                    const Vx::LogEntry& failure) {
    const TableRead read = ReadWholeTable(table, columns, rows);
    if (read.step != TableStep::Done) {
        failure << Vx::LogMsg(FailureFormat(read.step), read.hr);
    }
    return read.step == TableStep::Done;
}
