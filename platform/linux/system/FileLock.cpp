#include "platform/FileLock.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vx_system {

namespace {

// Locks an open file that is still the one of that name: were it removed meanwhile, the next one to come would lock
// another.
DWORD LockOpenFile(int opened, const std::filesystem::path& file) noexcept {
    if (::flock(opened, LOCK_EX | LOCK_NB) != 0) {
        return errno == EWOULDBLOCK || errno == EINTR ? ERROR_LOCK_VIOLATION : ErrorFromErrno(errno);
    }
    struct stat locked = {};
    struct stat named = {};
    const bool isSame = ::fstat(opened, &locked) == 0 && ::stat(file.c_str(), &named) == 0
                        && locked.st_ino == named.st_ino && locked.st_dev == named.st_dev;
    return isSame ? ERROR_SUCCESS : ERROR_LOCK_VIOLATION;
}

}  // namespace

}  // namespace vx_system

DWORD FileLock::Try(const std::filesystem::path& file) noexcept {
    const int opened = ::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0600);
    if (opened < 0) {
        return ErrorFromErrno(errno);
    }
    const DWORD result = vx_system::LockOpenFile(opened, file);
    if (result == ERROR_SUCCESS) {
        m_file = opened;
    } else {
        ::close(opened);
    }
    return result;
}

void FileLock::Release() noexcept {
    if (IsHeld()) {
        ::close(static_cast<int>(std::exchange(m_file, kNoFile)));
    }
}
