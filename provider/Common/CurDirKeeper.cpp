#include "provider/Common/CurDirKeeper.h"

#include "platform/Paths.h"
#include "provider/Common/Log.h"
#include "provider/Common/StringHelpers.h"

#include <iterator>

namespace {

constexpr auto& kSourcePath = "..\\Common\\CurDirKeeper.cpp"_w;

// The runs of tabs and blanks in these texts are part of them: logs are searched for them as they are.
constexpr auto& kCannotSave =
    "CCurrDirKeeper::CCurrDirKeeper(): GetCurrentDirectory() "
    "\t\t\t"
    "            failed!"_w;
constexpr auto& kNothingToRestore =
    "CCurrDirKeeper::Restore(): current directory already "
    "\t\t\t\t\t\t\t\t"
    " restored and no current directory is saved to restore it!"_w;
constexpr auto& kNothingToCheck =
    "%sCCurrDirKeeper::Check(): current directory already "
    "\t\t\t\t\t\t\t\t"
    " restored and no current directory is saved to check against!"_w;
constexpr auto& kCannotCheck = "%sCCurrDirKeeper::Check(): GetCurrentDirectory() failed!"_w;
constexpr auto& kHasChanged =
    "%sCCurrDirKeeper::Check(): current directory has changed: GetCurrentDirectory() returned '%s', saved current "
    "\t\t\t\t\t\t\t"
    " directory is '%s'!"_w;
constexpr auto& kHasNotChanged =
    "%sCCurrDirKeeper::Check(): current directory has not "
    "\t\t\t\t\t\t\t\t\t\t"
    " changed."_w;

// The current directory, terminated; false, and empty, when it cannot be had or does not fit.
template <std::size_t N>
bool ReadCurrentDirectory(WCHAR (&buffer)[N]) noexcept {
    const DWORD length = GetCurrentDirectory(static_cast<DWORD>(N), buffer);
    if (length == 0 || length >= N) {
        buffer[0] = 0;
        return false;
    }
    return true;
}

}  // namespace

CCurrDirKeeper::CCurrDirKeeper() noexcept {
    if (!ReadCurrentDirectory(m_saved)) {
        VX_LOG('E') << Vx::LogMsg(kCannotSave);
    }
}

void CCurrDirKeeper::Restore() noexcept {
    if (m_saved[0] == 0) {
        VX_LOG('E') << Vx::LogMsg(kNothingToRestore);
        return;
    }
    SetCurrentDirectory(m_saved);
    m_saved[0] = 0;
}

void CCurrDirKeeper::Check(const WCHAR* prefix) const noexcept {
    if (m_saved[0] == 0) {
        VX_LOG('E') << Vx::LogMsg(kNothingToCheck, prefix);
        return;
    }
    WCHAR current[kSize];
    if (!ReadCurrentDirectory(current)) {
        VX_LOG('E') << Vx::LogMsg(kCannotCheck, prefix);
    } else if (EqualIgnoringAsciiCase(current, m_saved)) {
        VX_LOG('D') << Vx::LogMsgDebugOnly(kHasNotChanged, prefix);
    } else {
        VX_LOG('E') << Vx::LogMsg(kHasChanged, prefix, current, m_saved);
    }
}

DWORD GetCurrentDirectory(DWORD size, WCHAR* buffer) noexcept {
    return GetCurrentDirectoryW(size, buffer);
}

BOOL SetCurrentDirectory(const WCHAR* path) noexcept {
    return SetCurrentDirectoryW(path);
}
