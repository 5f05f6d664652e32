// A message as a file of its own, a .msg: [MS-OXMSG]. Any thread.
#pragma once

#include "testing/mailbox_builder/Model.h"

namespace mailbox_builder {

// The bytes of the file, with embedded messages as storages and OLE objects as binary values. Properties are stored as
// they are given, but for the hidden prefix of the subject, which files of this kind do not have. Empty when the system
// refuses to make the compound file.
Bytes MsgFileOf(const Message& message);

}  // namespace mailbox_builder
