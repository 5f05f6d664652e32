// The facts about a message file that the corpus records, as lines of text: "subject = ...", "attachment 0 sha1 = ...".
// Made from what the reader gives, and from the record, they can be compared line by line.
#pragma once

#include "localmapi/model/MessageSource.h"

#include <nlohmann/json.hpp>

#include <map>
#include <string>

namespace localmapi::testing {

// Fact by name. Facts that are empty are left out on both sides.
using Facts = std::map<std::string, std::string>;

Facts FactsOf(MessageSource& message);

// What the corpus records.
Facts FactsOf(const nlohmann::json& message);

}  // namespace localmapi::testing
