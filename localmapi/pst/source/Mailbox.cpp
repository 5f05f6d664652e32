#include "localmapi/pst/source/Mailbox.h"

#include <algorithm>
#include <string>
#include <unordered_set>
#include <utility>

namespace localmapi::pst {

void Mailbox::Report(const Error& problem, std::string_view whatHappens) {
    Nodes().Problems().Report(problem.text + "; " + std::string(whatHappens));
}

PropertyNames& Mailbox::Names() {
    if (!m_names) {
        m_names.emplace();
        for (NamedId& named : m_store->LoadNames()) {
            m_names->Insert(named.id, std::move(named.name));
        }
    }
    return *m_names;
}

Bytes Mailbox::EntryIdOf(NodeId node) const {
    const Store::EntryId id = m_store->EntryIdOf(node);
    return {id.begin(), id.end()};
}

NodeId Mailbox::IpmSubtree() {
    if (!m_ipmSubtree) {
        m_ipmSubtree = m_store->Find(SpecialFolder::IpmSubtree).value_or(Store::kRootFolder);
    }
    return *m_ipmSubtree;
}

// Where the way up from a folder ends: at the topmost one, or at one whose own parent is lost. 0 when it goes in circles.
NodeId Mailbox::EndOfWayUp(NodeId folder) {
    for (unsigned depth = 0; depth <= Store::kDeepestFolder; ++depth) {
        const Result<NodeEntry> entry = Nodes().FindNode(folder);
        if (folder == Store::kRootFolder || !entry || !IsFolderNode(entry->parent)) {
            return folder;
        }
        folder = entry->parent;
    }
    return NodeId{};
}

NodeId Mailbox::ParentOf(NodeId node) {
    if (node == Store::kRootFolder) {
        return node;
    }
    const Result<NodeEntry> entry = Nodes().FindNode(node);
    if (!entry && !(IsFolderNode(node) && m_store->OpenFolder(node))) {
        return NodeId{};
    }
    const NodeId parent = entry ? entry->parent : NodeId{};
    const NodeId end = IsFolderNode(parent) ? EndOfWayUp(parent) : NodeId{};
    if (end == Store::kRootFolder) {
        return parent;
    }
    // Whoever climbs from here must arrive: through the visible tree, which lies in the topmost folder if in no other.
    return node == IpmSubtree() ? Store::kRootFolder : end != NodeId{} ? parent : IpmSubtree();
}

std::shared_ptr<ItemList> Mailbox::FindList(NodeId table) {
    const auto found = std::ranges::find(m_lists, table, &OpenList::table);
    if (found == m_lists.end()) {
        return nullptr;
    }
    std::rotate(m_lists.begin(), found, found + 1);
    return m_lists.front().items;
}

std::shared_ptr<ItemList> Mailbox::KeepList(NodeId table, ItemList items) {
    if (m_lists.size() >= kKeptLists) {
        m_lists.pop_back();
    }
    m_lists.insert(m_lists.begin(), {table, std::make_shared<ItemList>(std::move(items))});
    return m_lists.front().items;
}

std::shared_ptr<ItemList> Mailbox::MessagesOf(Folder& folder, NodeType table) {
    const NodeId node = folder.Id().Sibling(table);
    if (std::shared_ptr<ItemList> kept = FindList(node)) {
        return kept;
    }
    return KeepList(node, table == NodeType::AssociatedTable ? folder.AssociatedMessages() : folder.Messages());
}

Result<PropertyValue> Mailbox::CellOf(NodeId folder, NodeId item, std::uint16_t id) {
    const NodeType kind = IsFolderNode(item)                           ? NodeType::HierarchyTable
                          : item.Type() == NodeType::AssociatedMessage ? NodeType::AssociatedTable
                                                                       : NodeType::ContentsTable;
    const NodeId table = folder.Sibling(kind);
    std::shared_ptr<ItemList> items = FindList(table);
    if (items == nullptr) {
        VX_TRY_ASSIGN(Folder opened, m_store->OpenFolder(folder));
        items = kind == NodeType::HierarchyTable ? KeepList(table, opened.Folders(SearchFolders::Include))
                                                 : MessagesOf(opened, kind);
    }
    const auto place = PlaceIn(*items, item);
    return place ? items->Cell(*place, id)
                 : Result<PropertyValue>(Error{ErrorCode::NotFound, Name(folder) + ": " + Name(item) + " is no item"});
}

const std::vector<NodeId>& Mailbox::LostFolders() {
    static const std::vector<NodeId> kNone;
    if (m_lostFolders || Nodes().Problems().Count() == 0) {
        return m_lostFolders ? *m_lostFolders : kNone;
    }
    std::vector<NodeId> lost = m_store->LostFolders();
    if (!lost.empty()) {
        // Most of them are still listed, and so walked over, in the folders that held them.
        std::unordered_set<std::uint32_t> listed;
        Result<Folder> top = m_store->OpenFolder(Store::kRootFolder);
        const ItemList first = top ? top->Folders(SearchFolders::Include) : ItemList();
        for (std::size_t i = 0; i < first.Count(); ++i) {
            m_store->WalkFolders(first.Id(i), SearchFolders::Include, [&listed](Folder& folder, unsigned) {
                return listed.insert(folder.Id().value).second;
            });
        }
        std::erase_if(lost, [&](NodeId id) { return listed.contains(id.value) || !IsFolderNode(id); });
    }
    m_lostFolders = std::move(lost);
    return *m_lostFolders;
}

const std::vector<ReceiveFolder>& Mailbox::ReceiveFolders() {
    if (!m_receiveFolders) {
        m_receiveFolders = m_store->ReceiveFolders();
        std::erase_if(*m_receiveFolders, [this](const ReceiveFolder& row) {
            return !IsFolderNode(row.folder) || !Nodes().FindNode(row.folder);
        });
    }
    return *m_receiveFolders;
}

std::optional<std::size_t> PlaceIn(const ItemList& list, NodeId id) {
    const std::size_t place = FirstFrom(list.Count(), [&](std::size_t row) { return list.Id(row) < id; });
    return place < list.Count() && list.Id(place) == id ? std::optional(place) : std::nullopt;
}

}  // namespace localmapi::pst
