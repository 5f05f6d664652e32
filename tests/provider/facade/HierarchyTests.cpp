// Profiles, stores and folders: the records that are given, and what is answered for what is not there or does not open.
#include "tests/provider/facade/FacadeTestSupport.h"

namespace {

using namespace scripted_mapi;

using HierarchyTest = FacadeTest;

TEST_F(HierarchyTest, WhatIsNotThereIsNoErrorAndGivesNothing) {
    Initialize();
    for (const Operation& operation : Operations()) {
        for (const char name : std::string(operation.names)) {
            SCOPED_TRACE(testing::Message() << operation.name << " without its " << name);
            Host stranger(instance);
            (name == 'p'   ? stranger.profile
             : name == 's' ? stranger.store
             : name == 'f' ? stranger.folder
             : name == 'i' ? stranger.item
                           : stranger.embedded) = "0BAD"_w;
            stranger.plain = name == 'a' ? "7"_w : "0"_w;
            EXPECT_EQ(operation.call(stranger), S_FALSE);
            EXPECT_EQ(stranger.Changes(), operation.lateChanges);
        }
        host.Reset();
    }
    // Null is the name of nothing.
    EXPECT_EQ(instance.GetStoreFolders(nullptr, nullptr, &host.value), S_FALSE);
    EXPECT_EQ(instance.GetFolderItemURIs(nullptr, nullptr, nullptr, &host.value), S_FALSE);
    EXPECT_EQ(instance.ClearFolderCache(nullptr, nullptr), S_FALSE);
}

TEST_F(HierarchyTest, AnUnknownProfileHasAnEmptyListOfStores) {
    Initialize();
    host.profile = "Nobody"_w;
    EXPECT_EQ(instance.GetProfileStores(host.profile.c_str(), &host.value), S_OK);
    EXPECT_EQ(TakeList(), Words{});
    EXPECT_EQ(instance.ShowGABContact(host.profile.c_str(), host.item.c_str()), S_OK);
    EXPECT_EQ(LogLines({"Nobody"}),
              (Words{"ERROR: Failed to get profile: Nobody", "ERROR: Failed to get profile: Nobody"}));
    EXPECT_EQ(TakeLines(), Words{});
}

TEST_F(HierarchyTest, RecordsTellProfilesStoresAndFolders) {
    ProfileModel& exchange = *mapi.AddProfile("Exchange");
    auto provider = AddProvider(*AddService(exchange, "MSEMS", 0x11), "Mailbox", 0x21);
    provider->section = {Text(PR_PROFILE_MAILBOX_A, "/dn"), Text(PR_PROFILE_SERVER_A, "srv"),
                         Text(PR_PROFILE_SERVER_DN_A, "/srvdn")};
    exchange.globalSection = {Number(PR_PROFILE_CONFIG_FLAGS, 0), Text(PR_PROFILE_UNRESOLVED_SERVER, "server")};
    AddStore(exchange, "Mailbox", {0x0C}, kExchangePrivateStore)->row.Set(Binary(PR_RECORD_KEY, {0xCC}));
    auto deep = AddFolder(*inbox, "Deep", "IPF.Task", {0xF2});
    deep->properties.Set(Time(PR_LAST_MODIFICATION_TIME, 0x123456789A));
    Initialize();

    EXPECT_EQ(instance.GetSystemProfiles(&host.value), S_OK);
    EXPECT_EQ(TakeList(), (Words{"Work|yes|no", "Exchange|no|yes"}));
    EXPECT_EQ(mapi.script.Count("MAPILogonEx"), 0);

    const CStringW name = "Exchange"_w;
    EXPECT_EQ(instance.GetProfileStores(name.c_str(), &host.value), S_OK);
    EXPECT_EQ(TakeList(), (Words{"Mailbox|0C|0|yes|no|/dn|srv|/srvdn|CC", "Global Address Book|GAB|-1|no|no||||"}));
    EXPECT_EQ(instance.GetExchangeServer(name.c_str(), host.text), S_OK);
    EXPECT_EQ(Ascii(host.text), "server");

    storeModel->receiveFolder = {0xF1};
    EXPECT_EQ(instance.GetSpecialFolderName(host.profile.c_str(), host.store.c_str(), 0, host.text), S_OK);
    EXPECT_EQ(Ascii(host.text), "Inbox");

    const Words folders = {"/Mail|0AFF|0A|yes|-1|0L", "/Inbox|F1|0A|yes|1|0L", "/Inbox/Deep|F2|0A|no|4|78187493530L"};
    EXPECT_EQ(instance.GetStoreFolders(host.profile.c_str(), host.store.c_str(), &host.value), S_OK);
    EXPECT_EQ(TakeList(), folders);
    const CStringW top = "/top"_w;
    EXPECT_EQ(
        instance.GetSubFolders(host.profile.c_str(), host.store.c_str(), host.folder.c_str(), top.c_str(), &host.value),
        S_OK);
    EXPECT_EQ(TakeList(), Words{"Mail//top/Deep|F2|0A|no|4|78187493530L"});
    EXPECT_EQ(instance.GetSubFolders(host.profile.c_str(), host.store.c_str(), nullptr, nullptr, &host.value), S_OK);
    EXPECT_EQ(TakeList(), Words{"Mail//Inbox|F1|0A|yes|1|0L"});

    AddStore(*mapi.profiles.front(), "Second", {0x0B}, kPersonalFoldersStore);
    EXPECT_EQ(instance.Disconnect(), S_OK);
    EXPECT_EQ(instance.GetProfileFolders(host.profile.data(), &host.value), S_OK);
    Words all = folders;
    all.push_back("/Second|0BFF|0B|no|-1|0L");
    EXPECT_EQ(TakeList(), all);
    EXPECT_EQ(instance.ShowGABContact(host.profile.c_str(), host.item.c_str()), S_OK);
    EXPECT_EQ(mapi.script.Count("IAddrBook::Details(E1,00000001)"), 1);
    EXPECT_EQ(TakeLines(), Words{});
}

TEST_F(HierarchyTest, ALogonThatFailsIsAnErrorForTheProfilesFoldersAlone) {
    Initialize();
    mapi.script.Fail("MAPILogonEx", MAPI_E_LOGON_FAILED);
    EXPECT_EQ(instance.GetProfileFolders(host.profile.data(), &host.value), E_FAIL);
    EXPECT_EQ(TakeValue(), "-");
    EXPECT_EQ(instance.GetStoreFolders(host.profile.c_str(), host.store.c_str(), &host.value), S_FALSE);
    EXPECT_EQ(instance.GetProfileStores(host.profile.c_str(), &host.value), S_OK);
    EXPECT_EQ(TakeList(), Words{});
    EXPECT_EQ(TakeLines(), Words{});
}

TEST_F(HierarchyTest, WhyAStoreOrAFolderDoesNotOpenIsPassedOn) {
    AddStore(*mapi.profiles.front(), "Second", {0x0B}, kPersonalFoldersStore);
    constexpr char kFirstStore[] = "IMAPISession::OpenMsgStore(0,0A";
    constexpr char kSecondStore[] = "IMAPISession::OpenMsgStore(0,0B";
    constexpr char kFolder[] = "IMsgStore::OpenEntry(F1,IMAPIFolder,00000000)";
    constexpr char kChildren[] = "IMAPIFolder::GetHierarchyTable";
    const struct {
        const char* operation;
        const char* call;
        HRESULT expected;
    } rows[] = {
        {"GetStoreFolders", kFirstStore, MAPI_E_NETWORK_ERROR},
        {"GetStoreFolders", kSecondStore, S_OK},
        {"GetStoreFolders", kChildren, MAPI_E_NETWORK_ERROR},  // a part of the tree is as good as none
        {"GetProfileFolders", kSecondStore, MAPI_E_NETWORK_ERROR},
        {"GetSubFolders", kFirstStore, MAPI_E_NETWORK_ERROR},
        {"GetSubFolders", kChildren, S_FALSE},  // the store itself did open
        {"GetFolderItemURIs", kFolder, MAPI_E_NETWORK_ERROR},
        {"QueryItems", kFolder, MAPI_E_NETWORK_ERROR},
        {"GetChildrenItemsCount", kFolder, MAPI_E_NETWORK_ERROR},
        {"GetChildrenItemsCount", "IMAPITable::FindRow", S_FALSE},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.operation << " without " << row.call);
        mapi.script.ForgetOrders();
        mapi.script.Fail(row.call, MAPI_E_NETWORK_ERROR);
        Initialize();
        for (const Operation& operation : Operations()) {
            if (operation.name == std::string(row.operation)) {
                EXPECT_EQ(operation.call(host), row.expected);
                EXPECT_TRUE(row.expected == S_OK || host.Changes() == operation.lateChanges) << host.Changes();
            }
        }
        host.Reset();
        EXPECT_EQ(instance.ReleaseVxMapi(), S_OK);
    }
    EXPECT_EQ(TakeLines(), Words{});
}

}  // namespace
