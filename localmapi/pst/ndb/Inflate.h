// Inflates compressed blocks.
#pragma once

#include "localmapi/base/Bytes.h"

#include <cstddef>
#include <optional>

namespace localmapi::pst {

// The `size` bytes that `compressed`, a zlib stream or a bare deflate stream, expands to. Nothing when it is no such
// stream, or expands to more or fewer: no more than `size` bytes are ever produced.
std::optional<Bytes> Inflate(ByteView compressed, std::size_t size);

}  // namespace localmapi::pst
