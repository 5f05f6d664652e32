// IProviderAdmin: the providers of a service.
#include "localmapi/com/CallArguments.h"
#include "localmapi/profile/AdminTables.h"
#include "localmapi/profile/Administration.h"
#include "localmapi/profile/ProfileSection.h"
#include "localmapi/profile/Services.h"
#include "localmapi/profile/TextEscapes.h"
#include "localmapi/table/Table.h"
#include "mapi/MapiGuids.h"

#include <algorithm>
#include <span>
#include <utility>

namespace localmapi::profile {

namespace {

class ProviderAdmin final : public ComObject<IProviderAdmin> {
public:
    ProviderAdmin(ProfileStorage storage, CStringW profileName, const MAPIUID& service, SharedLock lock)
        : ComObject<IProviderAdmin>(std::move(lock)),
          m_storage(std::move(storage)),
          m_profileName(std::move(profileName)),
          m_service(service) {}

    HRESULT STDMETHODCALLTYPE GetLastError(HRESULT result, ULONG flags, LPMAPIERROR* error) override {
        return GiveLastError(result, flags, error);
    }

    HRESULT STDMETHODCALLTYPE GetProviderTable(ULONG flags, LPMAPITABLE* table) override {
        return Guarded([&]() -> HRESULT {
            if (table == nullptr) {
                return MAPI_E_INVALID_PARAMETER;
            }
            *table = nullptr;
            Result<Profile> profile = m_storage.Load(m_profileName);
            if (!profile) {
                return Fail(profile.Failure());
            }
            const Service* service = profile->FindService(m_service);
            if (service == nullptr) {
                return Fail({ErrorCode::NotFound, "the profile has no service " + HexText(BytesOf(m_service))});
            }
            *table = MakeTable(ProviderRows(*service), nullptr, flags, Lock()).Detach();
            return S_OK;
        });
    }

    // `uid` may lie anywhere, even where the caller got the service's identifier from: it is written last.
    HRESULT STDMETHODCALLTYPE CreateProvider(LPTSTR provider, ULONG count, LPSPropValue properties, ULONG_PTR,
                                             ULONG flags, MAPIUID* uid) override {
        return Guarded([&]() -> HRESULT {
            const std::span<const SPropValue> values(properties, properties == nullptr ? 0 : count);
            if (provider == nullptr || values.size() != count || !std::ranges::all_of(values, IsValid)) {
                return MAPI_E_INVALID_PARAMETER;
            }
            const CStringW name = CallText(provider, flags);
            MAPIUID made{};
            const HRESULT changed = Change([&](Profile& profile) -> Status {
                VX_TRY_ASSIGN(made, AddProvider(profile, m_service, name, values));
                return {};
            });
            if (SUCCEEDED(changed) && uid != nullptr) {
                *uid = made;
            }
            return changed;
        });
    }

    HRESULT STDMETHODCALLTYPE DeleteProvider(LPMAPIUID uid) override {
        return Guarded([&]() -> HRESULT {
            if (uid == nullptr) {
                return MAPI_E_INVALID_PARAMETER;
            }
            return Change([this, uid](Profile& profile) -> Status {
                const Service* service = profile.ServiceOf(*uid);
                if (service == nullptr || service->section.Uid() != m_service) {
                    return Error{ErrorCode::NotFound, "the service has no provider " + HexText(BytesOf(*uid))};
                }
                profile.RemoveProvider(*uid);
                return {};
            });
        });
    }

    HRESULT STDMETHODCALLTYPE OpenProfileSection(LPMAPIUID uid, LPCIID interfaceId, ULONG flags,
                                                 LPPROFSECT* section) override {
        return Guarded(
            [&] { return OpenSection(m_storage, m_profileName, uid, interfaceId, flags, Lock(), Failure(), section); });
    }

protected:
    bool Implements(REFIID interfaceId) const override { return interfaceId == IID_IProviderAdmin; }

private:
    HRESULT Change(const ProfileStorage::ChangeBody& body) {
        const Status changed = m_storage.Change(m_profileName, body);
        return changed ? S_OK : Fail(changed.Failure());
    }

    ProfileStorage m_storage;
    CStringW m_profileName;
    MAPIUID m_service;
};

}  // namespace

ComPtr<IProviderAdmin> MakeProviderAdmin(ProfileStorage storage, CStringW profileName, const MAPIUID& service,
                                         SharedLock lock) {
    return ComPtr<IProviderAdmin>::Adopt(
        MakeObject<ProviderAdmin>(std::move(storage), std::move(profileName), service, std::move(lock)).Detach());
}

}  // namespace localmapi::profile
