#include "host/TempFolder.h"

#include "host/Failures.h"
#include "host/System.h"
#include "host/Text.h"

#include <array>
#include <cstdio>
#include <random>
#include <string>
#include <system_error>

namespace vxhost {

std::string UniqueName() {
    std::random_device random;
    std::array<char, 64> name;
    const int length = std::snprintf(name.data(), name.size(), "vxhost-%u-%08x%08x", ProcessId(), random(), random());
    return std::string(name.data(), static_cast<std::size_t>(length));
}

TempFolder::TempFolder(const std::filesystem::path& parent) {
    std::error_code error;
    std::filesystem::path path = std::filesystem::absolute(parent, error) / ('.' + UniqueName());
    if (!std::filesystem::create_directory(path, error)) {
        throw Failure(Status::NotOpened,
                      "No folder can be made in " + PathText(parent) + (error ? ": " + error.message() : std::string()),
                      "See whether the disk is full and the folder may be written to.");
    }
    std::filesystem::permissions(path, std::filesystem::perms::owner_all, error);
    m_path = std::move(path);
}

TempFolder::~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

void TempFolder::Empty() noexcept {
    std::error_code error;
    for (std::filesystem::directory_iterator at(m_path, error), end; !error && at != end; at.increment(error)) {
        std::error_code ignored;
        std::filesystem::remove_all(at->path(), ignored);
    }
}

}  // namespace vxhost
