// COutlookInstance: its life, and the walk over profiles, stores and folders.
#include "provider/OutlookInstance.h"

#include "provider/Common/Log.h"
#include "provider/FacadeCall.h"
#include "provider/FacadeTargets.h"
#include "provider/Item/VxItemFactory.h"
#include "provider/MAPIUtils.h"
#include "provider/RecordList.h"
#include "provider/StoreAndFolder/VxOutlookFolder.h"
#include "provider/StoreAndFolder/VxOutlookProfile.h"
#include "provider/StoreAndFolder/VxOutlookStore.h"
#include "provider/URIObjectData.h"
#include "provider/VxDomain.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

namespace {

constexpr auto& kSourcePath = "OutlookInstance.cpp"_w;

CProfileInfoObjectData ProfileRecord(const CVxMAPIProfile& profile) {
    CProfileInfoObjectData record;
    record.SetStringFieldVal("pi_name"_field, profile.name, true);
    record.SetBooleanFieldVal("pi_isDefault"_field, profile.isDefault, true);
    record.SetBooleanFieldVal("pi_isExchange"_field, profile.isExchange, true);
    return record;
}

CStoreInfoObjectData StoreRecord(const CVxMAPIStore& store) {
    CStoreInfoObjectData record;
    record.SetStringFieldVal("si_storeName"_field, store.displayName, true);
    record.SetStringFieldVal("si_storeDN"_field, store.storeDN, true);
    record.SetStringFieldVal("si_server"_field, store.server, true);
    record.SetStringFieldVal("si_serverDN"_field, store.serverDN, true);
    record.SetStringFieldVal("si_storeId"_field, store.entryId, true);
    record.SetStringFieldVal("si_recordKey"_field, store.recordKey, true);
    record.SetIntFieldVal("si_storeType"_field, store.type, true);
    record.SetBooleanFieldVal("si_isDefault"_field, store.isDefault, true);
    record.SetBooleanFieldVal("si_isCached"_field, store.isCached, true);
    return record;
}

// Whether the store could not be connected, and why not.
bool ConnectFailed(const CVxOutlookStore& store, HRESULT& why) noexcept {
    why = store.GetLastConnectError();
    return store.HasErrors(VxErrorConnect);
}

std::size_t CountAllFolders(CVxOutlookStore& store) {
    store.ClearItemFilter();
    return store.GetAllFolderCount();
}

}  // namespace

COutlookInstance::COutlookInstance() noexcept {
    FinalConstruct();
}

COutlookInstance::~COutlookInstance() {
    FinalRelease();
}

COutlookInstance::COutlookInstance(const COutlookInstance& other) noexcept = default;
COutlookInstance& COutlookInstance::operator=(const COutlookInstance& other) noexcept = default;

void COutlookInstance::FinalRelease() noexcept {
    if (m_domain == nullptr) {
        return;
    }
    Vx::SetAppShuttingDown(true);
    const std::unique_ptr<CVxDomain> domain(std::exchange(m_domain, nullptr));
    try {
        domain->EnsureDisconnected();
    } catch (...) {
        // Nothing may come out of a destructor, and the log is silent already.
    }
}

HRESULT COutlookInstance::InitializeVxMapi(const CStringW& params, const CStringW& logLevel) {
    VX_FACADE_CALL(call, InitializeVxMapi);
    return call.Run([&]() -> HRESULT {
        if (m_domain == nullptr) {
            m_domain = std::make_unique<CVxDomain>(params, logLevel, VxItems()).release();
        }
        return m_domain->EnsureConnected() ? S_OK : E_ABORT;
    });
}

HRESULT COutlookInstance::ReleaseVxMapi() {
    VX_FACADE_CALL(call, ReleaseVxMapi);
    return call.Run([&]() -> HRESULT {
        const std::unique_ptr<CVxDomain> domain(std::exchange(m_domain, nullptr));
        if (domain != nullptr) {
            domain->EnsureDisconnected();  // not left to the destructor, out of which no fault could come
        }
        return S_OK;
    });
}

HRESULT COutlookInstance::SetAbort(bool abort) {
    VX_FACADE_CALL_AS(call, SetAbort, "Abort failed.");
    return call.Run([&]() -> HRESULT {
        if (m_domain == nullptr) {
            return S_FALSE;
        }
        m_domain->SetAbort(abort);
        return S_OK;
    });
}

HRESULT COutlookInstance::Disconnect() {
    VX_FACADE_CALL(call, Disconnect);
    return call.Run([&]() -> HRESULT {
        if (m_domain == nullptr) {
            return S_FALSE;
        }
        m_domain->EnsureDisconnected();
        return S_OK;
    });
}

HRESULT COutlookInstance::ClearFolderCache(const WCHAR* profileName, const WCHAR* storeId) {
    VX_FACADE_CALL_AS(call, ClearFolderCache, "ClearFolderCache(.) failed.");
    return call.Run([&]() -> HRESULT {
        CVxOutlookProfile* profile = m_domain == nullptr ? nullptr : m_domain->GetProfile(HostText(profileName));
        if (profile == nullptr || !profile->IsConnected()) {
            return S_FALSE;
        }
        CVxOutlookStore* store = profile->GetStorebyId(HostText(storeId));
        if (store == nullptr || !store->IsConnected()) {
            return S_FALSE;
        }
        store->ClearFolderCache();
        return S_OK;
    });
}

HRESULT COutlookInstance::ClearFolderCache() {
    VX_FACADE_CALL(call, ClearFolderCache);
    return call.Run([&]() -> HRESULT {
        if (m_domain == nullptr || !m_domain->IsConnected()) {
            return S_FALSE;
        }
        std::vector<CStringW> names;
        m_domain->GetSystemProfiles(names);
        for (const CStringW& name : names) {
            CVxOutlookProfile* profile = m_domain->GetProfile(name);
            if (profile != nullptr && profile->IsConnected()) {
                profile->ClearFolderCache();
            }
        }
        return S_OK;
    });
}

HRESULT COutlookInstance::GetSystemProfiles(VARIANT* profiles) {
    VX_FACADE_CALL(call, GetSystemProfiles);
    return call.Query(profiles, m_domain, [&](CVxDomain& domain) -> HRESULT {
        std::vector<CVxMAPIProfile> known;
        domain.GetProfileList(known);
        RecordList list(known.size());
        for (const CVxMAPIProfile& profile : known) {
            CProfileInfoObjectData record = ProfileRecord(profile);
            list.Add(record);
        }
        list.Give(profiles);
        return S_OK;
    });
}

HRESULT COutlookInstance::GetProfileStores(const WCHAR* profileName, VARIANT* stores) {
    VX_FACADE_CALL(call, GetProfileStores);
    return call.Query(stores, m_domain, [&](CVxDomain& domain) -> HRESULT {
        std::vector<CVxMAPIStore> found;
        domain.GetProfileStores(HostText(profileName), found);
        RecordList list(found.size());
        for (const CVxMAPIStore& store : found) {
            CStoreInfoObjectData record = StoreRecord(store);
            list.Add(record);
        }
        list.Give(stores);
        return S_OK;
    });
}

HRESULT COutlookInstance::GetStoreFolders(const WCHAR* profileName, const WCHAR* storeId, VARIANT* folders) {
    VX_FACADE_CALL(call, GetStoreFolders);
    return call.Query(folders, m_domain, [&](CVxDomain& domain) -> HRESULT {
        CVxOutlookStore* store = FindStore(domain, HostText(profileName), HostText(storeId));
        if (store == nullptr) {
            return S_FALSE;
        }
        const std::size_t count = CountAllFolders(*store);
        if (HRESULT hr = S_OK; ConnectFailed(*store, hr)) {
            return hr;
        }
        RecordList list(count);
        for (std::size_t i = 0; i < count; ++i) {
            CFolderInfoObjectData record;
            SetFolderInfoData(*store->GetFolder(i), record);
            list.Add(record);
        }
        list.Give(folders);
        return S_OK;
    });
}

HRESULT COutlookInstance::GetProfileFolders(WCHAR* profileName, VARIANT* folders) {
    VX_FACADE_CALL(call, GetProfileFolders);
    return call.Query(folders, m_domain, [&](CVxDomain& domain) -> HRESULT {
        CVxOutlookProfile* profile = domain.GetProfile(HostText(profileName));
        if (profile == nullptr) {
            return S_FALSE;
        }
        const std::size_t storeCount = profile->GetStoresCount();
        if (!profile->IsConnected()) {
            return E_FAIL;
        }
        std::size_t total = 0;
        for (std::size_t i = 0; i < storeCount; ++i) {
            CVxOutlookStore& store = *profile->GetStore(i);
            total += CountAllFolders(store);
            if (HRESULT hr = S_OK; ConnectFailed(store, hr)) {
                return hr;
            }
        }
        RecordList list(total);
        for (std::size_t i = 0; i < storeCount; ++i) {
            CVxOutlookStore& store = *profile->GetStore(i);
            const std::size_t count = CountAllFolders(store);
            for (std::size_t j = 0; j < count && list.Filled() < total; ++j) {
                CFolderInfoObjectData record;
                SetFolderInfoData(*store.GetFolder(j), record);
                list.Add(record);
            }
        }
        list.Give(folders);
        return S_OK;
    });
}

HRESULT COutlookInstance::GetSubFolders(const WCHAR* profileName, const WCHAR* storeId, const WCHAR* parentFolderId,
                                        const WCHAR* parentFolderPath, VARIANT* folders) {
    VX_FACADE_CALL(call, GetSubFolders);
    return call.Query(folders, m_domain, [&](CVxDomain& domain) -> HRESULT {
        CVxOutlookStore* store = FindStore(domain, HostText(profileName), HostText(storeId));
        if (store == nullptr) {
            return S_FALSE;
        }
        store->ClearItemFilter();
        std::vector<CVxMAPIFolder> children;
        if (!store->GetSubFolders(HostText(parentFolderId), HostText(parentFolderPath), children)) {
            return store->HasErrors(VxErrorConnect) ? store->GetLastConnectError() : S_FALSE;
        }
        RecordList list(children.size());
        for (const CVxMAPIFolder& child : children) {
            CFolderInfoObjectData record;
            SetFolderInfoData(child, record);
            list.Add(record);
        }
        list.Give(folders);
        return S_OK;
    });
}

HRESULT COutlookInstance::GetSpecialFolderName(const WCHAR* profileName, const WCHAR* storeId, int specialFolder,
                                               CStringW& name) {
    VX_FACADE_CALL(call, GetSpecialFolderName);
    return call.Query(name, m_domain, [&](CVxDomain& domain) -> HRESULT {
        CVxOutlookStore* store = FindStore(domain, HostText(profileName), HostText(storeId));
        if (store == nullptr) {
            return S_FALSE;
        }
        store->GetSpecialFolderName(name, static_cast<EVxSpecialFolder>(specialFolder));
        return S_OK;
    });
}

HRESULT COutlookInstance::GetExchangeServer(const WCHAR* profileName, CStringW& server) {
    VX_FACADE_CALL(call, GetExchangeServer);
    return call.Query(server, m_domain, [&](CVxDomain& domain) -> HRESULT {
        CVxOutlookProfile* profile = domain.GetProfile(HostText(profileName));
        if (profile == nullptr) {
            return S_FALSE;
        }
        server = profile->GetExchangeServer();
        return S_OK;
    });
}

HRESULT COutlookInstance::ShowGABContact(const WCHAR* profileName, const WCHAR* contactEntryId) {
    VX_FACADE_CALL(call, ShowGABContact);
    return call.Run([&]() -> HRESULT {
        if (const HRESULT hr = call.RequireDomain(m_domain); FAILED(hr)) {
            return hr;
        }
        m_domain->ShowGABContact(HostText(profileName), HostText(contactEntryId));
        return S_OK;
    });
}

void COutlookInstance::SetFolderInfoData(const CVxOutlookFolder& folder, CFolderInfoObjectData& record) {
    CVxMAPIFolder values;
    values.path = folder.GetFolderPath();
    values.entryId = folder.GetEntryId();
    values.storeEntryId = folder.GetStore()->GetStoreEntryId();
    values.hasSubFolders = folder.GetHasSubFolders();
    values.containerClass = folder.GetContainerClass();
    values.lastModified = folder.GetLastModified();
    SetFolderInfoData(values, record);
}

void COutlookInstance::SetFolderInfoData(const CVxMAPIFolder& folder, CFolderInfoObjectData& record) {
    record.SetStringFieldVal("fi_folderPath"_field, folder.path, true);
    record.SetStringFieldVal("fi_folderId"_field, folder.entryId, true);
    record.SetStringFieldVal("fi_storeId"_field, folder.storeEntryId, true);
    record.SetBooleanFieldVal("fi_hasChildren"_field, folder.hasSubFolders, true);
    record.SetIntFieldVal("fi_containerType"_field, folder.containerClass, true);
    record.SetLongLongFieldVal("fi_modifiedTime"_field, CMapiUtil::FromFileTimeToInt64(folder.lastModified), true);
}
