// Which property ids of a store or message stand for which names. One thread at a time.
#pragma once

#include "localmapi/base/PropertyName.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <unordered_map>
#include <vector>

namespace localmapi {

class PropertyNames {
public:
    // Takes a name that a file has for an id. Of two for one id, and of two ids for one name, the first holds for
    // finding; false then.
    bool Insert(std::uint16_t id, PropertyName name);

    std::optional<std::uint16_t> Find(const PropertyName& name) const;
    const PropertyName* NameOf(std::uint16_t id) const;

    // The id of a name, which gets the lowest free one if it has none yet; nothing when all ids are taken.
    std::optional<std::uint16_t> FindOrAdd(const PropertyName& name);

    // In the order in which they came.
    std::span<const NamedId> Entries() const noexcept { return m_entries; }

private:
    struct Hash {
        std::size_t operator()(const PropertyName& name) const noexcept;
    };

    std::vector<NamedId> m_entries;
    std::unordered_map<std::uint16_t, std::size_t> m_byId;  // indexes of m_entries
    std::unordered_map<PropertyName, std::uint16_t, Hash> m_byName;
    std::uint16_t m_nextId = kFirstNamedId;
};

}  // namespace localmapi
