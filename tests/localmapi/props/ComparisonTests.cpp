// The order of values, and RES_CONTENT.
#include "localmapi/props/Values.h"
#include "tests/localmapi/support/LeakCheck.h"
#include "tests/localmapi/support/Restrictions.h"
#include "tests/localmapi/support/ValueText.h"

#include <gtest/gtest.h>

#include <limits>
#include <vector>

namespace localmapi::testing {
namespace {

class Comparison : public LeakCheck {
protected:
    SPropValue Bytes(ULONG type, std::initializer_list<int> bytes) {
        localmapi::Bytes all;
        for (const int byte : bytes) {
            all.push_back(static_cast<std::byte>(byte));
        }
        return *ValueFromBytes(PROP_TAG(type, 0x6001), all, m_maker.Memory());
    }
    SPropValue Double(double number) {
        SPropValue value{};
        value.ulPropTag = PROP_TAG(PT_DOUBLE, 0x6001);
        value.Value.dbl = number;
        return value;
    }
    SPropValue Units(std::initializer_list<int> units) {
        CStringW text;
        for (const int unit : units) {
            text.push_back(static_cast<WCHAR>(unit));
        }
        return WideValue(PROP_TAG(PT_UNICODE, 0x3001), text, m_maker.Memory());
    }

    RestrictionMaker m_maker;
};

// Each list is in ascending order: every pair of each is compared both ways.
TEST_F(Comparison, PutsValuesOfOneTypeInTheirOrder) {
    const double none = std::numeric_limits<double>::quiet_NaN();
    struct Row {
        const char* name;
        std::vector<SPropValue> ascending;
    };
    const Row rows[] = {
        {"I2", {Bytes(PT_I2, {0, 0x80}), Bytes(PT_I2, {0, 0}), Bytes(PT_I2, {0, 1})}},
        {"long", {Bytes(PT_LONG, {0, 0, 0, 0x80}), Bytes(PT_LONG, {1, 0, 0, 0}), Bytes(PT_LONG, {0, 0, 1, 0})}},
        {"Boolean", {Bytes(PT_BOOLEAN, {0}), Bytes(PT_BOOLEAN, {1})}},
        {"double", {Double(-1e300), Double(-1), Double(0.5), Double(1e300), Double(none)}},
        {"I8", {Bytes(PT_I8, {0, 0, 0, 0, 0, 0, 0, 0x80}), Bytes(PT_I8, {0, 0, 0, 0, 0, 0, 0, 1})}},
        {"time", {RestrictionMaker::Time(5), RestrictionMaker::Time(1ULL << 32U), RestrictionMaker::Time(1ULL << 63U)}},
        {"text", {Units({}), m_maker.Wide("a"), m_maker.Wide("AB"), m_maker.Wide("abc"), m_maker.Wide("B")}},
        {"8-bit text", {m_maker.Narrow("a"), m_maker.Narrow("B"), m_maker.Narrow("c")}},
        {"both widths", {m_maker.Narrow("a"), m_maker.Wide("B"), m_maker.Narrow("c")}},
        {"binary", {m_maker.Binary(""), m_maker.Binary("a"), m_maker.Binary("aa"), m_maker.Binary("\xFF")}},
        {"several",
         {Bytes(PT_MV_I2, {}), Bytes(PT_MV_I2, {1, 0}), Bytes(PT_MV_I2, {1, 0, 1, 0}), Bytes(PT_MV_I2, {2, 0})}},
        {"types", {Bytes(PT_I2, {9, 0}), Bytes(PT_LONG, {1, 0, 0, 0}), m_maker.Wide("a"), RestrictionMaker::Time(0)}},
    };
    for (const Row& row : rows) {
        for (std::size_t i = 0; i < row.ascending.size(); ++i) {
            for (std::size_t j = 0; j < row.ascending.size(); ++j) {
                SCOPED_TRACE(::testing::Message()
                             << row.name << ": " << TextOf(row.ascending[i]) << " and " << TextOf(row.ascending[j]));
                const int order = Compare(row.ascending[i], row.ascending[j]);
                EXPECT_EQ(order < 0, i < j);
                EXPECT_EQ(order > 0, i > j);
            }
        }
    }
}

TEST_F(Comparison, OfTextsLeavesCaseOutButEqualityDoesNot) {
    const SPropValue lower = Units({'a', 0xE4, 0x434, 0x3C3});
    const SPropValue upper = Units({'A', 0xC4, 0x414, 0x3A3});
    EXPECT_EQ(Compare(lower, upper), 0);
    struct Row {
        ULONG relop;
        bool holds;
    };
    for (const Row& row : {Row{RELOP_LT, false}, Row{RELOP_LE, true}, Row{RELOP_GT, false}, Row{RELOP_GE, true},
                           Row{RELOP_EQ, false}, Row{RELOP_NE, true}, Row{RELOP_RE, false}}) {
        EXPECT_EQ(Holds(lower, row.relop, upper), row.holds) << row.relop;
    }
    EXPECT_TRUE(Holds(m_maker.Wide("x"), RELOP_EQ, m_maker.Narrow("x")));
    EXPECT_FALSE(Holds(m_maker.Wide("x"), RELOP_NE, RestrictionMaker::Time(1))) << "of two types nothing holds";
    EXPECT_TRUE(Holds(Bytes(PT_MV_I2, {1, 0}), RELOP_NE, Bytes(PT_MV_I2, {1, 0, 2, 0})));
}

TEST_F(Comparison, OfContentFollowsTheFuzzyLevel) {
    const SPropValue text = m_maker.Wide("Project Plan");
    const SPropValue french = Units({'E', 0x301, 't', 0xC9});  // one accent behind its letter, one in it
    const SPropValue bytes = m_maker.Binary("abc");
    LPWSTR texts[] = {m_maker.Wide("red").Value.lpszW, m_maker.Wide("blue").Value.lpszW};
    SPropValue several{};
    several.ulPropTag = PROP_TAG(PT_MV_UNICODE, 0x3001);
    several.Value.MVszW = {2, texts};
    SPropValue noneOfSeveral = several;
    noneOfSeveral.Value.MVszW.cValues = 0;
    struct Row {
        const char* name;
        SPropValue value, pattern;
        ULONG level;
        bool matches;
    };
    const Row rows[] = {
        {"full", text, m_maker.Wide("Project Plan"), FL_FULLSTRING, true},
        {"full, part", text, m_maker.Wide("Project"), FL_FULLSTRING, false},
        {"full, case", text, m_maker.Wide("project plan"), FL_FULLSTRING, false},
        {"full without case", text, m_maker.Wide("project PLAN"), FL_FULLSTRING | FL_IGNORECASE, true},
        {"full loosely", text, m_maker.Wide("project PLAN"), FL_FULLSTRING | FL_LOOSE, true},
        {"8-bit pattern", text, m_maker.Narrow("Project Plan"), FL_FULLSTRING, true},
        {"8-bit value", m_maker.Narrow("Plan"), m_maker.Wide("Plan"), FL_FULLSTRING, true},
        {"prefix", text, m_maker.Wide("Proj"), FL_PREFIX, true},
        {"prefix, not at the start", text, m_maker.Wide("Plan"), FL_PREFIX, false},
        {"prefix, longer than the text", text, m_maker.Wide("Project Plan 2"), FL_PREFIX, false},
        {"part", text, m_maker.Wide("ct P"), FL_SUBSTRING, true},
        {"part at the end", text, m_maker.Wide("Plan"), FL_SUBSTRING, true},
        {"part, case", text, m_maker.Wide("CT p"), FL_SUBSTRING, false},
        {"part without case", text, m_maker.Wide("CT p"), FL_SUBSTRING | FL_IGNORECASE, true},
        {"empty pattern", text, m_maker.Wide(""), FL_SUBSTRING, true},
        {"marks", french, m_maker.Wide("EtE"), FL_FULLSTRING, false},
        {"without marks", french, m_maker.Wide("EtE"), FL_FULLSTRING | FL_IGNORENONSPACE, true},
        {"without marks, case", french, m_maker.Wide("ete"), FL_FULLSTRING | FL_IGNORENONSPACE, false},
        {"loosely", french, m_maker.Wide("ete"), FL_FULLSTRING | FL_LOOSE, true},
        {"bytes", bytes, m_maker.Binary("abc"), FL_FULLSTRING, true},
        {"bytes, prefix", bytes, m_maker.Binary("ab"), FL_PREFIX, true},
        {"bytes, part", bytes, m_maker.Binary("bc"), FL_SUBSTRING, true},
        {"bytes have no case", bytes, m_maker.Binary("ABC"), FL_FULLSTRING | FL_LOOSE, false},
        {"any of several", several, m_maker.Wide("blue"), FL_FULLSTRING, true},
        {"any of several, prefix", several, m_maker.Wide("re"), FL_PREFIX, true},
        {"none of several", several, m_maker.Wide("green"), FL_SUBSTRING, false},
        {"several patterns", m_maker.Wide("blue"), several, FL_FULLSTRING, true},
        {"no values", noneOfSeveral, m_maker.Wide(""), FL_SUBSTRING, false},
        {"two kinds", text, m_maker.Binary("Project Plan"), FL_FULLSTRING, false},
        {"numbers", LongValue(PROP_TAG(PT_LONG, 1), 1), LongValue(PROP_TAG(PT_LONG, 1), 1), FL_FULLSTRING, false},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(Contains(row.value, row.pattern, row.level), row.matches) << row.name;
    }
}

}  // namespace
}  // namespace localmapi::testing
