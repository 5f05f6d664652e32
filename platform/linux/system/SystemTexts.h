// The system's English texts for its error numbers.
#pragma once

#include "platform/BaseTypes.h"

#include <string_view>

namespace vx_system {

// The text for a Win32 number, an HRESULT that carries one or one of COM's general codes, with its line break, as a
// message for FormatMessageW: it may hold inserts. Empty when there is none. ASCII.
[[nodiscard]] std::string_view SystemText(DWORD code) noexcept;

}  // namespace vx_system
