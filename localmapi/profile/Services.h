// The services that a profile can have and what each is made of:
//     MSPST MS   a store in a mailbox file (.pst, .ost)
//     MSEMS      an Exchange account: can be made, configured and removed, but its mailboxes are not reached yet
// Operations change a profile in memory. One thread at a time.
#pragma once

#include "localmapi/base/Result.h"
#include "localmapi/profile/Profile.h"

#include <filesystem>
#include <optional>
#include <span>
#include <vector>

namespace localmapi::profile {

// Adds a service with the providers that it comes with. An empty display name is the service's own. NotFound, with the
// names that there are in the text, for another service.
Result<MAPIUID> AddService(Profile& profile, WideView serviceName, WideView displayName);

// The last Exchange account takes the settings along that it has in the global section. NotFound.
Status RemoveService(Profile& profile, const MAPIUID& service);

// Adds a provider to a service: "EMSDelegate", another's mailbox, to MSEMS. `values` go into its section. It is not put
// into PR_STORE_PROVIDERS: who makes it does that, through the global section. NotFound for another name or no service.
Result<MAPIUID> AddProvider(Profile& profile, const MAPIUID& service, WideView providerName,
                            std::span<const SPropValue> values);

// Passwords, which are not kept in profiles: the ids that MAPI keeps for secrets, and those of mailbox files.
bool IsSecret(ULONG tag) noexcept;

// ---- Mailbox files --------------------------------------------------------------------------------------------------

bool IsMailboxFileService(const Service& service);

// What opening a file tells about the store in it.
struct StoreFacts {
    CStringW displayName;  // the file's own name when the store has none
    Bytes recordKey;
};

// Failures as of Store::Open, with file, reason and advice in the text.
Result<StoreFacts> InspectMailboxFile(const std::filesystem::path& file);

// The path that configuring a mailbox file's service names: in PR_PST_PATH of either width, else the one it has.
// Absolute. Empty when there is none.
std::filesystem::path MailboxFileOf(const Service& service, std::span<const SPropValue> values);

// Puts the file and what it told into the service's provider. A name in `values` stands above the store's own.
void ConfigureMailboxFile(Profile& profile, Service& service, const std::filesystem::path& file,
                          const StoreFacts& facts, std::span<const SPropValue> values);

// ---- Exchange accounts ----------------------------------------------------------------------------------------------

// Account and server (PR_PROFILE_UNRESOLVED_NAME and _SERVER) and what else MSEMS has names for go into the global
// section, other properties into the service's.
void ConfigureExchange(Profile& profile, Service& service, std::span<const SPropValue> values);

// ---- Stores, for a session ------------------------------------------------------------------------------------------

struct StoreEntry {
    MAPIUID provider;
    MAPIUID service;
    ByteView kind;  // PR_MDB_PROVIDER
    CStringW displayName;
    std::filesystem::path file;  // empty: not configured, or no store in a file
    ByteView recordKey;          // of the store that was in the file at configuring
    bool isDefault = false;
};

// The stores of a profile in their order. The default one is the one that SetDefaultStore marked, else the first in a
// file. Views borrow from the profile.
std::vector<StoreEntry> StoresOf(const Profile& profile);

// Marks a store as the default and takes the mark from the others. NotFound.
Status SetDefaultStore(Profile& profile, const MAPIUID& provider);

}  // namespace localmapi::profile
