// The facts about an item that the corpus records, as lines of text: "subject = ...", "attachment 0 sha1 = ...". Made
// from what the reader gives, and from the record, they can be compared line by line.
#pragma once

#include "localmapi/pst/messaging/Store.h"

#include <nlohmann/json.hpp>

#include <map>
#include <string>

namespace localmapi::testing {

// Fact by name. Facts that are empty are left out on both sides.
using Facts = std::map<std::string, std::string>;

// What the reader finds, read through in pieces. Two facts are not recorded: "attachment N long name" and "attachment N
// length".
Facts FactsOf(pst::Message& message);

// What the corpus records.
Facts FactsOf(const nlohmann::json& item);

// UTF-8. Characters that other programs replace are replaced alike: C1 controls, by which undefined bytes of a Windows
// page are given here, become U+FFFD.
std::string Utf8(WideView text);

}  // namespace localmapi::testing
