// IMAPITable over 100,000 rows: opening, paging, finding, counting; as times and as ratios within one run. The rows are
// in memory, so what is measured is the table itself.
#include "localmapi/props/RowSets.h"
#include "localmapi/props/Values.h"
#include "localmapi/table/MemoryRows.h"
#include "localmapi/table/Table.h"
#include "mapi/Mapi.h"

#include <benchmark/benchmark.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

namespace {

using localmapi::Arena;
using localmapi::ComPtr;
using localmapi::MemoryRows;
using localmapi::RowSetPointer;
using localmapi::RowSource;

constexpr std::size_t kRows = 100'000;
constexpr ULONG kUnindexed = PROP_TAG(PT_BINARY, 0x7001);  // the entry id once more, without an index
constexpr SizedSPropTagArray<6> kColumns{6,
                                         {PR_ENTRYID, PR_MESSAGE_CLASS_W, PR_LONGTERM_ENTRYID_FROM_TABLE,
                                          PR_LAST_MODIFICATION_TIME, PR_MESSAGE_FLAGS, PR_SUBJECT_W}};
constexpr SizedSSortOrderSet<1> kByTime{1, 0, 0, {{PR_LAST_MODIFICATION_TIME, TABLE_SORT_ASCEND}}};
constexpr SizedSSortOrderSet<1> kBySubject{1, 0, 0, {{PR_SUBJECT_W, TABLE_SORT_ASCEND}}};

void Require(HRESULT hr, const char* what) {
    if (hr != S_OK) {
        std::fprintf(stderr, "%s: %08X\n", what, static_cast<unsigned>(hr));
        std::abort();
    }
}

SPropValue TimeValue(std::uint64_t ticks) {
    SPropValue value{};
    value.ulPropTag = PR_LAST_MODIFICATION_TIME;
    value.Value.ft = {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32U)};
    return value;
}

// An entry id as stores have them: flags, the store's key, the number.
std::array<std::byte, 24> EntryIdOf(std::size_t row) {
    std::array<std::byte, 24> id{};
    for (std::size_t i = 0; i < 4; ++i) {
        id[20 + i] = static_cast<std::byte>(row >> (8 * i));
    }
    return id;
}

localmapi::ByteView View(const std::array<std::byte, 24>& bytes) {
    return {bytes.data(), bytes.size()};
}

std::unique_ptr<MemoryRows> Messages(std::size_t count) {
    auto rows = std::make_unique<MemoryRows>(std::vector<ULONG>{PR_ENTRYID});
    rows->Index(PROP_ID(PR_ENTRYID));
    rows->Index(PROP_ID(PR_LONGTERM_ENTRYID_FROM_TABLE));
    for (std::size_t i = 0; i < count; ++i) {
        Arena arena;
        const std::uint64_t scattered = i * 2'654'435'761U % 1'000'003U;
        const std::string subject = "RE: project " + std::to_string(scattered % 5000) + " status";
        const SPropValue values[] = {
            localmapi::BinaryValue(PR_ENTRYID, View(EntryIdOf(i)), arena),
            localmapi::WideValue(PR_MESSAGE_CLASS_W, "IPM.Note"_w, arena),
            TimeValue(scattered * 10'000'000U),
            localmapi::LongValue(PR_MESSAGE_FLAGS, 1),
            localmapi::WideValue(PR_SUBJECT_W, CStringW(subject.begin(), subject.end()), arena),
            localmapi::BinaryValue(kUnindexed, View(EntryIdOf(i)), arena),
        };
        rows->Add(values);
    }
    return rows;
}

ComPtr<IMAPITable> TableOf(std::size_t count) {
    ComPtr<IMAPITable> table =
        localmapi::MakeTable(Messages(count), nullptr, MAPI_UNICODE, std::make_shared<std::recursive_mutex>());
    Require(table->SetColumns(kColumns, 0), "SetColumns");
    return table;
}

std::size_t ReadPage(IMAPITable& table, LONG count) {
    LPSRowSet got = nullptr;
    Require(table.QueryRows(count, 0, &got), "QueryRows");
    return RowSetPointer(got)->cRows;
}

double Seconds(const std::chrono::steady_clock::time_point& since) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - since).count();
}

template <class Body>
double Timed(Body&& body) {
    const auto start = std::chrono::steady_clock::now();
    body();
    return Seconds(start);
}

// Reading one cell of every row and doing nothing with it: what one pass cannot be quicker than.
double PlainScan(RowSource& rows, ULONG id) {
    return Timed([&] {
        Arena arena;
        for (std::size_t i = 0; i < rows.Count(); ++i) {
            arena.Clear();
            SPropValue value{};
            const localmapi::Status read = rows.Read(i, id, arena, value);
            benchmark::DoNotOptimize(static_cast<bool>(read));
        }
    });
}

// Sorting and the first row, as a multiple of a plain scan of the column.
void OpenSorted(benchmark::State& state, const SizedSSortOrderSet<1>& order) {
    const ComPtr<IMAPITable> table = TableOf(kRows);
    const auto plain = Messages(kRows);
    double scan = 0;
    double sorted = 0;
    for (auto _ : state) {
        scan += PlainScan(*plain, PROP_ID(order.aSort[0].ulPropTag));
        sorted += Timed([&] {
            Require(table->SortTable(order, 0), "SortTable");
            benchmark::DoNotOptimize(ReadPage(*table, 1));
        });
    }
    state.counters["over_a_plain_scan"] = sorted / scan;
}
BENCHMARK_CAPTURE(OpenSorted, by_time, kByTime)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(OpenSorted, by_subject, kBySubject)->Unit(benchmark::kMillisecond);

// Pages of 30 rows of six columns, walked to the end of the table.
void ReadPages(benchmark::State& state) {
    const ComPtr<IMAPITable> table = TableOf(kRows);
    Require(table->SortTable(kByTime, 0), "SortTable");
    std::int64_t rows = 0;
    for (auto _ : state) {
        const std::size_t got = ReadPage(*table, 30);
        rows += static_cast<std::int64_t>(got);
        if (got == 0) {
            Require(table->SeekRow(BOOKMARK_BEGINNING, 0, nullptr), "SeekRow");
        }
    }
    state.SetItemsProcessed(rows);
}
BENCHMARK(ReadPages);

SRestriction EqualTo(ULONG tag, SPropValue& value) {
    SRestriction restriction{};
    restriction.rt = RES_PROPERTY;
    restriction.res.resProperty = {RELOP_EQ, tag, &value};
    return restriction;
}

// One message by its id, as a folder looks for it: a table restricted to either id, and its row.
double SecondsToFind(IMAPITable& table, std::size_t rows, std::size_t rounds, ULONG second) {
    return Timed([&] {
        for (std::size_t i = 0; i < rounds; ++i) {
            Arena arena;
            const auto id = EntryIdOf(i * 7919 % rows);
            SPropValue value = localmapi::BinaryValue(second, View(id), arena);
            SRestriction either[] = {EqualTo(PR_LONGTERM_ENTRYID_FROM_TABLE, value), EqualTo(second, value)};
            SRestriction restriction{};
            restriction.rt = RES_OR;
            restriction.res.resOr = {2, either};
            Require(table.SortTable(kByTime, 0), "SortTable");
            Require(table.Restrict(&restriction, 0), "Restrict");
            if (ReadPage(table, 30) != 1) {
                Require(MAPI_E_NOT_FOUND, "the message");
            }
        }
    });
}

void FindByEntryId(benchmark::State& state) {
    constexpr std::size_t kFew = 100;
    constexpr std::size_t kRounds = 200;
    const ComPtr<IMAPITable> many = TableOf(kRows);
    const ComPtr<IMAPITable> few = TableOf(kFew);
    double inMany = 0;
    double inFew = 0;
    for (auto _ : state) {
        inMany += SecondsToFind(*many, kRows, kRounds, PR_ENTRYID);
        inFew += SecondsToFind(*few, kFew, kRounds, PR_ENTRYID);
    }
    state.counters["100000_rows_over_100"] = inMany / inFew;
    state.counters["without_index_over_with"] =
        SecondsToFind(*many, kRows, 1, kUnindexed)
        * (static_cast<double>(kRounds) * static_cast<double>(state.iterations())) / inMany;
}
BENCHMARK(FindByEntryId)->Unit(benchmark::kMillisecond);

// The rows of a window of time, by its first and its last, in a table that is open; over counting them in a scan.
void CountWindow(benchmark::State& state) {
    const ComPtr<IMAPITable> table = TableOf(kRows);
    const auto plain = Messages(kRows);
    Require(table->SortTable(kByTime, 0), "SortTable");
    ReadPage(*table, 1);
    SPropValue from = TimeValue(300'000ULL * 10'000'000U);
    SPropValue to = TimeValue(600'000ULL * 10'000'000U);
    SRestriction bounds[2] = {EqualTo(PR_LAST_MODIFICATION_TIME, from), EqualTo(PR_LAST_MODIFICATION_TIME, to)};
    bounds[0].res.resProperty.relop = RELOP_GE;
    bounds[1].res.resProperty.relop = RELOP_LT;
    SRestriction window{};
    window.rt = RES_AND;
    window.res.resAnd = {2, bounds};
    double count = 0;
    for (auto _ : state) {
        count += Timed([&] {
            Require(table->FindRow(&window, BOOKMARK_BEGINNING, 0), "FindRow");
            Require(table->FindRow(&window, BOOKMARK_END, DIR_BACKWARD), "FindRow");
        });
    }
    const double scan = PlainScan(*plain, PROP_ID(PR_LAST_MODIFICATION_TIME));
    state.counters["plain_scan_over_count"] = scan * static_cast<double>(state.iterations()) / count;
}
BENCHMARK(CountWindow);

}  // namespace
