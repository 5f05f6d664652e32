// The properties of a message. Rules as in ObjectProperties.h.
#pragma once

#include "localmapi/pst/source/Mailbox.h"
#include "localmapi/pst/source/ObjectProperties.h"

#include <memory>

namespace localmapi::pst {

class MessageProperties final : public ObjectProperties {
public:
    // A message of the file itself. NotFound, Corrupt or ReadFailed.
    static Result<std::unique_ptr<MessageProperties>> OpenObject(MailboxPtr mailbox, NodeId id);

    MessageProperties(MailboxPtr mailbox, std::shared_ptr<Message> message)
        : ObjectProperties(&message->Properties(), message->CodePage()),
          m_mailbox(std::move(mailbox)),
          m_message(std::move(message)) {}

    const std::shared_ptr<Message>& TheMessage() const noexcept { return m_message; }

protected:
    std::span<const ULONG> MadeIds() const override;
    std::optional<ULONG> MadeTag(ULONG id) override;
    Result<Bytes> Make(ULONG id, std::uint64_t limit) override;

private:
    Result<SubjectParts> ReadSubject(std::uint64_t limit);
    Result<PropertyValue> FindTime();
    CStringW NamesOf(std::int64_t recipientType);
    std::uint64_t MeasureAll();

    MailboxPtr m_mailbox;
    std::shared_ptr<Message> m_message;
};

}  // namespace localmapi::pst
