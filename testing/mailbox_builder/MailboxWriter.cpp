#include "testing/mailbox_builder/MailboxWriter.h"

#include "localmapi/base/Format.h"
#include "mapi/PropTags.h"
#include "testing/mailbox_builder/ByteWriter.h"
#include "testing/mailbox_builder/Columns.h"
#include "testing/mailbox_builder/DatabaseWriter.h"
#include "testing/mailbox_builder/MessageWriter.h"
#include "testing/mailbox_builder/PropertyWriter.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <span>
#include <utility>
#include <vector>

namespace mailbox_builder {

namespace {

// The nodes that every file has: [MS-PST] 2.4.1.
constexpr NodeId kStore{0x21};
constexpr NodeId kNameMap{0x61};
constexpr FolderId kRoot{0x122};
constexpr NodeId kSearchQueue{0x1E1};
constexpr NodeId kSearchActivity{0x201};
constexpr NodeId kSearchDomain{0x261};
constexpr NodeId kReceiveFolders{0x62B};

using Columns = std::span<const std::uint32_t>;

struct Template {
    NodeId id;
    Columns columns;
};
const Template kTemplates[] = {
    {NodeId{0x60D}, kHierarchyColumns},      {NodeId{0x60E}, kContentsColumns},   {NodeId{0x60F}, kAssociatedColumns},
    {NodeId{0x610}, kSearchContentsColumns}, {NodeId{0x671}, kAttachmentColumns}, {NodeId{0x692}, kRecipientColumns},
};

// Types of nodes that only a search folder has.
constexpr std::uint32_t kUpdateQueue = 0x06;
constexpr std::uint32_t kCriteria = 0x07;
constexpr std::uint32_t kSearchContents = 0x10;

// What is below each of the layouts' topmost folder. The numbers are those that clients use; readers find the folders
// by entry id or by name.
constexpr FolderId kPstTop{0x8022};
constexpr FolderId kPstDeletedItems{0x8042};
constexpr FolderId kPstFinder{0x8062};
constexpr FolderId kOstPublic{0x2002};
constexpr FolderId kOstMailbox{0x20A2};
constexpr FolderId kOstTop{0x2142};
constexpr FolderId kOstDeletedItems{0x8022};
constexpr FolderId kOstFinder{0x8042};

// Where the numbers of new nodes begin.
constexpr std::uint32_t kFirstIndex = 0x400;
constexpr std::uint32_t kFirstFolder = 0x404;
constexpr std::uint32_t kFirstSearchFolder = 0x4000;
constexpr std::uint32_t kFirstMessage = 0x10000;
constexpr std::uint32_t kFirstAssociated = 0x8000;

constexpr std::int32_t kIsRead = 1;
constexpr std::int32_t kValidFolders = 0x89;  // the visible tree, the wastebasket, the finder: [MS-PST] 2.4.3

// Not published: of the store of an .ost, the GUID that its entry ids carry.
constexpr std::uint32_t kOstGuid = 0x6615'0048;
constexpr std::uint32_t kReceiveFolder = 0x6605'0003;
constexpr std::uint32_t kHiddenCount = 0x6635'0003;
constexpr std::uint32_t kHiddenUnread = 0x6636'0003;
constexpr std::uint32_t kPassword = 0x67FF'0003;

constexpr std::uint32_t NodeOf(std::uint32_t index, NodeType type) noexcept {
    return index << 5 | static_cast<std::uint32_t>(type);
}
constexpr NodeId Sibling(FolderId folder, std::uint32_t type) noexcept {
    return NodeId{(folder.node & ~0x1FU) | type};
}

Properties Named(const CStringW& name) {
    return Properties().Set(PR_DISPLAY_NAME_W, name);
}

}  // namespace

class MailboxWriter::Impl {
public:
    Impl(std::unique_ptr<ByteSink> sink, const WriterOptions& options)
        : m_options(options),
          m_rules{options.form == Form::Ansi, options.codePage},
          m_sink(std::move(sink)),
          m_database(FormOf(options.form), options.encryption, *m_sink),
          m_messages(m_database, m_names, m_rules.isAnsi) {}

    Status Begin() {
        MakeFolders();
        return m_database.Begin();
    }

    // Runs an operation unless one has failed, and keeps its failure.
    template <class Operation>
    auto Try(const Operation& operation) -> decltype(operation()) {
        if (m_failure) {
            return Error(*m_failure);
        }
        if (m_isFinished) {
            return Error{ErrorCode::Unsupported, "the mailbox is finished; nothing can be added"};
        }
        auto result = operation();
        if (!result) {
            m_failure = result.Failure();
        }
        return result;
    }

    Result<FolderId> AddFolder(FolderId parent, const Properties& properties, NodeType type) {
        if (!m_folders.contains(parent) || IsSearch(parent)) {
            return Error{ErrorCode::NotFound, localmapi::Hex(parent.node) + " is no folder that can hold another"};
        }
        const bool isSearch = type == NodeType::SearchFolder;
        const FolderId id{NodeOf(isSearch ? m_nextSearchFolder++ : m_nextFolder++, type)};
        Insert(id, parent, properties);
        return id;
    }

    Result<MessageId> AddMessage(FolderId folder, const Message& message, NodeType type) {
        const auto found = m_folders.find(folder);
        if (found == m_folders.end() || IsSearch(folder)) {
            return Error{ErrorCode::NotFound, localmapi::Hex(folder.node) + " is no folder that can hold messages"};
        }
        const bool isAssociated = type == NodeType::AssociatedMessage;
        const MessageId id{NodeOf(isAssociated ? m_nextAssociated++ : m_nextMessage++, type)};
        VX_TRY_ASSIGN(const PropertyList properties, m_messages.PropertiesOf(message));
        VX_TRY_ASSIGN(const NodeData node, m_messages.Write(message, properties));
        m_database.AddNode(NodeId{id.node}, node, NodeId{folder.node});

        Folder& into = found->second;
        std::unique_ptr<TableWriter>& table = isAssociated ? into.associated : into.contents;
        if (!table) {
            VX_TRY_ASSIGN(table, NewTable(isAssociated ? Columns(kAssociatedColumns) : Columns(kContentsColumns)));
        }
        VX_TRY(table->Add(id.node, properties, m_messages.RulesFor(message)));
        const std::int32_t flags = properties.Long(PR_MESSAGE_FLAGS >> 16, 0);
        into.unread += !isAssociated && (flags & kIsRead) == 0 ? 1 : 0;
        return id;
    }

    Status SetStoreProperty(std::uint32_t tag, Value value) {
        m_store.Set(tag, std::move(value));
        return {};
    }

    Status SetFolderProperty(FolderId folder, std::uint32_t tag, Value value) {
        const auto found = m_folders.find(folder);
        if (found == m_folders.end()) {
            return Error{ErrorCode::NotFound, localmapi::Hex(folder.node) + " is no folder of the mailbox"};
        }
        found->second.properties.Set(tag, std::move(value));
        return {};
    }

    Status SetReceiveFolder(const CStringW& messageClass, FolderId folder) {
        m_receiveFolders[messageClass] = folder;
        return {};
    }

    Result<std::uint16_t> IdOfName(const Name& name) { return m_names.IdOf(name); }

    Status Finish() {
        for (auto& [id, folder] : m_folders) {
            VX_TRY(FinishFolder(id, folder));
        }
        VX_TRY(WriteStore());
        VX_TRY(WriteReceiveFolders());
        for (const Template& each : kTemplates) {
            VX_TRY(WriteTable(each.id, nullptr, each.columns));
        }
        for (const NodeId empty : {kSearchQueue, kSearchActivity, kSearchDomain}) {
            m_database.AddNode(empty, {});
        }
        // Last, since every property that is written may add a name.
        VX_TRY_ASSIGN(const NodeData names, m_names.Write(m_database));
        m_database.AddNode(kNameMap, names);
        VX_TRY(m_database.Finish(m_options.end, IsOst(), NextIndexes()));
        VX_TRY(m_sink->Finish());
        m_isFinished = true;
        return {};
    }

    Bytes EntryIdOf(std::uint32_t node) const {
        return ByteWriter().U32(0).Append(ByteView(m_options.key.data(), m_options.key.size())).U32(node).Take();
    }

    FolderId Top() const noexcept { return IsPstShape() ? kPstTop : kOstTop; }
    FolderId DeletedItems() const noexcept { return IsPstShape() ? kPstDeletedItems : kOstDeletedItems; }
    FolderId Finder() const noexcept { return IsPstShape() ? kPstFinder : kOstFinder; }
    std::uint64_t Size() const noexcept { return m_database.Size(); }

private:
    struct Folder {
        FolderId parent;
        Properties properties;
        std::vector<FolderId> folders;
        std::unique_ptr<TableWriter> contents;    // null while there is no message
        std::unique_ptr<TableWriter> associated;  // the same for hidden ones
        std::int32_t unread = 0;
    };

    bool IsPstShape() const noexcept { return m_options.shape == Shape::Pst; }
    bool IsOst() const noexcept { return !IsPstShape() || m_options.form == Form::LargePages; }
    static bool IsSearch(FolderId folder) noexcept { return NodeId{folder.node}.Type() == NodeType::SearchFolder; }

    void Insert(FolderId id, FolderId parent, const Properties& properties) {
        m_folders[id] = Folder{parent, properties, {}, nullptr, nullptr, 0};
        if (id != parent) {
            m_folders[parent].folders.push_back(id);
        }
    }

    void MakeFolders() {
        Insert(kRoot, kRoot, Named({}));
        FolderId mailbox = kRoot;
        if (!IsPstShape()) {
            Insert(kOstPublic, kRoot, Named("Root - Public"_w));
            Insert(kOstMailbox, kRoot, Named("Root - Mailbox"_w));
            mailbox = kOstMailbox;
        }
        Insert(Top(), mailbox, Named(IsPstShape() ? "Top of Personal Folders"_w : "IPM_SUBTREE"_w));
        Insert(Finder(), mailbox, Named("Finder"_w));
        Insert(DeletedItems(), Top(), Named("Deleted Items"_w));
        m_receiveFolders[{}] = Top();
    }

    Result<std::unique_ptr<TableWriter>> NewTable(Columns columns) {
        return TableWriter::Begin(m_database, m_rules.isAnsi, columns);
    }

    // Writes a table, an empty one when `table` is null.
    Status WriteTable(NodeId id, std::unique_ptr<TableWriter> table, Columns columns) {
        if (!table) {
            VX_TRY_ASSIGN(table, NewTable(columns));
        }
        VX_TRY_ASSIGN(const NodeData node, table->Finish());
        m_database.AddNode(id, node);
        return {};
    }

    Result<PropertyList> PropertiesOf(const Folder& folder) {
        PropertyList list;
        VX_TRY(list.AddAll(folder.properties, m_names));
        list.Set(PR_CONTENT_COUNT, folder.contents ? static_cast<std::int32_t>(folder.contents->RowCount()) : 0);
        list.Set(PR_CONTENT_UNREAD, folder.unread);
        list.Set(PR_SUBFOLDERS, !folder.folders.empty());
        return list;
    }

    Status FinishFolder(FolderId id, Folder& folder) {
        VX_TRY_ASSIGN(const PropertyList properties, PropertiesOf(folder));
        VX_TRY_ASSIGN(const NodeData node, WriteProperties(m_database, properties, m_rules));
        m_database.AddNode(NodeId{id.node}, node, NodeId{folder.parent.node});
        if (IsSearch(id)) {
            m_database.AddNode(Sibling(id, kUpdateQueue), {});
            VX_TRY_ASSIGN(const NodeData criteria, WriteProperties(m_database, {}, m_rules));
            m_database.AddNode(Sibling(id, kCriteria), criteria);
            return WriteTable(Sibling(id, kSearchContents), nullptr, kSearchContentsColumns);
        }
        VX_TRY(WriteHierarchy(id, folder));
        VX_TRY(WriteTable(Sibling(id, static_cast<std::uint32_t>(NodeType::ContentsTable)), std::move(folder.contents),
                          kContentsColumns));
        return WriteTable(Sibling(id, static_cast<std::uint32_t>(NodeType::AssociatedTable)),
                          std::move(folder.associated), kAssociatedColumns);
    }

    Status WriteHierarchy(FolderId id, const Folder& folder) {
        std::vector<FolderId> children = folder.folders;
        std::sort(children.begin(), children.end());
        VX_TRY_ASSIGN(auto table, NewTable(kHierarchyColumns));
        for (const FolderId child : children) {
            VX_TRY_ASSIGN(PropertyList row, PropertiesOf(m_folders.at(child)));
            row.Default(kHiddenCount, std::int32_t{0});
            row.Default(kHiddenUnread, std::int32_t{0});
            VX_TRY(table->Add(child.node, row, m_rules));
        }
        return WriteTable(Sibling(id, static_cast<std::uint32_t>(NodeType::HierarchyTable)), std::move(table), {});
    }

    Status WriteStore() {
        PropertyList list;
        VX_TRY(list.AddAll(m_store, m_names));
        list.Default(PR_DISPLAY_NAME_W, m_options.displayName);
        list.Default(kPassword, static_cast<std::int32_t>(m_options.passwordCrc.value_or(0)));
        const Bytes key(m_options.key.begin(), m_options.key.end());
        if (IsPstShape()) {
            list.Default(PR_RECORD_KEY, key);
            list.Default(PR_VALID_FOLDER_MASK, kValidFolders);
            list.Default(PR_IPM_SUBTREE_ENTRYID, EntryIdOf(Top().node));
            list.Default(PR_IPM_WASTEBASKET_ENTRYID, EntryIdOf(DeletedItems().node));
            list.Default(PR_FINDER_ENTRYID, EntryIdOf(Finder().node));
        } else {
            GUID guid{};
            std::memcpy(&guid, key.data(), sizeof(guid));
            list.Default(kOstGuid, guid);
        }
        VX_TRY_ASSIGN(const NodeData node, WriteProperties(m_database, list, m_rules));
        m_database.AddNode(kStore, node);
        return {};
    }

    Status WriteReceiveFolders() {
        VX_TRY_ASSIGN(auto table, NewTable(kReceiveFolderColumns));
        for (const auto& [messageClass, folder] : m_receiveFolders) {
            PropertyList row;
            row.Set(PR_MESSAGE_CLASS_W, messageClass);
            row.Set(kReceiveFolder, static_cast<std::int32_t>(folder.node));
            VX_TRY(table->Add(table->RowCount() + 1, row, m_rules));
        }
        return WriteTable(kReceiveFolders, std::move(table), {});
    }

    DatabaseWriter::NextIndexes NextIndexes() const {
        DatabaseWriter::NextIndexes next;
        next.fill(kFirstIndex);
        next[static_cast<std::size_t>(NodeType::Folder)] = m_nextFolder;
        next[static_cast<std::size_t>(NodeType::SearchFolder)] = m_nextSearchFolder;
        next[static_cast<std::size_t>(NodeType::Message)] = m_nextMessage;
        next[static_cast<std::size_t>(NodeType::AssociatedMessage)] = m_nextAssociated;
        return next;
    }

    WriterOptions m_options;
    TextRules m_rules;
    std::unique_ptr<ByteSink> m_sink;
    DatabaseWriter m_database;
    NameMap m_names;
    MessageWriter m_messages;
    Properties m_store;
    std::map<FolderId, Folder> m_folders;
    std::map<CStringW, FolderId> m_receiveFolders;
    std::uint32_t m_nextFolder = kFirstFolder;
    std::uint32_t m_nextSearchFolder = kFirstSearchFolder;
    std::uint32_t m_nextMessage = kFirstMessage;
    std::uint32_t m_nextAssociated = kFirstAssociated;
    std::optional<Error> m_failure;
    bool m_isFinished = false;
};

Result<std::unique_ptr<MailboxWriter>> MailboxWriter::Create(const std::filesystem::path& path,
                                                             const WriterOptions& options) {
    VX_TRY_ASSIGN(auto sink, CreateFileSink(path));
    return Create(std::move(sink), options);
}

Result<std::unique_ptr<MailboxWriter>> MailboxWriter::Create(std::unique_ptr<ByteSink> sink,
                                                             const WriterOptions& options) {
    auto impl = std::make_unique<Impl>(std::move(sink), options);
    VX_TRY(impl->Begin());
    return std::unique_ptr<MailboxWriter>(new MailboxWriter(std::move(impl)));
}

MailboxWriter::MailboxWriter(std::unique_ptr<Impl> impl) : m_impl(std::move(impl)) {}
MailboxWriter::~MailboxWriter() = default;

FolderId MailboxWriter::Root() const noexcept {
    return kRoot;
}
FolderId MailboxWriter::IpmSubtree() const noexcept {
    return m_impl->Top();
}
FolderId MailboxWriter::DeletedItems() const noexcept {
    return m_impl->DeletedItems();
}
FolderId MailboxWriter::Finder() const noexcept {
    return m_impl->Finder();
}

Result<FolderId> MailboxWriter::AddFolder(FolderId parent, const Properties& properties) {
    return m_impl->Try([&] { return m_impl->AddFolder(parent, properties, NodeType::Folder); });
}

Result<FolderId> MailboxWriter::AddSearchFolder(FolderId parent, const Properties& properties) {
    return m_impl->Try([&] { return m_impl->AddFolder(parent, properties, NodeType::SearchFolder); });
}

Result<MessageId> MailboxWriter::AddMessage(FolderId folder, const Message& message) {
    return m_impl->Try([&] { return m_impl->AddMessage(folder, message, NodeType::Message); });
}

Result<MessageId> MailboxWriter::AddAssociated(FolderId folder, const Message& message) {
    return m_impl->Try([&] { return m_impl->AddMessage(folder, message, NodeType::AssociatedMessage); });
}

Status MailboxWriter::SetStoreProperty(std::uint32_t tag, Value value) {
    return m_impl->Try([&] { return m_impl->SetStoreProperty(tag, std::move(value)); });
}

Status MailboxWriter::SetFolderProperty(FolderId folder, std::uint32_t tag, Value value) {
    return m_impl->Try([&] { return m_impl->SetFolderProperty(folder, tag, std::move(value)); });
}

Status MailboxWriter::SetReceiveFolder(const CStringW& messageClass, FolderId folder) {
    return m_impl->Try([&] { return m_impl->SetReceiveFolder(messageClass, folder); });
}

Result<std::uint16_t> MailboxWriter::IdOfName(const Name& name) {
    return m_impl->Try([&] { return m_impl->IdOfName(name); });
}

Status MailboxWriter::Finish() {
    return m_impl->Try([&] { return m_impl->Finish(); });
}

Bytes MailboxWriter::EntryIdOf(FolderId folder) const {
    return m_impl->EntryIdOf(folder.node);
}

Bytes MailboxWriter::EntryIdOf(MessageId message) const {
    return m_impl->EntryIdOf(message.node);
}

std::uint64_t MailboxWriter::Size() const noexcept {
    return m_impl->Size();
}

}  // namespace mailbox_builder
