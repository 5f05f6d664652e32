// What an item's record has to say, by the description that its file was written from.
#pragma once

#include "provider/HostValue.h"
#include "testing/mailbox_builder/Model.h"

#include <string>
#include <vector>

namespace vx_testing {

// The kind of item that a message class stands for, as `schemaUID` numbers them; -1 for none.
int ItemTypeOf(const mailbox_builder::Message& message);

// The message as a file of 8-bit texts holds it: what its page lacks has become something else.
mailbox_builder::Message InItsPage(const mailbox_builder::Message& message);

// The keys that are compared by value: those of the fields that are made from one property each.
std::vector<std::string> ComparedKeys();

// Adds each field that is not what the description makes of it as a line, and each field that is set for no reason.
void CompareRecord(const VxOutlookProvider::Value& record, const mailbox_builder::Message& message, bool isEmbedded,
                   const std::string& where, std::vector<std::string>& differences);

}  // namespace vx_testing
