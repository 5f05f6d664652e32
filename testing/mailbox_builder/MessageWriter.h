// Writes messages with their recipients and attachments, and the messages within those. [MS-PST] 2.4.5, 2.4.6. One
// thread at a time.
#pragma once

#include "testing/mailbox_builder/DatabaseWriter.h"
#include "testing/mailbox_builder/Model.h"
#include "testing/mailbox_builder/PropertyWriter.h"

namespace mailbox_builder {

class MessageWriter {
public:
    // Messages within each other; more is taken for a mistake.
    static constexpr unsigned kMostNesting = 64;

    // Both are borrowed and outlive the writer.
    MessageWriter(DatabaseWriter& database, NameMap& names, bool isAnsi)
        : m_database(database), m_names(names), m_isAnsi(isAnsi) {}

    TextRules RulesFor(const Message& message) const noexcept { return {m_isAnsi, message.codePage}; }

    // The message's own properties and those that MailboxWriter::AddMessage says are added. Values are borrowed from
    // `message`.
    Result<PropertyList> PropertiesOf(const Message& message);

    // `properties` are those of PropertiesOf.
    Result<NodeData> Write(const Message& message, const PropertyList& properties) {
        return Write(message, properties, 0);
    }

private:
    Result<NodeData> Write(const Message& message, const PropertyList& properties, unsigned depth);
    Result<NodeData> WriteRecipients(const Message& message);
    Status WriteAttachments(const Message& message, unsigned depth, std::vector<NodeEntry>& subnodes);
    Result<PropertyList> PropertiesOf(const Attachment& attachment);
    Result<NodeData> WriteAttachment(const Attachment& attachment, const PropertyList& properties,
                                     const TextRules& rules, unsigned depth);

    DatabaseWriter& m_database;
    NameMap& m_names;
    bool m_isAnsi;
};

}  // namespace mailbox_builder
