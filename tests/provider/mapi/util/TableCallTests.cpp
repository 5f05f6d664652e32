// Table calls while MAPI is busy.
#include "mapi/MapiCodes.h"
#include "provider/BusyPause.h"
#include "provider/MAPIUtils.h"
#include "testing/StubInterfaces.h"
#include "tests/provider/mapi/util/TestSupport.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

int g_pauses = 0;
DWORD g_longestPause = 0;

void CountPause(DWORD milliseconds) {
    ++g_pauses;
    g_longestPause = std::max(g_longestPause, milliseconds);
}

// Answers MAPI_E_BUSY a number of times, then `result`; every method the same.
class BusyTable : public vx_testing::StubTable {
public:
    explicit BusyTable(int busyTimes, HRESULT result = S_OK) : m_busyTimes(busyTimes), m_result(result) {}

    int calls = 0;
    std::vector<long long> arguments;  // of the last call, as numbers

    HRESULT STDMETHODCALLTYPE SetColumns(LPSPropTagArray columns, ULONG flags) override {
        return Answer({Number(columns), flags});
    }
    HRESULT STDMETHODCALLTYPE GetRowCount(ULONG flags, ULONG* count) override { return Answer({flags, Number(count)}); }
    HRESULT STDMETHODCALLTYPE SeekRow(BOOKMARK origin, LONG rowCount, LONG* sought) override {
        return Answer({origin, rowCount, Number(sought)});
    }
    HRESULT STDMETHODCALLTYPE SortTable(LPSSortOrderSet order, ULONG flags) override {
        return Answer({Number(order), flags});
    }
    HRESULT STDMETHODCALLTYPE QueryRows(LONG rowCount, ULONG flags, LPSRowSet* rows) override {
        return Answer({rowCount, flags, Number(rows)});
    }

    static long long Number(const void* pointer) { return reinterpret_cast<long long>(pointer); }

private:
    HRESULT Answer(std::vector<long long> given) {
        arguments = std::move(given);
        return calls++ < m_busyTimes ? MAPI_E_BUSY : m_result;
    }

    int m_busyTimes;
    HRESULT m_result;
};

struct Operation {
    const char* name;
    HRESULT (*call)(IMAPITable*);
    std::vector<long long> arguments;
};

SPropTagArray g_columns;
SSortOrderSet g_order;
SRowSet* g_rows;
ULONG g_count;
LONG g_sought;

const std::vector<Operation>& Operations() {
    static const std::vector<Operation> kOperations = {
        {"QueryRows",
         [](IMAPITable* table) { return CMapiUtil::QueryRows(table, -25, 3, &g_rows); },
         {-25, 3, BusyTable::Number(&g_rows)}},
        {"SetColumns",
         [](IMAPITable* table) { return CMapiUtil::SetColumns(table, &g_columns, 4); },
         {BusyTable::Number(&g_columns), 4}},
        {"GetRowCount",
         [](IMAPITable* table) { return CMapiUtil::GetRowCount(table, 5, &g_count); },
         {5, BusyTable::Number(&g_count)}},
        {"SortTable",
         [](IMAPITable* table) { return CMapiUtil::SortTable(table, &g_order, 6); },
         {BusyTable::Number(&g_order), 6}},
        {"SeekRow",
         [](IMAPITable* table) { return CMapiUtil::SeekRow(table, 1, -7, &g_sought); },
         {1, -7, BusyTable::Number(&g_sought)}},
    };
    return kOperations;
}

TEST(BusyTableCall, IsRepeatedSixHundredTimesAndNoMore) {
    const vx_busy_pause::Override noSleep(&CountPause);
    struct Row {
        const char* name;
        int busyTimes;
        HRESULT answer;
        HRESULT expected;
        int calls;
        int pauses;
        bool timesOut;
    };
    const Row rows[] = {
        {"free at once", 0, S_OK, S_OK, 1, 0, false},
        {"another failure", 0, MAPI_E_NOT_FOUND, MAPI_E_NOT_FOUND, 1, 0, false},
        {"busy once, then a warning", 1, MAPI_W_POSITION_CHANGED, MAPI_W_POSITION_CHANGED, 2, 1, false},
        {"busy as long as allowed", 600, S_OK, S_OK, 601, 600, false},
        {"busy once too often", 601, S_OK, MAPI_E_BUSY, 601, 600, true},
    };
    for (const Operation& operation : Operations()) {
        for (const Row& row : rows) {
            SCOPED_TRACE(testing::Message() << operation.name << ", " << row.name);
            const LogCapture log;
            BusyTable table(row.busyTimes, row.answer);
            g_pauses = 0;
            EXPECT_EQ(operation.call(&table), row.expected);
            EXPECT_EQ(table.calls, row.calls);
            EXPECT_EQ(g_pauses, row.pauses);
            EXPECT_EQ(table.arguments, operation.arguments);

            const std::string busy = std::string(operation.name) + ": MAPI_E_BUSY";
            EXPECT_EQ(log.Texts("DEBUG"), std::vector<std::string>(static_cast<std::size_t>(row.pauses), busy));
            EXPECT_EQ(log.Texts("ERROR"),
                      std::vector<std::string>(row.timesOut ? 1 : 0, busy + " too many times - timeout"));
        }
    }
    EXPECT_EQ(g_longestPause, 100U);
}

}  // namespace
