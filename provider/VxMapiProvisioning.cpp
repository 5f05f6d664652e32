// The administration of profiles: CVxMapiEngine's second source.
#include "mapi/MapiCodes.h"
#include "mapi/MapiFlags.h"
#include "mapi/MapiGuids.h"
#include "mapi/PropTags.h"
#include "platform/Paths.h"
#include "platform/Process.h"
#include "provider/Common/ScopedEntryExitLogger.h"
#include "provider/Common/StringHelpers.h"
#include "provider/Common/WLStr.h"
#include "provider/ImportProcs.h"
#include "provider/KeepDirectory.h"
#include "provider/MapiHolders.h"
#include "provider/RowValues.h"
#include "provider/ServiceAdministration.h"
#include "provider/VxMapiEngine.h"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>
#include <optional>
#include <vector>

namespace {

constexpr auto& kSourcePath = "VxMapiEngine.cpp"_w;

// 8-bit text for an LPTSTR of a call without MAPI_UNICODE.
LPTSTR AsText(const VxArrayPtr<char>& text) {
    return reinterpret_cast<LPTSTR>(text.get());
}
LPTSTR AsText(const char* text) {
    return reinterpret_cast<LPTSTR>(const_cast<char*>(text));
}

SPropValue AnsiProperty(ULONG tag, const VxArrayPtr<char>& text) {
    SPropValue property = {tag, 0, {}};
    property.Value.lpszA = text.get();
    return property;
}

constexpr char kExchangeServiceAnsi[] = "MSEMS";
constexpr char kPstServiceAnsi[] = "MSPST MS";

constexpr auto kServiceColumns = MakeTagArray(PR_SERVICE_NAME_W, PR_SERVICE_UID);
constexpr ULONG kServiceNameColumn = 0;
constexpr ULONG kServiceUidColumn = 1;

HRESULT CreateService(IMsgServiceAdmin* services, const char* service, LPTSTR displayName) {
    return KeepDirectory([&] { return services->CreateMsgService(AsText(service), displayName, 0, 0); });
}

HRESULT ConfigureService(IMsgServiceAdmin* services, MAPIUID* service, ULONG_PTR window, ULONG flags, ULONG count,
                         LPSPropValue properties) {
    if (service == nullptr) {
        return MAPI_E_NOT_FOUND;
    }
    return KeepDirectory([&] { return services->ConfigureMsgService(service, window, flags, count, properties); });
}

bool TryLogon(const CStringW& profileName, VxMapiPtr<IMAPISession>& session) {
    const VxArrayPtr<char> name = WLStr::ToAscii(profileName.c_str());
    char noPassword[] = "";
    const HRESULT hr = KeepDirectory([&] {
        return MAPILogonEx(reinterpret_cast<ULONG_PTR>(GetActiveWindow()), AsText(name), AsText(noPassword),
                           MAPI_NO_MAIL | MAPI_NEW_SESSION, &session);
    });
    return SUCCEEDED(hr) && session.get() != nullptr;
}

bool SessionHasExchange(IMAPISession* session) {
    VxMapiPtr<IMsgServiceAdmin> services;
    const HRESULT hr = session->AdminServices(0, &services);
    if (FAILED(hr) || services.get() == nullptr) {
        VX_LOG('E') << Vx::LogMsg("IMAPISession/AdminServices failed (%x)"_w, hr);
        return false;
    }
    VxLpRowsPtr<SRowSet> rows;
    return ReadServices(services, kServiceColumns, ServiceFilter::Exchange, rows);
}

// Adds a provider to the end of the list in the global profile section, which is the order of the stores.
bool AppendStoreProvider(IProviderAdmin* providers, const MAPIUID& provider) {
    MAPIUID global = kGlobalProfileSection;
    VxMapiPtr<IProfSect> section;
    HRESULT hr = providers->OpenProfileSection(&global, nullptr, MAPI_MODIFY, &section);
    if (FAILED(hr) || section.get() == nullptr) {
        VX_LOG('E') << Vx::LogMsg("IProviderAdmin/OpenProfileSection failed (%x)"_w, hr);
        return false;
    }
    static constexpr auto kTags = MakeTagArray(PR_STORE_PROVIDERS);
    ULONG count = 0;
    VxMapiFrBufPtr<SPropValue> list;
    hr = section->GetProps(kTags, 0, &count, &list);
    if (FAILED(hr) || count == 0 || list.get() == nullptr || list->ulPropTag != PR_STORE_PROVIDERS) {
        VX_LOG('E') << Vx::LogMsg("IProfSect/GetProps failed (%x)"_w, hr);
        return false;
    }
    const SBinary& old = list->Value.bin;
    const std::size_t size = std::size_t{old.cb} + sizeof(provider);
    VxMapiFrBufPtr<BYTE> bytes;
    hr = size <= 0xFFFFFFFF ? MAPIAllocateBuffer(static_cast<ULONG>(size), reinterpret_cast<LPVOID*>(&bytes))
                            : MAPI_E_NOT_ENOUGH_MEMORY;
    if (FAILED(hr) || bytes.get() == nullptr) {
        VX_LOG('E') << Vx::LogMsg("IProfSect/GetProps failed (%x)"_w, hr);
        return false;
    }
    std::copy_n(old.lpb, old.cb, bytes.get());
    std::memcpy(bytes + old.cb, &provider, sizeof(provider));
    SPropValue extended = {PR_STORE_PROVIDERS, 0, {}};
    extended.Value.bin = {static_cast<ULONG>(size), bytes};
    hr = section->SetProps(std::min(count, ULONG{1}), &extended, nullptr);
    if (FAILED(hr)) {
        VX_LOG('E') << Vx::LogMsg("IProfSect/SetProps failed (%x)"_w, hr);
        return false;
    }
    return true;
}

// Leaves the table at the first of the providers that have exactly that display name, and reads them.
bool ReadProvidersByName(IProviderAdmin* providers, LPSPropTagArray columns, const CStringW& name,
                         VxLpRowsPtr<SRowSet>& rows) {
    VxMapiPtr<IMAPITable> table;
    HRESULT hr = providers->GetProviderTable(0, &table);
    if (FAILED(hr) || table.get() == nullptr) {
        VX_LOG('E') << Vx::LogMsg("GetProviderTable failed (%x)"_w, hr);
        return false;
    }
    hr = table->SetColumns(columns, 0);
    if (FAILED(hr)) {
        VX_LOG('E') << Vx::LogMsg("SetColumns failed (%x)"_w, hr);
        return false;
    }
    const VxArrayPtr<char> ansiName = WLStr::ToAscii(name.c_str());
    SPropValue wanted = AnsiProperty(PR_DISPLAY_NAME_A, ansiName);
    SRestriction restriction = {RES_CONTENT, {}};
    restriction.res.resContent = {FL_FULLSTRING, PR_DISPLAY_NAME_A, &wanted};
    hr = table->Restrict(&restriction, TBL_ASYNC);
    if (FAILED(hr)) {
        VX_LOG('E') << Vx::LogMsg("Restrict failed (%x)"_w, hr);
        return false;
    }
    hr = table->SeekRow(BOOKMARK_BEGINNING, 0, nullptr);
    if (FAILED(hr)) {
        VX_LOG('E') << Vx::LogMsg("SeekRow failed (%x)"_w, hr);
        return false;
    }
    constexpr LONG kMostRows = 4000;
    hr = table->QueryRows(kMostRows, 0, &rows);
    if (FAILED(hr)) {
        VX_LOG('E') << Vx::LogMsg("QueryRows failed (%x)"_w, hr);
        return false;
    }
    if (rows.get() == nullptr || rows->cRows == 0) {
        VX_LOG('E') << Vx::LogMsg("QueryRows returned no services."_w);
        return false;
    }
    return true;
}

// The identifiers of a list of services, in its order. A service without one is left out.
std::vector<MAPIUID> ServiceIds(const SRowSet& services) {
    std::vector<MAPIUID> ids;
    for (ULONG i = 0; i < services.cRows; ++i) {
        if (const MAPIUID* id = UidColumn(services.aRow[i], kServiceUidColumn)) {
            ids.push_back(*id);
        }
    }
    return ids;
}

// The place, in the second list, of the first identifier that the first list lacks.
std::optional<std::size_t> FirstAdded(const std::vector<MAPIUID>& before, const std::vector<MAPIUID>& after) {
    const auto added = std::find_if(after.begin(), after.end(), [&](const MAPIUID& id) {
        return std::find(before.begin(), before.end(), id) == before.end();
    });
    if (added == after.end()) {
        return std::nullopt;
    }
    return static_cast<std::size_t>(added - after.begin());
}

// The identifier of the last Exchange service in the list; null without one.
MAPIUID* LastExchangeService(const SRowSet& services) {
    MAPIUID* last = nullptr;
    for (ULONG i = 0; i < services.cRows; ++i) {
        if (EqualIgnoringAsciiCase(TextColumn(services.aRow[i], kServiceNameColumn), kExchangeService)) {
            last = UidColumn(services.aRow[i], kServiceUidColumn);
        }
    }
    return last;
}

bool CreateServiceOrLog(IMsgServiceAdmin* services, const char* service, LPTSTR displayName) {
    const HRESULT hr = CreateService(services, service, displayName);
    if (FAILED(hr)) {
        VX_LOG('E') << Vx::LogMsg("IMsgServiceAdmin/CreateMsgService failed (%x)"_w, hr);
        return false;
    }
    return true;
}

}  // namespace

bool CVxMapiEngine::CreateProfile(const CStringW& profileName) {
    VX_SCOPE_TRACE(trace);
    VxMapiPtr<IProfAdmin> profiles;
    if (!OpenProfileAdmin(profiles)) {
        return false;
    }
    const VxArrayPtr<char> name = WLStr::ToAscii(profileName.c_str());
    const HRESULT hr = profiles->CreateProfile(AsText(name), nullptr, 0, 0);
    if (FAILED(hr)) {
        VX_LOG('E') << Vx::LogMsg("IProfAdmin/CreateProfile failed (%x)"_w, hr);
        profiles->DeleteProfile(AsText(name), 0);
        return false;
    }
    VX_LOG('I') << Vx::LogMsg("Created profile: %s"_w, profileName);
    return true;
}

bool CVxMapiEngine::DeleteProfile(const CStringW& profileName) {
    VX_SCOPE_TRACE(trace);
    VxMapiPtr<IProfAdmin> profiles;
    if (!OpenProfileAdmin(profiles)) {
        return false;
    }
    const VxArrayPtr<char> name = WLStr::ToAscii(profileName.c_str());
    const HRESULT hr = profiles->DeleteProfile(AsText(name), 0);
    if (FAILED(hr)) {
        VX_LOG('E') << Vx::LogMsg("IProfAdmin/DeleteProfile failed (%x)"_w, hr);
        return false;
    }
    VX_LOG('I') << Vx::LogMsg("Deleted profile: %s"_w, profileName);
    return true;
}

bool CVxMapiEngine::AddExchangeToProfile(const CStringW& profileName, const CStringW& serverName,
                                         const CStringW& accountName, bool /*cached*/) {
    VX_SCOPE_TRACE(trace);
    VxMapiPtr<IMsgServiceAdmin> services;
    if (!OpenServiceAdmin(profileName, services)) {
        return false;
    }
    VX_LOG('D') << Vx::LogMsg("adding MSEMS messaging service"_w);
    HRESULT hr = CreateService(services, kExchangeServiceAnsi, AsText(kExchangeServiceAnsi));
    if (FAILED(hr)) {
        VX_LOG('E') << Vx::LogMsg("CreateMsgService failed (%x)"_w, hr);
        return false;
    }
    VxLpRowsPtr<SRowSet> rows;
    if (!ReadServices(services, kServiceColumns, ServiceFilter::Exchange, rows)) {
        return false;
    }
    const VxArrayPtr<char> account = WLStr::ToAscii(("="_w + accountName).c_str());
    const VxArrayPtr<char> server = WLStr::ToAscii(serverName.c_str());
    SPropValue properties[] = {AnsiProperty(PR_PROFILE_UNRESOLVED_NAME, account),
                               AnsiProperty(PR_PROFILE_UNRESOLVED_SERVER, server)};
    VX_LOG('D') << Vx::LogMsg("Configuring message service..."_w);
    hr = ConfigureService(services, UidColumn(rows->aRow[0], kServiceUidColumn), 0, 0, std::size(properties),
                          properties);
    if (FAILED(hr)) {
        VX_LOG('E') << Vx::LogMsg("ConfigureMsgService failed (%x)"_w, hr);
        return false;
    }
    VX_LOG('D') << Vx::LogMsg("Added Exchange Server OK."_w);

    VxMapiPtr<IMAPISession> session;
    if (!TryLogon(profileName, session)) {
        return true;  // says nothing against the service: the account may ask for a password at its first real use
    }
    VX_LOG('I') << Vx::LogMsg("MapiLogonEx success!"_w);
    services.release();
    rows.release();
    return SessionHasExchange(session);
}

bool CVxMapiEngine::AddDelegateToProfile(const CStringW& profileName, const CStringW& storeName,
                                         const CStringW& storeDN, const CStringW& server, const CStringW& serverDN) {
    VX_SCOPE_TRACE(trace);
    static constexpr auto kColumns = MakeTagArray(PR_DISPLAY_NAME_W, PR_SERVICE_NAME_W, PR_SERVICE_UID);
    constexpr ULONG kUidColumn = 2;
    VxMapiPtr<IMsgServiceAdmin> services;
    VxLpRowsPtr<SRowSet> rows;
    VxMapiPtr<IProviderAdmin> providers;
    if (!OpenServiceAdmin(profileName, services) || !ReadServices(services, kColumns, ServiceFilter::Exchange, rows)
        || !OpenProviderAdmin(services, rows->aRow[0], kUidColumn, providers)) {
        return false;
    }
    CStringW displayName = storeName;
    const VxArrayPtr<char> ansiStoreDN = WLStr::ToAscii(storeDN.c_str());
    const VxArrayPtr<char> ansiServer = WLStr::ToAscii(server.c_str());
    const VxArrayPtr<char> ansiServerDN = WLStr::ToAscii(serverDN.c_str());
    SPropValue properties[] = {{PR_DISPLAY_NAME_W, 0, {}},
                               AnsiProperty(PR_PROFILE_MAILBOX_A, ansiStoreDN),
                               AnsiProperty(PR_PROFILE_SERVER_A, ansiServer),
                               AnsiProperty(PR_PROFILE_SERVER_DN_A, ansiServerDN)};
    properties[0].Value.lpszW = displayName.data();

    // The call writes the new provider's identifier over the service's, in the row.
    MAPIUID* uid = UidColumn(rows->aRow[0], kUidColumn);
    char delegateProvider[] = "EMSDelegate";
    VX_LOG('D') << Vx::LogMsg("Adding Delegate store"_w);
    const HRESULT hr = KeepDirectory([&] {
        return providers->CreateProvider(AsText(delegateProvider), std::size(properties), properties, 0, 0, uid);
    });
    if (FAILED(hr)) {
        VX_LOG('E') << Vx::LogMsg("IProviderAdmin/CreateProvider failed (%x)"_w, hr);
        return false;
    }
    if (!AppendStoreProvider(providers, *uid)) {
        return false;
    }
    VX_LOG('D') << Vx::LogMsg("Added Delegate store OK."_w);
    return true;
}

bool CVxMapiEngine::RemoveDelegateStore(const CStringW& profileName, const CStringW& storeName) {
    VX_SCOPE_TRACE(trace);
    static constexpr auto kColumns =
        MakeTagArray(PR_DISPLAY_NAME_W, PR_SERVICE_NAME_W, PR_SERVICE_UID, PR_PROVIDER_UID);
    constexpr ULONG kUidColumn = 2;
    constexpr ULONG kProviderUidColumn = 3;
    VxMapiPtr<IMsgServiceAdmin> services;
    VxLpRowsPtr<SRowSet> rows;
    VxMapiPtr<IProviderAdmin> providers;
    if (!OpenServiceAdmin(profileName, services, "AdminServices failed (%x)"_w)
        || !ReadServices(services, kColumns, ServiceFilter::Exchange, rows)
        || !OpenProviderAdmin(services, rows->aRow[0], kUidColumn, providers)) {
        return false;
    }
    rows.release();
    if (!ReadProvidersByName(providers, kColumns, storeName, rows)) {
        return false;
    }
    // A copy, since the rows belong to the table's memory and the call gets a writable identifier.
    const MAPIUID* found = UidColumn(rows->aRow[0], kProviderUidColumn);
    VxMapiFrBufPtr<MAPIUID> uid;
    HRESULT hr = MAPIAllocateBuffer(sizeof(MAPIUID), reinterpret_cast<LPVOID*>(&uid));
    if (SUCCEEDED(hr)) {
        hr = MAPI_E_NOT_FOUND;
        if (found != nullptr && uid.get() != nullptr) {
            *uid = *found;
            hr = providers->DeleteProvider(uid);
        }
    }
    if (FAILED(hr)) {
        VX_LOG('E') << Vx::LogMsg("DeleteProvider failed (%x)"_w, hr);
        return false;
    }
    return true;
}

bool CVxMapiEngine::AddPSTToProfile(const CStringW& profileName, const CStringW& pstPath) {
    VX_SCOPE_TRACE(trace);
    // Open until the end, so that the file cannot go away in between.
    const std::ifstream file(ToPath(pstPath), std::ios::binary);
    if (!file.is_open()) {
        VX_LOG('E') << Vx::LogMsg("AddPSTToProfile: file does not exist! (%s)"_w, pstPath);
        return false;
    }
    VxMapiPtr<IMsgServiceAdmin> services;
    if (!OpenServiceAdmin(profileName, services)) {
        return false;
    }
    const VxArrayPtr<char> name = WLStr::ToAscii(profileName.c_str());
    VX_LOG('D') << Vx::LogMsg("adding MSEMS messaging service"_w);
    if (!CreateServiceOrLog(services, kExchangeServiceAnsi, AsText(name))) {
        return false;
    }
    VxLpRowsPtr<SRowSet> rows;
    if (!ReadServices(services, kServiceColumns, ServiceFilter::None, rows)) {
        return false;
    }
    const std::vector<MAPIUID> before = ServiceIds(*rows);
    rows.release();
    VX_LOG('D') << Vx::LogMsg("Adding MS PST messaging service"_w);
    if (!CreateServiceOrLog(services, kPstServiceAnsi, AsText(name))
        || !ReadServices(services, kServiceColumns, ServiceFilter::None, rows)) {
        return false;
    }
    const std::optional<std::size_t> added = FirstAdded(before, ServiceIds(*rows));
    if (!added) {
        VX_LOG('E') << Vx::LogMsg("Could not identify newly added MS PST service."_w);
        return false;
    }
    const VxArrayPtr<char> path = WLStr::ToAscii(pstPath.c_str());
    SPropValue property = AnsiProperty(PR_PST_PATH_A, path);
    VX_LOG('D') << Vx::LogMsg("Configuring message service..."_w);
    // The place among the identifiers is taken for the row, though a row without one shifts them apart.
    HRESULT hr = ConfigureService(services, UidColumn(rows->aRow[*added], kServiceUidColumn),
                                  reinterpret_cast<ULONG_PTR>(GetActiveWindow()), SERVICE_UI_ALLOWED, 1, &property);
    if (FAILED(hr)) {
        VX_LOG('E') << Vx::LogMsg("ConfigureMsgService failed."_w);
        return false;
    }
    if (MAPIUID* exchange = LastExchangeService(*rows)) {
        VX_LOG('D') << Vx::LogMsg("Deleting MSEMS service"_w);
        hr = KeepDirectory([&] { return services->DeleteMsgService(exchange); });
        if (FAILED(hr)) {
            VX_LOG('E') << Vx::LogMsg("DeleteMsgService (MSEMS) failed."_w);
            return false;
        }
    }
    VX_LOG('D') << Vx::LogMsg("Added PST file OK."_w);
    return true;
}
