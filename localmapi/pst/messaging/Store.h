// One PST or OST file as a message store: the face of the engine. [MS-PST] 2.4.3.
//
// A store belongs to one thread at a time; any number of stores may be open over the same file, by any processes.
// Folders, messages and streams borrow from the store and must not outlive it. The file is only read, and others may
// write it meanwhile: what they change under us looks like damage until the store is opened again.
#pragma once

#include "localmapi/base/ByteSource.h"
#include "localmapi/base/PropertyName.h"
#include "localmapi/base/Result.h"
#include "localmapi/pst/messaging/Folder.h"
#include "localmapi/pst/messaging/Message.h"
#include "localmapi/pst/ndb/Database.h"
#include "platform/WideText.h"

#include <array>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <unordered_set>
#include <vector>

namespace localmapi::pst {

struct StoreOptions {
    OpenOptions database;
    UINT codePage = 0;  // of 8-bit texts where the file does not tell; 0: DefaultCodePage()
};

// The folders that a store names by entry ids.
enum class SpecialFolder : std::uint8_t {
    IpmSubtree,  // the top of the tree that users see
    Outbox,
    Wastebasket,
    SentMail,
    Views,
    CommonViews,
    Finder,  // holds the search folders
};

// Where new messages of a class, and of the classes below it, go: [MS-PST] 2.4.5. The empty class is the default.
struct ReceiveFolder {
    CStringW messageClass;
    NodeId folder;
};

class Store {
public:
    static constexpr NodeId kRootFolder = Folder::kTopmost;

    // An entry id of an object of the store: [MS-PST] 2.4.3.2.
    static constexpr std::size_t kEntryIdSize = 24;
    using EntryId = std::array<std::byte, kEntryIdSize>;
    using RecordKey = std::array<std::byte, 16>;

    // Folders below each other; deeper ones are reported and left out.
    static constexpr unsigned kDeepestFolder = 256;

    // As OpenFileReadOnly and Database::Open.
    static Result<std::unique_ptr<Store>> Open(const std::filesystem::path& file, const StoreOptions& options);
    static Result<std::unique_ptr<Store>> Open(std::unique_ptr<ByteSource> source, const StoreOptions& options);

    Store(const Store&) = delete;
    Store& operator=(const Store&) = delete;

    bool IsOst() const noexcept { return m_database->Header().isOst; }
    Database& Nodes() noexcept { return *m_database; }
    UINT CodePage() const noexcept { return m_codePage; }

    // The store object's properties; null when the file has none, or they are lost.
    PropertyContext* Properties() noexcept { return m_properties ? &*m_properties : nullptr; }

    // What the entry ids of this store carry; zeros when it is lost.
    const RecordKey& Key() const noexcept { return m_key; }
    EntryId EntryIdOf(NodeId node) const noexcept;

    // Nothing for what is no entry id of this store.
    std::optional<NodeId> NodeOf(ByteView entryId) const noexcept;

    // A password only stands in the way of those who ask for it: the data does not depend on it.
    bool HasPassword();

    // `password` in the bytes of the page that it was set in. True for every password when there is none.
    bool IsPassword(ByteView password);

    // Nothing when the store does not name such a folder. The visible tree is always found: by its entry id, by its
    // name (OST files name no folders), or else it is the topmost folder.
    std::optional<NodeId> Find(SpecialFolder folder);

    // In the order of the table; empty when there is none.
    std::vector<ReceiveFolder> ReceiveFolders();

    // The names of properties above 0x8000, by id. Read from the file at each call.
    std::vector<NamedId> LoadNames();

    // NotFound, Corrupt or ReadFailed.
    Result<Folder> OpenFolder(NodeId id) { return Folder::Open(*m_database, id, m_codePage); }
    Result<Message> OpenMessage(NodeId id);

    // Folders that are lost from the file while messages or folders in them are not. Opened, they have no properties.
    // Empty in a sound file; finding out takes a walk over all nodes.
    std::vector<NodeId> LostFolders();

    // Calls `visit` for the folder `top` and all below it, parents first, each once however damaged the tree is;
    // `depth` is 0 for `top`. Folders that cannot be opened are reported and passed over. A visit that gives false
    // leaves out what is below. When the walk from the topmost folder met problems, the lost folders that it has not
    // come by are visited last, as if they lay in the topmost.
    using FolderVisitor = std::function<bool(Folder& folder, unsigned depth)>;
    void WalkFolders(NodeId top, SearchFolders searchFolders, const FolderVisitor& visit);

private:
    Store(std::unique_ptr<Database> database, UINT codePage) noexcept
        : m_database(std::move(database)), m_codePage(codePage) {}

    struct Walk {
        struct Step {
            NodeId id;
            unsigned depth;
        };
        SearchFolders searchFolders;
        const FolderVisitor* visit;
        std::unordered_set<std::uint32_t> visited;
        std::vector<Step> pending;  // the next one last
    };

    void WalkPending(Walk& walk);
    void SettleEncoding();
    void LoadProperties();
    NodeId FindVisibleTree();

    std::unique_ptr<Database> m_database;
    UINT m_codePage;
    std::optional<PropertyContext> m_properties;
    RecordKey m_key{};
};

}  // namespace localmapi::pst
