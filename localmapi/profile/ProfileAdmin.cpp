// IProfAdmin: which profiles there are.
#include "localmapi/com/CallArguments.h"
#include "localmapi/profile/AdminTables.h"
#include "localmapi/profile/Administration.h"
#include "localmapi/table/Table.h"
#include "mapi/MapiGuids.h"

#include <memory>
#include <mutex>
#include <string>
#include <utility>

namespace localmapi::profile {

namespace {

class ProfileAdmin final : public ComObject<IProfAdmin> {
public:
    ProfileAdmin(ProfileStorage storage, SharedLock lock)
        : ComObject<IProfAdmin>(std::move(lock)), m_storage(std::move(storage)) {}

    HRESULT STDMETHODCALLTYPE GetLastError(HRESULT result, ULONG flags, LPMAPIERROR* error) override {
        return GiveLastError(result, flags, error);
    }

    HRESULT STDMETHODCALLTYPE GetProfileTable(ULONG flags, LPMAPITABLE* table) override {
        return Guarded([&]() -> HRESULT {
            if (table == nullptr) {
                return MAPI_E_INVALID_PARAMETER;
            }
            *table = nullptr;
            const auto profiles = m_storage.List();
            if (!profiles) {
                return Fail(profiles.Failure());
            }
            const Result<CStringW> standard = m_storage.DefaultName();
            *table =
                MakeTable(ProfileRows(*profiles, standard ? *standard : CStringW()), nullptr, flags, Lock()).Detach();
            return S_OK;
        });
    }

    HRESULT STDMETHODCALLTYPE CreateProfile(LPTSTR name, LPTSTR password, ULONG_PTR, ULONG flags) override {
        return Guarded([&]() -> HRESULT {
            if (!CallText(password, flags).empty()) {
                return Fail(MAPI_E_NO_SUPPORT, "profiles have no passwords; they are the user's own files");
            }
            return Named(name, flags, [this](WideView text) { return m_storage.Create(text); });
        });
    }

    HRESULT STDMETHODCALLTYPE DeleteProfile(LPTSTR name, ULONG flags) override {
        return Guarded([&] { return Named(name, flags, [this](WideView text) { return m_storage.Delete(text); }); });
    }

    HRESULT STDMETHODCALLTYPE ChangeProfilePassword(LPTSTR, LPTSTR, LPTSTR, ULONG) override {
        return Guarded([&] { return Fail(MAPI_E_NO_SUPPORT, "profiles have no passwords"); });
    }

    HRESULT STDMETHODCALLTYPE CopyProfile(LPTSTR from, LPTSTR, LPTSTR to, ULONG_PTR, ULONG flags) override {
        return Guarded([&] {
            return Named(to, flags, [&](WideView text) { return m_storage.Copy(CallText(from, flags), text); });
        });
    }

    HRESULT STDMETHODCALLTYPE RenameProfile(LPTSTR from, LPTSTR, LPTSTR to, ULONG_PTR, ULONG flags) override {
        return Guarded([&] {
            return Named(to, flags, [&](WideView text) { return m_storage.Rename(CallText(from, flags), text); });
        });
    }

    HRESULT STDMETHODCALLTYPE SetDefaultProfile(LPTSTR name, ULONG flags) override {
        return Guarded([&] { return Done(m_storage.SetDefault(CallText(name, flags))); });
    }

    HRESULT STDMETHODCALLTYPE AdminServices(LPTSTR name, LPTSTR, ULONG_PTR, ULONG flags,
                                            LPSERVICEADMIN* admin) override {
        return Guarded([&]() -> HRESULT {
            if (admin == nullptr) {
                return MAPI_E_INVALID_PARAMETER;
            }
            *admin = nullptr;
            const Result<Profile> profile = m_storage.Load(CallText(name, flags));
            if (!profile) {
                return Fail(profile.Failure());
            }
            *admin = MakeServiceAdmin(m_storage, profile->name, Lock()).Detach();
            return S_OK;
        });
    }

protected:
    bool Implements(REFIID interfaceId) const override { return interfaceId == IID_IProfAdmin; }

private:
    HRESULT Done(const Status& status) { return status ? S_OK : Fail(status.Failure()); }

    // Runs what has to have a name, which a profile could have.
    template <class Body>
    HRESULT Named(LPTSTR name, ULONG flags, Body body) {
        const CStringW text = CallText(name, flags);
        if (text.empty() || text.size() > ProfileStorage::kLongestName) {
            return Fail(MAPI_E_INVALID_PARAMETER,
                        "a profile's name has 1 to " + std::to_string(ProfileStorage::kLongestName) + " characters");
        }
        return Done(body(text));
    }

    ProfileStorage m_storage;
};

}  // namespace

ComPtr<IProfAdmin> MakeProfileAdmin(ProfileStorage storage) {
    const SharedLock lock = std::make_shared<std::recursive_mutex>();
    return ComPtr<IProfAdmin>::Adopt(MakeObject<ProfileAdmin>(std::move(storage), lock).Detach());
}

}  // namespace localmapi::profile
