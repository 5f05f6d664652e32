#include "localmapi/store/DeepHierarchy.h"
#include "localmapi/store/StoreObject.h"
#include "localmapi/table/Table.h"
#include "mapi/MapiFlags.h"
#include "mapi/MapiGuids.h"
#include "mapi/PropTags.h"

#include <utility>

namespace localmapi {

FolderObject::FolderObject(std::unique_ptr<FolderSource> source, ComPtr<StoreObject> store,
                           std::shared_ptr<const Identity> identity)
    : PropObject(nullptr, ComPtr<IUnknown>(store.Get()), store->Names(), store->Lock()),
      m_folder(source.get()),
      m_store(std::move(store)),
      m_identity(std::move(identity)) {
    TakeSource(std::move(source));
}

bool FolderObject::Implements(REFIID interfaceId) const {
    return interfaceId == IID_IMAPIFolder || interfaceId == IID_IMAPIContainer || PropObject::Implements(interfaceId);
}

bool FolderObject::Compute(ULONG id, ValueMemory& memory, SPropValue& value) {
    if (m_identity->Read(id, memory, value)) {
        return true;
    }
    switch (id) {
        case PROP_ID(PR_OBJECT_TYPE): value = LongValue(PR_OBJECT_TYPE, MAPI_FOLDER); return true;
        case PROP_ID(PR_ACCESS): value = LongValue(PR_ACCESS, MAPI_ACCESS_READ); return true;
        case PROP_ID(PR_ACCESS_LEVEL): value = LongValue(PR_ACCESS_LEVEL, 0); return true;
        default: return false;
    }
}
std::vector<ULONG> FolderObject::ComputedTags() {
    std::vector<ULONG> tags = {PR_OBJECT_TYPE, PR_ACCESS, PR_ACCESS_LEVEL};
    m_identity->AppendTags(tags);
    return tags;
}
bool FolderObject::IsFixed(ULONG) {
    return true;
}

// ---- Tables ---------------------------------------------------------------------------------------------------------

ComPtr<IMAPITable> FolderObject::TableOver(std::unique_ptr<RowSource> rows, ULONG flags) {
    return MakeTable(WithIdentity(std::move(rows), m_store->StoreIdentity()), ComPtr<IUnknown>(this), flags, Lock());
}

HRESULT FolderObject::GetContentsTable(ULONG flags, LPMAPITABLE* table) {
    if (table == nullptr) {
        return MAPI_E_INVALID_PARAMETER;
    }
    *table = nullptr;
    if ((flags & SHOW_SOFT_DELETES) != 0) {
        return MAPI_E_NO_SUPPORT;
    }
    return Guarded([&] {
        const bool hidden = (flags & MAPI_ASSOCIATED) != 0;
        *table = TableOver(hidden ? m_folder->AssociatedMessages() : m_folder->Messages(), flags).Detach();
        return S_OK;
    });
}

HRESULT FolderObject::GetHierarchyTable(ULONG flags, LPMAPITABLE* table) {
    if (table == nullptr) {
        return MAPI_E_INVALID_PARAMETER;
    }
    *table = nullptr;
    if ((flags & SHOW_SOFT_DELETES) != 0) {
        return MAPI_E_NO_SUPPORT;
    }
    return Guarded([&] {
        const bool deep = (flags & CONVENIENT_DEPTH) != 0;
        *table = TableOver(deep ? DeepHierarchy(m_store->TheStore(), *m_folder) : m_folder->Folders(), flags).Detach();
        return S_OK;
    });
}

HRESULT FolderObject::OpenAs(ULONG tag, REFIID interfaceId, ULONG interfaceOptions, ULONG flags, IUnknown** object) {
    if (interfaceId != IID_IMAPITable) {
        return PropObject::OpenAs(tag, interfaceId, interfaceOptions, flags, object);
    }
    IMAPITable* table = nullptr;
    HRESULT opened = MAPI_E_NO_SUPPORT;
    switch (PROP_ID(tag)) {
        case PROP_ID(PR_CONTAINER_CONTENTS): opened = GetContentsTable(flags, &table); break;
        case PROP_ID(PR_CONTAINER_HIERARCHY): opened = GetHierarchyTable(flags, &table); break;
        case PROP_ID(PR_FOLDER_ASSOCIATED_CONTENTS): opened = GetContentsTable(flags | MAPI_ASSOCIATED, &table); break;
        default: break;
    }
    *object = table;
    return opened;
}

// ---- Entries --------------------------------------------------------------------------------------------------------

HRESULT FolderObject::OpenEntry(ULONG size, LPENTRYID entryId, LPCIID interfaceId, ULONG flags, ULONG* type,
                                LPUNKNOWN* object) {
    return m_store->OpenEntry(size, entryId, interfaceId, flags, type, object);
}

HRESULT FolderObject::GetMessageStatus(ULONG size, LPENTRYID entryId, ULONG, ULONG* status) {
    if (size == 0 || entryId == nullptr || status == nullptr) {
        return MAPI_E_INVALID_PARAMETER;
    }
    *status = 0;
    return S_OK;
}

HRESULT FolderObject::GetSearchCriteria(ULONG, LPSRestriction*, LPENTRYLIST*, ULONG*) {
    return MAPI_E_NOT_INITIALIZED;  // as published for a folder that is no search folder
}

// ---- What would change the store -------------------------------------------------------------------------------------

HRESULT FolderObject::SetSearchCriteria(LPSRestriction, LPENTRYLIST, ULONG) {
    return MAPI_E_NO_ACCESS;
}
HRESULT FolderObject::CreateMessage(LPCIID, ULONG, LPMESSAGE* message) {
    if (message != nullptr) {
        *message = nullptr;
    }
    return MAPI_E_NO_ACCESS;
}
HRESULT FolderObject::CopyMessages(LPENTRYLIST, LPCIID, LPVOID, ULONG_PTR, LPMAPIPROGRESS, ULONG) {
    return MAPI_E_NO_ACCESS;
}
HRESULT FolderObject::DeleteMessages(LPENTRYLIST, ULONG_PTR, LPMAPIPROGRESS, ULONG) {
    return MAPI_E_NO_ACCESS;
}
HRESULT FolderObject::CreateFolder(ULONG, LPTSTR, LPTSTR, LPCIID, ULONG, IMAPIFolder** folder) {
    if (folder != nullptr) {
        *folder = nullptr;
    }
    return MAPI_E_NO_ACCESS;
}
HRESULT FolderObject::CopyFolder(ULONG, LPENTRYID, LPCIID, LPVOID, LPTSTR, ULONG_PTR, LPMAPIPROGRESS, ULONG) {
    return MAPI_E_NO_ACCESS;
}
HRESULT FolderObject::DeleteFolder(ULONG, LPENTRYID, ULONG_PTR, LPMAPIPROGRESS, ULONG) {
    return MAPI_E_NO_ACCESS;
}
HRESULT FolderObject::SetReadFlags(LPENTRYLIST, ULONG_PTR, LPMAPIPROGRESS, ULONG) {
    return MAPI_E_NO_ACCESS;
}
HRESULT FolderObject::SetMessageStatus(ULONG, LPENTRYID, ULONG, ULONG, ULONG*) {
    return MAPI_E_NO_ACCESS;
}
HRESULT FolderObject::SaveContentsSort(LPSSortOrderSet, ULONG) {
    return MAPI_E_NO_SUPPORT;
}
HRESULT FolderObject::EmptyFolder(ULONG_PTR, LPMAPIPROGRESS, ULONG) {
    return MAPI_E_NO_ACCESS;
}

}  // namespace localmapi
