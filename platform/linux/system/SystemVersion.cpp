#include "platform/SystemVersion.h"

#include "platform/WideText.h"
#include "platform/linux/system/Failure.h"
#include "platform/linux/system/Utf8.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>
#include <fstream>
#include <string>
#include <string_view>

#include <sys/utsname.h>

namespace vx_system {

namespace {

// The first three numbers of a kernel's release: 6.1.0 of "6.1.0-18-amd64". Missing ones are 0.
std::array<DWORD, 3> ReleaseNumbers(std::string_view release) noexcept {
    std::array<DWORD, 3> numbers = {};
    const char* at = release.data();
    const char* end = at + release.size();
    for (DWORD& number : numbers) {
        const auto [behind, error] = std::from_chars(at, end, number);
        if (error != std::errc()) {
            break;
        }
        at = behind;
        if (at == end || *at++ != '.') {
            break;
        }
    }
    return numbers;
}

// The value of a line of os-release, written as a shell would read it: bare, or in quotes with backslashes.
std::string Unquote(std::string_view value) {
    const bool isQuoted = value.size() >= 2 && (value.front() == '"' || value.front() == '\'');
    if (!isQuoted) {
        return std::string(value);
    }
    const char quote = value.front();
    std::string text;
    for (std::size_t i = 1; i < value.size() && value[i] != quote; ++i) {
        if (quote == '"' && value[i] == '\\' && i + 1 < value.size()) {
            ++i;
        }
        text.push_back(value[i]);
    }
    return text;
}

// The distribution's name for people; empty when the system does not tell.
std::string DistributionName() {
    constexpr std::string_view kKey = "PRETTY_NAME=";
    for (const char* path : {"/etc/os-release", "/usr/lib/os-release"}) {
        std::ifstream file(path);
        for (std::string line; std::getline(file, line);) {
            if (line.starts_with(kKey)) {
                return Unquote(std::string_view(line).substr(kKey.size()));
            }
        }
    }
    return {};
}

void Describe(OSVERSIONINFOW& version) {
    utsname system = {};
    ::uname(&system);
    const auto [major, minor, build] = ReleaseNumbers(system.release);
    version.dwMajorVersion = major;
    version.dwMinorVersion = minor;
    version.dwBuildNumber = build;
    version.dwPlatformId = kPlatformLinux;

    const std::string distribution = DistributionName();
    const CStringW text = FromUtf8(distribution.empty() ? system.sysname : "Linux, " + distribution);
    const std::size_t length = std::min(text.size(), std::size(version.szCSDVersion) - 1);
    *std::copy_n(text.begin(), length, version.szCSDVersion) = 0;
}

}  // namespace

}  // namespace vx_system

BOOL GetVersionExW(OSVERSIONINFOW* version) noexcept {
    const DWORD size = version == nullptr ? 0 : version->dwOSVersionInfoSize;
    if (size != sizeof(OSVERSIONINFOW) && size != sizeof(OSVERSIONINFOEXW)) {
        return vx_system::FailWith(ERROR_INSUFFICIENT_BUFFER, FALSE);
    }
    std::memset(static_cast<void*>(version), 0, size);
    version->dwOSVersionInfoSize = size;
    if (size == sizeof(OSVERSIONINFOEXW)) {
        reinterpret_cast<OSVERSIONINFOEXW*>(version)->wProductType = VER_NT_WORKSTATION;
    }
    return vx_system::Guarded<BOOL>(FALSE, [&] {
        vx_system::Describe(*version);
        return TRUE;
    });
}
