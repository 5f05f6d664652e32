// The order of values, and RES_CONTENT.
#include "localmapi/props/Values.h"
#include "tests/localmapi/support/EveryValue.h"
#include "tests/localmapi/support/LeakCheck.h"
#include "tests/localmapi/support/Restrictions.h"
#include "tests/localmapi/support/ValueText.h"

#include <gtest/gtest.h>

#include <vector>

namespace localmapi::testing {
namespace {

class Comparison : public LeakCheck {
protected:
    SPropValue Units(std::initializer_list<int> units) {
        CStringW text;
        for (const int unit : units) {
            text.push_back(static_cast<WCHAR>(unit));
        }
        return WideValue(PROP_TAG(PT_UNICODE, 0x3001), text, m_maker.Memory());
    }

    RestrictionMaker m_maker;
};

// Every pair of each list is compared both ways.
TEST_F(Comparison, PutsValuesInTheirOrder) {
    std::vector<AscendingList> lists = AscendingLists(m_maker);
    lists.push_back({"types", {LongValue(PT_LONG, 9), m_maker.Wide("a"), RestrictionMaker::Time(0)}});
    for (const AscendingList& list : lists) {
        for (std::size_t i = 0; i < list.values.size(); ++i) {
            for (std::size_t j = 0; j < list.values.size(); ++j) {
                const int order = Compare(list.values[i], list.values[j]);
                EXPECT_EQ((order > 0) - (order < 0), (i > j) - (i < j))
                    << list.name << ": " << TextOf(list.values[i]) << " and " << TextOf(list.values[j]);
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
    EXPECT_TRUE(Holds(m_maker.Words({"x"}), RELOP_NE, m_maker.Words({"x", "y"})));
}

TEST_F(Comparison, OfContentFollowsTheFuzzyLevel) {
    const SPropValue text = m_maker.Wide("Project Plan");
    const SPropValue french = Units({'E', 0x301, 't', 0xC9});  // one accent behind its letter, one in it
    const SPropValue bytes = m_maker.Binary("abc");
    const SPropValue several = m_maker.Words({"red", "blue"});
    const SPropValue noneOfSeveral = m_maker.Words({});
    struct Row {
        const char* name;
        SPropValue value, pattern;
        ULONG level;
        bool matches;
    };
    const Row rows[] = {
        {"full", text, m_maker.Wide("Project Plan"), FL_FULLSTRING, true},
        {"full, case", text, m_maker.Wide("project plan"), FL_FULLSTRING, false},
        {"full without case", text, m_maker.Wide("project PLAN"), FL_FULLSTRING | FL_IGNORECASE, true},
        {"8-bit pattern", text, m_maker.Narrow("Project Plan"), FL_FULLSTRING, true},
        {"prefix", text, m_maker.Wide("Proj"), FL_PREFIX, true},
        {"prefix, not at the start", text, m_maker.Wide("Plan"), FL_PREFIX, false},
        {"part", text, m_maker.Wide("ct P"), FL_SUBSTRING, true},
        {"part, case", text, m_maker.Wide("CT p"), FL_SUBSTRING, false},
        {"part without case", text, m_maker.Wide("CT p"), FL_SUBSTRING | FL_IGNORECASE, true},
        {"empty pattern", text, m_maker.Wide(""), FL_SUBSTRING, true},
        {"marks", french, m_maker.Wide("EtE"), FL_FULLSTRING, false},
        {"without marks", french, m_maker.Wide("EtE"), FL_FULLSTRING | FL_IGNORENONSPACE, true},
        {"loosely", french, m_maker.Wide("ete"), FL_FULLSTRING | FL_LOOSE, true},
        {"bytes", bytes, m_maker.Binary("abc"), FL_FULLSTRING, true},
        {"bytes, part", bytes, m_maker.Binary("bc"), FL_SUBSTRING, true},
        {"bytes have no case", bytes, m_maker.Binary("ABC"), FL_FULLSTRING | FL_LOOSE, false},
        {"any of several", several, m_maker.Wide("blue"), FL_FULLSTRING, true},
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
