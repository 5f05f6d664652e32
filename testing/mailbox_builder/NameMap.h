// The names of a file's named properties and their ids: [MS-PST] 2.4.7. One thread at a time.
#pragma once

#include "testing/mailbox_builder/HeapWriter.h"
#include "testing/mailbox_builder/Model.h"

#include <cstdint>
#include <map>
#include <tuple>
#include <vector>

namespace mailbox_builder {

class NameMap {
public:
    // A map is never empty: readers exist that refuse a file whose map has an empty stream. It begins with the names of
    // two properties that every client uses.
    NameMap();

    // The id of a name, a new one if it had none: 0x8000 and on, in the order in which names come. TooLarge when there
    // are more than 32,767 of them.
    Result<std::uint16_t> IdOf(const Name& name);

    // The node that holds the map.
    Result<NodeData> Write(DatabaseWriter& database) const;

private:
    using Key = std::tuple<Bytes, std::uint32_t, CStringW>;
    struct Entry {
        Name name;
        std::uint16_t set;  // how entries name its set
    };
    std::uint16_t SetNumber(const GUID& set);

    std::map<Key, std::uint16_t> m_ids;
    std::vector<Entry> m_entries;  // by id
    std::vector<GUID> m_sets;      // those beside the two that every file knows
};

}  // namespace mailbox_builder
