// Reads a store through to its last byte, as an indexer would, whatever state the file is in.
#pragma once

#include "localmapi/pst/messaging/Store.h"

#include <cstdint>
#include <set>
#include <string>

namespace localmapi::testing {

struct Everything {
    std::set<std::uint32_t> folders;   // opened with a name
    std::set<std::uint32_t> messages;  // opened
    std::size_t listed = 0;            // messages in lists
    std::size_t attachments = 0;       // opened
    std::uint64_t bytes = 0;           // of values and contents
    std::size_t errors = 0;            // operations that gave one
};

// At most `bytesPerValue` of each value are read.
Everything ReadEverything(pst::Store& store, std::uint64_t bytesPerValue = UINT64_MAX);

}  // namespace localmapi::testing
