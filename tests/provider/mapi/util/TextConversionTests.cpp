// Conversions into blocks of the caller's: what comes out, and that it is always terminated text.
#include "platform/CodePage.h"
#include "platform/ResultCodes.h"
#include "platform/WideText.h"
#include "provider/TextConversion.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace {

constexpr WCHAR kUmlaut[] = {'M', 0xFC, 'n', 0x20AC, 0};
constexpr WCHAR kPoisonWide[] = {'p', 0};
const char kPoison[] = "p";

struct Converted {
    HRESULT hr;
    bool isNull;
    CStringW text;
};

Converted ToWide(const char* in, int length, UINT codePage) {
    WCHAR* out = const_cast<WCHAR*>(kPoisonWide);
    const HRESULT hr = AnsiToUnicode(in, &out, length, codePage);
    const std::unique_ptr<WCHAR[]> owner(out == kPoisonWide ? nullptr : out);
    return {hr, out == nullptr, out == nullptr ? CStringW() : CStringW(out)};
}

TEST(AnsiToUnicode, GivesTerminatedTextForEveryKindOfLength) {
    struct Row {
        const char* name;
        const char* in;
        int length;
        UINT codePage;
        CStringW expected;
    };
    const Row rows[] = {
        {"whole text", "abc", -1, CP_UTF8, "abc"_w},
        {"empty text", "", -1, CP_UTF8, ""_w},
        {"beginning only", "abc", 2, CP_UTF8, "ab"_w},
        {"nothing of it", "abc", 0, CP_UTF8, ""_w},
        {"all of it by length", "abc", 3, CP_UTF8, "abc"_w},
        {"terminator by length", "abc", 4, CP_UTF8, "abc"_w},
        {"UTF-8", "M\xC3\xBCn\xE2\x82\xAC", -1, CP_UTF8, kUmlaut},
        {"Windows-1252", "M\xFCn\x80", -1, 1252, kUmlaut},
        {"UTF-8 cut off within a character", "a\xC3", -1, CP_UTF8, CStringW({'a', 0xFFFD})},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const Converted converted = ToWide(row.in, row.length, row.codePage);
        EXPECT_EQ(converted.hr, S_OK);
        EXPECT_EQ(converted.text, row.expected);
    }
}

TEST(UnicodeToAnsi, GivesTerminatedTextForEveryKindOfLength) {
    struct Row {
        const char* name;
        CStringW in;
        int length;
        UINT codePage;
        const char* expected;
    };
    const Row rows[] = {
        {"whole text", "abc"_w, -1, CP_UTF8, "abc"},
        {"empty text", ""_w, -1, CP_UTF8, ""},
        {"beginning only", "abc"_w, 2, CP_UTF8, "ab"},
        {"nothing of it", "abc"_w, 0, CP_UTF8, ""},
        {"UTF-8", kUmlaut, -1, CP_UTF8, "M\xC3\xBCn\xE2\x82\xAC"},
        {"Windows-1252", kUmlaut, -1, 1252, "M\xFCn\x80"},
        {"no such letter in Windows-1252", CStringW({'a', 0x05D0, 'b'}), -1, 1252, "a?b"},
        {"pair of surrogates", CStringW({0xD83D, 0xDE00}), -1, CP_UTF8, "\xF0\x9F\x98\x80"},
        {"lone surrogate", CStringW({'a', 0xD83D, 'b'}), -1, CP_UTF8,
         "a\xEF\xBF\xBD"
         "b"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        char* out = nullptr;
        EXPECT_EQ(UnicodeToAnsi(row.in.c_str(), &out, row.length, row.codePage), S_OK);
        const std::unique_ptr<char[]> owner(out);
        ASSERT_NE(out, nullptr);
        EXPECT_STREQ(out, row.expected);
    }
    char* ansi = nullptr;
    EXPECT_EQ(UnicodeToAnsi("MSIComponentID"_w, &ansi, -1), S_OK);
    const std::unique_ptr<char[]> owner(ansi);
    EXPECT_STREQ(ansi, "MSIComponentID");
}

TEST(Conversion, LeavesANullBlockWhereThereIsNothingToGive) {
    char* narrow = const_cast<char*>(kPoison);
    EXPECT_EQ(UnicodeToAnsi(nullptr, &narrow, -1, CP_UTF8), S_OK);
    EXPECT_EQ(narrow, nullptr);

    struct Row {
        const char* name;
        const char* in;
        int length;
        UINT codePage;
        HRESULT expected;
    };
    for (const Row& row :
         {Row{"no input", nullptr, -1, CP_UTF8, S_OK}, Row{"length below -1", "a", -2, CP_UTF8, E_INVALIDARG},
          Row{"no such code page", "a", -1, 12345, E_INVALIDARG}}) {
        SCOPED_TRACE(row.name);
        const Converted converted = ToWide(row.in, row.length, row.codePage);
        EXPECT_EQ(converted.hr, row.expected);
        EXPECT_TRUE(converted.isNull);
    }
    EXPECT_EQ(AnsiToUnicode("a", nullptr, -1, CP_UTF8), E_INVALIDARG);
    EXPECT_EQ(UnicodeToAnsi("a"_w, nullptr, -1), E_INVALIDARG);
}

}  // namespace
