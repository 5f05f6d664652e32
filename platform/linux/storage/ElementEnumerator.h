// The IEnumSTATSTG of a storage. It remembers the last name that it gave, so the storage may change under it: elements
// that are destroyed do not come, new ones come where their name is still ahead.
#pragma once

#include "platform/Storage.h"
#include "platform/linux/storage/ElementState.h"

#include <memory>

namespace vx_storage {

void MakeEnumerator(std::shared_ptr<const StorageState> storage, IEnumSTATSTG** object);

}  // namespace vx_storage
