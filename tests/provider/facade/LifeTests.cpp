// The life of an instance: before its domain, connecting and connecting again, and what is left when it is released.
#include "tests/provider/facade/FacadeTestSupport.h"

namespace {

using namespace scripted_mapi;

using LifeTest = FacadeTest;

TEST_F(LifeTest, WithoutADomainEachOperationAnswersForItself) {
    for (const Operation& operation : Operations()) {
        SCOPED_TRACE(operation.name);
        host.Reset();
        EXPECT_EQ(operation.call(host), operation.early);
        EXPECT_EQ(host.Changes(), operation.earlyChanges);
        const std::string line = std::string("ERROR ") + operation.name + ": Not initialized!";
        EXPECT_EQ(TakeLines(), operation.early == E_FAIL ? Words{line} : Words{});
    }
    EXPECT_EQ(mapi.script.TakeCalls(), Words{});
}

TEST_F(LifeTest, PointersAndTheDomainAreCheckedInTheOrderOfTheOperation) {
    LONG count = 7;
    const std::function<HRESULT()> calls[] = {
        [&] { return instance.GetBinaryItemBody(host.Plain(), eBodyText, false, nullptr); },
        [&] { return instance.GetAttachment(host.Plain(), eBodyText, nullptr); },
        [&] { return instance.GetChildrenItemsCount(host.Folder(), 0, 0, false, nullptr, &count, &count); },
        [&] { return instance.GetChildrenItemsCount(host.Folder(), 0, 0, false, &count, nullptr, &count); },
        [&] { return instance.GetChildrenItemsCount(host.Folder(), 0, 0, false, &count, &count, nullptr); },
    };
    constexpr HRESULT kEarly[] = {E_POINTER, E_FAIL, E_FAIL, E_FAIL, E_FAIL};
    for (std::size_t i = 0; i < std::size(calls); ++i) {
        EXPECT_EQ(calls[i](), kEarly[i]) << i;
        EXPECT_EQ(TakeLines().size(), kEarly[i] == E_FAIL ? 1U : 0U) << i;
    }
    Initialize();
    for (const auto& call : calls) {
        EXPECT_EQ(call(), E_POINTER);
    }
    EXPECT_EQ(count, 7);
    EXPECT_EQ(TakeLines(), Words{});
    EXPECT_EQ(mapi.script.TakeCalls(), Words{});  // the URI was not read either
}

TEST_F(LifeTest, OnlyTheFirstInitializeOfADomainReadsItsArguments) {
    message->properties.Set(Number(PR_MESSAGE_SIZE, 50));
    const auto isTooBig = [&] {
        EXPECT_EQ(instance.GetItemData(host.Item(), eBodyText, false, &host.value), S_OK);
        const std::string errors = ShowField(host.value, "eobj_vx_lErrors"_field);
        host.Reset();
        return errors == "1L";
    };
    Initialize("50");
    EXPECT_TRUE(isTooBig());
    Initialize("51");
    EXPECT_EQ(instance.Disconnect(), S_OK);
    Initialize("51");
    EXPECT_TRUE(isTooBig());
    EXPECT_EQ(instance.ReleaseVxMapi(), S_OK);
    Initialize("51");
    EXPECT_FALSE(isTooBig());
    EXPECT_EQ(TakeLines(), Words{});
}

TEST_F(LifeTest, AFailedConnectKeepsTheDomainForTheNextTry) {
    mapi.script.FailNth(1, "MAPIAdminProfiles", E_FAIL);
    EXPECT_EQ(instance.InitializeVxMapi(CStringW(), CStringW()), E_ABORT);
    EXPECT_EQ(instance.SetAbort(false), S_OK);
    EXPECT_EQ(instance.ClearFolderCache(), S_FALSE);
    EXPECT_EQ(instance.InitializeVxMapi(CStringW(), CStringW()), S_OK);
    EXPECT_EQ(instance.ClearFolderCache(), S_OK);
    EXPECT_EQ(instance.ReleaseVxMapi(), S_OK);

    // MAPI itself is tried once for each domain.
    mapi.script.FailNth(1, "MAPIInitialize", E_FAIL);
    EXPECT_EQ(instance.InitializeVxMapi(CStringW(), CStringW()), E_ABORT);
    EXPECT_EQ(instance.InitializeVxMapi(CStringW(), CStringW()), E_ABORT);
    EXPECT_EQ(instance.GetSystemProfiles(&host.value), S_OK);
    EXPECT_EQ(TakeList(), Words{});
    EXPECT_EQ(instance.ReleaseVxMapi(), S_OK);
    mapi.initialized = 0;  // an engine ends MAPI also when it could not begin it
    EXPECT_EQ(instance.InitializeVxMapi(CStringW(), CStringW()), S_OK);
}

TEST_F(LifeTest, ADisconnectedInstanceConnectsByItselfWithAFreshList) {
    Initialize();
    mapi.AddProfile("Home");
    EXPECT_EQ(instance.GetSystemProfiles(&host.value), S_OK);
    EXPECT_EQ(TakeList(), Words{"Work|yes|no"});
    EXPECT_EQ(instance.Disconnect(), S_OK);
    EXPECT_EQ(instance.Disconnect(), S_OK);
    EXPECT_EQ(instance.GetSystemProfiles(&host.value), S_OK);
    EXPECT_EQ(TakeList(), (Words{"Work|yes|no", "Home|no|no"}));
    EXPECT_EQ(mapi.script.TakeCalls({"MAPIUninitialize", "MAPIInitialize", "MAPILogonEx"}),
              (Words{"MAPIUninitialize()", "MAPIInitialize(0,00000001)"}));
}

TEST_F(LifeTest, TheFirstQueryAfterADisconnectFindsItsProfileInTheFreshList) {
    AddService(*mapi.profiles.front(), "MSEMS", 0x11);
    mapi.script.On("MAPIAdminProfiles", [this] {
        return mapi.initialized == 0 ? std::optional<HRESULT>(MAPI_E_NOT_INITIALIZED) : std::nullopt;
    });
    Initialize();
    EXPECT_EQ(instance.Disconnect(), S_OK);
    EXPECT_EQ(instance.GetStoreFolders(host.profile.c_str(), host.store.c_str(), &host.value), S_OK);
    EXPECT_EQ(TakeList().size(), 2U);
    EXPECT_EQ(instance.GetSystemProfiles(&host.value), S_OK);
    EXPECT_EQ(TakeList(), Words{"Work|yes|yes"});
    EXPECT_EQ(mapi.script.Count("MAPILogonEx"), 1);
}

TEST_F(LifeTest, AFolderCacheIsClearedOnlyWhereThereIsOne) {
    Initialize();
    const auto clear = [&] { return instance.ClearFolderCache(host.profile.c_str(), host.store.c_str()); };
    const auto readsFolders = [&] {
        mapi.script.TakeCalls();
        EXPECT_EQ(instance.GetStoreFolders(host.profile.c_str(), host.store.c_str(), &host.value), S_OK);
        EXPECT_EQ(TakeList().size(), 2U);
        return mapi.script.Count("IMAPIFolder::GetHierarchyTable") != 0;
    };
    EXPECT_EQ(clear(), S_FALSE);  // nobody is logged on
    EXPECT_EQ(instance.ClearFolderCache(), S_OK);
    EXPECT_EQ(mapi.script.Count("MAPILogonEx"), 0);
    EXPECT_EQ(instance.GetProfileStores(host.profile.c_str(), &host.value), S_OK);
    EXPECT_EQ(TakeList().size(), 1U);
    EXPECT_EQ(clear(), S_FALSE);  // the store is not connected
    EXPECT_TRUE(readsFolders());
    EXPECT_FALSE(readsFolders());
    EXPECT_EQ(clear(), S_OK);
    EXPECT_TRUE(readsFolders());
    EXPECT_EQ(instance.ClearFolderCache(), S_OK);
    EXPECT_TRUE(readsFolders());
    EXPECT_EQ(instance.Disconnect(), S_OK);
    EXPECT_EQ(instance.ClearFolderCache(), S_FALSE);
}

TEST_F(LifeTest, CopiesShareOneDomain) {
    COutlookInstance copy(instance);
    EXPECT_EQ(copy.Disconnect(), S_FALSE);
    Initialize();
    EXPECT_EQ(copy.Disconnect(), S_FALSE);
    copy = instance;
    EXPECT_EQ(copy.Disconnect(), S_OK);
    EXPECT_EQ(instance.ClearFolderCache(), S_FALSE);  // disconnected by the other
    EXPECT_EQ(instance.InitializeVxMapi(CStringW(), CStringW()), S_OK);
    EXPECT_EQ(copy.ClearFolderCache(), S_OK);
    EXPECT_EQ(copy.ReleaseVxMapi(), S_OK);
    instance = copy;  // whose domain is gone
    EXPECT_EQ(instance.Disconnect(), S_FALSE);
}

TEST_F(LifeTest, SessionsMoveWithTheProfileAndEndWithTheRelease) {
    AddStore(*mapi.AddProfile("Home"), "Mail", {0x0B}, kPersonalFoldersStore);
    Initialize();
    EXPECT_EQ(instance.GetItemData(host.Item(), eBodyText, false, &host.value), S_OK);
    host.Reset();
    const CStringW home = "Home"_w;
    EXPECT_EQ(instance.GetProfileStores(home.c_str(), &host.value), S_OK);
    EXPECT_EQ(TakeList(), Words{"Mail|0B|3|yes|yes||||0B"});
    EXPECT_EQ(instance.ReleaseVxMapi(), S_OK);
    EXPECT_EQ(mapi.Leaks(), "");
    EXPECT_EQ(mapi.script.TakeCalls({"MAPILogonEx", "IMAPISession::Logoff", "MAPIUninitialize"}),
              (Words{"MAPILogonEx(Work,,80008023)", "IMAPISession::Logoff(0,00000000,0)", "MAPILogonEx(Home,,80008023)",
                     "IMAPISession::Logoff(0,00000000,0)", "MAPIUninitialize()"}));
    EXPECT_EQ(instance.ReleaseVxMapi(), S_OK);
}

}  // namespace
