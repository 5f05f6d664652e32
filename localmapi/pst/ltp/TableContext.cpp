#include "localmapi/pst/ltp/TableContext.h"

#include "localmapi/pst/ltp/BTreeOnHeap.h"

#include <algorithm>
#include <limits>
#include <string>
#include <utility>

namespace localmapi::pst {

namespace {

// TCINFO, [MS-PST] 2.3.4.1: type, count of columns, four ends of cell groups, row index, rows, unused, columns.
constexpr std::uint8_t kTypeByte = 0x7C;
constexpr unsigned kColumnsAt = 22;
constexpr unsigned kColumnSize = 8;
constexpr unsigned kIndexKeySize = 4;

// Bytes that a cell takes at least: the value itself up to eight bytes, else the id of where it lies.
unsigned CellSize(PropertyType type) {
    const unsigned size = IsMultiple(type) ? 0 : FixedSize(type);
    return size > 0 && size <= 8 ? size : 4;
}

}  // namespace

Result<TableContext> TableContext::Open(Database& database, const NodeEntry& node, NodeId owner) {
    VX_TRY_ASSIGN(Heap heap, Heap::Open(database, node, owner));
    if (heap.ClientSignature() != static_cast<std::uint8_t>(Heap::Use::Table)) {
        return heap.Broken("is used for something else than a table (" + Hex(heap.ClientSignature()) + ")");
    }
    TableContext table(std::move(heap));
    VX_TRY_ASSIGN(const HeldBytes info, table.m_heap.Item(table.m_heap.UserRoot()));
    VX_TRY(table.LoadColumns(info.view));
    if (Status matrix = table.OpenMatrix(info.view.U32(14)); !matrix) {
        database.Problems().Report(matrix.Failure().text + "; the table's cells are lost");
        table.m_isComplete = false;
    }
    VX_TRY(table.LoadIndex(HeapId{info.view.U32(10)}));
    table.m_isComplete = table.m_isComplete && !table.m_heap.IsDoubtful();
    return table;
}

Status TableContext::LoadColumns(ByteView info) {
    const unsigned count = info.U8(1);
    if (info.U8(0) != kTypeByte || !info.Has(kColumnsAt, std::uint64_t{count} * kColumnSize)) {
        return m_heap.Broken("has no table in its root item");
    }
    m_bitmapAt = info.U16(6);
    m_rowSize = info.U16(8);
    if (info.U16(2) > info.U16(4) || info.U16(4) > m_bitmapAt || m_bitmapAt >= m_rowSize || m_bitmapAt < 4) {
        return m_heap.Broken("has a table whose rows are laid out impossibly");
    }
    const std::uint32_t bits = 8 * (m_rowSize - m_bitmapAt);
    for (unsigned i = 0; i < count; ++i) {
        const ByteView stored = info.Part(kColumnsAt + std::uint64_t{i} * kColumnSize, kColumnSize);
        const Column column{stored.U16(2), static_cast<PropertyType>(stored.U16(0)), stored.U16(4), stored.U8(6),
                            stored.U8(7)};
        if (!IsKnown(column.type) || column.size < CellSize(column.type)
            || !Inside(column.offset, column.size, m_bitmapAt) || column.bit >= bits) {
            m_heap.Owner().Problems().Report(
                m_heap.Broken("has a table with the impossible column " + Hex(stored.U32(0))).text
                + "; it is left out");
            continue;
        }
        m_columns.push_back(column);
    }
    return {};
}

const TableContext::Column* TableContext::Find(std::uint16_t id) const noexcept {
    const auto found =
        std::find_if(m_columns.begin(), m_columns.end(), [id](const Column& column) { return column.id == id; });
    return found != m_columns.end() ? &*found : nullptr;
}

Status TableContext::OpenMatrix(std::uint32_t heapOrNodeId) {
    std::uint64_t firstBlock = 0;
    if (!Heap::IsNodeId(heapOrNodeId)) {
        VX_TRY_ASSIGN(m_smallMatrix, m_heap.Item(HeapId{heapOrNodeId}));
        firstBlock = m_smallMatrix.view.Size();
    } else {
        VX_TRY_ASSIGN(m_matrix, m_heap.OpenSubnodeData(NodeId{heapOrNodeId}));
        VX_TRY_ASSIGN(const BufferHold first, m_matrix.ReadBlock(0));
        firstBlock = first->bytes.size();
    }
    m_rowsPerBlock = static_cast<std::uint32_t>(firstBlock / m_rowSize);
    return {};
}

// Rows that the matrix has room for.
std::uint64_t TableContext::MatrixRows() {
    if (m_smallMatrix.hold) {
        return m_rowsPerBlock;
    }
    if (m_matrix.BlockCount() == 0 || m_rowsPerBlock == 0) {
        return 0;
    }
    const std::uint32_t lastBlock = m_matrix.BlockCount() - 1;
    const Result<BufferHold> last = m_matrix.ReadBlock(lastBlock);
    const std::uint64_t inLast = last ? (*last)->bytes.size() / m_rowSize : m_rowsPerBlock;
    return std::uint64_t{lastBlock} * m_rowsPerBlock + std::min<std::uint64_t>(inLast, m_rowsPerBlock);
}

Status TableContext::LoadIndex(HeapId index) {
    const std::uint64_t matrixRows = MatrixRows();
    Result<BTreeOnHeap> tree = BTreeOnHeap::Open(m_heap, index);
    if (tree && (tree->KeySize() != kIndexKeySize || (tree->DataSize() != 2 && tree->DataSize() != 4))) {
        tree = m_heap.Broken("keeps its rows in a b-tree of other sizes than theirs");
    }
    if (!tree && matrixRows == 0) {
        return tree.TakeFailure();
    }
    if (!tree) {
        m_heap.Owner().Problems().Report(tree.Failure().text + "; the rows are taken as they lie");
        LoadRowsFromMatrix();
        return {};
    }
    const unsigned width = tree->DataSize();
    bool inMatrix = true;
    const bool whole = tree->ForEach(
        [&](ByteView key, ByteView data) {
            const Row row{key.U32(0), static_cast<std::uint32_t>(data.Number(0, width))};
            inMatrix = inMatrix && row.number < matrixRows;
            m_rows.push_back(row);
        },
        "rows are missing from the table");
    if (!inMatrix) {
        m_heap.Owner().Problems().Report(m_heap.Broken("names rows that the table does not have").text
                                         + "; their cells are lost");
    }
    m_isComplete = m_isComplete && whole && inMatrix;
    if (!whole) {
        LoadRowsFromMatrix();
    }
    m_rows.shrink_to_fit();
    std::stable_sort(m_rows.begin(), m_rows.end(), [](const Row& a, const Row& b) { return a.id < b.id; });
    return {};
}

// Takes the rows that the index does not have from the matrix itself, where every row carries its id.
void TableContext::LoadRowsFromMatrix() {
    m_isComplete = false;
    std::vector<bool> known(static_cast<std::size_t>(MatrixRows()));
    for (const Row& row : m_rows) {
        if (row.number < known.size()) {
            known[row.number] = true;
        }
    }
    for (std::uint32_t number = 0; number < known.size(); ++number) {
        if (const Result<HeldBytes> row = known[number] ? Result<HeldBytes>(HeldBytes{}) : ReadMatrixRow(number);
            row && row->view.U32(0) != 0) {
            m_rows.push_back(Row{row->view.U32(0), number});
        }
    }
    std::stable_sort(m_rows.begin(), m_rows.end(), [](const Row& a, const Row& b) { return a.id < b.id; });
}

Result<HeldBytes> TableContext::ReadMatrixRow(std::uint32_t number) {
    if (m_rowsPerBlock == 0) {
        return m_heap.Broken("has no cells for the rows of its table");
    }
    const std::uint64_t offset = std::uint64_t{number % m_rowsPerBlock} * m_rowSize;
    HeldBytes block = m_smallMatrix;
    if (!block.hold) {
        VX_TRY_ASSIGN(block.hold, m_matrix.ReadBlock(number / m_rowsPerBlock));
        block.view = block.hold->bytes;
    } else if (number >= m_rowsPerBlock) {
        block.view = {};
    }
    if (!block.view.Has(offset, m_rowSize)) {
        return m_heap.Broken("has no cells for row " + std::to_string(number) + " of its table");
    }
    return HeldBytes{std::move(block.hold), block.view.Part(offset, m_rowSize)};
}

Result<HeldBytes> TableContext::ReadRow(std::size_t row) {
    VX_TRY_ASSIGN(HeldBytes cells, ReadMatrixRow(m_rows[row].number));
    if (cells.view.U32(0) != m_rows[row].id) {
        return m_heap.Broken("has cells of another row where those of row " + Hex(m_rows[row].id) + " should be");
    }
    return cells;
}

Result<PropertyValue> TableContext::Cell(const HeldBytes& row, const Column& column) {
    const std::uint8_t exists = row.view.U8(m_bitmapAt + column.bit / 8U);
    if ((exists & (0x80U >> (column.bit % 8U))) == 0) {
        return Error{ErrorCode::NotFound, Name(m_heap.OwnerId()) + ": the row has no " + Hex(column.id)};
    }
    const unsigned size = CellSize(column.type);
    const ByteView cell = row.view.Part(column.offset, size);
    if (FixedSize(column.type) == size) {
        return PropertyValue{column.type, ValueStream(HeldBytes{row.hold, cell})};
    }
    VX_TRY_ASSIGN(ValueStream bytes, m_heap.OpenValue(cell.U32(0)));
    if (bytes.Size() < (IsMultiple(column.type) ? 0 : FixedSize(column.type))) {
        return m_heap.Broken("has a value of " + Hex(column.id) + " that is cut short");
    }
    return PropertyValue{column.type, std::move(bytes)};
}

Result<PropertyValue> TableContext::Cell(std::size_t row, std::uint16_t id) {
    const Column* column = Find(id);
    if (column == nullptr) {
        return Error{ErrorCode::NotFound, Name(m_heap.OwnerId()) + ": the table has no column " + Hex(id)};
    }
    VX_TRY_ASSIGN(const HeldBytes cells, ReadRow(row));
    return Cell(cells, *column);
}

}  // namespace localmapi::pst
