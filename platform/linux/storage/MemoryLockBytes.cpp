// The byte array on a global block.
#include "platform/Storage.h"
#include "platform/linux/storage/ComObject.h"
#include "platform/linux/storage/GlobalBlock.h"

namespace {

using namespace vx_storage;

class MemoryLockBytes final : public ComObject<MemoryLockBytes, ILockBytes>, public IGlobalBlockOwner {
public:
    explicit MemoryLockBytes(std::shared_ptr<GlobalBlock> block) noexcept : m_block(std::move(block)) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** object) override {
        if (object != nullptr && riid == IID_IGlobalBlockOwner) {
            *object = static_cast<IGlobalBlockOwner*>(this);
            AddRef();
            return S_OK;
        }
        return Answer(riid, object, IID_ILockBytes);
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ComObject::AddRef(); }
    ULONG STDMETHODCALLTYPE Release() override { return ComObject::Release(); }

    HRESULT STDMETHODCALLTYPE ReadAt(ULARGE_INTEGER offset, void* pv, ULONG cb, ULONG* pcbRead) override {
        if (pv == nullptr && cb != 0) {
            return STG_E_INVALIDPOINTER;
        }
        const std::size_t got = m_block->Read(offset.QuadPart, {static_cast<std::byte*>(pv), cb});
        StoreIfWanted(pcbRead, static_cast<ULONG>(got));
        return S_OK;
    }

    HRESULT STDMETHODCALLTYPE WriteAt(ULARGE_INTEGER offset, const void* pv, ULONG cb, ULONG* pcbWritten) override {
        if (pv == nullptr && cb != 0) {
            return STG_E_INVALIDPOINTER;
        }
        const bool written = m_block->Write(offset.QuadPart, {static_cast<const std::byte*>(pv), cb});
        StoreIfWanted(pcbWritten, written ? cb : 0);
        return written ? S_OK : STG_E_MEDIUMFULL;
    }

    HRESULT STDMETHODCALLTYPE Flush() override { return S_OK; }

    HRESULT STDMETHODCALLTYPE SetSize(ULARGE_INTEGER cb) override {
        return m_block->SetSize(cb.QuadPart) ? S_OK : STG_E_MEDIUMFULL;
    }

    HRESULT STDMETHODCALLTYPE LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override {
        return STG_E_INVALIDFUNCTION;
    }
    HRESULT STDMETHODCALLTYPE UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override {
        return STG_E_INVALIDFUNCTION;
    }

    HRESULT STDMETHODCALLTYPE Stat(STATSTG* pstatstg, DWORD) override {
        if (pstatstg == nullptr) {
            return STG_E_INVALIDPOINTER;
        }
        *pstatstg = {};
        pstatstg->type = STGTY_LOCKBYTES;
        pstatstg->cbSize.QuadPart = m_block->Size();
        return S_OK;
    }

    HGLOBAL STDMETHODCALLTYPE BlockHandle() override { return m_block->Handle(); }

private:
    std::shared_ptr<GlobalBlock> m_block;
};

}  // namespace

HRESULT CreateILockBytesOnHGlobal(HGLOBAL hGlobal, BOOL fDeleteOnRelease, ILockBytes** pplkbyt) noexcept {
    return Guarded([&] {
        if (pplkbyt == nullptr) {
            return E_INVALIDARG;
        }
        *pplkbyt = nullptr;
        const auto block = std::make_shared<GlobalBlock>(hGlobal);
        MakeObject<MemoryLockBytes>(pplkbyt, block);
        block->FreeAtEnd(fDeleteOnRelease != FALSE);
        return S_OK;
    });
}

HRESULT GetHGlobalFromILockBytes(ILockBytes* plkbyt, HGLOBAL* phglobal) noexcept {
    return HandleUnder(plkbyt, phglobal);
}
