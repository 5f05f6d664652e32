#include "provider/StoreAndFolder/VxAddressBook.h"

#include "mapi/MapiCodes.h"
#include "mapi/MapiFlags.h"
#include "mapi/MapiGuids.h"
#include "mapi/PropTags.h"
#include "provider/Common/ScopedEntryExitLogger.h"
#include "provider/ImportProcs.h"
#include "provider/RowValues.h"
#include "provider/StoreAndFolder/EnsureMapiConnect.h"
#include "provider/StoreAndFolder/VxOutlookAddrFolder.h"
#include "provider/StoreAndFolder/VxOutlookProfile.h"
#include "provider/WholeTable.h"

#include <span>

namespace {

constexpr auto& kSourcePath = "StoreAndFolder\\VxAddressBook.cpp"_w;

// The columns of the address book's hierarchy.
constexpr ULONG kDisplayTypeColumn = 0;
constexpr ULONG kEntryIdColumn = 1;

const SRow* FindGlobalList(const SRowSet& containers) noexcept {
    for (ULONG i = 0; i < containers.cRows; ++i) {
        const SPropValue* type = ColumnOfType(containers.aRow[i], kDisplayTypeColumn, PT_LONG);
        if (type != nullptr && type->Value.ul == DT_GLOBAL) {
            return &containers.aRow[i];
        }
    }
    return nullptr;
}

}  // namespace

CVxAddressBook::CVxAddressBook(CVxOutlookProfile* profile) : CVxOutlookStore(profile) {
    SetStoreName("Global Address Book"_w);
    SetStoreEntryId("GAB"_w);
}

CVxAddressBook::~CVxAddressBook() {
    EnsureDisconnected();
    CVxAddressBook::Clear();
}

bool CVxAddressBook::MapiConnect() {
    VX_SCOPE_TRACE(trace);
    if (IsMapiConnected()) {
        return true;
    }
    VxMapiPtr<IAddrBook> book;
    const HRESULT hr = GetProfileRoot()->OpenAddressBook(&book);
    if (FAILED(hr) || book.get() == nullptr) {
        VX_LOG('E') << Vx::LogMsg("OpenAddressBook failed (%x)"_w, hr);
        return false;
    }
    return OpenGlobalAddressList(book);
}

bool CVxAddressBook::OpenGlobalAddressList(IAddrBook* book) {
    VxLpRowsPtr<SRowSet> containers;
    if (!ReadContainers(book, containers)) {
        return false;
    }
    const SRow* global = FindGlobalList(*containers);
    if (global == nullptr) {
        VX_LOG('E') << Vx::LogMsg("Unable to find global address book"_w);
        return false;
    }
    const std::span<const BYTE> id = BinaryColumn(*global, kEntryIdColumn);
    m_galEntryId = HexColumn(*global, kEntryIdColumn);
    ULONG type = 0;
    LPABCONT list = nullptr;
    const HRESULT hr =
        book->OpenEntry(static_cast<ULONG>(id.size()), reinterpret_cast<ENTRYID*>(const_cast<BYTE*>(id.data())),
                        &IID_IABContainer, 0, &type, reinterpret_cast<IUnknown**>(&list));
    if (FAILED(hr) || list == nullptr) {
        VX_LOG('E') << Vx::LogMsg("OpenEntry(global addr book) failed (%x)"_w, hr);
        return false;
    }
    m_galContainer.reset(list);
    return true;
}

bool CVxAddressBook::ReadContainers(IAddrBook* book, VxLpRowsPtr<SRowSet>& rows) {
    ULONG type = 0;
    VxMapiPtr<IABContainer> root;
    HRESULT hr = book->OpenEntry(0, nullptr, &IID_IABContainer, 0, &type, reinterpret_cast<IUnknown**>(&root));
    if (FAILED(hr) || root.get() == nullptr) {
        VX_LOG('E') << Vx::LogMsg("OpenEntry(root container) failed (%x)"_w, hr);
        return false;
    }
    VxMapiPtr<IMAPITable> table;
    hr = root->GetHierarchyTable(MAPI_UNICODE, &table);
    if (FAILED(hr) || table.get() == nullptr) {
        VX_LOG('E') << Vx::LogMsg("GetHierarchyTable failed (%x)"_w, hr);
        return false;
    }
    static constexpr auto kColumns = MakeTagArray(PR_DISPLAY_TYPE, PR_ENTRYID, PR_DISPLAY_NAME_W);
    return ReadWholeTable(table, kColumns, rows, VX_LOG('E'));
}

void CVxAddressBook::MapiDisconnect() {
    m_galContainer.release();
}

bool CVxAddressBook::IsMapiConnected() const {
    return m_galContainer.get() != nullptr;
}

bool CVxAddressBook::AddGalFolder() {
    folder_ensure_mapi_connect<CVxAddressBook> guard(*this);
    if (!guard.MapiConnect()) {
        VX_LOG('E') << Vx::LogMsg("CVxMapi::OpenMsgStore for %s failed."_w, GetDisplayName());
        return false;
    }
    AddFolder(std::make_unique<CVxOutlookAddrFolder>(m_galEntryId, this, FILETIME{0, 0}), m_folders, m_folderMap);
    return true;
}

bool CVxAddressBook::AddSubFolders() {
    return AddGalFolder();
}

bool CVxAddressBook::GetSubFolders(const CStringW& /*folderId*/, const CStringW& /*parentPath*/,
                                   std::vector<CVxMAPIFolder>& folders) {
    folders.clear();
    if (!AddGalFolder()) {
        return false;
    }
    for (const auto& folder : m_folders) {
        folders.push_back(SerializeFolder(*folder));
    }
    return true;
}

HRESULT CVxAddressBook::GetContentsTable(IMAPITable** table) {
    MapiConnect();
    return IsMapiConnected() ? m_galContainer->GetContentsTable(MAPI_UNICODE, table) : MAPI_E_NOT_FOUND;
}

HRESULT CVxAddressBook::OpenEntry(ULONG size, ENTRYID* entryId, const IID* interfaceId, ULONG flags, ULONG* objectType,
                                  IUnknown** object) {
    MapiConnect();
    const HRESULT hr = IsMapiConnected()
                           ? m_galContainer->OpenEntry(size, entryId, interfaceId, flags, objectType, object)
                           : MAPI_E_NOT_FOUND;
    if (FAILED(hr)) {
        VX_LOG('E') << Vx::LogMsg("Unable to connect to GAB Contacts folder. Mapi Error: (%x)"_w, hr);
        if (GetMapiStore() != nullptr) {
            CMapiUtil::PrintErrorInformation(hr, GetMapiStore());
        }
    }
    return hr;
}
