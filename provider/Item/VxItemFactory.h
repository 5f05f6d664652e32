// The items' side of ItemFactory.h: what the tree of folders makes items with.
#pragma once

#include "provider/ItemFactory.h"

// The factory of the items of this room; it has no state. For CVxDomain's constructor.
const CVxItemFactory& VxItems() noexcept;
