// OpenFileReadOnly: the only place of the file readers that knows which system it runs on.
#include "localmapi/base/ByteSource.h"
#include "localmapi/base/Format.h"
#include "platform/BaseTypes.h"

#include <algorithm>
#include <string>
#include <utility>

#ifndef _WIN32
#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace localmapi {

namespace {

Error PastEnd(std::uint64_t offset) {
    return Error{ErrorCode::ReadFailed, "the file ends before " + Hex(offset) + ": it has shrunk since it was opened"};
}

#ifdef _WIN32

Error SystemError(DWORD code, const char* action) {
    ErrorCode kind = ErrorCode::ReadFailed;
    switch (code) {
        case ERROR_FILE_NOT_FOUND:
        case ERROR_PATH_NOT_FOUND:
        case ERROR_INVALID_NAME: kind = ErrorCode::NotFound; break;
        case ERROR_SHARING_VIOLATION:
        case ERROR_LOCK_VIOLATION: kind = ErrorCode::Busy; break;
        case ERROR_ACCESS_DENIED: kind = ErrorCode::AccessDenied; break;
        default: break;
    }
    return Error{kind, std::string(action) + " (system error " + std::to_string(code) + ")"};
}

// Reads through an OVERLAPPED offset on an ordinary handle, so that no file pointer is shared or moved.
class WindowsFile final : public ByteSource {
public:
    explicit WindowsFile(HANDLE file) noexcept : m_file(file) {}
    WindowsFile(const WindowsFile&) = delete;
    WindowsFile& operator=(const WindowsFile&) = delete;
    ~WindowsFile() override { CloseHandle(m_file); }

    // The part of opening that needs the handle, after which it is owned whatever happens.
    Status Inspect() {
        LARGE_INTEGER size{};
        if (GetFileType(m_file) != FILE_TYPE_DISK) {
            return Error{ErrorCode::Unsupported, "this is not a regular file"};
        }
        if (GetFileSizeEx(m_file, &size) == 0) {
            return SystemError(GetLastError(), "the file's size cannot be read");
        }
        m_size = static_cast<std::uint64_t>(size.QuadPart);
        return {};
    }

    std::uint64_t Size() const noexcept override { return m_size; }

    Status ReadAt(std::uint64_t offset, std::span<std::byte> out) override {
        while (!out.empty()) {
            OVERLAPPED position{};
            position.Offset = static_cast<DWORD>(offset);
            position.OffsetHigh = static_cast<DWORD>(offset >> 32);
            const DWORD wanted = static_cast<DWORD>(std::min<std::size_t>(out.size(), 1U << 30));
            DWORD got = 0;
            if (ReadFile(m_file, out.data(), wanted, &got, &position) == 0 && GetLastError() != ERROR_HANDLE_EOF) {
                return SystemError(GetLastError(), "the file cannot be read");
            }
            if (got == 0) {
                return PastEnd(offset + out.size());
            }
            out = out.subspan(got);
            offset += got;
        }
        return {};
    }

private:
    HANDLE m_file;
    std::uint64_t m_size = 0;
};

#else

Error SystemError(int code, const char* action) {
    ErrorCode kind = ErrorCode::ReadFailed;
    switch (code) {
        case ENOENT:
        case ENOTDIR: kind = ErrorCode::NotFound; break;
        case ETXTBSY:
        case EBUSY: kind = ErrorCode::Busy; break;
        case EACCES:
        case EPERM: kind = ErrorCode::AccessDenied; break;
        default: break;
    }
    return Error{kind, std::string(action) + " (system error " + std::to_string(code) + ")"};
}

class PosixFile final : public ByteSource {
public:
    explicit PosixFile(int file) noexcept : m_file(file) {}
    PosixFile(const PosixFile&) = delete;
    PosixFile& operator=(const PosixFile&) = delete;
    ~PosixFile() override { close(m_file); }

    // The part of opening that needs the descriptor, after which it is owned whatever happens.
    Status Inspect() {
        struct stat facts {};
        if (fstat(m_file, &facts) != 0) {
            return SystemError(errno, "the file's size cannot be read");
        }
        if (!S_ISREG(facts.st_mode)) {
            return Error{ErrorCode::Unsupported, "this is not a regular file"};
        }
        m_size = static_cast<std::uint64_t>(facts.st_size);
        return {};
    }

    std::uint64_t Size() const noexcept override { return m_size; }

    Status ReadAt(std::uint64_t offset, std::span<std::byte> out) override {
        while (!out.empty()) {
            const ssize_t got = pread(m_file, out.data(), out.size(), static_cast<off_t>(offset));
            if (got < 0 && errno == EINTR) {
                continue;
            }
            if (got < 0) {
                return SystemError(errno, "the file cannot be read");
            }
            if (got == 0) {
                return PastEnd(offset + out.size());
            }
            out = out.subspan(static_cast<std::size_t>(got));
            offset += static_cast<std::uint64_t>(got);
        }
        return {};
    }

private:
    int m_file;
    std::uint64_t m_size = 0;
};

static_assert(sizeof(off_t) == 8, "files beyond 4 GiB are read");

#endif

}  // namespace

Result<std::unique_ptr<ByteSource>> OpenFileReadOnly(const std::filesystem::path& path) {
#ifdef _WIN32
    const HANDLE file = CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                    nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL | FILE_FLAG_RANDOM_ACCESS, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return SystemError(GetLastError(), "the file cannot be opened");
    }
    auto opened = std::make_unique<WindowsFile>(file);
#else
    // O_NONBLOCK keeps a named pipe from holding the caller up until it turns out not to be a regular file.
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
    if (file < 0) {
        return SystemError(errno, "the file cannot be opened");
    }
    auto opened = std::make_unique<PosixFile>(file);
#endif
    VX_TRY(opened->Inspect());
    return std::unique_ptr<ByteSource>(std::move(opened));
}

}  // namespace localmapi
