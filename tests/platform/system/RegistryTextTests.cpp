// The registry as a file: regedit's syntax line by line, hostile text, where the file is looked for, and when it is read
// again.
#include "platform/Registry.h"
#include "platform/linux/system/RegistryText.h"
#include "tests/platform/system/SystemTestSupport.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace {

using vx_system::ParseRegistry;
using vx_system::RegistryKey;
using vx_system::RegistryValue;

const RegistryKey* FindKey(const RegistryKey& root, std::initializer_list<LPCWSTR> path) {
    const RegistryKey* key = &root;
    for (const LPCWSTR name : path) {
        const auto found = key->keys.find(vx_system::FoldCase(name));
        if (found == key->keys.end()) {
            return nullptr;
        }
        key = found->second.get();
    }
    return key;
}

// A value as "type:hexadecimal bytes", "none" when there is no such value.
std::string Shown(const RegistryKey* key, LPCWSTR name) {
    const auto value = key == nullptr ? std::map<CStringW, RegistryValue>::const_iterator()
                                      : key->values.find(vx_system::FoldCase(name));
    if (key == nullptr || value == key->values.end()) {
        return "none";
    }
    std::string text = std::to_string(value->second.type) + ":";
    for (const BYTE byte : value->second.data) {
        text += "0123456789abcdef"[byte >> 4];
        text += "0123456789abcdef"[byte & 15];
    }
    return text;
}

TEST(RegistryText, ReadsOneValuePerLineAsRegeditDoes) {
    const struct {
        const char* name;
        const char* lines;  // beneath a key's line
        const char* shown;  // the value "v"
    } rows[] = {
        {"text", R"("v"="ab")", "1:610062000000"},
        {"empty text", R"("v"="")", "1:0000"},
        {"escaped backslash and quote", R"("v"="\\\"")", "1:5c0022000000"},
        {"other backslashes stay", R"("v"="a\b")", "1:61005c0062000000"},
        {"escapes in the name", R"("\\v"=dword:1)", "none"},
        {"blanks around", "  \"v\" \t=  \"a\"  ", "1:61000000"},
        {"comment behind", R"("v"="a" ; "b")", "1:61000000"},
        {"semicolon inside", R"("v"=";")", "1:3b000000"},
        {"equals sign in the text", R"("v"="=")", "1:3d000000"},
        {"carriage return and line feed", "\r\n\"v\"=\"a\"\r\n\r\n", "1:61000000"},
        {"UTF-8", "\"v\"=\"\xE2\x82\xAC\xF0\x9F\x98\x80\"", "1:ac203dd800de0000"},
        {"broken UTF-8", "\"v\"=\"\xC3\xFF\"", "1:fdfffdff0000"},
        {"dword", R"("v"=dword:0000001f)", "4:1f000000"},
        {"dword, few digits, capitals", R"("v"=dword:AbC)", "4:bc0a0000"},
        {"dword, largest", R"("v"=dword:ffffffff)", "4:ffffffff"},
        {"dword with nine digits", R"("v"=dword:123456789)", "none"},
        {"dword without digits", R"("v"=dword:)", "none"},
        {"dword with a sign", R"("v"=dword:-1)", "none"},
        {"bytes", R"("v"=hex:0a,B,ff)", "3:0a0bff"},
        {"no bytes", R"("v"=hex:)", "3:"},
        {"bytes with blanks and a last comma", R"("v"=hex: 01 , 02,)", "3:0102"},
        {"bytes of a type", R"("v"=hex(2):25,00,00,00)", "2:25000000"},
        {"bytes of a large type", R"("v"=hex(ffff0000):01)", "4294901760:01"},
        {"bytes going on below", "\"v\"=hex:01,\\\n  02,\\\n\t03\n", "3:010203"},
        {"bytes going on below, CR LF", "\"v\"=hex:01,\\\r\n  02\r\n", "3:0102"},
        {"bytes going on in an empty line", "\"v\"=hex:01,\\\n\n\"w\"=dword:1", "3:01"},
        {"bytes without commas", R"("v"=hex:0102)", "none"},
        {"not hexadecimal", R"("v"=hex:0g)", "none"},
        {"type without its end", R"("v"=hex(2:25)", "none"},
        {"no end of the text", R"("v"="a)", "none"},
        {"the last quote escaped", R"("v"="a\")", "none"},
        {"more behind the text", R"("v"="a"b)", "none"},
        {"no name", R"(v="a")", "none"},
        {"no equals sign", R"("v" "a")", "none"},
        {"unknown kind", R"("v"=qword:1)", "none"},
        {"the last one counts", "\"v\"=\"a\"\n\"V\"=dword:2", "4:02000000"},
        {"removed", "\"v\"=\"a\"\n\"V\"=-", "none"},
        {"a bad line leaves the value", "\"v\"=\"a\"\n\"v\"=dword:x", "1:61000000"},
        {"a comment", ";\"v\"=\"a\"", "none"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const std::string text = std::string("[HKEY_CURRENT_USER\\K]\n") + row.lines + "\n\"last\"=dword:7\n";
        const auto tree = ParseRegistry(text);
        const RegistryKey* key = FindKey(*tree, {"HKEY_CURRENT_USER"_w, "K"_w});
        EXPECT_EQ(Shown(key, "v"_w), row.shown);
        EXPECT_EQ(Shown(key, "last"_w), "4:07000000") << "the line behind is read in any case";
    }
}

TEST(RegistryText, MakesAndRemovesKeys) {
    const char* text =
        "Windows Registry Editor Version 5.00\n\n"
        "\"v\"=\"before any key\"\n"
        "[HKEY_LOCAL_MACHINE\\A\\B]\n@=\"default\"\n\"v\"=dword:1\n"
        "[HKEY_LOCAL_MACHINE\\a\\b] ; the same key again\n\"w\"=dword:2\n"
        "[HKEY_LOCAL_MACHINE\\Gone\\Deep]\n\"v\"=dword:3\n"
        "[-HKEY_LOCAL_MACHINE\\GONE]\n\"v\"=dword:4\n"
        "[-HKEY_LOCAL_MACHINE\\Never\\There]\n"
        "[-HKEY_LOCAL_MACHINE]\n"
        "[HKEY_SOMETHING\\A]\n\"v\"=dword:5\n"
        "[HKEY_LOCAL_MACHINE\\With ] bracket]\n\"v\"=dword:6\n"
        "[HKEY_LOCAL_MACHINE\\No end\n\"v\"=dword:7\n";
    const auto tree = ParseRegistry(text);
    const LPCWSTR machine = "HKEY_LOCAL_MACHINE"_w;
    const RegistryKey* key = FindKey(*tree, {machine, "A"_w, "B"_w});
    EXPECT_EQ(Shown(key, ""_w).substr(0, 10), "1:64006500");
    EXPECT_EQ(Shown(key, "v"_w), "4:01000000");
    EXPECT_EQ(Shown(key, "w"_w), "4:02000000");
    EXPECT_EQ(Shown(FindKey(*tree, {machine, "With ] bracket"_w}), "v"_w), "4:06000000");
    EXPECT_EQ(FindKey(*tree, {machine})->keys.size(), 2U);
    EXPECT_TRUE(FindKey(*tree, {machine})->values.empty()) << "a value behind a removed key belongs to none";
    EXPECT_EQ(tree->keys.size(), 1U);
}

TEST(RegistryText, ReadsUtf16AndShutsOutTheOldKind) {
    const std::string narrow = "Windows Registry Editor Version 5.00\r\n[HKEY_CURRENT_USER\\K]\r\n\"v\"=\"a\"\r\n";
    std::string wide = "\xFF\xFE";
    for (const char unit : narrow) {
        wide += unit;
        wide += '\0';
    }
    for (const std::string& text : {narrow, "\xEF\xBB\xBF" + narrow, wide, wide + '\x20'}) {
        EXPECT_EQ(Shown(FindKey(*ParseRegistry(text), {"HKEY_CURRENT_USER"_w, "K"_w}), "v"_w), "1:61000000");
    }
    EXPECT_TRUE(ParseRegistry("REGEDIT4\n[HKEY_CURRENT_USER\\K]\n\"v\"=\"a\"\n")->keys.empty());
}

TEST(RegistryText, StaysWithinItsLimits) {
    const vx_system::RegistryLimits limits = {.keys = 4, .depth = 3, .keyName = 5, .valueName = 2};
    const auto tree = ParseRegistry(
        "[HKEY_USERS\\A\\B\\C]\n\"v\"=dword:1\n"  // three levels and no more
        "[HKEY_USERS\\A\\B]\n\"v\"=dword:1\n\"vvv\"=dword:1\n"
        "[HKEY_USERS\\A]\n[HKEY_USERS\\C]\n[HKEY_USERS\\D]\n\"v\"=dword:1\n",  // D would be the fifth key
        {.keys = 4, .depth = 3, .keyName = 10, .valueName = 2});
    EXPECT_EQ(FindKey(*tree, {"HKEY_USERS"_w, "A"_w, "B"_w, "C"_w}), nullptr);
    EXPECT_EQ(FindKey(*tree, {"HKEY_USERS"_w, "A"_w, "B"_w})->values.size(), 1U);
    EXPECT_NE(FindKey(*tree, {"HKEY_USERS"_w, "C"_w}), nullptr);
    EXPECT_EQ(FindKey(*tree, {"HKEY_USERS"_w, "D"_w}), nullptr);
    EXPECT_TRUE(ParseRegistry("[HKEY_USERS]\n", limits)->keys.empty()) << "a name of ten units, where five may be";

    // A tree of the greatest depth is taken down again without trouble, and a text of backslashes makes nothing.
    std::string deep = "[HKEY_USERS";
    for (int i = 0; i < 511; ++i) {
        deep += "\\k";
    }
    EXPECT_EQ(ParseRegistry(deep + "]")->keys.size(), 1U);
    EXPECT_TRUE(ParseRegistry(deep + "\\k]")->keys.empty());
    EXPECT_TRUE(ParseRegistry("[" + std::string(1'000'000, '\\') + "]")->keys.empty());
}

TEST(RegistryText, CutAnywhereGivesABeginningOfTheValues) {
    const std::string text =
        "\xEF\xBB\xBFWindows Registry Editor Version "
        "5.00\r\n\r\n[HKEY_USERS\\K]\r\n\"1\"=\"a\\\\b\"\r\n\"2\"=dword:12\r\n"
        "\"3\"=hex(7):61,00,\\\r\n  00,00\r\n@=hex:ff\r\n[-HKEY_USERS\\K\\Sub]\r\n";
    const std::string complete[] = {"1:61005c0062000000", "4:12000000", "7:61000000"};
    for (std::size_t length = 0; length <= text.size(); ++length) {
        const auto tree = ParseRegistry(text.substr(0, length));
        const RegistryKey* key = FindKey(*tree, {"HKEY_USERS"_w, "K"_w});
        EXPECT_TRUE(Shown(key, "1"_w) == "none" || Shown(key, "1"_w) == complete[0]) << length;
        const std::string third = Shown(key, "3"_w);
        EXPECT_TRUE(third == "none" || third.starts_with("7:")) << length;
        EXPECT_TRUE(third == "none" || Shown(key, "2"_w) == complete[1]) << "values come in order, " << length;
    }
}

LSTATUS Open(LPCWSTR path, REGSAM access = KEY_READ) {
    HKEY key = nullptr;
    const LSTATUS status = RegOpenKeyExW(HKEY_CURRENT_USER, path, 0, access, &key);
    RegCloseKey(key);
    return status;
}

TEST(RegistryFile, IsLookedForInTheVariableAndThenInTheConfigurationFolder) {
    const TemporaryFolder folder;
    const std::string own = folder.Write("own.reg", "[HKEY_CURRENT_USER\\Own]\n");
    folder.Write("registry.reg", "[HKEY_CURRENT_USER\\Shared]\n");
    const ScopedVariable home("VX_HOME", folder.Path().c_str());
    {
        const ScopedVariable registry("VX_REGISTRY", own.c_str());
        EXPECT_EQ(Open("Own"_w), 0);
        EXPECT_EQ(Open("Shared"_w), LSTATUS{ERROR_FILE_NOT_FOUND});
    }
    const ScopedVariable registry("VX_REGISTRY", nullptr);
    EXPECT_EQ(Open("Shared"_w), 0);
    EXPECT_EQ(Open("Own"_w), LSTATUS{ERROR_FILE_NOT_FOUND});
    EXPECT_EQ(Open("Shared"_w, KEY_READ | KEY_WRITE), LSTATUS{ERROR_ACCESS_DENIED});
}

TEST(RegistryFile, IsReadAgainAfterAChangeWhileOpenKeysStayAsTheyWere) {
    const TemporaryFolder folder;
    const std::string path = folder.Write("r.reg", "[HKEY_CURRENT_USER\\K]\n\"v\"=dword:1\n");
    const ScopedVariable registry("VX_REGISTRY", path.c_str());
    HKEY before = nullptr;
    ASSERT_EQ(RegOpenKeyExW(HKEY_CURRENT_USER, "K"_w, 0, KEY_READ, &before), 0);

    folder.Write("r.reg", "[HKEY_CURRENT_USER\\Another]\n");
    EXPECT_EQ(Open("K"_w), LSTATUS{ERROR_FILE_NOT_FOUND});
    EXPECT_EQ(Open("Another"_w), 0);
    BYTE data[4] = {};
    DWORD size = 4;
    EXPECT_EQ(RegQueryValueExW(before, "v"_w, nullptr, nullptr, data, &size), 0);
    EXPECT_EQ(data[0], 1);
    EXPECT_EQ(RegCloseKey(before), 0);

    std::filesystem::remove(path);
    EXPECT_EQ(Open("Another"_w), LSTATUS{ERROR_FILE_NOT_FOUND});
}

TEST(RegistryFile, OfAKindThatCannotBeReadIsNoRegistryAndNoDelay) {
    const TemporaryFolder folder;
    const std::filesystem::path pipe = folder.Path() / "pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    const std::filesystem::path huge = folder.Write("huge.reg", "[HKEY_CURRENT_USER\\K]\n");
    std::filesystem::resize_file(huge, (std::uintmax_t{16} << 20) + 1);
    for (const std::filesystem::path& path : {pipe, huge, folder.Path(), folder.Path() / "missing"}) {
        const ScopedVariable registry("VX_REGISTRY", path.c_str());
        EXPECT_EQ(Open("K"_w), LSTATUS{ERROR_FILE_NOT_FOUND}) << path;
        EXPECT_EQ(Open(nullptr), 0) << "a root is there without a file";
    }
}

}  // namespace
