// HrQueryAllRows with tables of our own and of others.
#include "localmapi/props/RowSets.h"
#include "localmapi/table/MemoryRows.h"
#include "localmapi/table/Table.h"
#include "localmapi/utilities/Utilities.h"
#include "mapi/Mapi.h"
#include "testing/StubInterfaces.h"
#include "tests/localmapi/support/LeakCheck.h"
#include "tests/localmapi/support/Restrictions.h"
#include "tests/localmapi/support/ValueText.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

namespace localmapi::testing {
namespace {

constexpr ULONG kNumber = PROP_TAG(PT_LONG, 0x0E08);
constexpr ULONG kOther = PROP_TAG(PT_LONG, 0x7001);

class AllRows : public LeakCheck {
protected:
    // Rows 0, 1, 2 ... of two columns, the second of them the negative of the first.
    static ComPtr<IMAPITable> Numbers(LONG count) {
        auto rows = std::make_unique<MemoryRows>(std::vector<ULONG>{kNumber, kOther});
        for (LONG i = 0; i < count; ++i) {
            rows->Add(std::array{LongValue(kNumber, i), LongValue(kOther, -i)});
        }
        return MakeTable(std::move(rows), nullptr, 0, std::make_shared<std::recursive_mutex>());
    }
};

std::string RowsText(const SRowSet& rows) {
    std::string text;
    for (ULONG i = 0; i < rows.cRows; ++i) {
        text += (i > 0 ? " " : "") + TextOf(rows.aRow[i]);
    }
    return text;
}

TEST_F(AllRows, ComeFromTheBeginningWithWhatIsSet) {
    RestrictionMaker maker;
    SPropTagArray columns{1, {kOther}};
    SRestriction few = maker.Property(RELOP_LT, LongValue(kNumber, 3));
    SRestriction pattern = maker.Property(RELOP_RE, maker.Wide("x"));
    const SizedSSortOrderSet<1> categories{1, 1, 0, {{kNumber, TABLE_SORT_ASCEND}}};
    const SizedSSortOrderSet<1> backward{1, 0, 0, {{kNumber, TABLE_SORT_DESCEND}}};
    struct Case {
        const char* name;
        LPSPropTagArray columns;
        LPSRestriction restriction;
        LPSSortOrderSet sorts;
        LONG most;
        HRESULT result;
        const char* rows;
    };
    const Case cases[] = {
        {"as it stands", nullptr, nullptr, nullptr, 0, S_OK, "0|0 1|-1 2|-2 3|-3"},
        {"all three", &columns, &few, backward, 0, S_OK, "-2 -1 0"},
        {"as many as allowed", &columns, nullptr, nullptr, 4, S_OK, "0 -1 -2 -3"},
        {"more than allowed", &columns, nullptr, nullptr, 3, MAPI_E_TABLE_TOO_BIG, ""},
        {"a restriction that is refused", nullptr, &pattern, nullptr, 0, MAPI_E_TOO_COMPLEX, ""},
        {"an order that is refused", nullptr, nullptr, categories, 0, MAPI_E_TOO_COMPLEX, ""},
        {"not more with the restriction", &columns, &few, nullptr, 3, S_OK, "0 -1 -2"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const ComPtr<IMAPITable> table = Numbers(4);
        ASSERT_EQ(table->SeekRow(BOOKMARK_END, 0, nullptr), S_OK);
        LPSRowSet got = nullptr;
        EXPECT_EQ(HrQueryAllRows(table.Get(), c.columns, c.restriction, c.sorts, c.most, &got), c.result);
        const RowSetPointer rows(got);
        EXPECT_EQ(rows == nullptr ? "" : RowsText(*rows), c.rows);
    }
}

TEST_F(AllRows, OfManyOrNoneAreOneSet) {
    for (const LONG count : {0, 1, 999, 1000, 1001, 3500}) {
        SCOPED_TRACE(count);
        LPSRowSet got = nullptr;
        ASSERT_EQ(HrQueryAllRows(Numbers(count).Get(), nullptr, nullptr, nullptr, 0, &got), S_OK);
        ASSERT_EQ(got->cRows, static_cast<ULONG>(count));
        for (LONG i = 0; i < count; ++i) {
            ASSERT_EQ(got->aRow[i].lpProps[0].Value.l, i);
        }
        EXPECT_EQ(LiveBuffers(), count + 1);
        FreeProws(got);
    }
}

// A table of somebody's own: a row a call, and at some call something else.
class RowByRow final : public vx_testing::StubTable {
public:
    RowByRow(int rows, HRESULT last) : m_left(rows), m_last(last) {}

    HRESULT STDMETHODCALLTYPE SeekRow(BOOKMARK, LONG, LONG*) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE QueryRows(LONG, ULONG, LPSRowSet* rows) override {
        if (m_left-- == 0) {
            return m_last;
        }
        RowSetPointer set = MakeRowSet(1);
        set->aRow[0] = {0, 1, MakeRoot<SPropValue>(sizeof(SPropValue)).release()};
        set->cRows = 1;
        set->aRow[0].lpProps[0] = LongValue(kNumber, m_left);
        *rows = set.release();
        return S_OK;
    }

private:
    int m_left;
    HRESULT m_last;
};

TEST_F(AllRows, OfATableThatGivesFewAtOnceAreAllOrNone) {
    struct Case {
        const char* name;
        int rows;
        HRESULT last;
        LONG most;
        HRESULT result;
        const char* all;
    };
    for (const Case& c : {Case{"to the end, told by no set", 3, S_OK, 0, S_OK, "2 1 0"},
                          Case{"a failure behind some", 3, MAPI_E_DISK_ERROR, 0, MAPI_E_DISK_ERROR, ""},
                          Case{"too many", 3, S_OK, 2, MAPI_E_TABLE_TOO_BIG, ""}}) {
        SCOPED_TRACE(c.name);
        RowByRow table(c.rows, c.last);
        LPSRowSet got = nullptr;
        EXPECT_EQ(HrQueryAllRows(&table, nullptr, nullptr, nullptr, c.most, &got), c.result);
        const RowSetPointer rows(got);
        EXPECT_EQ(rows == nullptr ? "" : RowsText(*rows), c.all);
    }
}

}  // namespace
}  // namespace localmapi::testing
