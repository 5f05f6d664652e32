#include "localmapi/pst/messaging/Store.h"

#include "localmapi/pst/ltp/Heap.h"
#include "localmapi/pst/ltp/Values.h"
#include "localmapi/pst/messaging/NamedProperties.h"
#include "localmapi/pst/messaging/PropertyIds.h"
#include "localmapi/pst/ndb/Checksum.h"

#include <algorithm>
#include <string>
#include <utility>

namespace localmapi::pst {

namespace {

// Nodes that nearly every file has: [MS-PST] 2.4.1.
constexpr NodeId kStoreNode{0x21};
constexpr NodeId kNameMapNode{0x61};
constexpr NodeId kReceiveFolderTable{0x62B};
constexpr NodeId kHierarchyTemplate{0x60D};

constexpr unsigned kKeyAt = 4;  // within an entry id, behind four bytes of flags that are zero
constexpr unsigned kNodeAt = 20;

// The visible tree of an OST, whose names are those that it was made with.
constexpr const auto& kMailboxRootName = "Root - Mailbox"_w;
constexpr const auto& kVisibleTreeName = "IPM_SUBTREE"_w;

constexpr ULONG TagOf(SpecialFolder folder) {
    switch (folder) {
        case SpecialFolder::IpmSubtree: return PR_IPM_SUBTREE_ENTRYID;
        case SpecialFolder::Outbox: return PR_IPM_OUTBOX_ENTRYID;
        case SpecialFolder::Wastebasket: return PR_IPM_WASTEBASKET_ENTRYID;
        case SpecialFolder::SentMail: return PR_IPM_SENTMAIL_ENTRYID;
        case SpecialFolder::Views: return PR_VIEWS_ENTRYID;
        case SpecialFolder::CommonViews: return PR_COMMON_VIEWS_ENTRYID;
        case SpecialFolder::Finder: return PR_FINDER_ENTRYID;
    }
    return PR_NULL;
}

bool ReadInto(PropertyContext& properties, std::uint16_t id, std::span<std::byte> out) {
    Result<PropertyValue> value = properties.Read(id);
    if (!value) {
        return false;
    }
    const Result<std::size_t> got = value->bytes.ReadAt(0, out);
    return got && *got == out.size();
}

}  // namespace

Result<std::unique_ptr<Store>> Store::Open(const std::filesystem::path& file, const StoreOptions& options) {
    VX_TRY_ASSIGN(std::unique_ptr<ByteSource> source, OpenFileReadOnly(file));
    return Open(std::move(source), options);
}

Result<std::unique_ptr<Store>> Store::Open(std::unique_ptr<ByteSource> source, const StoreOptions& options) {
    VX_TRY_ASSIGN(std::unique_ptr<Database> database, Database::Open(std::move(source), options.database));
    const UINT codePage = options.codePage != 0 ? options.codePage : DefaultCodePage();
    std::unique_ptr<Store> store(new Store(std::move(database), codePage));
    store->SettleEncoding();
    store->LoadProperties();
    return store;
}

// Files exist whose header says that nothing is encoded while everything is. A heap shows by its first bytes whether it
// was decoded the right way.
void Store::SettleEncoding() {
    const auto looksRight = [this] {
        const auto isHeap = [this](NodeId id) {
            const Result<NodeEntry> node = m_database->FindNode(id);
            return node && Heap::Open(*m_database, *node, id);
        };
        return isHeap(kStoreNode) || isHeap(kRootFolder) || isHeap(kNameMapNode) || isHeap(kHierarchyTemplate);
    };
    if (looksRight()) {
        return;
    }
    const Encoding said = m_database->DataEncoding();
    for (const Encoding other : {Encoding::Permute, Encoding::None, Encoding::Cyclic}) {
        m_database->SetDataEncoding(other);
        if (other != said && looksRight()) {
            m_database->Problems().Report("the data is encoded in another way than the header says; it is read so");
            return;
        }
    }
    m_database->SetDataEncoding(said);
}

void Store::LoadProperties() {
    const Result<NodeEntry> node = m_database->FindNode(kStoreNode);
    Result<PropertyContext> properties =
        node ? PropertyContext::Open(*m_database, *node, kStoreNode) : Result<PropertyContext>(Error(node.Failure()));
    if (!properties) {
        m_database->Problems().Report(properties.Failure().text + "; the store is read without its properties");
        return;
    }
    m_properties.emplace(*std::move(properties));
    if ((IsOst() && ReadInto(*m_properties, kOstStoreGuid, m_key))
        || ReadInto(*m_properties, IdOf(PR_RECORD_KEY), m_key)) {
        return;
    }
    m_key = {};
    m_database->Problems().Report("the store has no record key; its entry ids are made without one");
}

Store::EntryId Store::EntryIdOf(NodeId node) const noexcept {
    EntryId id{};
    std::copy(m_key.begin(), m_key.end(), id.begin() + kKeyAt);
    for (unsigned i = 0; i < 4; ++i) {
        id[kNodeAt + i] = static_cast<std::byte>(node.value >> (8 * i));
    }
    return id;
}

std::optional<NodeId> Store::NodeOf(ByteView entryId) const noexcept {
    if (entryId.Size() != kEntryIdSize || entryId.U32(0) != 0) {
        return std::nullopt;
    }
    const ByteView key = entryId.Part(kKeyAt, m_key.size());
    return std::equal(m_key.begin(), m_key.end(), key.Span().begin()) ? std::optional(NodeId{entryId.U32(kNodeAt)})
                                                                      : std::nullopt;
}

bool Store::HasPassword() {
    return m_properties && ReadInteger(*m_properties, IdOf(PidTagPstPassword)).value_or(0) != 0;
}

bool Store::IsPassword(ByteView password) {
    return !HasPassword()
           || static_cast<std::uint32_t>(*ReadInteger(*m_properties, IdOf(PidTagPstPassword))) == Crc(password);
}

std::optional<NodeId> Store::Find(SpecialFolder folder) {
    EntryId entryId{};
    if (m_properties && ReadInto(*m_properties, IdOf(TagOf(folder)), entryId)) {
        const ByteView view(entryId.data(), entryId.size());
        const auto node = NodeOf(view);
        if (node && m_database->FindNode(*node)) {
            return node;
        }
        m_database->Problems().Report("the store names " + Name(NodeId{view.U32(kNodeAt)})
                                      + " as one of its folders, which it does not hold; another is looked for");
    }
    return folder == SpecialFolder::IpmSubtree ? std::optional(FindVisibleTree()) : std::nullopt;
}

NodeId Store::FindVisibleTree() {
    NodeId found = kRootFolder;
    bool foundInMailbox = false;
    CStringW section;
    WalkFolders(kRootFolder, SearchFolders::Skip, [&](Folder& folder, unsigned depth) {
        if (depth == 1) {
            section = folder.DisplayName();
        }
        const bool inMailbox = section == kMailboxRootName;
        if (depth == 2 && folder.DisplayName() == kVisibleTreeName
            && (found == kRootFolder || (inMailbox && !foundInMailbox))) {
            found = folder.Id();
            foundInMailbox = inMailbox;
        }
        return depth < 2;
    });
    return found;
}

std::vector<ReceiveFolder> Store::ReceiveFolders() {
    std::vector<ReceiveFolder> folders;
    const Result<NodeEntry> node = m_database->FindNode(kReceiveFolderTable);
    if (!node) {
        return folders;
    }
    Result<TableContext> table = TableContext::Open(*m_database, *node, kReceiveFolderTable);
    if (!table) {
        m_database->Problems().Report(table.Failure().text + "; receive folders are lost");
        return folders;
    }
    for (std::size_t row = 0; row < table->RowCount(); ++row) {
        Result<PropertyValue> messageClass = table->Cell(row, IdOf(PR_MESSAGE_CLASS));
        Result<PropertyValue> folder = table->Cell(row, kReceiveFolderId);
        const auto id = folder ? Integer(*folder) : std::nullopt;
        Result<CStringW> text = messageClass ? Text(*messageClass, m_codePage) : Result<CStringW>(CStringW{});
        if (id && text) {
            folders.push_back(ReceiveFolder{*std::move(text), NodeId{static_cast<std::uint32_t>(*id)}});
        }
    }
    return folders;
}

std::vector<NamedId> Store::LoadNames() {
    const Result<NodeEntry> node = m_database->FindNode(kNameMapNode);
    Result<PropertyContext> map =
        node ? PropertyContext::Open(*m_database, *node, kNameMapNode) : Result<PropertyContext>(Error(node.Failure()));
    if (!map) {
        m_database->Problems().Report(map.Failure().text + "; named properties have no names");
        return {};
    }
    return pst::LoadNames(*map, m_database->Problems());
}

Result<Message> Store::OpenMessage(NodeId id) {
    VX_TRY_ASSIGN(const NodeEntry node, m_database->FindNode(id));
    return Message::Open(*m_database, node, id, m_codePage);
}

std::vector<NodeId> Store::LostFolders() {
    std::vector<NodeId> lost;
    for (const NodeId id : m_database->Parents()) {
        if (id != kRootFolder && !m_database->FindNode(id)) {
            lost.push_back(id);
        }
    }
    return lost;
}

void Store::WalkFolders(NodeId top, SearchFolders searchFolders, const FolderVisitor& visit) {
    Walk walk{searchFolders, &visit, {}, {{top, 0}}};
    WalkPending(walk);
    if (top != kRootFolder || m_database->Problems().Count() == 0) {
        return;
    }
    for (const NodeId lost : LostFolders()) {
        if (!walk.visited.contains(lost.value)) {
            walk.pending.push_back({lost, 1});
        }
    }
    WalkPending(walk);
}

void Store::WalkPending(Walk& walk) {
    while (!walk.pending.empty()) {
        const Walk::Step next = walk.pending.back();
        walk.pending.pop_back();
        if (!walk.visited.insert(next.id.value).second) {
            m_database->Problems().Report(Name(next.id) + ": the folder is listed in two others; it is taken once");
            continue;
        }
        if (next.depth > kDeepestFolder) {
            m_database->Problems().Report(Name(next.id) + ": the folder lies too deep; it is left out");
            continue;
        }
        Result<Folder> folder = OpenFolder(next.id);
        if (!folder) {
            m_database->Problems().Report(folder.Failure().text + "; the folder is passed over");
            continue;
        }
        if (!(*walk.visit)(*folder, next.depth)) {
            continue;
        }
        const ItemList below = folder->Folders(walk.searchFolders);
        for (std::size_t i = below.Count(); i-- > 0;) {
            walk.pending.push_back({below.Id(i), next.depth + 1});
        }
    }
}

}  // namespace localmapi::pst
