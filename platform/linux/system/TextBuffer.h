// The rule by which Windows' functions hand out a text in a caller's buffer.
#pragma once

#include "platform/WideText.h"

#include <algorithm>

namespace vx_system {

// Copies `text` and a terminator and gives its length; when `size` WCHARs are too few, gives the room needed with the
// terminator and leaves `buffer` alone.
inline DWORD CopyText(WideView text, LPWSTR buffer, DWORD size) noexcept {
    const auto length = static_cast<DWORD>(text.size());
    if (buffer == nullptr || length >= size) {
        return length + 1;
    }
    *std::copy(text.begin(), text.end(), buffer) = 0;
    return length;
}

}  // namespace vx_system
