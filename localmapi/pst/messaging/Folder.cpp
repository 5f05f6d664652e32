#include "localmapi/pst/messaging/Folder.h"

#include "localmapi/pst/messaging/Message.h"
#include "localmapi/pst/messaging/PropertyIds.h"

#include <algorithm>
#include <string>
#include <unordered_set>
#include <utility>

namespace localmapi::pst {

namespace {

bool IsFolder(NodeId id) {
    return id.Type() == NodeType::Folder || id.Type() == NodeType::SearchFolder;
}

// What belongs into a table of this type.
bool Belongs(NodeId id, NodeType table) {
    switch (table) {
        case NodeType::HierarchyTable: return IsFolder(id);
        case NodeType::ContentsTable: return id.Type() == NodeType::Message;
        default: return id.Type() == NodeType::AssociatedMessage;
    }
}

}  // namespace

Result<PropertyValue> ItemList::Cell(std::size_t index, std::uint16_t id) {
    if (!m_table || m_rows[index].tableRow == kNoRow) {
        return Error{ErrorCode::NotFound, Name(m_rows[index].id) + ": there is no row for it in its folder's table"};
    }
    return m_table->Cell(m_rows[index].tableRow, id);
}

std::span<const TableContext::Column> ItemList::Columns() const noexcept {
    return m_table ? m_table->Columns() : std::span<const TableContext::Column>{};
}

Result<Folder> Folder::Open(Database& database, NodeId id, UINT codePage) {
    Folder folder(database, id, codePage);
    Result<NodeEntry> node = database.FindNode(id);
    if (!node) {
        if (id != kTopmost && !folder.HasTraces(id)) {
            return node.TakeFailure();
        }
        database.Problems().Report(node.Failure().text + "; the folder is read without its properties");
        return folder;
    }
    folder.m_parent = node->parent;
    Result<PropertyContext> properties = PropertyContext::Open(database, *node, id);
    if (properties) {
        folder.m_properties.emplace(*std::move(properties));
    } else {
        database.Problems().Report(properties.Failure().text + "; the folder is read without its properties");
    }
    return folder;
}

// True when the file has one of the tables of a folder of this id, or something that lies in it.
bool Folder::HasTraces(NodeId id) {
    return m_database->FindNode(id.Sibling(NodeType::HierarchyTable))
           || m_database->FindNode(id.Sibling(NodeType::ContentsTable))
           || std::binary_search(m_database->Parents().begin(), m_database->Parents().end(), id);
}

CStringW Folder::DisplayName() {
    return m_properties ? ReadText(*m_properties, IdOf(PR_DISPLAY_NAME), m_codePage) : CStringW{};
}

ItemList Folder::Folders(SearchFolders searchFolders) {
    ItemList list = ReadList(NodeType::HierarchyTable, "hierarchy");
    std::erase_if(list.m_rows, [&](const ItemList::Row& row) {
        if (row.id == m_id || (searchFolders == SearchFolders::Skip && row.id.Type() == NodeType::SearchFolder)) {
            return true;
        }
        const Result<NodeEntry> node = m_database->FindNode(row.id);
        if (node || HasTraces(row.id)) {
            return false;
        }
        m_database->Problems().Report(node.Failure().text + "; it is left out of the list of " + Name(m_id));
        return true;
    });
    return list;
}

ItemList Folder::Messages() {
    return ReadList(NodeType::ContentsTable, "contents");
}

ItemList Folder::AssociatedMessages() {
    return ReadList(NodeType::AssociatedTable, "associated contents");
}

ItemList Folder::ReadList(NodeType table, const char* name) {
    ItemList list;
    if (m_id.Type() == NodeType::SearchFolder) {
        return list;  // it holds nothing: what it shows lies elsewhere
    }
    const NodeId tableId = m_id.Sibling(table);
    const Result<NodeEntry> node = m_database->FindNode(tableId);
    Result<TableContext> opened =
        node ? TableContext::Open(*m_database, *node, tableId) : Result<TableContext>(Error(node.Failure()));
    std::string damage;
    if (!opened) {
        damage = opened.Failure().text;
    } else if (!opened->IsComplete()) {
        damage = Name(tableId) + " is not whole";
    }
    if (opened) {
        list.m_table.emplace(*std::move(opened));
        TakeRows(list, table, tableId);
    }
    if (!damage.empty()) {
        m_database->Problems().Report(Name(m_id) + ": the " + name + " table is damaged (" + damage
                                      + "); the list is made from the node b-tree");
        AddFromNodes(list, table);
    }
    return list;
}

void Folder::TakeRows(ItemList& list, NodeType table, NodeId tableId) const {
    for (std::size_t row = 0; row < list.m_table->RowCount(); ++row) {
        const NodeId id{list.m_table->RowId(row)};
        if (Belongs(id, table)) {
            list.m_rows.push_back(ItemList::Row{id, static_cast<std::uint32_t>(row)});
        } else {
            m_database->Problems().Report(Name(tableId) + ": row " + Hex(id.value)
                                          + " is of another kind than the table's; it is left out");
        }
    }
}

// Adds what the node b-tree knows to have this folder for its parent and the table did not have. Rows whose ids no
// node bears are what damage made of others: they go.
void Folder::AddFromNodes(ItemList& list, NodeType table) {
    std::erase_if(list.m_rows, [&](const ItemList::Row& row) {
        return !m_database->FindNode(row.id) && !(IsFolder(row.id) && HasTraces(row.id));
    });
    std::unordered_set<std::uint32_t> known;
    for (const ItemList::Row& row : list.m_rows) {
        known.insert(row.id.value);
    }
    m_database->ForEachNode(NodeId{}, [&](const NodeEntry& node) {
        if (node.parent == m_id && node.id != m_id && Belongs(node.id, table) && known.insert(node.id.value).second) {
            list.m_rows.push_back(ItemList::Row{node.id, ItemList::kNoRow});
        }
        return true;
    });
    std::sort(list.m_rows.begin(), list.m_rows.end(),
              [](const ItemList::Row& a, const ItemList::Row& b) { return a.id < b.id; });
    list.m_isRebuilt = true;
}

}  // namespace localmapi::pst
