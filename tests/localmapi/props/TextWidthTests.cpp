// Texts from 8 bits to 16 and back. The bytes are those of the published code page tables.
#include "localmapi/props/Values.h"
#include "platform/CodePage.h"
#include "tests/localmapi/support/LeakCheck.h"
#include "tests/localmapi/support/Restrictions.h"
#include "tests/localmapi/support/ValueText.h"

#include <gtest/gtest.h>

#include <string>

namespace localmapi::testing {
namespace {

class TextWidth : public LeakCheck {};

constexpr ULONG kWide = PROP_TAG(PT_UNICODE, 0x0037);
constexpr ULONG kNarrow = PROP_TAG(PT_STRING8, 0x0037);

TEST_F(TextWidth, OfTextsFollowsTheirPage) {
    struct Row {
        const char* name;
        UINT page;
        const char* narrow;
        const char* wide;
        bool andBack;
    };
    constexpr Row rows[] = {
        {"Latin", 1252, "\x80 \xE9", "w'<20AC> <00E9>'", true},
        {"Cyrillic", 1251, "\xCF\xF0", "w'<041F><0440>'", true},
        {"Japanese", 932, "\x93\xFA\x96{", "w'<65E5><672C>'", true},
        {"UTF-8", 65001, "\xF0\x9F\x98\x80", "w'<D83D><DE00>'", true},
        {"empty", 1252, "", "w''", true},
        {"no page: UTF-8", 4711, "\xC3\xA9", "w'<00E9>'", false},
        {"no page: not UTF-8", 4711, "\xE9\x80", "w'<00E9><20AC>'", false},
        {"a wide page: UTF-8", 1200, "\xC3\xA9x", "w'<00E9>x'", false},
        {"broken", 65001, "a\xFF", "w'a<FFFD>'", false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        Arena arena;
        SPropValue value = NarrowValue(kNarrow, row.narrow, arena);
        ChangeWidth(value, PT_UNICODE, row.page, arena);
        EXPECT_EQ(value.ulPropTag, kWide);
        EXPECT_EQ(TextOf(value), row.wide);
        if (row.andBack) {
            ChangeWidth(value, PT_STRING8, row.page, arena);
            EXPECT_EQ(TextOf(value), "a'" + std::string(row.narrow) + "'");
        }
    }
}

TEST_F(TextWidth, OfSeveralTextsChangesAndThatOfOthersStays) {
    RestrictionMaker maker;
    SPropValue value = maker.Words({"a", "b"}, PROP_TAG(PT_MV_UNICODE, 0x0037));
    struct Step {
        ULONG type;
        const char* text;
    };
    for (const Step& step :
         {Step{PT_MV_UNICODE, "[w'a',w'b']"}, Step{PT_MV_STRING8, "[a'a',a'b']"}, Step{PT_UNICODE, "[w'a',w'b']"}}) {
        ChangeWidth(value, step.type, 1252, maker.Memory());
        EXPECT_EQ(value.ulPropTag, PROP_TAG(step.type | MV_FLAG, 0x0037));
        EXPECT_EQ(TextOf(value), step.text);
    }
    SPropValue number = LongValue(PROP_TAG(PT_LONG, 0x0E08), 7);
    ChangeWidth(number, PT_UNICODE, 1252, maker.Memory());
    EXPECT_EQ(TextOf(number), "7");
}

TEST_F(TextWidth, WhatAPageLacksIsReplaced) {
    EXPECT_EQ(ToNarrow("x"_w, 4711), "x");
    constexpr WCHAR kHan[] = {0x65E5, 'a', 0};
    EXPECT_EQ(ToNarrow(kHan, 1252), "?a");
    constexpr WCHAR kLone[] = {0xD800, 'a', 0};
    EXPECT_EQ(ToNarrow(kLone, CP_UTF8),
              "\xEF\xBF\xBD"
              "a");
}

}  // namespace
}  // namespace localmapi::testing
