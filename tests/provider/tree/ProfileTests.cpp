#include "provider/StoreAndFolder/VxAddressBook.h"
#include "provider/StoreAndFolder/VxOutlookProfile.h"
#include "tests/provider/tree/TreeTestSupport.h"

#include <filesystem>

namespace {

using namespace scripted_mapi;

class ProfileTest : public TreeTest {
protected:
    ProfileModel& Work() { return *mapi.profiles.front(); }

    std::vector<CVxMAPIStore> Stores() {
        std::vector<CVxMAPIStore> stores(7);
        Profile().GetStores(stores);
        return stores;
    }
};

TEST_F(ProfileTest, ConnectsByTheseCalls) {
    AddStore(Work(), "Mail", {0x0A}, kPersonalFoldersStore);
    CVxOutlookProfile& profile = Profile();
    mapi.script.TakeCalls();
    EXPECT_TRUE(profile.EnsureConnected());
    EXPECT_EQ(mapi.script.TakeCalls(),
              (Words{"MAPILogonEx(Work,,80008023)",
                     "IMAPISession::OpenProfileSection(13DBB0C8AA05101A9BB000AA002FC45A,null,00000000)",
                     "HrGetOneProp(66010003)", "IMAPISession::GetMsgStoresTable(00000000)",
                     "IMAPITable::SetColumns([3400000B,3001001F,3006001F,0FFF0102,34140102,0FF90102],00000000)",
                     "IMAPITable::SeekRow(0,0)", "HrQueryAllRows(null,null,null,80)"}));
    EXPECT_TRUE(IsLogged("HrGetOneProp failed (PR_PROFILE_CONFIG_FLAGS). hr = 0x8004010f"));
}

TEST_F(ProfileTest, KnowsTheKindsOfStores) {
    const MAPIUID unknown = {{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16}};
    const struct {
        const char* name;
        MAPIUID provider;
        int type;       // -1: no store is made
        bool isCached;  // with both bits set in the profile
        const char* logged;
    } rows[] = {
        {"public", kExchangePublicStore, 1, true, "found ProfilePublicStoreIdx 0"},
        {"private", kExchangePrivateStore, 0, true, "found ProfilePrivateStoreIdx 1"},
        {"delegate", kExchangeDelegateStore, 2, false, "found delgate store at index 2"},
        {"pst", kPersonalFoldersStore, 3, true, "found PST store at index 3"},
        {"hotmail", kHotmailStore, 4, true, "found Hotmail OST store at index 4"},
        {"oracle", kOracleStore, 5, true, "found Oracle message store at index 5"},
        {"second oracle", kSecondOracleStore, 5, true, "found Oracle message store at index 6"},
        {"imap", kImapStore, 6, false, "found Outlook IMAP message store at index 7"},
        {"unknown", unknown, -1, false,
         "Found unknown store type with PR_MDB_PROVIDER: 0102030405060708090A0B0C0D0E0F10"},
    };
    for (const auto& row : rows) {
        AddStore(Work(), row.name, {static_cast<BYTE>(row.type), 0x77}, row.provider);
    }
    AddStore(Work(), "short id", {0x01}, unknown)->row.Set(Binary(PR_MDB_PROVIDER, {1, 2}));
    AddStore(Work(), "no id", {0x02}, unknown)->row.Remove(PR_MDB_PROVIDER);
    Work().globalSection.Set(Number(PR_PROFILE_CONFIG_FLAGS, 0x480));

    const std::vector<CVxMAPIStore> stores = Stores();
    ASSERT_EQ(stores.size(), 8u);
    for (std::size_t i = 0; i < std::size(rows); ++i) {
        SCOPED_TRACE(rows[i].name);
        EXPECT_TRUE(IsLogged(rows[i].logged));
        if (rows[i].type >= 0) {
            EXPECT_EQ(Ascii(stores[i].displayName), rows[i].name);
            EXPECT_EQ(stores[i].type, rows[i].type);
            EXPECT_EQ(stores[i].isCached, rows[i].isCached);
            EXPECT_EQ(stores[i].isDefault, i == 0);
        }
    }
    EXPECT_EQ(stores[3].entryId, "0377"_w);
    EXPECT_EQ(stores[3].recordKey, "0377"_w);
}

TEST_F(ProfileTest, WithoutItsFlagsOnlyFilesAreCached) {
    AddStore(Work(), "public", {1}, kExchangePublicStore);
    AddStore(Work(), "private", {2}, kExchangePrivateStore);
    AddStore(Work(), "pst", {3}, kPersonalFoldersStore);
    Work().globalSection.Set(Number(PR_PROFILE_CONFIG_FLAGS, 0x580));
    mapi.script.Fail("IMAPISession::OpenProfileSection", E_FAIL);
    const std::vector<CVxMAPIStore> stores = Stores();
    ASSERT_EQ(stores.size(), 3u);
    EXPECT_FALSE(stores[0].isCached || stores[1].isCached);
    EXPECT_TRUE(stores[2].isCached);
    EXPECT_EQ(LogLines({"PR_PROFILE_CONFIG_FLAGS"}), Words{});
}

TEST_F(ProfileTest, ReadsAnExchangeStoresDetailsFromItsProvidersSection) {
    AddStore(Work(), "Mailbox - Me", {1}, kExchangePrivateStore);
    const auto service = AddService(Work(), "MSEMS", 0x11);
    AddProvider(*service, "MAILBOX - ME", 0x20)->row.Set(Number(PR_RESOURCE_TYPE, MAPI_AB_PROVIDER));
    AddProvider(*service, "MAILBOX - ME", 0x21)->section = {Text(PR_PROFILE_MAILBOX_A, "/o=me"),
                                                            Text(PR_PROFILE_SERVER_A, "server")};
    const std::vector<CVxMAPIStore> stores = Stores();
    EXPECT_EQ(stores[0].storeDN, "/o=me"_w);
    EXPECT_EQ(stores[0].server, "server"_w);
    EXPECT_EQ(stores[0].serverDN, CStringW());
    EXPECT_TRUE(IsLogged("HrGetOneProp failed on PR_PROFILE_SERVER_DN_A (8004010f)"));
    EXPECT_EQ(mapi.script.Count("IProviderAdmin::OpenProfileSection(21212121212121212121212121212121,null,00080001)"),
              1);
}

TEST_F(ProfileTest, AStoreWithoutDetailsIsAStoreAllTheSame) {
    AddStore(Work(), "Me", {1}, kExchangePrivateStore);
    AddProvider(*AddService(Work(), "MSEMS", 0x11), "Me", 0x21)->section = {Text(PR_PROFILE_MAILBOX_A, "/o=me")};
    const FailureRow rows[] = {
        {"services", "IMAPISession::AdminServices", E_FAIL, "IMAPISession/AdminServices failed (80004005)"},
        {"table", "IMsgServiceAdmin::GetMsgServiceTable", S_OK, "GetMsgServiceTable failed (0)"},
        {"rows", "HrQueryAllRows([3D09001F,3D0C0102],content", E_FAIL, "HrQueryAllRows failed (80004005)"},
        {"none", "HrQueryAllRows([3D09001F,3D0C0102],content", S_OK, "HrQueryAllRows returned no services."},
        {"providers", "IMsgServiceAdmin::AdminProviders", E_FAIL, "AdminProviders failed (80004005)"},
        {"providers' table", "IProviderAdmin::GetProviderTable", E_FAIL, "GetProviderTable failed (80004005)"},
        {"columns", "IMAPITable::SetColumns([3E03", E_FAIL, "SetColumns failed. hr = 0x80004005"},
        {"seek", "IMAPITable::SeekRow", E_FAIL, "SeekRow failed. hr = 0x80004005", 2},
        {"providers' rows", "HrQueryAllRows(null,null,null,0)", E_FAIL, "HrQueryAllRows failed (80004005)"},
        {"section", "IProviderAdmin::OpenProfileSection", E_FAIL, "HrQueryAllRows failed (80004005)"},
    };
    for (const FailureRow& row : rows) {
        SCOPED_TRACE(row.name);
        Profile().EnsureDisconnected();
        mapi.script.ForgetOrders();
        Order(mapi.script, row);
        ForgetLog();
        const std::vector<CVxMAPIStore> stores = Stores();
        ASSERT_GE(stores.size(), 1u);
        EXPECT_EQ(stores[0].storeDN, CStringW());
        EXPECT_TRUE(IsLogged(row.logged));
    }
}

TEST_F(ProfileTest, FailsToConnectAtEachStep) {
    const FailureRow rows[] = {
        {"logon", "MAPILogonEx", MAPI_E_LOGON_FAILED, "MAPILogonEx failed with error code: -2147221231 "},
        {"no session", "MAPILogonEx", S_OK, "MAPI Logon failed"},
        {"table", "IMAPISession::GetMsgStoresTable", E_FAIL, "Session->GetMsgStoresTable failed. hr = 0x80004005"},
        {"columns", "IMAPITable::SetColumns", E_FAIL, "SetColumns failed. hr = 0x80004005"},
        {"seek", "IMAPITable::SeekRow", E_FAIL, "SeekRow failed. hr = 0x80004005"},
        {"rows", "HrQueryAllRows(null,null,null,80)", E_FAIL, "HrQueryAllRows failed (80004005)"},
    };
    for (const FailureRow& row : rows) {
        SCOPED_TRACE(row.name);
        domain.reset();
        mapi.script.ForgetOrders();
        Order(mapi.script, row);
        ForgetLog();
        EXPECT_FALSE(Profile().EnsureConnected());
        EXPECT_TRUE(Profile().HasErrors(VxErrorConnect));
        EXPECT_TRUE(IsLogged(row.logged));
        EXPECT_EQ(mapi.script.TakeCalls({"IMAPISession::Logoff"}), Words{});
    }
}

TEST_F(ProfileTest, ASessionWhoseStoresFailedIsInTheWayOfTheNextConnect) {
    mapi.script.FailNth(1, "IMAPISession::GetMsgStoresTable", E_FAIL);
    EXPECT_FALSE(Profile().EnsureConnected());
    EXPECT_TRUE(IsLogged("Failed to initialize stores."));
    ForgetLog();
    EXPECT_FALSE(Profile().EnsureConnected());
    EXPECT_EQ(LogLines({"session", "Logon failed"}),
              (Words{"INFO: Exit We already have a session for this profile.", "ERROR: MAPI Logon failed"}));
    EXPECT_EQ(mapi.script.Count("MAPILogonEx"), 1);
    domain.reset();
    EXPECT_EQ(mapi.script.Count("IMAPISession::Logoff"), 0);  // released without one
}

TEST_F(ProfileTest, DisconnectsAndKeepsTheDirectory) {
    const TempFolder elsewhere;
    const std::filesystem::path before = std::filesystem::current_path();
    for (const char* call : {"MAPILogonEx", "IMAPISession::Logoff", "IMAPISession::OpenMsgStore"}) {
        mapi.script.On(call, [&] {
            std::filesystem::current_path(elsewhere.Path());
            return std::nullopt;
        });
    }
    AddStore(Work(), "Mail", {0x0A}, kPersonalFoldersStore);
    EXPECT_TRUE(Store("0a").EnsureConnected());
    EXPECT_EQ(std::filesystem::current_path(), before);
    Profile().EnsureDisconnected();
    EXPECT_EQ(std::filesystem::current_path(), before);
    EXPECT_EQ(Profile().GetMAPISession(), nullptr);
    EXPECT_EQ(LogLines({"OnDisconnect", "MAPILogoff"}),
              (Words{"DEBUG: OnDisconnect store Mail (keep data)", "DEBUG: OnDisconnect profile Work",
                     "DEBUG: calling MAPILogoff"}));
}

TEST_F(ProfileTest, FindsAStoreByItsIdInEitherCaseAndAfterOneNewLogon) {
    AddStore(Work(), "Mail", {0xAB, 0x0C}, kPersonalFoldersStore);
    EXPECT_EQ(Profile().GetStorebyId("ab0c"_w), Profile().GetStore(0));
    EXPECT_EQ(mapi.script.Count("MAPILogonEx"), 1);

    AddStore(Work(), "Later", {0xDD}, kPersonalFoldersStore);
    CVxOutlookStore* later = Profile().GetStorebyId("DD"_w);
    ASSERT_NE(later, nullptr);
    EXPECT_EQ(later->GetDisplayName(), "Later"_w);
    EXPECT_EQ(mapi.script.Count("MAPILogonEx"), 2);

    EXPECT_EQ(Profile().GetStorebyId("EE"_w), nullptr);
    EXPECT_EQ(mapi.script.Count("MAPILogonEx"), 3);
    EXPECT_TRUE(IsLogged("storeId EE not found in profile Work"));
    EXPECT_EQ(Profile().GetStoresCount(), 2u);
    EXPECT_EQ(Profile().GetStore(2), nullptr);

    std::vector<CVxMAPIFolder> folders;
    EXPECT_FALSE(Profile().GetSubFolders("EE"_w, CStringW(), CStringW(), folders));
    EXPECT_TRUE(IsLogged("CVxOutlookProfile::GetStorebyId for EE failed."));
}

TEST_F(ProfileTest, GathersTheFoldersOfAllStoresOneAfterTheOther) {
    AddFolder(*AddStore(Work(), "One", {1}, kPersonalFoldersStore)->root, "In", "IPF.Note", {0x11});
    AddStore(Work(), "Broken", {2}, kPersonalFoldersStore);
    AddFolder(*AddStore(Work(), "Three", {3}, kPersonalFoldersStore)->root, "Out", "IPF.Note", {0x31});
    mapi.script.Fail("IMAPISession::OpenMsgStore(0,02", MAPI_E_NOT_FOUND);
    std::vector<CVxMAPIFolder> folders;
    EXPECT_FALSE(Profile().GetAllFolders(folders));
    Words paths;
    for (const CVxMAPIFolder& folder : folders) {
        paths.push_back(Ascii(folder.path));
    }
    EXPECT_EQ(paths, (Words{"/One", "One//In", "/Three", "Three//Out"}));
    EXPECT_FALSE(Profile().GetStore(0)->IsConnected());
    EXPECT_TRUE(Profile().GetStore(2)->IsConnected());
    EXPECT_EQ(Profile().GetStore(1)->GetLastConnectError(), MAPI_E_NOT_FOUND);

    Profile().ClearFolderCache();
    EXPECT_EQ(Profile().GetStore(2)->GetCachedFolder("31"_w), nullptr);
}

TEST_F(ProfileTest, ReadsTheExchangeServerOnceAndOnlyWithExchange) {
    EXPECT_EQ(Profile().GetExchangeServer(), CStringW());
    EXPECT_FALSE(Profile().IsConnected());

    ProfileModel& exchange = *mapi.AddProfile("Exchange");
    AddService(exchange, "MSEMS", 0x11);
    EXPECT_EQ(Profile("Exchange").GetExchangeServer(), CStringW());
    EXPECT_TRUE(IsLogged("HrGetOneProp failed (PR_PROFILE_UNRESOLVED_SERVER). hr = 0x8004010f"));
    exchange.globalSection.Set(Text(PR_PROFILE_UNRESOLVED_SERVER, "srv"));
    EXPECT_EQ(Profile("Exchange").GetExchangeServer(), "srv"_w);
    Profile("Exchange").EnsureDisconnected();
    exchange.globalSection.Set(Text(PR_PROFILE_UNRESOLVED_SERVER, "other"));
    EXPECT_EQ(Profile("Exchange").GetExchangeServer(), "srv"_w);
    EXPECT_FALSE(Profile("Exchange").IsConnected());
}

TEST_F(ProfileTest, TellsHowAStoreCouldNotBeOpened) {
    Profile().EnsureConnected();
    IMsgStore* store = nullptr;
    EXPECT_EQ(Profile().OpenMsgStore("ABC"_w, &store), E_FAIL);
    EXPECT_TRUE(IsLogged("MapiUtil::Hex2Bin failed"));
    EXPECT_EQ(Profile().OpenMsgStore("AB"_w, &store), MAPI_E_NOT_FOUND);
    EXPECT_TRUE(IsLogged("OpenMsgStore failed (8004010f)"));
    EXPECT_TRUE(IsLogged("error is scripted failure "));
    EXPECT_EQ(mapi.script.Count("IMAPISession::OpenMsgStore(0,AB,null,00000084)"), 1);

    mapi.script.On("IMAPISession::OpenMsgStore", []() -> std::optional<HRESULT> { throw 1; });
    EXPECT_THROW(Profile().OpenMsgStore("AB"_w, &store), int);
    EXPECT_TRUE(IsLogged("OpenMsgStore failed wih exception"));
    Profile().EnsureDisconnected();
    EXPECT_EQ(Profile().OpenMsgStore("AB"_w, &store), MAPI_E_NOT_INITIALIZED);
}

TEST_F(ProfileTest, ShowsAContactOfTheAddressBook) {
    Domain().ShowGABContact("Work"_w, "0a0b"_w);
    EXPECT_EQ(mapi.script.TakeCalls({"IMAPISession::OpenAddressBook", "IAddrBook"}),
              (Words{"IMAPISession::OpenAddressBook(0,null,00000001)", "IAddrBook::Details(0A0B,00000001)"}));
    mapi.script.Fail("IAddrBook::Details", MAPI_E_USER_CANCEL);
    Domain().ShowGABContact("Work"_w, "0a0b"_w);
    EXPECT_EQ(LogLines({"ShowGABContact failed"}), Words{"WARN: ShowGABContact failed (80040113)"});
    mapi.script.Fail("IMAPISession::OpenAddressBook", E_FAIL);
    Domain().ShowGABContact("Work"_w, "0a0b"_w);
    EXPECT_TRUE(IsLogged("OpenAddressBook failed (80004005)"));
    Domain().ShowGABContact("Work"_w, "no id"_w);
}

}  // namespace
