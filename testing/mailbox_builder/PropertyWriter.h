// Writes objects' properties and tables: [MS-PST] 2.3.3, 2.3.4. One thread at a time.
#pragma once

#include "testing/mailbox_builder/HeapWriter.h"
#include "testing/mailbox_builder/NameMap.h"
#include "testing/mailbox_builder/ValueBytes.h"

#include <cstdint>
#include <deque>
#include <optional>
#include <span>
#include <vector>

namespace mailbox_builder {

// The properties of one object as a file holds them: sorted by id, names resolved. Values are borrowed from where they
// were given.
class PropertyList {
public:
    struct Item {
        std::uint16_t id;
        std::uint16_t type;
        const Value* value;
    };

    // Unsupported when a value does not suit its type or the id is not one of a property, or is given twice; as
    // NameMap::IdOf.
    Status AddAll(const Properties& properties, NameMap& names);

    // One more, held here; in place of one with its id, or only where there is none.
    void Set(std::uint32_t tag, Value value);
    void Default(std::uint32_t tag, Value value);

    // Null when there is none.
    const Item* Find(std::uint16_t id) const noexcept;

    // A number among them, or `otherwise`.
    std::int32_t Long(std::uint16_t id, std::int32_t otherwise) const noexcept;

    std::span<const Item> All() const noexcept { return m_items; }

private:
    std::vector<Item> m_items;
    std::deque<Value> m_own;
};

// Where an object property leads.
struct ObjectProperty {
    std::uint32_t tag;
    NodeId node;
    std::uint64_t size;
};

// A node that holds properties. `subnodes` are those that the object has beside the ones of long values: its tables and
// attachments.
Result<NodeData> WriteProperties(DatabaseWriter& database, const PropertyList& properties, const TextRules& rules,
                                 std::span<const NodeEntry> subnodes = {},
                                 const std::optional<ObjectProperty>& object = std::nullopt);

// Writes a table row by row. Rows are gathered to blocks, which are written when they are full.
class TableWriter {
public:
    // Columns are tags in any order; those of a row's id and version are added. `database` is borrowed and outlives the
    // table.
    static Result<std::unique_ptr<TableWriter>> Begin(DatabaseWriter& database, bool isAnsi,
                                                      std::span<const std::uint32_t> columns);

    // Ids ascend from row to row. The columns take what `cells` has for them. TooLarge when the form of the file can
    // number no more rows.
    Status Add(std::uint32_t id, const PropertyList& cells, const TextRules& rules);

    std::uint32_t RowCount() const noexcept { return m_rowCount; }

    Result<NodeData> Finish();

private:
    struct Column {
        std::uint32_t tag;
        std::uint16_t offset;
        std::uint8_t size;
        std::uint8_t bit;
    };
    TableWriter(DatabaseWriter& database, HeapUse use) : m_heap(database, use) {}
    void LayOut(bool isAnsi, std::span<const std::uint32_t> columns);
    Status Fill(Bytes& row, const Column& column, const PropertyList::Item& item, const TextRules& rules);
    Result<std::uint32_t> WriteRows();

    HeapWriter m_heap;
    std::optional<HeapTreeWriter> m_index;
    std::uint32_t m_info = 0;  // the item that describes the table
    std::vector<Column> m_columns;
    std::uint16_t m_ends[4] = {};  // of the cells of eight and four bytes, of two, of one, of the row
    std::size_t m_rowsPerBlock = 0;
    std::uint32_t m_rowCount = 0;
    std::size_t m_rowNumberWidth;
    Bytes m_rows;                   // of the block in hand
    std::vector<BlockId> m_blocks;  // of rows
};

}  // namespace mailbox_builder
