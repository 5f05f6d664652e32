// The facts about an item that the corpus records.
#pragma once

#include "localmapi/pst/messaging/Store.h"
#include "tests/localmapi/support/Facts.h"

#include <string>

namespace localmapi::testing {

// What the reader finds, read through in pieces. Two facts are not recorded: "attachment N long name" and "attachment N
// length".
Facts FactsOf(pst::Message& message);

// What the corpus records.
Facts FactsOf(const nlohmann::json& item);

// UTF-8. Characters that other programs replace are replaced alike: C1 controls, by which undefined bytes of a Windows
// page are given here, become U+FFFD.
std::string Utf8(WideView text);

}  // namespace localmapi::testing
