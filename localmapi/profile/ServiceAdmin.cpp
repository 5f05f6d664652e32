// IMsgServiceAdmin: the services of a profile.
#include "localmapi/com/CallArguments.h"
#include "localmapi/profile/AdminTables.h"
#include "localmapi/profile/Administration.h"
#include "localmapi/profile/ProfileSection.h"
#include "localmapi/profile/Services.h"
#include "localmapi/profile/TextEscapes.h"
#include "localmapi/table/Table.h"
#include "mapi/MapiGuids.h"
#include "mapi/PropTags.h"

#include <algorithm>
#include <span>
#include <string>
#include <utility>

namespace localmapi::profile {

namespace {

Error NoSuchService(const MAPIUID& uid) {
    return Error{ErrorCode::NotFound, "the profile has no service " + HexText(BytesOf(uid))};
}

// What MAPI calls a mailbox file that cannot be added.
HRESULT ResultOfMailboxFile(ErrorCode code) noexcept {
    const bool isNoSoundStore = code == ErrorCode::Unsupported || code == ErrorCode::Corrupt;
    return isNoSoundStore ? MAPI_E_CORRUPT_STORE : ResultOf(code);
}

class ServiceAdmin final : public ComObject<IMsgServiceAdmin> {
public:
    ServiceAdmin(ProfileStorage storage, CStringW profileName, SharedLock lock)
        : ComObject<IMsgServiceAdmin>(std::move(lock)),
          m_storage(std::move(storage)),
          m_profileName(std::move(profileName)) {}

    HRESULT STDMETHODCALLTYPE GetLastError(HRESULT result, ULONG flags, LPMAPIERROR* error) override {
        return GiveLastError(result, flags, error);
    }

    HRESULT STDMETHODCALLTYPE GetMsgServiceTable(ULONG flags, LPMAPITABLE* table) override {
        return Guarded([&] { return GiveTable(flags, table, ServiceRows); });
    }

    HRESULT STDMETHODCALLTYPE CreateMsgService(LPTSTR service, LPTSTR displayName, ULONG_PTR, ULONG flags) override {
        return Guarded([&]() -> HRESULT {
            if (service == nullptr) {
                return MAPI_E_INVALID_PARAMETER;
            }
            const CStringW name = CallText(service, flags);
            const CStringW display = CallText(displayName, flags);
            return Change([&](Profile& profile) -> Status {
                VX_TRY(AddService(profile, name, display));
                return {};
            });
        });
    }

    HRESULT STDMETHODCALLTYPE DeleteMsgService(LPMAPIUID uid) override {
        return Guarded([&]() -> HRESULT {
            if (uid == nullptr) {
                return MAPI_E_INVALID_PARAMETER;
            }
            return Change([uid](Profile& profile) { return RemoveService(profile, *uid); });
        });
    }

    HRESULT STDMETHODCALLTYPE CopyMsgService(LPMAPIUID, LPTSTR, LPCIID, LPCIID, LPVOID, ULONG_PTR, ULONG) override {
        return Guarded([&] { return Fail(MAPI_E_NO_SUPPORT, "services are not copied; make another one"); });
    }

    HRESULT STDMETHODCALLTYPE RenameMsgService(LPMAPIUID uid, ULONG flags, LPTSTR displayName) override {
        return Guarded([&]() -> HRESULT {
            const CStringW name = CallText(displayName, flags);
            if (uid == nullptr || name.empty()) {
                return MAPI_E_INVALID_PARAMETER;
            }
            return ChangeService(*uid,
                                 [&](Profile&, Service& service) { service.section.SetText(PR_DISPLAY_NAME, name); });
        });
    }

    HRESULT STDMETHODCALLTYPE ConfigureMsgService(LPMAPIUID uid, ULONG_PTR, ULONG, ULONG count,
                                                  LPSPropValue properties) override {
        return Guarded([&]() -> HRESULT {
            const std::span<const SPropValue> values(properties, properties == nullptr ? 0 : count);
            if (uid == nullptr || values.size() != count || !std::ranges::all_of(values, IsValid)) {
                return MAPI_E_INVALID_PARAMETER;
            }
            Result<Profile> profile = m_storage.Load(m_profileName);
            if (!profile) {
                return Fail(profile.Failure());
            }
            const Service* service = profile->FindService(*uid);
            if (service == nullptr) {
                return Fail(NoSuchService(*uid));
            }
            if (IsMailboxFileService(*service)) {
                return ConfigureFile(*uid, MailboxFileOf(*service, values), values);
            }
            return ChangeService(*uid, [values](Profile& changed, Service& configured) {
                ConfigureExchange(changed, configured, values);
            });
        });
    }

    HRESULT STDMETHODCALLTYPE OpenProfileSection(LPMAPIUID uid, LPCIID interfaceId, ULONG flags,
                                                 LPPROFSECT* section) override {
        return Guarded(
            [&] { return OpenSection(m_storage, m_profileName, uid, interfaceId, flags, Lock(), Failure(), section); });
    }

    HRESULT STDMETHODCALLTYPE MsgServiceTransportOrder(ULONG count, LPMAPIUID uids, ULONG) override {
        return Guarded([&]() -> HRESULT {
            if (count > 0 && uids == nullptr) {
                return MAPI_E_INVALID_PARAMETER;
            }
            return Change([list = std::span<const MAPIUID>(uids, count)](Profile& profile) {
                return SetTransportOrder(profile, list);
            });
        });
    }

    HRESULT STDMETHODCALLTYPE AdminProviders(LPMAPIUID uid, ULONG, LPPROVIDERADMIN* admin) override {
        return Guarded([&]() -> HRESULT {
            if (uid == nullptr || admin == nullptr) {
                return MAPI_E_INVALID_PARAMETER;
            }
            *admin = nullptr;
            Result<Profile> profile = m_storage.Load(m_profileName);
            if (!profile) {
                return Fail(profile.Failure());
            }
            if (profile->FindService(*uid) == nullptr) {
                return Fail(NoSuchService(*uid));
            }
            *admin = MakeProviderAdmin(m_storage, m_profileName, *uid, Lock()).Detach();
            return S_OK;
        });
    }

    HRESULT STDMETHODCALLTYPE SetPrimaryIdentity(LPMAPIUID uid, ULONG) override {
        return Guarded([&] { return Change([uid](Profile& profile) { return SetIdentity(profile, uid); }); });
    }

    HRESULT STDMETHODCALLTYPE GetProviderTable(ULONG flags, LPMAPITABLE* table) override {
        return Guarded(
            [&] { return GiveTable(flags, table, [](const Profile& profile) { return ProviderRows(profile); }); });
    }

protected:
    bool Implements(REFIID interfaceId) const override { return interfaceId == IID_IMsgServiceAdmin; }

private:
    HRESULT Change(const ProfileStorage::ChangeBody& body) {
        const Status changed = m_storage.Change(m_profileName, body);
        return changed ? S_OK : Fail(changed.Failure());
    }

    template <class Body>
    HRESULT ChangeService(const MAPIUID& uid, Body body) {
        return Change([&](Profile& profile) -> Status {
            Service* service = profile.FindService(uid);
            if (service == nullptr) {
                return NoSuchService(uid);
            }
            body(profile, *service);
            return {};
        });
    }

    // The file is looked at before the profiles are locked: it may lie on a slow network.
    HRESULT ConfigureFile(const MAPIUID& uid, const std::filesystem::path& file, std::span<const SPropValue> values) {
        if (file.empty()) {
            return Fail(MAPI_E_UNCONFIGURED, "the service has no mailbox file; configure it with PR_PST_PATH");
        }
        const Result<StoreFacts> facts = InspectMailboxFile(file);
        if (!facts) {
            return Fail(ResultOfMailboxFile(facts.Failure().code), facts.Failure().text);
        }
        return ChangeService(uid, [&](Profile& profile, Service& service) {
            ConfigureMailboxFile(profile, service, file, *facts, values);
        });
    }

    template <class Rows>
    HRESULT GiveTable(ULONG flags, IMAPITable** table, Rows rows) {
        if (table == nullptr) {
            return MAPI_E_INVALID_PARAMETER;
        }
        *table = nullptr;
        const Result<Profile> profile = m_storage.Load(m_profileName);
        if (!profile) {
            return Fail(profile.Failure());
        }
        *table = MakeTable(rows(*profile), nullptr, flags, Lock()).Detach();
        return S_OK;
    }

    // Those that are not named come behind those that are.
    static Status SetTransportOrder(Profile& profile, std::span<const MAPIUID> order) {
        for (const MAPIUID& uid : order) {
            const Section* provider = profile.FindProvider(uid);
            if (provider == nullptr || provider->Long(PR_RESOURCE_TYPE) != static_cast<LONG>(MAPI_TRANSPORT_PROVIDER)) {
                return Error{ErrorCode::NotFound, "the profile has no transport " + HexText(BytesOf(uid))};
            }
        }
        profile.MoveToFront(PR_TRANSPORT_PROVIDERS, order);
        return {};
    }

    // The service that tells who the user is; null: none does.
    static Status SetIdentity(Profile& profile, const MAPIUID* uid) {
        if (uid != nullptr) {
            const Service* chosen = profile.FindService(*uid);
            if (chosen == nullptr) {
                return NoSuchService(*uid);
            }
            const auto flags = static_cast<ULONG>(chosen->section.Long(PR_RESOURCE_FLAGS).value_or(0));
            if ((flags & SERVICE_NO_PRIMARY_IDENTITY) != 0) {
                return Error{ErrorCode::AccessDenied, "the service knows no identity of the user"};
            }
        }
        for (Service& service : profile.services) {
            const auto flags = static_cast<ULONG>(service.section.Long(PR_RESOURCE_FLAGS).value_or(0));
            const bool isChosen = uid != nullptr && service.section.Uid() == *uid;
            service.section.SetLong(PR_RESOURCE_FLAGS, static_cast<LONG>(isChosen ? flags | SERVICE_PRIMARY_IDENTITY
                                                                                  : flags & ~SERVICE_PRIMARY_IDENTITY));
        }
        return {};
    }

    ProfileStorage m_storage;
    CStringW m_profileName;
};

}  // namespace

ComPtr<IMsgServiceAdmin> MakeServiceAdmin(ProfileStorage storage, CStringW profileName, SharedLock lock) {
    return ComPtr<IMsgServiceAdmin>::Adopt(
        MakeObject<ServiceAdmin>(std::move(storage), std::move(profileName), std::move(lock)).Detach());
}

}  // namespace localmapi::profile
