#include "localmapi/model/PropertyNames.h"

#include <cstring>
#include <functional>
#include <utility>

namespace localmapi {

std::size_t PropertyNames::Hash::operator()(const PropertyName& name) const noexcept {
    std::uint64_t set[2];
    static_assert(sizeof set == sizeof name.set);
    std::memcpy(set, &name.set, sizeof set);
    const std::size_t within = name.isText ? std::hash<CStringW>()(name.text) : std::hash<std::uint32_t>()(name.number);
    return std::hash<std::uint64_t>()(set[0] ^ (set[1] * 31)) ^ (within * 3 + (name.isText ? 1 : 0));
}

bool PropertyNames::Insert(std::uint16_t id, PropertyName name) {
    const bool isNewId = m_byId.try_emplace(id, m_entries.size()).second;
    if (!isNewId) {
        return false;
    }
    const bool isNewName = m_byName.try_emplace(name, id).second;
    m_entries.push_back({id, std::move(name)});
    return isNewName;
}

std::optional<std::uint16_t> PropertyNames::Find(const PropertyName& name) const {
    const auto found = m_byName.find(name);
    return found == m_byName.end() ? std::nullopt : std::optional(found->second);
}

const PropertyName* PropertyNames::NameOf(std::uint16_t id) const {
    const auto found = m_byId.find(id);
    return found == m_byId.end() ? nullptr : &m_entries[found->second].name;
}

std::optional<std::uint16_t> PropertyNames::FindOrAdd(const PropertyName& name) {
    if (const auto known = Find(name)) {
        return known;
    }
    while (m_nextId <= kLastNamedId && m_byId.contains(m_nextId)) {
        ++m_nextId;
    }
    if (m_nextId > kLastNamedId) {
        return std::nullopt;
    }
    const std::uint16_t id = m_nextId++;
    Insert(id, name);
    return id;
}

}  // namespace localmapi
