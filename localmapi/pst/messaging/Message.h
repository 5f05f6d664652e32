// Messages and their attachments: [MS-PST] 2.4.5 and 2.4.6. A message embedded in another is a message like any other.
// One thread at a time; everything borrows from the store's database and must not outlive it.
#pragma once

#include "localmapi/base/Result.h"
#include "localmapi/pst/ltp/PropertyContext.h"
#include "localmapi/pst/ltp/TableContext.h"
#include "localmapi/pst/messaging/ItemText.h"
#include "platform/WideText.h"

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace localmapi::pst {

class Message;

// How an attachment's content is kept: the values of PR_ATTACH_METHOD, [MS-OXCMSG] 2.2.2.9.
enum class AttachMethod : std::int32_t {
    None = 0,
    ByValue = 1,
    ByReference = 2,
    ByReferenceResolve = 3,
    ByReferenceOnly = 4,
    EmbeddedMessage = 5,
    Ole = 6,
    ByWebReference = 7,
};

class Attachment {
public:
    // The sub-node by which its message knows it.
    NodeId Id() const noexcept { return m_id; }

    PropertyContext& Properties() noexcept { return m_properties; }
    CStringW Text(std::uint16_t id);

    // As stored; where it is missing, what the content looks like.
    AttachMethod Method();

    // The content by value, or the bytes of an OLE object. Empty for an attachment by value without content. NotFound
    // for those by reference, whose paths are never opened, and for embedded messages.
    Result<ValueStream> OpenData();

    // NotFound when the attachment is no message. TooLarge beyond kMostNesting messages within each other.
    Result<Message> OpenMessage();

private:
    friend class Message;
    Attachment(PropertyContext properties, NodeId id, UINT codePage, unsigned depth)
        : m_properties(std::move(properties)), m_id(id), m_codePage(codePage), m_depth(depth) {}

    PropertyContext m_properties;
    NodeId m_id;
    UINT m_codePage;
    unsigned m_depth;  // of the message that holds it
};

class Message {
public:
    // A level is a handful of frames for whoever walks over messages within messages.
    static constexpr unsigned kMostNesting = 32;

    // The message at `node`; `owner` is the node of the file that holds it, `depth` the number of messages around it.
    // Corrupt or ReadFailed when its properties cannot be read.
    static Result<Message> Open(Database& database, const NodeEntry& node, NodeId owner, UINT fallbackPage,
                                unsigned depth = 0);

    NodeId Id() const noexcept { return m_node.id; }

    // The folder that holds it; 0 for an embedded message.
    NodeId Parent() const noexcept { return m_node.parent; }

    PropertyContext& Properties() noexcept { return m_properties; }

    // The page of its 8-bit strings and of those of its recipients and attachments. Somebody who knows better, from
    // the body in RTF, may set it.
    UINT CodePage() const noexcept { return m_codePage; }
    void SetCodePage(UINT codePage) noexcept { m_codePage = codePage; }

    // A text property; empty when there is none or it cannot be read.
    CStringW Text(std::uint16_t id);
    Subject ReadSubject() { return SplitSubject(Text(0x0037)); }

    // The recipients, in their order. NotFound when the message has no such table, which means none; Corrupt or
    // ReadFailed.
    Result<TableContext> OpenRecipients();

    // The attachments' ids, in their order: those of the attachment table or, where that is damaged, all attachments
    // that are there. And the table itself: NotFound, Corrupt or ReadFailed as for the recipients.
    std::vector<NodeId> Attachments();
    Result<TableContext> OpenAttachmentTable();

    // NotFound, Corrupt or ReadFailed.
    Result<Attachment> OpenAttachment(NodeId id);

private:
    Message(PropertyContext properties, const NodeEntry& node, UINT codePage, unsigned depth)
        : m_properties(std::move(properties)), m_node(node), m_codePage(codePage), m_depth(depth) {}
    Result<TableContext> OpenTable(NodeId id);

    PropertyContext m_properties;
    NodeEntry m_node;
    UINT m_codePage;
    unsigned m_depth;
};

// A text property of any object; empty when there is none or it cannot be read, which is reported.
CStringW ReadText(PropertyContext& properties, std::uint16_t id, UINT codePage);

// A number, see Integer; nothing when there is none.
std::optional<std::int64_t> ReadInteger(PropertyContext& properties, std::uint16_t id);

}  // namespace localmapi::pst
