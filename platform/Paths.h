// Paths: the few Windows calls about folders, and our own conversions between UTF-16 text and std::filesystem::path.
// The functions that fill a buffer follow one rule: the result is the text's length without the terminator; when `size`
// WCHARs are too few it is the room needed with the terminator; 0 is failure, with the reason as last error.
// Any thread, but the current directory belongs to the whole process.
#pragma once

#include "platform/BaseTypes.h"
#include "platform/LastError.h"
#include "platform/WideText.h"

#include <filesystem>

// What stands between the parts of a path that this system's own functions give.
#ifdef _WIN32
inline constexpr WCHAR kPathSeparator = '\\';
#else
inline constexpr WCHAR kPathSeparator = '/';
#endif

// Wide text as a path and back, neither of which ever fails for what the text or the path holds. Whatever has no
// counterpart on the other side (an unpaired surrogate, a file name that is not UTF-8) becomes U+FFFD, so such a name
// does not find its file. So does a zero unit, which the system would take for the end of the name.
// Both throw std::bad_alloc only. Separators are left as they are.
[[nodiscard]] std::filesystem::path ToPath(WideView text);
[[nodiscard]] CStringW FromPath(const std::filesystem::path& path);

// The folder of the user's own settings; it need not exist. $VX_HOME, else on Linux $XDG_CONFIG_HOME/vx (when that is
// an absolute path), else ~/.config/vx; on Windows %APPDATA%\vx. Empty when the system names no home for the user.
[[nodiscard]] std::filesystem::path ConfigurationFolder();

#ifndef _WIN32

// The folder for temporary files, with a separator behind it; it need not exist. Linux: $TMPDIR when that is an
// absolute path, else /tmp.
DWORD GetTempPathW(DWORD size, LPWSTR buffer) noexcept;

// The short form of an existing path. Linux: there is none, so it is `path` as given; ERROR_FILE_NOT_FOUND (or what
// else the system says) when nothing is there. `buffer` may be `path` itself.
DWORD GetShortPathNameW(LPCWSTR path, LPWSTR buffer, DWORD size) noexcept;

// The process's current directory, absolute.
DWORD GetCurrentDirectoryW(DWORD size, LPWSTR buffer) noexcept;
BOOL SetCurrentDirectoryW(LPCWSTR path) noexcept;

#else

#include <algorithm>

inline std::filesystem::path ToPath(WideView text) {
    CStringW copy(text);
    std::replace(copy.begin(), copy.end(), WCHAR{0}, WCHAR{0xFFFD});
    return copy;
}

inline CStringW FromPath(const std::filesystem::path& path) {
    return path.native();
}

inline std::filesystem::path ConfigurationFolder() {
    const auto variable = [](LPCWSTR name) {
        CStringW value(GetEnvironmentVariableW(name, nullptr, 0), WCHAR{0});
        value.resize(GetEnvironmentVariableW(name, value.data(), static_cast<DWORD>(value.size())));
        return value;
    };
    if (CStringW own = variable("VX_HOME"_w); !own.empty()) {
        return own;
    }
    const CStringW settings = variable("APPDATA"_w);
    return settings.empty() ? std::filesystem::path() : std::filesystem::path(settings) / "vx";
}

#endif
