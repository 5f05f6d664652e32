// The running system's version.
#pragma once

#include "platform/BaseTypes.h"
#include "platform/LastError.h"

#ifndef _WIN32

struct OSVERSIONINFOW {
    DWORD dwOSVersionInfoSize;  // set by the caller: which of the two structures this is
    DWORD dwMajorVersion;
    DWORD dwMinorVersion;
    DWORD dwBuildNumber;
    DWORD dwPlatformId;
    WCHAR szCSDVersion[128];
};

struct OSVERSIONINFOEXW {
    DWORD dwOSVersionInfoSize;
    DWORD dwMajorVersion;
    DWORD dwMinorVersion;
    DWORD dwBuildNumber;
    DWORD dwPlatformId;
    WCHAR szCSDVersion[128];
    WORD wServicePackMajor;
    WORD wServicePackMinor;
    WORD wSuiteMask;
    BYTE wProductType;
    BYTE wReserved;
};
static_assert(sizeof(OSVERSIONINFOW) == 276 && sizeof(OSVERSIONINFOEXW) == 284);

inline constexpr DWORD VER_PLATFORM_WIN32s = 0;
inline constexpr DWORD VER_PLATFORM_WIN32_WINDOWS = 1;
inline constexpr DWORD VER_PLATFORM_WIN32_NT = 2;
inline constexpr BYTE VER_NT_WORKSTATION = 1;
inline constexpr BYTE VER_NT_SERVER = 3;
inline constexpr WORD VER_SUITE_PERSONAL = 0x0200;

// dwPlatformId on Linux: none of Windows' own numbers, so that nothing takes this system for a Windows.
inline constexpr DWORD kPlatformLinux = 4;

// Fills `*version`, which is one of the two structures by its size. FALSE with ERROR_INSUFFICIENT_BUFFER for any other
// size. Linux: major, minor and build are the kernel's first three numbers, szCSDVersion is "Linux, " and the
// distribution's name for people ("Linux, Debian GNU/Linux 12 (bookworm)"), cut to fit; the service pack is 0.0 and the
// product a workstation without suites.
BOOL GetVersionExW(OSVERSIONINFOW* version) noexcept;

#endif
