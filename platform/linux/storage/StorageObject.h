// The IStorage of a root and of every storage within.
#pragma once

#include "platform/Storage.h"
#include "platform/linux/storage/CompoundFile.h"

#include <memory>

namespace vx_storage {

// Makes the root object of an opened file. Its last Release saves what a direct root has changed, and closes the file.
[[nodiscard]] HRESULT MakeRootObject(std::shared_ptr<CompoundFile> file, DWORD mode, IStorage** object);

}  // namespace vx_storage
