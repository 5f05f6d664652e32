#include "localmapi/session/StoreRows.h"

#include "localmapi/profile/Services.h"
#include "localmapi/pst/source/OpenStoreSource.h"
#include "localmapi/session/ProblemLog.h"
#include "localmapi/store/EntryIds.h"
#include "mapi/MapiFlags.h"
#include "mapi/PropTags.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>

namespace localmapi {

namespace {

// What follows the flags in the entry ids of a store's folders and messages: [MS-PST] 2.4.3.2.
constexpr std::size_t kKeyAt = 4;
constexpr std::size_t kKeySize = 16;

Bytes Copied(ByteView bytes) {
    return Bytes(bytes.Span().begin(), bytes.Span().end());
}

bool IsSame(ByteView one, ByteView other) {
    return one.Size() == other.Size() && std::equal(one.Span().begin(), one.Span().end(), other.Span().begin());
}

std::string Utf8(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return std::string(text.begin(), text.end());
}

}  // namespace

std::vector<ProfileStore> FileStoresOf(const profile::Profile& profile) {
    std::vector<ProfileStore> stores;
    for (const profile::StoreEntry& entry : profile::StoresOf(profile)) {
        if (!entry.file.empty()) {
            stores.push_back({entry.provider, entry.file, entry.displayName, Copied(entry.recordKey),
                              PstStoreEntryId(entry.file), entry.isDefault});
        }
    }
    return stores;
}

const ProfileStore* FindStore(const std::vector<ProfileStore>& stores, ByteView storeEntryId) {
    const auto path = PathOfStoreEntryId(storeEntryId);
    const auto found = std::find_if(stores.begin(), stores.end(), [&](const ProfileStore& store) {
        return IsSame(store.entryId, storeEntryId) || (path && store.file == *path);
    });
    return found == stores.end() ? nullptr : &*found;
}

const ProfileStore* FindStoreOfEntry(const std::vector<ProfileStore>& stores, ByteView entryId) {
    const ByteView key = entryId.Part(kKeyAt, kKeySize);
    const auto found = std::find_if(stores.begin(), stores.end(), [&](const ProfileStore& store) {
        return key.Size() == kKeySize && IsSame(store.recordKey, key);
    });
    return found == stores.end() ? nullptr : &*found;
}

std::unique_ptr<RowSource> StoreRows(const std::vector<ProfileStore>& stores) {
    static constexpr const auto& kProviderDisplay = "Outlook Data File"_w;
    auto rows = std::make_unique<MemoryRows>(std::vector<ULONG>{
        PR_DEFAULT_STORE, PR_DISPLAY_NAME_W, PR_PROVIDER_DISPLAY_W, PR_ENTRYID, PR_MDB_PROVIDER, PR_RECORD_KEY,
        PR_INSTANCE_KEY, PR_OBJECT_TYPE, PR_RESOURCE_TYPE, PR_RESOURCE_FLAGS, PR_PROVIDER_UID, PR_STATUS_CODE});
    for (const ProfileStore& store : stores) {
        Arena memory;
        const ULONG flags = store.isDefault ? STATUS_DEFAULT_STORE | STATUS_PRIMARY_STORE : STATUS_SECONDARY_STORE;
        const SPropValue values[] = {
            BoolValue(PR_DEFAULT_STORE, store.isDefault),
            WideValue(PR_DISPLAY_NAME_W, store.displayName, memory),
            WideValue(PR_PROVIDER_DISPLAY_W, kProviderDisplay, memory),
            BinaryValue(PR_ENTRYID, store.entryId, memory),
            BinaryValue(PR_MDB_PROVIDER, PstProviderBytes(), memory),
            BinaryValue(PR_RECORD_KEY, store.recordKey, memory),
            BinaryValue(PR_INSTANCE_KEY, profile::BytesOf(store.provider), memory),
            LongValue(PR_OBJECT_TYPE, MAPI_STORE),
            LongValue(PR_RESOURCE_TYPE, MAPI_STORE_PROVIDER),
            LongValue(PR_RESOURCE_FLAGS, static_cast<LONG>(flags)),
            BinaryValue(PR_PROVIDER_UID, profile::BytesOf(store.provider), memory),
            LongValue(PR_STATUS_CODE, static_cast<LONG>(STATUS_AVAILABLE)),
        };
        rows->Add(values);
    }
    return rows;
}

Result<ComPtr<StoreObject>> OpenStore(const ProfileStore& store) {
    pst::StoreOptions options;
    options.database.sink = ProblemLogFor(store.file);
    SharedLock lock = std::make_shared<std::recursive_mutex>();
    auto source = pst::OpenStoreSource(store.file, options, lock);
    if (!source) {
        return Error{source.Failure().code, Utf8(store.file) + ": " + source.Failure().text};
    }
    StorePlace place{store.entryId, Copied(PstProviderBytes()), store.displayName};
    return MakeObject<StoreObject>(*std::move(source), std::move(place), std::move(lock));
}

}  // namespace localmapi
