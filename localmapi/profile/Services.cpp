#include "localmapi/profile/Services.h"

#include "localmapi/base/Format.h"
#include "localmapi/profile/TextEscapes.h"
#include "localmapi/pst/ltp/Values.h"
#include "localmapi/pst/messaging/PropertyIds.h"
#include "localmapi/pst/messaging/Store.h"
#include "mapi/MapiFlags.h"
#include "mapi/MapiGuids.h"
#include "mapi/PropTags.h"
#include "platform/CodePage.h"
#include "platform/Paths.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <string_view>
#include <system_error>
#include <utility>

namespace localmapi::profile {

namespace {

enum class Comes : bool { WithTheService, WhenAskedFor };

struct ProviderKind {
    std::string_view service;
    std::string_view name;
    Comes comes;
    std::string_view display;
    ULONG resourceType;
    ULONG resourceFlags;
    const MAPIUID* storeKind;  // PR_MDB_PROVIDER; null for what is no store
    ULONG list;                // of the global section, for those that come with the service
};

struct ServiceKind {
    std::string_view name;
    std::string_view display;
    std::string_view entry;
    ULONG resourceFlags;
};

constexpr std::string_view kMailboxFile = "MSPST MS";
constexpr std::string_view kExchange = "MSEMS";
constexpr std::string_view kLibrary = "mapi32.dll";

constexpr ServiceKind kServices[] = {
    {kMailboxFile, "Personal Folders", "PSTServiceEntry", SERVICE_NO_PRIMARY_IDENTITY},
    {kExchange, "Exchange Server", "EMSCfg", 0},
};

constexpr ProviderKind kProviders[] = {
    {kMailboxFile, "MSPST MSP", Comes::WithTheService, "Personal Folders", MAPI_STORE_PROVIDER, 0,
     &kPersonalFoldersStore, PR_STORE_PROVIDERS},
    {kExchange, "EMS_MDB_private", Comes::WithTheService, "Exchange Message Store", MAPI_STORE_PROVIDER,
     STATUS_PRIMARY_IDENTITY, &kExchangePrivateStore, PR_STORE_PROVIDERS},
    {kExchange, "EMS_AB", Comes::WithTheService, "Exchange Address Book", MAPI_AB_PROVIDER, 0, nullptr,
     PR_AB_PROVIDERS},
    {kExchange, "EMS_MSX", Comes::WithTheService, "Exchange Transport", MAPI_TRANSPORT_PROVIDER, 0, nullptr,
     PR_TRANSPORT_PROVIDERS},
    {kExchange, "EMSDelegate", Comes::WhenAskedFor, "Exchange Message Store", MAPI_STORE_PROVIDER,
     STATUS_NO_DEFAULT_STORE, &kExchangeDelegateStore, 0},
};

// Ids that MSEMS has its own names for.
constexpr bool IsExchangeSetting(ULONG tag) noexcept {
    return PROP_ID(tag) >= PROP_ID(PR_PROFILE_VERSION) && PROP_ID(tag) <= 0x66FF;
}

CStringW Wide(std::string_view text) {
    return ToWide(text, CP_UTF8);
}

bool IsOfKind(const Service& service, std::string_view kind) {
    return IsSameName(service.section.Text(PR_SERVICE_NAME), Wide(kind));
}

Section& PlaceProvider(Profile& profile, Service& service, const ProviderKind& kind, WideView displayName) {
    Section section = profile.NewSection(NewUid());
    section.SetBinary(PR_PROVIDER_UID, BytesOf(section.Uid()));
    section.SetBinary(PR_SERVICE_UID, BytesOf(service.section.Uid()));
    section.SetText(PR_DISPLAY_NAME, displayName);
    section.SetText(PR_PROVIDER_DISPLAY, Wide(kind.display));
    section.SetText(PR_PROVIDER_DLL_NAME, Wide(kLibrary));
    section.SetLong(PR_RESOURCE_TYPE, static_cast<LONG>(kind.resourceType));
    section.SetLong(PR_RESOURCE_FLAGS, static_cast<LONG>(kind.resourceFlags));
    if (kind.storeKind != nullptr) {
        section.SetBinary(PR_MDB_PROVIDER, BytesOf(*kind.storeKind));
    }
    if (kind.list != 0) {
        profile.Enlist(kind.list, section.Uid());
    }
    return service.providers.emplace_back(std::move(section));
}

void SetValues(Section& section, std::span<const SPropValue> values) {
    for (const SPropValue& value : values) {
        if (!IsSecret(value.ulPropTag)) {
            section.Set(value);
        }
    }
}

}  // namespace

// ---- Services and providers -----------------------------------------------------------------------------------------

Result<MAPIUID> AddService(Profile& profile, WideView serviceName, WideView displayName) {
    const auto* const kind = std::ranges::find_if(
        kServices, [&](const ServiceKind& row) { return IsSameName(Wide(row.name), serviceName); });
    if (kind == std::end(kServices)) {
        return Error{ErrorCode::NotFound, "there is no service " + Quoted(serviceName) + "; local MAPI has "
                                              + std::string(kMailboxFile) + " and " + std::string(kExchange)};
    }
    const CStringW display = displayName.empty() ? Wide(kind->display) : CStringW(displayName);
    Service& service = profile.services.emplace_back(Service{profile.NewSection(NewUid()), {}});
    Section& section = service.section;
    section.SetText(PR_SERVICE_NAME, Wide(kind->name));
    section.SetText(PR_DISPLAY_NAME, display);
    section.SetText(PR_SERVICE_DLL_NAME, Wide(kLibrary));
    section.Set(NarrowValue(PR_SERVICE_ENTRY_NAME, kind->entry, *section.Memory()));
    section.SetLong(PR_RESOURCE_FLAGS, static_cast<LONG>(kind->resourceFlags));
    for (const ProviderKind& provider : kProviders) {
        if (provider.service == kind->name && provider.comes == Comes::WithTheService) {
            PlaceProvider(profile, service, provider, display);
        }
    }
    return section.Uid();
}

Status RemoveService(Profile& profile, const MAPIUID& service) {
    if (!profile.RemoveService(service)) {
        return Error{ErrorCode::NotFound, "the profile has no service " + HexText(BytesOf(service))};
    }
    const bool hasExchange = std::any_of(profile.services.begin(), profile.services.end(),
                                         [](const Service& left) { return IsOfKind(left, kExchange); });
    if (!hasExchange) {
        std::vector<ULONG> settings;
        for (const SPropValue& value : profile.global.Properties()) {
            if (IsExchangeSetting(value.ulPropTag)) {
                settings.push_back(PROP_ID(value.ulPropTag));
            }
        }
        for (const ULONG id : settings) {
            profile.global.Remove(id);
        }
        profile.global.SetLong(PR_PROFILE_CONFIG_FLAGS, 0);
    }
    return {};
}

Result<MAPIUID> AddProvider(Profile& profile, const MAPIUID& uid, WideView providerName,
                            std::span<const SPropValue> values) {
    Service* service = profile.FindService(uid);
    if (service == nullptr) {
        return Error{ErrorCode::NotFound, "the profile has no service " + HexText(BytesOf(uid))};
    }
    const auto* const kind = std::ranges::find_if(kProviders, [&](const ProviderKind& row) {
        return row.comes == Comes::WhenAskedFor && IsOfKind(*service, row.service)
               && IsSameName(Wide(row.name), providerName);
    });
    if (kind == std::end(kProviders)) {
        return Error{ErrorCode::NotFound, "the service " + Quoted(service->section.Text(PR_SERVICE_NAME))
                                              + " has no provider " + Quoted(providerName) + " to add"};
    }
    Section& section = PlaceProvider(profile, *service, *kind, Wide(kind->display));
    SetValues(section, values);
    section.SetBinary(PR_PROVIDER_UID, BytesOf(section.Uid()));
    return section.Uid();
}

bool IsSecret(ULONG tag) noexcept {
    static constexpr ULONG kFirstSecureId = 0x67F0;  // the profile properties that MAPI keeps hidden
    static constexpr ULONG kLastSecureId = 0x67FF;
    const ULONG id = PROP_ID(tag);
    return (id >= kFirstSecureId && id <= kLastSecureId) || id == PROP_ID(PR_PST_PW_SZ_OLD)
           || id == PROP_ID(PR_PST_PW_SZ_NEW);
}

// ---- Mailbox files --------------------------------------------------------------------------------------------------

namespace {

std::string AdviceFor(ErrorCode code) {
    switch (code) {
        case ErrorCode::NotFound: return "; name an existing mailbox file (.pst or .ost) with its full path";
        case ErrorCode::AccessDenied: return "; the user needs the right to read it";
        case ErrorCode::Busy: return "; close the program that has it open, and try again";
        case ErrorCode::Unsupported: return "; only mailbox files (.pst and .ost) can be added";
        case ErrorCode::Corrupt: return "; restore it from a backup, or repair it with the program that wrote it";
        default: return "; see that the disk or the network that it is on works";
    }
}

CStringW NameOf(pst::Store& store, const std::filesystem::path& file) {
    if (pst::PropertyContext* properties = store.Properties()) {
        auto value = properties->Read(pst::IdOf(PR_DISPLAY_NAME));
        const auto text = value ? pst::Text(*value, store.CodePage()) : Result<CStringW>(CStringW());
        if (text && !text->empty()) {
            return *text;
        }
    }
    return FromPath(file.stem());
}

Section* StoreSectionOf(Service& service) {
    const auto found = std::find_if(service.providers.begin(), service.providers.end(), [](const Section& provider) {
        return provider.Long(PR_RESOURCE_TYPE) == static_cast<LONG>(MAPI_STORE_PROVIDER);
    });
    return found == service.providers.end() ? nullptr : &*found;
}

// The last text of an id in the values.
std::optional<CStringW> TextIn(std::span<const SPropValue> values, ULONG tag) {
    std::optional<CStringW> text;
    for (const SPropValue& value : values) {
        if (PROP_ID(value.ulPropTag) != PROP_ID(tag)) {
            continue;
        }
        if (PROP_TYPE(value.ulPropTag) == PT_UNICODE) {
            text = value.Value.lpszW;
        } else if (PROP_TYPE(value.ulPropTag) == PT_STRING8) {
            text = ToWide(value.Value.lpszA, CP_ACP);
        }
    }
    return text;
}

}  // namespace

bool IsMailboxFileService(const Service& service) {
    return IsOfKind(service, kMailboxFile);
}

Result<StoreFacts> InspectMailboxFile(const std::filesystem::path& file) {
    pst::StoreOptions options;
    options.database.cacheBytes = std::size_t{1} << 20;  // only the first few pages are looked at
    auto store = pst::Store::Open(file, options);
    if (!store) {
        const Error& error = store.Failure();
        return Error{error.code, ToNarrow(FromPath(file), CP_UTF8) + ": " + error.text + AdviceFor(error.code)};
    }
    const auto& key = (*store)->Key();
    return StoreFacts{NameOf(**store, file), Bytes(key.begin(), key.end())};
}

std::filesystem::path MailboxFileOf(const Service& service, std::span<const SPropValue> values) {
    auto path = TextIn(values, PR_PST_PATH);
    for (const Section& provider : service.providers) {
        if (!path && provider.Find(PROP_ID(PR_PST_PATH)) != nullptr) {
            path = provider.Text(PR_PST_PATH);
        }
    }
    if (!path || path->empty()) {
        return {};
    }
    std::error_code error;
    const std::filesystem::path absolute = std::filesystem::absolute(ToPath(*path), error);
    return error ? ToPath(*path) : absolute.lexically_normal();
}

void ConfigureMailboxFile(Profile& profile, Service& service, const std::filesystem::path& file,
                          const StoreFacts& facts, std::span<const SPropValue> values) {
    Section* section = StoreSectionOf(service);
    if (section == nullptr) {
        section = &PlaceProvider(profile, service, kProviders[0], {});
    }
    SetValues(*section, values);
    const std::optional<CStringW> name = TextIn(values, PR_DISPLAY_NAME);
    section->SetText(PR_DISPLAY_NAME, name && !name->empty() ? *name : facts.displayName);
    section->SetText(PR_PST_PATH_W, FromPath(file));
    section->SetBinary(PR_RECORD_KEY, facts.recordKey);
    section->SetBinary(PR_PROVIDER_UID, BytesOf(section->Uid()));
    section->SetBinary(PR_MDB_PROVIDER, BytesOf(kPersonalFoldersStore));
    section->SetLong(PR_RESOURCE_TYPE, static_cast<LONG>(MAPI_STORE_PROVIDER));
}

// ---- Exchange accounts ----------------------------------------------------------------------------------------------

void ConfigureExchange(Profile& profile, Service& service, std::span<const SPropValue> values) {
    for (const SPropValue& value : values) {
        SetValues(IsExchangeSetting(value.ulPropTag) ? profile.global : service.section, {&value, 1});
    }
}

// ---- Stores ---------------------------------------------------------------------------------------------------------

std::vector<StoreEntry> StoresOf(const Profile& profile) {
    std::vector<StoreEntry> stores;
    for (const Section* section : profile.StoreProviders()) {
        StoreEntry entry{};
        entry.provider = section->Uid();
        entry.service = profile.ServiceOf(section->Uid())->section.Uid();
        entry.kind = section->Binary(PR_MDB_PROVIDER);
        entry.displayName = section->Text(PR_DISPLAY_NAME);
        entry.file = ToPath(section->Text(PR_PST_PATH));
        entry.recordKey = section->Binary(PR_RECORD_KEY);
        entry.isDefault = section->Bool(PR_DEFAULT_STORE);
        stores.push_back(std::move(entry));
    }
    const bool isMarked =
        std::any_of(stores.begin(), stores.end(), [](const StoreEntry& entry) { return entry.isDefault; });
    const auto first =
        std::find_if(stores.begin(), stores.end(), [](const StoreEntry& entry) { return !entry.file.empty(); });
    if (!isMarked && first != stores.end()) {
        first->isDefault = true;
    }
    return stores;
}

Status SetDefaultStore(Profile& profile, const MAPIUID& provider) {
    const Section* wanted = profile.FindProvider(provider);
    if (wanted == nullptr || wanted->Long(PR_RESOURCE_TYPE) != static_cast<LONG>(MAPI_STORE_PROVIDER)) {
        return Error{ErrorCode::NotFound, "the profile has no store " + HexText(BytesOf(provider))};
    }
    for (Service& service : profile.services) {
        for (Section& section : service.providers) {
            section.Remove(PROP_ID(PR_DEFAULT_STORE));
            if (section.Uid() == provider) {
                section.SetBool(PR_DEFAULT_STORE, true);
            }
        }
    }
    return {};
}

}  // namespace localmapi::profile
