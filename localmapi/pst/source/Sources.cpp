// The sources of the model: what they are asked is answered by properties and rows.
#include "localmapi/base/Format.h"
#include "localmapi/object/ValueStreams.h"
#include "localmapi/pst/messaging/PropertyIds.h"
#include "localmapi/pst/source/AttachmentProperties.h"
#include "localmapi/pst/source/FolderProperties.h"
#include "localmapi/pst/source/ItemRows.h"
#include "localmapi/pst/source/MessageProperties.h"
#include "localmapi/pst/source/OpenStoreSource.h"
#include "localmapi/pst/source/WithinMessageRows.h"

#include <algorithm>
#include <array>
#include <utility>

namespace localmapi::pst {

namespace {

// Keeps the file open for a storage, which may outlive all other objects of the store.
class FileHold final : public ComObject<IUnknown> {
public:
    explicit FileHold(MailboxPtr mailbox) : ComObject(mailbox->Lock()), m_mailbox(std::move(mailbox)) {}

protected:
    bool Implements(REFIID) const override { return false; }

private:
    MailboxPtr m_mailbox;
};

std::unique_ptr<MessageSource> MakeMessageSource(MailboxPtr mailbox, std::shared_ptr<Message> message, unsigned depth);

// ---- Attachments ----------------------------------------------------------------------------------------------------

class FileAttachment final : public SourceOf<AttachmentSource> {
public:
    FileAttachment(MailboxPtr mailbox, std::unique_ptr<AttachmentProperties> properties, unsigned depth)
        : m_mailbox(std::move(mailbox)), m_properties(std::move(properties)), m_depth(depth) {}

    Result<std::unique_ptr<MessageSource>> OpenMessage() override {
        VX_TRY_ASSIGN(Message message, m_properties->TheAttachment().OpenMessage());
        return MakeMessageSource(m_mailbox, std::make_shared<Message>(std::move(message)), m_depth + 1);
    }

    Result<ComPtr<IStorage>> OpenStorage() override {
        Attachment& attachment = m_properties->TheAttachment();
        if (attachment.Method() != AttachMethod::Ole) {
            return Error{ErrorCode::NotFound, Name(attachment.Id()) + ": the attachment is no object"};
        }
        VX_TRY_ASSIGN(std::unique_ptr<ByteSource> bytes, m_properties->Open(PROP_ID(PR_ATTACH_DATA_OBJ)));
        const auto hold = MakeObject<FileHold>(m_mailbox);
        return OpenStorageIn(std::move(bytes), ComPtr<IUnknown>(hold.Get()), m_mailbox->Lock());
    }

protected:
    ObjectProperties& Properties() override { return *m_properties; }

private:
    MailboxPtr m_mailbox;
    std::unique_ptr<AttachmentProperties> m_properties;
    unsigned m_depth;  // of the message that holds it
};

// ---- Messages -------------------------------------------------------------------------------------------------------

class FileMessage final : public SourceOf<MessageSource> {
public:
    FileMessage(MailboxPtr mailbox, std::unique_ptr<MessageProperties> properties, unsigned depth)
        : m_mailbox(std::move(mailbox)), m_properties(std::move(properties)), m_depth(depth) {}

    PropertyNames& Names() override { return m_mailbox->Names(); }
    std::unique_ptr<RowSource> Recipients() override { return RecipientRows(m_mailbox, TheMessage()); }

    std::vector<ULONG> AttachmentNumbers() override {
        std::vector<ULONG> numbers(AttachmentIds().size());
        for (ULONG i = 0; i < numbers.size(); ++i) {
            numbers[i] = i;
        }
        return numbers;
    }
    std::unique_ptr<RowSource> Attachments() override {
        return AttachmentRows(m_mailbox, m_properties->TheMessage(), AttachmentIds());
    }
    Result<std::unique_ptr<AttachmentSource>> OpenAttachment(ULONG number) override {
        if (number >= AttachmentIds().size()) {
            return Error{ErrorCode::NotFound,
                         Name(TheMessage().Id()) + ": there is no attachment " + std::to_string(number)};
        }
        VX_TRY_ASSIGN(std::unique_ptr<AttachmentProperties> properties,
                      AttachmentProperties::OpenObject(TheMessage(), AttachmentIds()[number], number));
        return std::unique_ptr<AttachmentSource>(
            std::make_unique<FileAttachment>(m_mailbox, std::move(properties), m_depth));
    }
    unsigned Depth() const override { return m_depth; }

protected:
    ObjectProperties& Properties() override { return *m_properties; }

private:
    Message& TheMessage() { return *m_properties->TheMessage(); }
    const std::vector<NodeId>& AttachmentIds() {
        if (!m_attachments) {
            m_attachments = TheMessage().Attachments();
        }
        return *m_attachments;
    }

    MailboxPtr m_mailbox;
    std::unique_ptr<MessageProperties> m_properties;
    unsigned m_depth;
    std::optional<std::vector<NodeId>> m_attachments;
};

std::unique_ptr<MessageSource> MakeMessageSource(MailboxPtr mailbox, std::shared_ptr<Message> message, unsigned depth) {
    auto properties = std::make_unique<MessageProperties>(mailbox, std::move(message));
    return std::make_unique<FileMessage>(std::move(mailbox), std::move(properties), depth);
}

// ---- Folders --------------------------------------------------------------------------------------------------------

class FileFolder final : public SourceOf<FolderSource> {
public:
    FileFolder(MailboxPtr mailbox, std::unique_ptr<FolderProperties> properties)
        : m_mailbox(std::move(mailbox)), m_properties(std::move(properties)) {}

    EntryNumber Number() const override { return m_properties->TheFolder().Id().value; }
    EntryNumber Parent() const override { return m_mailbox->ParentOf(m_properties->TheFolder().Id()).value; }

    std::unique_ptr<RowSource> Folders() override { return FolderRows(m_mailbox, TheFolder()); }
    std::unique_ptr<RowSource> Messages() override {
        return MessageRows(m_mailbox, TheFolder(), NodeType::ContentsTable);
    }
    std::unique_ptr<RowSource> AssociatedMessages() override {
        return MessageRows(m_mailbox, TheFolder(), NodeType::AssociatedTable);
    }

protected:
    ObjectProperties& Properties() override { return *m_properties; }

private:
    Folder& TheFolder() { return m_properties->TheFolder(); }

    MailboxPtr m_mailbox;
    std::unique_ptr<FolderProperties> m_properties;
};

// ---- The store ------------------------------------------------------------------------------------------------------

class StoreProperties final : public ObjectProperties {
public:
    explicit StoreProperties(Mailbox& mailbox)
        : ObjectProperties(mailbox.File().Properties(), mailbox.File().CodePage()), m_mailbox(mailbox) {}

    // The folder that a stored entry id names.
    std::optional<NodeId> FolderNamedBy(ULONG id) {
        Result<PropertyValue> value = OpenStored(id);
        const Result<Bytes> entryId =
            value ? WholeBytes(*value, CodePage(), Store::kEntryIdSize) : Result<Bytes>(value.TakeFailure());
        const auto node = entryId ? m_mailbox.File().NodeOf(*entryId) : std::nullopt;
        const bool isFolder = node && IsFolderNode(*node) && m_mailbox.Nodes().FindNode(*node);
        return isFolder ? node : std::nullopt;
    }

protected:
    std::span<const ULONG> MadeIds() const override {
        static constexpr auto kIds = std::to_array<ULONG>({PROP_ID(PR_RECORD_KEY), PROP_ID(PR_IPM_SUBTREE_ENTRYID)});
        return kIds;
    }
    std::optional<ULONG> MadeTag(ULONG id) override {
        switch (id) {
            case PROP_ID(PR_RECORD_KEY): return PR_RECORD_KEY;
            case PROP_ID(PR_IPM_SUBTREE_ENTRYID): return PR_IPM_SUBTREE_ENTRYID;
            default: return std::nullopt;
        }
    }
    Result<Bytes> Make(ULONG id, std::uint64_t) override {
        if (id == PROP_ID(PR_RECORD_KEY)) {
            return Bytes(m_mailbox.File().Key().begin(), m_mailbox.File().Key().end());
        }
        return m_mailbox.EntryIdOf(m_mailbox.IpmSubtree());
    }

private:
    Mailbox& m_mailbox;
};

WCHAR ToLower(WCHAR unit) {
    return unit >= 'A' && unit <= 'Z' ? static_cast<WCHAR>(unit + ('a' - 'A')) : unit;
}

// True when `messageClass` is `base` or a class below it. Classes are the same in upper and lower case.
bool IsClassWithin(WideView messageClass, WideView base) {
    const bool begins = base.size() <= messageClass.size()
                        && std::equal(base.begin(), base.end(), messageClass.begin(),
                                      [](WCHAR a, WCHAR b) { return ToLower(a) == ToLower(b); });
    return begins && (base.empty() || base.size() == messageClass.size() || messageClass[base.size()] == '.');
}

class FileStore final : public SourceOf<StoreSource> {
public:
    explicit FileStore(MailboxPtr mailbox) : m_mailbox(std::move(mailbox)), m_properties(*m_mailbox) {}

    Bytes Key() override { return {m_mailbox->File().Key().begin(), m_mailbox->File().Key().end()}; }
    Bytes EntryIdOf(EntryNumber number) override {
        return m_mailbox->EntryIdOf(NodeOfEntry(number).value_or(NodeId{}));
    }
    std::optional<Entry> EntryOf(ByteView entryId) override {
        const auto node = m_mailbox->File().NodeOf(entryId);
        if (!node || (!IsFolderNode(*node) && !IsMessageNode(*node))) {
            return std::nullopt;
        }
        return Entry{IsFolderNode(*node) ? EntryKind::Folder : EntryKind::Message, node->value};
    }
    EntryNumber ParentOf(EntryNumber number) override {
        const auto node = NodeOfEntry(number);
        const bool isEntry = node && (IsFolderNode(*node) || IsMessageNode(*node));
        return isEntry ? m_mailbox->ParentOf(*node).value : 0;
    }

    EntryNumber TopFolder() override { return Store::kRootFolder.value; }
    EntryNumber IpmSubtree() override { return m_mailbox->IpmSubtree().value; }

    std::optional<EntryNumber> FolderNamedBy(ULONG id) override {
        if (id == PROP_ID(PR_IPM_SUBTREE_ENTRYID)) {
            return IpmSubtree();
        }
        const auto node = m_properties.FolderNamedBy(id);
        return node ? std::optional<EntryNumber>(node->value) : std::nullopt;
    }

    std::optional<EntryNumber> ReceiveFolder(WideView messageClass, CStringW& matched) override {
        const pst::ReceiveFolder* best = nullptr;
        for (const pst::ReceiveFolder& row : m_mailbox->ReceiveFolders()) {
            if (IsClassWithin(messageClass, row.messageClass)
                && (best == nullptr || row.messageClass.size() > best->messageClass.size())) {
                best = &row;
            }
        }
        if (best == nullptr) {
            return std::nullopt;
        }
        matched = best->messageClass;
        return best->folder.value;
    }
    std::unique_ptr<RowSource> ReceiveFolders() override { return ReceiveFolderRows(m_mailbox); }

    PropertyNames& Names() override { return m_mailbox->Names(); }

    Result<std::unique_ptr<FolderSource>> OpenFolder(EntryNumber number) override {
        VX_TRY_ASSIGN(std::unique_ptr<FolderProperties> properties,
                      FolderProperties::OpenObject(m_mailbox, NodeOfEntry(number).value_or(NodeId{})));
        return std::unique_ptr<FolderSource>(std::make_unique<FileFolder>(m_mailbox, std::move(properties)));
    }
    Result<std::unique_ptr<MessageSource>> OpenMessage(EntryNumber number) override {
        VX_TRY_ASSIGN(std::unique_ptr<MessageProperties> properties,
                      MessageProperties::OpenObject(m_mailbox, NodeOfEntry(number).value_or(NodeId{})));
        return std::unique_ptr<MessageSource>(std::make_unique<FileMessage>(m_mailbox, std::move(properties), 0U));
    }

protected:
    ObjectProperties& Properties() override { return m_properties; }

private:
    MailboxPtr m_mailbox;
    StoreProperties m_properties;
};

Result<std::unique_ptr<StoreSource>> MakeStoreSource(Result<std::unique_ptr<Store>> opened, SharedLock lock) {
    VX_TRY_ASSIGN(std::unique_ptr<Store> store, std::move(opened));
    if (lock == nullptr) {
        lock = std::make_shared<std::recursive_mutex>();
    }
    return std::unique_ptr<StoreSource>(
        std::make_unique<FileStore>(std::make_shared<Mailbox>(std::move(store), std::move(lock))));
}

}  // namespace

Result<std::unique_ptr<StoreSource>> OpenStoreSource(const std::filesystem::path& file, const StoreOptions& options,
                                                     SharedLock lock) {
    return MakeStoreSource(Store::Open(file, options), std::move(lock));
}

Result<std::unique_ptr<StoreSource>> OpenStoreSource(std::unique_ptr<ByteSource> source, const StoreOptions& options,
                                                     SharedLock lock) {
    return MakeStoreSource(Store::Open(std::move(source), options), std::move(lock));
}

}  // namespace localmapi::pst
