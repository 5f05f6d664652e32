// Paths as wide text, the current directory, and the folders that the system names.
#include "platform/Paths.h"
#include "tests/platform/system/SystemTestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

constexpr WCHAR kReplacement = 0xFFFD;

TEST(Paths, PassThroughWideTextUnharmed) {
    const CStringW names[] = {"a b.txt"_w, CStringW({'r', 0xE9, 's', 0xE9}), CStringW({0x4E2D, 0x6587}),
                              CStringW({0xD83D, 0xDE00, '.', 'm', 's', 'g'})};
    const TemporaryFolder folder;
    for (const CStringW& name : names) {
        const std::filesystem::path path = folder.Path() / ToPath(name);
        std::ofstream(path) << "x";
        EXPECT_TRUE(std::filesystem::exists(path)) << testing::PrintToString(name);
        EXPECT_EQ(FromPath(path.filename()), name);
    }
    std::size_t count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder.Path())) {
        count += std::count(std::begin(names), std::end(names), FromPath(entry.path().filename())) == 1 ? 1U : 0U;
    }
    EXPECT_EQ(count, std::size(names));
}

TEST(Paths, NeverEndANameAtAZeroUnit) {
    EXPECT_EQ(FromPath(ToPath(WideView("a.txt\0.exe"_w, 10))),
              CStringW({'a', '.', 't', 'x', 't', kReplacement, '.', 'e', 'x', 'e'}));
    EXPECT_TRUE(ToPath(WideView()).empty());
}

#ifndef _WIN32

TEST(Paths, ReplaceWhatTheOtherSideCannotHold) {
    EXPECT_EQ(ToPath(CStringW({'a', 0xD800, 'b'})).native(),
              "a\xEF\xBF\xBD"
              "b");
    EXPECT_EQ(FromPath("a\xFF/\xE4.pst"), CStringW({'a', kReplacement, '/', kReplacement, '.', 'p', 's', 't'}));
}

TEST(Paths, ConfigurationFolderFollowsTheVariables) {
    const struct {
        const char* own;
        const char* settings;
        const char* home;
        const char* expected;
    } rows[] = {
        {"/own", "/settings", "/home/u", "/own"},
        {nullptr, "/settings", "/home/u", "/settings/vx"},
        {"", "", "/home/u", "/home/u/.config/vx"},
        {nullptr, "relative", "/home/u", "/home/u/.config/vx"},
    };
    for (const auto& row : rows) {
        const ScopedVariable own("VX_HOME", row.own);
        const ScopedVariable settings("XDG_CONFIG_HOME", row.settings);
        const ScopedVariable home("HOME", row.home);
        EXPECT_EQ(ConfigurationFolder(), row.expected);
    }
    const ScopedVariable own("VX_HOME", nullptr);
    const ScopedVariable settings("XDG_CONFIG_HOME", nullptr);
    const ScopedVariable home("HOME", nullptr);
    EXPECT_TRUE(ConfigurationFolder().empty() || ConfigurationFolder().is_absolute()) << "from the user database";
}

TEST(Paths, TemporaryFolderIsTheVariablesWhenThatIsAbsolute) {
    const auto folder = [] {
        WCHAR buffer[300];
        return CStringW(buffer, GetTempPathW(300, buffer));
    };
    const struct {
        const char* value;
        LPCWSTR expected;
    } rows[] = {{"/var/tmp", "/var/tmp/"_w}, {"/var/tmp/", "/var/tmp/"_w}, {"tmp", "/tmp/"_w}, {nullptr, "/tmp/"_w}};
    for (const auto& row : rows) {
        const ScopedVariable variable("TMPDIR", row.value);
        EXPECT_EQ(folder(), CStringW(row.expected));
    }
}

#else

TEST(Paths, ConfigurationFolderFollowsTheVariables) {
    {
        const ScopedVariable own("VX_HOME", "C:\\own");
        EXPECT_EQ(ConfigurationFolder(), "C:\\own");
    }
    const ScopedVariable own("VX_HOME", nullptr);
    const ScopedVariable settings("APPDATA", "C:\\settings");
    EXPECT_EQ(ConfigurationFolder(), "C:\\settings\\vx");
}

#endif

TEST(Paths, CurrentDirectoryIsSetAndReadBack) {
    const TemporaryFolder folder;
    const ScopedCurrentDirectory before(folder.Path());
    std::filesystem::create_directory("inner");
    folder.Write("file", "x");
    ASSERT_TRUE(SetCurrentDirectoryW("inner"_w));
    EXPECT_EQ(std::filesystem::current_path(), std::filesystem::canonical(folder.Path() / "inner"));

    WCHAR buffer[1024];
    const DWORD length = GetCurrentDirectoryW(1024, buffer);
    EXPECT_EQ(ToPath(WideView(buffer, length)), std::filesystem::current_path());
    std::fill(std::begin(buffer), std::end(buffer), WCHAR{0x5555});
    EXPECT_EQ(GetCurrentDirectoryW(length, buffer), length + 1) << "no room for the terminator";
    EXPECT_EQ(GetCurrentDirectoryW(0, nullptr), length + 1);
    EXPECT_EQ(GetCurrentDirectoryW(length + 1, buffer), length);
    EXPECT_EQ(buffer[length + 1], 0x5555);

    const struct {
        CStringW path;
        DWORD error;
    } rows[] = {{FromPath(folder.Path() / "missing"), ERROR_FILE_NOT_FOUND},
                {FromPath(folder.Path() / "file"), ERROR_DIRECTORY},
                {CStringW(), ERROR_INVALID_NAME}};
    for (const auto& row : rows) {
        SetLastError(0);
        EXPECT_FALSE(SetCurrentDirectoryW(row.path.c_str()));
        EXPECT_EQ(GetLastError(), row.error) << testing::PrintToString(row.path);
    }
    EXPECT_EQ(std::filesystem::current_path().filename(), "inner");
}

TEST(Paths, ShortFormIsOfAnExistingPathOnly) {
    const TemporaryFolder folder;
    const CStringW path = FromPath(folder.Path());
    WCHAR buffer[1024];
    const DWORD length = GetShortPathNameW(path.c_str(), buffer, 1024);
    ASSERT_GT(length, 0U);
    EXPECT_TRUE(std::filesystem::equivalent(ToPath(WideView(buffer, length)), folder.Path()));
    EXPECT_EQ(GetShortPathNameW(path.c_str(), buffer, length), length + 1);

    WCHAR same[1024];
    *std::copy(path.begin(), path.end(), same) = 0;
    EXPECT_EQ(GetShortPathNameW(same, same, 1024), length) << "the buffer may be the path";

    SetLastError(0);
    EXPECT_EQ(GetShortPathNameW((path + kPathSeparator + "missing"_w).c_str(), buffer, 1024), 0U);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_FILE_NOT_FOUND});
    EXPECT_EQ(GetShortPathNameW(nullptr, buffer, 1024), 0U);
    EXPECT_EQ(GetShortPathNameW(""_w, buffer, 1024), 0U);
}

}  // namespace
