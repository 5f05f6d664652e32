// The search for MAPI as a whole, on a registry and a system folder of the test's own.
#include "provider/ImportState.h"
#include "provider/MapiSearch.h"
#include "tests/provider/mapi/import/ImportTestSupport.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

namespace {

using vx_fake_mapi::Answer;

constexpr char kMailKey[] = "Software\\Clients\\Mail";
constexpr char kOutlookKey[] = "Software\\Clients\\Mail\\Microsoft Outlook";

// The loader asks for the system folder once, so it is one for all tests, and each test fills it anew.
const TempFolder& SystemFolder() {
    static const TempFolder folder;
    static const int isSet = ::setenv("VX_SYSTEM_DIR", folder.Path().c_str(), 1);
    static_cast<void>(isSet);
    return folder;
}

// What the installer answers with, for the life of this object; see FakeComponentPath.cpp.
class Installer {
public:
    Installer(const char* component, const char* qualifier, const std::string& path) {
        ::setenv("VX_FAKE_COMPONENT", component, 1);
        ::setenv("VX_FAKE_QUALIFIER", qualifier, 1);
        ::setenv("VX_FAKE_PATH", path.c_str(), 1);
    }
    ~Installer() { ::unsetenv("VX_FAKE_COMPONENT"); }
    Installer(const Installer&) = delete;
    Installer& operator=(const Installer&) = delete;
};

class Search : public LoaderTest {
protected:
    Search() { Clear(); }
    ~Search() override {
        UnloadMAPI();
        Clear();
    }

    static void InstallInSystem(const char* name, const std::string& as) {
        std::filesystem::create_symlink(FakeFile(name), SystemFolder().Path() / as);
    }

    // What FGetComponentPath of the loaded mapi32 was asked so far.
    static std::string ComponentCalls() {
        const auto calls = reinterpret_cast<const char* (*)()>(
            reinterpret_cast<void (*)()>(GetProcAddress(hModMAPI, "FakeComponentCalls")));
        return calls();
    }

    static RegistryRow ComponentId() { return {kOutlookKey, "MSIComponentID", REG_SZ, TextBytes("{C}")}; }

private:
    static void Clear() {
        for (const auto& entry : std::filesystem::directory_iterator(SystemFolder().Path())) {
            std::filesystem::remove(entry.path());
        }
    }
};

int CountOf(const std::vector<std::string>& texts, std::string_view text) {
    return static_cast<int>(std::count(texts.begin(), texts.end(), text));
}

TEST_F(Search, WithoutMapiEachFunctionGivesItsFixedResultAndEachCallSearchesAgain) {
    const TestRegistry registry({});
    for (const Probe& probe : Probes()) {
        SCOPED_TRACE(probe.name);
        const LogCapture log;
        EXPECT_EQ(probe.call(), probe.missing);
        EXPECT_EQ(probe.call(), probe.missing);
        const std::vector<std::string> lines = log.Texts("DEBUG");
        EXPECT_EQ(CountOf(lines, "AutoLoadMAPI - loading MAPI exports\n"), 2);
        EXPECT_EQ(CountOf(lines, "LoadFromSystemDir - loading \"mapi32.dll\"\n"), 2);
        EXPECT_EQ(CountOf(lines, std::string("Function pfn") + probe.name + " not loaded\n"), 2);
        EXPECT_TRUE(std::none_of(lines.begin(), lines.end(),
                                 [](const std::string& line) { return line.starts_with("LoadMAPIFuncs"); }));
    }
}

TEST_F(Search, TheSystemsLibraryServesAMachineWithoutAClient) {
    const TestRegistry registry({});
    InstallInSystem("fake_system", "libmapi32.so");
    const LogCapture log;
    for (const Probe& probe : Probes()) {
        EXPECT_EQ(probe.call(), probe.From(kSystem)) << probe.name;
    }
    EXPECT_EQ(CountOf(log.Texts("DEBUG"), "AutoLoadMAPI - loading MAPI exports\n"), 1);
}

TEST_F(Search, TheClientWinsEntryByEntryAndTheSystemFillsTheGaps) {
    const TestRegistry registry({ComponentId()});
    InstallInSystem("fake_system", "libmapi32.so");
    const Installer installer("{C}", "-", FakeFile("fake_few").string());
    for (const Probe& probe : Probes()) {
        EXPECT_EQ(probe.call(), probe.From(probe.isFew ? kFew : kSystem)) << probe.name;
    }
    EXPECT_NE(hModMSMAPI.load(), nullptr);
    EXPECT_NE(hModMAPI.load(), hModMSMAPI.load());
}

TEST_F(Search, TheStubTellsTheClientWhereMapi32CannotAndTheClientServesAlone) {
    const TestRegistry registry({ComponentId()});
    InstallInSystem("fake_stub", "libmapistub.so");
    const Installer installer("{C}", "-", FakeFile("fake_client").string());
    const LogCapture log;
    for (const Probe& probe : Probes()) {
        EXPECT_EQ(probe.call(), probe.From(kClient)) << probe.name;
    }
    EXPECT_EQ(hModMAPI.load(), nullptr);
    EXPECT_NE(hModMAPIStub.load(), nullptr);
    const std::vector<std::string> lines = log.Texts("DEBUG");
    EXPECT_TRUE(std::any_of(lines.begin(), lines.end(), [](const std::string& line) {
        return line.starts_with("FGetComponentPath loaded at 0x") && !line.ends_with("x00000000\n");
    }));
}

TEST_F(Search, AClientThatDoesNotLoadLeavesTheSystemsLibrary) {
    const TestRegistry registry({ComponentId()});
    InstallInSystem("fake_system", "libmapi32.so");
    const TempFolder folder;
    WriteFile(folder.File("client.so"), "no library");
    for (const char* file : {"client.so", "missing.so"}) {
        SCOPED_TRACE(file);
        const Installer installer("{C}", "-", (folder.Path() / file).string());
        const LogCapture log;
        EXPECT_EQ(MAPIInitialize(nullptr), Answer(kSystem, "MAPIInitialize"));
        EXPECT_EQ(hModMSMAPI.load(), nullptr);
        EXPECT_EQ(
            CountOf(log.Texts("DEBUG"), "MyLoadLibrary - \"" + (folder.Path() / file).string() + "\" failed to load\n"),
            1);
        UnloadMAPI();
    }
}

TEST_F(Search, UnloadingFreesEveryLibraryAndTheNextCallFindsWhatIsThereThen) {
    InstallInSystem("fake_system", "libmapi32.so");
    const Installer installer("{C}", "-", FakeFile("fake_few").string());
    {
        const TestRegistry registry({ComponentId()});
        EXPECT_EQ(MAPIInitialize(nullptr), Answer(kFew, "MAPIInitialize"));
        EXPECT_EQ(MAPILogonEx(0, nullptr, nullptr, 0, nullptr), Answer(kSystem, "MAPILogonEx"));
    }
    ASSERT_NE(GetModuleHandleW(FakePath("fake_few").c_str()), nullptr);
    const LogCapture log;
    UnloadMAPI();
    EXPECT_EQ(log.Texts("DEBUG"), std::vector<std::string>{"UnloadMAPI - unloading MAPI exports\n"});
    EXPECT_EQ(log.Texts("ERROR"), std::vector<std::string>{});
    EXPECT_EQ(GetModuleHandleW(FakePath("fake_few").c_str()), nullptr);
    EXPECT_EQ(GetModuleHandleW("mapi32.dll"_w), nullptr);

    const TestRegistry registry({});
    EXPECT_EQ(MAPIInitialize(nullptr), Answer(kSystem, "MAPIInitialize"));
}

TEST_F(Search, TheInstallerIsAskedWithTheApplicationsLanguageThenOfficesThenNone) {
    struct Row {
        const char* name;
        std::vector<RegistryRow> values;
        const char* answered;  // the qualifier that has a path
        const char* calls;
        bool isFound = true;
    };
    const RegistryRow application = {kOutlookKey, "MSIApplicationLCID", REG_MULTI_SZ, TextBytes("app") + TextBytes("")};
    const RegistryRow office = {kOutlookKey, "MSIOfficeLCID", REG_SZ, TextBytes("off")};
    const RegistryRow binary = {kOutlookKey, "MSIOfficeLCID", REG_BINARY, TextBytes("off")};
    const Row rows[] = {
        {"application's", {ComponentId(), application, office}, "app", "{C}/app "},
        {"Office's", {ComponentId(), application, office}, "off", "{C}/app {C}/off "},
        {"none", {ComponentId(), application, office}, "-", "{C}/app {C}/off {C}/- "},
        {"no application's in the registry", {ComponentId(), office}, "off", "{C}/off "},
        {"Office's of a wrong type", {ComponentId(), binary}, "-", "{C}/- "},
        {"unknown to the installer", {ComponentId(), application}, "x", "{C}/app {C}/- ", false},
        {"no component", {application, office}, "app", "", false},
    };
    InstallInSystem("fake_system", "libmapi32.so");
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        UnloadMAPI();
        const TestRegistry registry(row.values);
        const Installer installer("{C}", row.answered, "/opt/client.so");
        LoadGetComponentPath();
        WCHAR path[MAX_PATH] = {'?'};
        GetMAPIPath("Microsoft Outlook"_w, path, MAX_PATH);
        EXPECT_EQ(CStringW(path), row.isFound ? Wide("/opt/client.so") : CStringW());
        EXPECT_EQ(ComponentCalls(), row.calls);
    }
}

TEST_F(Search, AnAnswerWithoutATerminatorEndsWhereTheInstallersRoomEnds) {
    const TestRegistry registry({ComponentId()});
    InstallInSystem("fake_system", "libmapi32.so");
    const Installer installer("{C}", "-", "*");
    WCHAR path[MAX_PATH] = {};
    EXPECT_TRUE(GetComponentPath("{C}"_w, nullptr, path, MAX_PATH));
    EXPECT_EQ(CStringW(path), CStringW(130, 'x'));
    WCHAR smallPath[130] = {'?'};
    EXPECT_FALSE(GetComponentPath("{C}"_w, nullptr, smallPath, 130)) << "a cut path is another file's";
    EXPECT_EQ(smallPath[0], 0);
}

TEST_F(Search, TheDefaultMailClientIsTheOneThatTheRegistryNames) {
    const RegistryRow other = {"Software\\Clients\\Mail\\Other", "MSIComponentID", REG_SZ, TextBytes("{OTHER}")};
    RegistryValue component;
    {
        const TestRegistry registry({ComponentId(), other, {kMailKey, "", REG_SZ, TextBytes("Other")}});
        GetMapiMsiIds(nullptr, &component, nullptr, nullptr);
        ASSERT_NE(component, nullptr);
        EXPECT_EQ(CStringW(component.get()), Wide("{OTHER}"));
    }
    const TestRegistry registry({ComponentId(), other});
    EXPECT_EQ(GetMailKey(nullptr), nullptr) << "no default value";
}

TEST_F(Search, ThreadsThatMeetInItAllGetTheFunction) {
    const TestRegistry registry({});
    InstallInSystem("fake_system", "libmapi32.so");
    std::atomic<int> answers = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([&answers] { answers += MAPILogonEx(0, nullptr, nullptr, 0, nullptr) > 0 ? 1 : 0; });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(answers, 8);
    // Each of them may have loaded; UnloadMAPI takes back one.
    for (HMODULE extra = hModMAPI; GetModuleHandleW("mapi32.dll"_w) != nullptr;) {
        FreeLibrary(extra);
    }
    hModMAPI = nullptr;
}

}  // namespace
