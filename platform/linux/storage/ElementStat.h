// Fills STATSTG, the same for every object that describes elements.
#pragma once

#include "platform/Storage.h"
#include "platform/WideText.h"
#include "platform/linux/storage/Node.h"

namespace vx_storage {

// A copy of a text that the receiver frees with CoTaskMemFree; null when memory is short.
LPOLESTR CopyTaskText(WideView text) noexcept;

// Describes an element. The name is left out with STATFLAG_NONAME, and null when it is empty.
// STG_E_INVALIDPOINTER, STG_E_INVALIDFLAG, E_OUTOFMEMORY.
[[nodiscard]] HRESULT DescribeNode(const Node& node, WideView name, DWORD mode, DWORD flags, STATSTG* stat) noexcept;

// The time now, as 100 ns steps since 1601.
FILETIME TimeNow() noexcept;

}  // namespace vx_storage
