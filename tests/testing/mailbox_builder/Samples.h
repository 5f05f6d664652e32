// Messages that together hold every kind of value, attachment and name, for the tests of the writer.
#pragma once

#include "localmapi/pst/messaging/Store.h"
#include "testing/mailbox_builder/MailboxWriter.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace mailbox_builder {

// A wide text from ASCII.
CStringW Wide(std::string_view ascii);

// `size` bytes that look alike nowhere.
Bytes Pattern(std::size_t size, std::uint32_t seed = 1);

// The same without being held.
Content PatternContent(std::uint64_t size, std::uint32_t seed = 1);

Message SimpleMessage(std::string_view subject);
Properties Recipient(std::int32_t type, std::string_view name);
Attachment FileAttachment(std::string_view name, Value content);
Attachment MessageAttachment(Message inner);

// Every type, single and multiple, with the least, greatest and empty values.
Message EveryType();

// Values whose lengths lie around those at which they move: out of the record, out of the heap, into more blocks.
Message EveryLength();

// Every method of attachment, messages within messages, recipients of each kind.
Message EveryAttachment();

// Named properties of every kind of set, and texts of a page of Cyrillic letters.
Message NamesAndPages();

struct Added {
    FolderId folder;
    MessageId id;
    Message message;
    bool isAssociated = false;
};

// A file in memory, and what was put into it.
struct Mailbox {
    Bytes bytes;
    std::vector<Added> messages;
};

// The failure of a step is a failure of the test.
class MailboxBuilder {
public:
    explicit MailboxBuilder(const WriterOptions& options);

    FolderId AddFolder(std::string_view name);
    void Add(FolderId folder, Message message, bool isAssociated = false);
    MailboxWriter& Writer() { return *m_writer; }
    Mailbox Finish();

private:
    Mailbox m_mailbox;
    std::unique_ptr<Bytes> m_bytes = std::make_unique<Bytes>();
    std::unique_ptr<MailboxWriter> m_writer;
};

// A folder with all of the messages above, one of them hidden, and one with as many messages as are asked for.
Mailbox EverythingMailbox(const WriterOptions& options, std::size_t plainMessages);

}  // namespace mailbox_builder
