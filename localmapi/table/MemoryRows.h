// Rows that are kept in memory: of the tables that no file has, such as those of profiles, services and stores. One
// thread at a time.
#pragma once

#include "localmapi/model/RowSource.h"
#include "localmapi/props/MapiMemory.h"

#include <span>
#include <string>
#include <unordered_map>
#include <vector>

namespace localmapi {

class MemoryRows final : public RowSource {
public:
    // `columns` is what a table shows before its user chooses; `codePage` is that of the 8-bit texts.
    explicit MemoryRows(std::vector<ULONG> columns, UINT codePage = 0);

    // Adds a row, of which deep copies are taken. Of two values with one id the first holds; values that are not valid,
    // and those of type PT_ERROR, are left out.
    void Add(std::span<const SPropValue> values);

    // Makes rows be found by a binary property: of those added so far and of those added later. Of two rows with the same
    // bytes the first is found.
    void Index(ULONG id);

    std::size_t Count() override { return m_rows.size(); }
    std::vector<ULONG> Columns() override { return m_columns; }
    Status Read(std::size_t row, ULONG id, ValueMemory& memory, SPropValue& value) override;
    UINT CodePage(std::size_t) override { return m_codePage; }
    bool IsIndexed(ULONG id) const override { return m_indexes.contains(id); }
    std::optional<std::size_t> Find(ULONG id, ByteView key) override;

private:
    using KeyIndex = std::unordered_map<std::string, std::size_t>;

    const SPropValue* ValueOf(std::size_t row, ULONG id) const noexcept;
    void Enter(KeyIndex& index, ULONG id, std::size_t row) const;

    std::vector<ULONG> m_columns;
    UINT m_codePage;
    Arena m_memory;
    std::vector<std::span<const SPropValue>> m_rows;  // in m_memory
    std::unordered_map<ULONG, KeyIndex> m_indexes;
};

}  // namespace localmapi
