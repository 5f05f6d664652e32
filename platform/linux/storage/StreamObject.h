// The IStream of an element of a compound file.
#pragma once

#include "platform/Storage.h"
#include "platform/linux/storage/ElementState.h"

#include <memory>

namespace vx_storage {

// Makes an object on an opened stream, at its start.
void MakeStreamObject(std::shared_ptr<const StreamState> stream, IStream** object);

}  // namespace vx_storage
