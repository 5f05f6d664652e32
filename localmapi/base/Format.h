// The few spellings that messages about files on disk share.
#pragma once

#include <cstdint>
#include <string>

namespace localmapi {

// "0x1F4A"
std::string Hex(std::uint64_t value);

}  // namespace localmapi
