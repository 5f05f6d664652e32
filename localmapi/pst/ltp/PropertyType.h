// The types of property values: [MS-OXCDATA] 2.11.1. The values are those of a property tag's low half.
#pragma once

#include <cstdint>
#include <optional>

namespace localmapi::pst {

enum class PropertyType : std::uint16_t {
    Int16 = 0x0002,
    Int32 = 0x0003,
    Float = 0x0004,
    Double = 0x0005,
    Currency = 0x0006,
    AppTime = 0x0007,
    Error = 0x000A,
    Boolean = 0x000B,
    Object = 0x000D,
    Int64 = 0x0014,
    String8 = 0x001E,
    Unicode = 0x001F,
    Time = 0x0040,
    Guid = 0x0048,
    ServerEntryId = 0x00FB,
    Restriction = 0x00FD,
    Actions = 0x00FE,
    Binary = 0x0102,
};

// Set in the type of a property that has several values.
inline constexpr std::uint16_t kMultipleFlag = 0x1000;

constexpr PropertyType Multiple(PropertyType base) noexcept {
    return static_cast<PropertyType>(static_cast<std::uint16_t>(base) | kMultipleFlag);
}
constexpr bool IsMultiple(PropertyType type) noexcept {
    return (static_cast<std::uint16_t>(type) & kMultipleFlag) != 0;
}
constexpr PropertyType BaseOf(PropertyType type) noexcept {
    return static_cast<PropertyType>(static_cast<std::uint16_t>(type) & ~kMultipleFlag);
}

// Bytes of one value of a type whose values are all equally long; 0 for the others and for unknown types.
constexpr unsigned FixedSize(PropertyType type) noexcept {
    switch (type) {
        case PropertyType::Boolean: return 1;
        case PropertyType::Int16: return 2;
        case PropertyType::Int32:
        case PropertyType::Float:
        case PropertyType::Error: return 4;
        case PropertyType::Double:
        case PropertyType::Currency:
        case PropertyType::AppTime:
        case PropertyType::Int64:
        case PropertyType::Time: return 8;
        case PropertyType::Guid: return 16;
        default: return 0;
    }
}

// False for types that no property of a message has, which stand in damaged and in sloppily written files.
constexpr bool IsKnown(PropertyType type) noexcept {
    const PropertyType base = BaseOf(type);
    switch (base) {
        case PropertyType::String8:
        case PropertyType::Unicode:
        case PropertyType::Binary: return true;
        case PropertyType::Object:
        case PropertyType::ServerEntryId:
        case PropertyType::Restriction:
        case PropertyType::Actions:
        case PropertyType::Boolean:
        case PropertyType::Error: return !IsMultiple(type);
        default: return FixedSize(base) != 0;
    }
}

// A property's id (high half) and type (low half) as MAPI joins them.
constexpr std::uint32_t TagOf(std::uint16_t id, PropertyType type) noexcept {
    return (std::uint32_t{id} << 16) | static_cast<std::uint16_t>(type);
}

}  // namespace localmapi::pst
