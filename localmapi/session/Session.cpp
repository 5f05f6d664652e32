#include "localmapi/session/Session.h"

#include "localmapi/com/CallArguments.h"
#include "localmapi/com/ComObject.h"
#include "localmapi/profile/Administration.h"
#include "localmapi/profile/ProfileSection.h"
#include "localmapi/profile/ProfileStorage.h"
#include "localmapi/profile/Services.h"
#include "localmapi/session/AddressBook.h"
#include "localmapi/session/StoreRows.h"
#include "localmapi/table/Table.h"
#include "mapi/MapiFlags.h"
#include "mapi/MapiGuids.h"
#include "mapi/PropTags.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace localmapi {

namespace {

class Session final : public ComObject<IMAPISession> {
public:
    explicit Session(CStringW profileName)
        : ComObject(std::make_shared<std::recursive_mutex>()), m_profileName(std::move(profileName)) {}

    HRESULT STDMETHODCALLTYPE GetLastError(HRESULT result, ULONG flags, LPMAPIERROR* error) override {
        return GiveLastError(result, flags, error);
    }

    HRESULT STDMETHODCALLTYPE GetMsgStoresTable(ULONG flags, LPMAPITABLE* table) override;
    HRESULT STDMETHODCALLTYPE OpenMsgStore(ULONG_PTR window, ULONG size, LPENTRYID entryId, LPCIID interfaceId,
                                           ULONG flags, LPMDB* store) override;
    HRESULT STDMETHODCALLTYPE OpenAddressBook(ULONG_PTR window, LPCIID interfaceId, ULONG flags,
                                              LPADRBOOK* book) override;
    HRESULT STDMETHODCALLTYPE OpenProfileSection(LPMAPIUID uid, LPCIID interfaceId, ULONG flags,
                                                 LPPROFSECT* section) override;
    HRESULT STDMETHODCALLTYPE GetStatusTable(ULONG flags, LPMAPITABLE* table) override;
    HRESULT STDMETHODCALLTYPE OpenEntry(ULONG size, LPENTRYID entryId, LPCIID interfaceId, ULONG flags, ULONG* type,
                                        LPUNKNOWN* object) override;
    HRESULT STDMETHODCALLTYPE CompareEntryIDs(ULONG firstSize, LPENTRYID first, ULONG secondSize, LPENTRYID second,
                                              ULONG flags, ULONG* result) override;
    HRESULT STDMETHODCALLTYPE EnumAdrTypes(ULONG flags, ULONG* count, LPTSTR** types) override;
    HRESULT STDMETHODCALLTYPE QueryIdentity(ULONG* size, LPENTRYID* entryId) override;
    HRESULT STDMETHODCALLTYPE Logoff(ULONG_PTR window, ULONG flags, ULONG reserved) override;
    HRESULT STDMETHODCALLTYPE SetDefaultStore(ULONG flags, ULONG size, LPENTRYID entryId) override;
    HRESULT STDMETHODCALLTYPE AdminServices(ULONG flags, LPSERVICEADMIN* services) override;

    // Nothing here ever changes of itself, and there are no dialogs, forms or options.
    HRESULT STDMETHODCALLTYPE Advise(ULONG, LPENTRYID, ULONG, LPMAPIADVISESINK, ULONG_PTR*) override {
        return MAPI_E_NO_SUPPORT;
    }
    HRESULT STDMETHODCALLTYPE Unadvise(ULONG_PTR) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE MessageOptions(ULONG_PTR, ULONG, LPTSTR, LPMESSAGE) override { return MAPI_E_NO_SUPPORT; }
    HRESULT STDMETHODCALLTYPE QueryDefaultMessageOpt(LPTSTR, ULONG, ULONG*, LPSPropValue*) override {
        return MAPI_E_NO_SUPPORT;
    }
    HRESULT STDMETHODCALLTYPE ShowForm(ULONG_PTR, LPMDB, LPMAPIFOLDER, LPCIID, ULONG, LPMESSAGE, ULONG, ULONG, ULONG,
                                       ULONG, LPSTR) override {
        return MAPI_E_NO_SUPPORT;
    }
    HRESULT STDMETHODCALLTYPE PrepareForm(LPCIID, LPMESSAGE, ULONG*) override { return MAPI_E_NO_SUPPORT; }

protected:
    bool Implements(REFIID interfaceId) const override { return interfaceId == IID_IMAPISession; }

private:
    // Runs a method's body as long as nobody has logged off.
    template <class Body>
    HRESULT InSession(Body&& body) {
        return Guarded([&]() -> HRESULT { return m_isLoggedOff ? MAPI_E_END_OF_SESSION : body(); });
    }

    // The same with the profile's stores as the profile has them now.
    template <class Body>
    HRESULT WithStores(Body&& body) {
        return InSession([&]() -> HRESULT {
            auto profile = m_storage.Load(m_profileName);
            if (!profile) {
                return Fail(profile.Failure());
            }
            return body(FileStoresOf(*profile));
        });
    }

    HRESULT GiveStore(const ProfileStore& store, LPCIID interfaceId, LPUNKNOWN* object);

    profile::ProfileStorage m_storage;
    CStringW m_profileName;
    bool m_isLoggedOff = false;
};

// ---- Stores ---------------------------------------------------------------------------------------------------------

HRESULT Session::GetMsgStoresTable(ULONG flags, LPMAPITABLE* table) {
    if (table == nullptr) {
        return MAPI_E_INVALID_PARAMETER;
    }
    *table = nullptr;
    return WithStores([&](const std::vector<ProfileStore>& stores) -> HRESULT {
        *table = MakeTable(StoreRows(stores), ComPtr<IUnknown>(this), flags, Lock()).Detach();
        return S_OK;
    });
}

HRESULT Session::GiveStore(const ProfileStore& store, LPCIID interfaceId, LPUNKNOWN* object) {
    auto opened = OpenStore(store);
    if (!opened) {
        return Fail(opened.Failure());
    }
    return GiveAs(ComPtr<IUnknown>(opened->Get()), interfaceId, IID_IMsgStore, object);
}

HRESULT Session::OpenMsgStore(ULONG_PTR, ULONG size, LPENTRYID entryId, LPCIID interfaceId, ULONG, LPMDB* store) {
    if (store == nullptr || size == 0 || entryId == nullptr) {
        return MAPI_E_INVALID_PARAMETER;
    }
    *store = nullptr;
    return WithStores([&](const std::vector<ProfileStore>& stores) -> HRESULT {
        const ProfileStore* found = FindStore(stores, ViewOf(size, entryId));
        if (found == nullptr) {
            return Fail(MAPI_E_UNKNOWN_ENTRYID, "the profile has no store with this entry id");
        }
        IUnknown* object = nullptr;
        const HRESULT opened = GiveStore(*found, interfaceId, &object);
        *store = static_cast<IMsgStore*>(object);
        return opened;
    });
}

HRESULT Session::SetDefaultStore(ULONG, ULONG size, LPENTRYID entryId) {
    return WithStores([&](const std::vector<ProfileStore>& stores) -> HRESULT {
        const ProfileStore* chosen = FindStore(stores, ViewOf(size, entryId));
        if (chosen == nullptr) {
            return Fail(MAPI_E_NOT_FOUND, "the profile has no store with this entry id");
        }
        const Status changed = m_storage.Change(m_profileName, [&](profile::Profile& profile) {
            return profile::SetDefaultStore(profile, chosen->provider);
        });
        return changed ? S_OK : Fail(changed.Failure());
    });
}

// ---- Entries --------------------------------------------------------------------------------------------------------

HRESULT Session::OpenEntry(ULONG size, LPENTRYID entryId, LPCIID interfaceId, ULONG flags, ULONG* type,
                           LPUNKNOWN* object) {
    if (object == nullptr) {
        return MAPI_E_INVALID_PARAMETER;
    }
    *object = nullptr;
    // The book answers without a look into the profile: senders of mail are mostly one-off recipients.
    const ByteView bytes = ViewOf(size, entryId);
    const HRESULT asked =
        InSession([&] { return GiveAddressEntry(bytes, interfaceId, ComPtr<IUnknown>(this), Lock(), type, object); });
    if (asked != MAPI_E_UNKNOWN_ENTRYID) {
        return asked;
    }
    return WithStores([&](const std::vector<ProfileStore>& stores) -> HRESULT {
        if (const ProfileStore* store = FindStore(stores, bytes)) {
            if (type != nullptr) {
                *type = MAPI_STORE;
            }
            return GiveStore(*store, interfaceId, object);
        }
        if (const ProfileStore* store = FindStoreOfEntry(stores, bytes)) {
            auto opened = OpenStore(*store);
            return opened ? (*opened)->OpenEntry(size, entryId, interfaceId, flags, type, object)
                          : Fail(opened.Failure());
        }
        return Fail(MAPI_E_UNKNOWN_ENTRYID, "neither a store of the profile nor the address book knows this entry id");
    });
}

HRESULT Session::CompareEntryIDs(ULONG firstSize, LPENTRYID first, ULONG secondSize, LPENTRYID second, ULONG,
                                 ULONG* result) {
    return CompareIds(ViewOf(firstSize, first), ViewOf(secondSize, second), result);
}

// ---- Address book, profile, status ----------------------------------------------------------------------------------

HRESULT Session::OpenAddressBook(ULONG_PTR, LPCIID interfaceId, ULONG, LPADRBOOK* book) {
    if (book == nullptr) {
        return MAPI_E_INVALID_PARAMETER;
    }
    *book = nullptr;
    if (interfaceId != nullptr && *interfaceId != IID_IAddrBook && *interfaceId != IID_IMAPIProp) {
        return MAPI_E_INTERFACE_NOT_SUPPORTED;
    }
    return InSession([&]() -> HRESULT {
        *book = MakeAddressBook(ComPtr<IUnknown>(this), Lock()).Detach();
        return S_OK;
    });
}

HRESULT Session::OpenProfileSection(LPMAPIUID uid, LPCIID interfaceId, ULONG flags, LPPROFSECT* section) {
    if (section != nullptr) {
        *section = nullptr;
    }
    return InSession([&] {
        return profile::OpenSection(m_storage, m_profileName, uid, interfaceId, flags, Lock(), Failure(), section);
    });
}

HRESULT Session::AdminServices(ULONG, LPSERVICEADMIN* services) {
    if (services == nullptr) {
        return MAPI_E_INVALID_PARAMETER;
    }
    *services = nullptr;
    return InSession([&]() -> HRESULT {
        *services = profile::MakeServiceAdmin(m_storage, m_profileName, Lock()).Detach();
        return S_OK;
    });
}

HRESULT Session::GetStatusTable(ULONG flags, LPMAPITABLE* table) {
    if (table == nullptr) {
        return MAPI_E_INVALID_PARAMETER;
    }
    *table = nullptr;
    // Every store is a resource; there are no transports, and nothing to be set up or flushed.
    return WithStores([&](const std::vector<ProfileStore>& stores) -> HRESULT {
        *table = MakeTable(StoreRows(stores), ComPtr<IUnknown>(this), flags, Lock()).Detach();
        return S_OK;
    });
}

HRESULT Session::EnumAdrTypes(ULONG, ULONG* count, LPTSTR** types) {
    if (count == nullptr || types == nullptr) {
        return MAPI_E_INVALID_PARAMETER;
    }
    *count = 0;  // nothing is sent from here, so there is no way to address anybody
    *types = nullptr;
    return S_OK;
}

HRESULT Session::QueryIdentity(ULONG* size, LPENTRYID* entryId) {
    if (size == nullptr || entryId == nullptr) {
        return MAPI_E_INVALID_PARAMETER;
    }
    *size = 0;
    *entryId = nullptr;
    return MAPI_W_NO_SERVICE;
}

HRESULT Session::Logoff(ULONG_PTR, ULONG, ULONG) {
    return Guarded([&]() -> HRESULT {
        m_isLoggedOff = true;
        return S_OK;
    });
}

}  // namespace

HRESULT OpenSession(WideView profileName, ComPtr<IMAPISession>& session, std::string& problem) {
    const profile::ProfileStorage storage;
    CStringW name(profileName);
    if (name.empty()) {
        auto chosen = storage.DefaultName();
        if (!chosen) {
            problem = chosen.Failure().text;
            return MAPI_E_LOGON_FAILED;
        }
        name = *std::move(chosen);
    }
    const auto profile = storage.Load(name);
    if (!profile) {
        problem = profile.Failure().text;
        return profile.IsNotFound() ? MAPI_E_LOGON_FAILED : ResultOf(profile.Failure().code);
    }
    session = ComPtr<IMAPISession>(MakeObject<Session>(profile->name).Get());
    return S_OK;
}

}  // namespace localmapi
