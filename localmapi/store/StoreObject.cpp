#include "localmapi/store/StoreObject.h"

#include "localmapi/com/CallArguments.h"
#include "localmapi/props/Values.h"
#include "localmapi/table/Table.h"
#include "mapi/MapiFlags.h"
#include "mapi/MapiGuids.h"
#include "mapi/PropTags.h"
#include "platform/CodePage.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace localmapi {

namespace {

// What a store on a file can do that is only read.
constexpr ULONG kSupported = STORE_ENTRYID_UNIQUE | STORE_READONLY | STORE_SEARCH_OK | STORE_ATTACH_OK | STORE_OLE_OK
                             | STORE_MV_PROPS_OK | STORE_RTF_OK | STORE_RESTRICTION_OK | STORE_SORT_OK
                             | STORE_UNICODE_OK | STORE_LOCALSTORE;

// A text as a block of its own.
LPTSTR GiveText(WideView text, ULONG flags) {
    auto give = [](const void* bytes, std::size_t size) {
        auto block = MakeRoot<std::byte>(size);
        std::memcpy(block.get(), bytes, size);
        return reinterpret_cast<LPTSTR>(block.release());
    };
    if ((flags & MAPI_UNICODE) != 0) {
        const CStringW wide(text);
        return give(wide.c_str(), (wide.size() + 1) * sizeof(WCHAR));
    }
    const std::string narrow = ToNarrow(text, CP_ACP);
    return give(narrow.c_str(), narrow.size() + 1);
}

}  // namespace

StoreObject::StoreObject(std::unique_ptr<StoreSource> source, StorePlace place, SharedLock lock)
    : PropObject(nullptr, nullptr, source->Names(), std::move(lock)), m_store(source.get()), m_place(std::move(place)) {
    auto shared = std::make_shared<Identity>();
    shared->Set(PR_STORE_ENTRYID, m_place.entryId);
    shared->Set(PR_STORE_RECORD_KEY, m_store->Key());
    shared->Set(PR_MAPPING_SIGNATURE, m_store->Key());
    shared->Set(PR_STORE_SUPPORT_MASK, kSupported);
    m_shared = std::move(shared);

    m_own.Set(PR_ENTRYID, m_place.entryId);
    m_own.Set(PR_RECORD_KEY, m_store->Key());
    m_own.Set(PR_MDB_PROVIDER, m_place.provider);
    m_own.Set(PR_OBJECT_TYPE, MAPI_STORE);
    m_own.Set(PR_ACCESS, MAPI_ACCESS_READ);
    m_own.Set(PR_ACCESS_LEVEL, 0);
    TakeSource(std::move(source));
}

bool StoreObject::Implements(REFIID interfaceId) const {
    return interfaceId == IID_IMsgStore || PropObject::Implements(interfaceId);
}

bool StoreObject::Compute(ULONG id, ValueMemory& memory, SPropValue& value) {
    if (id == PROP_ID(PR_DISPLAY_NAME_W) && !m_place.displayName.empty()) {
        value = WideValue(PR_DISPLAY_NAME_W, m_place.displayName, memory);
        return true;
    }
    return m_own.Read(id, memory, value) || m_shared->Read(id, memory, value);
}

std::vector<ULONG> StoreObject::ComputedTags() {
    std::vector<ULONG> tags;
    m_own.AppendTags(tags);
    m_shared->AppendTags(tags);
    if (!m_place.displayName.empty()) {
        tags.push_back(PR_DISPLAY_NAME_W);
    }
    return tags;
}

bool StoreObject::IsFixed(ULONG) {
    return true;
}

std::shared_ptr<const Identity> StoreObject::IdentityOf(EntryNumber number, EntryNumber parent) {
    auto identity = std::make_shared<Identity>(*m_shared);
    identity->Set(PR_ENTRYID, m_store->EntryIdOf(number));
    identity->Set(PR_RECORD_KEY, m_store->EntryIdOf(number));
    identity->Set(PR_PARENT_ENTRYID, m_store->EntryIdOf(parent));
    return identity;
}

// ---- Entries --------------------------------------------------------------------------------------------------------

HRESULT StoreObject::Open(EntryKind kind, EntryNumber number, ComPtr<IUnknown>& object, ULONG& type) {
    const ComPtr<StoreObject> self(this);
    if (kind == EntryKind::Folder) {
        auto folder = m_store->OpenFolder(number);
        if (!folder) {
            return Fail(folder.Failure());
        }
        const auto identity = IdentityOf(number, (*folder)->Parent());
        object = ComPtr<IUnknown>(MakeObject<FolderObject>(*std::move(folder), self, identity).Get());
        type = MAPI_FOLDER;
        return S_OK;
    }
    auto message = m_store->OpenMessage(number);
    if (!message) {
        return Fail(message.Failure());
    }
    const auto identity = IdentityOf(number, m_store->ParentOf(number));
    object = ComPtr<IUnknown>(MakeObject<MessageObject>(*std::move(message), ComPtr<IUnknown>(this),
                                                        MessageOptions{identity, nullptr}, Lock())
                                  .Get());
    type = MAPI_MESSAGE;
    return S_OK;
}

HRESULT StoreObject::OpenEntry(ULONG size, LPENTRYID entryId, LPCIID interfaceId, ULONG flags, ULONG* type,
                               LPUNKNOWN* object) {
    if (object == nullptr) {
        return MAPI_E_INVALID_PARAMETER;
    }
    *object = nullptr;
    return Guarded([&] {
        Entry entry{EntryKind::Folder, m_store->TopFolder()};
        if (size > 0) {
            const ByteView bytes = ViewOf(size, entryId);
            const std::optional<Entry> known = m_store->EntryOf(bytes);
            if (!known) {
                static constexpr std::size_t kSmallest = sizeof(ULONG) + sizeof(MAPIUID);
                return bytes.Size() < kSmallest ? Fail(MAPI_E_INVALID_ENTRYID, "the entry id is too short to be one")
                                                : Fail(MAPI_E_UNKNOWN_ENTRYID, "the entry id is none of this store's");
            }
            entry = *known;
        }
        if ((flags & MAPI_MODIFY) != 0) {
            return Fail(MAPI_E_NO_ACCESS, "the store is open for reading only");
        }
        ComPtr<IUnknown> opened;
        ULONG openedType = 0;
        const HRESULT result = Open(entry.kind, entry.number, opened, openedType);
        if (FAILED(result)) {
            return result;
        }
        if (type != nullptr) {
            *type = openedType;
        }
        return GiveAs(opened, interfaceId, openedType == MAPI_FOLDER ? IID_IMAPIFolder : IID_IMessage, object);
    });
}

HRESULT StoreObject::CompareEntryIDs(ULONG firstSize, LPENTRYID first, ULONG secondSize, LPENTRYID second, ULONG,
                                     ULONG* result) {
    return CompareIds(ViewOf(firstSize, first), ViewOf(secondSize, second), result);
}

// ---- Receive folders ------------------------------------------------------------------------------------------------

HRESULT StoreObject::FindReceiveFolder(LPTSTR messageClass, ULONG flags, Bytes& entryId, CStringW& matched) {
    const auto folder = m_store->ReceiveFolder(CallText(messageClass, flags), matched);
    if (!folder) {
        return Fail(MAPI_E_NOT_FOUND, "the store names no folder for messages of this class");
    }
    entryId = m_store->EntryIdOf(*folder);
    return S_OK;
}

HRESULT StoreObject::GetReceiveFolder(LPTSTR messageClass, ULONG flags, ULONG* size, LPENTRYID* entryId,
                                      LPTSTR* explicitClass) {
    if (size == nullptr || entryId == nullptr) {
        return MAPI_E_INVALID_PARAMETER;
    }
    *size = 0;
    *entryId = nullptr;
    return Guarded([&] {
        Bytes bytes;
        CStringW matched;
        const HRESULT found = FindReceiveFolder(messageClass, flags, bytes, matched);
        if (FAILED(found)) {
            return found;
        }
        if (explicitClass != nullptr) {
            *explicitClass = GiveText(matched, flags);
        }
        GiveId(bytes, size, entryId);
        return static_cast<HRESULT>(S_OK);
    });
}

HRESULT StoreObject::GetReceiveFolderTable(ULONG flags, LPMAPITABLE* table) {
    if (table == nullptr) {
        return MAPI_E_INVALID_PARAMETER;
    }
    *table = nullptr;
    return Guarded([&] {
        *table = MakeTable(m_store->ReceiveFolders(), ComPtr<IUnknown>(this), flags, Lock()).Detach();
        return S_OK;
    });
}

HRESULT StoreObject::SetReceiveFolder(LPTSTR, ULONG, ULONG, LPENTRYID) {
    return MAPI_E_NO_ACCESS;
}

// ---- What nothing stands behind: a file that is only read never tells of changes, and nothing is sent from it --------

HRESULT StoreObject::Advise(ULONG, LPENTRYID, ULONG, LPMAPIADVISESINK sink, ULONG_PTR* connection) {
    if (sink == nullptr || connection == nullptr) {
        return MAPI_E_INVALID_PARAMETER;
    }
    return Guarded([&] {
        *connection = m_nextConnection++;
        return S_OK;
    });
}
HRESULT StoreObject::Unadvise(ULONG_PTR) {
    return S_OK;
}
HRESULT StoreObject::StoreLogoff(ULONG* flags) {
    if (flags == nullptr) {
        return MAPI_E_INVALID_PARAMETER;
    }
    *flags |= LOGOFF_COMPLETE;
    return S_OK;
}
HRESULT StoreObject::AbortSubmit(ULONG, LPENTRYID, ULONG) {
    return MAPI_E_NO_SUPPORT;
}
HRESULT StoreObject::GetOutgoingQueue(ULONG, LPMAPITABLE* table) {
    if (table != nullptr) {
        *table = nullptr;
    }
    return MAPI_E_NO_SUPPORT;
}
HRESULT StoreObject::SetLockState(LPMESSAGE, ULONG) {
    return MAPI_E_NO_SUPPORT;
}
HRESULT StoreObject::FinishedMsg(ULONG, ULONG, LPENTRYID) {
    return MAPI_E_NO_SUPPORT;
}
HRESULT StoreObject::NotifyNewMail(LPNOTIFICATION) {
    return MAPI_E_NO_SUPPORT;
}

}  // namespace localmapi
