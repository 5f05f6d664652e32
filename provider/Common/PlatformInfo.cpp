#include "provider/Common/PlatformInfo.h"

#include "provider/Common/Format.h"

namespace Vx {

namespace {

const WCHAR* NameOfNt(const OSVERSIONINFOEXW& version, BYTE productType, WORD suites) noexcept {
    const bool isServer = productType == VER_NT_SERVER;
    if (version.dwMajorVersion == 3) {
        return "Windows NT 3.51"_w;
    }
    if (version.dwMajorVersion == 4) {
        return "Windows NT 4.0"_w;
    }
    if (version.dwMajorVersion == 5 && version.dwMinorVersion == 0) {
        return isServer ? static_cast<const WCHAR*>("Windows 2000 Server"_w) : "Windows 2000"_w;
    }
    if (version.dwMajorVersion == 5 && version.dwMinorVersion == 1) {
        if (isServer) {
            return "Windows .NET Server"_w;
        }
        if (productType == VER_NT_WORKSTATION) {
            return (suites & VER_SUITE_PERSONAL) != 0 ? static_cast<const WCHAR*>("Windows XP Home"_w)
                                                      : "Windows XP Professional"_w;
        }
    }
    return "Windows"_w;
}

const WCHAR* NameOfWindows9x(const OSVERSIONINFOEXW& version) noexcept {
    switch (version.dwMinorVersion) {
        case 0: return "Windows 95"_w;
        case 10: return "Windows 98"_w;
        case 90: return "Windows Me"_w;
        default: return "Windows"_w;
    }
}

const WCHAR* NameOf(const OSVERSIONINFOEXW& version, bool extended) noexcept {
    switch (version.dwPlatformId) {
        case VER_PLATFORM_WIN32_NT:
            return NameOfNt(version, extended ? version.wProductType : BYTE{0},
                            extended ? version.wSuiteMask : WORD{0});
        case VER_PLATFORM_WIN32_WINDOWS: return NameOfWindows9x(version);
        case VER_PLATFORM_WIN32s: return "Win32s on Windows 3.1"_w;
        default: return "Windows"_w;
    }
}

}  // namespace

CStringW GetPlatformInfo() {
    OSVERSIONINFOEXW version = {};
    for (const bool extended : {true, false}) {
        version.dwOSVersionInfoSize = extended ? sizeof(OSVERSIONINFOEXW) : sizeof(OSVERSIONINFOW);
        if (GetVersionExW(reinterpret_cast<OSVERSIONINFOW*>(&version))) {
            return DescribePlatform(version, extended);
        }
    }
    return {};
}

CStringW DescribePlatform(const OSVERSIONINFOEXW& version, bool extended) {
    CStringW line =
        FormatString("OS Version: %s %d.%d (Build %d) %s"_w, NameOf(version, extended), version.dwMajorVersion,
                     version.dwMinorVersion, version.dwBuildNumber & 0xFFFF, version.szCSDVersion);
    if (extended) {
        line += FormatString(", Service Pack Version: %d.%d"_w, version.wServicePackMajor, version.wServicePackMinor);
    }
    return line;
}

}  // namespace Vx
