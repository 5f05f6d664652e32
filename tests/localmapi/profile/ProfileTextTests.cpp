// The text of a profile's file: what it says, how it is written, and how it is refused.
#include "localmapi/profile/ProfileText.h"
#include "localmapi/profile/PropertyText.h"
#include "mapi/MapiCodes.h"
#include "mapi/MapiGuids.h"
#include "mapi/PropTags.h"
#include "tests/localmapi/profile/ProfileTestSupport.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

namespace localmapi::profile::testing {
namespace {

// Written as the documentation describes it, with the freedoms that it leaves to people.
constexpr std::string_view kSample =
    "\xEF\xBB\xBF# my own\r\n"
    "[profile]\r\n"
    "version = 1\r\n"
    "  name=\"Work \\\"A\\\"\"  \r\n"
    "\r\n"
    "[service 0101010101010101010101010101010a]\n"
    "PR_SERVICE_NAME = unicode:\"MSPST MS\"\n"
    "[provider 0202020202020202020202020202020B]\n"
    "# a comment\n"
    "PR_RESOURCE_TYPE = long:0x21\n"
    "PR_PST_PATH = unicode:\"/home/j\xC3\xB6rg/a = b.pst\"\n"
    "0x7777=binary:00ff\n"
    "[section 03030303030303030303030303030303]\n"
    "[global]\n"
    "PR_STORE_PROVIDERS = binary:0202020202020202020202020202020B\n"
    "[end]\n"
    "# the end\n";

TEST(ProfileText, IsReadAsPeopleWriteIt) {
    const auto profile = ParseProfile(kSample, "sample");
    ASSERT_TRUE(profile) << profile.Failure().text;
    EXPECT_EQ(Utf8(profile->name), "Work \"A\"");
    ASSERT_EQ(profile->services.size(), 1U);
    EXPECT_EQ(Utf8(profile->services[0].section.Text(PR_SERVICE_NAME)), "MSPST MS");
    ASSERT_EQ(profile->services[0].providers.size(), 1U);
    const Section& provider = profile->services[0].providers[0];
    EXPECT_EQ(provider.Uid().ab[15], 0x0B);
    EXPECT_EQ(provider.Long(PR_RESOURCE_TYPE), 33);
    EXPECT_EQ(Utf8(provider.Text(PR_PST_PATH)), "/home/j\xC3\xB6rg/a = b.pst");
    EXPECT_EQ(provider.Binary(PROP_TAG(PT_BINARY, 0x7777)).U16(0), 0xFF00);
    EXPECT_EQ(profile->others.size(), 1U);
    ASSERT_EQ(profile->StoreProviders().size(), 1U);
    EXPECT_EQ(profile->StoreProviders()[0], &provider);
    EXPECT_EQ(profile->global.Find(PROP_ID(PR_PROFILE_CONFIG_FLAGS)), nullptr) << "the file does not say so";
}

TEST(ProfileText, IsWrittenAsItIsRead) {
    Profile profile(Wide("caf\xC3\xA9\n"));
    Service& service = profile.services.emplace_back(Service{profile.NewSection(UidOf(0x11)), {}});
    service.section.SetText(PR_DISPLAY_NAME, "Archive"_w);
    service.providers.push_back(profile.NewSection(UidOf(0x22)));
    service.providers[0].SetLong(PR_RESOURCE_TYPE, -33);
    profile.SectionFor(UidOf(0x33)).SetBool(PR_DEFAULT_STORE, true);
    profile.Enlist(PR_STORE_PROVIDERS, UidOf(0x22));
    const std::string text = WriteProfile(profile);
    EXPECT_EQ(text.substr(text.find("\n[profile]")),
              "\n[profile]\nversion = 1\nname = \"caf\xC3\xA9\\n\"\n"
              "\n[global]\n"
              "PR_STORE_PROVIDERS = binary:22222222222222222222222222222222\n"
              "PR_PROFILE_CONFIG_FLAGS = long:0\n"
              "\n[service 11111111111111111111111111111111]\n"
              "PR_DISPLAY_NAME = unicode:\"Archive\"\n"
              "\n[provider 22222222222222222222222222222222]\n"
              "PR_RESOURCE_TYPE = long:-33\n"
              "\n[section 33333333333333333333333333333333]\n"
              "PR_DEFAULT_STORE = boolean:true\n"
              "\n[end]\n");
    const auto again = ParseProfile(text, "again");
    ASSERT_TRUE(again) << again.Failure().text;
    EXPECT_EQ(WriteProfile(*again), text);
}

TEST(ProfileText, ThatIsDamagedIsRefusedWithTheLine) {
    const std::string head = "[profile]\nversion = 1\nname = \"x\"\n";
    const std::string service = "[service 01010101010101010101010101010101]\n";
    struct Row {
        const char* what;
        std::string text;
        std::size_t line;
    };
    const Row rows[] = {
        {"empty", "", 0},
        {"zeros", std::string(3, '\0'), 1},
        {"not a profile", "<?xml?>", 1},
        {"a later version", "[profile]\nversion = 2\nname = \"x\"\n[end]\n", 2},
        {"no version", "[profile]\nname = \"x\"\n[end]\n", 2},
        {"no name", "[profile]\nversion = 1\n[end]\n", 3},
        {"an empty name", "[profile]\nversion = 1\nname = \"\"\n[end]\n", 3},
        {"a name without quotation marks", "[profile]\nversion = 1\nname = x\n[end]\n", 3},
        {"a name that holds a zero", "[profile]\nversion = 1\nname = \"a" + std::string(1, '\0') + "b\"\n[end]\n", 3},
        {"an open quotation", "[profile]\nversion = 1\nname = \"x\n[end]\n", 3},
        {"cut off", head + "[global]\n", 4},
        {"cut in a line", head + "[global]\nPR_STORE_PROVIDERS = binary:22", 5},
        {"more behind the end", head + "[end]\n\nx\n", 6},
        {"a property before sections", head + "PR_RESOURCE_TYPE = long:1\n[end]\n", 4},
        {"a provider without a service", head + "[provider 01010101010101010101010101010101]\n[end]\n", 4},
        {"an unknown kind", head + "[store 01010101010101010101010101010101]\n[end]\n", 4},
        {"a short identifier", head + "[service 0101]\n[end]\n", 4},
        {"no identifier", head + "[service]\n[end]\n", 4},
        {"a heading without end", head + "[service 01010101010101010101010101010101\n[end]\n", 4},
        {"an identifier twice", head + service + service + "[end]\n", 5},
        {"two global sections", head + "[global]\n[global]\n[end]\n", 5},
        {"the global section's identifier", head + "[section 13DBB0C8AA05101A9BB000AA002FC45A]\n[end]\n", 4},
        {"a property twice", head + service + "0x6700 = long:1\nPR_PST_PATH = string8:\"x\"\n[end]\n", 6},
        {"an unknown property", head + service + "PR_NONSENSE = long:1\n[end]\n", 5},
        {"no type", head + service + "PR_RESOURCE_TYPE = 1\n[end]\n", 5},
        {"an unknown type", head + service + "PR_RESOURCE_TYPE = int:1\n[end]\n", 5},
        {"no number", head + service + "PR_RESOURCE_TYPE = long:12x\n[end]\n", 5},
        {"an empty number", head + service + "PR_RESOURCE_TYPE = long:\n[end]\n", 5},
        {"an empty number of base 16", head + service + "PR_RESOURCE_TYPE = long:0x\n[end]\n", 5},
        {"too large a number", head + service + "PR_RESOURCE_TYPE = long:4294967296\n[end]\n", 5},
        {"neither true nor false", head + service + "PR_DEFAULT_STORE = boolean:yes\n[end]\n", 5},
        {"half a byte", head + service + "PR_RECORD_KEY = binary:012\n[end]\n", 5},
        {"a short class", head + service + "0x7001 = clsid:0102\n[end]\n", 5},
        {"an unknown escape", head + service + "PR_DISPLAY_NAME = unicode:\"\\q\"\n[end]\n", 5},
        {"a byte in wide text", head + service + "PR_DISPLAY_NAME = unicode:\"\\x41\"\n[end]\n", 5},
        {"a zero", head + service + "PR_DISPLAY_NAME = unicode:\"\\u0000\"\n[end]\n", 5},
        {"not UTF-8", head + service + "PR_DISPLAY_NAME = unicode:\"\xC3\"\n[end]\n", 5},
        {"a list of what has none", head + service + "PR_DISPLAY_NAME = boolean[]:true\n[end]\n", 5},
        {"a list with a hole", head + service + "0x7001 = long[]:1,,2\n[end]\n", 5},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        const auto profile = ParseProfile(row.text, "a/x.profile");
        if (profile) {
            ADD_FAILURE() << "it was taken";
            continue;
        }
        EXPECT_EQ(profile.Failure().code, ErrorCode::Corrupt);
        const std::string place = "a/x.profile:" + std::to_string(row.line) + ": ";
        EXPECT_EQ(profile.Failure().text.substr(0, place.size()), place) << profile.Failure().text;
        EXPECT_GT(profile.Failure().text.size(), place.size());
    }
}

// Cutting a file anywhere, or spoiling any of its bytes, never crashes; and a cut one is never taken for a whole one.
TEST(ProfileText, SurvivesCutsAndSpoiltBytes) {
    const std::string_view text = kSample.substr(0, kSample.find("[end]") + 5);
    for (std::size_t size = 0; size < text.size(); ++size) {
        EXPECT_FALSE(ParseProfile(text.substr(0, size), "cut")) << size;
    }
    for (const char spoilt : {'\0', '"', '\\', '\n', '[', '\xFF'}) {
        for (std::size_t at = 0; at < text.size(); ++at) {
            std::string copy(text);
            copy[at] = spoilt;
            const auto profile = ParseProfile(copy, "spoilt");
            EXPECT_TRUE(profile || profile.Failure().code == ErrorCode::Corrupt);
            FindProfileName(copy);
        }
    }
}

TEST(ProfileText, GivesItsNameEvenWhenDamagedElsewhere) {
    const auto name = FindProfileName("[profile]\nversion = 9\nname = \"Home\"\n[gl");
    ASSERT_TRUE(name);
    EXPECT_EQ(Utf8(*name), "Home");
    EXPECT_FALSE(FindProfileName("[profile]\n[global]\nname = \"Home\"\n"));
    EXPECT_FALSE(FindProfileName(""));
}

// ---- Properties -----------------------------------------------------------------------------------------------------

// A property line that is written as it was read.
void ExpectSameLine(std::string_view line) {
    SCOPED_TRACE(std::string(line));
    Arena memory;
    std::string reason;
    const auto value = ParseProperty(line, memory, reason);
    ASSERT_TRUE(value) << reason;
    EXPECT_EQ(PropertyLine(*value), line);
}

TEST(PropertyText, KeepsEveryType) {
    constexpr std::string_view kLines[] = {
        "0x7001 = short:-32768",
        "0x7001 = long:2147483647",
        "0x7001 = i8:-9223372036854775808",
        "0x7001 = currency:123456",
        "0x7001 = float:0.1",
        "0x7001 = double:1e+300",
        "0x7001 = apptime:45000.25",
        "0x7001 = systime:133500000000000000",
        "0x7001 = boolean:false",
        "0x7001 = unicode:\"\"",
        "0x7001 = string8:\"a\\tb\"",
        "0x7001 = binary:",
        "0x7001 = binary:00FF10",
        "0x7001 = clsid:00112233445566778899AABBCCDDEEFF",
        "0x7001 = short[]:1, -1",
        "0x7001 = long[]:",
        "0x7001 = float[]:1.5, 2.5",
        "0x7001 = double[]:1, 2, 3",
        "0x7001 = currency[]:1",
        "0x7001 = apptime[]:0.5",
        "0x7001 = systime[]:1, 4294967296",
        "0x7001 = i8[]:1, 2",
        "0x7001 = unicode[]:\"a, \\\"b\\\"\", \"\", \"c\\\\\"",
        "0x7001 = string8[]:\"x\", \"y\"",
        "0x7001 = binary[]:01, , 0203",
        "0x7001 = clsid[]:00112233445566778899AABBCCDDEEFF, FFEEDDCCBBAA99887766554433221100",
        "PR_DISPLAY_NAME = unicode:\"both widths of a text have one name\"",
        "PR_DISPLAY_NAME = string8:\"both widths of a text have one name\"",
        "PR_PST_PATH = unicode:\"x\"",
        "PR_PROFILE_BINDING_ORDER = string8:\"one id, two names\"",
        "PR_PROFILE_OPEN_FLAGS = long:1",
        "0x6700 = long:1",
    };
    for (const std::string_view line : kLines) {
        ExpectSameLine(line);
    }
}

TEST(PropertyText, HoldsWhatNoLineCouldHold) {
    struct Row {
        const char* what;
        CStringW text;
        const char* written;
    };
    const CStringW loneHigh = {0x61, 0xD83D};
    const CStringW loneLow = {0xDE00, 0x61};
    const CStringW pair = {0xD83D, 0xDE00};
    const CStringW swapped = {0xDE00, 0xD83D};
    const CStringW lines = {'\r', '\n', 0x85, 0x2028, 1};
    const Row rows[] = {
        {"a high surrogate", loneHigh, "\"a\\uD83D\""},
        {"a low surrogate", loneLow, "\"\\uDE00a\""},
        {"a pair", pair, "\"\xF0\x9F\x98\x80\""},
        {"a pair the wrong way round", swapped, "\"\\uDE00\\uD83D\""},
        {"ends of lines", lines, "\"\\r\\n\\u0085\\u2028\\u0001\""},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        Arena memory;
        const std::string line = PropertyLine(WideValue(PR_DISPLAY_NAME_W, row.text, memory));
        EXPECT_EQ(line, "PR_DISPLAY_NAME = unicode:" + std::string(row.written));
        std::string reason;
        const auto again = ParseProperty(line, memory, reason);
        ASSERT_TRUE(again) << reason;
        EXPECT_EQ(CStringW(again->Value.lpszW), row.text);
    }
}

TEST(PropertyText, KeepsBytesThatAreNoTextOfThePage) {
    Arena memory;
    const std::string bytes = "a\xFF\xFE\\\"z";
    std::string reason;
    const auto again = ParseProperty(PropertyLine(NarrowValue(PR_DISPLAY_NAME_A, bytes, memory)), memory, reason);
    ASSERT_TRUE(again) << reason;
    EXPECT_EQ(std::string(again->Value.lpszA), bytes);
}

TEST(PropertyText, KeepsNumbersThatHaveNoShortForm) {
    Arena memory;
    for (const double number : {0.1 + 0.2, 5e-324, std::numeric_limits<double>::infinity(), -0.0}) {
        SPropValue value{};
        value.ulPropTag = PROP_TAG(PT_DOUBLE, 0x7001);
        value.Value.dbl = number;
        std::string reason;
        const auto again = ParseProperty(PropertyLine(value), memory, reason);
        ASSERT_TRUE(again) << reason;
        EXPECT_EQ(again->Value.dbl, number);
        EXPECT_EQ(std::signbit(again->Value.dbl), std::signbit(number));
    }
}

TEST(PropertyText, IsEmptyForWhatFilesDoNotKeep) {
    EXPECT_EQ(PropertyLine(ErrorValue(PR_DISPLAY_NAME, MAPI_E_NOT_FOUND)), "");
    SPropValue object{};
    object.ulPropTag = PROP_TAG(PT_OBJECT, 0x7001);
    EXPECT_EQ(PropertyLine(object), "");
}

}  // namespace
}  // namespace localmapi::profile::testing
