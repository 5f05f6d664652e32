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
    // Ids from here on are named ones; kLastId is the last that a property may have.
    static constexpr std::uint16_t kFirstId = 0x8000;
    static constexpr std::uint16_t kLastId = 0xFFFE;

    struct Entry {
        std::uint16_t id;
        PropertyName name;
    };

    // Takes a name that a file has for an id. Of two for one id, and of two ids for one name, the first holds for
    // finding; false then.
    bool Insert(std::uint16_t id, PropertyName name);

    std::optional<std::uint16_t> Find(const PropertyName& name) const;
    const PropertyName* NameOf(std::uint16_t id) const;

    // The id of a name, which gets the lowest free one if it has none yet; nothing when all ids are taken.
    std::optional<std::uint16_t> FindOrAdd(const PropertyName& name);

    // In the order in which they came.
    std::span<const Entry> Entries() const noexcept { return m_entries; }

private:
    struct Hash {
        std::size_t operator()(const PropertyName& name) const noexcept;
    };

    std::vector<Entry> m_entries;
    std::unordered_map<std::uint16_t, std::size_t> m_byId;  // indexes of m_entries
    std::unordered_map<PropertyName, std::uint16_t, Hash> m_byName;
    std::uint16_t m_nextId = kFirstId;
};

}  // namespace localmapi
