// The checksum that several of the file formats share.
#pragma once

#include "localmapi/base/Bytes.h"

#include <cstdint>

namespace localmapi {

// CRC-32 with the reflected polynomial 0xEDB88320, started at 0 and not inverted: [MS-PST] 5.3, [MS-OXRTFCP] 3.1.3.2. A
// value computed over a first part is the `start` for the next. Any thread.
std::uint32_t Crc(ByteView bytes, std::uint32_t start = 0) noexcept;

}  // namespace localmapi
