// The sequences by which clients provision profiles, call by call as they make them.
#include "localmapi/profile/Services.h"
#include "tests/localmapi/profile/AdminTestSupport.h"
#include "tests/localmapi/profile/MailboxFile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace localmapi::profile::testing {
namespace {

SPropValue NarrowProperty(ULONG tag, const char* text) {
    SPropValue value{};
    value.ulPropTag = tag;
    value.Value.lpszA = const_cast<char*>(text);
    return value;
}

class Provisioning : public AdminTest {
protected:
    // An Exchange account as it is added; gives its identifier.
    MAPIUID AddExchange(IMsgServiceAdmin& services) {
        EXPECT_EQ(services.CreateMsgService(Narrow("MSEMS"), Narrow("MSEMS"), 0, 0), S_OK);
        const Rows rows = ExchangeRows(services);
        EXPECT_EQ(rows.Count(), 1U);
        MAPIUID uid = rows.Uid(0, 1);
        SPropValue settings[] = {NarrowProperty(PR_PROFILE_UNRESOLVED_NAME, "=ada"),
                                 NarrowProperty(PR_PROFILE_UNRESOLVED_SERVER, "mail.example.org")};
        EXPECT_EQ(services.ConfigureMsgService(&uid, 0, 0, 2, settings), S_OK);
        return uid;
    }

    // A delegate's store, appended to the profile's stores as its maker has to; gives the provider's identifier.
    MAPIUID AddDelegate(IMsgServiceAdmin& services, const CStringW& storeName) {
        const Rows rows = ExchangeRows(services);
        MAPIUID uid = rows.Uid(0, 1);
        ComPtr<IProviderAdmin> providers;
        EXPECT_EQ(services.AdminProviders(&uid, 0, providers.Receive()), S_OK);
        Arena memory;
        SPropValue values[] = {
            WideValue(PR_DISPLAY_NAME_W, storeName, memory), NarrowProperty(PR_PROFILE_MAILBOX, "/o=Org/cn=grace"),
            NarrowProperty(PR_PROFILE_SERVER, "mail"), NarrowProperty(PR_PROFILE_SERVER_DN, "/o=Org/cn=mail")};
        EXPECT_EQ(providers->CreateProvider(Narrow("EMSDelegate"), 4, values, 0, 0, &uid), S_OK);

        ComPtr<IProfSect> global;
        MAPIUID globalUid = kGlobalProfileSection;
        EXPECT_EQ(providers->OpenProfileSection(&globalUid, nullptr, MAPI_MODIFY, global.Receive()), S_OK);
        TagArray tags{PR_STORE_PROVIDERS};
        ULONG count = 0;
        SPropValue* stores = nullptr;
        EXPECT_EQ(global->GetProps(tags.Get(), 0, &count, &stores), S_OK);
        EXPECT_EQ(stores->ulPropTag, PR_STORE_PROVIDERS);
        std::vector<BYTE> bytes(stores->Value.bin.lpb, stores->Value.bin.lpb + stores->Value.bin.cb);
        FreeRoot(stores);
        bytes.insert(bytes.end(), std::begin(uid.ab), std::end(uid.ab));
        SPropValue longer{};
        longer.ulPropTag = PR_STORE_PROVIDERS;
        longer.Value.bin = {static_cast<ULONG>(bytes.size()), bytes.data()};
        EXPECT_EQ(global->SetProps(count, &longer, nullptr), S_OK);
        return uid;
    }
};

TEST_F(Provisioning, ProfilesAreListedWithTheirDefault) {
    const ComPtr<IProfAdmin> profiles = Profiles();
    const auto table = [&] {
        ComPtr<IMAPITable> made;
        EXPECT_EQ(profiles->GetProfileTable(0, made.Receive()), S_OK);
        return made;
    };
    EXPECT_EQ(QueryAll(table().Get(), {PR_DISPLAY_NAME_A}).Count(), 0U);
    ASSERT_EQ(profiles->CreateProfile(Narrow("zeta"), nullptr, 0, 0), S_OK);
    const CStringW cafe = Wide("caf\xC3\xA9");
    ASSERT_EQ(profiles->CreateProfile(WideText(cafe), WideText({}), 0, MAPI_UNICODE), S_OK);
    ASSERT_EQ(profiles->SetDefaultProfile(Narrow("ZETA"), 0), S_OK);
    {
        const Rows rows = QueryAll(table().Get(), {PR_DISPLAY_NAME_W, PR_DEFAULT_PROFILE, PR_DISPLAY_NAME_A});
        ASSERT_EQ(rows.Count(), 2U);
        EXPECT_EQ(rows.Text(0, 0), "w:caf\xC3\xA9");
        EXPECT_EQ(rows.At(0, 1).ulPropTag, PR_DEFAULT_PROFILE);
        EXPECT_EQ(rows.At(0, 1).Value.b, 0);
        EXPECT_EQ(rows.Text(1, 2), "a:zeta");
        EXPECT_EQ(rows.At(1, 1).Value.b, 1);
    }
    ASSERT_EQ(profiles->SetDefaultProfile(nullptr, 0), S_OK);
    const Rows rows = QueryAll(table().Get(), {PR_DEFAULT_PROFILE});
    EXPECT_EQ(rows.At(0, 0).Value.b + rows.At(1, 0).Value.b, 0);
}

TEST_F(Provisioning, ProfilesAreMadeAndDeleted) {
    const ComPtr<IProfAdmin> profiles = Profiles();
    EXPECT_EQ(profiles->CreateProfile(Narrow("a"), nullptr, 0, 0), S_OK);
    EXPECT_EQ(profiles->CreateProfile(Narrow("A"), nullptr, 0, 0), MAPI_E_NO_ACCESS);
    EXPECT_NE(LastErrorOf(*profiles, MAPI_E_NO_ACCESS).find("\"A\""), std::string::npos);
    EXPECT_EQ(profiles->CreateProfile(Narrow("b"), Narrow("secret"), 0, 0), MAPI_E_NO_SUPPORT);
    EXPECT_EQ(profiles->CreateProfile(Narrow(""), nullptr, 0, 0), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(profiles->CreateProfile(nullptr, nullptr, 0, 0), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(profiles->CopyProfile(Narrow("a"), nullptr, Narrow("copy"), 0, 0), S_OK);
    EXPECT_EQ(profiles->RenameProfile(Narrow("a"), nullptr, Narrow("renamed"), 0, 0), S_OK);
    EXPECT_EQ(m_folder.Names(), "copy, renamed");
    EXPECT_EQ(profiles->DeleteProfile(Narrow("copy"), 0), S_OK);
    EXPECT_EQ(profiles->DeleteProfile(Narrow("copy"), 0), MAPI_E_NOT_FOUND);
    ComPtr<IMsgServiceAdmin> services;
    EXPECT_EQ(profiles->AdminServices(Narrow("copy"), nullptr, 0, 0, services.Receive()), MAPI_E_NOT_FOUND);
    EXPECT_EQ(profiles->ChangeProfilePassword(Narrow("renamed"), nullptr, nullptr, 0), MAPI_E_NO_SUPPORT);
}

TEST_F(Provisioning, ADamagedProfileSaysWhereItIsDamaged) {
    m_folder.WriteFile("broken.profile", "[profile]\nversion = 1\nname = \"broken\"\n[service 1]\n");
    const ComPtr<IProfAdmin> profiles = Profiles();
    ComPtr<IMsgServiceAdmin> services;
    EXPECT_EQ(profiles->AdminServices(Narrow("broken"), nullptr, 0, 0, services.Receive()), MAPI_E_CORRUPT_DATA);
    EXPECT_NE(LastErrorOf(*profiles, MAPI_E_CORRUPT_DATA).find("broken.profile:4: "), std::string::npos);
}

TEST_F(Provisioning, AnExchangeAccountIsAdded) {
    const ComPtr<IMsgServiceAdmin> services = Services();
    MAPIUID uid = AddExchange(*services);

    // What a session asks for: the server, in the global section.
    ComPtr<IProfSect> global;
    MAPIUID globalUid = kGlobalProfileSection;
    ASSERT_EQ(services->OpenProfileSection(&globalUid, nullptr, 0, global.Receive()), S_OK);
    TagArray tags{PR_PROFILE_UNRESOLVED_SERVER, PR_PROFILE_CONFIG_FLAGS,
                  CHANGE_PROP_TYPE(PR_PROFILE_UNRESOLVED_NAME, PT_UNICODE)};
    ULONG count = 0;
    SPropValue* values = nullptr;
    ASSERT_EQ(global->GetProps(tags.Get(), 0, &count, &values), S_OK);
    EXPECT_EQ(std::string(values[0].Value.lpszA), "mail.example.org");
    EXPECT_EQ(values[1].Value.l, 0);
    EXPECT_EQ(Utf8(values[2].Value.lpszW), "=ada");
    FreeRoot(values);

    // A store row, of which no file can be opened.
    const Profile profile = Loaded();
    const std::vector<StoreEntry> stores = StoresOf(profile);
    ASSERT_EQ(stores.size(), 1U);
    EXPECT_EQ(Bytes(stores[0].kind.Span().begin(), stores[0].kind.Span().end()),
              Bytes(BytesOf(kExchangePrivateStore).Span().begin(), BytesOf(kExchangePrivateStore).Span().end()));
    EXPECT_TRUE(stores[0].file.empty());
    EXPECT_FALSE(stores[0].isDefault);

    EXPECT_EQ(services->DeleteMsgService(&uid), S_OK);
    EXPECT_EQ(services->DeleteMsgService(&uid), MAPI_E_NOT_FOUND);
    const Profile after = Loaded();
    EXPECT_EQ(after.global.Find(PROP_ID(PR_PROFILE_UNRESOLVED_SERVER)), nullptr);
    EXPECT_TRUE(after.global.Binary(PR_STORE_PROVIDERS).IsEmpty());
}

TEST_F(Provisioning, SettingsStayWithTheAccountThatIsLeft) {
    const ComPtr<IMsgServiceAdmin> services = Services();
    AddExchange(*services);
    MAPIUID second = AddService(*services, "MSEMS");
    ASSERT_EQ(services->DeleteMsgService(&second), S_OK);
    EXPECT_EQ(Utf8(Loaded().global.Text(PR_PROFILE_UNRESOLVED_SERVER)), "mail.example.org");
}

// The list of services is compared before and after, since making one does not tell its identifier; an Exchange service
// is made first and deleted last.
TEST_F(Provisioning, AMailboxFileIsAdded) {
    const MailboxFile file("Archive 2019.pst", "Old mail");
    const ComPtr<IMsgServiceAdmin> services = Services();
    ASSERT_EQ(services->CreateMsgService(Narrow("MSEMS"), Narrow("p"), 0, 0), S_OK);
    std::vector<MAPIUID> before;
    {
        const Rows rows = ServiceRows(*services);
        ASSERT_EQ(rows.Count(), 1U);
        before.push_back(rows.Uid(0, 1));
    }
    ASSERT_EQ(services->CreateMsgService(Narrow("MSPST MS"), Narrow("p"), 0, 0), S_OK);
    MAPIUID made{};
    MAPIUID exchange{};
    {
        const Rows rows = ServiceRows(*services);
        ASSERT_EQ(rows.Count(), 2U);
        for (ULONG i = 0; i < rows.Count(); ++i) {
            if (rows.Text(i, 0) == "w:MSEMS") {
                exchange = rows.Uid(i, 1);
            }
            if (rows.Uid(i, 1) != before[0]) {
                made = rows.Uid(i, 1);
                EXPECT_EQ(rows.Text(i, 0), "w:MSPST MS");
                EXPECT_EQ(rows.Text(i, 2), "w:p");
            }
        }
    }
    EXPECT_EQ(exchange, before[0]);
    const std::string path = file.Utf8Path();
    SPropValue property = NarrowProperty(PR_PST_PATH, path.c_str());
    ASSERT_EQ(services->ConfigureMsgService(&made, 0, SERVICE_UI_ALLOWED, 1, &property), S_OK)
        << LastErrorOf(*services, MAPI_E_CORRUPT_STORE);
    ASSERT_EQ(services->DeleteMsgService(&exchange), S_OK);

    const Profile profile = Loaded();
    const std::vector<StoreEntry> stores = StoresOf(profile);
    ASSERT_EQ(stores.size(), 1U);
    EXPECT_EQ(stores[0].file, file.Path());
    EXPECT_EQ(Utf8(stores[0].displayName), "Old mail");
    EXPECT_EQ(Bytes(stores[0].recordKey.Span().begin(), stores[0].recordKey.Span().end()),
              localmapi::testing::kStoreKey);
    EXPECT_EQ(stores[0].service, made);
    EXPECT_TRUE(stores[0].isDefault);

    ComPtr<IProviderAdmin> providers;
    ASSERT_EQ(services->AdminProviders(&made, 0, providers.Receive()), S_OK);
    ComPtr<IMAPITable> table;
    ASSERT_EQ(providers->GetProviderTable(0, table.Receive()), S_OK);
    const Rows rows = QueryAll(table.Get(), {PR_PROVIDER_UID, PR_DISPLAY_NAME_A, PR_MDB_PROVIDER, PR_RESOURCE_TYPE,
                                             PR_SERVICE_UID, PR_PST_PATH_W});
    ASSERT_EQ(rows.Count(), 1U);
    EXPECT_EQ(rows.Uid(0, 0), stores[0].provider);
    EXPECT_EQ(rows.Text(0, 1), "a:Old mail");
    EXPECT_EQ(rows.Uid(0, 2), kPersonalFoldersStore);
    EXPECT_EQ(rows.At(0, 3).Value.l, 33);
    EXPECT_EQ(rows.Uid(0, 4), made);
    EXPECT_EQ(rows.Text(0, 5), "w:" + path);
}

TEST_F(Provisioning, ADelegatesStoreIsAddedBehindTheOthers) {
    const ComPtr<IMsgServiceAdmin> services = Services();
    const MAPIUID exchange = AddExchange(*services);
    const MAPIUID delegate = AddDelegate(*services, "Grace"_w);
    EXPECT_NE(delegate, exchange);

    const Profile profile = Loaded();
    const ByteView list = profile.global.Binary(PR_STORE_PROVIDERS);
    ASSERT_EQ(list.Size(), 32U);
    EXPECT_EQ(std::memcmp(list.Data() + 16, delegate.ab, 16), 0);
    const std::vector<StoreEntry> stores = StoresOf(profile);
    ASSERT_EQ(stores.size(), 2U);
    EXPECT_EQ(stores[1].provider, delegate);
    EXPECT_EQ(stores[1].service, exchange);

    // As a session reads it: by the provider's row, then its section.
    ComPtr<IProviderAdmin> providers;
    MAPIUID uid = exchange;
    ASSERT_EQ(services->AdminProviders(&uid, 0, providers.Receive()), S_OK);
    ComPtr<IMAPITable> table;
    ASSERT_EQ(providers->GetProviderTable(0, table.Receive()), S_OK);
    const Rows rows = QueryAll(table.Get(), {PR_RESOURCE_TYPE, PR_DISPLAY_NAME_A, PR_PROVIDER_UID});
    const ULONG last = rows.Count() - 1;
    EXPECT_EQ(rows.At(last, 0).Value.l, static_cast<LONG>(MAPI_STORE_PROVIDER));
    EXPECT_EQ(rows.Text(last, 1), "a:Grace");
    MAPIUID provider = rows.Uid(last, 2);
    ComPtr<IProfSect> section;
    ASSERT_EQ(providers->OpenProfileSection(&provider, nullptr, MAPI_FORCE_ACCESS | MAPI_MODIFY, section.Receive()),
              S_OK);
    TagArray tags{PR_PROFILE_MAILBOX_A, PR_PROFILE_SERVER_DN_A, PR_PROFILE_SERVER_A};
    ULONG count = 0;
    SPropValue* values = nullptr;
    ASSERT_EQ(section->GetProps(tags.Get(), 0, &count, &values), S_OK);
    EXPECT_EQ(std::string(values[0].Value.lpszA), "/o=Org/cn=grace");
    EXPECT_EQ(std::string(values[1].Value.lpszA), "/o=Org/cn=mail");
    EXPECT_EQ(std::string(values[2].Value.lpszA), "mail");
    FreeRoot(values);
}

TEST_F(Provisioning, ADelegatesStoreIsRemovedByItsName) {
    const ComPtr<IMsgServiceAdmin> services = Services();
    MAPIUID exchange = AddExchange(*services);
    AddDelegate(*services, "Grace"_w);
    AddDelegate(*services, "Grace Hopper"_w);
    ComPtr<IProviderAdmin> providers;
    ASSERT_EQ(services->AdminProviders(&exchange, 0, providers.Receive()), S_OK);
    const auto remove = [&](const char* name) -> HRESULT {
        ComPtr<IMAPITable> table;
        EXPECT_EQ(providers->GetProviderTable(0, table.Receive()), S_OK);
        TagArray columns{PR_DISPLAY_NAME_W, PR_SERVICE_NAME_W, PR_SERVICE_UID, PR_PROVIDER_UID};
        EXPECT_EQ(table->SetColumns(columns.Get(), 0), S_OK);
        SPropValue value = NarrowProperty(PR_DISPLAY_NAME_A, name);
        SRestriction restriction = FullText(value);
        EXPECT_EQ(table->Restrict(&restriction, TBL_BATCH), S_OK);
        EXPECT_EQ(table->SeekRow(BOOKMARK_BEGINNING, 0, nullptr), S_OK);
        SRowSet* set = nullptr;
        EXPECT_EQ(table->QueryRows(4000, 0, &set), S_OK);
        const Rows rows(set);
        if (rows.Count() == 0) {
            return MAPI_E_NOT_FOUND;
        }
        EXPECT_EQ(rows.Text(0, 1), "w:MSEMS");
        EXPECT_EQ(rows.Uid(0, 2), exchange);
        MAPIUID provider = rows.Uid(0, 3);
        return providers->DeleteProvider(&provider);
    };
    EXPECT_EQ(remove("Gra"), MAPI_E_NOT_FOUND) << "the whole name is meant";
    EXPECT_EQ(remove("Grace"), S_OK);
    EXPECT_EQ(remove("Grace"), MAPI_E_NOT_FOUND);
    const Profile profile = Loaded();
    const std::vector<StoreEntry> stores = StoresOf(profile);
    ASSERT_EQ(stores.size(), 2U);
    EXPECT_EQ(Utf8(stores[1].displayName), "Grace Hopper");
    EXPECT_EQ(profile.global.Binary(PR_STORE_PROVIDERS).Size(), 32U) << "no trace of it is left in the list";
}

}  // namespace
}  // namespace localmapi::profile::testing
