// A consumer of named sections that is another process.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vx_testing {

// Whether another process finds a section of that name with exactly these bytes. On Linux the process opens the shared
// memory object by the documented name, without any function of ours. True, unasked, on Windows, where the system's own
// functions do what there is to be done.
bool ReadInAnotherProcess(const std::u16string& name, const std::vector<std::uint8_t>& expected);

}  // namespace vx_testing
