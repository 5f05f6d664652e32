// What tables read of their source: the claims that make large folders quick, as counts of cells.
#include "tests/localmapi/table/TableFixture.h"

#include <gtest/gtest.h>

#include <string>

namespace localmapi::testing {
namespace {

class TableCost : public TableFixture {
protected:
    static std::string IdOf(std::size_t row) { return "id" + std::to_string(row); }

    // Rows with a name, a time that no two share and an indexed entry id.
    ComPtr<IMAPITable> Many(std::size_t count) {
        auto rows = std::make_unique<MemoryRows>(std::vector<ULONG>{kName, kEntryId});
        rows->Index(PROP_ID(kEntryId));
        rows->Index(PROP_ID(kLongTermId));
        for (std::size_t i = 0; i < count; ++i) {
            RestrictionMaker maker;
            rows->Add(Row{maker.Wide(IdOf(i)), Maker::Time((i * 7919 + 13) % count), maker.Binary(IdOf(i))});
        }
        m_traffic = {};
        ComPtr<IMAPITable> table = TableOf(std::make_unique<WatchedRows>(std::move(rows), m_traffic));
        EXPECT_EQ(SetColumns(*table, {kEntryId, kTime}), S_OK);
        return table;
    }
    SRestriction Id(std::size_t row) {
        const std::string id = IdOf(row);
        return m_maker.Or({m_maker.Property(RELOP_EQ, m_maker.Binary(id, kLongTermId)),
                           m_maker.Property(RELOP_EQ, m_maker.Binary(id))});
    }

    Traffic m_traffic;
};

TEST_F(TableCost, OfAnEntryIdIsThatOfAFewCellsInAnyTable) {
    for (const std::size_t count : {std::size_t{100}, std::size_t{20'000}}) {
        SCOPED_TRACE(count);
        const ComPtr<IMAPITable> table = Many(count);
        ASSERT_EQ(Find(*table, Id(count / 2)), S_OK);
        EXPECT_EQ(Position(*table), count / 2);
        ASSERT_EQ(Sort(*table, {{kTime, TABLE_SORT_DESCEND}}), S_OK);
        ASSERT_EQ(Restrict(*table, Id(count / 3)), S_OK);
        EXPECT_EQ(RowCount(*table), 1U);
        Read(*table, 30);
        EXPECT_LT(m_traffic.reads, 12U);
    }
}

TEST_F(TableCost, OfOpeningASortedTableIsOneReadARow) {
    constexpr std::size_t kRows = 5000;
    const ComPtr<IMAPITable> table = Many(kRows);
    ASSERT_EQ(Sort(*table, {{kTime, TABLE_SORT_ASCEND}}), S_OK);
    ASSERT_EQ(Restrict(*table, m_maker.Property(RELOP_GE, Maker::Time(100))), S_OK);
    EXPECT_EQ(m_traffic.reads, 0U) << "nothing is read before rows are asked for";
    EXPECT_EQ(RowCount(*table), kRows - 100);
    EXPECT_EQ(m_traffic.reads, kRows);

    // A window of time, by its ends, and another restriction on the same column: from what is kept.
    const SRestriction window =
        m_maker.And({m_maker.Property(RELOP_GE, Maker::Time(2000)), m_maker.Property(RELOP_LT, Maker::Time(3000))});
    ASSERT_EQ(Find(*table, window), S_OK);
    EXPECT_EQ(Position(*table), 1900U);
    ASSERT_EQ(Find(*table, window, BOOKMARK_END, DIR_BACKWARD), S_OK);
    EXPECT_EQ(Position(*table), 2899U);
    ASSERT_EQ(Restrict(*table, m_maker.Property(RELOP_LT, Maker::Time(10))), S_OK);
    EXPECT_EQ(RowCount(*table), 10U);
    EXPECT_EQ(m_traffic.reads, kRows);
    Read(*table, 10);
    EXPECT_EQ(m_traffic.reads, kRows + 20) << "two columns of ten rows";
}

TEST_F(TableCost, OfARestrictionFallsOnItsOwnColumnAndThenOnTheRowsShown) {
    constexpr std::size_t kRows = 3000;
    const ComPtr<IMAPITable> table = Many(kRows);
    ASSERT_EQ(Sort(*table, {{kTime, TABLE_SORT_ASCEND}}), S_OK);
    ASSERT_EQ(Restrict(*table, m_maker.Content(FL_PREFIX, m_maker.Wide("id29"))), S_OK);
    EXPECT_EQ(RowCount(*table), 111U);
    EXPECT_EQ(m_traffic.readsOf[PROP_ID(kName)], kRows);
    EXPECT_EQ(m_traffic.readsOf[PROP_ID(kTime)], 111U);
}

}  // namespace
}  // namespace localmapi::testing
