// Restrictions of every kind, as Restrict and FindRow answer them.
#include "tests/localmapi/table/TableFixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>

namespace localmapi::testing {
namespace {

class TableRestrict : public TableFixture {
protected:
    static constexpr ULONG kFlags = PROP_TAG(PT_LONG, 0x0E07);
    static constexpr ULONG kSmall = PROP_TAG(PT_I2, 0x7002);
    static constexpr ULONG kOther = PROP_TAG(PT_LONG, 0x7003);
    static constexpr ULONG kTruth = PROP_TAG(PT_BOOLEAN, 0x7004);
    static constexpr ULONG kLarge = PROP_TAG(PT_BINARY, 0x7005);

    // a: 1, b: 2, c: 3, d: nothing but its name.
    ComPtr<IMAPITable> Four() {
        auto rows = std::make_unique<MemoryRows>(std::vector<ULONG>{kName}, 1252);
        rows->Add(Row{m_maker.Wide("a"), LongValue(kNumber, 1), LongValue(kFlags, 0x11), LongValue(kOther, 1),
                      m_maker.Narrow("\xE9t\xE9", kTextA), BoolValue(kTruth, true), Maker::Time(100)});
        rows->Add(Row{m_maker.Wide("b"), LongValue(kNumber, 2), LongValue(kFlags, 0x20), LongValue(kOther, 1),
                      m_maker.Words({"red", "blue"}), m_maker.Binary(std::string(70'000, 'x'), kLarge),
                      Maker::Time(200)});
        rows->Add(Row{m_maker.Wide("c"), LongValue(kNumber, 3), LongValue(kOther, 4), m_maker.Wide("Hello", kText),
                      BoolValue(kTruth, false)});
        rows->Add(Row{m_maker.Wide("d")});
        auto watched = std::make_unique<WatchedRows>(std::move(rows), m_traffic);
        watched->AddRecipients(0, {"Ann", "Bob"});
        watched->AddRecipients(2, {"Bob"});
        ComPtr<IMAPITable> table = TableOf(std::move(watched));
        EXPECT_EQ(SetColumns(*table, {kName}), S_OK);
        return table;
    }
    SRestriction Number(ULONG relop, LONG number) { return m_maker.Property(relop, LongValue(kNumber, number)); }

    Traffic m_traffic;
};

TEST_F(TableRestrict, OfEachKindShowsTheRowsThatSatisfyIt) {
    constexpr WCHAR kFrench[] = {0xE9, 't', 0xE9, 0};
    Maker& m = m_maker;
    const SRestriction one = Number(RELOP_EQ, 1);
    const SRestriction two = Number(RELOP_EQ, 2);
    const SRestriction named = Maker::Exist(kName);
    const auto recipient = [&m](const char* name) { return m.Sub(kRecipients, m.Property(RELOP_EQ, m.Wide(name))); };
    struct Case {
        const char* name;
        SRestriction restriction;
        const char* rows;
    };
    const Case cases[] = {
        {"below", Number(RELOP_LT, 2), "a"},
        {"from", Number(RELOP_GE, 2), "bc"},
        {"equal", Number(RELOP_EQ, 2), "b"},
        {"unequal: not for what is missing", Number(RELOP_NE, 2), "ac"},
        {"of another type", m.Property(RELOP_NE, kNumber, m.Wide("2")), ""},
        {"time", m.Property(RELOP_GE, Maker::Time(101)), "b"},
        {"Boolean", m.Property(RELOP_EQ, BoolValue(kTruth, false)), "c"},
        {"text exactly", m.Property(RELOP_EQ, kText, m.Wide("Hello")), "c"},
        {"text in order, without case", m.Property(RELOP_LE, kName, m.Wide("B")), "ab"},
        {"text of the rows' page", m.Property(RELOP_EQ, kTextA, WideValue(kText, kFrench, m.Memory())), "a"},
        {"any of several", m.Property(RELOP_EQ, kWords, m.Wide("blue")), "b"},
        {"none of several", m.Property(RELOP_EQ, kWords, m.Wide("green")), ""},
        {"any of several, as one", m.Property(RELOP_EQ, PROP_TAG(PT_UNICODE, 0x8001) | MVI_FLAG, m.Wide("red")), "b"},
        {"content", m.Content(FL_SUBSTRING, m.Wide("ell", kText)), "c"},
        {"content without case", m.Content(FL_PREFIX | FL_IGNORECASE, m.Narrow("HEL", kTextA)), "c"},
        {"two properties equal", Maker::CompareProps(RELOP_EQ, kNumber, kOther), "a"},
        {"two properties in order", Maker::CompareProps(RELOP_LT, kNumber, kOther), "c"},
        {"two properties, one missing", Maker::CompareProps(RELOP_NE, kFlags, kSmall), ""},
        {"some bits", Maker::Bits(BMR_NEZ, kFlags, 0x30), "ab"},
        {"bits of a Boolean", Maker::Bits(BMR_NEZ, kTruth, 1), "a"},
        {"bits of a text", Maker::Bits(BMR_EQZ, kName, 1), ""},
        {"size of an 8-bit text", Maker::Size(RELOP_EQ, kText, 4), "a"},
        {"size of a wide text", Maker::Size(RELOP_GT, kText, 11), "c"},
        {"size of what is too large", Maker::Size(RELOP_GE, kLarge, 65'536), "b"},
        {"size of several", Maker::Size(RELOP_EQ, kWords, 18), "b"},
        {"exists", Maker::Exist(kFlags), "ab"},
        {"exists, though too large", Maker::Exist(kLarge), "b"},
        {"exists, whatever its type", Maker::Exist(PROP_TAG(PT_BINARY, 0x0037)), "ac"},
        {"and", m.And({Number(RELOP_GE, 2), Number(RELOP_LT, 3)}), "b"},
        {"and of nothing", m.And({}), "abcd"},
        {"or", m.Or({one, Number(RELOP_EQ, 3)}), "ac"},
        {"or of nothing", m.Or({}), ""},
        {"not: also for what is missing", m.Not(two), "acd"},
        {"not not", m.Not(m.Not(two)), "b"},
        {"within", recipient("Ann"), "a"},
        {"within, of several rows", recipient("Bob"), "ac"},
        {"within, nowhere", recipient("Eve"), ""},
        {"within what there is not", m.Sub(PROP_TAG(PT_OBJECT, 0x0E13), named), ""},
        {"comment", m.Comment(&two, m.Wide("why")), "b"},
        {"comment on nothing", m.Comment(nullptr, m.Wide("why")), "abcd"},
        {"annotation", m.Comment(&one, m.Wide("why"), RES_ANNOTATION), "a"},
        {"the first few", m.Count(2, named), "ab"},
        {"the first few of some", m.Count(1, Number(RELOP_GE, 2)), "b"},
        {"the first none", m.Count(0, named), ""},
        {"all but the first few", m.Not(m.Count(3, named)), "d"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const ComPtr<IMAPITable> table = Four();
        ASSERT_EQ(Restrict(*table, c.restriction), S_OK);
        EXPECT_EQ(All(*table), c.rows);
        EXPECT_EQ(RowCount(*table), std::string_view(c.rows).size());

        // A sorted table shows the same rows; by its own column the values that it keeps answer.
        for (const ULONG column : {kName, kNumber, kText, kTime}) {
            ASSERT_EQ(Sort(*table, {{column, TABLE_SORT_ASCEND}}), S_OK);
            ASSERT_EQ(Restrict(*table, c.restriction), S_OK);
            std::string rows = All(*table);
            std::ranges::sort(rows);
            EXPECT_TRUE(rows == c.rows || std::string_view(c.name).find("first") != std::string_view::npos) << rows;
        }
    }
}

TEST_F(TableRestrict, CountsFromWhereASearchBegins) {
    const ComPtr<IMAPITable> table = Four();
    ASSERT_EQ(table->SeekRow(BOOKMARK_BEGINNING, 2, nullptr), S_OK);
    EXPECT_EQ(Found(*table, m_maker.Count(1, Maker::Exist(kName)), BOOKMARK_CURRENT), 2U);
}

TEST_F(TableRestrict, IsCopiedAtTheCall) {
    const ComPtr<IMAPITable> table = Four();
    SPropValue value = LongValue(kNumber, 2);
    SRestriction restriction{};
    restriction.rt = RES_PROPERTY;
    restriction.res.resProperty = {RELOP_EQ, kNumber, &value};
    ASSERT_EQ(table->Restrict(&restriction, TBL_BATCH), S_OK);
    value = LongValue(kNumber, 3);
    restriction.rt = RES_EXIST;
    EXPECT_EQ(All(*table), "b");
}

TEST_F(TableRestrict, ThatIsNotAnsweredIsRefusedAndTheOldOneStays) {
    Maker& m = m_maker;
    SRestriction deep = Maker::Exist(kName);
    for (unsigned i = 0; i <= kDeepestRestriction; ++i) {
        deep = m.Not(deep);
    }
    SRestriction unknown = Maker::Exist(kName);
    unknown.rt = 0x40;
    struct Case {
        const char* name;
        SRestriction restriction;
        HRESULT result;
    };
    const Case cases[] = {
        {"a pattern", m.Property(RELOP_RE, m.Wide("x*")), MAPI_E_TOO_COMPLEX},
        {"a member of a list", m.Property(RELOP_MEMBER_OF_DL, m.Wide("x")), MAPI_E_TOO_COMPLEX},
        {"content of a number", m.Content(FL_SUBSTRING, LongValue(kNumber, 1)), MAPI_E_TOO_COMPLEX},
        {"a pattern of sizes", Maker::Size(RELOP_RE, kName, 1), MAPI_E_TOO_COMPLEX},
        {"a pattern of two", Maker::CompareProps(RELOP_RE, kName, kText), MAPI_E_TOO_COMPLEX},
        {"bits as there are none", Maker::Bits(2, kFlags, 1), MAPI_E_TOO_COMPLEX},
        {"too deep", deep, MAPI_E_TOO_COMPLEX},
        {"within another", m.Or({Maker::Exist(kName), m.Not(m.Property(RELOP_RE, m.Wide("x")))}), MAPI_E_TOO_COMPLEX},
        {"unknown", unknown, MAPI_E_INVALID_PARAMETER},
    };
    const ComPtr<IMAPITable> table = Four();
    ASSERT_EQ(Restrict(*table, Number(RELOP_EQ, 2)), S_OK);
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(Restrict(*table, c.restriction), c.result);
        EXPECT_EQ(Find(*table, c.restriction), c.result);
        EXPECT_EQ(All(*table), "b");
    }
}

}  // namespace
}  // namespace localmapi::testing
