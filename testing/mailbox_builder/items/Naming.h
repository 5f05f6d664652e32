// Sets named properties by the constants of mapi/NamedProps.h.
#pragma once

#include "mapi/NamedProps.h"
#include "testing/mailbox_builder/Model.h"

#include <utility>

namespace mailbox_builder {

inline Name NameOf(const NamedProperty& property) {
    return {*property.set, static_cast<std::uint32_t>(property.id), {}};
}
inline Name NameOf(const TextNamedProperty& property) {
    return {*property.set, 0, property.name};
}

inline void Set(Properties& properties, const NamedProperty& property, Value value) {
    properties.Set(NameOf(property), static_cast<std::uint16_t>(property.type), std::move(value));
}
inline void Set(Properties& properties, const TextNamedProperty& property, Value value) {
    properties.Set(NameOf(property), static_cast<std::uint16_t>(property.type), std::move(value));
}

}  // namespace mailbox_builder
