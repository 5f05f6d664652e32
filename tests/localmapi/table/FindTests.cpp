// FindRow in sorted and unsorted tables, forward and backward.
#include "tests/localmapi/table/TableFixture.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace localmapi::testing {
namespace {

class TableFind : public TableFixture {
protected:
    // The position that a search ends at; nothing when it finds none.
    static std::optional<ULONG> Found(IMAPITable& table, const SRestriction& restriction, BOOKMARK origin,
                                      ULONG flags) {
        const HRESULT result = Find(table, restriction, origin, flags);
        if (result != S_OK) {
            EXPECT_EQ(result, MAPI_E_NOT_FOUND);
            return std::nullopt;
        }
        return Position(table);
    }
    SRestriction Name(ULONG relop, const char* name) { return m_maker.Property(relop, m_maker.Wide(name)); }
};

TEST_F(TableFind, BeginsAtItsOrigin) {
    const ComPtr<IMAPITable> table = Letters("abcabc");
    struct Case {
        const char* name;
        LONG at;  // where the cursor stands before
        BOOKMARK origin;
        ULONG flags;
        std::optional<ULONG> found;
    };
    const Case cases[] = {
        {"beginning", 4, BOOKMARK_BEGINNING, 0, 1},
        {"the row itself", 1, BOOKMARK_CURRENT, 0, 1},
        {"behind it", 2, BOOKMARK_CURRENT, 0, 4},
        {"none behind it", 5, BOOKMARK_CURRENT, 0, std::nullopt},
        {"end", 0, BOOKMARK_END, 0, std::nullopt},
        {"backward from the end", 0, BOOKMARK_END, DIR_BACKWARD, 4},
        {"backward, the row itself", 4, BOOKMARK_CURRENT, DIR_BACKWARD, 4},
        {"backward before it", 3, BOOKMARK_CURRENT, DIR_BACKWARD, 1},
        {"backward, none before it", 0, BOOKMARK_CURRENT, DIR_BACKWARD, std::nullopt},
        {"backward from the beginning", 5, BOOKMARK_BEGINNING, DIR_BACKWARD, std::nullopt},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        ASSERT_EQ(table->SeekRow(BOOKMARK_BEGINNING, c.at, nullptr), S_OK);
        EXPECT_EQ(Found(*table, Name(RELOP_EQ, "b"), c.origin, c.flags), c.found);
    }
}

// The ends of a range are found by halving: every bound, inside and outside, both ways, against what a reader counts.
TEST_F(TableFind, InASortedTableFindsBothEndsOfARange) {
    constexpr ULONG kRelops[] = {RELOP_LT, RELOP_LE, RELOP_GT, RELOP_GE, RELOP_EQ, RELOP_NE};
    const auto holds = [](char letter, ULONG relop, char bound) {
        switch (relop) {
            case RELOP_LT: return letter < bound;
            case RELOP_LE: return letter <= bound;
            case RELOP_GT: return letter > bound;
            case RELOP_GE: return letter >= bound;
            case RELOP_EQ: return letter == bound;
            default: return letter != bound;
        }
    };
    for (const ULONG order : {TABLE_SORT_ASCEND, TABLE_SORT_DESCEND}) {
        for (const std::string letters : {"bbddff", "d", "", "bd", "ddddddd"}) {
            const ComPtr<IMAPITable> table = Letters(letters);
            ASSERT_EQ(Sort(*table, {{kName, order}}), S_OK);
            const std::string sorted = All(*table);
            for (const char bound : std::string("abcdefg")) {
                for (const ULONG relop : kRelops) {
                    SCOPED_TRACE(::testing::Message() << sorted << " " << relop << " " << bound);
                    std::optional<ULONG> first;
                    std::optional<ULONG> last;
                    for (ULONG i = 0; i < sorted.size(); ++i) {
                        if (holds(sorted[i], relop, bound)) {
                            first = first ? first : i;
                            last = i;
                        }
                    }
                    const SRestriction restriction = Name(relop, std::string(1, bound).c_str());
                    EXPECT_EQ(Found(*table, restriction, BOOKMARK_BEGINNING, 0), first);
                    EXPECT_EQ(Found(*table, restriction, BOOKMARK_END, DIR_BACKWARD), last);
                }
            }
        }
    }
}

// What a folder asks: the rows of a window of time, by their first and their last, among rows without a time.
TEST_F(TableFind, CountsAWindowOfTimeByItsEnds) {
    std::vector<Row> rows;
    for (const int ticks : {50, 0, 20, 40, 30, 0, 10}) {
        rows.push_back({m_maker.Wide("x")});
        if (ticks > 0) {
            rows.back().push_back(Maker::Time(static_cast<std::uint64_t>(ticks)));
        }
    }
    const ComPtr<IMAPITable> table = TableOf(rows);
    ASSERT_EQ(Sort(*table, {{kTime, TABLE_SORT_ASCEND}}), S_OK);
    struct Case {
        std::uint64_t from, to;
        std::optional<ULONG> first, last;
    };
    for (const Case& c : {Case{0, UINT64_MAX, 0, 4}, Case{20, 40, 1, 2}, Case{21, 30, std::nullopt, std::nullopt},
                          Case{0, 11, 0, 0}, Case{50, 51, 4, 4}, Case{51, 99, std::nullopt, std::nullopt}}) {
        SCOPED_TRACE(c.from);
        const SRestriction window = m_maker.And(
            {m_maker.Property(RELOP_GE, Maker::Time(c.from)), m_maker.Property(RELOP_LT, Maker::Time(c.to))});
        EXPECT_EQ(Found(*table, window, BOOKMARK_BEGINNING, 0), c.first);
        EXPECT_EQ(Found(*table, window, BOOKMARK_END, DIR_BACKWARD), c.last);
    }
}

// Several values and values of another type among the sort keys: no order of theirs tells which rows match.
TEST_F(TableFind, InATableSortedByMixedValuesFindsWhatAWalkFinds) {
    LPWSTR texts[] = {m_maker.Wide("a").Value.lpszW, m_maker.Wide("z").Value.lpszW};
    SPropValue several{};
    several.ulPropTag = PROP_TAG(PT_MV_UNICODE, 0x3001);
    several.Value.MVszW = {2, texts};
    const std::vector<Row> rows = {
        {several}, {m_maker.Wide("m")}, {LongValue(PROP_TAG(PT_LONG, 0x3001), 5)}, {m_maker.Wide("b")}};
    const ComPtr<IMAPITable> table = TableOf(rows);
    ASSERT_EQ(Sort(*table, {{kName, TABLE_SORT_ASCEND}}), S_OK);
    ASSERT_EQ(SetColumns(*table, {PROP_TAG(PT_UNSPECIFIED, 0x3001)}), S_OK);
    EXPECT_EQ(All(*table), "5bm [w'a',w'z']");
    EXPECT_EQ(Found(*table, Name(RELOP_EQ, "z"), BOOKMARK_BEGINNING, 0), 3U);
    EXPECT_EQ(Found(*table, Name(RELOP_LE, "a"), BOOKMARK_END, DIR_BACKWARD), 3U);
    EXPECT_EQ(Found(*table, m_maker.Property(RELOP_EQ, kName, LongValue(kNumber, 5)), BOOKMARK_BEGINNING, 0), 0U);
}

// An index gives rows of the source: where they stand depends on order and restriction.
TEST_F(TableFind, OfAnEntryIdGivesItsPositionInEveryOrder) {
    auto rows = std::make_unique<MemoryRows>(std::vector<ULONG>{kName});
    rows->Index(PROP_ID(kEntryId));
    for (const char letter : std::string("cadb")) {
        rows->Add(Row{m_maker.Wide({&letter, 1}), m_maker.Binary({&letter, 1})});
    }
    rows->Index(PROP_ID(kLongTermId));
    const ComPtr<IMAPITable> table = TableOf(std::move(rows));
    const auto id = [this](const char* bytes) {
        return m_maker.Or({m_maker.Property(RELOP_EQ, m_maker.Binary(bytes, kLongTermId)),
                           m_maker.Property(RELOP_EQ, m_maker.Binary(bytes))});
    };
    struct Case {
        const char* name;
        std::function<HRESULT()> arrange;
        std::optional<ULONG> a, d;
    };
    const SRestriction early = Name(RELOP_LE, "c");
    const Case cases[] = {
        {"as they are", [] { return S_OK; }, 1, 2},
        {"sorted",
         [&] {
             return Sort(*table, {{kName, TABLE_SORT_ASCEND}});
         },
         0, 3},
        {"sorted and restricted", [&] { return Restrict(*table, early); }, 0, std::nullopt},
        {"restricted", [&] { return table->SortTable(nullptr, 0); }, 1, std::nullopt},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        ASSERT_EQ(c.arrange(), S_OK);
        EXPECT_EQ(Found(*table, id("a"), BOOKMARK_BEGINNING, 0), c.a);
        EXPECT_EQ(Found(*table, id("a"), BOOKMARK_END, DIR_BACKWARD), c.a);
        EXPECT_EQ(Found(*table, id("d"), BOOKMARK_BEGINNING, 0), c.d);
        EXPECT_EQ(Found(*table, id("x"), BOOKMARK_BEGINNING, 0), std::nullopt);
        EXPECT_EQ(Found(*table, m_maker.And({Name(RELOP_EQ, "b"), id("a")}), BOOKMARK_BEGINNING, 0), std::nullopt);
    }
}

}  // namespace
}  // namespace localmapi::testing
