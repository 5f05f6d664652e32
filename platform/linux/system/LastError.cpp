#include "platform/LastError.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>

namespace {

thread_local DWORD t_lastError = ERROR_SUCCESS;

struct ErrnoRow {
    int error;
    DWORD code;
};

constexpr auto kErrnoRows = std::to_array<ErrnoRow>({
    {0, ERROR_SUCCESS},
    {EACCES, ERROR_ACCESS_DENIED},
    {EPERM, ERROR_ACCESS_DENIED},
    {EISDIR, ERROR_ACCESS_DENIED},
    {EAGAIN, ERROR_SHARING_VIOLATION},
    {ETXTBSY, ERROR_SHARING_VIOLATION},
    {EBADF, ERROR_INVALID_HANDLE},
    {EBUSY, ERROR_BUSY},
    {ECANCELED, ERROR_CANCELLED},
    {EDEADLK, ERROR_LOCK_VIOLATION},
    {EDQUOT, ERROR_DISK_FULL},
    {ENOSPC, ERROR_DISK_FULL},
    {EEXIST, ERROR_FILE_EXISTS},
    {EFAULT, ERROR_INVALID_ADDRESS},
    {EFBIG, ERROR_FILE_TOO_LARGE},
    {EOVERFLOW, ERROR_FILE_TOO_LARGE},
    {EINVAL, ERROR_INVALID_PARAMETER},
    {EIO, ERROR_READ_FAULT},
    {ELOOP, ERROR_CANT_RESOLVE_FILENAME},
    {EMFILE, ERROR_TOO_MANY_OPEN_FILES},
    {ENFILE, ERROR_TOO_MANY_OPEN_FILES},
    {ENAMETOOLONG, ERROR_FILENAME_EXCED_RANGE},
    {ENOENT, ERROR_FILE_NOT_FOUND},
    {ENOTDIR, ERROR_PATH_NOT_FOUND},
    {ENOEXEC, ERROR_BAD_EXE_FORMAT},
    {ENOMEM, ERROR_NOT_ENOUGH_MEMORY},
    {ENOSYS, ERROR_CALL_NOT_IMPLEMENTED},
    {ENOTEMPTY, ERROR_DIR_NOT_EMPTY},
    {ENOTSUP, ERROR_NOT_SUPPORTED},
    {EPIPE, ERROR_BROKEN_PIPE},
    {EROFS, ERROR_WRITE_PROTECT},
    {ESPIPE, ERROR_SEEK},
    {ETIMEDOUT, ERROR_TIMEOUT},
    {EXDEV, ERROR_NOT_SAME_DEVICE},
});

}  // namespace

DWORD GetLastError() noexcept {
    return t_lastError;
}

void SetLastError(DWORD code) noexcept {
    t_lastError = code;
}

DWORD ErrorFromErrno(int error) noexcept {
    const auto row = std::find_if(kErrnoRows.begin(), kErrnoRows.end(),
                                  [error](const ErrnoRow& candidate) { return candidate.error == error; });
    return row == kErrnoRows.end() ? ERROR_GEN_FAILURE : row->code;
}

HLOCAL LocalAlloc(UINT flags, SIZE_T bytes) noexcept {
    if ((flags & ~LPTR) != 0) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    const SIZE_T room = std::max<SIZE_T>(bytes, 1);  // an empty block is a block, and null is a failure
    const HLOCAL block = (flags & LMEM_ZEROINIT) != 0 ? std::calloc(1, room) : std::malloc(room);
    if (block == nullptr) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    }
    return block;
}

HLOCAL LocalFree(HLOCAL block) noexcept {
    std::free(block);
    return nullptr;
}
