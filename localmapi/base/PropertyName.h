// The name of a property above 0x8000. Any thread.
#pragma once

#include "platform/Guid.h"
#include "platform/WideText.h"

#include <cstdint>

namespace localmapi {

// Ids from the first on are named ones; the last is the last that a property may have.
inline constexpr std::uint16_t kFirstNamedId = 0x8000;
inline constexpr std::uint16_t kLastNamedId = 0xFFFE;

// A set, and within it a number or a text. Text is compared exactly.
struct PropertyName {
    GUID set{};
    bool isText = false;
    std::uint32_t number = 0;
    CStringW text;

    bool operator==(const PropertyName& other) const noexcept {
        return set == other.set && isText == other.isText && number == other.number && text == other.text;
    }
};

struct NamedId {
    std::uint16_t id;
    PropertyName name;
};

}  // namespace localmapi
