// What a STGM value may say where, and what it allows.
#pragma once

#include "platform/Storage.h"

namespace vx_storage {

constexpr DWORD AccessOf(DWORD mode) noexcept {
    return mode & 0x3U;
}
constexpr DWORD ShareOf(DWORD mode) noexcept {
    return mode & 0x70U;
}
constexpr bool MayRead(DWORD mode) noexcept {
    return AccessOf(mode) != STGM_WRITE;
}
constexpr bool MayWrite(DWORD mode) noexcept {
    return AccessOf(mode) != STGM_READ;
}
constexpr bool IsTransacted(DWORD mode) noexcept {
    return (mode & STGM_TRANSACTED) != 0;
}

// What may be asked of a Commit.
inline constexpr DWORD kCommitFlags =
    STGC_OVERWRITE | STGC_ONLYIFCURRENT | STGC_DANGEROUSLYCOMMITMERELYTODISKCACHE | STGC_CONSOLIDATE;

// The mode of a root. STG_E_INVALIDFLAG for a combination that makes no sense there.
[[nodiscard]] HRESULT CheckCreateFileMode(DWORD mode) noexcept;
[[nodiscard]] HRESULT CheckOpenFileMode(DWORD mode) noexcept;
[[nodiscard]] HRESULT CheckCreateOnBytesMode(DWORD mode) noexcept;
[[nodiscard]] HRESULT CheckOpenOnBytesMode(DWORD mode) noexcept;

// The mode of an element in a storage that was opened with `storageMode`. STG_E_INVALIDFLAG, STG_E_INVALIDFUNCTION for
// what that kind of element does not do, STG_E_ACCESSDENIED for more access than the storage has.
[[nodiscard]] HRESULT CheckStreamMode(DWORD mode, DWORD storageMode) noexcept;
[[nodiscard]] HRESULT CheckStorageMode(DWORD mode, DWORD storageMode) noexcept;

// The mode that Stat reports.
DWORD ReportedMode(DWORD mode) noexcept;

}  // namespace vx_storage
