#include "localmapi/pst/messaging/Message.h"

#include "localmapi/pst/ltp/Values.h"
#include "localmapi/pst/messaging/PropertyIds.h"

#include <algorithm>
#include <string>
#include <utility>

namespace localmapi::pst {

namespace {

// The tables of a message have the same sub-node ids in every message: [MS-PST] 2.4.6.
constexpr NodeId kAttachmentTable{0x671};
constexpr NodeId kRecipientTable{0x692};

}  // namespace

CStringW ReadText(PropertyContext& properties, std::uint16_t id, UINT codePage) {
    Result<PropertyValue> value = properties.Read(id);
    Result<CStringW> text = value ? Text(*value, codePage) : Result<CStringW>(value.TakeFailure());
    if (!text) {
        if (!text.IsNotFound()) {
            properties.Owner().Problems().Report(Name(properties.OwnerId()) + ": property " + Hex(id) + ": "
                                                 + text.Failure().text + "; it is taken for empty");
        }
        return {};
    }
    return *std::move(text);
}

std::optional<std::int64_t> ReadInteger(PropertyContext& properties, std::uint16_t id) {
    Result<PropertyValue> value = properties.Read(id);
    return value ? Integer(*value) : std::nullopt;
}

CStringW Attachment::Text(std::uint16_t id) {
    return ReadText(m_properties, id, m_codePage);
}

AttachMethod Attachment::Method() {
    if (const auto stored = ReadInteger(m_properties, IdOf(PR_ATTACH_METHOD))) {
        return static_cast<AttachMethod>(*stored);
    }
    const PropertyContext::Record* content = m_properties.Find(IdOf(PR_ATTACH_DATA_BIN));
    if (content == nullptr) {
        return AttachMethod::None;
    }
    if (content->type != PropertyType::Object) {
        return AttachMethod::ByValue;
    }
    const Result<ObjectReference> object = m_properties.ReadObject(content->id);
    return object && object->node.Type() == NodeType::Message ? AttachMethod::EmbeddedMessage : AttachMethod::Ole;
}

Result<ValueStream> Attachment::OpenData() {
    const AttachMethod method = Method();
    const PropertyContext::Record* content = m_properties.Find(IdOf(PR_ATTACH_DATA_BIN));
    if (method == AttachMethod::ByValue && content == nullptr) {
        return ValueStream();
    }
    if (content == nullptr || method == AttachMethod::EmbeddedMessage) {
        return Error{ErrorCode::NotFound, Name(m_properties.OwnerId()) + ": the attachment " + Hex(m_id.value)
                                              + " has no content of its own"};
    }
    if (content->type == PropertyType::Object) {
        VX_TRY_ASSIGN(const ObjectReference object, m_properties.ReadObject(content->id));
        VX_TRY_ASSIGN(DataStream data, m_properties.OpenSubnodeData(object.node));
        return ValueStream(std::move(data));
    }
    VX_TRY_ASSIGN(PropertyValue value, m_properties.Read(*content));
    return std::move(value.bytes);
}

Result<Message> Attachment::OpenMessage() {
    const PropertyContext::Record* content = m_properties.Find(IdOf(PR_ATTACH_DATA_OBJ));
    if (Method() != AttachMethod::EmbeddedMessage || content == nullptr) {
        return Error{ErrorCode::NotFound,
                     Name(m_properties.OwnerId()) + ": the attachment " + Hex(m_id.value) + " is no message"};
    }
    if (m_depth + 1 >= Message::kMostNesting) {
        return Error{ErrorCode::TooLarge, Name(m_properties.OwnerId()) + ": messages are nested more than "
                                              + std::to_string(Message::kMostNesting) + " deep"};
    }
    VX_TRY_ASSIGN(const ObjectReference object, m_properties.ReadObject(content->id));
    VX_TRY_ASSIGN(const NodeEntry node, m_properties.Subnodes().Find(object.node));
    return Message::Open(m_properties.Owner(), node, m_properties.OwnerId(), m_codePage, m_depth + 1);
}

Result<Message> Message::Open(Database& database, const NodeEntry& node, NodeId owner, UINT fallbackPage,
                              unsigned depth) {
    VX_TRY_ASSIGN(PropertyContext properties, PropertyContext::Open(database, node, owner));
    const UINT codePage = StringPageOf(properties, fallbackPage);
    return Message(std::move(properties), node, codePage, depth);
}

CStringW Message::Text(std::uint16_t id) {
    return ReadText(m_properties, id, m_codePage);
}

Result<TableContext> Message::OpenTable(NodeId id) {
    VX_TRY_ASSIGN(const NodeEntry node, m_properties.Subnodes().Find(id));
    return TableContext::Open(m_properties.Owner(), node, m_properties.OwnerId());
}

Result<TableContext> Message::OpenRecipients() {
    return OpenTable(kRecipientTable);
}

Result<TableContext> Message::OpenAttachmentTable() {
    return OpenTable(kAttachmentTable);
}

std::vector<NodeId> Message::Attachments() {
    std::vector<NodeId> ids;
    const Result<TableContext> table = OpenAttachmentTable();
    if (table) {
        for (std::size_t row = 0; row < table->RowCount(); ++row) {
            ids.push_back(NodeId{table->RowId(row)});
        }
    }
    if (table.IsNotFound() || (table && table->IsComplete())) {
        return ids;
    }
    m_properties.Owner().Problems().Report(
        Name(m_properties.OwnerId()) + ": the attachment table is damaged; the attachments are listed as they lie");
    m_properties.Subnodes().ForEach([&ids](const NodeEntry& node) {
        if (node.id.Type() == NodeType::Attachment) {
            ids.push_back(node.id);
        }
        return true;
    });
    std::sort(ids.begin(), ids.end());
    ids.erase(std::unique(ids.begin(), ids.end()), ids.end());
    return ids;
}

Result<Attachment> Message::OpenAttachment(NodeId id) {
    VX_TRY_ASSIGN(const NodeEntry node, m_properties.Subnodes().Find(id));
    VX_TRY_ASSIGN(PropertyContext properties,
                  PropertyContext::Open(m_properties.Owner(), node, m_properties.OwnerId()));
    return Attachment(std::move(properties), id, m_codePage, m_depth);
}

}  // namespace localmapi::pst
