#include "provider/StoreAndFolder/VxOutlookProfile.h"

#include "mapi/MapiCodes.h"
#include "mapi/MapiFlags.h"
#include "mapi/MapiGuids.h"
#include "mapi/PropTags.h"
#include "platform/CodePage.h"
#include "platform/Process.h"
#include "provider/Common/ScopedCriticalSection.h"
#include "provider/Common/ScopedEntryExitLogger.h"
#include "provider/Common/StringHelpers.h"
#include "provider/ImportProcs.h"
#include "provider/KeepDirectory.h"
#include "provider/RowValues.h"
#include "provider/ServiceAdministration.h"
#include "provider/StoreAndFolder/VxAddressBook.h"
#include "provider/StoreAndFolder/VxOutlookStore.h"
#include "provider/VxDomain.h"
#include "provider/VxMapiEngine.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace {

constexpr auto& kSourcePath = "StoreAndFolder\\VxOutlookProfile.cpp"_w;

// The stores table's columns.
constexpr auto kStoreColumns = MakeTagArray(PR_DEFAULT_STORE, PR_DISPLAY_NAME_W, PR_PROVIDER_DISPLAY_W, PR_ENTRYID,
                                            PR_MDB_PROVIDER, PR_RECORD_KEY);
enum StoreColumn : ULONG {
    kDefaultColumn = 0,
    kNameColumn = 1,
    kEntryIdColumn = 3,
    kProviderColumn = 4,
    kRecordKeyColumn = 5,
};

// A profile's stores beyond these are not seen.
constexpr LONG kMostStores = 80;

// Bytes that a store's or an address book entry's id may have.
constexpr ULONG kMostIdBytes = 4096;

// How a store of one kind is set up.
struct StoreKind {
    MAPIUID provider;  // PR_MDB_PROVIDER
    EVxStoreType type;
    ULONG cachedBits;   // of PR_PROFILE_CONFIG_FLAGS; any of them marks the store as cached
    bool alwaysCached;  // it is a file on this machine
    bool hasDetails;    // its provider's section of the profile tells server and names
    const WCHAR* foundText;
};

// In the order in which a provider is looked for.
constexpr auto kStoreKinds = std::to_array<StoreKind>({
    {kExchangePublicStore, eVxStorePublic, CONFIG_OST_CACHE_PUBLIC, false, false, "found ProfilePublicStoreIdx %d"_w},
    {kExchangePrivateStore, eVxStorePrivate, CONFIG_OST_CACHE_PRIVATE, false, true,
     "found ProfilePrivateStoreIdx %d"_w},
    {kExchangeDelegateStore, eVxStoreDelegate, 0, false, true, "found delgate store at index %d"_w},
    {kPersonalFoldersStore, eVxStorePst, 0, true, false, "found PST store at index %d"_w},
    {{{0x97, 0x5C, 0x4F, 0xC3, 0x05, 0xEB, 0x4B, 0xBB, 0xB1, 0x99, 0x2A, 0x75, 0x70, 0xEC, 0x7C, 0xF9}},
     eVxStoreHotmailOst,
     0,
     true,
     false,
     "found Hotmail OST store at index %d"_w},
    {{{0x77, 0xD2, 0xDD, 0x08, 0x7F, 0x09, 0x43, 0xCA, 0x91, 0x4E, 0x54, 0xBD, 0x2C, 0x8B, 0xDA, 0x66}},
     eVxStoreOracle,
     0,
     true,
     false,
     "found Oracle message store at index %d"_w},
    {{{0x70, 0x8A, 0x22, 0x44, 0x7A, 0x57, 0x47, 0xAC, 0xA2, 0xFB, 0x75, 0xA7, 0x82, 0xCB, 0x31, 0x24}},
     eVxStoreOracle,
     0,
     true,
     false,
     "found Oracle message store at index %d"_w},
    {{{0xE9, 0x2F, 0xEB, 0x75, 0x96, 0x50, 0x44, 0x86, 0x83, 0xB8, 0x7D, 0xE5, 0x22, 0xAA, 0x49, 0x48}},
     eVxStoreImap,
     0,
     false,
     false,
     "found Outlook IMAP message store at index %d"_w},
});

// 8-bit text of a profile in wide characters.
CStringW FromAnsi(const char* text) {
    WCHAR* converted = nullptr;
    if (FAILED(CMapiUtil::AnsiToUnicode(text, &converted, -1, CP_ACP)) || converted == nullptr) {
        return {};
    }
    const VxArrayPtr<WCHAR> owner(converted);
    return CStringW(converted);
}

// Opens the section that all services of a profile share.
HRESULT OpenGlobalSection(IMAPISession* session, VxMapiPtr<IProfSect>& section) {
    MAPIUID global = kGlobalProfileSection;
    const HRESULT hr = session->OpenProfileSection(&global, nullptr, 0, &section);
    return SUCCEEDED(hr) && section.get() == nullptr ? MAPI_E_NOT_FOUND : hr;
}

// One property of exactly that tag; null when it cannot be had, with the result that tells why.
HRESULT ReadProperty(IMAPIProp* object, ULONG tag, VxMapiFrBufPtr<SPropValue>& value) {
    const HRESULT hr = HrGetOneProp(object, tag, &value);
    if (SUCCEEDED(hr) && (value.get() == nullptr || value->ulPropTag != tag)) {
        return MAPI_E_NOT_FOUND;
    }
    return hr;
}

// All rows of a table of the profile's, `most` of them at the most (0: any number). These tables are small and in memory:
// MAPI is not waited for.
bool ReadRowsWithoutWaiting(IMAPITable* table, const SPropTagArray* columns, LONG most, VxLpRowsPtr<SRowSet>& rows,
                            const Vx::LogEntry& failure) {
    HRESULT hr = table->SetColumns(const_cast<LPSPropTagArray>(columns), 0);
    if (FAILED(hr)) {
        failure << Vx::LogMsg("SetColumns failed. hr = 0x%x"_w, hr);
        return false;
    }
    hr = table->SeekRow(BOOKMARK_BEGINNING, 0, nullptr);
    if (FAILED(hr)) {
        failure << Vx::LogMsg("SeekRow failed. hr = 0x%x"_w, hr);
        return false;
    }
    hr = HrQueryAllRows(table, nullptr, nullptr, nullptr, most, &rows);
    if (FAILED(hr) || rows.get() == nullptr) {
        failure << Vx::LogMsg("HrQueryAllRows failed (%x)"_w, hr);
        return false;
    }
    return true;
}

// Finds the section of the provider behind the Exchange store of that name: step by step from the session to the first
// Exchange service, to its providers, to the one with the name.
class ProviderSection {
public:
    ProviderSection(IMAPISession* session, const CStringW& storeName) : m_session(session), m_storeName(storeName) {}

    // False when a step fails, which is logged, or there is no such provider.
    bool Open(VxMapiPtr<IProfSect>& section);

private:
    bool OpenProviders();
    bool ReadProviderRows();
    MAPIUID* FindProvider() const;

    IMAPISession* m_session;  // not owned
    const CStringW& m_storeName;
    VxMapiPtr<IMsgServiceAdmin> m_services;
    VxMapiPtr<IProviderAdmin> m_providers;
    VxLpRowsPtr<SRowSet> m_rows;
};

bool ProviderSection::Open(VxMapiPtr<IProfSect>& section) {
    if (!OpenProviders() || !ReadProviderRows()) {
        return false;
    }
    MAPIUID* provider = FindProvider();
    if (provider == nullptr) {
        return false;
    }
    const HRESULT hr = m_providers->OpenProfileSection(provider, nullptr, MAPI_FORCE_ACCESS | MAPI_MODIFY, &section);
    if (FAILED(hr) || section.get() == nullptr) {
        VX_LOG('E') << Vx::LogMsg("HrQueryAllRows failed (%x)"_w, hr);  // logs are searched for this text
        return false;
    }
    return true;
}

bool ProviderSection::OpenProviders() {
    const HRESULT hr = m_session->AdminServices(0, &m_services);
    if (FAILED(hr) || m_services.get() == nullptr) {
        VX_LOG('E') << Vx::LogMsg("IMAPISession/AdminServices failed (%x)"_w, hr);
        return false;
    }
    static constexpr auto kColumns = MakeTagArray(PR_SERVICE_NAME_W, PR_SERVICE_UID);
    constexpr ULONG kUidColumn = 1;
    VxLpRowsPtr<SRowSet> services;
    return ReadServices(m_services, kColumns, ServiceFilter::Exchange, services)
           && OpenProviderAdmin(m_services, services->aRow[0], kUidColumn, m_providers);
}

bool ProviderSection::ReadProviderRows() {
    VxMapiPtr<IMAPITable> table;
    HRESULT hr = m_providers->GetProviderTable(0, &table);
    if (FAILED(hr) || table.get() == nullptr) {
        VX_LOG('E') << Vx::LogMsg("GetProviderTable failed (%x)"_w, hr);
        return false;
    }
    static constexpr auto kColumns = MakeTagArray(PR_RESOURCE_TYPE, PR_DISPLAY_NAME_A, PR_PROVIDER_UID);
    return ReadRowsWithoutWaiting(table, kColumns, 0, m_rows, VX_LOG('E'));
}

MAPIUID* ProviderSection::FindProvider() const {
    for (ULONG i = 0; i < m_rows->cRows; ++i) {
        const SRow& row = m_rows->aRow[i];
        const SPropValue* type = ColumnOfType(row, 0, PT_LONG);
        const SPropValue* name = ColumnOfType(row, 1, PT_STRING8);
        if (type != nullptr && type->Value.ul == MAPI_STORE_PROVIDER && name != nullptr && name->Value.lpszA != nullptr
            && EqualIgnoringAsciiCase(FromAnsi(name->Value.lpszA), m_storeName)) {
            return UidColumn(row, 2);
        }
    }
    return nullptr;
}

}  // namespace

CVxOutlookProfile::CVxOutlookProfile(CVxDomain* domain, const CStringW& name)
    : CVxOutlookProfile(domain, name, name == CVxMapiEngine::GetDefaultProfileName()) {}

CVxOutlookProfile::CVxOutlookProfile(CVxDomain* domain, const CStringW& name, bool isDefault)
    : CVxConnectable(domain),
      m_isDefault(isDefault),
      m_isExchange(CVxMapiEngine::CheckForExchangeProfile(name)),
      m_name(name) {}

CVxOutlookProfile::~CVxOutlookProfile() {
    EnsureDisconnected();
}

bool CVxOutlookProfile::OnConnect() {
    if (IsConnected()) {
        VX_LOG('E') << Vx::LogMsg("Profile already connected."_w);
        return false;
    }
    if (!MAPILogon()) {
        VX_LOG('E') << Vx::LogMsg("MAPI Logon failed"_w);
        return false;
    }
    if (!InitProfileStores()) {
        VX_LOG('E') << Vx::LogMsg("Failed to initialize stores."_w);
        return false;
    }
    return true;
}

bool CVxOutlookProfile::MAPILogon() {
    VX_SCOPE_TRACE_EX(trace);
    VX_LOG('D') << Vx::LogMsg("MAPILogon"_w);
    if (m_session.get() != nullptr) {
        trace.end("We already have a session for this profile."_w);
        return false;
    }
    constexpr ULONG kFlags = MAPI_UNICODE | MAPI_NO_MAIL | MAPI_EXTENDED | MAPI_NEW_SESSION | MAPI_LOGON_UI;
    WCHAR noPassword[] = {0};
    LPMAPISESSION session = nullptr;
    const HRESULT hr = KeepDirectory([&] { return MAPILogonEx(0, m_name.data(), noPassword, kFlags, &session); });
    trace.ok();
    if (FAILED(hr) || session == nullptr) {
        VX_LOG('D') << Vx::LogMsg("MAPILogonEx failed with error code: %d "_w, hr);
        return false;
    }
    m_session.reset(session);
    return true;
}

bool CVxOutlookProfile::InitProfileStores() {
    VX_SCOPE_TRACE_EX(trace);
    const std::optional<LONG> configFlags = ReadConfigFlags();
    if (m_lptblProfileStores.get() != nullptr) {
        trace.end("m_lptblProfileStores already init"_w);
        return false;
    }
    trace.ok();
    LPMAPITABLE table = nullptr;
    const HRESULT hr = m_session->GetMsgStoresTable(0, &table);
    if (FAILED(hr) || table == nullptr) {
        VX_LOG('E') << Vx::LogMsg("Session->GetMsgStoresTable failed. hr = 0x%x"_w, hr);
        return false;
    }
    m_lptblProfileStores.reset(table);
    if (!ReadStoreRows()) {
        m_storeRows.release();
        m_lptblProfileStores.release();
        return false;
    }
    for (ULONG row = 0; row < m_storeRows->cRows; ++row) {
        EVxStoreType type{};
        if (GetProfileStoreType(row, type)) {
            AddStore(row, type, configFlags);
        }
    }
    if (m_isExchange) {
        m_stores.push_back(std::make_unique<CVxAddressBook>(this));
    }
    return true;
}

std::optional<LONG> CVxOutlookProfile::ReadConfigFlags() {
    VxMapiPtr<IProfSect> section;
    if (FAILED(OpenGlobalSection(m_session, section))) {
        return std::nullopt;
    }
    VxMapiFrBufPtr<SPropValue> flags;
    const HRESULT hr = ReadProperty(section, PR_PROFILE_CONFIG_FLAGS, flags);
    if (FAILED(hr)) {
        VX_LOG('W') << Vx::LogMsg("HrGetOneProp failed (PR_PROFILE_CONFIG_FLAGS). hr = 0x%x"_w, hr);
        return std::nullopt;
    }
    return flags->Value.l;
}

bool CVxOutlookProfile::ReadStoreRows() {
    return ReadRowsWithoutWaiting(m_lptblProfileStores, kStoreColumns, kMostStores, m_storeRows, VX_LOG('E'));
}

void CVxOutlookProfile::AddStore(ULONG row, EVxStoreType type, std::optional<LONG> configFlags) {
    const auto kind = std::find_if(kStoreKinds.begin(), kStoreKinds.end(),
                                   [type](const StoreKind& candidate) { return candidate.type == type; });
    auto store = std::make_unique<CVxOutlookStore>(this);
    store->SetStoreName(GetProfileMsgStoreName(row));
    store->SetStoreEntryId(GetProfileMsgStoreID(row));
    store->SetStoreRecordKey(GetProfileStoreRecordKey(row));
    store->SetStoreIsDefault(GetProfileStoreIsDefault(row));
    store->SetStoreType(type);
    const ULONG flags = static_cast<ULONG>(configFlags.value_or(0));
    store->SetIsCached(kind->alwaysCached || (flags & kind->cachedBits) != 0);
    if (kind->hasDetails) {
        SetStoreDetails(*store);
    }
    VX_LOG('D') << Vx::LogMsg(kind->foundText, row);
    m_stores.push_back(std::move(store));
}

void CVxOutlookProfile::SetStoreDetails(CVxOutlookStore& store) {
    VxMapiPtr<IProfSect> section;
    if (!ProviderSection(m_session, store.GetDisplayName()).Open(section)) {
        return;
    }
    struct DetailRow {
        ULONG tag;
        void (CVxOutlookStore::*set)(const CStringW& text);
        const WCHAR* failureText;
    };
    static constexpr DetailRow kDetails[] = {
        {PR_PROFILE_MAILBOX_A, &CVxOutlookStore::SetStoreDN, "HrGetOneProp failed on PR_PROFILE_MAILBOX_A (%x)"_w},
        {PR_PROFILE_SERVER_DN_A, &CVxOutlookStore::SetServerDN, "HrGetOneProp failed on PR_PROFILE_SERVER_DN_A (%x)"_w},
        {PR_PROFILE_SERVER_A, &CVxOutlookStore::SetServer, "HrGetOneProp failed on PR_PROFILE_SERVER_A (%x)"_w},
    };
    for (const DetailRow& detail : kDetails) {
        VxMapiFrBufPtr<SPropValue> value;
        const HRESULT hr = ReadProperty(section, detail.tag, value);
        if (FAILED(hr)) {
            VX_LOG('E') << Vx::LogMsg(detail.failureText, hr);
        } else {
            (store.*detail.set)(FromAnsi(value->Value.lpszA));
        }
    }
}

CStringW CVxOutlookProfile::GetProfileMsgStoreID(ULONG row) const {
    return HexColumn(m_storeRows->aRow[row], kEntryIdColumn);
}

CStringW CVxOutlookProfile::GetProfileStoreRecordKey(ULONG row) const {
    return HexColumn(m_storeRows->aRow[row], kRecordKeyColumn);
}

CStringW CVxOutlookProfile::GetProfileMsgStoreName(ULONG row) const {
    return TextColumn(m_storeRows->aRow[row], kNameColumn);
}

bool CVxOutlookProfile::GetProfileStoreIsDefault(ULONG row) const {
    return FlagColumn(m_storeRows->aRow[row], kDefaultColumn);
}

bool CVxOutlookProfile::GetProfileStoreType(ULONG row, EVxStoreType& type) const {
    const MAPIUID* provider = UidColumn(m_storeRows->aRow[row], kProviderColumn);
    if (provider == nullptr) {
        return false;
    }
    for (const StoreKind& kind : kStoreKinds) {
        if (kind.provider == *provider) {
            type = kind.type;
            return true;
        }
    }
    VX_LOG('I') << Vx::LogMsg("Found unknown store type with PR_MDB_PROVIDER: %s"_w,
                              CMapiUtil::Bin2Hex(sizeof(*provider), provider->ab));
    return false;
}

void CVxOutlookProfile::OnDisconnect() {
    VX_LOG('D') << Vx::LogMsg("OnDisconnect profile %s"_w, m_name);
    m_stores.clear();
    m_storeRows.release();
    m_lptblProfileStores.release();
    // The session is given up whatever comes of the logoff, so that a destructor does not meet a fault once more.
    const VxMapiPtr<IMAPISession> session(m_session.releasePointer());
    if (session.get() != nullptr) {
        KeepDirectory([&] {
            VX_LOG('D') << Vx::LogMsg("calling MAPILogoff"_w);
            return session->Logoff(0, 0, 0);
        });
    }
}

void CVxOutlookProfile::GetStores(std::vector<CVxMAPIStore>& stores) {
    stores.clear();
    EnsureConnected();
    for (const auto& store : m_stores) {
        stores.push_back({store->GetDisplayName(), store->GetStoreDN(), store->GetServer(), store->GetServerDN(),
                          store->GetStoreEntryId(), store->GetStoreRecordKey(), store->GetStoreType(),
                          store->GetIsDefault(), store->GetIsCached()});
    }
}

std::uint64_t CVxOutlookProfile::GetStoresCount() {
    EnsureConnected();
    return m_stores.size();
}

CVxOutlookStore* CVxOutlookProfile::GetStore(std::size_t index) {
    EnsureConnected();
    return index < m_stores.size() ? m_stores[index].get() : nullptr;
}

CVxOutlookStore* CVxOutlookProfile::FindStore(const CStringW& entryIdHex) {
    for (const auto& store : m_stores) {
        if (EqualIgnoringAsciiCase(store->GetStoreEntryId(), entryIdHex)) {
            return store.get();
        }
    }
    return nullptr;
}

CVxOutlookStore* CVxOutlookProfile::GetStorebyId(const CStringW& entryIdHex) {
    const ScopedCriticalSection held(&m_lock);
    EnsureConnected();
    if (CVxOutlookStore* known = FindStore(entryIdHex)) {
        return known;
    }
    EnsureDisconnected();
    EnsureConnected();
    CVxOutlookStore* store = FindStore(entryIdHex);
    if (store == nullptr) {
        VX_LOG('W') << Vx::LogMsg("storeId %s not found in profile %s"_w, entryIdHex, m_name);
    }
    return store;
}

bool CVxOutlookProfile::GetSubFolders(const CStringW& storeId, const CStringW& folderId, const CStringW& parentPath,
                                      std::vector<CVxMAPIFolder>& folders) {
    CVxOutlookStore* store = GetStorebyId(storeId);
    if (store == nullptr) {
        VX_LOG('E') << Vx::LogMsg("CVxOutlookProfile::GetStorebyId for %s failed."_w, storeId);
        return false;
    }
    return store->GetSubFolders(folderId, parentPath, folders);
}

bool CVxOutlookProfile::GetAllFolders(std::vector<CVxMAPIFolder>& folders) {
    folders.clear();
    EnsureConnected();
    bool complete = true;
    for (const auto& store : m_stores) {
        std::vector<CVxMAPIFolder> ofStore;
        complete = store->GetFolderList(ofStore) && complete;
        folders.insert(folders.end(), std::make_move_iterator(ofStore.begin()), std::make_move_iterator(ofStore.end()));
    }
    return complete;
}

void CVxOutlookProfile::BuildFolderList() {
    for (const auto& store : m_stores) {
        store->EnsureConnected();
    }
}

void CVxOutlookProfile::ClearFolderCache() {
    for (const auto& store : m_stores) {
        store->ClearFolderCache();
    }
}

CStringW CVxOutlookProfile::GetExchangeServer() {
    if (!m_exchangeServer.empty() || !m_isExchange) {
        return m_exchangeServer;
    }
    EnsureConnected();
    VxMapiPtr<IProfSect> section;
    if (m_session.get() == nullptr || FAILED(OpenGlobalSection(m_session, section))) {
        return m_exchangeServer;
    }
    VxMapiFrBufPtr<SPropValue> server;
    const HRESULT hr = ReadProperty(section, PR_PROFILE_UNRESOLVED_SERVER, server);
    if (FAILED(hr)) {
        VX_LOG('W') << Vx::LogMsg("HrGetOneProp failed (PR_PROFILE_UNRESOLVED_SERVER). hr = 0x%x"_w, hr);
    } else {
        m_exchangeServer = FromAnsi(server->Value.lpszA);
    }
    return m_exchangeServer;
}

HRESULT CVxOutlookProfile::OpenMsgStore(const CStringW& entryIdHex, IMsgStore** store) {
    VX_SCOPE_TRACE(trace);
    BYTE id[kMostIdBytes];
    ULONG size = 0;
    if (!CMapiUtil::Hex2Bin(entryIdHex, id, &size, kMostIdBytes)) {
        VX_LOG('E') << Vx::LogMsg("MapiUtil::Hex2Bin failed"_w);
        return E_FAIL;
    }
    VX_LOG('D') << Vx::LogMsg("OpenMsgStore id %s"_w, entryIdHex);
    HRESULT hr = MAPI_E_NOT_INITIALIZED;
    if (m_session.get() != nullptr) {
        try {
            hr = KeepDirectory([&] {
                return m_session->OpenMsgStore(0, size, reinterpret_cast<ENTRYID*>(id), nullptr,
                                               MDB_WRITE | MDB_NO_MAIL, store);
            });
        } catch (...) {
            VX_LOG('E') << Vx::LogMsg("OpenMsgStore failed wih exception"_w);
            throw;
        }
    }
    if (FAILED(hr)) {
        VX_LOG('E') << Vx::LogMsg("OpenMsgStore failed (%x)"_w, hr);
        if (m_session.get() != nullptr) {
            CMapiUtil::PrintErrorInformation(hr, m_session.get());
        }
    } else {
        VX_LOG('D') << Vx::LogMsg("OpenMsgStore ok"_w);
    }
    return hr;
}

HRESULT CVxOutlookProfile::OpenAddressBook(IAddrBook** book) {
    if (m_session.get() == nullptr) {
        return MAPI_E_NOT_INITIALIZED;
    }
    return m_session->OpenAddressBook(0, nullptr, AB_NO_DIALOG, book);
}

void CVxOutlookProfile::ShowGABContact(const CStringW& entryIdHex) {
    EnsureConnected();
    BYTE id[kMostIdBytes];
    ULONG size = 0;
    if (!CMapiUtil::Hex2Bin(entryIdHex, id, &size, kMostIdBytes)) {
        return;
    }
    VxMapiPtr<IAddrBook> book;
    HRESULT hr = OpenAddressBook(&book);
    if (FAILED(hr) || book.get() == nullptr) {
        VX_LOG('E') << Vx::LogMsg("OpenAddressBook failed (%x)"_w, hr);
        return;
    }
    ULONG_PTR window = reinterpret_cast<ULONG_PTR>(GetForegroundWindow());
    hr = book->Details(&window, nullptr, nullptr, size, reinterpret_cast<ENTRYID*>(id), nullptr, nullptr, nullptr,
                       DIALOG_MODAL);
    if (FAILED(hr)) {
        VX_LOG('W') << Vx::LogMsg("ShowGABContact failed (%x)"_w, hr);
    }
}
