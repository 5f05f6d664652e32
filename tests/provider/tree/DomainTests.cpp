#include "provider/VxDomain.h"
#include "tests/provider/tree/TreeTestSupport.h"
#include "tests/provider/tree/UserRegistry.h"

#include <filesystem>

namespace {

using namespace scripted_mapi;

using DomainTest = TreeTest;

Words NamesOf(CVxDomain& domain) {
    std::vector<CStringW> names;
    domain.GetSystemProfiles(names);
    Words narrow;
    for (const CStringW& name : names) {
        narrow.push_back(Ascii(name));
    }
    return narrow;
}

TEST_F(DomainTest, ReadsItsParametersWithEmptyPiecesDropped) {
    CVxDomain first("5||7|0||1"_w, "Info"_w, items);
    EXPECT_EQ(first.getMPParams()->m_bodySizeLimit, 5);
    EXPECT_EQ(first.getMPParams()->m_attachmentSizeLimit, 7);
    EXPECT_EQ(first.getMPParams()->m_reservedNumber, 1);
    EXPECT_EQ(ToPath(CVxDomain::GetTempFolder()), std::filesystem::temp_directory_path() / "");

    const CVxDomain second("1|1|0|1|1|/own/temp"_w, "Info"_w, items);
    EXPECT_EQ(CVxDomain::GetTempFolder(), "/own/temp"_w);
    EXPECT_EQ(first.GetDomain(), &first);
}

TEST_F(DomainTest, ListsTheSystemsProfilesWithoutALogon) {
    AddService(*mapi.profiles.front(), "MSEMS", 1);
    mapi.AddProfile("Home");
    std::vector<CVxMAPIProfile> list(5);
    Domain().GetProfileList(list);
    ASSERT_EQ(list.size(), 2u);
    EXPECT_EQ(list[0].name, "Work"_w);
    EXPECT_TRUE(list[0].isDefault && list[0].isExchange);
    EXPECT_EQ(list[1].name, "Home"_w);
    EXPECT_FALSE(list[1].isDefault || list[1].isExchange);
    EXPECT_EQ(mapi.script.Count("MAPILogonEx"), 0);
    EXPECT_TRUE(IsLogged("Initialized Vx Mapi engine."));
    EXPECT_TRUE(IsLogged("InitSystemProfiles ok"));
}

TEST_F(DomainTest, AMachineWithoutProfilesIsConnectedAndEmpty) {
    mapi.profiles.clear();
    EXPECT_TRUE(Domain().IsConnected());
    EXPECT_EQ(NamesOf(Domain()), Words{});
    EXPECT_TRUE(IsLogged("HrQueryAllRows returned no profiles."));
}

TEST_F(DomainTest, SkipsAProfileWhoseNameIsInErrorAndCutsALongOne) {
    mapi.AddProfile(std::string(2000, 'x'));
    Domain().EnsureDisconnected();
    EXPECT_EQ(NamesOf(Domain()), (Words{"Work", std::string(1023, 'x')}));
}

TEST_F(DomainTest, FailsToConnectAsMapiDoes) {
    const struct {
        FailureRow failure;
        bool connected;
    } rows[] = {
        {{"no MAPI", "MAPIInitialize", E_FAIL, "Failed to MapiInitialize"}, false},
        {{"no administration", "MAPIAdminProfiles", E_FAIL, "MAPIAdminProfiles failed (80004005)"}, false},
        {{"no administration object", "MAPIAdminProfiles", S_OK, "MAPIAdminProfiles failed (0)"}, true},
        {{"no table", "IProfAdmin::GetProfileTable", E_FAIL, "GetProfileTable failed (80004005)"}, false},
        {{"no rows", "HrQueryAllRows([3001001E,3D04000B]", E_FAIL, "HrQueryAllRows failed (80004005)"}, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.failure.name);
        mapi.script.ForgetOrders();
        Order(mapi.script, row.failure);
        ForgetLog();
        CVxDomain failing(CStringW(), CStringW(), items);
        EXPECT_EQ(failing.EnsureConnected(), row.connected);
        EXPECT_EQ(failing.HasErrors(VxErrorConnect), !row.connected);
        EXPECT_TRUE(IsLogged(row.failure.logged));
    }
}

TEST_F(DomainTest, AnEngineThatFailedIsNotTriedAgain) {
    mapi.script.FailNth(1, "MAPIInitialize", E_FAIL);
    EXPECT_FALSE(Domain().IsConnected());
    EXPECT_FALSE(Domain().EnsureConnected());
    EXPECT_EQ(mapi.script.Count("MAPIInitialize"), 1);
    Domain().EnsureDisconnected();
    EXPECT_FALSE(Domain().EnsureConnected());
    EXPECT_EQ(mapi.script.Count("MAPIUninitialize"), 0);
}

TEST_F(DomainTest, KeepsProfileObjectsAndMovesTheOneSession) {
    mapi.AddProfile("Home");
    CVxOutlookProfile& work = Profile("Work");
    EXPECT_FALSE(work.IsConnected());
    EXPECT_TRUE(work.EnsureConnected());
    EXPECT_TRUE(Profile("Home").EnsureConnected());
    EXPECT_EQ(&Profile("Work"), &work);
    EXPECT_FALSE(work.IsConnected());
    EXPECT_EQ(
        mapi.script.TakeCalls({"MAPILogonEx", "IMAPISession::Logoff"}),
        (Words{"MAPILogonEx(Work,,80008023)", "IMAPISession::Logoff(0,00000000,0)", "MAPILogonEx(Home,,80008023)"}));

    Domain().EnsureDisconnected();
    EXPECT_EQ(mapi.script.TakeCalls({"IMAPISession::Logoff", "MAPIUninitialize"}),
              (Words{"IMAPISession::Logoff(0,00000000,0)", "MAPIUninitialize()"}));
    EXPECT_EQ(mapi.initialized, 0);
}

TEST_F(DomainTest, AProfileOutsideTheListIsKeptOnlyWhenItConnects) {
    Domain();
    EXPECT_EQ(Domain().GetProfile("Unknown"_w), nullptr);
    EXPECT_EQ(NamesOf(Domain()), Words{"Work"});

    mapi.AddProfile("work");  // another name, as case counts
    CVxOutlookProfile& later = Profile("work");
    EXPECT_TRUE(later.IsConnected());
    EXPECT_NE(&later, &Profile("Work"));
    EXPECT_EQ(NamesOf(Domain()), (Words{"Work", "work"}));
}

TEST_F(DomainTest, ConnectsOnBehalfOfAProfileWithoutDeletingIt) {
    // The profile list cannot be read, while logging on works: the profile is then all there is.
    mapi.script.Fail("IProfAdmin::GetProfileTable", E_FAIL);
    EXPECT_FALSE(Domain().IsConnected());
    CVxOutlookProfile& work = Profile("Work");
    EXPECT_TRUE(work.IsConnected());
    work.EnsureDisconnected();
    EXPECT_TRUE(work.EnsureConnected());  // tries the domain first, which clears its list
    EXPECT_EQ(&Profile("Work"), &work);
    mapi.script.ForgetOrders();
    work.EnsureDisconnected();
    EXPECT_TRUE(work.EnsureConnected());
    EXPECT_TRUE(Domain().IsConnected());
    EXPECT_EQ(NamesOf(Domain()), Words{"Work"});
}

TEST_F(DomainTest, DisconnectingTheDomainAloneTakesItsProfilesWithIt) {
    Profile("Work").EnsureConnected();
    Domain().Disconnect();
    EXPECT_EQ(mapi.script.Count("IMAPISession::Logoff"), 1);
    EXPECT_TRUE(Domain().EnsureConnected());
    EXPECT_TRUE(Profile("Work").EnsureConnected());
}

TEST_F(DomainTest, AnUnknownProfileIsLoggedAndChangesNothing) {
    std::vector<CVxMAPIStore> stores(3);
    Domain().GetProfileStores("Unknown"_w, stores);
    EXPECT_EQ(stores.size(), 3u);
    EXPECT_TRUE(IsLogged("Failed to get profile: Unknown"));
    ForgetLog();
    Domain().ShowGABContact("Unknown"_w, "00"_w);
    EXPECT_TRUE(IsLogged("Failed to get profile: Unknown"));
}

TEST_F(DomainTest, AdministrationAddsToTheListAndDeletingTakesOut) {
    EXPECT_TRUE(Domain().CreateProfile("New"_w));
    EXPECT_EQ(NamesOf(Domain()), (Words{"Work", "New"}));
    EXPECT_FALSE(Domain().RemoveDelegateStore("Other"_w, "x"_w));
    EXPECT_EQ(NamesOf(Domain()), (Words{"Work", "New"}));

    Profile("New").EnsureConnected();
    mapi.script.TakeCalls();
    EXPECT_TRUE(Domain().DeleteProfile("New"_w));
    EXPECT_EQ(mapi.script.TakeCalls({"IMAPISession::Logoff", "IProfAdmin::DeleteProfile"}),
              (Words{"IMAPISession::Logoff(0,00000000,0)", "IProfAdmin::DeleteProfile(New,00000000)"}));
    EXPECT_TRUE(Profile("Work").EnsureConnected());  // does not look for the deleted one
    EXPECT_FALSE(Domain().DeleteProfile("New"_w));
    EXPECT_EQ(NamesOf(Domain()), Words{"Work"});

    CVxDomain unconnected(CStringW(), CStringW(), items);
    EXPECT_FALSE(unconnected.CreateProfile("Nowhere"_w));
}

}  // namespace
