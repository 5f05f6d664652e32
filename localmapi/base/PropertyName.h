// The name of a property above 0x8000. Any thread.
#pragma once

#include "platform/Guid.h"
#include "platform/WideText.h"

#include <cstdint>

namespace localmapi {

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

}  // namespace localmapi
