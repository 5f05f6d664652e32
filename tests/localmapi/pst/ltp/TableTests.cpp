// Tables: rows in heaps and in blocks, cells of every kind, and what damage does to them.
#include "localmapi/pst/ltp/TableContext.h"
#include "localmapi/pst/ltp/Values.h"
#include "tests/localmapi/pst/support/HeapBuilder.h"
#include "tests/localmapi/pst/support/Opened.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace localmapi::testing {
namespace {

using pst::NodeId;
using pst::PropertyValue;
using pst::TableContext;

constexpr std::uint32_t kNode = 0x60E;
constexpr std::uint32_t kSubject = 0x0037001F;
constexpr std::uint32_t kSize = 0x0E080003;
constexpr std::uint32_t kTime = 0x0E060040;
constexpr std::uint32_t kShort = 0x10020002;
constexpr std::uint32_t kFlag = 0x0057000B;
constexpr std::uint32_t kGuid = 0x10030048;
constexpr std::uint32_t kList = 0x10041003;

Result<TableContext> OpenTable(Opened& file) {
    return TableContext::Open(*file, file.Node(kNode), NodeId{kNode});
}

std::uint32_t IdOfRow(std::uint32_t number) {
    return 0x200004 + number * 0x20;
}

// Rows are stored in another order than that of their ids. Every third has no subject.
std::vector<Row> SomeRows(std::uint32_t count) {
    std::vector<Row> rows;
    for (std::uint32_t i = 0; i < count; ++i) {
        const std::uint32_t number = (i * 7 + 3) % count;
        Row row{IdOfRow(number), {{kSize, Number32(number)}}};
        if (number % 3 != 0) {
            row.cells.push_back({kSubject, Utf16("row " + std::to_string(number))});
        }
        row.cells.push_back({kFlag, ByteWriter().U8(number % 2).Take()});
        row.cells.push_back({kTime, ByteWriter().U64(number * 1'000'000'000'007ULL).Take()});
        row.cells.push_back({kShort, ByteWriter().U16(number).Take()});
        if (number == 5) {
            row.cells.push_back({kGuid, Pattern(16)});
            row.cells.push_back({kList, Pattern(40)});
        }
        rows.push_back(row);
    }
    return rows;
}
const std::vector<std::uint32_t> kColumns = {kSubject, kFlag, kSize, kTime, kShort, kGuid, kList};

std::optional<std::int64_t> NumberIn(TableContext& table, std::size_t row, std::uint32_t tag) {
    Result<PropertyValue> cell = table.Cell(row, static_cast<std::uint16_t>(tag >> 16));
    return cell ? pst::Integer(*cell) : std::nullopt;
}

TEST(TableContext, GivesRowsAndCellsFromAHeapAndFromBlocks) {
    for (const Form* form : kForms) {
        for (const std::uint32_t count : {0U, 1U, 20U, 2000U}) {
            SCOPED_TRACE(std::string(form->name) + ", rows: " + std::to_string(count));
            ImageBuilder image(*form, pst::Encoding::Permute);
            const NodeData node = AddTable(image, kColumns, SomeRows(count));
            image.AddNode(kNode, node.data, node.subnodes);
            Opened file(image.Build());
            auto table = OpenTable(file);
            ASSERT_TRUE(table) << table.Failure().text;
            ASSERT_EQ(table->RowCount(), count);
            EXPECT_TRUE(table->IsComplete());
            EXPECT_EQ(table->Columns().size(), kColumns.size() + 2);
            for (std::uint32_t row = 0; row < count; ++row) {
                ASSERT_EQ(table->RowId(row), IdOfRow(row));
                ASSERT_EQ(NumberIn(*table, row, kSize), row);
                ASSERT_EQ(NumberIn(*table, row, kFlag), row % 2);
                ASSERT_EQ(NumberIn(*table, row, kTime), row * 1'000'000'000'007LL);
                ASSERT_EQ(NumberIn(*table, row, kShort), static_cast<std::int16_t>(row));
                auto subject = table->Cell(row, kSubject >> 16);
                ASSERT_EQ(subject.IsNotFound(), row % 3 == 0);
                ASSERT_TRUE(!subject || *subject->bytes.ReadAll() == Utf16("row " + std::to_string(row)));
                ASSERT_EQ(static_cast<bool>(table->Cell(row, kGuid >> 16)), row == 5);
            }
            if (count > 5) {
                EXPECT_EQ(*table->Cell(5, kGuid >> 16)->bytes.ReadAll(), Pattern(16));
                EXPECT_EQ(*table->Cell(5, kList >> 16)->bytes.ReadAll(), Pattern(40));
            }
            EXPECT_TRUE(table->Columns().empty() || !table->Cell(0, 0x7777) || count == 0);
            EXPECT_TRUE(file.sink.problems.empty()) << file.sink.problems[0];
        }
    }
}

// Builds a table of 10 rows by hand from its root item, its index and its rows, each of which a test may change.
struct RawTable {
    Bytes info = ByteWriter()
                     .U8(0x7C)
                     .U8(3)
                     .U16(12)
                     .U16(12)
                     .U16(12)
                     .U16(13)
                     .U32(0)
                     .U32(0)
                     .U32(0)
                     .U32(0x67F20003)
                     .U16(0)
                     .U8(4)
                     .U8(0)
                     .U32(0x67F30003)
                     .U16(4)
                     .U8(4)
                     .U8(1)
                     .U32(kSize)
                     .U16(8)
                     .U8(4)
                     .U8(2)
                     .Take();
    HeapBuilder::Records index;
    Bytes rows;
    unsigned keySize = 4, dataSize = 4;
    bool ownIds = false;  // of index and rows, set by the test

    RawTable() {
        for (std::uint32_t i = 0; i < 10; ++i) {
            index.emplace_back(Number32(IdOfRow(i)), Number32(i));
            rows.insert(rows.end(), 13, std::byte{});
            Poke(rows, std::size_t{i} * 13, IdOfRow(i), 4);
            Poke(rows, std::size_t{i} * 13 + 8, i, 4);
            rows[std::size_t{i} * 13 + 12] = std::byte{0xE0};
        }
    }

    void AddTo(ImageBuilder& image) {
        HeapBuilder heap(image, 0x7C);
        const std::uint32_t rowsId = heap.Add(rows);
        const std::uint32_t indexId = heap.AddTree(keySize, dataSize, index);
        if (!ownIds) {
            Poke(info, 10, indexId, 4);
            Poke(info, 14, rowsId, 4);
        }
        const NodeData node = heap.Finish(heap.Add(info));
        image.AddNode(kNode, node.data, node.subnodes);
    }
};

TEST(TableContext, GivesWhatIsLeftOfADamagedTable) {
    struct Case {
        const char* name;
        std::function<void(RawTable&)> damage;
        bool opens;
        std::size_t rows;
        std::size_t cells;  // rows with the right size in them
        bool isComplete;
    };
    const Case cases[] = {
        {"sound", [](RawTable&) {}, true, 10, 10, true},
        {"type", [](RawTable& t) { t.info[0] = std::byte{0x7D}; }, false, 0, 0, false},
        {"columns past the end", [](RawTable& t) { t.info[1] = std::byte{4}; }, false, 0, 0, false},
        {"groups backwards", [](RawTable& t) { Poke(t.info, 2, 13, 2); }, false, 0, 0, false},
        {"row of no size", [](RawTable& t) { Poke(t.info, 8, 0, 2); }, false, 0, 0, false},
        {"cell outside the row", [](RawTable& t) { Poke(t.info, 22 + 16 + 4, 10, 2); }, true, 10, 0, true},
        {"bit outside the bitmap", [](RawTable& t) { t.info[22 + 16 + 7] = std::byte{8}; }, true, 10, 0, true},
        {"cell too small", [](RawTable& t) { t.info[22 + 16 + 6] = std::byte{2}; }, true, 10, 0, true},
        {"index missing",
         [](RawTable& t) {
             t.ownIds = true;
             Poke(t.info, 14, 0x20, 4);
             Poke(t.info, 10, 0x4000, 4);
         },
         true, 10, 10, false},
        {"index of other sizes",
         [](RawTable& t) {
             t.dataSize = 3;
             for (auto& r : t.index) {
                 r.second.resize(3);
             }
         },
         true, 10, 10, false},
        {"index of two bytes",
         [](RawTable& t) {
             t.dataSize = 2;
             for (auto& r : t.index) {
                 r.second.resize(2);
             }
         },
         true, 10, 10, true},
        {"index and rows missing",
         [](RawTable& t) {
             t.ownIds = true;
             Poke(t.info, 10, 0x4000, 4);
         },
         false, 0, 0, false},
        {"rows missing",
         [](RawTable& t) {
             t.ownIds = true;
             Poke(t.info, 10, 0x40 + 0x20, 4);
             Poke(t.info, 14, 0x801F, 4);
         },
         true, 10, 0, false},
        {"row number too high", [](RawTable& t) { t.index[4].second = Number32(0xFFFFFFFF); }, true, 10, 9, false},
        {"cells of another row", [](RawTable& t) { t.index[4].second = Number32(5); }, true, 10, 9, true},
        {"rows cut short", [](RawTable& t) { t.rows.resize(7 * 13 + 5); }, true, 10, 7, false},
    };
    for (const Case& one : cases) {
        SCOPED_TRACE(one.name);
        RawTable raw;
        one.damage(raw);
        ImageBuilder image(kUnicode);
        raw.AddTo(image);
        Opened file(image.Build());
        auto table = OpenTable(file);
        ASSERT_EQ(static_cast<bool>(table), one.opens);
        if (!table) {
            EXPECT_EQ(table.Failure().code, ErrorCode::Corrupt);
            continue;
        }
        EXPECT_EQ(table->RowCount(), one.rows);
        EXPECT_EQ(table->IsComplete(), one.isComplete);
        std::size_t cells = 0;
        for (std::size_t row = 0; row < table->RowCount(); ++row) {
            EXPECT_EQ(table->RowId(row), IdOfRow(static_cast<std::uint32_t>(row)));
            cells += NumberIn(*table, row, kSize) == static_cast<std::int64_t>(row) ? 1 : 0;
        }
        EXPECT_EQ(cells, one.cells);
    }
}

// One leaf of the row index is lost: its rows are found in the matrix.
TEST(TableContext, FindsRowsThatItsIndexLost) {
    ImageBuilder image(kUnicode);
    const NodeData node = AddTable(image, kColumns, SomeRows(500), {.rowsInHeap = 20, .indexPerItem = 100});
    image.AddNode(kNode, node.data, node.subnodes);
    Bytes bytes = image.Build();
    // The index's first item is the only one that holds the first id and, 100 entries on, the 100th.
    const Bytes first = ByteWriter().U32(IdOfRow(0)).Take();
    std::size_t damaged = 0;
    for (std::size_t at = 0; at + 20 < bytes.size(); ++at) {
        // An index above the records: key, id of the item below, next key.
        if (ByteView(bytes).U32(at) == IdOfRow(0) && ByteView(bytes).U32(at + 8) == IdOfRow(100)
            && ByteView(bytes).U32(at + 16) == IdOfRow(200)) {
            Poke(bytes, at + 12, 0xFFE0, 4);
            ++damaged;
        }
    }
    ASSERT_EQ(damaged, 1U);
    Opened file(bytes);
    auto table = OpenTable(file);
    ASSERT_TRUE(table);
    EXPECT_FALSE(table->IsComplete());
    ASSERT_EQ(table->RowCount(), 500U);
    for (std::uint32_t row = 0; row < 500; ++row) {
        ASSERT_EQ(table->RowId(row), IdOfRow(row));
        ASSERT_EQ(NumberIn(*table, row, kSize), row);
    }
}

}  // namespace
}  // namespace localmapi::testing
