#include "provider/StoreAndFolder/VxOutlookStore.h"

#include "mapi/MapiCodes.h"
#include "provider/Attachments/VxAttachment.h"
#include "provider/Common/Log.h"
#include "provider/Common/ScopedCriticalSection.h"
#include "provider/Item/VxItem.h"
#include "provider/ItemFactory.h"
#include "provider/StoreAndFolder/VxOutlookProfile.h"
#include "provider/URIObjectData.h"
#include "provider/VxDomain.h"

#include <utility>

namespace {

constexpr auto& kSourcePath = "StoreAndFolder\\VxOutlookStore.cpp"_w;

// Bytes that an item's id may have.
constexpr ULONG kMostIdBytes = 0x1000;

}  // namespace

CVxOutlookStore::CVxOutlookStore(CVxOutlookProfile* profile) : CVxConnectable(profile), m_profile(profile) {}

CVxOutlookStore::~CVxOutlookStore() {
    EnsureDisconnected();
    CVxOutlookStore::Clear();
}

bool CVxOutlookStore::OnConnect() {
    return std::exchange(m_foldersLoaded, true) || AddSubFolders();
}

void CVxOutlookStore::OnDisconnect() {
    VX_LOG('D') << Vx::LogMsg("OnDisconnect store %s (keep data)"_w, m_displayName);
}

bool CVxOutlookStore::MapiConnect() {
    m_lastConnectError = S_OK;
    if (m_store.get() != nullptr) {
        return true;
    }
    LPMDB store = nullptr;
    const HRESULT hr = m_profile->OpenMsgStore(m_entryId, &store);
    if (FAILED(hr) || store == nullptr) {
        m_lastConnectError = FAILED(hr) ? hr : E_FAIL;
        VX_LOG('E') << Vx::LogMsg("Store is %s"_w, m_displayName);
        return false;
    }
    m_store.reset(store);
    if (m_storeType == eVxStorePst) {
        LPMDB unwrapped = nullptr;
        if (SUCCEEDED(CMapiUtil::HrUnWrapMDB(m_store, &unwrapped)) && unwrapped != nullptr) {
            m_store.release();  // even if it is the same one: each has a reference of its own
            m_store.reset(unwrapped);
        }
    }
    return true;
}

void CVxOutlookStore::MapiDisconnect() {
    if (IsMapiConnected()) {
        m_store.release();
    }
}

bool CVxOutlookStore::IsMapiConnected() const {
    return m_store.get() != nullptr;
}

void CVxOutlookStore::Clear() {
    if (!m_folders.empty()) {
        VX_LOG('D') << Vx::LogMsg("Clear store %s"_w, m_displayName);
    }
    m_folders.clear();
    m_folderMap.clear();
    MapiDisconnect();
    m_foldersLoaded = false;
}

void CVxOutlookStore::SetItemFilter(const CStringW& folderId) {
    CItemsFilter filter(folderId);
    if (filter == m_filter) {
        return;
    }
    if (IsConnected()) {
        if (!m_filter.HaveFilter()) {
            return;  // the whole tree is here, so the wanted folder is, too
        }
        EnsureDisconnected();
        Clear();
    }
    m_filter = std::move(filter);
}

void CVxOutlookStore::ClearItemFilter() {
    if (m_filter != CItemsFilter()) {
        ClearFolderCache();
    }
}

void CVxOutlookStore::ClearFolderCache() {
    EnsureDisconnected();
    Clear();
    m_filter = CItemsFilter();
}

std::size_t CVxOutlookStore::GetAllFolderCount() {
    EnsureConnected();
    return m_folders.size();
}

CVxOutlookFolder* CVxOutlookStore::GetFolder(std::size_t index) {
    EnsureConnected();
    return index < m_folders.size() ? m_folders[index].get() : nullptr;
}

CVxOutlookFolder* CVxOutlookStore::GetFolder(const CStringW& id) {
    EnsureConnected();
    CVxOutlookFolder* folder = GetCachedFolder(id);
    if (folder == nullptr) {
        VX_LOG('W') << Vx::LogMsg("folderId %s not found in Store %s"_w, id, m_entryId);
    }
    return folder;
}

CVxOutlookFolder* CVxOutlookStore::GetCachedFolder(const CStringW& id) const {
    const auto found = m_folderMap.find(id);
    return found != m_folderMap.end() ? found->second : nullptr;
}

bool CVxOutlookStore::GetFolderList(std::vector<CVxMAPIFolder>& folders) {
    folders.clear();
    if (!EnsureConnected()) {
        return false;
    }
    for (const auto& folder : m_folders) {
        folders.push_back(SerializeFolder(*folder));
    }
    return true;
}

CVxMAPIFolder CVxOutlookStore::SerializeFolder(const CVxOutlookFolder& folder) const {
    return {folder.GetStorePath(),     folder.GetEntryId(),        m_entryId,
            folder.GetHasSubFolders(), folder.GetContainerClass(), folder.GetLastModified()};
}

HRESULT CVxOutlookStore::OpenEntry(ULONG size, ENTRYID* entryId, const IID* interfaceId, ULONG flags, ULONG* objectType,
                                   IUnknown** object) {
    HRESULT hr = S_OK;
    if (MapiConnect() && m_store.get() != nullptr) {
        hr = m_store->OpenEntry(size, entryId, interfaceId, flags, objectType, object);
    } else {
        hr = FAILED(m_lastConnectError) ? m_lastConnectError : E_FAIL;
    }
    if (FAILED(hr)) {
        VX_LOG('E') << Vx::LogMsg("Unable to connect to folder. Mapi Error: (%x)"_w, hr);
        if (m_store.get() != nullptr) {
            CMapiUtil::PrintErrorInformation(hr, m_store.get());
        }
    }
    return hr;
}

template <typename Use>
void CVxOutlookStore::WithItem(const CStringW& id, Use use) {
    BYTE bytes[kMostIdBytes];
    ULONG size = 0;
    if (!CMapiUtil::Hex2Bin(id, bytes, &size, kMostIdBytes)) {
        return;
    }
    {
        const ScopedCriticalSection held(&m_lock);
        if (m_store.get() == nullptr) {
            MapiConnect();
        }
    }
    CVxDomain* domain = GetDomain();
    if (m_store.get() == nullptr || domain == nullptr) {
        return;
    }
    const CVxItemFactory& items = domain->GetItemFactory();
    const VxMapiPtr<IMessage> message(items.OpenMapiMessage(id, m_store));
    if (message.get() == nullptr) {
        return;
    }
    const std::unique_ptr<CVxItem> item = items.CreateItem(this, id, nullptr, this, message);
    if (item == nullptr) {
        return;
    }
    item->MapiConnect();
    use(*item);
    item->MapiDisconnect();
}

void CVxOutlookStore::GetItemBody(const CStringW& id, TBodyFormat format, CStringW& out, UriType uriType,
                                  const CURIObjectData& uri) {
    out.clear();
    WithItem(id, [&](CVxItem& item) {
        if (uriType != eUriAttachment) {
            item.SetRequestBodyFormat(format);
            out = item.GetBody();
            return;
        }
        CVxConnectable* found = item.FindAttachment(uri.AttachmentNum());
        if (found == nullptr) {
            VX_LOG('W') << Vx::LogMsg("item NOT found!"_w);
        } else if (CVxItem* embedded = found->GetVxItem()) {
            embedded->SetRequestBodyFormat(format);
            embedded->MapiConnect();
            out = embedded->GetBody();
            embedded->Clear();
            embedded->MapiDisconnect();
        }
    });
}

void CVxOutlookStore::GetAttachment(const CStringW& id, TBodyFormat format, std::vector<unsigned char>& out,
                                    UriType /*uriType*/, const CURIObjectData& uri) {
    out.clear();
    WithItem(id, [&](CVxItem& item) {
        CVxConnectable* found = item.FindAttachment(uri.AttachmentNum());
        if (found == nullptr) {
            VX_LOG('W') << Vx::LogMsg("item NOT found!"_w);
        } else if (CVxAttachment* attachment = found->GetVxAttachment()) {
            attachment->SetRequestBodyFormat(format);
            attachment->OnConnect();
            out = attachment->GetBlobDataVector();
            attachment->OnDisconnect();
        }
    });
}
