// The process, its threads and waiting.
#pragma once

#include "platform/BaseTypes.h"

#ifndef _WIN32

inline constexpr DWORD INFINITE = 0xFFFFFFFF;

[[nodiscard]] DWORD GetCurrentProcessId() noexcept;

// The calling thread's number, as the system's own tools show it.
[[nodiscard]] DWORD GetCurrentThreadId() noexcept;

// Blocks the calling thread for at least that time; 0 only lets others run, INFINITE never returns.
void Sleep(DWORD milliseconds) noexcept;

// Milliseconds since an unspecified start, never going back; on Linux the time that the system slept counts too.
[[nodiscard]] ULONGLONG GetTickCount64() noexcept;

// The window that a dialog of this thread would belong to. Linux: there is none, always null.
[[nodiscard]] HWND GetActiveWindow() noexcept;

// The window that the user works with, of whatever process. Linux: there is none, always null.
[[nodiscard]] HWND GetForegroundWindow() noexcept;

#endif
