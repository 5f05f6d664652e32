// The administration of profiles, step by step: which calls it makes, what stays in the profile after each failure, and
// what it logs.
#include "provider/VxMapiEngine.h"
#include "tests/provider/tree/TreeTestSupport.h"

#include <filesystem>

namespace {

using namespace scripted_mapi;

constexpr char kUid80[] = "80808080808080808080808080808080";
constexpr char kUid81[] = "81818181818181818181818181818181";
constexpr char kUid11[] = "11111111111111111111111111111111";
constexpr char kGlobal[] = "13DBB0C8AA05101A9BB000AA002FC45A";

class ProvisioningTest : public TreeTest {
protected:
    ProvisioningTest() { mapi.script.TakeCalls(); }

    // Makes the call once for each row, on a profile as `prepare` leaves it, and looks for its line in the log.
    template <typename Rows, typename Prepare, typename Call>
    void ExpectFailures(const Rows& rows, Prepare prepare, Call call) {
        for (const FailureRow& row : rows) {
            SCOPED_TRACE(row.name);
            mapi.profiles.clear();
            mapi.script.ForgetOrders();
            prepare(*mapi.AddProfile("Work"));
            Order(mapi.script, row);
            ForgetLog();
            EXPECT_FALSE(call());
            EXPECT_TRUE(IsLogged(row.logged));
        }
        mapi.script.ForgetOrders();
    }

    ProfileModel& Work() { return *mapi.profiles.front(); }

    // The services of the profile, by name.
    Words Services() {
        Words names;
        for (const auto& service : Work().services) {
            names.push_back(Ascii(std::get<CStringW>(service->row.Find(PR_SERVICE_NAME_W)->data)));
        }
        return names;
    }

    Words TakeSteps() {
        Words steps = mapi.script.TakeCalls();
        std::erase_if(steps, [](const std::string& step) { return step.starts_with("MAPIInitialize"); });
        return steps;
    }

    CVxMapiEngine engine;
};

TEST_F(ProvisioningTest, CreatesAndDeletesProfiles) {
    EXPECT_TRUE(engine.CreateProfile("New"_w));
    EXPECT_TRUE(IsLogged("Created profile: New"));
    EXPECT_TRUE(engine.DeleteProfile("New"_w));
    EXPECT_TRUE(IsLogged("Deleted profile: New"));
    EXPECT_EQ(TakeSteps(), (Words{"MAPIAdminProfiles(00000000)", "IProfAdmin::CreateProfile(New,null,0,00000000)",
                                  "MAPIAdminProfiles(00000000)", "IProfAdmin::DeleteProfile(New,00000000)"}));
    EXPECT_FALSE(engine.DeleteProfile("New"_w));
    EXPECT_TRUE(IsLogged("IProfAdmin/DeleteProfile failed (8004010f)"));

    // One that is there already is gone afterwards.
    EXPECT_FALSE(engine.CreateProfile("Work"_w));
    EXPECT_TRUE(IsLogged("IProfAdmin/CreateProfile failed (80070005)"));
    EXPECT_TRUE(mapi.profiles.empty());
}

TEST_F(ProvisioningTest, AddsExchangeAndLooksForItInASessionOfItsOwn) {
    EXPECT_TRUE(engine.AddExchangeToProfile("Work"_w, "server"_w, "user"_w, true));
    EXPECT_EQ(TakeSteps(), (Words{"MAPIAdminProfiles(00000000)", "IProfAdmin::AdminServices(Work,null,0,00000000)",
                                  "IMsgServiceAdmin::CreateMsgService(MSEMS,MSEMS,0,00000000)",
                                  "IMsgServiceAdmin::GetMsgServiceTable(00000000)",
                                  "HrQueryAllRows([3D09001F,3D0C0102],content(00000000,3D09001F=MSEMS),null,0)",
                                  std::string("IMsgServiceAdmin::ConfigureMsgService(") + kUid80
                                      + ",no window,00000000,{6607001E==user,6608001E=server})",
                                  "MAPILogonEx(Work,,00008002)", "IMAPISession::AdminServices(00000000)",
                                  "IMsgServiceAdmin::GetMsgServiceTable(00000000)",
                                  "HrQueryAllRows([3D09001F,3D0C0102],content(00000000,3D09001F=MSEMS),null,0)"}));
    EXPECT_EQ(LogLines({"adding MSEMS", "Configuring", "Added Exchange", "success"}),
              (Words{"DEBUG: adding MSEMS messaging service", "DEBUG: Configuring message service...",
                     "DEBUG: Added Exchange Server OK.", "INFO: MapiLogonEx success!"}));

    const TempFolder elsewhere;
    const std::filesystem::path before = std::filesystem::current_path();
    mapi.script.On("MAPILogonEx", [&] {
        std::filesystem::current_path(elsewhere.Path());
        return std::optional<HRESULT>(MAPI_E_LOGON_FAILED);
    });
    EXPECT_TRUE(engine.AddExchangeToProfile("Work"_w, "server"_w, "user"_w, false));
    EXPECT_EQ(std::filesystem::current_path(), before);
}

TEST_F(ProvisioningTest, AddingExchangeFailsAtEachStep) {
    const FailureRow rows[] = {
        {"profiles", "MAPIAdminProfiles", E_FAIL, "MAPIAdminProfiles failed (80004005)"},
        {"no profiles", "MAPIAdminProfiles", S_OK, "MAPIAdminProfiles failed (0)"},
        {"services", "IProfAdmin::AdminServices", E_FAIL, "IProfAdmin/AdminServices failed (80004005)"},
        {"create", "IMsgServiceAdmin::CreateMsgService", E_FAIL, "CreateMsgService failed (80004005)"},
        {"table", "IMsgServiceAdmin::GetMsgServiceTable", E_FAIL, "GetMsgServiceTable failed (80004005)"},
        {"no table", "IMsgServiceAdmin::GetMsgServiceTable", S_OK, "GetMsgServiceTable failed (0)"},
        {"rows", "HrQueryAllRows", E_FAIL, "HrQueryAllRows failed (80004005)"},
        {"not created", "IMsgServiceAdmin::CreateMsgService", S_OK, "HrQueryAllRows returned no services."},
        {"configure", "IMsgServiceAdmin::ConfigureMsgService", E_FAIL, "ConfigureMsgService failed (80004005)"},
        {"session's services", "IMAPISession::AdminServices", E_FAIL, "IMAPISession/AdminServices failed (80004005)"},
        {"session's table", "IMsgServiceAdmin::GetMsgServiceTable", E_FAIL, "GetMsgServiceTable failed (80004005)", 2},
        {"session's rows", "HrQueryAllRows", E_FAIL, "HrQueryAllRows failed (80004005)", 2},
    };
    ExpectFailures(
        rows, [](ProfileModel&) {}, [&] { return engine.AddExchangeToProfile("Work"_w, "server"_w, "user"_w, false); });
    EXPECT_EQ(Services(), Words{"MSEMS"});  // nothing is undone
}

void PrepareDelegate(ProfileModel& profile) {
    AddService(profile, "MSPST MS", 0x10);
    AddProvider(*AddService(profile, "MSEMS", 0x11), "Other", 0x21);
    AddService(profile, "MSEMS", 0x12);  // only the first one gets delegates
    profile.globalSection.Set(Binary(PR_STORE_PROVIDERS, {1, 2, 3}));
}

TEST_F(ProvisioningTest, AddsADelegateAsTheLastStore) {
    PrepareDelegate(Work());
    EXPECT_TRUE(engine.AddDelegateToProfile("Work"_w, "Boss"_w, "/dn"_w, "srv"_w, "/srvdn"_w));
    const std::string list = std::string("010203") + kUid80;
    EXPECT_EQ(TakeSteps(),
              (Words{"MAPIAdminProfiles(00000000)", "IProfAdmin::AdminServices(Work,null,0,00000000)",
                     "IMsgServiceAdmin::GetMsgServiceTable(00000000)",
                     "HrQueryAllRows([3001001F,3D09001F,3D0C0102],content(00000000,3D09001F=MSEMS),null,0)",
                     std::string("IMsgServiceAdmin::AdminProviders(") + kUid11 + ",00000000)",
                     "IProviderAdmin::CreateProvider(EMSDelegate,"
                     "{3001001F=Boss,660B001E=/dn,660C001E=srv,6614001E=/srvdn},0,00000000)",
                     std::string("IProviderAdmin::OpenProfileSection(") + kGlobal + ",null,00000001)",
                     "IProfSect::GetProps([3D000102],00000000)", "MAPIAllocateBuffer(19)",
                     "IProfSect::SetProps({3D000102=" + list + "})"}));
    EXPECT_EQ(Hex(Work().globalSection.BytesOf(PR_STORE_PROVIDERS)), list);
}

TEST_F(ProvisioningTest, AddingADelegateFailsAtEachStep) {
    const FailureRow rows[] = {
        {"table", "IMsgServiceAdmin::GetMsgServiceTable", E_FAIL, "GetMsgServiceTable failed (80004005)"},
        {"providers", "IMsgServiceAdmin::AdminProviders", E_FAIL, "AdminProviders failed (80004005)"},
        {"create", "IProviderAdmin::CreateProvider", E_FAIL, "IProviderAdmin/CreateProvider failed (80004005)"},
        {"section", "IProviderAdmin::OpenProfileSection", E_FAIL,
         "IProviderAdmin/OpenProfileSection failed (80004005)"},
        {"read", "IProfSect::GetProps", E_FAIL, "IProfSect/GetProps failed (80004005)"},
        {"memory", "MAPIAllocateBuffer(19)", E_OUTOFMEMORY, "IProfSect/GetProps failed (8007000e)"},
        {"write", "IProfSect::SetProps", E_FAIL, "IProfSect/SetProps failed (80004005)"},
    };
    const auto add = [&] { return engine.AddDelegateToProfile("Work"_w, "Boss"_w, "/dn"_w, "srv"_w, "/srvdn"_w); };
    ExpectFailures(rows, PrepareDelegate, add);
    EXPECT_EQ(Work().services[1]->providers.size(), 2u);  // created, and not in the list of stores
    Work().globalSection.Remove(PR_STORE_PROVIDERS);
    EXPECT_FALSE(add());  // a list that cannot be read is not replaced
    EXPECT_EQ(Work().globalSection.Find(PR_STORE_PROVIDERS), nullptr);
}

TEST_F(ProvisioningTest, RemovesTheDelegateOfExactlyThatName) {
    PrepareDelegate(Work());
    AddProvider(*Work().services[1], "Boss", 0x22);
    AddProvider(*Work().services[1], "Boss and more", 0x23);
    EXPECT_TRUE(engine.RemoveDelegateStore("Work"_w, "Boss"_w));
    EXPECT_EQ(TakeSteps(),
              (Words{"MAPIAdminProfiles(00000000)", "IProfAdmin::AdminServices(Work,null,0,00000000)",
                     "IMsgServiceAdmin::GetMsgServiceTable(00000000)",
                     "HrQueryAllRows([3001001F,3D09001F,3D0C0102,300C0102],content(00000000,3D09001F=MSEMS),null,0)",
                     std::string("IMsgServiceAdmin::AdminProviders(") + kUid11 + ",00000000)",
                     "IProviderAdmin::GetProviderTable(00000000)",
                     "IMAPITable::SetColumns([3001001F,3D09001F,3D0C0102,300C0102],00000000)",
                     "IMAPITable::Restrict(content(00000000,3001001E=Boss),00000001)", "IMAPITable::SeekRow(0,0)",
                     "IMAPITable::QueryRows(4000,00000000)", "MAPIAllocateBuffer(16)",
                     "IProviderAdmin::DeleteProvider(22222222222222222222222222222222)"}));
    EXPECT_EQ(Work().services[1]->providers.size(), 2u);

    const FailureRow rows[] = {
        {"services", "IProfAdmin::AdminServices", E_FAIL, "AdminServices failed (80004005)"},
        {"no services", "IProfAdmin::AdminServices", S_OK, "AdminServices failed (0)"},
        {"table", "IProviderAdmin::GetProviderTable", E_FAIL, "GetProviderTable failed (80004005)"},
        {"columns", "IMAPITable::SetColumns", E_FAIL, "SetColumns failed (80004005)"},
        {"restriction", "IMAPITable::Restrict", E_FAIL, "Restrict failed (80004005)"},
        {"seek", "IMAPITable::SeekRow", E_FAIL, "SeekRow failed (80004005)"},
        {"rows", "IMAPITable::QueryRows", MAPI_E_BUSY, "QueryRows failed (8004010b)"},  // not tried again
        {"no such name", "nothing", E_FAIL, "QueryRows returned no services."},
    };
    ExpectFailures(rows, PrepareDelegate, [&] { return engine.RemoveDelegateStore("Work"_w, "Boss"_w); });
    AddProvider(*Work().services[1], "Boss", 0x22);
    mapi.script.Fail("IProviderAdmin::DeleteProvider", E_FAIL);
    EXPECT_FALSE(engine.RemoveDelegateStore("Work"_w, "Boss"_w));
    EXPECT_TRUE(IsLogged("DeleteProvider failed (80004005)"));
}

class PstTest : public ProvisioningTest {
protected:
    PstTest() { WriteFile(path, "pst"); }

    bool Add() { return engine.AddPSTToProfile("Work"_w, path); }

    TempFolder folder;
    CStringW path = folder.File("mail.pst");
};

TEST_F(PstTest, FindsTheNewServiceByWhatWasThereBefore) {
    AddService(Work(), "Other", 0x10);
    const std::filesystem::path before = std::filesystem::current_path();
    for (const char* call : {"IMsgServiceAdmin::CreateMsgService", "IMsgServiceAdmin::ConfigureMsgService",
                             "IMsgServiceAdmin::DeleteMsgService"}) {
        mapi.script.On(call, [this] {
            std::filesystem::current_path(folder.Path());
            return std::nullopt;
        });
    }
    EXPECT_TRUE(Add());
    EXPECT_EQ(std::filesystem::current_path(), before);
    Words steps = TakeSteps();
    ASSERT_EQ(steps.size(), 10u);
    steps[8] = steps[8].substr(0, steps[8].find(",{6700001E="));
    steps[8].replace(steps[8].find(",no window"), 10, ",window");
    EXPECT_EQ(
        steps,
        (Words{"MAPIAdminProfiles(00000000)", "IProfAdmin::AdminServices(Work,null,0,00000000)",
               "IMsgServiceAdmin::CreateMsgService(MSEMS,Work,0,00000000)",
               "IMsgServiceAdmin::GetMsgServiceTable(00000000)", "HrQueryAllRows([3D09001F,3D0C0102],null,null,0)",
               "IMsgServiceAdmin::CreateMsgService(MSPST MS,Work,0,00000000)",
               "IMsgServiceAdmin::GetMsgServiceTable(00000000)", "HrQueryAllRows([3D09001F,3D0C0102],null,null,0)",
               std::string("IMsgServiceAdmin::ConfigureMsgService(") + kUid81 + ",window,00000010",
               std::string("IMsgServiceAdmin::DeleteMsgService(") + kUid80 + ")"}));
    EXPECT_EQ(Services(), (Words{"Other", "MSPST MS"}));
    EXPECT_EQ(ValueText(Work().services[1]->configuration.Read(PR_PST_PATH_A)), "6700001E=" + Ascii(path));
}

TEST_F(PstTest, NeedsTheFileBeforeAnyCall) {
    path += "-not-there"_w;
    EXPECT_FALSE(Add());
    EXPECT_EQ(TakeSteps(), Words{});
    EXPECT_TRUE(IsLogged("AddPSTToProfile: file does not exist! (" + Ascii(path) + ")"));
}

TEST_F(PstTest, DeletesTheLastExchangeServiceWhichNeedNotBeItsOwn) {
    AddService(Work(), "MSEMS", 0x10);
    mapi.script.On("IMsgServiceAdmin::CreateMsgService(MSEMS", [this] {
        Work().services.insert(Work().services.begin(), std::make_shared<ServiceModel>());
        Work().services.front()->row = {Text(PR_SERVICE_NAME_W, "msems"), Binary(PR_SERVICE_UID, Bytes(16, 0x55))};
        return std::optional<HRESULT>(S_OK);
    });
    EXPECT_TRUE(Add());
    EXPECT_EQ(Services(), (Words{"msems", "MSPST MS"}));
}

TEST_F(PstTest, TakesAPlaceAmongIdentifiersForARow) {
    AddService(Work(), "Broken", 0x10)->row.Set(Failing(PR_SERVICE_UID));
    EXPECT_TRUE(Add());
    // One row has no identifier, so the new service's place points one row too far up: at the Exchange service.
    EXPECT_EQ(mapi.script.Count(std::string("IMsgServiceAdmin::ConfigureMsgService(") + kUid80), 1);
    EXPECT_EQ(Services(), (Words{"Broken", "MSPST MS"}));
}

TEST_F(PstTest, FailsAtEachStep) {
    const FailureRow rows[] = {
        {"first service", "IMsgServiceAdmin::CreateMsgService", E_FAIL,
         "IMsgServiceAdmin/CreateMsgService failed (80004005)"},
        {"table", "IMsgServiceAdmin::GetMsgServiceTable", E_FAIL, "GetMsgServiceTable failed (80004005)"},
        {"rows", "HrQueryAllRows", E_FAIL, "HrQueryAllRows failed (80004005)"},
        {"no rows", "IMsgServiceAdmin::CreateMsgService(MSEMS", S_OK, "HrQueryAllRows returned no services."},
        {"second service", "IMsgServiceAdmin::CreateMsgService(MSPST", E_FAIL,
         "IMsgServiceAdmin/CreateMsgService failed (80004005)"},
        {"second table", "IMsgServiceAdmin::GetMsgServiceTable", E_FAIL, "GetMsgServiceTable failed (80004005)", 2},
        {"not added", "IMsgServiceAdmin::CreateMsgService(MSPST", S_OK,
         "Could not identify newly added MS PST service."},
        {"configure", "IMsgServiceAdmin::ConfigureMsgService", E_FAIL, "ConfigureMsgService failed."},
        {"delete", "IMsgServiceAdmin::DeleteMsgService", E_FAIL, "DeleteMsgService (MSEMS) failed."},
    };
    ExpectFailures(
        rows, [](ProfileModel&) {}, [&] { return Add(); });
    EXPECT_EQ(Services(), (Words{"MSEMS", "MSPST MS"}));  // nothing is undone
}

}  // namespace
