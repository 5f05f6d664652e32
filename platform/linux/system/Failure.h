// How this part's functions fail: the reason as last error, and no exception ever out of them.
#pragma once

#include "platform/LastError.h"

#include <exception>

namespace vx_system {

// Leaves the reason as last error and gives `result`.
template <typename Result>
Result FailWith(DWORD code, Result result) noexcept {
    SetLastError(code);
    return result;
}

// Gives what `body` gives, or `failure` when it throws: of what these bodies do, only allocating can.
template <typename Result, typename Body>
Result Guarded(Result failure, Body&& body) noexcept {
    try {
        return body();
    } catch (const std::exception&) {
        return FailWith(ERROR_NOT_ENOUGH_MEMORY, failure);
    }
}

}  // namespace vx_system
