// The message stores of a profile, as its table lists them and as they are opened. One thread at a time.
#pragma once

#include "localmapi/base/Result.h"
#include "localmapi/profile/Profile.h"
#include "localmapi/store/StoreObject.h"
#include "localmapi/table/MemoryRows.h"
#include "platform/WideText.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <vector>

namespace localmapi {

struct ProfileStore {
    MAPIUID provider;  // its section in the profile
    std::filesystem::path file;
    CStringW displayName;
    Bytes recordKey;
    Bytes entryId;
    bool isDefault = false;
};

// The stores in files, in the profile's order. Services without a file, and those that this system does not open,
// contribute none.
std::vector<ProfileStore> FileStoresOf(const profile::Profile& profile);

// Null when the profile has no such store: by its own entry id, wrapped or not, or by the key that the entry ids of its
// folders and messages carry.
const ProfileStore* FindStore(const std::vector<ProfileStore>& stores, ByteView storeEntryId);
const ProfileStore* FindStoreOfEntry(const std::vector<ProfileStore>& stores, ByteView entryId);

std::unique_ptr<RowSource> StoreRows(const std::vector<ProfileStore>& stores);

// NotFound, Busy, AccessDenied, Unsupported, Corrupt or ReadFailed, with the file in the text.
Result<ComPtr<StoreObject>> OpenStore(const ProfileStore& store);

}  // namespace localmapi
