// Rows as MAPI hands them out, out of the cells of a source. One thread at a time.
#pragma once

#include "localmapi/model/RowSource.h"
#include "localmapi/props/MapiMemory.h"
#include "mapi/MapiTypes.h"

#include <cstddef>
#include <span>
#include <vector>

namespace localmapi {

class RowBuilder {
public:
    // `wide`: texts of columns without a type are wide. The source outlives the builder.
    RowBuilder(RowSource& rows, bool wide) noexcept : m_source(rows), m_wide(wide) {}

    // A row as one root block, with a value for each column in its order. A column of a text may be of either width, one
    // of type PT_UNSPECIFIED gets the stored type, and one of type PT_NULL stays empty. Instead of a value: PT_ERROR with
    // MAPI_E_NOT_FOUND where the row has none of the type, MAPI_E_NOT_ENOUGH_MEMORY where it is too large for a row, or
    // the failure of reading. `row.lpProps` belongs to the caller. Throws std::bad_alloc.
    SRow Build(std::size_t row, std::span<const ULONG> columns);

private:
    SPropValue CellOf(std::size_t row, ULONG column);

    RowSource& m_source;
    bool m_wide;
    Arena m_memory;                   // of one row
    std::vector<SPropValue> m_cells;  // of that row
};

}  // namespace localmapi
