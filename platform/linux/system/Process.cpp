#include "platform/Process.h"

#include <chrono>
#include <ctime>
#include <thread>

#include <unistd.h>

DWORD GetCurrentProcessId() noexcept {
    return static_cast<DWORD>(::getpid());
}

DWORD GetCurrentThreadId() noexcept {
    return static_cast<DWORD>(::gettid());
}

void Sleep(DWORD milliseconds) noexcept {
    if (milliseconds == 0) {
        std::this_thread::yield();
        return;
    }
    do {
        std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
    } while (milliseconds == INFINITE);
}

ULONGLONG GetTickCount64() noexcept {
    timespec now = {};
    ::clock_gettime(CLOCK_BOOTTIME, &now);
    return static_cast<ULONGLONG>(now.tv_sec) * 1'000 + static_cast<ULONGLONG>(now.tv_nsec) / 1'000'000;
}

HWND GetActiveWindow() noexcept {
    return nullptr;
}

HWND GetForegroundWindow() noexcept {
    return nullptr;
}
