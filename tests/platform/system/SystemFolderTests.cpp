// Where a library's name is looked for on Linux, and what it may be spelled like.
#include "platform/Module.h"
#include "platform/WideText.h"
#include "tests/platform/system/SystemTestSupport.h"

#include <gtest/gtest.h>

namespace {

std::filesystem::path OwnFolder() {
    return std::filesystem::read_symlink("/proc/self/exe").parent_path();
}

CStringW SystemFolder() {
    WCHAR folder[1024];
    return CStringW(folder, GetSystemDirectoryW(folder, 1024));
}

bool Loads(const CStringW& name) {
    HMODULE module = LoadLibraryW(name.c_str());
    return module != nullptr && FreeLibrary(module);
}

TEST(SystemFolder, IsTheVariablesAbsolutePathOrThisCodesOwnFolder) {
    const CStringW own = FromPath(OwnFolder());
    const struct {
        const char* value;
        CStringW expected;
    } rows[] = {{"/opt/vx/lib", "/opt/vx/lib"_w}, {nullptr, own}, {"", own}, {"relative/lib", own}, {".", own}};
    for (const auto& row : rows) {
        const ScopedVariable variable("VX_SYSTEM_DIR", row.value);
        EXPECT_EQ(SystemFolder(), row.expected) << (row.value == nullptr ? "(not set)" : row.value);
    }
}

TEST(ModuleSearch, OfABareNameLooksIntoTheSystemFolderAndNowhereElse) {
    const TemporaryFolder empty;
    const ScopedCurrentDirectory current(OwnFolder());
    const ScopedVariable search("LD_LIBRARY_PATH", OwnFolder().c_str());
    {
        const ScopedVariable variable("VX_SYSTEM_DIR", empty.Path().c_str());
        for (const LPCWSTR name : {"vx_module_sample.dll"_w, "vx_module_sample"_w, "libvx_module_sample.so"_w,
                                   "./vx_module_sample.dll"_w, ".\\vx_module_sample.dll"_w, "libc.so.6"_w}) {
            EXPECT_EQ(LoadLibraryW(name), nullptr) << testing::PrintToString(CStringW(name));
            EXPECT_EQ(GetLastError(), ERROR_MOD_NOT_FOUND);
        }
    }
    const ScopedVariable variable("VX_SYSTEM_DIR", OwnFolder().c_str());
    EXPECT_TRUE(Loads("vx_module_sample.dll"_w));
}

TEST(ModuleSearch, TakesWindowsSpellingsOfAPath) {
    const ScopedVariable variable("VX_SYSTEM_DIR", OwnFolder().c_str());
    const CStringW folder = FromPath(OwnFolder());
    const struct {
        CStringW folder;  // empty for a bare name
        LPCWSTR rest;
        bool isFound;
    } rows[] = {
        {""_w, "vx_module_sample"_w, true},
        {""_w, "VX_Module_Sample.DLL"_w, true},
        {""_w, "libvx_module_sample.so"_w, true},
        {folder, "\\vx_module_sample.dll"_w, true},
        {folder, "/VX_MODULE_SAMPLE.dll"_w, true},
        {folder, "/libvx_module_sample.so"_w, true},
        {folder, "\\vx_module_sample.so"_w, false},
        {folder, "/"_w, false},
        {""_w, "vx_module_sample.dll.dll"_w, false},
        {""_w, ".dll"_w, false},
        {""_w, ".."_w, false},
        {""_w, ""_w, false},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Loads(row.folder + row.rest), row.isFound) << testing::PrintToString(CStringW(row.rest));
    }
}

TEST(ModuleSearch, PrefersTheSpellingGiven) {
    const TemporaryFolder folder;
    folder.Write("libMixed.so", "no library");
    std::filesystem::copy_file(OwnFolder() / "libvx_module_sample.so", folder.Path() / "libmixed.so");
    const CStringW path = FromPath(folder.Path());
    EXPECT_FALSE(Loads(path + "/Mixed.dll"_w));
    EXPECT_EQ(GetLastError(), ERROR_BAD_EXE_FORMAT);
    EXPECT_TRUE(Loads(path + "/MIXED.dll"_w));
}

TEST(ModuleSearch, ShutsOutALibraryOfAnotherMachine) {
    const TemporaryFolder folder;
    const std::filesystem::path path = folder.Path() / "libother.so";
    std::filesystem::copy_file(OwnFolder() / "libvx_module_sample.so", path);
    std::fstream file(path, std::ios::binary | std::ios::in | std::ios::out);
    file.seekp(18);  // the machine's number in the head of the file
    file.put('\x02');
    file.close();
    EXPECT_FALSE(Loads(FromPath(path)));
    EXPECT_EQ(GetLastError(), ERROR_BAD_EXE_FORMAT);
}

}  // namespace
