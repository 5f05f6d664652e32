// Loading a library by path, its entry points, its counts and its path.
#include "platform/Module.h"
#include "platform/WideText.h"
#include "tests/platform/system/SystemTestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

// The folder of this program, where the build puts the sample library too.
std::filesystem::path OwnFolder() {
    WCHAR path[1024];
    const DWORD length = GetModuleFileNameW(nullptr, path, 1024);
    return ToPath(WideView(path, length)).parent_path();
}

CStringW SampleIn(const std::filesystem::path& folder) {
    return FromPath(folder / "vx_module_sample.dll");
}

TEST(Module, GivesTheFunctionsThatTheLibraryItselfExports) {
    HMODULE module = LoadLibraryW(SampleIn(OwnFolder()).c_str());
    ASSERT_NE(module, nullptr) << GetLastError();
    // Through void (*)(), which the compilers accept as any function's address.
    const auto number =
        reinterpret_cast<long (*)(const char*)>(reinterpret_cast<void (*)()>(GetProcAddress(module, "VxSampleNumber")));
    ASSERT_NE(number, nullptr);
    EXPECT_EQ(number("42"), 42);
    // A decorated name, a name in other case, one that only a library beneath has.
    for (const char* name : {"VxSampleNumber@4", "vxsamplenumber", "strtol", ""}) {
        SetLastError(0);
        EXPECT_EQ(GetProcAddress(module, name), nullptr) << name;
        EXPECT_EQ(GetLastError(), DWORD{ERROR_PROC_NOT_FOUND}) << name;
    }
    EXPECT_TRUE(FreeLibrary(module));
}

TEST(Module, StaysLoadedUntilItsLastFree) {
    const CStringW path = SampleIn(OwnFolder());
    HMODULE first = LoadLibraryW(path.c_str());
    HMODULE second = LoadLibraryW(path.c_str());
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(first, second);
    EXPECT_TRUE(FreeLibrary(first));
    EXPECT_NE(GetProcAddress(first, "VxSampleNumber"), nullptr);
    EXPECT_EQ(GetModuleHandleW(path.c_str()), first);
    EXPECT_TRUE(FreeLibrary(first));
    EXPECT_EQ(GetModuleHandleW(path.c_str()), nullptr);
    for (const auto& call : {+[](HMODULE module) { return FreeLibrary(module) != FALSE; },
                             +[](HMODULE module) { return GetProcAddress(module, "VxSampleNumber") != nullptr; }}) {
        SetLastError(0);
        EXPECT_FALSE(call(first));
        EXPECT_EQ(GetLastError(), DWORD{ERROR_MOD_NOT_FOUND});
    }
}

TEST(Module, TellsAMissingFileFromOneThatIsNoLibrary) {
    const TemporaryFolder folder;
    folder.Write("text.dll", "no library");
    folder.Write("libtext.so", "no library");
    folder.Write("empty.dll", "");
    folder.Write("libempty.so", "");
    std::filesystem::create_directory(folder.Path() / "folder.dll");
    std::filesystem::create_directory(folder.Path() / "libfolder.so");
    const struct {
        const char* file;
        DWORD error;
    } rows[] = {{"missing.dll", ERROR_MOD_NOT_FOUND},
                {"text.dll", ERROR_BAD_EXE_FORMAT},
                {"empty.dll", ERROR_BAD_EXE_FORMAT},
                {"folder.dll", ERROR_MOD_NOT_FOUND}};
    for (const auto& row : rows) {
        SetLastError(0);
        EXPECT_EQ(LoadLibraryW(FromPath(folder.Path() / row.file).c_str()), nullptr) << row.file;
#ifdef _WIN32
        if (GetLastError() == ERROR_ACCESS_DENIED) {
            continue;  // for a folder, as some versions say
        }
#endif
        EXPECT_EQ(GetLastError(), row.error) << row.file;
    }
}

TEST(Module, WritesItsPathWithinTheRoomGiven) {
    HMODULE module = LoadLibraryW(SampleIn(OwnFolder()).c_str());
    ASSERT_NE(module, nullptr);
    WCHAR path[1024];
    const DWORD length = GetModuleFileNameW(module, path, 1024);
    ASSERT_GT(length, 8U);
    const std::filesystem::path found = ToPath(WideView(path, length));
    EXPECT_TRUE(found.is_absolute());
    EXPECT_TRUE(std::filesystem::exists(found));
    EXPECT_NE(found.stem().string().find("vx_module_sample"), std::string::npos);

    WCHAR cut[9];
    std::fill(std::begin(cut), std::end(cut), WCHAR{0x5555});
    SetLastError(0);
    EXPECT_EQ(GetModuleFileNameW(module, cut, 8), 8U);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INSUFFICIENT_BUFFER});
    EXPECT_EQ(CStringW(cut, 7), CStringW(path, 7));
    EXPECT_EQ(cut[8], 0x5555);
#ifndef _WIN32
    EXPECT_EQ(cut[7], 0) << "not every Windows writes it";
#endif
    EXPECT_TRUE(FreeLibrary(module));
    EXPECT_EQ(GetModuleFileNameW(module, path, 1024), 0U);
}

TEST(Module, TellsTheRoomThatTheSystemFolderNeeds) {
    WCHAR folder[1024];
    const UINT length = GetSystemDirectoryW(folder, 1024);
    ASSERT_GT(length, 0U);
    EXPECT_EQ(CStringW(folder).size(), length);
    EXPECT_NE(folder[length - 1], kPathSeparator);
    WCHAR untouched = 0x5555;
    EXPECT_EQ(GetSystemDirectoryW(&untouched, 1), length + 1);
    EXPECT_EQ(untouched, 0x5555);
}

}  // namespace
