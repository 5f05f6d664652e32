#include "platform/DurableFile.h"

#include "platform/linux/system/Failure.h"
#include "platform/linux/system/FileDescriptor.h"

#include <cerrno>
#include <cstdio>

#include <fcntl.h>
#include <unistd.h>

namespace vx_system {

namespace {

// 0, or what errno says.
int WriteAll(int file, std::span<const std::byte> bytes) noexcept {
    while (!bytes.empty()) {
        const ssize_t written = ::write(file, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written < 0) {
            return errno;
        }
        bytes = bytes.subspan(static_cast<std::size_t>(written));
    }
    return ::fsync(file) == 0 ? 0 : errno;
}

int WriteNewFile(const std::filesystem::path& path, std::span<const std::byte> bytes) noexcept {
    const FileDescriptor file(::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, 0600));
    return file ? WriteAll(file.Get(), bytes) : errno;
}

// The name is part of the folder, which has its own way to the disk. File systems that cannot flush a folder say so
// (EINVAL), and nothing can be done about it.
void FlushFolder(const std::filesystem::path& folder) noexcept {
    const FileDescriptor opened(::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (opened) {
        ::fsync(opened.Get());
    }
}

}  // namespace

}  // namespace vx_system

DWORD ReplaceFileContents(const std::filesystem::path& path, std::span<const std::byte> bytes) noexcept {
    return vx_system::Guarded<DWORD>(ERROR_NOT_ENOUGH_MEMORY, [&]() -> DWORD {
        std::filesystem::path temporary = path;
        temporary += ".new";
        int error = vx_system::WriteNewFile(temporary, bytes);
        if (error == 0 && ::rename(temporary.c_str(), path.c_str()) != 0) {
            error = errno;
        }
        if (error != 0) {
            ::unlink(temporary.c_str());
            return ErrorFromErrno(error);
        }
        vx_system::FlushFolder(path.parent_path());
        return ERROR_SUCCESS;
    });
}
