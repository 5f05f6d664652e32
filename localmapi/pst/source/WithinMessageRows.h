// The tables within a message: recipients and attachments. Rules as in RowSource.h.
#pragma once

#include "localmapi/model/RowSource.h"
#include "localmapi/pst/source/Mailbox.h"

#include <memory>
#include <vector>

namespace localmapi::pst {

std::unique_ptr<RowSource> RecipientRows(MailboxPtr mailbox, Message& message);

// `ids` are the message's attachments; the number of each is its place among them.
std::unique_ptr<RowSource> AttachmentRows(MailboxPtr mailbox, std::shared_ptr<Message> message,
                                          std::vector<NodeId> ids);

}  // namespace localmapi::pst
