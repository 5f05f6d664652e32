#include "platform/linux/storage/StreamObject.h"

#include "platform/linux/storage/ComObject.h"
#include "platform/linux/storage/ElementStat.h"
#include "platform/linux/storage/Modes.h"
#include "platform/linux/storage/StreamCopy.h"

#include <span>

namespace vx_storage {
namespace {

class StreamObject final : public ComObject<StreamObject, IStream> {
public:
    StreamObject(std::shared_ptr<const StreamState> stream, std::uint64_t position) noexcept
        : m_stream(std::move(stream)), m_position(position) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** object) override {
        return Answer(riid, object, IID_ISequentialStream, IID_IStream);
    }

    HRESULT STDMETHODCALLTYPE Read(void* pv, ULONG cb, ULONG* pcbRead) override;
    HRESULT STDMETHODCALLTYPE Write(const void* pv, ULONG cb, ULONG* pcbWritten) override;
    HRESULT STDMETHODCALLTYPE Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER* newPosition) override;
    HRESULT STDMETHODCALLTYPE SetSize(ULARGE_INTEGER size) override;
    HRESULT STDMETHODCALLTYPE CopyTo(IStream* to, ULARGE_INTEGER cb, ULARGE_INTEGER* pcbRead,
                                     ULARGE_INTEGER* pcbWritten) override;
    HRESULT STDMETHODCALLTYPE Commit(DWORD flags) override;
    HRESULT STDMETHODCALLTYPE Revert() override { return S_OK; }  // streams are never transacted themselves
    HRESULT STDMETHODCALLTYPE LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override { return NoLocking(); }
    HRESULT STDMETHODCALLTYPE UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override { return NoLocking(); }
    HRESULT STDMETHODCALLTYPE Stat(STATSTG* stat, DWORD flags) override;
    HRESULT STDMETHODCALLTYPE Clone(IStream** clone) override;

private:
    HRESULT CheckReadable() const noexcept {
        return m_stream->scope->Ended() ? STG_E_REVERTED : MayRead(m_stream->mode) ? S_OK : STG_E_ACCESSDENIED;
    }
    HRESULT CheckWritable() const noexcept {
        return m_stream->scope->Ended() ? STG_E_REVERTED : MayWrite(m_stream->mode) ? S_OK : STG_E_ACCESSDENIED;
    }
    HRESULT NoLocking() const noexcept { return m_stream->scope->Ended() ? STG_E_REVERTED : STG_E_INVALIDFUNCTION; }
    StreamContent& Content() const noexcept { return m_stream->node->content; }
    HRESULT ReadOn(std::span<std::byte> out, std::size_t& got);

    std::shared_ptr<const StreamState> m_stream;
    std::uint64_t m_position;
};

// Reads at the position and moves it. What lies before damage is given as a success; the damage shows in the next read.
HRESULT StreamObject::ReadOn(std::span<std::byte> out, std::size_t& got) {
    const HRESULT hr = Content().Read(m_position, out, got);
    m_position += got;
    return got > 0 ? S_OK : hr;
}

HRESULT StreamObject::Read(void* pv, ULONG cb, ULONG* pcbRead) {
    return Guarded([&] {
        StoreIfWanted(pcbRead, ULONG{0});
        if (const HRESULT hr = CheckReadable(); FAILED(hr)) {
            return hr;
        }
        if (pv == nullptr && cb != 0) {
            return STG_E_INVALIDPOINTER;
        }
        std::size_t got = 0;
        const HRESULT hr = ReadOn({static_cast<std::byte*>(pv), cb}, got);
        StoreIfWanted(pcbRead, static_cast<ULONG>(got));
        return hr;
    });
}

HRESULT StreamObject::Write(const void* pv, ULONG cb, ULONG* pcbWritten) {
    return Guarded([&] {
        StoreIfWanted(pcbWritten, ULONG{0});
        if (const HRESULT hr = CheckWritable(); FAILED(hr)) {
            return hr;
        }
        if (pv == nullptr && cb != 0) {
            return STG_E_INVALIDPOINTER;
        }
        std::size_t done = 0;
        m_stream->transaction->NoteChange();
        const HRESULT hr = Content().Write(m_position, {static_cast<const std::byte*>(pv), cb},
                                           m_stream->transaction->Pending(), done);
        m_position += done;
        StoreIfWanted(pcbWritten, static_cast<ULONG>(done));
        return hr;
    });
}

HRESULT StreamObject::Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER* newPosition) {
    if (m_stream->scope->Ended()) {
        return STG_E_REVERTED;
    }
    const bool found = SeekTarget(move.QuadPart, origin, m_position, Content().Size(), m_position);
    StoreIfWanted(newPosition, ULARGE_INTEGER{.QuadPart = m_position});
    return found ? S_OK : STG_E_INVALIDFUNCTION;
}

HRESULT StreamObject::SetSize(ULARGE_INTEGER size) {
    return Guarded([&] {
        if (const HRESULT hr = CheckWritable(); FAILED(hr)) {
            return hr;
        }
        m_stream->transaction->NoteChange();
        return Content().SetSize(size.QuadPart, m_stream->transaction->Pending());
    });
}

HRESULT StreamObject::CopyTo(IStream* to, ULARGE_INTEGER cb, ULARGE_INTEGER* pcbRead, ULARGE_INTEGER* pcbWritten) {
    return Guarded([&] {
        if (const HRESULT hr = CheckReadable(); FAILED(hr)) {
            return hr;
        }
        if (to == nullptr) {
            return STG_E_INVALIDPOINTER;
        }
        std::uint64_t read = 0;
        std::uint64_t written = 0;
        const std::uint64_t size = Content().Size();
        const HRESULT hr = CopyToStream(
            *to, cb.QuadPart, m_position < size ? size - m_position : 0,
            [&](std::span<std::byte> part, std::size_t& got) { return ReadOn(part, got); }, read, written);
        StoreIfWanted(pcbRead, ULARGE_INTEGER{.QuadPart = read});
        StoreIfWanted(pcbWritten, ULARGE_INTEGER{.QuadPart = written});
        return hr;
    });
}

HRESULT StreamObject::Commit(DWORD flags) {
    if (m_stream->scope->Ended()) {
        return STG_E_REVERTED;
    }
    return (flags & ~kCommitFlags) == 0 ? S_OK : STG_E_INVALIDFLAG;
}

HRESULT StreamObject::Stat(STATSTG* stat, DWORD flags) {
    if (m_stream->scope->Ended()) {
        return STG_E_REVERTED;
    }
    return DescribeNode(*m_stream->node, m_stream->node->name, ReportedMode(m_stream->mode), flags, stat);
}

HRESULT StreamObject::Clone(IStream** clone) {
    return Guarded([&] {
        if (clone == nullptr) {
            return STG_E_INVALIDPOINTER;
        }
        *clone = nullptr;
        if (m_stream->scope->Ended()) {
            return STG_E_REVERTED;
        }
        MakeObject<StreamObject>(clone, m_stream, m_position);
        return S_OK;
    });
}

}  // namespace

void MakeStreamObject(std::shared_ptr<const StreamState> stream, IStream** object) {
    MakeObject<StreamObject>(object, std::move(stream), std::uint64_t{0});
}

}  // namespace vx_storage
