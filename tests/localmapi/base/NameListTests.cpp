// Lists of names as files have them, hostile ones among them.
#include "localmapi/base/NameList.h"
#include "mapi/MapiGuids.h"
#include "tests/localmapi/pst/support/RecordingSink.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace localmapi::testing {
namespace {

Bytes BytesOf(std::string_view text) {
    Bytes bytes(text.size());
    std::memcpy(bytes.data(), text.data(), text.size());
    return bytes;
}

// "8000 00062008 number 5": the id, the first part of the set, the name.
std::vector<std::string> TextsOf(const std::vector<NamedId>& names) {
    std::vector<std::string> texts;
    for (const NamedId& named : names) {
        char text[64];
        std::snprintf(text, sizeof text, "%04X %08X ", unsigned{named.id}, static_cast<unsigned>(named.name.set.Data1));
        texts.push_back(text
                        + (named.name.isText ? std::string(named.name.text.begin(), named.name.text.end())
                                             : "number " + std::to_string(named.name.number)));
    }
    return texts;
}

using namespace std::string_view_literals;

constexpr std::string_view kSets = "\x08\x20\6\0\0\0\0\0\xC0\0\0\0\0\0\0\x46half of a set"sv;

TEST(NameList, GivesTheNamesThatMakeSenseById) {
    // Two texts, one of them with a terminator; one that is longer than the stream; one longer than names are.
    const std::string texts = std::string("\4\0\0\0h\0i\0\6\0\0\0j\0k\0\0\0\xFF\xFF\xFF\x7F"sv)
                              + std::string("\x02\x08\0\0"sv) + std::string(2050, 'x');
    struct Row {
        const char* name;
        std::string_view entry;
        const char* given;  // null: nothing, and a report
    };
    const Row rows[] = {
        {"a number of a listed set", "\x05\x85\0\0\6\0\1\0"sv, "8001 00062008 number 34053"},
        {"a text of PS_PUBLIC_STRINGS", "\0\0\0\0\5\0\0\0"sv, "8000 00020329 hi"},
        {"a text with a terminator", "\x08\0\0\0\5\0\0\0"sv, "8000 00020329 jk"},
        {"a number of PS_MAPI", "\7\0\0\0\2\0\0\0"sv, "8000 00020328 number 7"},
        {"a number of no set", "\7\0\0\0\0\0\0\0"sv, "8000 00000000 number 7"},
        {"the last id", "\7\0\0\0\0\0\xFE\x7F"sv, "FFFE 00000000 number 7"},
        {"no id is left for it", "\7\0\0\0\0\0\xFF\x7F"sv, nullptr},
        {"an index above all ids", "\7\0\0\0\0\0\xFF\xFF"sv, nullptr},
        {"half a set", "\7\0\0\0\x08\0\0\0"sv, nullptr},
        {"a set that is not listed", "\7\0\0\0\xFE\xFF\0\0"sv, nullptr},
        {"a text that is longer than the stream", "\x12\0\0\0\5\0\0\0"sv, nullptr},
        {"a text that is longer than any", "\x16\0\0\0\5\0\0\0"sv, nullptr},
        {"a text outside the stream", "\0\x10\0\0\5\0\0\0"sv, nullptr},
        {"a text far outside", "\xFF\xFF\xFF\xFF\5\0\0\0"sv, nullptr},
        {"half an entry", "\7\0\0\0"sv, ""},
        {"a place that is filled", "\0\0\0\0\0\0\5\0"sv, ""},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        RecordingSink sink;
        Diagnostics problems(&sink);
        const auto names = TextsOf(ReadNames({BytesOf(kSets), BytesOf(row.entry), BytesOf(texts)}, "map", problems));
        const bool isGiven = row.given != nullptr && *row.given != '\0';
        EXPECT_EQ(names, isGiven ? std::vector<std::string>{row.given} : std::vector<std::string>());
        EXPECT_EQ(sink.Count("map: the named property at 0x0 of the list contradicts itself"), row.given ? 0 : 1);
    }
}

TEST(NameList, TakesTheFirstOfTwoForOneId) {
    const auto entries =
        "\1\0\0\0\0\0\7\0"
        "\2\0\0\0\0\0\3\0"
        "\3\0\0\0\0\0\7\0"sv;
    Diagnostics problems(nullptr);
    EXPECT_EQ(TextsOf(ReadNames({{}, BytesOf(entries), {}}, "map", problems)),
              (std::vector<std::string>{"8003 00000000 number 2", "8007 00000000 number 1"}));
}

// A list may be as long as its file and lead to one long text all over.
TEST(NameList, GivesNoMoreNamesThanThereAreIds) {
    constexpr std::size_t kIds = 0x7FFF;
    const std::string texts = std::string("\0\x08\0\0"sv) + std::string(2048, 'x');
    std::string entries;
    for (unsigned i = 0; i < kIds + 5; ++i) {
        entries += "\0\0\0\0\5\0"sv;
        entries += {static_cast<char>(i), static_cast<char>(i >> 8)};
    }
    for (const std::size_t count : {kIds, kIds + 5}) {
        RecordingSink sink;
        Diagnostics problems(&sink);
        EXPECT_EQ(ReadNames({{}, BytesOf(entries.substr(0, count * 8)), BytesOf(texts)}, "map", problems).size(), kIds);
        EXPECT_EQ(sink.Count("longer than there are ids"), count == kIds ? 0 : 1);
    }
}

}  // namespace
}  // namespace localmapi::testing
