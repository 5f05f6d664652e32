// Files that are replaced as a whole, so that a reader, a crash or a power failure finds the old contents or the new
// ones and never a part. Our own; neither system's standard library has it.
#pragma once

#include "platform/BaseTypes.h"
#include "platform/LastError.h"
#include "platform/Process.h"

#include <cstddef>
#include <filesystem>
#include <span>

// Puts `bytes` in the place of the file `path`, which need not exist; its folder must. When it returns ERROR_SUCCESS
// the new contents have reached the disk, as far as the system can tell. After a failure (ERROR_ACCESS_DENIED,
// ERROR_DISK_FULL, ERROR_PATH_NOT_FOUND, ...) the file is what it was. Meanwhile `path` + ".new" is written, which stays
// behind when the process is killed and is overwritten by the next call. One caller at a time for each path; readers at
// any time. A new file is the user's own (Linux: mode 0600).
[[nodiscard]] DWORD ReplaceFileContents(const std::filesystem::path& path, std::span<const std::byte> bytes) noexcept;

#ifdef _WIN32

namespace vx_durable_file {

inline DWORD WriteAll(HANDLE file, std::span<const std::byte> bytes) noexcept {
    while (!bytes.empty()) {
        const DWORD wanted = bytes.size() < (1U << 30) ? static_cast<DWORD>(bytes.size()) : 1U << 30;
        DWORD written = 0;
        if (WriteFile(file, bytes.data(), wanted, &written, nullptr) == 0) {
            return GetLastError();
        }
        bytes = bytes.subspan(written);
    }
    return FlushFileBuffers(file) != 0 ? ERROR_SUCCESS : GetLastError();
}

// A program that has the old file open for a moment (a reader, a virus scanner) makes the exchange fail.
inline DWORD MoveOver(LPCWSTR from, LPCWSTR to) noexcept {
    static constexpr DWORD kPause = 10;
    for (int attempts = 200;; --attempts) {
        if (MoveFileExW(from, to, MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != 0) {
            return ERROR_SUCCESS;
        }
        const DWORD error = GetLastError();
        if ((error != ERROR_ACCESS_DENIED && error != ERROR_SHARING_VIOLATION) || attempts == 0) {
            return error;
        }
        Sleep(kPause);
    }
}

}  // namespace vx_durable_file

inline DWORD ReplaceFileContents(const std::filesystem::path& path, std::span<const std::byte> bytes) noexcept {
    try {
        std::filesystem::path temporary = path;
        temporary += ".new";
        const HANDLE file =
            CreateFileW(temporary.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
        if (file == INVALID_HANDLE_VALUE) {
            return GetLastError();
        }
        DWORD result = vx_durable_file::WriteAll(file, bytes);
        CloseHandle(file);
        if (result == ERROR_SUCCESS) {
            result = vx_durable_file::MoveOver(temporary.c_str(), path.c_str());
        }
        if (result != ERROR_SUCCESS) {
            DeleteFileW(temporary.c_str());
        }
        return result;
    } catch (const std::exception&) {
        return ERROR_NOT_ENOUGH_MEMORY;
    }
}

#endif
