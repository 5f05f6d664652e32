#include "localmapi/object/ValueStreams.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

namespace localmapi {

namespace {

constexpr std::size_t kPiece = 64 * 1024;

ULARGE_INTEGER Unsigned(std::uint64_t value) {
    ULARGE_INTEGER number;
    number.QuadPart = value;
    return number;
}

// Reads what there is of the bytes asked for; their count goes to `read`, which may be null.
HRESULT ReadSome(ByteSource& bytes, std::uint64_t offset, void* buffer, ULONG count, ULONG* read) {
    const std::uint64_t left = offset < bytes.Size() ? bytes.Size() - offset : 0;
    const auto wanted = static_cast<ULONG>(std::min<std::uint64_t>(count, left));
    if (wanted > 0 && !bytes.ReadAt(offset, {static_cast<std::byte*>(buffer), wanted})) {
        return STG_E_READFAULT;
    }
    if (read != nullptr) {
        *read = wanted;
    }
    return S_OK;
}

// Bytes that streams and their clones share, with what they are borrowed from. The bytes go first.
struct SharedBytes {
    ComPtr<IUnknown> keeps;
    std::unique_ptr<ByteSource> bytes;
};

class ReadStream final : public ComObject<IStream> {
public:
    ReadStream(std::shared_ptr<SharedBytes> bytes, std::uint64_t position, SharedLock lock)
        : ComObject(std::move(lock)), m_bytes(std::move(bytes)), m_position(position) {}

    HRESULT STDMETHODCALLTYPE Read(void* buffer, ULONG count, ULONG* read) override {
        if (read != nullptr) {
            *read = 0;
        }
        if (buffer == nullptr) {
            return count == 0 ? S_OK : STG_E_INVALIDPOINTER;
        }
        return Guarded([&] {
            ULONG got = 0;
            const HRESULT result = ReadSome(*m_bytes->bytes, m_position, buffer, count, &got);
            m_position += got;
            if (read != nullptr) {
                *read = got;
            }
            return result;
        });
    }
    HRESULT STDMETHODCALLTYPE Write(const void*, ULONG, ULONG* written) override {
        if (written != nullptr) {
            *written = 0;
        }
        return STG_E_ACCESSDENIED;
    }

    HRESULT STDMETHODCALLTYPE Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER* position) override {
        return Guarded([&] {
            std::uint64_t base = 0;
            switch (origin) {
                case STREAM_SEEK_SET: break;
                case STREAM_SEEK_CUR: base = m_position; break;
                case STREAM_SEEK_END: base = m_bytes->bytes->Size(); break;
                default: return static_cast<HRESULT>(STG_E_INVALIDFUNCTION);
            }
            const std::uint64_t target = base + static_cast<std::uint64_t>(move.QuadPart);
            const bool isForward = move.QuadPart >= 0;
            if (isForward ? target < base : target > base) {
                return static_cast<HRESULT>(STG_E_INVALIDFUNCTION);
            }
            m_position = target;
            if (position != nullptr) {
                *position = Unsigned(m_position);
            }
            return static_cast<HRESULT>(S_OK);
        });
    }
    HRESULT STDMETHODCALLTYPE SetSize(ULARGE_INTEGER) override { return STG_E_ACCESSDENIED; }

    HRESULT STDMETHODCALLTYPE CopyTo(IStream* to, ULARGE_INTEGER count, ULARGE_INTEGER* read,
                                     ULARGE_INTEGER* written) override {
        return Guarded([&] {
            std::uint64_t in = 0;
            std::uint64_t out = 0;
            const HRESULT result = to == nullptr ? STG_E_INVALIDPOINTER : CopyPieces(*to, count.QuadPart, in, out);
            if (read != nullptr) {
                *read = Unsigned(in);
            }
            if (written != nullptr) {
                *written = Unsigned(out);
            }
            return result;
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
    HRESULT STDMETHODCALLTYPE Stat(STATSTG* stat, DWORD) override {
        return TellSize(stat, STGTY_STREAM, m_bytes->bytes->Size());
    }
    HRESULT STDMETHODCALLTYPE Clone(IStream** clone) override {
        if (clone == nullptr) {
            return STG_E_INVALIDPOINTER;
        }
        *clone = nullptr;
        return Guarded([&] {
            *clone = MakeObject<ReadStream>(m_bytes, m_position, Lock()).Detach();
            return static_cast<HRESULT>(S_OK);
        });
    }

protected:
    bool Implements(REFIID interfaceId) const override {
        return interfaceId == IID_IStream || interfaceId == IID_ISequentialStream;
    }

private:
    HRESULT CopyPieces(IStream& to, std::uint64_t count, std::uint64_t& in, std::uint64_t& out) {
        std::vector<std::byte> piece(static_cast<std::size_t>(std::min<std::uint64_t>(count, kPiece)));
        while (count > 0) {
            ULONG got = 0;
            const auto wanted = static_cast<ULONG>(std::min<std::uint64_t>(count, piece.size()));
            const HRESULT read = Read(piece.data(), wanted, &got);
            if (FAILED(read) || got == 0) {
                return read;
            }
            in += got;
            ULONG put = 0;
            const HRESULT wrote = to.Write(piece.data(), got, &put);
            out += put;
            if (FAILED(wrote) || put < got) {
                return FAILED(wrote) ? wrote : STG_E_MEDIUMFULL;
            }
            count -= got;
        }
        return S_OK;
    }

    std::shared_ptr<SharedBytes> m_bytes;
    std::uint64_t m_position;
};

// A compound file in bytes that are only read.
class ReadLockBytes final : public ComObject<ILockBytes> {
public:
    ReadLockBytes(std::unique_ptr<ByteSource> bytes, ComPtr<IUnknown> keeps, SharedLock lock)
        : ComObject(std::move(lock)), m_bytes{std::move(keeps), std::move(bytes)} {}

    HRESULT STDMETHODCALLTYPE ReadAt(ULARGE_INTEGER offset, void* buffer, ULONG count, ULONG* read) override {
        return Guarded([&] { return ReadSome(*m_bytes.bytes, offset.QuadPart, buffer, count, read); });
    }
    HRESULT STDMETHODCALLTYPE WriteAt(ULARGE_INTEGER, const void*, ULONG, ULONG*) override {
        return STG_E_ACCESSDENIED;
    }
    HRESULT STDMETHODCALLTYPE Flush() override { return S_OK; }
    HRESULT STDMETHODCALLTYPE SetSize(ULARGE_INTEGER) override { return STG_E_ACCESSDENIED; }
    HRESULT STDMETHODCALLTYPE LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override {
        return STG_E_INVALIDFUNCTION;
    }
    HRESULT STDMETHODCALLTYPE UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override {
        return STG_E_INVALIDFUNCTION;
    }
    HRESULT STDMETHODCALLTYPE Stat(STATSTG* stat, DWORD) override {
        return TellSize(stat, STGTY_LOCKBYTES, m_bytes.bytes->Size());
    }

protected:
    bool Implements(REFIID interfaceId) const override { return interfaceId == IID_ILockBytes; }

private:
    SharedBytes m_bytes;
};

}  // namespace

HRESULT TellSize(STATSTG* stat, STGTY type, std::uint64_t size) noexcept {
    if (stat == nullptr) {
        return STG_E_INVALIDPOINTER;
    }
    *stat = {};
    stat->type = static_cast<DWORD>(type);
    stat->cbSize.QuadPart = size;
    return S_OK;
}

Result<std::unique_ptr<ByteSource>> StreamBytes::Open(ComPtr<IStream> stream) {
    STATSTG stat{};
    const HRESULT told = stream->Stat(&stat, STATFLAG_NONAME);
    if (FAILED(told)) {
        return Error{ErrorCode::ReadFailed, "a stream does not tell its size"};
    }
    return std::unique_ptr<ByteSource>(new StreamBytes(std::move(stream), stat.cbSize.QuadPart));
}

Status StreamBytes::ReadAt(std::uint64_t offset, std::span<std::byte> out) {
    LARGE_INTEGER target;
    target.QuadPart = static_cast<LONGLONG>(offset);
    if (offset > INT64_MAX || FAILED(m_stream->Seek(target, STREAM_SEEK_SET, nullptr))) {
        return Error{ErrorCode::ReadFailed, "a stream cannot be positioned"};
    }
    while (!out.empty()) {
        ULONG got = 0;
        const auto wanted = static_cast<ULONG>(std::min<std::size_t>(out.size(), 1U << 30));
        if (FAILED(m_stream->Read(out.data(), wanted, &got)) || got == 0 || got > wanted) {
            return Error{ErrorCode::ReadFailed, "a stream ends before its size, or cannot be read"};
        }
        out = out.subspan(got);
    }
    return {};
}

Result<Bytes> ReadAll(ByteSource& source, std::uint64_t limit) {
    const std::uint64_t size = source.Size();
    if (size > limit) {
        return Error{ErrorCode::TooLarge, "a value of " + std::to_string(size) + " bytes is read by stream only"};
    }
    // A damaged file may promise bytes that it does not have: memory grows as they arrive.
    Bytes bytes;
    for (std::uint64_t at = 0; at < size;) {
        const auto piece =
            static_cast<std::size_t>(std::min<std::uint64_t>(size - at, std::max(at, std::uint64_t{1} << 20)));
        bytes.resize(static_cast<std::size_t>(at) + piece);
        VX_TRY(source.ReadAt(at, std::span(bytes).subspan(static_cast<std::size_t>(at))));
        at += piece;
    }
    return bytes;
}

ComPtr<IStream> MakeReadStream(std::unique_ptr<ByteSource> bytes, ComPtr<IUnknown> keeps, SharedLock lock) {
    auto shared = std::make_shared<SharedBytes>(SharedBytes{std::move(keeps), std::move(bytes)});
    return ComPtr<IStream>::Adopt(MakeObject<ReadStream>(std::move(shared), 0U, std::move(lock)).Detach());
}

Result<ComPtr<IStorage>> OpenStorageIn(std::unique_ptr<ByteSource> bytes, ComPtr<IUnknown> keeps, SharedLock lock) {
    const auto file = MakeObject<ReadLockBytes>(std::move(bytes), std::move(keeps), std::move(lock));
    ComPtr<IStorage> storage;
    const HRESULT opened = StgOpenStorageOnILockBytes(file.Get(), nullptr, STGM_READ | STGM_SHARE_EXCLUSIVE, nullptr, 0,
                                                      storage.Receive());
    if (FAILED(opened)) {
        return Error{ErrorCode::Corrupt, "the bytes of an embedded object are no compound file"};
    }
    return storage;
}

HRESULT CopyToStream(ByteSource& from, IStream& to) {
    std::vector<std::byte> piece(static_cast<std::size_t>(std::min<std::uint64_t>(from.Size(), kPiece)));
    for (std::uint64_t at = 0; at < from.Size(); at += piece.size()) {
        const auto count = static_cast<ULONG>(std::min<std::uint64_t>(piece.size(), from.Size() - at));
        if (!from.ReadAt(at, {piece.data(), count})) {
            return STG_E_READFAULT;
        }
        ULONG written = 0;
        const HRESULT result = to.Write(piece.data(), count, &written);
        if (FAILED(result) || written < count) {
            return FAILED(result) ? result : STG_E_MEDIUMFULL;
        }
    }
    return S_OK;
}

}  // namespace localmapi
