#include "provider/StoreAndFolder/VxOutlookAddrFolder.h"

#include "mapi/MapiCodes.h"
#include "mapi/PropTags.h"
#include "provider/Common/Log.h"
#include "provider/Item/VxItem.h"
#include "provider/ItemFactory.h"
#include "provider/RowValues.h"
#include "provider/StoreAndFolder/EnsureMapiConnect.h"
#include "provider/StoreAndFolder/VxAddressBook.h"
#include "provider/VxDomain.h"

#include <utility>

namespace {

constexpr auto& kSourcePath = "StoreAndFolder\\VxOutlookAddrFolder.cpp"_w;

}  // namespace

CVxOutlookAddrFolder::CVxOutlookAddrFolder(const CStringW& entryId, CVxAddressBook* book, const FILETIME& lastModified)
    : CVxOutlookFolder(entryId, "Contacts"_w, "Contacts"_w, "Global Address Book/Contacts"_w, book, lastModified,
                       eVxFolderContact, false),
      m_book(book) {}

CVxOutlookAddrFolder::~CVxOutlookAddrFolder() {
    EnsureDisconnected();
}

bool CVxOutlookAddrFolder::OnConnect() {
    Clear();
    return true;
}

void CVxOutlookAddrFolder::MapiDisconnect() {
    m_contentTable.release();
}

bool CVxOutlookAddrFolder::IsMapiConnected() const {
    return m_contentTable.get() != nullptr;
}

IMAPITable* CVxOutlookAddrFolder::GetContentTable() {
    if (m_contentTable.get() != nullptr) {
        return m_contentTable;
    }
    LPMAPITABLE table = nullptr;
    if (FAILED(m_book->GetContentsTable(&table)) || table == nullptr) {
        return nullptr;
    }
    m_contentTable.reset(table);
    static constexpr auto kColumns = MakeTagArray(PR_ENTRYID);
    return SUCCEEDED(CMapiUtil::SetColumns(table, kColumns, 0)) ? table : nullptr;
}

bool CVxOutlookAddrFolder::GetItems(bool /*useNoCache*/) {
    EnsureConnected();
    EnsureChildDisconnected();
    Clear();
    if (IsAborting()) {
        return false;
    }
    IMAPITable* table = GetContentTable();
    CVxDomain* domain = GetDomain();
    if (table == nullptr || domain == nullptr) {
        return false;
    }
    VxLpRowsPtr<SRowSet> rows;
    const HRESULT hr = table->QueryRows(kPageRows, 0, &rows);
    if (hr != S_OK || rows.get() == nullptr) {
        VX_LOG('W') << Vx::LogMsg("failed QueryRows"_w);
        return false;
    }
    for (ULONG i = 0; i < rows->cRows; ++i) {
        if (IsAborting()) {
            Clear();
            return false;
        }
        const CStringW id = HexColumn(rows->aRow[i], 0);
        if (ColumnOfType(rows->aRow[i], 0, PT_BINARY) != nullptr) {
            VX_LOG('D') << Vx::LogMsgDebugOnly("EID: %s"_w, id);
        }
        if (auto contact = domain->GetItemFactory().MakeAddressBookContact(this, id, m_book)) {
            AddItemToBuffer(std::move(contact));
        }
    }
    return true;
}

bool CVxOutlookAddrFolder::CalculateNumberOfItems(const FILETIME* /*start*/, const FILETIME* /*end*/,
                                                  bool /*useNoCache*/, int* before, int* inRange, int* after) {
    folder_ensure_mapi_connect<CVxAddressBook> guard(*m_book);
    if (!guard.MapiConnect()) {
        VX_LOG('E') << Vx::LogMsg("MapiConnect failed for Global Address Book."_w);
        return false;
    }
    VxMapiPtr<IMAPITable> table;
    if (FAILED(m_book->GetContentsTable(&table)) || table.get() == nullptr) {
        return false;
    }
    ULONG count = 0;
    const HRESULT hr = CMapiUtil::GetRowCount(table, 0, &count);
    *inRange = SUCCEEDED(hr) ? static_cast<int>(count) : 0;
    *before = *after = 0;
    return true;
}
