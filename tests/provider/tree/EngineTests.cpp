#include "provider/MPParams.h"
#include "provider/VxMapiEngine.h"
#include "tests/provider/tree/TreeTestSupport.h"
#include "tests/provider/tree/UserRegistry.h"

#include <filesystem>

namespace {

using namespace scripted_mapi;

using EngineTest = TreeTest;

TEST(Parameters, TakeThePiecesInTheirOrderAndKeepDefaultsBehindTheEnd) {
    const CMPParams defaults = CMPParams::parse({}, 0);
    EXPECT_EQ(defaults.m_bodySizeLimit, -1);
    EXPECT_EQ(defaults.m_attachmentSizeLimit, -1);
    EXPECT_EQ(defaults.m_reservedNumber, -1);
    EXPECT_EQ(defaults.m_logPeriodHours, 12);
    EXPECT_FALSE(defaults.PreviewMode());

    std::vector<CStringW> pieces;
    for (const char* piece : {"skipped", "5", "-7", "true", "9x", "1", "/t", "App", "log", " 48"}) {
        pieces.push_back(Wide(piece));
    }
    const CMPParams params = CMPParams::parse(pieces, 1);
    EXPECT_EQ(params.m_bodySizeLimit, 5);
    EXPECT_EQ(params.m_attachmentSizeLimit, -7);
    EXPECT_FALSE(params.m_reservedFlag);  // only "1" sets a flag
    EXPECT_EQ(params.m_reservedNumber, 9);
    EXPECT_TRUE(params.PreviewMode());
    EXPECT_EQ(params.m_tempFolder, "/t"_w);
    EXPECT_TRUE(params.PreviewFileMode());
    EXPECT_EQ(params.m_application, "App"_w);
    EXPECT_EQ(params.m_logName, "log"_w);
    EXPECT_EQ(params.m_logPeriodHours, 48);
}

TEST(Parameters, HoldNumbersToTheirRange) {
    const struct {
        const char* text;
        std::int64_t large;
        std::int32_t small;
    } rows[] = {
        {"9223372036854775807", INT64_MAX, INT32_MAX},
        {"9223372036854775808", INT64_MAX, INT32_MAX},
        {"-9223372036854775808", INT64_MIN, INT32_MIN},
        {"-99999999999999999999", INT64_MIN, INT32_MIN},
        {"2147483648", 2147483648, INT32_MAX},
        {"-2147483648", -2147483648, INT32_MIN},
        {"-", 0, 0},
        {"none", 0, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        const CMPParams params = CMPParams::parse({Wide(row.text), CStringW(), CStringW(), Wide(row.text)}, 0);
        EXPECT_EQ(params.m_bodySizeLimit, row.large);
        EXPECT_EQ(params.m_reservedNumber, row.small);
    }
}

TEST_F(EngineTest, InitializesMapiOnceMoreOnlyWhereTheApartmentDoesNotFit) {
    const struct {
        const char* name;
        HRESULT first, second;
        bool initialized;
        int calls;
    } rows[] = {
        {"works", S_OK, S_OK, true, 1},
        {"apartment differs", RPC_E_CHANGED_MODE, S_OK, true, 2},
        {"differs twice", RPC_E_CHANGED_MODE, RPC_E_CHANGED_MODE, false, 2},
        {"a warning is a failure", S_FALSE, S_OK, false, 1},
        {"no MAPI", E_FAIL, S_OK, false, 1},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        mapi.script.ForgetOrders();
        mapi.script.FailNth(1, "MAPIInitialize", row.first);
        mapi.script.FailNth(2, "MAPIInitialize", row.second);
        {
            const CVxMapiEngine engine;
            EXPECT_EQ(engine.Initialized(), row.initialized);
        }
        Words expected = {"MAPIInitialize(0,00000001)"};
        if (row.calls == 2) {
            expected.push_back("MAPIInitialize(0,00000009)");
        }
        expected.push_back("MAPIUninitialize()");  // whether it had begun or not
        EXPECT_EQ(mapi.script.TakeCalls(), expected);
    }
}

TEST_F(EngineTest, KeepsTheCurrentDirectoryOverTheStart) {
    const TempFolder elsewhere;
    const std::filesystem::path before = std::filesystem::current_path();
    mapi.script.On("MAPIInitialize", [&] {
        std::filesystem::current_path(elsewhere.Path());
        return std::nullopt;
    });
    const CVxMapiEngine engine;
    EXPECT_EQ(std::filesystem::current_path(), before);
}

TEST_F(EngineTest, NamesTheFirstProfileThatIsTheDefault) {
    EXPECT_EQ(CVxMapiEngine::GetDefaultProfileName(), "Work"_w);
    EXPECT_EQ(LogLines({"System profiles:", "Work"}), (Words{"INFO: System profiles:", "INFO: Work"}));

    mapi.profiles.front()->isDefault = false;
    EXPECT_EQ(CVxMapiEngine::GetDefaultProfileName(), CStringW());
    mapi.AddProfile("100% Home")->isDefault = true;
    mapi.AddProfile("Other")->isDefault = true;
    ForgetLog();
    EXPECT_EQ(CVxMapiEngine::GetDefaultProfileName(), "100% Home"_w);
    EXPECT_TRUE(IsLogged("100% Home"));
    EXPECT_FALSE(IsLogged("Other"));

    const FailureRow failures[] = {
        {"administration", "MAPIAdminProfiles", E_FAIL, "MAPIAdminProfiles failed (80004005)"},
        {"no object", "MAPIAdminProfiles", S_OK, "MAPIAdminProfiles failed (0)"},
        {"table", "IProfAdmin::GetProfileTable", MAPI_E_NO_ACCESS, "GetProfileTable failed (80070005)"},
        {"no table", "IProfAdmin::GetProfileTable", S_OK, "GetProfileTable failed (0)"},
        {"rows", "HrQueryAllRows", MAPI_E_BUSY, "HrQueryAllRows failed (8004010b)"},
        {"none", "HrQueryAllRows", S_OK, "HrQueryAllRows returned no profiles."},
    };
    for (const FailureRow& row : failures) {
        SCOPED_TRACE(row.name);
        mapi.script.ForgetOrders();
        Order(mapi.script, row);
        ForgetLog();
        EXPECT_EQ(CVxMapiEngine::GetDefaultProfileName(), CStringW());
        EXPECT_TRUE(IsLogged(row.logged));
    }
}

TEST_F(EngineTest, TellsWhetherAProfileHasExchange) {
    ProfileModel& profile = *mapi.profiles.front();
    EXPECT_FALSE(CVxMapiEngine::CheckForExchangeProfile("Work"_w));
    EXPECT_TRUE(IsLogged("HrQueryAllRows returned no services."));
    AddService(profile, "MSPST MS", 1);
    AddService(profile, "", 2)->row.Set(Failing(PR_SERVICE_NAME_W));
    EXPECT_FALSE(CVxMapiEngine::CheckForExchangeProfile("Work"_w));
    AddService(profile, "msems", 3);
    mapi.script.TakeCalls();
    EXPECT_TRUE(CVxMapiEngine::CheckForExchangeProfile("Work"_w));
    EXPECT_EQ(
        mapi.script.TakeCalls(),
        (Words{"MAPIAdminProfiles(00000000)", "IProfAdmin::AdminServices(Work,null,0,00000000)",
               "IMsgServiceAdmin::GetMsgServiceTable(00000000)", "HrQueryAllRows([3D09001F,3D0C0102],null,null,0)"}));
}

TEST(DataPath, IsTheExistingFolderThatTheApplicationsKeyNames) {
    const TempFolder folder;
    const std::string path = folder.Path().string();
    const std::string longPath = path + std::string(260 - path.size(), 'x');
    const struct {
        const char* name;
        const char* key;
        std::string value;
        const char* asked;
        bool found;
    } rows[] = {
        {"the application's own", "Vx Tree Tests", path, "Vx Tree Tests", true},
        {"another application's", "Vx Tree Tests", path, "Vx Tree Other", false},
        {"of no application", "Vx Desktop Search", path, "", true},
        {"a folder that is not there", "Vx Tree Tests", path + "-not-there", "Vx Tree Tests", false},
        {"too long", "Vx Tree Tests", longPath, "Vx Tree Tests", false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const UserRegistry registry(row.key, "DataPath", row.value);
        if (!registry.IsUsable()) {
            continue;
        }
        const CStringW found = CVxMapiEngine::GetDataPath(Wide(row.asked));
        EXPECT_EQ(!found.empty(), row.found) << Ascii(found);
        EXPECT_TRUE(found.empty() || std::filesystem::equivalent(ToPath(found), folder.Path()));
    }
    const UserRegistry noValue("Vx Tree Tests", "Other", path);
    EXPECT_EQ(CVxMapiEngine::GetDataPath("Vx Tree Tests"_w), CStringW());
}

}  // namespace
