#include "localmapi/table/MemoryRows.h"

#include "localmapi/props/Values.h"
#include "mapi/MapiCodes.h"

#include <algorithm>
#include <new>

namespace localmapi {

namespace {

std::string KeyOf(ByteView bytes) {
    return {reinterpret_cast<const char*>(bytes.Data()), bytes.Size()};
}

}  // namespace

MemoryRows::MemoryRows(std::vector<ULONG> columns, UINT codePage)
    : m_columns(std::move(columns)), m_codePage(codePage) {}

void MemoryRows::Add(std::span<const SPropValue> values) {
    auto* const copies = m_memory.Array<SPropValue>(values.size());
    std::size_t count = 0;
    for (const SPropValue& value : values) {
        if (PROP_TYPE(value.ulPropTag) != PT_ERROR && CopyValue(value, m_memory, copies[count]) == S_OK) {
            ++count;
        }
    }
    m_rows.emplace_back(copies, count);
    for (auto& [id, index] : m_indexes) {
        Enter(index, id, m_rows.size() - 1);
    }
}

void MemoryRows::Index(ULONG id) {
    KeyIndex& index = m_indexes[id];
    index.clear();
    for (std::size_t row = 0; row < m_rows.size(); ++row) {
        Enter(index, id, row);
    }
}

Status MemoryRows::Read(std::size_t row, ULONG id, ValueMemory& memory, SPropValue& value) {
    const SPropValue* const kept = ValueOf(row, id);
    if (kept == nullptr) {
        return Error{ErrorCode::NotFound, "not in the row"};
    }
    if (SizeOf(*kept) > kLargestCell) {
        return Error{ErrorCode::TooLarge, "the value is too large for a row"};
    }
    if (CopyValue(*kept, memory, value) != S_OK) {
        return Error{ErrorCode::Corrupt, "the value cannot be copied"};
    }
    return {};
}

std::optional<std::size_t> MemoryRows::Find(ULONG id, ByteView key) {
    const auto index = m_indexes.find(id);
    if (index == m_indexes.end()) {
        return std::nullopt;
    }
    const auto found = index->second.find(KeyOf(key));
    return found == index->second.end() ? std::nullopt : std::optional(found->second);
}

const SPropValue* MemoryRows::ValueOf(std::size_t row, ULONG id) const noexcept {
    const std::span<const SPropValue> values = m_rows[row];
    const auto found =
        std::ranges::find_if(values, [id](const SPropValue& value) { return PROP_ID(value.ulPropTag) == id; });
    return found == values.end() ? nullptr : &*found;
}

void MemoryRows::Enter(KeyIndex& index, ULONG id, std::size_t row) const {
    const SPropValue* const value = ValueOf(row, id);
    if (value != nullptr && PROP_TYPE(value->ulPropTag) == PT_BINARY) {
        index.emplace(KeyOf(BytesOf(value->Value.bin)), row);
    }
}

}  // namespace localmapi
