// A table: rows of typed columns. [MS-PST] 2.3.4. Columns and the row index are loaded at opening, eight bytes a row;
// cells are read when they are asked for. One thread at a time.
#pragma once

#include "localmapi/base/Result.h"
#include "localmapi/pst/ltp/Heap.h"
#include "localmapi/pst/ltp/PropertyContext.h"
#include "localmapi/pst/ltp/PropertyType.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace localmapi::pst {

class TableContext {
public:
    struct Column {
        std::uint16_t id;
        PropertyType type;
        std::uint16_t offset;  // of its cells in a row
        std::uint8_t size;     // of a cell
        std::uint8_t bit;      // in a row's existence bitmap
    };

    // The table of `node`; `owner` as for Heap. Corrupt when the node holds no table. Columns that cannot be are
    // reported and left out. The database outlives the table.
    static Result<TableContext> Open(Database& database, const NodeEntry& node, NodeId owner);

    // In the order in which they are stored; ids may repeat with different types in sloppily written files.
    std::span<const Column> Columns() const noexcept { return m_columns; }

    // Null when there is none. The first, if there are several.
    const Column* Find(std::uint16_t id) const noexcept;

    // Rows in the order of their ids. An id is the node of the row's object in tables of folders, messages and
    // attachments, and a plain number in others.
    std::size_t RowCount() const noexcept { return m_rows.size(); }
    std::uint32_t RowId(std::size_t row) const noexcept { return m_rows[row].id; }

    // False when rows may be missing, or their ids be wrong, because part of the table could not be read or fails its
    // CRC.
    bool IsComplete() const noexcept { return m_isComplete; }

    // The stored bytes of a row, for Cell. Corrupt or ReadFailed.
    Result<HeldBytes> ReadRow(std::size_t row);

    // The value of a row in a column. NotFound when the row has none there.
    Result<PropertyValue> Cell(const HeldBytes& row, const Column& column);
    Result<PropertyValue> Cell(std::size_t row, std::uint16_t id);

private:
    struct Row {
        std::uint32_t id;
        std::uint32_t number;  // of its cells in the matrix
    };

    explicit TableContext(Heap heap) : m_heap(std::move(heap)) {}
    Status LoadColumns(ByteView info);
    Status OpenMatrix(std::uint32_t heapOrNodeId);
    Status LoadIndex(HeapId index);
    void LoadRowsFromMatrix();
    std::uint64_t MatrixRows();
    Result<HeldBytes> ReadMatrixRow(std::uint32_t number);

    Heap m_heap;
    std::vector<Column> m_columns;
    std::uint32_t m_rowSize = 0;
    std::uint32_t m_bitmapAt = 0;
    HeldBytes m_smallMatrix;  // rows of a table that fits into its heap, else
    DataStream m_matrix;      // rows in blocks, none across two
    std::uint32_t m_rowsPerBlock = 0;
    std::vector<Row> m_rows;  // by id
    bool m_isComplete = true;
};

}  // namespace localmapi::pst
