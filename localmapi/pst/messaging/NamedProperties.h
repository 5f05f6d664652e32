// Which property ids of a file stand for which names: [MS-PST] 2.4.7. One thread at a time.
#pragma once

#include "localmapi/base/Diagnostics.h"
#include "localmapi/base/PropertyName.h"
#include "localmapi/pst/ltp/PropertyContext.h"

#include <vector>

namespace localmapi::pst {

// The names in a file's map, the properties of node 0x61: by id, each id once. What cannot be read, and entries that
// contradict themselves, are reported and left out.
std::vector<NamedId> LoadNames(PropertyContext& map, Diagnostics& problems);

}  // namespace localmapi::pst
