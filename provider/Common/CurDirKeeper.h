// Keeps the process's current directory over calls that may change it, as MAPI's logon does.
//
//   CCurrDirKeeper keeper;
//   hr = session->Logoff(...);
//   keeper.Restore();
//
// The current directory belongs to the whole process: two threads with a keeper each see each other's changes.
#pragma once

#include "platform/WideText.h"

#include <cstddef>

class CCurrDirKeeper {
public:
    // Saves the current directory. One that cannot be had, or is longer than the buffer, is logged and not saved.
    CCurrDirKeeper() noexcept;
    CCurrDirKeeper(const CCurrDirKeeper&) = delete;
    CCurrDirKeeper& operator=(const CCurrDirKeeper&) = delete;
    // Restores nothing: only Restore does.
    ~CCurrDirKeeper() = default;

    // Goes back to the saved directory and forgets it. A second call is logged and changes nothing.
    void Restore() noexcept;

    // Logs whether the current directory is still the saved one, with `prefix` before the text.
    void Check(const WCHAR* prefix) const noexcept;

private:
    static constexpr std::size_t kSize = 520;

    WCHAR m_saved[kSize];  // terminated; empty when nothing is saved
};

// The operating system's own, as GetCurrentDirectoryW and SetCurrentDirectoryW.
DWORD GetCurrentDirectory(DWORD size, WCHAR* buffer) noexcept;
BOOL SetCurrentDirectory(const WCHAR* path) noexcept;
