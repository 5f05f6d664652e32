// A lock that processes share: a file that one holder at a time has to itself. The system gives the lock back when the
// holder's process ends, however it ends. Our own; neither system's standard library has one.
//
// Any thread. Two locks of one process on one file exclude each other too. Only those who take the lock are kept out:
// the file itself, which stays empty and is never removed, guards nothing.
// Linux: the lock belongs to the open file (flock), so a child made by fork while it is held holds it too.
#pragma once

#include "platform/BaseTypes.h"
#include "platform/LastError.h"
#include "platform/Process.h"

#include <filesystem>
#include <utility>

class FileLock {
public:
    FileLock() noexcept = default;
    FileLock(FileLock&& other) noexcept : m_file(std::exchange(other.m_file, kNoFile)) {}
    FileLock& operator=(FileLock&& other) noexcept {
        std::swap(m_file, other.m_file);
        return *this;
    }
    ~FileLock() { Release(); }

    // Takes the lock of `file`, which is made when it is not there; waits for other holders at most that long. Gives
    // ERROR_SUCCESS; ERROR_TIMEOUT; or why the file cannot be had: ERROR_FILE_NOT_FOUND or ERROR_PATH_NOT_FOUND when
    // its folder is not there, ERROR_ACCESS_DENIED. A lock that is held already is released first.
    [[nodiscard]] DWORD Acquire(const std::filesystem::path& file, DWORD milliseconds) noexcept;

    void Release() noexcept;

    [[nodiscard]] bool IsHeld() const noexcept { return m_file != kNoFile; }

private:
    using File = LONG_PTR;  // the system's descriptor or handle
    static constexpr File kNoFile = -1;

    // One attempt: ERROR_LOCK_VIOLATION while another has the lock.
    DWORD Try(const std::filesystem::path& file) noexcept;

    File m_file = kNoFile;
};

inline DWORD FileLock::Acquire(const std::filesystem::path& file, DWORD milliseconds) noexcept {
    static constexpr DWORD kLongestPause = 20;
    Release();
    const ULONGLONG start = GetTickCount64();
    for (DWORD pause = 1;; pause = pause < kLongestPause ? pause * 2 : kLongestPause) {
        const DWORD result = Try(file);
        if (result != ERROR_LOCK_VIOLATION) {
            return result;
        }
        if (GetTickCount64() - start >= milliseconds) {
            return ERROR_TIMEOUT;
        }
        Sleep(pause);
    }
}

#ifdef _WIN32

inline DWORD FileLock::Try(const std::filesystem::path& file) noexcept {
    const HANDLE opened =
        CreateFileW(file.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                    nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (opened == INVALID_HANDLE_VALUE) {
        return GetLastError();
    }
    OVERLAPPED start{};
    if (LockFileEx(opened, LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0, &start) != 0) {
        m_file = reinterpret_cast<File>(opened);
        return ERROR_SUCCESS;
    }
    const DWORD error = GetLastError();
    CloseHandle(opened);
    return error == ERROR_IO_PENDING ? ERROR_LOCK_VIOLATION : error;
}

inline void FileLock::Release() noexcept {
    if (IsHeld()) {
        CloseHandle(reinterpret_cast<HANDLE>(std::exchange(m_file, kNoFile)));
    }
}

#endif
