// Orders of rows.
#include "tests/localmapi/table/TableFixture.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace localmapi::testing {
namespace {

class TableSort : public TableFixture {
protected:
    // Rows named a, b, c ... with these values beside their names; a value of type PT_NULL stands for none.
    ComPtr<IMAPITable> Named(const std::vector<SPropValue>& values) {
        std::vector<Row> rows;
        char name = 'a';
        for (const SPropValue& value : values) {
            rows.push_back({m_maker.Wide({&name, 1})});
            if (PROP_TYPE(value.ulPropTag) != PT_NULL) {
                rows.back().push_back(value);
            }
            ++name;
        }
        ComPtr<IMAPITable> table = TableOf(rows);
        EXPECT_EQ(SetColumns(*table, {kName}), S_OK);
        return table;
    }
    SPropValue Text(const char* text) { return m_maker.Wide(text, kText); }
    SPropValue Several(std::initializer_list<const char*> texts) {
        SPropValue value{};
        value.ulPropTag = PROP_TAG(PT_MV_UNICODE, 0x0037);
        value.Value.MVszW = {static_cast<ULONG>(texts.size()), m_maker.Memory().Array<LPWSTR>(texts.size())};
        LPWSTR* next = value.Value.MVszW.lppszW;
        for (const char* text : texts) {
            *next++ = m_maker.Wide(text).Value.lpszW;
        }
        return value;
    }
    static SPropValue Of(ULONG type, auto SPropValue::Contents::*member, auto number) {
        SPropValue value{};
        value.ulPropTag = PROP_TAG(type, 0x0037);
        value.Value.*member = number;
        return value;
    }

    static constexpr ULONG kText = PROP_TAG(PT_UNICODE, 0x0037);
};

const SPropValue kNone = LongValue(PR_NULL, 0);

// Rows without a value come last both ways, in their own order; so do equal ones among each other.
TEST_F(TableSort, ByOneColumnOfEachType) {
    using Contents = SPropValue::Contents;
    const double notANumber = std::numeric_limits<double>::quiet_NaN();
    const auto time = [](std::uint64_t ticks) { return Maker::Time(ticks, PROP_TAG(PT_SYSTIME, 0x0037)); };
    const auto number = [](double n) { return Of(PT_DOUBLE, &Contents::dbl, n); };
    const auto large = [](std::int64_t n) {
        LARGE_INTEGER value;
        value.QuadPart = n;
        return Of(PT_I8, &Contents::li, value);
    };
    const auto binary = [this](const char* bytes) { return m_maker.Binary(bytes, PROP_TAG(PT_BINARY, 0x0037)); };
    struct Case {
        const char* name;
        std::vector<SPropValue> values;
        const char* ascending;
        const char* descending;
    };
    const Case cases[] = {
        {"times", {time(5), kNone, time(1ULL << 63U), time(0), time(5)}, "daecb", "caedb"},
        {"longs",
         {LongValue(PROP_TAG(PT_LONG, 0x0037), 3), LongValue(PROP_TAG(PT_LONG, 0x0037), -3), kNone},
         "bac",
         "abc"},
        {"I2", {Of(PT_I2, &Contents::i, SHORT{-1}), Of(PT_I2, &Contents::i, SHORT{-2})}, "ba", "ab"},
        {"Booleans",
         {BoolValue(PROP_TAG(PT_BOOLEAN, 0x0037), true), BoolValue(PROP_TAG(PT_BOOLEAN, 0x0037), false)},
         "ba",
         "ab"},
        {"doubles", {number(notANumber), number(1), number(-1e300), number(0.0), number(-0.0)}, "cdeba", "abdec"},
        {"I8", {large(-1), large(1), large(INT64_MIN), kNone}, "cabd", "bacd"},
        {"texts", {Text("beta"), Text("Alpha"), kNone, Text("ALPHABET"), Text("alpha"), Text("")}, "fbedac", "adbefc"},
        {"texts alike in their first letters", {Text("project z"), Text("Project A"), Text("proj")}, "cba", "abc"},
        {"texts of both widths",
         {Text("b"), m_maker.Narrow("A", PROP_TAG(PT_STRING8, 0x0037)), Text("C")},
         "bac",
         "cab"},
        {"binaries", {binary("b"), binary("ab"), binary("a"), kNone}, "cbad", "abcd"},
        {"several", {Several({"b"}), Several({"a", "z"}), Several({"a"}), kNone}, "cbad", "abcd"},
        {"mixed types", {Text("a"), time(1), Text("B"), time(0)}, "dbac", "bdca"},
        {"no values at all", {kNone, kNone, kNone}, "abc", "abc"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const ComPtr<IMAPITable> table = Named(c.values);
        ASSERT_EQ(Sort(*table, {{kText, TABLE_SORT_ASCEND}}), S_OK);
        EXPECT_EQ(All(*table), c.ascending);
        ASSERT_EQ(Sort(*table, {{kText, TABLE_SORT_DESCEND}}), S_OK);
        EXPECT_EQ(All(*table), c.descending);
        ASSERT_EQ(table->SortTable(nullptr, 0), S_OK);
        EXPECT_EQ(All(*table), std::string("abcdef").substr(0, c.values.size()));
    }
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
