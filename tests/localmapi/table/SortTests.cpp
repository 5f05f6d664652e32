// Orders of rows.
#include "tests/localmapi/support/EveryValue.h"
#include "tests/localmapi/table/TableFixture.h"

#include <gtest/gtest.h>

#include <string>

namespace localmapi::testing {
namespace {

class TableSort : public TableFixture {
protected:
    // The rows named a, b, c ... with these values, in one order and in the other; a value of PT_NULL stands for none.
    void ExpectOrder(const std::vector<SPropValue>& values, std::string_view ascending, std::string_view descending) {
        std::vector<Row> rows;
        std::string names;
        for (const SPropValue& value : values) {
            names += static_cast<char>('a' + rows.size());
            rows.push_back({m_maker.Wide(names.substr(rows.size()))});
            if (PROP_TYPE(value.ulPropTag) != PT_NULL) {
                rows.back().push_back(value);
            }
        }
        const ComPtr<IMAPITable> table = TableOf(rows);
        ASSERT_EQ(SetColumns(*table, {kName}), S_OK);
        ASSERT_EQ(Sort(*table, {{kText, TABLE_SORT_ASCEND}}), S_OK);
        EXPECT_EQ(All(*table), ascending);
        ASSERT_EQ(Sort(*table, {{kText, TABLE_SORT_DESCEND}}), S_OK);
        EXPECT_EQ(All(*table), descending);
        ASSERT_EQ(table->SortTable(nullptr, 0), S_OK);
        EXPECT_EQ(All(*table), names);
    }
};

// Rows without a value come last both ways, in their own order; so do equal ones among each other.
TEST_F(TableSort, ByOneColumnOfEachType) {
    for (const AscendingList& list : AscendingLists(m_maker)) {
        SCOPED_TRACE(list.name);
        // Two without a value around the others, which come the wrong way round and the lowest of them twice.
        const SPropValue none = LongValue(PR_NULL, 0);
        std::vector<SPropValue> values(list.values.rbegin(), list.values.rend());
        values.insert(values.begin(), none);
        values.insert(values.end(), {list.values[0], none});
        const std::string between = std::string("bcdefghijk").substr(0, list.values.size() - 1);
        const std::string lowest = {static_cast<char>('b' + between.size()), static_cast<char>('c' + between.size())};
        const std::string last = {'a', static_cast<char>('d' + between.size())};
        ExpectOrder(values, lowest + std::string(between.rbegin(), between.rend()) + last, between + lowest + last);
    }
    const auto text = [this](const char* ascii) { return m_maker.Wide(ascii, kText); };
    ExpectOrder({text("beta"), text("Alpha"), text("alpha"), text("ALPHA")}, "bcda", "abcd");
    const auto time = [](std::uint64_t ticks) { return Maker::Time(ticks, PROP_TAG(PT_SYSTIME, 0x0037)); };
    ExpectOrder({text("a"), time(1), text("B"), time(0)}, "dbac", "bdca");
}

TEST_F(TableSort, BySeveralColumnsWithRestrictionsBeforeAndAfter) {
    std::vector<Row> rows;
    for (const char* row : {"b2", "a1", "b1", "a2", "c", "a1"}) {
        rows.push_back({m_maker.Wide({row, 1})});
        if (row[1] != 0) {
            rows.back().push_back(LongValue(kNumber, row[1] - '0'));
        }
        rows.back().push_back(LongValue(PROP_TAG(PT_LONG, 0x7001), static_cast<LONG>(rows.size())));
    }
    const ComPtr<IMAPITable> table = TableOf(rows);
    ASSERT_EQ(SetColumns(*table, {PROP_TAG(PT_LONG, 0x7001)}), S_OK);
    const SSortOrder number{kNumber, TABLE_SORT_DESCEND};
    const SSortOrder name{kName, TABLE_SORT_ASCEND};
    ASSERT_EQ(Sort(*table, {number, name}), S_OK);
    EXPECT_EQ(All(*table), "4 1 2 6 3 5");
    ASSERT_EQ(Sort(*table, {name, number}), S_OK);
    EXPECT_EQ(All(*table), "4 2 6 1 3 5");
    ASSERT_EQ(Restrict(*table, m_maker.Property(RELOP_EQ, LongValue(kNumber, 1))), S_OK);
    EXPECT_EQ(All(*table), "2 6 3") << "the order stays";
    ASSERT_EQ(Sort(*table, {{kName, TABLE_SORT_DESCEND}}), S_OK);
    EXPECT_EQ(All(*table), "3 2 6") << "the restriction stays";
    ASSERT_EQ(table->Restrict(nullptr, 0), S_OK);
    EXPECT_EQ(All(*table), "5 1 3 2 4 6");

    LPSSortOrderSet got = nullptr;
    ASSERT_EQ(table->QuerySortOrder(&got), S_OK);
    const MapiPointer<SSortOrderSet> order(got);
    ASSERT_EQ(order->cSorts, 1U);
    EXPECT_EQ(order->aSort[0].ulPropTag, kName);
    EXPECT_EQ(order->aSort[0].ulOrder, TABLE_SORT_DESCEND);
}

// Several values and values of another type among the sort keys: no order of theirs tells which rows match.
TEST_F(TableSort, ByMixedValuesTellsNotWhichRowsMatch) {
    const std::vector<Row> rows = {{m_maker.Words({"a", "z"}, PROP_TAG(PT_MV_UNICODE, 0x3001))},
                                   {m_maker.Wide("m")},
                                   {LongValue(PROP_TAG(PT_LONG, 0x3001), 5)},
                                   {m_maker.Wide("b")}};
    const ComPtr<IMAPITable> table = TableOf(rows);
    ASSERT_EQ(Sort(*table, {{kName, TABLE_SORT_ASCEND}}), S_OK);
    ASSERT_EQ(SetColumns(*table, {PROP_TAG(PT_UNSPECIFIED, 0x3001)}), S_OK);
    EXPECT_EQ(All(*table), "5bm [w'a',w'z']");
    EXPECT_EQ(Found(*table, Name(RELOP_EQ, "z")), 3U);
    EXPECT_EQ(Found(*table, Name(RELOP_LE, "a"), BOOKMARK_END, DIR_BACKWARD), 3U);
    EXPECT_EQ(Found(*table, m_maker.Property(RELOP_EQ, kName, LongValue(kNumber, 5))), 0U);
}

TEST_F(TableSort, IsRefusedWhereItCannotBeDone) {
    const ComPtr<IMAPITable> table = Letters("bca");
    ASSERT_EQ(Sort(*table, {{kName, TABLE_SORT_ASCEND}}), S_OK);
    ASSERT_EQ(table->SeekRow(BOOKMARK_BEGINNING, 1, nullptr), S_OK);
    SizedSSortOrderSet<1> categories{1, 1, 0, {{kName, TABLE_SORT_ASCEND}}};
    EXPECT_EQ(table->SortTable(categories, 0), MAPI_E_TOO_COMPLEX);
    SizedSSortOrderSet<65> many{};
    EXPECT_EQ(table->SortTable(many, 0), MAPI_E_TOO_COMPLEX);
    EXPECT_EQ(Sort(*table, {{kName, TABLE_SORT_COMBINE}}), MAPI_E_TOO_COMPLEX);
    EXPECT_EQ(Sort(*table, {{kWords | MV_INSTANCE, TABLE_SORT_ASCEND}}), MAPI_E_TOO_COMPLEX);
    EXPECT_EQ(Sort(*table, {{kRecipients, TABLE_SORT_ASCEND}}), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(Position(*table), 1U) << "a refused call changes nothing";
    EXPECT_EQ(All(*table), "abc");
}

}  // namespace
}  // namespace localmapi::testing
