#include "platform/Paths.h"

#include "platform/linux/system/Environment.h"
#include "platform/linux/system/Failure.h"
#include "platform/linux/system/TextBuffer.h"
#include "platform/linux/system/Utf8.h"

#include <algorithm>
#include <cerrno>
#include <vector>

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vx_system {

namespace {

// $HOME, else what the user database says; empty when neither knows.
std::filesystem::path HomeFolder() {
    if (auto home = AbsoluteVariable("HOME"); !home.empty()) {
        return home;
    }
    std::vector<char> buffer(16'384);
    passwd entry = {};
    passwd* found = nullptr;
    const int error = ::getpwuid_r(::geteuid(), &entry, buffer.data(), buffer.size(), &found);
    return error == 0 && found != nullptr && found->pw_dir != nullptr ? found->pw_dir : "";
}

}  // namespace

}  // namespace vx_system

std::filesystem::path ToPath(WideView text) {
    CStringW copy(text);
    std::replace(copy.begin(), copy.end(), WCHAR{0}, WCHAR{0xFFFD});
    return vx_system::ToUtf8(copy);
}

CStringW FromPath(const std::filesystem::path& path) {
    return vx_system::FromUtf8(path.native());
}

std::filesystem::path ConfigurationFolder() {
    if (auto own = vx_system::Variable("VX_HOME"); !own.empty()) {
        return own;
    }
    if (const auto settings = vx_system::AbsoluteVariable("XDG_CONFIG_HOME"); !settings.empty()) {
        return settings / "vx";
    }
    const std::filesystem::path home = vx_system::HomeFolder();
    return home.empty() ? home : home / ".config" / "vx";
}

DWORD GetTempPathW(DWORD size, LPWSTR buffer) noexcept {
    return vx_system::Guarded<DWORD>(0, [&] {
        std::filesystem::path folder = vx_system::AbsoluteVariable("TMPDIR");
        folder = folder.empty() ? "/tmp" : folder;
        return vx_system::CopyText(FromPath(folder / ""), buffer, size);
    });
}

DWORD GetShortPathNameW(LPCWSTR path, LPWSTR buffer, DWORD size) noexcept {
    if (path == nullptr) {
        return vx_system::FailWith(ERROR_INVALID_PARAMETER, 0U);
    }
    return vx_system::Guarded<DWORD>(0, [&] {
        const CStringW copy(path);  // `buffer` may lie over it
        struct stat found = {};
        return ::stat(ToPath(copy).c_str(), &found) == 0 ? vx_system::CopyText(copy, buffer, size)
                                                         : vx_system::FailWith(ErrorFromErrno(errno), 0U);
    });
}

DWORD GetCurrentDirectoryW(DWORD size, LPWSTR buffer) noexcept {
    return vx_system::Guarded<DWORD>(0, [&] {
        std::error_code error;
        const std::filesystem::path current = std::filesystem::current_path(error);
        return error ? vx_system::FailWith(ErrorFromErrno(error.value()), 0U)
                     : vx_system::CopyText(FromPath(current), buffer, size);
    });
}

BOOL SetCurrentDirectoryW(LPCWSTR path) noexcept {
    if (path == nullptr || path[0] == 0) {
        return vx_system::FailWith(path == nullptr ? ERROR_INVALID_PARAMETER : ERROR_INVALID_NAME, FALSE);
    }
    return vx_system::Guarded<BOOL>(FALSE, [&] {
        if (::chdir(ToPath(path).c_str()) == 0) {
            return TRUE;
        }
        return vx_system::FailWith(errno == ENOTDIR ? ERROR_DIRECTORY : ErrorFromErrno(errno), FALSE);
    });
}
