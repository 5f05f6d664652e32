#include "testing/mailbox_builder/Model.h"

#include <algorithm>
#include <utility>

namespace mailbox_builder {

namespace {

auto HasId(std::uint32_t tag) {
    return [id = tag >> 16](const Property& property) { return !property.name && property.tag >> 16 == id; };
}

auto HasName(const Name& name) {
    return [&name](const Property& property) { return property.name == name; };
}

template <class Match>
Properties& SetFirst(Properties& self, std::vector<Property>& all, const Match& match, Property property) {
    const auto found = std::find_if(all.begin(), all.end(), match);
    if (found != all.end()) {
        *found = std::move(property);
    } else {
        all.push_back(std::move(property));
    }
    return self;
}

template <class Match>
const Property* FindFirst(const std::vector<Property>& all, const Match& match) {
    const auto found = std::find_if(all.begin(), all.end(), match);
    return found != all.end() ? &*found : nullptr;
}

}  // namespace

Properties& Properties::Set(std::uint32_t tag, Value value) {
    return SetFirst(*this, m_all, HasId(tag), Property{tag, std::move(value), std::nullopt});
}

Properties& Properties::Set(const Name& name, std::uint16_t type, Value value) {
    return SetFirst(*this, m_all, HasName(name), Property{type, std::move(value), name});
}

const Property* Properties::Find(std::uint32_t tag) const noexcept {
    return FindFirst(m_all, HasId(tag));
}

const Property* Properties::Find(const Name& name) const noexcept {
    return FindFirst(m_all, HasName(name));
}

}  // namespace mailbox_builder
