// The directory of a compound file as a tree of elements, [MS-CFB] 2.6. Tolerant: colours are not looked at, elements
// may be in any order, and a link that makes no sense (to nothing, to an unused entry, to an element that already has a
// place) is left out with what hangs on it alone.
#pragma once

#include "platform/linux/storage/CompoundReader.h"
#include "platform/linux/storage/Node.h"

#include <memory>

namespace vx_storage {

// Reads the tree. STG_E_DOCFILETOOLARGE for more than kMaxElements elements.
[[nodiscard]] HRESULT ReadDirectory(const std::shared_ptr<CompoundReader>& file, std::shared_ptr<Node>& root);

}  // namespace vx_storage
