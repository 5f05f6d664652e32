#include "provider/StoreAndFolder/HierarchyReader.h"

#include "mapi/MapiCodes.h"
#include "mapi/MapiFlags.h"
#include "mapi/PropTags.h"
#include "provider/Common/Log.h"
#include "provider/MAPIUtils.h"

namespace {

constexpr auto& kSourcePath = "StoreAndFolder\\VxOutlookStore.cpp"_w;

constexpr LONG kPageRows = 25;

}  // namespace

LPSPropTagArray HierarchyColumns() noexcept {
    static constexpr auto kColumns =
        MakeTagArray(PR_DISPLAY_NAME_W, PR_ENTRYID, PR_LONGTERM_ENTRYID_FROM_TABLE, PR_URL_NAME_W, PR_SUBFOLDERS,
                     PR_RECORD_KEY, PR_LAST_MODIFICATION_TIME, PR_CONTAINER_CLASS_W, PR_PARENT_ENTRYID);
    return kColumns;
}

HRESULT HierarchyReader::Open(IMAPIFolder* folder) {
    HRESULT hr = folder->GetHierarchyTable(MAPI_UNICODE, &m_table);
    if (FAILED(hr) || m_table.get() == nullptr) {
        VX_LOG('E') << Vx::LogMsg("TraverseFolder failed case GetHierarchyTable (%x)"_w, hr);
        return hr == MAPI_E_NO_SUPPORT ? S_OK : hr;
    }
    m_columnsResult = CMapiUtil::SetColumns(m_table, HierarchyColumns(), 0);
    if (FAILED(m_columnsResult)) {
        VX_LOG('E') << Vx::LogMsg("TraverseFolder failed case SetColumns (%x)"_w, m_columnsResult);
        return m_columnsResult;
    }
    hr = ReadPage();
    if (FAILED(hr)) {
        VX_LOG('D') << Vx::LogMsg("QueryRows hr=%d"_w, hr);
    }
    return hr;
}

HRESULT HierarchyReader::ReadPage() {
    m_page.release();
    m_nextRow = 0;
    LPSRowSet rows = nullptr;
    const HRESULT hr = CMapiUtil::QueryRows(m_table, kPageRows, 0, &rows);
    if (SUCCEEDED(hr) && rows != nullptr) {
        VxLpRowsPtr<SRowSet> page(rows);
        if (rows->cRows > 0) {
            m_page = page;
        }
    }
    return hr;
}

HierarchyReader::Next HierarchyReader::NextRow() {
    while (m_page.get() != nullptr) {
        if (m_nextRow < m_page->cRows) {
            return {&m_page->aRow[m_nextRow++], false, S_OK};
        }
        if (FAILED(ReadPage())) {
            return {nullptr, true, m_columnsResult};
        }
    }
    return {};
}
