#include "platform/linux/storage/Modes.h"

namespace vx_storage {
namespace {

constexpr DWORD kKnownBits = 0x3 | 0x70 | STGM_CREATE | STGM_TRANSACTED | STGM_SIMPLE | STGM_PRIORITY | STGM_NOSCRATCH
                             | STGM_NOSNAPSHOT | STGM_DELETEONRELEASE;

constexpr bool Has(DWORD mode, DWORD flag) noexcept {
    return (mode & flag) != 0;
}

// What no mode may be, wherever it is used.
bool MakesSense(DWORD mode) noexcept {
    const bool known =
        (mode & ~kKnownBits) == 0 && AccessOf(mode) <= STGM_READWRITE && ShareOf(mode) <= STGM_SHARE_DENY_NONE;
    const bool onlyTransacted = Has(mode, STGM_NOSCRATCH) || Has(mode, STGM_NOSNAPSHOT);
    const bool onlyDirect = Has(mode, STGM_SIMPLE);
    return known && !(onlyTransacted && !IsTransacted(mode)) && !(onlyDirect && IsTransacted(mode));
}

HRESULT CheckElementMode(DWORD mode, DWORD storageMode, DWORD unsupported) noexcept {
    if (Has(mode, unsupported)) {
        return STG_E_INVALIDFUNCTION;
    }
    if (!MakesSense(mode) || ShareOf(mode) != STGM_SHARE_EXCLUSIVE) {
        return STG_E_INVALIDFLAG;
    }
    const bool more = (MayRead(mode) && !MayRead(storageMode)) || (MayWrite(mode) && !MayWrite(storageMode));
    return more ? STG_E_ACCESSDENIED : S_OK;
}

}  // namespace

HRESULT CheckCreateFileMode(DWORD mode) noexcept {
    const bool shared = IsTransacted(mode) || ShareOf(mode) == STGM_SHARE_EXCLUSIVE;
    const bool fits = MakesSense(mode) && MayWrite(mode) && shared && !Has(mode, STGM_PRIORITY);
    return fits ? S_OK : STG_E_INVALIDFLAG;
}

HRESULT CheckOpenFileMode(DWORD mode) noexcept {
    if (!MakesSense(mode) || Has(mode, STGM_CREATE | STGM_DELETEONRELEASE)) {
        return STG_E_INVALIDFLAG;
    }
    if (Has(mode, STGM_PRIORITY)) {
        return MayWrite(mode) || IsTransacted(mode) ? STG_E_INVALIDFLAG : S_OK;
    }
    // Without transactions others would see half a change, or change what is being read.
    const bool alone = ShareOf(mode) == STGM_SHARE_EXCLUSIVE;
    const bool withReaders = ShareOf(mode) == STGM_SHARE_DENY_WRITE && !MayWrite(mode);
    return IsTransacted(mode) || alone || withReaders ? S_OK : STG_E_INVALIDFLAG;
}

HRESULT CheckCreateOnBytesMode(DWORD mode) noexcept {
    const bool shared = IsTransacted(mode) || ShareOf(mode) == STGM_SHARE_EXCLUSIVE;
    return MakesSense(mode) && shared && !Has(mode, STGM_PRIORITY | STGM_DELETEONRELEASE) ? S_OK : STG_E_INVALIDFLAG;
}

// The array's owner knows who else uses it, so any kind of sharing is taken at its word.
HRESULT CheckOpenOnBytesMode(DWORD mode) noexcept {
    const bool shared = IsTransacted(mode) || ShareOf(mode) != 0;
    return MakesSense(mode) && shared && !Has(mode, STGM_CREATE | STGM_DELETEONRELEASE) ? S_OK : STG_E_INVALIDFLAG;
}

HRESULT CheckStreamMode(DWORD mode, DWORD storageMode) noexcept {
    return CheckElementMode(mode, storageMode, STGM_TRANSACTED | STGM_DELETEONRELEASE | STGM_PRIORITY);
}

HRESULT CheckStorageMode(DWORD mode, DWORD storageMode) noexcept {
    return CheckElementMode(mode, storageMode, STGM_DELETEONRELEASE | STGM_PRIORITY);
}

DWORD ReportedMode(DWORD mode) noexcept {
    return mode & ~STGM_CREATE;
}

}  // namespace vx_storage
