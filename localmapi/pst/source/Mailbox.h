// The open file that all sources of a store share, and what they ask about it in common. One thread at a time; it lives
// as long as anything that came from it.
#pragma once

#include "localmapi/com/ComObject.h"
#include "localmapi/model/PropertyNames.h"
#include "localmapi/model/StoreSource.h"
#include "localmapi/pst/messaging/Store.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

namespace localmapi::pst {

class Mailbox {
public:
    Mailbox(std::unique_ptr<Store> store, SharedLock lock) : m_store(std::move(store)), m_lock(std::move(lock)) {}
    Mailbox(const Mailbox&) = delete;
    Mailbox& operator=(const Mailbox&) = delete;

    Store& File() noexcept { return *m_store; }
    Database& Nodes() noexcept { return m_store->Nodes(); }
    const SharedLock& Lock() const noexcept { return m_lock; }

    // Tells of a problem that whoever met it goes on in spite of.
    void Report(const Error& problem, std::string_view whatHappens);

    // Loaded at the first call.
    PropertyNames& Names();

    Bytes EntryIdOf(NodeId node) const;

    // Found at the first call. The topmost folder where the file has no such tree.
    NodeId IpmSubtree();

    // The folder that holds a folder or message, as a client is to see it: what lies in a lost folder, or in folders that
    // lie in each other, lies in the visible tree, and the topmost folder in itself. 0 for what the file does not know.
    NodeId ParentOf(NodeId node);

    // The messages, or hidden messages, of a folder. Making the list costs time for each row; those asked for last are
    // kept, so that a table that is opened again and again for one item does not cost more the more there are.
    std::shared_ptr<ItemList> MessagesOf(Folder& folder, NodeType table);

    // What the table of `folder` keeps of an item in it. NotFound, Corrupt or ReadFailed. The last table stays open.
    Result<PropertyValue> CellOf(NodeId folder, NodeId item, std::uint16_t id);

    // Folders that no list has any more, because those are lost that had them, while something in them is left: they are
    // listed in the visible tree. Empty as long as no damage was met. The first call in a damaged file walks over all of
    // it.
    const std::vector<NodeId>& LostFolders();

    // Those of the store's receive folders that it holds, in the order of their table.
    const std::vector<ReceiveFolder>& ReceiveFolders();

private:
    static constexpr std::size_t kKeptLists = 3;  // a folder's, that of the folders around it, and one more

    NodeId EndOfWayUp(NodeId folder);

    struct OpenList {
        NodeId table;
        std::shared_ptr<ItemList> items;
    };

    // The list of that table, if it is kept; it counts as the one asked for last.
    std::shared_ptr<ItemList> FindList(NodeId table);
    std::shared_ptr<ItemList> KeepList(NodeId table, ItemList items);

    std::unique_ptr<Store> m_store;
    SharedLock m_lock;
    std::optional<PropertyNames> m_names;
    std::optional<NodeId> m_ipmSubtree;
    std::vector<OpenList> m_lists;  // the ones asked for last, newest first
    std::optional<std::vector<NodeId>> m_lostFolders;
    std::optional<std::vector<ReceiveFolder>> m_receiveFolders;
};

using MailboxPtr = std::shared_ptr<Mailbox>;

constexpr bool IsFolderNode(NodeId id) noexcept {
    return id.Type() == NodeType::Folder || id.Type() == NodeType::SearchFolder;
}
constexpr bool IsMessageNode(NodeId id) noexcept {
    return id.Type() == NodeType::Message || id.Type() == NodeType::AssociatedMessage;
}

// The node of an entry number; nothing for a number that no node can have.
constexpr std::optional<NodeId> NodeOfEntry(EntryNumber number) noexcept {
    return number <= UINT32_MAX ? std::optional(NodeId{static_cast<std::uint32_t>(number)}) : std::nullopt;
}

// The first of `count` sorted places that is not `before` what is looked for; `count` when all are.
template <class Before>
std::size_t FirstFrom(std::size_t count, Before before) {
    std::size_t low = 0;
    while (low < count) {
        const std::size_t middle = low + (count - low) / 2;
        if (before(middle)) {
            low = middle + 1;
        } else {
            count = middle;
        }
    }
    return low;
}

// The place of an item in a list; nothing when the list has it not. The lists are sorted by id.
std::optional<std::size_t> PlaceIn(const ItemList& list, NodeId id);

}  // namespace localmapi::pst
