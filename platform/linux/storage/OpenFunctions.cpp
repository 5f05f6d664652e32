// The functions that create and open roots, and those that look whether there is one.
#include "platform/Storage.h"
#include "platform/linux/storage/ComObject.h"
#include "platform/linux/storage/CompoundFile.h"
#include "platform/linux/storage/CompoundFormat.h"
#include "platform/linux/storage/ImageStore.h"
#include "platform/linux/storage/Modes.h"
#include "platform/linux/storage/StorageObject.h"

#include <array>
#include <filesystem>

namespace {

using namespace vx_storage;

HRESULT PathFrom(const WCHAR* name, std::filesystem::path& path) {
    if (name == nullptr || *name == 0) {
        return STG_E_INVALIDNAME;
    }
    try {
        path = std::filesystem::path(name);
    } catch (const std::system_error&) {  // unpaired surrogates name no file
        return STG_E_INVALIDNAME;
    }
    return S_OK;
}

// Takes the file for a new root: a new one, or with STGM_CREATE the one that has the name.
HRESULT TakeFile(const WCHAR* name, DWORD mode, std::unique_ptr<PathStore>& store) {
    const ShareClaim claim = ShareClaim::FromMode(mode);
    if (name == nullptr) {
        return PathStore::CreateTemporary(claim, store);
    }
    std::filesystem::path path;
    if (const HRESULT hr = PathFrom(name, path); FAILED(hr)) {
        return hr;
    }
    HRESULT hr = PathStore::Create(path, claim, store);
    if (hr == STG_E_FILEALREADYEXISTS && (mode & STGM_CREATE) != 0) {
        hr = PathStore::Open(path, claim, store);
    }
    return hr == STG_E_SHAREVIOLATION ? STG_E_ACCESSDENIED : hr;
}

HRESULT CreateOnPath(const WCHAR* name, DWORD mode, IStorage** root) {
    std::unique_ptr<PathStore> store;
    if (const HRESULT hr = TakeFile(name, mode, store); FAILED(hr)) {
        return hr;
    }
    if ((mode & STGM_DELETEONRELEASE) != 0) {
        store->DeleteAtClose();
    }
    const bool isNew = store->IsNew();
    auto file = std::make_shared<CompoundFile>(std::move(store));
    if (isNew) {
        // From now on the name stands for a compound file, even if nothing should be committed to it.
        Node empty;
        if (const HRESULT hr = file->Save(empty, STGC_DANGEROUSLYCOMMITMERELYTODISKCACHE); FAILED(hr)) {
            return hr;
        }
    }
    return MakeRootObject(std::move(file), mode, root);
}

HRESULT OpenImage(std::unique_ptr<ImageStore> store, DWORD mode, IStorage** root) {
    auto file = std::make_shared<CompoundFile>(std::move(store));
    const HRESULT hr = file->OpenImage();
    return FAILED(hr) ? hr : MakeRootObject(std::move(file), mode, root);
}

HRESULT LookForSignature(BackingBytes& bytes) {
    std::array<std::byte, 8> start = {};
    std::size_t got = 0;
    const HRESULT hr = bytes.ReadAt(0, start, got);
    if (FAILED(hr)) {
        return hr;
    }
    return HasCompoundSignature(std::span(start).first(got)) ? S_OK : S_FALSE;
}

}  // namespace

HRESULT StgCreateDocfile(const WCHAR* pwcsName, DWORD grfMode, DWORD reserved, IStorage** ppstgOpen) noexcept {
    return Guarded([&] {
        if (ppstgOpen == nullptr) {
            return STG_E_INVALIDPOINTER;
        }
        *ppstgOpen = nullptr;
        if (reserved != 0) {
            return STG_E_INVALIDPARAMETER;
        }
        const HRESULT hr = CheckCreateFileMode(grfMode);
        return FAILED(hr) ? hr : CreateOnPath(pwcsName, grfMode, ppstgOpen);
    });
}

HRESULT StgOpenStorage(const WCHAR* pwcsName, IStorage* pstgPriority, DWORD grfMode, SNB snbExclude, DWORD reserved,
                       IStorage** ppstgOpen) noexcept {
    return Guarded([&] {
        if (ppstgOpen == nullptr) {
            return STG_E_INVALIDPOINTER;
        }
        *ppstgOpen = nullptr;
        if (pstgPriority != nullptr || snbExclude != nullptr || reserved != 0) {
            return STG_E_INVALIDPARAMETER;
        }
        if (const HRESULT hr = CheckOpenFileMode(grfMode); FAILED(hr)) {
            return hr;
        }
        std::filesystem::path path;
        if (const HRESULT hr = PathFrom(pwcsName, path); FAILED(hr)) {
            return hr;
        }
        std::unique_ptr<PathStore> store;
        if (const HRESULT hr = PathStore::Open(path, ShareClaim::FromMode(grfMode), store); FAILED(hr)) {
            return hr;
        }
        return OpenImage(std::move(store), grfMode, ppstgOpen);
    });
}

HRESULT StgCreateDocfileOnILockBytes(ILockBytes* plkbyt, DWORD grfMode, DWORD reserved, IStorage** ppstgOpen) noexcept {
    return Guarded([&] {
        if (ppstgOpen == nullptr || plkbyt == nullptr) {
            return STG_E_INVALIDPOINTER;
        }
        *ppstgOpen = nullptr;
        if (reserved != 0) {
            return STG_E_INVALIDPARAMETER;
        }
        if (const HRESULT hr = CheckCreateOnBytesMode(grfMode); FAILED(hr)) {
            return hr;
        }
        return MakeRootObject(std::make_shared<CompoundFile>(std::make_unique<LockBytesStore>(plkbyt)), grfMode,
                              ppstgOpen);
    });
}

HRESULT StgOpenStorageOnILockBytes(ILockBytes* plkbyt, IStorage* pstgPriority, DWORD grfMode, SNB snbExclude,
                                   DWORD reserved, IStorage** ppstgOpen) noexcept {
    return Guarded([&] {
        if (ppstgOpen == nullptr || plkbyt == nullptr) {
            return STG_E_INVALIDPOINTER;
        }
        *ppstgOpen = nullptr;
        if (pstgPriority != nullptr || snbExclude != nullptr || reserved != 0) {
            return STG_E_INVALIDPARAMETER;
        }
        const HRESULT hr = CheckOpenOnBytesMode(grfMode);
        return FAILED(hr) ? hr : OpenImage(std::make_unique<LockBytesStore>(plkbyt), grfMode, ppstgOpen);
    });
}

HRESULT StgIsStorageFile(const WCHAR* pwcsName) noexcept {
    return Guarded([&] {
        std::filesystem::path path;
        if (const HRESULT hr = PathFrom(pwcsName, path); FAILED(hr)) {
            return hr;
        }
        std::unique_ptr<PathStore> store;
        const HRESULT hr = PathStore::Open(path, {}, store);
        return FAILED(hr) ? hr : LookForSignature(*store->Bytes());
    });
}

HRESULT StgIsStorageILockBytes(ILockBytes* plkbyt) noexcept {
    return Guarded(
        [&] { return plkbyt == nullptr ? STG_E_INVALIDPOINTER : LookForSignature(*LockBytesStore(plkbyt).Bytes()); });
}

HRESULT WriteClassStg(IStorage* pStg, REFCLSID rclsid) noexcept {
    return pStg == nullptr ? E_INVALIDARG : pStg->SetClass(rclsid);
}

HRESULT ReadClassStg(IStorage* pStg, CLSID* pclsid) noexcept {
    if (pStg == nullptr || pclsid == nullptr) {
        return E_INVALIDARG;
    }
    STATSTG stat = {};
    const HRESULT hr = pStg->Stat(&stat, STATFLAG_NONAME);
    *pclsid = SUCCEEDED(hr) ? stat.clsid : GUID_NULL;
    return hr;
}
