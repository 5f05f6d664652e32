// Reading the registry through the published functions. The same keys stand in a .reg text on Linux and are written into
// the current user's registry on Windows.
#include "platform/Registry.h"
#include "platform/WideText.h"
#include "tests/platform/system/SystemTestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <vector>

namespace {

using Bytes = std::vector<BYTE>;

const CStringW kAccentedName = {'G', 'r', 0xFC, 'n'};
const CStringW kAccentedNameInCapitals = {'G', 'R', 0xDC, 'N'};

#ifdef _WIN32

class StoredKeys {
public:
    StoredKeys() {
        Remove();
        HKEY key = Make("Software\\VxSystemTests\\Main"_w);
        Set(key, nullptr, REG_SZ, {'d', 0, 0, 0});
        Set(key, "Text"_w, REG_SZ, {'h', 0, 'i', 0, 0xAC, 0x20, 0, 0});
        Set(key, "Empty"_w, REG_SZ, {0, 0});
        Set(key, "Number"_w, REG_DWORD, {0x78, 0x56, 0x34, 0x12});
        Set(key, "Odd"_w, REG_BINARY, {1, 2, 3});
        Set(key, "Nothing"_w, REG_BINARY, {});
        Set(key, "List"_w, REG_MULTI_SZ, {'a', 0, 0, 0, 'b', 0, 0, 0, 0, 0});
        Set(key, kAccentedName.c_str(), REG_QWORD, {8, 7, 6, 5, 4, 3, 2, 1});
        RegCloseKey(key);
        RegCloseKey(Make("Software\\VxSystemTests\\Main\\Sub One"_w));
        RegCloseKey(Make("Software\\VxSystemTests\\Main\\Sub Two\\Deeper"_w));
    }
    ~StoredKeys() { Remove(); }

private:
    static HKEY Make(LPCWSTR path) {
        HKEY key = nullptr;
        RegCreateKeyExW(HKEY_CURRENT_USER, path, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr);
        return key;
    }
    static void Set(HKEY key, LPCWSTR name, DWORD type, const Bytes& data) {
        RegSetValueExW(key, name, 0, type, data.data(), static_cast<DWORD>(data.size()));
    }
    static void Remove() { RegDeleteTreeW(HKEY_CURRENT_USER, "Software\\VxSystemTests"_w); }
};

#else

class StoredKeys {
public:
    StoredKeys() : m_variable("VX_REGISTRY", m_folder.Write("test.reg", kText).c_str()) {}

private:
    static constexpr std::string_view kText =
        "Windows Registry Editor Version 5.00\r\n\r\n"
        "[HKEY_CURRENT_USER\\Software\\VxSystemTests\\Main]\r\n"
        "@=\"d\"\r\n"
        "\"Text\"=\"hi\xE2\x82\xAC\"\r\n"
        "\"Empty\"=\"\"\r\n"
        "\"Number\"=dword:12345678\r\n"
        "\"Odd\"=hex:01,02,03\r\n"
        "\"Nothing\"=hex:\r\n"
        "\"List\"=hex(7):61,00,00,00,62,00,\\\r\n  00,00,00,00\r\n"
        "\"Gr\xC3\xBCn\"=hex(b):08,07,06,05,04,03,02,01\r\n\r\n"
        "[HKEY_CURRENT_USER\\Software\\VxSystemTests\\Main\\Sub One]\r\n\r\n"
        "[HKEY_CURRENT_USER\\Software\\VxSystemTests\\Main\\Sub Two\\Deeper]\r\n";

    TemporaryFolder m_folder;
    ScopedVariable m_variable;
};

#endif

class Registry : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(RegOpenKeyExW(HKEY_CURRENT_USER, "Software\\VxSystemTests\\Main"_w, 0, KEY_READ, &m_main), 0);
    }
    void TearDown() override { EXPECT_EQ(RegCloseKey(m_main), 0); }

    StoredKeys m_stored;
    HKEY m_main = nullptr;
};

TEST_F(Registry, GivesKindSizeAndDataOfAValue) {
    const struct {
        LPCWSTR name;
        DWORD type;
        Bytes data;
    } rows[] = {
        {nullptr, REG_SZ, {'d', 0, 0, 0}},
        {""_w, REG_SZ, {'d', 0, 0, 0}},
        {"text"_w, REG_SZ, {'h', 0, 'i', 0, 0xAC, 0x20, 0, 0}},
        {"EMPTY"_w, REG_SZ, {0, 0}},
        {"Number"_w, REG_DWORD, {0x78, 0x56, 0x34, 0x12}},
        {"Odd"_w, REG_BINARY, {1, 2, 3}},
        {"Nothing"_w, REG_BINARY, {}},
        {"List"_w, REG_MULTI_SZ, {'a', 0, 0, 0, 'b', 0, 0, 0, 0, 0}},
        {kAccentedNameInCapitals.c_str(), REG_QWORD, {8, 7, 6, 5, 4, 3, 2, 1}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::PrintToString(CStringW(row.name == nullptr ? "(null)"_w : row.name)));
        DWORD type = 99;
        DWORD size = 0;
        EXPECT_EQ(RegQueryValueExW(m_main, row.name, nullptr, &type, nullptr, &size), 0);
        EXPECT_EQ(type, row.type);
        ASSERT_EQ(size, row.data.size());
        Bytes data(size + 1, 0xCC);
        EXPECT_EQ(RegQueryValueExW(m_main, row.name, nullptr, nullptr, data.data(), &size), 0);
        EXPECT_EQ(size, row.data.size());
        EXPECT_TRUE(std::equal(row.data.begin(), row.data.end(), data.begin()));
        EXPECT_EQ(data.back(), 0xCC) << "a byte behind the data";
    }
}

TEST_F(Registry, NeverWritesMoreThanTheRoomGiven) {
    constexpr DWORD kNeeded = 8;
    for (const DWORD room : {0U, 1U, 7U, 8U, 9U, 16U}) {
        SCOPED_TRACE(room);
        Bytes data(16, 0xCC);
        DWORD size = room;
        DWORD type = 99;
        const LSTATUS status = RegQueryValueExW(m_main, "Text"_w, nullptr, &type, data.data(), &size);
        EXPECT_EQ(status, room >= kNeeded ? LSTATUS{ERROR_SUCCESS} : LSTATUS{ERROR_MORE_DATA});
        EXPECT_EQ(size, kNeeded);
        EXPECT_EQ(type, DWORD{REG_SZ});
        EXPECT_EQ(std::count(data.begin() + std::min(room, kNeeded), data.end(), 0xCC),
                  16 - static_cast<int>(std::min(room, kNeeded)));
    }
    DWORD size = 5;
    EXPECT_EQ(RegQueryValueExW(m_main, "Text"_w, nullptr, nullptr, nullptr, &size), 0);
    EXPECT_EQ(size, kNeeded) << "without a buffer, what stood in the size is no room";
    BYTE byte = 0;
    EXPECT_EQ(RegQueryValueExW(m_main, "Text"_w, nullptr, nullptr, &byte, nullptr), LSTATUS{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(RegQueryValueExW(m_main, "Text"_w, nullptr, nullptr, nullptr, nullptr), 0);
    EXPECT_EQ(RegQueryValueExW(m_main, "Missing"_w, nullptr, nullptr, nullptr, &size), LSTATUS{ERROR_FILE_NOT_FOUND});
}

TEST_F(Registry, FindsKeysWithoutRegardToCase) {
    const HKEY never = reinterpret_cast<HKEY>(ULONG_PTR{0x12340});
    const struct {
        const char* name;
        HKEY parent;
        LPCWSTR path;
        LSTATUS status;
    } rows[] = {
        {"capitals", HKEY_CURRENT_USER, "SOFTWARE\\vxsystemtests\\MAIN"_w, ERROR_SUCCESS},
        {"a key made only as a parent", HKEY_CURRENT_USER, "Software\\VxSystemTests"_w, ERROR_SUCCESS},
        {"beneath an open key", m_main, "sub one"_w, ERROR_SUCCESS},
        {"two levels beneath", m_main, "Sub Two\\Deeper"_w, ERROR_SUCCESS},
        {"a backslash behind", m_main, "Sub One\\"_w, ERROR_SUCCESS},
        {"null", m_main, nullptr, ERROR_SUCCESS},
        {"empty", m_main, ""_w, ERROR_SUCCESS},
        {"missing", m_main, "Sub"_w, ERROR_FILE_NOT_FOUND},
        {"longer than a key", m_main, "Sub Ones"_w, ERROR_FILE_NOT_FOUND},
        {"beneath a missing one", m_main, "Missing\\Sub One"_w, ERROR_FILE_NOT_FOUND},
        {"a value's name", m_main, "Text"_w, ERROR_FILE_NOT_FOUND},
        {"of another root", HKEY_LOCAL_MACHINE, "Software\\VxSystemTests"_w, ERROR_FILE_NOT_FOUND},
        {"a backslash in front", HKEY_CURRENT_USER, "\\Software"_w, ERROR_BAD_PATHNAME},
        {"no such handle", never, "Software"_w, ERROR_INVALID_HANDLE},
        {"no handle", nullptr, "Software"_w, ERROR_INVALID_HANDLE},
    };
    for (const auto& row : rows) {
        HKEY key = never;
        EXPECT_EQ(RegOpenKeyExW(row.parent, row.path, 0, KEY_READ, &key), row.status) << row.name;
        EXPECT_EQ(key != nullptr, row.status == ERROR_SUCCESS) << row.name;
        EXPECT_TRUE(key == nullptr || RegCloseKey(key) == 0) << row.name;
    }
    EXPECT_EQ(RegOpenKeyExW(HKEY_CURRENT_USER, "Software"_w, 0, KEY_READ, nullptr), LSTATUS{ERROR_INVALID_PARAMETER});
}

TEST_F(Registry, ListsSubkeysAndValues) {
    std::multiset<CStringW> keys;
    std::multiset<CStringW> values;
    WCHAR name[20];
    for (DWORD index = 0;; ++index) {
        DWORD length = 20;
        const LSTATUS status = RegEnumKeyExW(m_main, index, name, &length, nullptr, nullptr, nullptr, nullptr);
        if (status != 0) {
            EXPECT_EQ(status, LSTATUS{ERROR_NO_MORE_ITEMS});
            break;
        }
        EXPECT_EQ(name[length], 0);
        keys.emplace(name, length);
    }
    Bytes number;
    for (DWORD index = 0;; ++index) {
        DWORD length = 20;
        DWORD type = 0;
        Bytes data(16);
        DWORD size = 16;
        const LSTATUS status = RegEnumValueW(m_main, index, name, &length, nullptr, &type, data.data(), &size);
        if (status != 0) {
            EXPECT_EQ(status, LSTATUS{ERROR_NO_MORE_ITEMS});
            break;
        }
        values.emplace(name, length);
        if (type == REG_DWORD) {
            number.assign(data.begin(), data.begin() + size);
        }
    }
    EXPECT_EQ(keys, (std::multiset<CStringW>{"Sub One"_w, "Sub Two"_w}));
    EXPECT_EQ(values, (std::multiset<CStringW>{""_w, "Text"_w, "Empty"_w, "Number"_w, "Odd"_w, "Nothing"_w, "List"_w,
                                               kAccentedName}));
    EXPECT_EQ(number, (Bytes{0x78, 0x56, 0x34, 0x12}));

    DWORD length = 7;  // one too few for "Sub One" and its terminator
    std::fill(std::begin(name), std::end(name), WCHAR{0x5555});
    EXPECT_EQ(RegEnumKeyExW(m_main, 0, name, &length, nullptr, nullptr, nullptr, nullptr), LSTATUS{ERROR_MORE_DATA});
    EXPECT_EQ(std::count(name + 7, std::end(name), WCHAR{0x5555}), 13);
}

TEST_F(Registry, ClosesAHandleOnce) {
    HKEY key = nullptr;
    ASSERT_EQ(RegOpenKeyExW(m_main, nullptr, 0, KEY_READ, &key), 0);
    EXPECT_EQ(RegCloseKey(key), 0);
    EXPECT_EQ(RegCloseKey(key), LSTATUS{ERROR_INVALID_HANDLE});
    EXPECT_EQ(RegQueryValueExW(key, "Text"_w, nullptr, nullptr, nullptr, nullptr), LSTATUS{ERROR_INVALID_HANDLE});
    EXPECT_EQ(RegCloseKey(HKEY_CURRENT_USER), 0);
}

}  // namespace
