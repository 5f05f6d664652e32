// The stream on a global block.
#include "platform/Storage.h"
#include "platform/linux/storage/ComObject.h"
#include "platform/linux/storage/GlobalBlock.h"
#include "platform/linux/storage/StreamCopy.h"

namespace {

using namespace vx_storage;

class MemoryStream final : public ComObject<MemoryStream, IStream>, public IGlobalBlockOwner {
public:
    MemoryStream(std::shared_ptr<GlobalBlock> block, std::uint64_t position) noexcept
        : m_block(std::move(block)), m_position(position) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** object) override {
        if (object != nullptr && riid == IID_IGlobalBlockOwner) {
            *object = static_cast<IGlobalBlockOwner*>(this);
            AddRef();
            return S_OK;
        }
        return Answer(riid, object, IID_ISequentialStream, IID_IStream);
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ComObject::AddRef(); }
    ULONG STDMETHODCALLTYPE Release() override { return ComObject::Release(); }

    HRESULT STDMETHODCALLTYPE Read(void* pv, ULONG cb, ULONG* pcbRead) override {
        if (pv == nullptr && cb != 0) {
            return STG_E_INVALIDPOINTER;
        }
        const std::size_t got = m_block->Read(m_position, {static_cast<std::byte*>(pv), cb});
        m_position += got;
        StoreIfWanted(pcbRead, static_cast<ULONG>(got));
        return S_OK;
    }

    HRESULT STDMETHODCALLTYPE Write(const void* pv, ULONG cb, ULONG* pcbWritten) override {
        if (pv == nullptr && cb != 0) {
            return STG_E_INVALIDPOINTER;
        }
        const bool written = m_block->Write(m_position, {static_cast<const std::byte*>(pv), cb});
        m_position += written ? cb : 0;
        StoreIfWanted(pcbWritten, written ? cb : 0);
        return written ? S_OK : E_OUTOFMEMORY;
    }

    HRESULT STDMETHODCALLTYPE Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER* newPosition) override {
        const bool found = SeekTarget(move.QuadPart, origin, m_position, m_block->Size(), m_position);
        if (newPosition != nullptr) {
            newPosition->QuadPart = m_position;
        }
        return found ? S_OK : STG_E_SEEKERROR;
    }

    HRESULT STDMETHODCALLTYPE SetSize(ULARGE_INTEGER size) override {
        return m_block->SetSize(size.QuadPart) ? S_OK : E_OUTOFMEMORY;
    }

    HRESULT STDMETHODCALLTYPE CopyTo(IStream* to, ULARGE_INTEGER cb, ULARGE_INTEGER* pcbRead,
                                     ULARGE_INTEGER* pcbWritten) override {
        if (to == nullptr) {
            return STG_E_INVALIDPOINTER;
        }
        return Guarded([&] {
            std::uint64_t read = 0;
            std::uint64_t written = 0;
            const std::uint64_t size = m_block->Size();
            const HRESULT hr = CopyToStream(
                *to, cb.QuadPart, m_position < size ? size - m_position : 0,
                [&](std::span<std::byte> part, std::size_t& got) {
                    got = m_block->Read(m_position, part);
                    m_position += got;
                    return S_OK;
                },
                read, written);
            StoreIfWanted(pcbRead, ULARGE_INTEGER{.QuadPart = read});
            StoreIfWanted(pcbWritten, ULARGE_INTEGER{.QuadPart = written});
            return hr;
        });
    }

    HRESULT STDMETHODCALLTYPE Commit(DWORD) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE Revert() override { return S_OK; }
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
        pstatstg->type = STGTY_STREAM;
        pstatstg->cbSize.QuadPart = m_block->Size();
        return S_OK;
    }

    HRESULT STDMETHODCALLTYPE Clone(IStream** clone) override {
        if (clone == nullptr) {
            return STG_E_INVALIDPOINTER;
        }
        return Guarded([&] {
            MakeObject<MemoryStream>(clone, m_block, m_position);
            return S_OK;
        });
    }

    HGLOBAL STDMETHODCALLTYPE BlockHandle() override { return m_block->Handle(); }

private:
    std::shared_ptr<GlobalBlock> m_block;
    std::uint64_t m_position;
};

}  // namespace

HRESULT CreateStreamOnHGlobal(HGLOBAL hGlobal, BOOL fDeleteOnRelease, LPSTREAM* ppstm) noexcept {
    return Guarded([&] {
        if (ppstm == nullptr) {
            return E_INVALIDARG;
        }
        *ppstm = nullptr;
        const auto block = std::make_shared<GlobalBlock>(hGlobal);
        MakeObject<MemoryStream>(ppstm, block, std::uint64_t{0});
        block->FreeAtEnd(fDeleteOnRelease != FALSE);
        return S_OK;
    });
}

HRESULT GetHGlobalFromStream(IStream* pstm, HGLOBAL* phglobal) noexcept {
    return HandleUnder(pstm, phglobal);
}
