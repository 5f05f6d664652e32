// The recipients and attachments of a message as rows. Rows are read from the parts' own storages, of which a few stay
// open. One thread at a time.
#pragma once

#include "localmapi/model/RowSource.h"
#include "localmapi/msg/MessageNode.h"

#include <memory>

namespace localmapi::msg {

std::unique_ptr<RowSource> MakeRecipientRows(std::shared_ptr<MessageNode> message);

// The attachments that the message has now.
std::unique_ptr<RowSource> MakeAttachmentRows(std::shared_ptr<MessageNode> message);

}  // namespace localmapi::msg
