#include "localmapi/msg/MessageOnStorage.h"

#include "localmapi/base/StringPages.h"
#include "localmapi/msg/AttachmentNode.h"
#include "localmapi/msg/MessageNode.h"
#include "localmapi/msg/PartRows.h"

#include <new>
#include <utility>

namespace localmapi::msg {

namespace {

std::unique_ptr<MessageSource> MakeSource(std::shared_ptr<MessageNode> message);

// What sources of messages and attachments have in common: the properties of a node. When a source goes, what it set
// and nobody saved is forgotten, though the node may live on in a table.
template <class Source, class Node>
class NodeSource : public Source {
public:
    explicit NodeSource(std::shared_ptr<Node> node) : m_node(std::move(node)) {}
    ~NodeSource() override {
        try {
            if (m_node.use_count() > 1) {
                m_node->Discard();
            }
        } catch (const std::bad_alloc&) {
            // The changes stay where they are: in memory.
        }
    }

    std::vector<ULONG> Tags() override { return Properties().Tags(); }
    std::optional<ULONG> TagOf(ULONG id) override { return Properties().TagOf(id); }
    std::uint64_t SizeOf(ULONG id) override { return Properties().SizeOf(id); }
    Status Read(ULONG id, std::uint64_t limit, ValueMemory& memory, SPropValue& value) override {
        return Properties().Read(id, limit, memory, value);
    }
    Result<std::unique_ptr<ByteSource>> Open(ULONG id) override { return Properties().Open(id); }
    UINT CodePage() override { return m_node->CodePage(); }

    Status Write(const SPropValue& value) override {
        return IsWritable() ? Properties().Write(value, m_node->Form()) : PropertySource::Write(value);
    }
    Status Write(ULONG tag, ByteSource& bytes) override {
        return IsWritable() ? Properties().Write(tag, bytes, m_node->Form()) : PropertySource::Write(tag, bytes);
    }
    Status Remove(ULONG id) override { return IsWritable() ? Properties().Remove(id) : PropertySource::Remove(id); }
    Result<ComPtr<IStream>> OpenForWriting(ULONG tag, bool replace) override {
        return IsWritable() ? Properties().OpenForWriting(tag, replace, m_node->Form())
                            : PropertySource::OpenForWriting(tag, replace);
    }
    Status Save() override { return IsWritable() ? m_node->Save() : PropertySource::Save(); }
    bool IsWritable() const override { return m_node->Storage().IsWritable(); }

protected:
    Node& Object() const noexcept { return *m_node; }
    const std::shared_ptr<Node>& SharedObject() const noexcept { return m_node; }

private:
    PropertySet& Properties() const noexcept { return m_node->Properties(); }

    std::shared_ptr<Node> m_node;
};

class StorageAttachment final : public NodeSource<AttachmentSource, AttachmentNode> {
public:
    using NodeSource::NodeSource;

    Result<std::unique_ptr<MessageSource>> OpenMessage() override {
        VX_TRY_ASSIGN(auto message, Object().OpenMessage());
        return MakeSource(std::move(message));
    }
    Result<ComPtr<IStorage>> OpenStorage() override { return Object().OpenStorage(); }

    Result<std::unique_ptr<MessageSource>> CreateMessage() override {
        if (!IsWritable()) {
            return AttachmentSource::CreateMessage();
        }
        VX_TRY_ASSIGN(auto message, Object().CreateMessage());
        return MakeSource(std::move(message));
    }
    Result<ComPtr<IStorage>> CreateStorage() override {
        return IsWritable() ? Object().CreateStorage() : AttachmentSource::CreateStorage();
    }
};

class StorageMessage final : public NodeSource<MessageSource, MessageNode> {
public:
    using NodeSource::NodeSource;

    PropertyNames& Names() override { return Object().File().names; }
    std::unique_ptr<RowSource> Recipients() override { return MakeRecipientRows(SharedObject()); }
    std::vector<ULONG> AttachmentNumbers() override { return Object().AttachmentNumbers(); }
    std::unique_ptr<RowSource> Attachments() override { return MakeAttachmentRows(SharedObject()); }
    unsigned Depth() const override { return Object().Depth(); }

    Result<std::unique_ptr<AttachmentSource>> OpenAttachment(ULONG number) override {
        VX_TRY_ASSIGN(auto attachment, Object().Attachment(number));
        return std::unique_ptr<AttachmentSource>(std::make_unique<StorageAttachment>(std::move(attachment)));
    }
    Status ReplaceRecipients(const std::vector<SRow>& rows) override {
        return IsWritable() ? Object().ReplaceRecipients(rows) : MessageSource::ReplaceRecipients(rows);
    }
    Result<std::unique_ptr<AttachmentSource>> CreateAttachment(ULONG& number) override {
        if (!IsWritable()) {
            return MessageSource::CreateAttachment(number);
        }
        VX_TRY_ASSIGN(auto attachment, Object().CreateAttachment(number));
        return std::unique_ptr<AttachmentSource>(std::make_unique<StorageAttachment>(std::move(attachment)));
    }
    Status DeleteAttachment(ULONG number) override {
        return IsWritable() ? Object().DeleteAttachment(number) : MessageSource::DeleteAttachment(number);
    }
};

std::unique_ptr<MessageSource> MakeSource(std::shared_ptr<MessageNode> message) {
    return std::make_unique<StorageMessage>(std::move(message));
}

}  // namespace

Result<std::unique_ptr<MessageSource>> OpenMessageOnStorage(ComPtr<IStorage> storage, const MsgOptions& options) {
    auto file = std::make_shared<FileContext>(options.problems);
    file->isWritable = options.isWritable;
    file->commits = options.commits;
    file->fallbackPage = options.fallbackCodePage != 0 ? options.fallbackCodePage : DefaultCodePage();
    VX_TRY_ASSIGN(auto message, MessageNode::OpenFile(std::move(storage), std::move(file)));
    return MakeSource(std::move(message));
}

}  // namespace localmapi::msg
