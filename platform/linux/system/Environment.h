// Environment variables that hold paths. Reading them is safe while no thread changes the environment.
#pragma once

#include <cstdlib>
#include <filesystem>

namespace vx_system {

// Empty when the variable is not set. Not read in a program that runs with more rights than its user.
inline std::filesystem::path Variable(const char* name) {
    const char* value = ::secure_getenv(name);
    return value == nullptr ? "" : value;
}

// The same for a path that must not depend on the current directory: a relative one counts as not set.
inline std::filesystem::path AbsoluteVariable(const char* name) {
    std::filesystem::path value = Variable(name);
    return value.is_absolute() ? value : std::filesystem::path();
}

}  // namespace vx_system
