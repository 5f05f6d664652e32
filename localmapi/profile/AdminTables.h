// The rows of the administrators' tables: profiles, services and providers as they were when the table was asked for.
// One thread at a time.
#pragma once

#include "localmapi/model/RowSource.h"
#include "localmapi/profile/Profile.h"
#include "localmapi/profile/ProfileStorage.h"

#include <memory>
#include <vector>

namespace localmapi::profile {

// PR_DISPLAY_NAME and PR_DEFAULT_PROFILE of each. Damaged profiles are among them: logging on tells what is wrong.
std::unique_ptr<RowSource> ProfileRows(const std::vector<ProfileStorage::Listed>& profiles, WideView defaultName);

// A row is its section, and PR_SERVICE_UID.
std::unique_ptr<RowSource> ServiceRows(const Profile& profile);

// A row is its section, with PR_PROVIDER_UID, and the service's PR_SERVICE_UID and PR_SERVICE_NAME. Those of all
// services, or of one.
std::unique_ptr<RowSource> ProviderRows(const Profile& profile);
std::unique_ptr<RowSource> ProviderRows(const Service& service);

}  // namespace localmapi::profile
