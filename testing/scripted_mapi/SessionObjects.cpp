#include "testing/scripted_mapi/SessionObjects.h"

#include "mapi/MapiCodes.h"
#include "mapi/PropTags.h"
#include "testing/StubAdminInterfaces.h"
#include "testing/scripted_mapi/AdminObjects.h"
#include "testing/scripted_mapi/PropObject.h"
#include "testing/scripted_mapi/StoreObjects.h"

namespace scripted_mapi {

namespace {

using namespace vx_testing;

Bytes IdBytes(ULONG size, const ENTRYID* entryId) {
    const auto* bytes = reinterpret_cast<const BYTE*>(entryId);
    return entryId == nullptr ? Bytes() : Bytes(bytes, bytes + size);
}

class MailUser final : public PropObject<StubMailUser> {
public:
    MailUser(const std::shared_ptr<Context>& context, std::shared_ptr<Bag> bag)
        : PropObject(context, "IMailUser", std::move(bag)) {}
};

// The entry with an id, of any list of the profile.
HRESULT OpenMailUser(const std::shared_ptr<Context>& context, const std::shared_ptr<ProfileModel>& profile,
                     const Bytes& id, ULONG* objectType, IUnknown** object) {
    for (const auto& list : profile->addressLists) {
        for (Bag& entry : list->entries) {
            if (entry.BytesOf(PR_ENTRYID) == id) {
                *object = new MailUser(context, std::shared_ptr<Bag>(list, &entry));
                *objectType = MAPI_MAILUSER;
                return S_OK;
            }
        }
    }
    return MAPI_E_NOT_FOUND;
}

// An address list, or the root of all lists, which has no entries.
class ABContainer final : public PropObject<StubABContainer> {
public:
    ABContainer(const std::shared_ptr<Context>& context, std::shared_ptr<ProfileModel> profile,
                std::shared_ptr<AddressListModel> list)
        : PropObject(context, "IABContainer", std::shared_ptr<Bag>(list, &list->row)),
          m_profile(std::move(profile)),
          m_list(std::move(list)) {}

    HRESULT STDMETHODCALLTYPE GetHierarchyTable(ULONG flags, LPMAPITABLE* table) override {
        return GiveTableBy("GetHierarchyTable", flags, RowsOf(m_profile->addressLists, &AddressListModel::row), table);
    }
    HRESULT STDMETHODCALLTYPE GetContentsTable(ULONG flags, LPMAPITABLE* table) override {
        return GiveTableBy("GetContentsTable", flags, m_list->entries, table);
    }
    HRESULT STDMETHODCALLTYPE OpenEntry(ULONG size, LPENTRYID entryId, LPCIID iid, ULONG flags, ULONG* objectType,
                                        LPUNKNOWN* object) override {
        if (const auto answer = EnterMethod("OpenEntry", EntryIdText(size, entryId), InterfaceName(iid), Hex8(flags))) {
            return *answer;
        }
        return OpenMailUser(GetContext(), m_profile, IdBytes(size, entryId), objectType, object);
    }

private:
    std::shared_ptr<ProfileModel> m_profile;
    std::shared_ptr<AddressListModel> m_list;
};

class AddrBook final : public PropObject<StubAddrBook> {
public:
    AddrBook(const std::shared_ptr<Context>& context, std::shared_ptr<ProfileModel> profile)
        : PropObject(context, "IAddrBook", std::make_shared<Bag>()), m_profile(std::move(profile)) {}

    HRESULT STDMETHODCALLTYPE OpenEntry(ULONG size, LPENTRYID entryId, LPCIID iid, ULONG flags, ULONG* objectType,
                                        LPUNKNOWN* object) override {
        if (const auto answer = EnterMethod("OpenEntry", EntryIdText(size, entryId), InterfaceName(iid), Hex8(flags))) {
            return *answer;
        }
        const Bytes id = IdBytes(size, entryId);
        if (id.empty()) {
            *object = new ABContainer(GetContext(), m_profile, std::make_shared<AddressListModel>());
            *objectType = MAPI_ABCONT;
            return S_OK;
        }
        for (const auto& list : m_profile->addressLists) {
            if (list->row.BytesOf(PR_ENTRYID) == id) {
                *object = new ABContainer(GetContext(), m_profile, list);
                *objectType = MAPI_ABCONT;
                return S_OK;
            }
        }
        return OpenMailUser(GetContext(), m_profile, id, objectType, object);
    }
    HRESULT STDMETHODCALLTYPE Details(ULONG_PTR*, LPFNDISMISS, LPVOID, ULONG size, LPENTRYID entryId, LPFNBUTTON,
                                      LPVOID, LPTSTR, ULONG flags) override {
        return EnterMethod("Details", EntryIdText(size, entryId), Hex8(flags)).value_or(S_OK);
    }

private:
    std::shared_ptr<ProfileModel> m_profile;
};

class Session final : public Object<StubSession> {
public:
    Session(const std::shared_ptr<Context>& context, std::shared_ptr<ProfileModel> profile)
        : Object(context), m_profile(std::move(profile)) {}

    HRESULT STDMETHODCALLTYPE GetLastError(HRESULT result, ULONG, LPMAPIERROR* error) override {
        return DescribeError(result, error);
    }
    HRESULT STDMETHODCALLTYPE GetMsgStoresTable(ULONG flags, LPMAPITABLE* table) override {
        return GiveTable("IMAPISession::GetMsgStoresTable", flags, RowsOf(m_profile->stores, &StoreModel::row), table);
    }
    HRESULT STDMETHODCALLTYPE OpenMsgStore(ULONG_PTR window, ULONG size, LPENTRYID entryId, LPCIID iid, ULONG flags,
                                           LPMDB* opened) override {
        if (const auto answer = Enter("IMAPISession::OpenMsgStore", window, EntryIdText(size, entryId),
                                      InterfaceName(iid), Hex8(flags))) {
            return *answer;
        }
        for (const auto& store : m_profile->stores) {
            if (store->row.BytesOf(PR_ENTRYID) == IdBytes(size, entryId)) {
                *opened = NewStore(GetContext(), store);
                return S_OK;
            }
        }
        return MAPI_E_NOT_FOUND;
    }
    HRESULT STDMETHODCALLTYPE OpenAddressBook(ULONG_PTR window, LPCIID iid, ULONG flags, LPADRBOOK* book) override {
        if (const auto answer = Enter("IMAPISession::OpenAddressBook", window, InterfaceName(iid), Hex8(flags))) {
            return *answer;
        }
        *book = new AddrBook(GetContext(), m_profile);
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE OpenProfileSection(LPMAPIUID uid, LPCIID iid, ULONG flags, LPPROFSECT* section) override {
        if (const auto answer =
                Enter("IMAPISession::OpenProfileSection", UidText(uid), InterfaceName(iid), Hex8(flags))) {
            return *answer;
        }
        return OpenSection(GetContext(), m_profile, uid, section);
    }
    HRESULT STDMETHODCALLTYPE OpenEntry(ULONG size, LPENTRYID entryId, LPCIID iid, ULONG flags, ULONG* objectType,
                                        LPUNKNOWN* object) override {
        if (const auto answer =
                Enter("IMAPISession::OpenEntry", EntryIdText(size, entryId), InterfaceName(iid), Hex8(flags))) {
            return *answer;
        }
        const Bytes id = IdBytes(size, entryId);
        HRESULT hr = OpenMailUser(GetContext(), m_profile, id, objectType, object);
        for (const auto& store : m_profile->stores) {
            if (hr == MAPI_E_NOT_FOUND) {
                hr = OpenStoreEntry(GetContext(), store, size, entryId, iid, objectType, object);
            }
        }
        return hr;
    }
    HRESULT STDMETHODCALLTYPE Logoff(ULONG_PTR window, ULONG flags, ULONG reserved) override {
        return Enter("IMAPISession::Logoff", window, Hex8(flags), reserved).value_or(S_OK);
    }
    HRESULT STDMETHODCALLTYPE AdminServices(ULONG flags, LPSERVICEADMIN* services) override {
        if (const auto answer = Enter("IMAPISession::AdminServices", Hex8(flags))) {
            return *answer;
        }
        *services = NewServiceAdmin(GetContext(), m_profile);
        return S_OK;
    }

private:
    std::shared_ptr<ProfileModel> m_profile;
};

}  // namespace

IMAPISession* NewSession(const std::shared_ptr<Context>& context, std::shared_ptr<ProfileModel> profile) {
    return new Session(context, std::move(profile));
}

}  // namespace scripted_mapi
