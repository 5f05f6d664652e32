// The two checks that pages and blocks carry in their trailers.
#pragma once

#include "localmapi/base/Bytes.h"
#include "localmapi/pst/ndb/Ids.h"

#include <cstdint>

namespace localmapi::pst {

// CRC-32 with the reflected polynomial 0xEDB88320, started at 0 and not inverted: [MS-PST] 5.3. A value computed over
// a first part is the `start` for the next.
std::uint32_t Crc(ByteView bytes, std::uint32_t start = 0) noexcept;

// What a page or block with this id carries when it lies at `at`: [MS-PST] 5.5.
constexpr std::uint16_t Signature(FileOffset at, std::uint64_t id) noexcept {
    const std::uint32_t mixed = static_cast<std::uint32_t>(at.value ^ id);
    return static_cast<std::uint16_t>((mixed >> 16) ^ mixed);
}

}  // namespace localmapi::pst
