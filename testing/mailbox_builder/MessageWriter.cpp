#include "testing/mailbox_builder/MessageWriter.h"

#include "mapi/PropTags.h"
#include "testing/mailbox_builder/Columns.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <map>
#include <utility>

namespace mailbox_builder {

namespace {

constexpr NodeId kRecipientTable{0x692};
constexpr NodeId kAttachmentTable{0x671};
constexpr std::uint32_t kFirstAttachment = 0x401;
constexpr NodeId kEmbeddedMessage{0x200024};
constexpr NodeId kOleObject{0x8029};

constexpr std::int32_t kHasAttachments = 0x10;
constexpr std::int32_t kByValue = 1;
constexpr std::int32_t kEmbedded = 5;
constexpr std::int32_t kOle = 6;
constexpr std::uint32_t kDataObject = 0x3701'000D;

constexpr std::int32_t kTo = 1;
constexpr std::int32_t kCc = 2;
constexpr std::int32_t kBcc = 3;

constexpr std::uint16_t IdOf(std::uint32_t tag) noexcept {
    return static_cast<std::uint16_t>(tag >> 16);
}

std::int32_t LongOf(const Properties& properties, std::uint32_t tag, std::int32_t otherwise) {
    const Property* property = properties.Find(tag);
    const auto* number = property != nullptr ? std::get_if<std::int32_t>(&property->value) : nullptr;
    return number != nullptr ? *number : otherwise;
}

CStringW TextOf(const Properties& properties, std::uint32_t tag, unsigned codePage) {
    const Property* property = properties.Find(tag);
    if (property == nullptr) {
        return {};
    }
    const auto* narrow = std::get_if<Text8>(&property->value);
    const auto* wide = std::get_if<CStringW>(&property->value);
    return narrow != nullptr ? FromCodePage(narrow->bytes, codePage) : wide != nullptr ? *wide : CStringW{};
}

std::int32_t Clamped(std::uint64_t size) noexcept {
    return static_cast<std::int32_t>(std::min<std::uint64_t>(size, std::numeric_limits<std::int32_t>::max()));
}

std::uint64_t SizeOf(const Properties& properties) noexcept {
    std::uint64_t size = 0;
    for (const Property& property : properties.All()) {
        size += SizeOf(property.value);
    }
    return size;
}

std::uint64_t SizeOf(const Message& message) noexcept;

std::uint64_t SizeOf(const Attachment& attachment) noexcept {
    return SizeOf(attachment.properties) + (attachment.ole ? attachment.ole->size() : 0)
           + (attachment.embedded ? SizeOf(*attachment.embedded) : 0);
}

std::uint64_t SizeOf(const Message& message) noexcept {
    std::uint64_t size = SizeOf(message.properties);
    for (const Properties& recipient : message.recipients) {
        size += SizeOf(recipient);
    }
    for (const Attachment& attachment : message.attachments) {
        size += SizeOf(attachment);
    }
    return size;
}

// The names of the recipients of a kind, as clients list them.
CStringW NamesOf(const Message& message, std::int32_t type) {
    CStringW names;
    for (const Properties& recipient : message.recipients) {
        if (LongOf(recipient, PR_RECIPIENT_TYPE, kTo) == type) {
            names += (names.empty() ? CStringW() : CStringW("; "_w));
            names += TextOf(recipient, PR_DISPLAY_NAME, message.codePage);
        }
    }
    return names;
}

}  // namespace

Result<PropertyList> MessageWriter::PropertiesOf(const Message& message) {
    PropertyList list;
    VX_TRY(list.AddAll(message.properties, m_names));
    list.Default(PR_MESSAGE_CLASS_W, CStringW("IPM.Note"_w));
    list.Default(PR_DISPLAY_TO_W, NamesOf(message, kTo));
    list.Default(PR_DISPLAY_CC_W, NamesOf(message, kCc));
    list.Default(PR_DISPLAY_BCC_W, NamesOf(message, kBcc));
    list.Default(PR_MESSAGE_SIZE, Clamped(SizeOf(message)));
    list.Default(PR_MESSAGE_CODEPAGE, static_cast<std::int32_t>(message.codePage));
    const std::int32_t flags = list.Long(IdOf(PR_MESSAGE_FLAGS), 0);
    list.Set(PR_MESSAGE_FLAGS, message.attachments.empty() ? flags : flags | kHasAttachments);
    return list;
}

Result<NodeData> MessageWriter::Write(const Message& message, const PropertyList& properties, unsigned depth) {
    if (depth > kMostNesting) {
        return Error{ErrorCode::Unsupported, "more than 64 messages lie within each other"};
    }
    std::vector<NodeEntry> subnodes;
    VX_TRY_ASSIGN(const NodeData recipients, WriteRecipients(message));
    subnodes.push_back({kRecipientTable, recipients.data, recipients.subnodes, {}});
    VX_TRY(WriteAttachments(message, depth, subnodes));
    return WriteProperties(m_database, properties, RulesFor(message), subnodes);
}

// The table has the columns of every file, and what else the recipients have.
Result<NodeData> MessageWriter::WriteRecipients(const Message& message) {
    const TextRules rules = RulesFor(message);
    std::map<std::uint16_t, std::uint16_t> columns;
    for (const std::uint32_t tag : kRecipientColumns) {
        columns.emplace(IdOf(tag), rules.StoredType(static_cast<std::uint16_t>(tag)));
    }
    std::vector<PropertyList> rows;
    for (const Properties& recipient : message.recipients) {
        VX_TRY(rows.emplace_back().AddAll(recipient, m_names));
        for (const PropertyList::Item& item : rows.back().All()) {
            const std::uint16_t type = rules.StoredType(item.type);
            const std::uint16_t column = columns.emplace(item.id, type).first->second;
            const bool areTexts = (column | 1) == kUnicode && (type | 1) == kUnicode;
            if (column != type && !areTexts) {
                return Error{ErrorCode::Unsupported, "two recipients have the same property in two types"};
            }
        }
    }
    std::vector<std::uint32_t> tags;
    std::transform(columns.begin(), columns.end(), std::back_inserter(tags),
                   [](const auto& column) { return std::uint32_t{column.first} << 16 | column.second; });
    VX_TRY_ASSIGN(const auto table, TableWriter::Begin(m_database, m_isAnsi, tags));
    for (const PropertyList& row : rows) {
        VX_TRY(table->Add(table->RowCount() + 1, row, rules));
    }
    return table->Finish();
}

Status MessageWriter::WriteAttachments(const Message& message, unsigned depth, std::vector<NodeEntry>& subnodes) {
    if (message.attachments.empty()) {
        return {};
    }
    const TextRules rules = RulesFor(message);
    VX_TRY_ASSIGN(const auto table, TableWriter::Begin(m_database, m_isAnsi, kAttachmentColumns));
    for (const Attachment& attachment : message.attachments) {
        const NodeId id{(kFirstAttachment + table->RowCount()) << 5 | static_cast<std::uint32_t>(NodeType::Attachment)};
        VX_TRY_ASSIGN(const PropertyList properties, PropertiesOf(attachment));
        VX_TRY_ASSIGN(const NodeData node, WriteAttachment(attachment, properties, rules, depth));
        subnodes.push_back({id, node.data, node.subnodes, {}});
        VX_TRY(table->Add(id.value, properties, rules));
    }
    VX_TRY_ASSIGN(const NodeData node, table->Finish());
    subnodes.push_back({kAttachmentTable, node.data, node.subnodes, {}});
    return {};
}

Result<PropertyList> MessageWriter::PropertiesOf(const Attachment& attachment) {
    PropertyList list;
    VX_TRY(list.AddAll(attachment.properties, m_names));
    if ((attachment.embedded || attachment.ole) && list.Find(IdOf(PR_ATTACH_DATA_BIN)) != nullptr) {
        return Error{ErrorCode::Unsupported, "an attachment has content by value beside its sub-object"};
    }
    list.Default(PR_ATTACH_METHOD, attachment.embedded ? kEmbedded : attachment.ole ? kOle : kByValue);
    list.Default(PR_ATTACH_SIZE, Clamped(SizeOf(attachment)));
    list.Default(PR_RENDERING_POSITION, std::int32_t{-1});
    return list;
}

Result<NodeData> MessageWriter::WriteAttachment(const Attachment& attachment, const PropertyList& properties,
                                                const TextRules& rules, unsigned depth) {
    if (attachment.embedded) {
        const Message& inner = *attachment.embedded;
        VX_TRY_ASSIGN(const PropertyList own, PropertiesOf(inner));
        VX_TRY_ASSIGN(const NodeData node, Write(inner, own, depth + 1));
        const NodeEntry subnode{kEmbeddedMessage, node.data, node.subnodes, {}};
        const auto size = static_cast<std::uint32_t>(own.Long(IdOf(PR_MESSAGE_SIZE), 0));
        return WriteProperties(m_database, properties, rules, std::span(&subnode, 1),
                               ObjectProperty{kDataObject, kEmbeddedMessage, size});
    }
    if (attachment.ole) {
        const auto fill = [&](std::uint64_t offset, std::span<std::byte> out) {
            localmapi::CopyInto(out, ByteView(*attachment.ole).Part(offset));
        };
        VX_TRY_ASSIGN(const BlockId data, m_database.WriteData(attachment.ole->size(), fill));
        const NodeEntry subnode{kOleObject, data, {}, {}};
        return WriteProperties(m_database, properties, rules, std::span(&subnode, 1),
                               ObjectProperty{kDataObject, kOleObject, attachment.ole->size()});
    }
    return WriteProperties(m_database, properties, rules);
}

}  // namespace mailbox_builder
