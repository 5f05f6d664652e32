// The names of properties above 0x8000 as mailbox files and message files keep them: a list of entries of eight bytes,
// and the sets and texts that the entries lead to. [MS-PST] 2.4.7.1 to 2.4.7.4, [MS-OXMSG] 2.2.3.1. Any thread.
#pragma once

#include "localmapi/base/Bytes.h"
#include "localmapi/base/Diagnostics.h"
#include "localmapi/base/PropertyName.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace localmapi {

// The content of the three streams, by the property ids that both kinds of file have them under.
struct NameList {
    static constexpr std::uint16_t kSetsId = 0x0002;
    static constexpr std::uint16_t kEntriesId = 0x0003;
    static constexpr std::uint16_t kTextsId = 0x0004;

    // An entry: the number, or where in `texts` the text begins (4 bytes); the set's number, shifted left by one, and
    // below it whether the name is a text (2); the id less kFirstNamedId (2).
    static constexpr std::size_t kEntrySize = 8;

    // Sets that entries name by their number alone. Those from kFirstListedSet on are found in `sets`.
    static constexpr std::uint16_t kNoSet = 0;
    static constexpr std::uint16_t kMapiSet = 1;
    static constexpr std::uint16_t kPublicStringsSet = 2;
    static constexpr std::uint16_t kFirstListedSet = 3;

    Bytes sets;  // GUIDs
    Bytes entries;
    Bytes texts;  // the size in bytes (4 bytes) and UTF-16LE of each
};

// The names of a list, by id; of two for one id the first. Entries that contradict themselves are left out and reported
// as those of `owner`; entries of zeros, which fill the place of an id without a name, are passed over. What is given
// stays below some 64 MB, whatever the list says.
std::vector<NamedId> ReadNames(const NameList& list, std::string_view owner, Diagnostics& problems);

}  // namespace localmapi
