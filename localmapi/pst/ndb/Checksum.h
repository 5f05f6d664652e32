// The two checks that pages and blocks carry in their trailers.
#pragma once

#include "localmapi/base/Crc.h"
#include "localmapi/pst/ndb/Ids.h"

#include <cstdint>

namespace localmapi::pst {

using localmapi::Crc;

// What a page or block with this id carries when it lies at `at`: [MS-PST] 5.5.
constexpr std::uint16_t Signature(FileOffset at, std::uint64_t id) noexcept {
    const std::uint32_t mixed = static_cast<std::uint32_t>(at.value ^ id);
    return static_cast<std::uint16_t>((mixed >> 16) ^ mixed);
}

}  // namespace localmapi::pst
