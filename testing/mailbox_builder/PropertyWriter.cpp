#include "testing/mailbox_builder/PropertyWriter.h"

#include "localmapi/base/Format.h"
#include "testing/mailbox_builder/ByteWriter.h"

#include <algorithm>
#include <utility>

namespace mailbox_builder {

namespace {

// What a property's record, and a table's cell, hold of a value: itself when it is small, else an id.
constexpr unsigned kInRecord = 4;
constexpr unsigned kInCell = 8;

// Of a table: [MS-PST] 2.3.4.
constexpr std::uint8_t kTableType = 0x7C;
constexpr std::uint32_t kRowId = 0x67F2'0003;
constexpr std::uint32_t kRowVersion = 0x67F3'0003;
constexpr std::size_t kInfoHeader = 22;
constexpr std::size_t kColumnSize = 8;
constexpr std::size_t kMostColumns = 255;

constexpr std::uint16_t IdOf(std::uint32_t tag) noexcept {
    return static_cast<std::uint16_t>(tag >> 16);
}
constexpr std::uint16_t TypeOf(std::uint32_t tag) noexcept {
    return static_cast<std::uint16_t>(tag);
}

constexpr bool IsText(std::uint16_t type) noexcept {
    return (type & ~kMultiple) == kString8 || (type & ~kMultiple) == kUnicode;
}

unsigned CellSize(std::uint16_t type) noexcept {
    const unsigned size = FixedSize(type);
    return size > 0 && size <= kInCell ? size : 4;
}

// The small number that a value is.
std::uint32_t NumberOf(const StoredValue& value) {
    const ByteView bytes(std::get<Bytes>(value));
    return static_cast<std::uint32_t>(bytes.Number(0, static_cast<unsigned>(bytes.Size())));
}

}  // namespace

Status PropertyList::AddAll(const Properties& properties, NameMap& names) {
    for (const Property& property : properties.All()) {
        const std::uint16_t type = TypeOf(property.tag);
        if (!Suits(type, property.value)) {
            return Error{ErrorCode::Unsupported,
                         "the property " + localmapi::Hex(property.tag) + " has a value of another type than its own"};
        }
        std::uint16_t id = IdOf(property.tag);
        if (property.name) {
            VX_TRY_ASSIGN(id, names.IdOf(*property.name));
        }
        m_items.push_back({id, type, &property.value});
    }
    std::sort(m_items.begin(), m_items.end(), [](const Item& a, const Item& b) { return a.id < b.id; });
    const auto twin =
        std::adjacent_find(m_items.begin(), m_items.end(), [](const Item& a, const Item& b) { return a.id == b.id; });
    if (twin != m_items.end() || (!m_items.empty() && m_items.front().id == 0)) {
        return Error{ErrorCode::Unsupported, "an object has the property "
                                                 + localmapi::Hex(twin != m_items.end() ? twin->id : 0)
                                                 + " twice, or one without an id"};
    }
    return {};
}

void PropertyList::Set(std::uint32_t tag, Value value) {
    const Item item{IdOf(tag), TypeOf(tag), &m_own.emplace_back(std::move(value))};
    const auto place = std::lower_bound(m_items.begin(), m_items.end(), item,
                                        [](const Item& a, const Item& b) { return a.id < b.id; });
    if (place != m_items.end() && place->id == item.id) {
        *place = item;
    } else {
        m_items.insert(place, item);
    }
}

void PropertyList::Default(std::uint32_t tag, Value value) {
    if (Find(IdOf(tag)) == nullptr) {
        Set(tag, std::move(value));
    }
}

const PropertyList::Item* PropertyList::Find(std::uint16_t id) const noexcept {
    const auto place = std::lower_bound(m_items.begin(), m_items.end(), id,
                                        [](const Item& item, std::uint16_t wanted) { return item.id < wanted; });
    return place != m_items.end() && place->id == id ? &*place : nullptr;
}

std::int32_t PropertyList::Long(std::uint16_t id, std::int32_t otherwise) const noexcept {
    const Item* item = Find(id);
    const auto* number = item != nullptr ? std::get_if<std::int32_t>(item->value) : nullptr;
    return number != nullptr ? *number : otherwise;
}

Result<NodeData> WriteProperties(DatabaseWriter& database, const PropertyList& properties, const TextRules& rules,
                                 std::span<const NodeEntry> subnodes, const std::optional<ObjectProperty>& object) {
    HeapWriter heap(database, HeapUse::Properties);
    VX_TRY_ASSIGN(HeapTreeWriter records, HeapTreeWriter::Begin(heap, 2, 6));
    for (const NodeEntry& node : subnodes) {
        heap.AddSubnode(node.id, {node.data, node.subnodes});
    }
    const auto add = [&](std::uint16_t id, std::uint16_t type, std::uint32_t value) {
        ByteWriter record;
        record.U16(id).U16(type).U32(value);
        return records.Add(record.View());
    };
    std::optional<ObjectProperty> pending = object;
    const auto addObject = [&]() -> Status {
        VX_TRY_ASSIGN(const std::uint32_t item,
                      heap.Add(ByteWriter().U32(pending->node.value).U32(pending->size).Take()));
        const std::uint32_t tag = std::exchange(pending, std::nullopt)->tag;
        return add(IdOf(tag), TypeOf(tag), item);
    };
    for (const PropertyList::Item& item : properties.All()) {
        if (pending && IdOf(pending->tag) <= item.id) {
            VX_TRY(addObject());
        }
        const std::uint16_t type = rules.StoredType(item.type);
        const StoredValue value = ToStored(type, *item.value, rules);
        const unsigned size = FixedSize(type);
        if (size > 0 && size <= kInRecord) {
            VX_TRY(add(item.id, type, NumberOf(value)));
        } else {
            VX_TRY_ASSIGN(const std::uint32_t place, heap.AddValue(value));
            VX_TRY(add(item.id, type, place));
        }
    }
    if (pending) {
        VX_TRY(addObject());
    }
    VX_TRY(records.Finish());
    return heap.Finish(records.Id());
}

Result<std::unique_ptr<TableWriter>> TableWriter::Begin(DatabaseWriter& database, bool isAnsi,
                                                        std::span<const std::uint32_t> columns) {
    std::unique_ptr<TableWriter> table(new TableWriter(database, HeapUse::Table));
    table->LayOut(isAnsi, columns);
    if (table->m_columns.size() > kMostColumns) {
        return Error{ErrorCode::Unsupported, "a table has more than 255 columns"};
    }
    const FileForm& form = database.TheForm();
    table->m_rowNumberWidth = form.rowNumberWidth;
    table->m_rowsPerBlock = form.fullBlock / table->m_ends[3];
    VX_TRY_ASSIGN(table->m_index, HeapTreeWriter::Begin(table->m_heap, 4, form.rowNumberWidth));
    VX_TRY_ASSIGN(table->m_info, table->m_heap.Reserve(kInfoHeader + kColumnSize * table->m_columns.size()));
    return table;
}

// Cells stand in groups of falling size, those of a row's id and version first; then a bit a column.
void TableWriter::LayOut(bool isAnsi, std::span<const std::uint32_t> columns) {
    const TextRules rules{isAnsi};
    std::vector<std::uint32_t> tags = {kRowId, kRowVersion};
    for (const std::uint32_t tag : columns) {
        tags.push_back((tag & 0xFFFF0000) | rules.StoredType(TypeOf(tag)));
    }
    std::sort(tags.begin() + 2, tags.end());
    tags.erase(std::unique(tags.begin() + 2, tags.end()), tags.end());
    std::size_t end = 0;
    for (unsigned group = 0; group < 3; ++group) {
        for (std::size_t i = 0; i < tags.size(); ++i) {
            const unsigned size = CellSize(TypeOf(tags[i]));
            if ((size >= 4 ? 0U : size == 2 ? 1U : 2U) == group) {
                m_columns.push_back({tags[i], static_cast<std::uint16_t>(end), static_cast<std::uint8_t>(size),
                                     static_cast<std::uint8_t>(i)});
                end += size;
            }
        }
        m_ends[group] = static_cast<std::uint16_t>(end);
    }
    m_ends[3] = static_cast<std::uint16_t>(end + (tags.size() + 7) / 8);
    std::sort(m_columns.begin(), m_columns.end(), [](const Column& a, const Column& b) { return a.tag < b.tag; });
}

Status TableWriter::Fill(Bytes& row, const Column& column, const PropertyList::Item& item, const TextRules& rules) {
    const std::uint16_t type = TypeOf(column.tag);
    if (!Suits(type, *item.value) || (rules.StoredType(item.type) != type && !IsText(type))) {
        return {};
    }
    const StoredValue value = ToStored(type, *item.value, rules);
    if (FixedSize(type) == column.size) {
        localmapi::CopyInto(std::span(row).subspan(column.offset), std::get<Bytes>(value));
    } else {
        VX_TRY_ASSIGN(const std::uint32_t place, m_heap.AddValue(value));
        PutNumber(row, column.offset, place, 4);
    }
    row[m_ends[2] + column.bit / 8U] |= static_cast<std::byte>(0x80U >> (column.bit % 8U));
    return {};
}

Status TableWriter::Add(std::uint32_t id, const PropertyList& cells, const TextRules& rules) {
    if (m_rowNumberWidth == 2 && m_rowCount > 0xFFFF) {
        return Error{ErrorCode::TooLarge, "a table of this form of the file has room for 65,536 rows"};
    }
    PropertyList own;
    own.Set(kRowId, static_cast<std::int32_t>(id));
    own.Set(kRowVersion, static_cast<std::int32_t>(m_rowCount + 1));
    Bytes row(m_ends[3]);
    for (const Column& column : m_columns) {
        const PropertyList& from = column.tag == kRowId || column.tag == kRowVersion ? own : cells;
        if (const PropertyList::Item* item = from.Find(IdOf(column.tag))) {
            VX_TRY(Fill(row, column, *item, rules));
        }
    }
    // All blocks but the last are full to their end, and no row lies in two.
    if (m_rows.size() / row.size() == m_rowsPerBlock) {
        m_rows.resize(m_heap.Database().TheForm().fullBlock);
        VX_TRY_ASSIGN(const BlockId block, m_heap.Database().WriteBlock(std::exchange(m_rows, {})));
        m_blocks.push_back(block);
    }
    m_rows.insert(m_rows.end(), row.begin(), row.end());
    ByteWriter record;
    record.U32(id).Number(m_rowCount++, static_cast<unsigned>(m_rowNumberWidth));
    return m_index->Add(record.View());
}

// Few rows are an item of the heap, more a sub-node.
Result<std::uint32_t> TableWriter::WriteRows() {
    if (m_blocks.empty() && m_rows.size() <= HeapWriter::kLongestItem) {
        return m_heap.Add(m_rows);
    }
    DatabaseWriter& database = m_heap.Database();
    const std::uint64_t total = std::uint64_t{m_blocks.size()} * database.TheForm().fullBlock + m_rows.size();
    VX_TRY_ASSIGN(const BlockId last, database.WriteBlock(std::exchange(m_rows, {})));
    m_blocks.push_back(last);
    VX_TRY_ASSIGN(const BlockId tree, database.WriteTree(m_blocks, total));
    return m_heap.AddValueNode(tree);
}

Result<NodeData> TableWriter::Finish() {
    VX_TRY_ASSIGN(const std::uint32_t rows, WriteRows());
    VX_TRY(m_index->Finish());
    ByteWriter info;
    info.U8(kTableType).U8(m_columns.size());
    for (const std::uint16_t end : m_ends) {
        info.U16(end);
    }
    info.U32(m_index->Id()).U32(rows).U32(0);
    for (const Column& column : m_columns) {
        info.U32(column.tag).U16(column.offset).U8(column.size).U8(column.bit);
    }
    m_heap.Replace(m_info, info.View());
    return m_heap.Finish(m_info);
}

}  // namespace mailbox_builder
