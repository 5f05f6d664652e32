#include "platform/CodePage.h"
#include "provider/Common/Crc32.h"
#include "provider/Common/FileTimeHelpers.h"
#include "provider/Common/ScopedCriticalSection.h"
#include "provider/Common/StringHelpers.h"
#include "provider/Common/WLStr.h"
#include "tests/provider/Common/LogTestSupport.h"

#include <gtest/gtest.h>

#include <future>
#include <string_view>

namespace {

// The register of the published CRC-32, which is inverted on entry and exit, with both inversions undone.
TEST(Crc32, GivesTheRawRegister) {
    std::string every;
    for (int byte = 0; byte < 256; ++byte) {
        every += static_cast<char>(byte);
    }
    const struct {
        std::string data;
        std::uint32_t start, expected;
    } rows[] = {
        {"", 0x1234, 0x1234},
        {"", 0, 0},
        {std::string(4, '\0'), 0, 0},
        {"123456789", 0, 0x2DFD2D88},
        {"123456789", 0xFFFFFFFF, ~0xCBF43926U},  // the check value of CRC-32
        {"\xFF", 0, 0x2D02EF8D},
        {"a", 0xDEADBEEF, 0x0ADE0399},
        {every, 0, 0x2493092B},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(CRC32Block(row.start, row.data.size(), row.data.data()), row.expected) << row.data;
        for (std::size_t cut = 0; cut <= row.data.size(); ++cut) {
            Crc32 crc(CRC32Block(row.start, cut, row.data.data()));
            for (const char byte : row.data.substr(cut)) {
                crc.Update(static_cast<std::uint8_t>(byte));
            }
            EXPECT_EQ(crc.Value(), row.expected) << row.data << ", cut at " << cut;
        }
    }
    const CStringW text = "A1"_w;
    EXPECT_EQ(CRC32Block(0, 4, reinterpret_cast<const char*>(text.data())), 0xE5F538EAU);
}

TEST(StringHelpers, CompareBeginningsAndEnds) {
    const struct {
        const char *text, *part;
        bool begins, ends;
    } rows[] = {
        {"File:x", "File:", true, false},
        {"file:x", "File:", false, false},
        {"File", "File:", false, false},
        {"File:", "File:", true, true},
        {"", "", true, true},
        {"a", "", true, true},
        {"", "a", false, false},
        {"a.msg", ".msg", false, true},
        {"a.MSG", ".msg", false, false},
        {"abab", "ab", true, true},
        {"xab", "ab", false, true},
        {"abx", "ab", true, false},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(StartsWith(Wide(row.text), Wide(row.part)), row.begins) << row.text << " " << row.part;
        EXPECT_EQ(EndsWith(Wide(row.text), Wide(row.part)), row.ends) << row.text << " " << row.part;
    }
    EXPECT_TRUE(EqualIgnoringAsciiCase("C:\\Temp[z]"_w, "c:\\tEMP[Z]"_w));
    EXPECT_FALSE(EqualIgnoringAsciiCase("C:\\Temp["_w, "C:\\Temp{"_w));
    EXPECT_FALSE(EqualIgnoringAsciiCase("C:\\Temp"_w, "C:\\Temp1"_w));
}

TEST(StringHelpers, CompareBytesWithWideTextAndTraceIt) {
    using Bytes = std::vector<unsigned char>;
    const CStringW prefix = {WCHAR{'%'}, WCHAR{0x20AC}};
    const struct {
        const char* name;
        Bytes data;
        CStringW prefix;
        bool expected;
    } rows[] = {
        {"same", {0x25, 0x00, 0xAC, 0x20}, prefix, true},
        {"more", {0x25, 0x00, 0xAC, 0x20, 0x00}, prefix, true},
        {"one byte short", {0x25, 0x00, 0xAC}, prefix, false},
        {"low byte differs", {0x25, 0x00, 0xAD, 0x20}, prefix, false},
        {"high byte differs", {0x25, 0x00, 0xAC, 0x21}, prefix, false},
        {"empty prefix", {0x25}, CStringW(), true},
        {"nothing at all", {}, CStringW(), true},
        {"nothing to compare with", {}, prefix, false},
    };
    InstalledLog log;
    for (const auto& row : rows) {
        EXPECT_EQ(StartsWith(row.data, row.prefix), row.expected) << row.name;
    }
    EXPECT_EQ(log.Lines().size(), 2 * std::size(rows));
}

TEST(StringHelpers, CutAtDelimiters) {
    using Pieces = std::vector<std::string>;
    const struct {
        const char* text;
        Pieces all, notEmpty;
        std::vector<std::size_t> positions;
    } rows[] = {
        {"", {""}, {}, {0}},
        {"a", {"a"}, {"a"}, {1}},
        {"|", {"", ""}, {}, {0, 1}},
        {"5||7", {"5", "", "7"}, {"5", "7"}, {1, 2, 4}},
        {"|a|", {"", "a", ""}, {"a"}, {0, 2, 3}},
        {"ab|cd|ef", {"ab", "cd", "ef"}, {"ab", "cd", "ef"}, {2, 5, 8}},
    };
    for (const auto& row : rows) {
        for (const bool skipEmpty : {false, true}) {
            std::vector<CStringW> pieces(3);
            SplitS(Wide(row.text), pieces, '|', skipEmpty);
            Pieces narrow;
            for (const CStringW& piece : pieces) {
                narrow.push_back(Ascii(piece));
            }
            EXPECT_EQ(narrow, skipEmpty ? row.notEmpty : row.all) << row.text;
        }
        std::vector<std::size_t> positions = {99};
        Split(Wide(row.text).c_str(), std::string_view(row.text).size(), positions, '|');
        EXPECT_EQ(positions, row.positions) << row.text;
    }
}

TEST(StringHelpers, TruncateNames) {
    const struct {
        const char *name, *extension;
        std::size_t maxLength;
        const char* expected;
    } rows[] = {
        {"abcdefgh", "msg", 8, "abcdefgh"},
        {"abcdefgh", "msg", 7, "abc.msg"},
        {"abcdefgh", "msg", 6, "ab.tmp"},
        {"abcdefgh", "msg", 5, "abcde"},
        {"abcdefgh", "msg", 1, "a"},
        {"abcdefgh", "msg", 0, ""},
        {"abcdefgh", "", 7, "abcdef."},
        {"abcdefgh", "ex", 6, "abc.ex"},
        {"abcdefgh", "e", 6, "abcd.e"},
        {"abcdefghij", "extension", 9, "abcde.tmp"},
        {"abcdefghij", "exten", 9, "abc.exten"},
    };
    for (const auto& row : rows) {
        CStringW name = Wide(row.name);
        TrunkName(name, Wide(row.extension), row.maxLength);
        EXPECT_EQ(Ascii(name), row.expected) << row.name << ", " << row.extension << ", " << row.maxLength;
    }
}

TEST(WLStr, ConvertsToTheAnsiCodePage) {
    const CStringW accented = {WCHAR{'a'}, WCHAR{0xE9}, WCHAR{'b'}};
    char page[16] = {};
    const auto inPage = static_cast<std::size_t>(
        WideCharToMultiByte(CP_ACP, 0, accented.c_str(), 3, page, sizeof(page), nullptr, nullptr));
    const struct {
        const char* name;
        const WCHAR* text;
        std::size_t length;
        std::string expected;
    } rows[] = {
        {"whole", "Profile"_w, 0, "Profile"},
        {"part of a longer text", "Profile"_w, 4, "Prof"},
        {"empty", ""_w, 0, ""},
        {"null", nullptr, 0, ""},
        {"beyond ASCII", accented.c_str(), 0, std::string(page, inPage)},
    };
    for (const auto& row : rows) {
        EXPECT_STREQ(WLStr::ToAscii(row.text, row.length), row.expected.c_str()) << row.name;
    }

    char out[8] = "???????";
    EXPECT_EQ(WLStr::ToAscii("abc"_w, 2, out, sizeof(out)), 2u);
    EXPECT_STREQ(out, "ab?????") << "no terminator";
    EXPECT_EQ(WLStr::ToAscii("abcd"_w, 4, out, 3), 0u) << "no room";
    EXPECT_EQ(WLStr::ToAscii("abcd"_w, 0, out, 1), 0u);
    EXPECT_STREQ(out, "") << "a length of 0 writes a terminator";
    out[0] = '?';
    EXPECT_EQ(WLStr::ToAscii("abcd"_w, 0, out, 0), 0u);
    EXPECT_EQ(out[0], '?');
}

TEST(FileTimeHelpers, CompareBothHalves) {
    const struct {
        FILETIME first, second;
        bool equal, before;
    } rows[] = {
        {{0, 0}, {0, 0}, true, false},          {{1, 0}, {2, 0}, false, true},           {{2, 0}, {1, 0}, false, false},
        {{0xFFFFFFFF, 0}, {0, 1}, false, true}, {{0, 1}, {0xFFFFFFFF, 0}, false, false}, {{5, 7}, {5, 7}, true, false},
        {{5, 7}, {5, 0x80000000}, false, true},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Equal(row.first, row.second), row.equal);
        EXPECT_EQ(Compare(row.first, row.second), row.before ? -1 : 0);
    }
    EXPECT_FALSE(IsZero({0, 1}));
    EXPECT_FALSE(IsZero({1, 0}));
    FILETIME time = {1, 1};
    CleanDateTimeValue(time);
    EXPECT_TRUE(IsZero(time));
}

TEST(ScopedCriticalSection, HoldsItsLockUntilItLeaves) {
    std::recursive_mutex lock;
    const auto isFree = [&lock] {
        return std::async(std::launch::async,
                          [&lock] {
                              const bool taken = lock.try_lock();
                              if (taken) {
                                  lock.unlock();
                              }
                              return taken;
                          })
            .get();
    };
    {
        const ScopedCriticalSection outer(&lock);
        ScopedCriticalSection inner(&lock);
        inner.leave();
        inner.leave();
        EXPECT_FALSE(isFree()) << "the outer one still holds it";
    }
    EXPECT_TRUE(isFree());
    ScopedCriticalSection none(nullptr);
    none.leave();
}

}  // namespace
