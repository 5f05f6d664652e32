// Reading what the installer left in the registry, on the machine's own functions.
#include "provider/MapiSearch.h"
#include "tests/provider/mapi/import/ImportTestSupport.h"

namespace {

constexpr char kKey[] = "Software\\Clients\\Mail\\Vx Import Test";
constexpr auto& kClient = "Vx Import Test"_w;

using namespace std::string_literals;

TEST(RegistryValue, OnlyTextsAndNumbersAreRead) {
    struct Row {
        const char* name;
        DWORD type;
        std::string bytes;
        HRESULT expected;
        CStringW text;
    };
    const Row rows[] = {
        {"text", REG_SZ, TextBytes("{0149EADB}"), S_OK, Wide("{0149EADB}")},
        {"texts", REG_MULTI_SZ, TextBytes("1033") + TextBytes("1031") + TextBytes(""), S_OK, Wide("1033")},
        {"number", REG_DWORD, "\x41\0\0\0"s, S_OK, Wide("A")},
        {"empty text with terminator", REG_SZ, TextBytes(""), S_OK, {}},
        {"text without terminator", REG_SZ, "A\0B\0"s, S_OK, Wide("AB")},
        {"text with half a unit at its end", REG_SZ, "A\0B\0C"s, S_OK, Wide("ABC")},
        {"one byte", REG_SZ, "A", S_OK, Wide("A")},
        {"nothing", REG_SZ, "", E_INVALIDARG, {}},
        {"bytes", REG_BINARY, "A\0"s, E_INVALIDARG, {}},
        {"text with variables", REG_EXPAND_SZ, TextBytes("%PATH%"), E_INVALIDARG, {}},
        {"long number", REG_QWORD, "\x41\0\0\0\0\0\0\0"s, E_INVALIDARG, {}},
    };
    std::vector<RegistryRow> values;
    for (const Row& row : rows) {
        values.push_back({kKey, row.name, row.type, row.bytes});
    }
    const TestRegistry registry(values);
    const RegistryKey key = GetMailKey(kClient);
    ASSERT_NE(key, nullptr);

    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        DWORD type = 99;
        RegistryValue data(new WCHAR[1]);
        EXPECT_EQ(HrGetRegistryValue(key.get(), Wide(row.name).c_str(), type, data), row.expected);
        EXPECT_EQ(type, row.type);
        ASSERT_EQ(data != nullptr, row.expected == S_OK);
        if (data != nullptr) {
            EXPECT_EQ(CStringW(data.get()), row.text);
        }
    }
    DWORD type = 99;
    RegistryValue data;
    const LogCapture log;
    EXPECT_EQ(HrGetRegistryValue(key.get(), "not there"_w, type, data), E_INVALIDARG);
    EXPECT_EQ(log.Texts("DEBUG"), std::vector<std::string>{"HrGetRegistryValue(not there)\n"});
    ASSERT_EQ(log.Texts("ERROR").size(), 1U);
    EXPECT_NE(log.Texts("ERROR")[0].find("== 0x80070002"), std::string::npos) << log.Texts("ERROR")[0];
}

TEST(MsiIds, AreReadOnlyWhenAskedFor) {
    const TestRegistry registry({{kKey, "MSIComponentID", REG_SZ, TextBytes("{COMPONENT}")},
                                 {kKey, "MSIOfficeLCID", REG_MULTI_SZ, TextBytes("1031") + TextBytes("")}});
    RegistryValue component;
    RegistryValue appLcid;
    RegistryValue officeLcid;
    GetMapiMsiIds(kClient, &component, &appLcid, &officeLcid);
    ASSERT_NE(component, nullptr);
    EXPECT_EQ(CStringW(component.get()), Wide("{COMPONENT}"));
    EXPECT_EQ(appLcid, nullptr);
    ASSERT_NE(officeLcid, nullptr);
    EXPECT_EQ(CStringW(officeLcid.get()), Wide("1031"));

    const LogCapture log;
    GetMapiMsiIds(kClient, nullptr, nullptr, &officeLcid);
    EXPECT_EQ(log.Texts("DEBUG"), (std::vector<std::string>{"Open key Software\\Clients\\Mail\\Vx Import Test",
                                                            "HrGetRegistryValue(MSIOfficeLCID)\n"}));
}

TEST(MailKey, OfAClientThatIsNotThereIsNull) {
    const TestRegistry registry({});
    const LogCapture log;
    EXPECT_EQ(GetMailKey("Vx Other Client"_w), nullptr);
    EXPECT_EQ(GetMailKey(std::basic_string<WCHAR>(70'000, 'x').c_str()), nullptr);
    EXPECT_EQ(log.Texts("ERROR").size(), 2U);
}

}  // namespace
