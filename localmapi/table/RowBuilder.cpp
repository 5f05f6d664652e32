#include "localmapi/table/RowBuilder.h"

#include "localmapi/com/ComObject.h"
#include "localmapi/props/Values.h"
#include "mapi/MapiCodes.h"

namespace localmapi {

SPropValue RowBuilder::CellOf(std::size_t row, ULONG column) {
    SPropValue value{};
    if (PROP_TYPE(column) == PT_NULL) {
        value.ulPropTag = column;
        return value;
    }
    if (const Status read = m_source.Read(row, PROP_ID(column), m_memory, value); !read) {
        return ErrorValue(column, ResultOf(read.Failure().code));
    }
    if (!IsValid(value)) {
        return ErrorValue(column, MAPI_E_CORRUPT_DATA);
    }
    // A column of several values that asks for a row each is answered with all values in one.
    const ULONG asked = PROP_TYPE(column) & ~MV_INSTANCE;
    const ULONG type = GivenType(asked, PROP_TYPE(value.ulPropTag), m_wide);
    if (type == PT_NULL) {
        return ErrorValue(column, MAPI_E_NOT_FOUND);
    }
    if (type != PROP_TYPE(value.ulPropTag)) {
        // Only then: to know its page, a row may have to open the message that it stands for.
        ChangeWidth(value, type, m_source.CodePage(row), m_memory);
    }
    value.ulPropTag = PROP_TAG(type, PROP_ID(column));
    return value;
}

SRow RowBuilder::Build(std::size_t row, std::span<const ULONG> columns) {
    m_memory.Clear();
    m_cells.clear();
    std::size_t pointed = 0;
    for (const ULONG column : columns) {
        pointed += PointedSize(m_cells.emplace_back(CellOf(row, column)));
    }
    const std::size_t fixed = columns.size() * sizeof(SPropValue);
    MapiPointer<SPropValue> values = MakeRoot<SPropValue>(fixed + pointed);
    BlockMemory block(reinterpret_cast<std::byte*>(values.get()) + fixed, pointed);
    RootMemory more(values.get());
    for (std::size_t i = 0; i < m_cells.size(); ++i) {
        ValueMemory& memory = IsTree(m_cells[i]) ? static_cast<ValueMemory&>(more) : block;
        if (const HRESULT result = CopyValue(m_cells[i], memory, values.get()[i]); FAILED(result)) {
            values.get()[i] = ErrorValue(columns[i], result);
        }
    }
    return {0, static_cast<ULONG>(columns.size()), values.release()};
}

}  // namespace localmapi
