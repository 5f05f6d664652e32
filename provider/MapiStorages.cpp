#include "platform/GlobalMemory.h"
#include "platform/LastError.h"
#include "platform/Paths.h"
#include "platform/Storage.h"
#include "provider/Common/Holders.h"
#include "provider/Common/Log.h"
#include "provider/MAPIUtils.h"
#include "provider/StreamReads.h"

#include <array>
#include <filesystem>
#include <fstream>
#include <new>
#include <system_error>

namespace {

constexpr auto& kSourcePath = "MAPIUtils.cpp"_w;

constexpr SIZE_T kFirstBlockBytes = 0x4000;
constexpr DWORD kInMemoryMode = STGM_SIMPLE | STGM_CREATE | STGM_SHARE_EXCLUSIVE | STGM_READWRITE;
constexpr DWORD kInFileMode = STGM_TRANSACTED | STGM_CREATE | STGM_READWRITE;

// A byte array in global memory that goes with its last reference.
HRESULT CreateBytesInMemory(ILockBytes** bytes) {
    const HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE | GMEM_ZEROINIT, kFirstBlockBytes);
    if (block == nullptr) {
        VX_LOG('E') << Vx::LogMsg("GlobalAlloc failed!. %d"_w, GetLastError());
        return E_OUTOFMEMORY;
    }
    const HRESULT hr = CreateILockBytesOnHGlobal(block, TRUE, bytes);
    if (FAILED(hr)) {
        VX_LOG('E') << Vx::LogMsg("CreateILockBytesOnHGlobal failed. %d"_w, hr);
        GlobalFree(block);
    }
    return hr;
}

// Writes the storage as a compound file into the byte array.
HRESULT CopyIntoBytes(IStorage* storage, ILockBytes* bytes) {
    VxMapiPtr<IStorage> copy;
    HRESULT hr = StgCreateDocfileOnILockBytes(bytes, kInMemoryMode, 0, &copy);
    if (FAILED(hr)) {
        VX_LOG('E') << Vx::LogMsg("StgCreateDocfileOnILockBytes failed. %d"_w, hr);
        return hr;
    }
    hr = storage->CopyTo(0, nullptr, nullptr, copy);
    if (FAILED(hr)) {
        VX_LOG('E') << Vx::LogMsg("pStorage->CopyTo failed. %d"_w, hr);
        return hr;
    }
    hr = copy->Commit(STGC_DEFAULT);
    if (FAILED(hr)) {
        VX_LOG('E') << Vx::LogMsg("pIStorageOnBytes->Commit failed. %d"_w, hr);
    }
    return hr;
}

// Copies the byte array out of global memory, unless it is larger than `maxSize`.
HRESULT ReadBytes(ILockBytes* source, ULONG maxSize, std::vector<BYTE>& bytes, ULONG* size) {
    STATSTG stat = {};
    HRESULT hr = source->Stat(&stat, STATFLAG_DEFAULT);
    if (FAILED(hr)) {
        return hr;
    }
    FreeName(stat);
    if (stat.cbSize.QuadPart > maxSize) {
        return E_OUTOFMEMORY;
    }
    try {
        bytes.resize(static_cast<std::size_t>(stat.cbSize.QuadPart));
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    }
    hr = source->ReadAt(ULARGE_INTEGER{}, bytes.data(), static_cast<ULONG>(bytes.size()), size);
    if (FAILED(hr)) {
        bytes.clear();
        *size = 0;
    }
    return hr;
}

// Fills a new compound file; the storage is closed when this returns.
HRESULT CopyIntoFile(IStorage* storage, const CStringW& path, bool& created) {
    VxMapiPtr<IStorage> copy;
    HRESULT hr = StgCreateDocfile(path.c_str(), kInFileMode, 0, &copy);
    created = SUCCEEDED(hr);
    if (!created) {
        VX_LOG('E') << Vx::LogMsg("StgCreateDocfile failed. err: %d; file: %s"_w, hr, path);
        return hr;
    }
    hr = storage->CopyTo(0, nullptr, nullptr, copy);
    if (FAILED(hr)) {
        VX_LOG('E') << Vx::LogMsg("pStorage->CopyTo. err: %d; dest file: %s"_w, hr, path);
        return hr;
    }
    hr = copy->Commit(STGC_DEFAULT);
    if (FAILED(hr)) {
        VX_LOG('E') << Vx::LogMsg("pIStorageOnBytes->Commit failed. err: %d; dest file: %s"_w, hr, path);
    }
    return hr;
}

}  // namespace

HRESULT CMapiUtil::ReadStorageInMemory(IStorage* storage, ULONG maxSize, std::vector<BYTE>& bytes, ULONG* size) {
    bytes.clear();
    *size = 0;
    VxMapiPtr<ILockBytes> compoundFile;
    HRESULT hr = CreateBytesInMemory(&compoundFile);
    if (FAILED(hr)) {
        return hr;
    }
    hr = CopyIntoBytes(storage, compoundFile);
    if (FAILED(hr)) {
        return hr;
    }
    hr = compoundFile->Flush();
    if (FAILED(hr)) {
        VX_LOG('E') << Vx::LogMsg("pILockBytes->Flush() failed. %d"_w, hr);
        return hr;
    }
    HGLOBAL block = nullptr;
    hr = GetHGlobalFromILockBytes(compoundFile, &block);
    if (FAILED(hr)) {
        VX_LOG('E') << Vx::LogMsg("GetHGlobalFromILockBytes failed. %d"_w, hr);
        return hr;
    }
    return ReadBytes(compoundFile, maxSize, bytes, size);
}

HRESULT CMapiUtil::SaveStorageInFile(IStorage* storage, const CStringW& path) {
    bool created = false;
    const HRESULT hr = CopyIntoFile(storage, path, created);
    if (FAILED(hr) && created) {
        std::error_code ignored;
        std::filesystem::remove(ToPath(path), ignored);
    }
    return hr;
}

HRESULT CMapiUtil::SaveStreamInFile(IStream* stream, const CStringW& path) {
    std::ofstream file(ToPath(path), std::ios::binary | std::ios::trunc);
    if (!file) {
        return HRESULT_FROM_WIN32(ERROR_CANNOT_MAKE);
    }
    std::array<BYTE, 4096> buffer;
    const vx_streams::CopyResult copied = vx_streams::CopyToFile(stream, file, buffer);
    if (!copied.allWritten) {
        VX_LOG('E') << Vx::LogMsg("Writing failed. file: %s"_w, path);
        return STG_E_WRITEFAULT;
    }
    return copied.lastRead;
}
