// The facts about a message file that the corpus records.
#pragma once

#include "localmapi/model/MessageSource.h"
#include "tests/localmapi/support/Facts.h"

namespace localmapi::testing {

Facts FactsOf(MessageSource& message);

// What the corpus records.
Facts FactsOf(const nlohmann::json& message);

}  // namespace localmapi::testing
