#include "localmapi/profile/AdminTables.h"

#include "localmapi/table/MemoryRows.h"
#include "mapi/PropTags.h"
#include "platform/CodePage.h"

#include <span>

namespace localmapi::profile {

namespace {

constexpr ULONG kProfileColumns[] = {PR_DISPLAY_NAME, PR_DEFAULT_PROFILE};
constexpr ULONG kServiceColumns[] = {PR_INSTANCE_KEY,     PR_SERVICE_UID,        PR_SERVICE_NAME,  PR_DISPLAY_NAME,
                                     PR_SERVICE_DLL_NAME, PR_SERVICE_ENTRY_NAME, PR_RESOURCE_FLAGS};
constexpr ULONG kProviderColumns[] = {PR_INSTANCE_KEY,      PR_PROVIDER_UID,  PR_PROVIDER_DISPLAY, PR_DISPLAY_NAME,
                                      PR_PROVIDER_DLL_NAME, PR_RESOURCE_TYPE, PR_RESOURCE_FLAGS,   PR_PROVIDER_ORDINAL,
                                      PR_SERVICE_UID,       PR_SERVICE_NAME};

std::unique_ptr<MemoryRows> MakeRows(std::span<const ULONG> columns) {
    return std::make_unique<MemoryRows>(std::vector<ULONG>(columns.begin(), columns.end()), CP_ACP);
}

void AddProviders(MemoryRows& rows, const Service& service) {
    LONG ordinal = 0;
    for (Section row : service.providers) {
        row.SetBinary(PR_INSTANCE_KEY, BytesOf(row.Uid()));
        row.SetBinary(PR_PROVIDER_UID, BytesOf(row.Uid()));
        row.SetBinary(PR_SERVICE_UID, BytesOf(service.section.Uid()));
        row.SetText(PR_SERVICE_NAME, service.section.Text(PR_SERVICE_NAME));
        row.SetLong(PR_PROVIDER_ORDINAL, ordinal++);
        rows.Add(row.Properties());
    }
}

}  // namespace

std::unique_ptr<RowSource> ProfileRows(const std::vector<ProfileStorage::Listed>& profiles, WideView defaultName) {
    auto rows = MakeRows(kProfileColumns);
    const auto memory = std::make_shared<Arena>();
    for (const ProfileStorage::Listed& profile : profiles) {
        Section row(MAPIUID{}, memory);
        row.SetText(PR_DISPLAY_NAME, profile.name);
        row.SetBool(PR_DEFAULT_PROFILE, IsSameName(profile.name, defaultName));
        rows->Add(row.Properties());
    }
    return rows;
}

std::unique_ptr<RowSource> ServiceRows(const Profile& profile) {
    auto rows = MakeRows(kServiceColumns);
    for (const Service& service : profile.services) {
        Section row = service.section;
        row.SetBinary(PR_INSTANCE_KEY, BytesOf(row.Uid()));
        row.SetBinary(PR_SERVICE_UID, BytesOf(row.Uid()));
        rows->Add(row.Properties());
    }
    return rows;
}

std::unique_ptr<RowSource> ProviderRows(const Profile& profile) {
    auto rows = MakeRows(kProviderColumns);
    for (const Service& service : profile.services) {
        AddProviders(*rows, service);
    }
    return rows;
}

std::unique_ptr<RowSource> ProviderRows(const Service& service) {
    auto rows = MakeRows(kProviderColumns);
    AddProviders(*rows, service);
    return rows;
}

}  // namespace localmapi::profile
