// Where Windows' pages differ from the C library's sets of the same name.
#pragma once

#include "platform/linux/text/PageMapping.h"

namespace vx_text {

// Lays the differences over `mapping`, which is the C library's, and builds its reverse. `preferred` is BuildReverse's.
void FinishAsWindows(UINT page, PageMapping& mapping, const std::function<std::uint16_t(WCHAR)>& preferred);

}  // namespace vx_text
