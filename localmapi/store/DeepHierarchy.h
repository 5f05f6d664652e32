// All folders below a folder as one table: CONVENIENT_DEPTH.
#pragma once

#include "localmapi/model/StoreSource.h"

#include <memory>

namespace localmapi {

// Parents before their children, PR_DEPTH 1 for those right below `top`. Each folder once, however damaged the tree is;
// at most kDeepestFolder levels.
inline constexpr LONG kDeepestFolder = 256;
std::unique_ptr<RowSource> DeepHierarchy(StoreSource& store, FolderSource& top);

}  // namespace localmapi
