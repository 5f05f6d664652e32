// Compares an object of MAPI's with the description that its file was written from.
#pragma once

#include "mapi/Mapi.h"
#include "testing/mailbox_builder/Model.h"

#include <string>
#include <vector>

namespace vx_testing {

// Each difference as a line: place, property, how it differs. Small values are asked for by GetProps, texts and binaries
// above that by stream; named properties by their names.
void CompareProperties(IMAPIProp& object, const mailbox_builder::Properties& expected, const std::string& where,
                       std::vector<std::string>& differences);

// The properties of a message, its recipients, its attachments and all that is within them.
void CompareMessage(IMessage& message, const mailbox_builder::Message& expected, const std::string& where,
                    std::vector<std::string>& differences);

}  // namespace vx_testing
