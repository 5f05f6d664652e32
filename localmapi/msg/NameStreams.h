// The names of named properties in a message file, for all the messages in it: [MS-OXMSG] 2.2.3. One thread at a time.
#pragma once

#include "localmapi/base/Diagnostics.h"
#include "localmapi/base/Result.h"
#include "localmapi/model/PropertyNames.h"
#include "localmapi/msg/OpenedStorage.h"

namespace localmapi::msg {

// The names that the file has. Entries that contradict themselves are reported and left out.
PropertyNames LoadNames(OpenedStorage& root, Diagnostics& problems);

// Makes these the names of the file: a list, the texts and sets that it leads to, and an index of all names by hash.
Status SaveNames(OpenedStorage& root, const PropertyNames& names);

}  // namespace localmapi::msg
