#include "tests/provider/mailbox/SectionReader.h"

#include <cstdio>
#include <cstring>
#include <filesystem>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vx_testing {

namespace {

// The object's name, of a section's name that is not too long for it.
std::string ObjectName(const std::u16string& section) {
    std::string name = "/vx-";
    for (const char8_t byte : std::filesystem::path(section).u8string()) {
        const auto unit = static_cast<unsigned char>(byte);
        const bool isPlain = (unit >= '0' && unit <= '9') || (unit >= 'A' && unit <= 'Z')
                             || (unit >= 'a' && unit <= 'z') || unit == '-' || unit == '.' || unit == '_';
        char escaped[4];
        std::snprintf(escaped, sizeof escaped, "%%%02X", static_cast<unsigned>(unit));
        name += isPlain ? std::string(1, static_cast<char>(unit)) : std::string(escaped);
    }
    return name;
}

bool Matches(const std::string& object, const std::vector<std::uint8_t>& expected) {
    const int descriptor = ::shm_open(object.c_str(), O_RDONLY, 0);
    struct stat facts = {};
    if (descriptor < 0 || ::fstat(descriptor, &facts) != 0
        || static_cast<std::size_t>(facts.st_size) != expected.size()) {
        return false;
    }
    const void* bytes = ::mmap(nullptr, expected.size(), PROT_READ, MAP_SHARED, descriptor, 0);
    return bytes != MAP_FAILED && std::memcmp(bytes, expected.data(), expected.size()) == 0;
}

}  // namespace

bool ReadInAnotherProcess(const std::u16string& name, const std::vector<std::uint8_t>& expected) {
    const std::string object = ObjectName(name);
    std::fflush(nullptr);
    const pid_t child = ::fork();
    if (child == 0) {
        ::_exit(Matches(object, expected) ? 0 : 1);
    }
    int status = 0;
    return ::waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

}  // namespace vx_testing
