// Counts what a program has allocated and not yet freed, for tests of how much memory an operation takes. Linking the
// target puts counting ones in place of the global operators new and delete. One thread.
#pragma once

#include <cstddef>

namespace counted_memory {

// Bytes that are allocated now.
std::size_t Live() noexcept;

// The most since ResetHighest.
std::size_t Highest() noexcept;
void ResetHighest() noexcept;

}  // namespace counted_memory
