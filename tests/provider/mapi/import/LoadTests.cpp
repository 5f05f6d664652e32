// Taking functions from libraries, without the search for them.
#include "provider/MapiSearch.h"
#include "tests/provider/mapi/import/ImportTestSupport.h"

namespace {

using vx_fake_mapi::Answer;

class LoadedFunctions : public LoaderTest {};

TEST_F(LoadedFunctions, EveryFunctionGoesToTheFirstLibraryThatHasIt) {
    const FakeLibrary few("fake_few");
    const FakeLibrary client("fake_client");
    const auto lastCallOfFew = few.Get<const char*()>("FakeLastVoidCall");
    const auto lastCallOfClient = client.Get<const char*()>("FakeLastVoidCall");
    LoadMAPIFuncs(few.Module());
    LoadMAPIFuncs(client.Module());
    for (const Probe& probe : Probes()) {
        SCOPED_TRACE(probe.name);
        EXPECT_EQ(probe.call(), probe.From(probe.isFew ? kFew : kClient));
        EXPECT_STREQ(lastCallOfFew(), probe.isVoid && probe.isFew ? probe.name : "");
        EXPECT_STREQ(lastCallOfClient(), probe.isVoid && !probe.isFew ? probe.name : "");
    }
}

TEST_F(LoadedFunctions, ADecoratedNameIsTriedFirstAndItsLackIsLogged) {
    const FakeLibrary client("fake_client");
    const LogCapture log;
    LoadMAPIFuncs(client.Module());
    std::vector<std::string> lacking = log.Texts("DEBUG");
    ASSERT_FALSE(lacking.empty());
    EXPECT_TRUE(lacking[0].starts_with("LoadMAPIFuncs - loading from 0x")) << lacking[0];
    lacking.erase(lacking.begin());

    std::vector<std::string> expected;
    for (const Probe& probe : Probes()) {
        if (probe.isDecorated) {
            expected.push_back(std::string("Failed to load \"") + probe.name + "@");
        }
    }
    EXPECT_EQ(log.Texts("ERROR").size(), expected.size());
    ASSERT_EQ(lacking.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_TRUE(lacking[i].starts_with(expected[i]) && lacking[i].find("\" from 0x") != std::string::npos)
            << lacking[i] << " instead of " << expected[i];
    }
    // 0x8007007F is ERROR_PROC_NOT_FOUND.
    EXPECT_NE(log.Texts("ERROR")[0].find("== 0x8007007F"), std::string::npos) << log.Texts("ERROR")[0];
}

TEST_F(LoadedFunctions, UnloadingForgetsTheFunctionsForThoseOfAnotherLibrary) {
    const FakeLibrary client("fake_client");
    const FakeLibrary system("fake_system");
    LoadMAPIFuncs(client.Module());
    EXPECT_EQ(MAPIInitialize(nullptr), Answer(kClient, "MAPIInitialize"));
    LoadMAPIFuncs(system.Module());
    EXPECT_EQ(MAPIInitialize(nullptr), Answer(kClient, "MAPIInitialize"));
    UnloadMAPI();
    LoadMAPIFuncs(system.Module());
    for (const Probe& probe : Probes()) {
        EXPECT_EQ(probe.call(), probe.From(kSystem)) << probe.name;
    }
}

TEST_F(LoadedFunctions, NoModuleGivesNothing) {
    const LogCapture log;
    LoadMAPIFuncs(nullptr);
    EXPECT_EQ(log.Lines().size(), 1U);
    EXPECT_EQ(LoadFromSystemDir(nullptr), nullptr);
    EXPECT_EQ(log.Lines().size(), 1U);
}

TEST_F(LoadedFunctions, FreeingANullBlockLoadsNothing) {
    const LogCapture log;
    EXPECT_EQ(MAPIFreeBuffer(nullptr), 0U);
    EXPECT_EQ(log.Lines(), std::vector<LogLine>{});
}

TEST_F(LoadedFunctions, AFileThatIsNoLibraryDoesNotLoad) {
    const TempFolder folder;
    WriteFile(folder.File("broken.dll"), "MZ and no more");
    WriteFile(folder.File("libbroken.so"),
              "\x7F"
              "ELF and no more");
    for (const char* name : {"broken.dll", "missing.dll"}) {
        SCOPED_TRACE(name);
        const LogCapture log;
        EXPECT_EQ(MyLoadLibrary(folder.File(name).c_str()), nullptr);
        const std::vector<LogLine> lines = log.Lines();
        ASSERT_EQ(lines.size(), 3U);
        EXPECT_TRUE(lines[0].text.starts_with("MyLoadLibrary - loading \"") && lines[0].text.ends_with("\"\n"));
        EXPECT_EQ(lines[1].level, "ERROR");
        EXPECT_TRUE(lines[2].text.starts_with("MyLoadLibrary - \"") && lines[2].text.ends_with("\" failed to load\n"));
    }
}

}  // namespace
