// Which property ids of a file stand for which names: [MS-PST] 2.4.7. Loaded once; any thread may ask afterwards.
#pragma once

#include "localmapi/base/Bytes.h"
#include "localmapi/base/Diagnostics.h"
#include "localmapi/base/PropertyName.h"
#include "localmapi/pst/ltp/PropertyContext.h"

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace localmapi::pst {

class NamedProperties {
public:
    // Ids from here on are named ones.
    static constexpr std::uint16_t kFirstId = 0x8000;

    // No names: of a file without a map.
    NamedProperties() = default;

    // Reads the map from its node. Entries that contradict themselves are reported and left out.
    static NamedProperties Load(PropertyContext& map, Diagnostics& problems);

    // The id of a name in this file. Text is compared exactly.
    std::optional<std::uint16_t> Find(const PropertyName& name) const;

    // The name of an id; null when the file has none for it.
    const PropertyName* NameOf(std::uint16_t id) const;

    struct Entry {
        std::uint16_t id;
        PropertyName name;
    };
    // By id.
    std::span<const Entry> Entries() const noexcept { return m_entries; }

private:
    std::vector<Entry> m_entries;         // by id
    std::vector<std::uint32_t> m_byName;  // indexes of m_entries, by the names' order
};

}  // namespace localmapi::pst
