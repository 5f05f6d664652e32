// Folders and their lists: [MS-PST] 2.4.4. A list comes from the folder's table or, where that is damaged, from the
// node b-tree, which knows every folder's and message's parent. One thread at a time; everything borrows from the
// store's database and must not outlive it.
#pragma once

#include "localmapi/base/Result.h"
#include "localmapi/pst/ltp/PropertyContext.h"
#include "localmapi/pst/ltp/TableContext.h"
#include "platform/WideText.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace localmapi::pst {

// The folders, messages or associated messages of a folder, eight bytes a row beside those of the table.
class ItemList {
public:
    std::size_t Count() const noexcept { return m_rows.size(); }
    NodeId Id(std::size_t index) const noexcept { return m_rows[index].id; }

    // True when the list was made from the node b-tree, wholly or in part.
    bool IsRebuilt() const noexcept { return m_isRebuilt; }

    // A cell of the table. NotFound when the table has no such column, the row nothing in it, or the item no row: then
    // the item's own properties are the place to look. Corrupt or ReadFailed.
    Result<PropertyValue> Cell(std::size_t index, std::uint16_t id);

    // The columns that cells can be had of; none when the table is lost.
    std::span<const TableContext::Column> Columns() const noexcept;

private:
    friend class Folder;
    static constexpr std::uint32_t kNoRow = UINT32_MAX;
    struct Row {
        NodeId id;
        std::uint32_t tableRow;
    };

    std::optional<TableContext> m_table;
    std::vector<Row> m_rows;
    bool m_isRebuilt = false;
};

enum class SearchFolders : std::uint8_t { Skip, Include };

class Folder {
public:
    // The topmost folder. Every file has it, even where nothing of it is left.
    static constexpr NodeId kTopmost{0x122};

    // The folder `id`. NotFound when the file knows neither it nor one of its tables nor anything in it. A folder whose
    // properties are lost is opened all the same: it has none then. The topmost folder is always there.
    static Result<Folder> Open(Database& database, NodeId id, UINT codePage);

    NodeId Id() const noexcept { return m_id; }

    // The folder that holds it; its own id for the topmost, 0 when that is lost.
    NodeId Parent() const noexcept { return m_parent; }

    // Null when they are lost.
    PropertyContext* Properties() noexcept { return m_properties ? &*m_properties : nullptr; }

    // Empty for the topmost folder.
    CStringW DisplayName();

    // The folders in this one. Those that the file does not hold are left out, and so is the folder itself. A search
    // folder holds nothing of its own: all of its lists are empty.
    ItemList Folders(SearchFolders searchFolders = SearchFolders::Skip);

    // The messages, and the hidden ones.
    ItemList Messages();
    ItemList AssociatedMessages();

private:
    Folder(Database& database, NodeId id, UINT codePage) : m_database(&database), m_id(id), m_codePage(codePage) {}

    bool HasTraces(NodeId id);
    ItemList ReadList(NodeType table, const char* name);
    void TakeRows(ItemList& list, NodeType table, NodeId tableId) const;
    void AddFromNodes(ItemList& list, NodeType table);

    Database* m_database;
    NodeId m_id;
    NodeId m_parent;
    UINT m_codePage;
    std::optional<PropertyContext> m_properties;
};

}  // namespace localmapi::pst
