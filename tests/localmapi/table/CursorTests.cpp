// Reading forwards and backwards, seeking, bookmarks.
#include "tests/localmapi/table/TableFixture.h"

#include <gtest/gtest.h>

#include <limits>

namespace localmapi::testing {
namespace {

class TableCursor : public TableFixture {};

TEST_F(TableCursor, ReadsOnFromWhereItStands) {
    struct Step {
        const char* name;
        LONG count;
        ULONG flags;
        const char* rows;
        ULONG position;
    };
    constexpr Step steps[] = {
        {"none", 0, 0, "", 0},
        {"backward at the beginning", -3, 0, "", 0},
        {"forward", 2, 0, "ab", 2},
        {"forward and stay", 2, TBL_NOADVANCE, "cd", 2},
        {"backward and stay", -1, TBL_NOADVANCE, "b", 2},
        {"the rest", 100, 0, "cde", 5},
        {"at the end", 1, 0, "", 5},
        {"backward from the end", -2, 0, "de", 3},
        {"backward past the beginning", -100, 0, "abc", 0},
        {"all that there can be", std::numeric_limits<LONG>::max(), 0, "abcde", 5},
        {"all backward", std::numeric_limits<LONG>::min(), 0, "abcde", 0},
    };
    const ComPtr<IMAPITable> table = Letters("abcde");
    for (const Step& step : steps) {
        SCOPED_TRACE(step.name);
        EXPECT_EQ(Read(*table, step.count, step.flags), step.rows);
        EXPECT_EQ(Position(*table), step.position);
    }
}

TEST_F(TableCursor, SeeksFromEachOrigin) {
    const ComPtr<IMAPITable> table = Letters("abcde");
    ASSERT_EQ(table->SeekRow(BOOKMARK_BEGINNING, 3, nullptr), S_OK);
    BOOKMARK third = 0;
    ASSERT_EQ(table->CreateBookmark(&third), S_OK);
    struct Step {
        const char* name;
        BOOKMARK origin;
        LONG count;
        LONG sought;
        ULONG position;
    };
    const Step steps[] = {
        {"beginning", BOOKMARK_BEGINNING, 0, 0, 0},
        {"from the beginning", BOOKMARK_BEGINNING, 2, 2, 2},
        {"on", BOOKMARK_CURRENT, 1, 1, 3},
        {"back", BOOKMARK_CURRENT, -2, -2, 1},
        {"past the beginning", BOOKMARK_CURRENT, -7, -1, 0},
        {"before the beginning", BOOKMARK_BEGINNING, -7, 0, 0},
        {"end", BOOKMARK_END, 0, 0, 5},
        {"before the end", BOOKMARK_END, -1, -1, 4},
        {"past the end", BOOKMARK_CURRENT, 7, 1, 5},
        {"a bookmark", third, 0, 0, 3},
        {"behind a bookmark", third, 1, 1, 4},
        {"far behind a bookmark", third, std::numeric_limits<LONG>::max(), 2, 5},
        {"far before a bookmark", third, std::numeric_limits<LONG>::min(), -3, 0},
    };
    for (const Step& step : steps) {
        SCOPED_TRACE(step.name);
        LONG sought = 99;
        EXPECT_EQ(table->SeekRow(step.origin, step.count, &sought), S_OK);
        EXPECT_EQ(sought, step.sought);
        EXPECT_EQ(Position(*table), step.position);
    }
}

TEST_F(TableCursor, SeeksApproximately) {
    struct Case {
        ULONG numerator, denominator, position;
    };
    const ComPtr<IMAPITable> table = Letters("abcdefghij");
    for (const Case& row : {Case{0, 1, 0}, Case{1, 2, 5}, Case{99, 100, 9}, Case{1, 1, 10}, Case{7, 2, 10},
                            Case{0xFFFFFFFE, 0xFFFFFFFF, 9}}) {
        EXPECT_EQ(table->SeekRowApprox(row.numerator, row.denominator), S_OK);
        EXPECT_EQ(Position(*table), row.position) << row.numerator << "/" << row.denominator;
    }
    EXPECT_EQ(table->SeekRowApprox(0, 0), MAPI_E_INVALID_PARAMETER);
}

TEST_F(TableCursor, OfAnEmptyTableStandsStill) {
    const ComPtr<IMAPITable> table = Letters("");
    EXPECT_EQ(RowCount(*table), 0U);
    EXPECT_EQ(Read(*table, 10), "");
    EXPECT_EQ(Read(*table, -10), "");
    EXPECT_EQ(table->SeekRow(BOOKMARK_END, -1, nullptr), S_OK);
    EXPECT_EQ(Position(*table), 0U);
    for (const ULONG direction : {ULONG{0}, DIR_BACKWARD}) {
        EXPECT_EQ(Find(*table, Maker::Exist(kName), BOOKMARK_END, direction), MAPI_E_NOT_FOUND);
    }
}

TEST_F(TableCursor, AndBookmarksEndWithSortingAndRestricting) {
    struct Case {
        const char* name;
        HRESULT (*change)(IMAPITable&);
        bool ends;
    };
    constexpr Case rows[] = {
        {"sorting",
         [](IMAPITable& table) {
             return Sort(table, {{kName, TABLE_SORT_DESCEND}});
         },
         true},
        {"restricting", [](IMAPITable& table) { return Restrict(table, Maker::Exist(kName)); }, true},
        {"taking the restriction away", [](IMAPITable& table) { return table.Restrict(nullptr, 0); }, true},
        {"taking the order away", [](IMAPITable& table) { return table.SortTable(nullptr, 0); }, true},
        {"choosing columns", [](IMAPITable& table) { return SetColumns(table, {kNumber}); }, false},
    };
    for (const Case& row : rows) {
        SCOPED_TRACE(row.name);
        const ComPtr<IMAPITable> table = Letters("abc");
        ASSERT_EQ(table->SeekRow(BOOKMARK_BEGINNING, 2, nullptr), S_OK);
        BOOKMARK bookmark = 0;
        ASSERT_EQ(table->CreateBookmark(&bookmark), S_OK);
        EXPECT_GT(bookmark, BOOKMARK_END);
        ASSERT_EQ(row.change(*table), S_OK);
        EXPECT_EQ(Position(*table), row.ends ? 0U : 2U);
        EXPECT_EQ(table->SeekRow(bookmark, 0, nullptr), row.ends ? MAPI_E_INVALID_BOOKMARK : S_OK);
        EXPECT_EQ(Find(*table, Maker::Exist(kName), bookmark), row.ends ? MAPI_E_INVALID_BOOKMARK : S_OK);
        EXPECT_EQ(table->FreeBookmark(bookmark), row.ends ? MAPI_E_INVALID_BOOKMARK : S_OK);
        EXPECT_EQ(table->FreeBookmark(bookmark), MAPI_E_INVALID_BOOKMARK) << "a second time";
    }
    EXPECT_EQ(Letters("a")->FreeBookmark(BOOKMARK_END), S_OK) << "the published ones cannot be freed, and need not be";
}

TEST_F(TableCursor, GivesNoMoreBookmarksThanAClientCanNeed) {
    const ComPtr<IMAPITable> table = Letters("abc");
    BOOKMARK bookmark = 0;
    ULONG made = 0;
    while (made < 1'000'000 && table->CreateBookmark(&bookmark) == S_OK) {
        ++made;
    }
    EXPECT_LT(made, 1'000'000U);
    EXPECT_EQ(table->CreateBookmark(&bookmark), MAPI_E_UNABLE_TO_COMPLETE);
    EXPECT_EQ(table->FreeBookmark(bookmark), S_OK);
    EXPECT_EQ(table->CreateBookmark(&bookmark), S_OK);
}

}  // namespace
}  // namespace localmapi::testing
