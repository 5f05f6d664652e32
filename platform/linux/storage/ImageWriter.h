// Writes a tree as a fresh compound file, front to back in one pass.
#pragma once

#include "platform/linux/storage/BackingBytes.h"
#include "platform/linux/storage/ImageLayout.h"

namespace vx_storage {

// Writes the image of a layout to the start of `target`. The contents are read from the nodes, which may not look into
// `target` itself. STG_E_DOCFILECORRUPT when a stream of the old file cannot be read.
[[nodiscard]] HRESULT WriteImage(const ImageLayout& layout, BackingBytes& target);

}  // namespace vx_storage
