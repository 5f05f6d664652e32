// How the bytes of data blocks are encoded on disk: [MS-PST] 5.1 and 5.2. Neither way is a cipher; both only keep text
// from being seen in a viewer.
#pragma once

#include "localmapi/pst/ndb/Ids.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace localmapi::pst {

// As the header names them.
enum class Encoding : std::uint8_t { None = 0, Permute = 1, Cyclic = 2 };

// Turns the stored bytes of a data block into its data, in place. `id` is the block's: the cyclic form starts from it.
void Decode(Encoding encoding, BlockId id, std::span<std::byte> bytes) noexcept;

// The reverse of Decode.
void Encode(Encoding encoding, BlockId id, std::span<std::byte> bytes) noexcept;

}  // namespace localmapi::pst
