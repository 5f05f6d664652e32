#include "localmapi/store/RtfStream.h"

#include "localmapi/com/ComObject.h"
#include "localmapi/object/ValueStreams.h"
#include "localmapi/rtf/CompressedRtf.h"
#include "mapi/MapiFlags.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

namespace localmapi {

namespace {

SharedLock NewLock() {
    return std::make_shared<std::recursive_mutex>();
}

// What both directions refuse alike.
class RtfStreamBase : public ComObject<IStream> {
public:
    RtfStreamBase() : ComObject(NewLock()) {}

    HRESULT STDMETHODCALLTYPE SetSize(ULARGE_INTEGER) override { return MAPI_E_NO_SUPPORT; }
    HRESULT STDMETHODCALLTYPE Revert() override { return MAPI_E_NO_SUPPORT; }
    HRESULT STDMETHODCALLTYPE LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override {
        return STG_E_INVALIDFUNCTION;
    }
    HRESULT STDMETHODCALLTYPE UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override {
        return STG_E_INVALIDFUNCTION;
    }
    HRESULT STDMETHODCALLTYPE Clone(IStream** clone) override {
        if (clone != nullptr) {
            *clone = nullptr;
        }
        return MAPI_E_NO_SUPPORT;
    }

protected:
    bool Implements(REFIID interfaceId) const override {
        return interfaceId == IID_IStream || interfaceId == IID_ISequentialStream;
    }
};

class RtfReadStream final : public RtfStreamBase {
public:
    RtfReadStream(std::unique_ptr<ByteSource> source, rtf::CompressedRtfReader reader)
        : m_source(std::move(source)), m_reader(std::move(reader)) {}

    HRESULT STDMETHODCALLTYPE Read(void* buffer, ULONG count, ULONG* read) override {
        if (read != nullptr) {
            *read = 0;
        }
        if (buffer == nullptr) {
            return count == 0 ? S_OK : STG_E_INVALIDPOINTER;
        }
        return Guarded([&]() -> HRESULT {
            const auto got = m_reader.Read({static_cast<std::byte*>(buffer), count});
            if (!got) {
                return ResultOf(got.Failure().code);
            }
            m_position += *got;
            if (read != nullptr) {
                *read = static_cast<ULONG>(*got);
            }
            return S_OK;
        });
    }
    HRESULT STDMETHODCALLTYPE Write(const void*, ULONG, ULONG* written) override {
        if (written != nullptr) {
            *written = 0;
        }
        return STG_E_ACCESSDENIED;
    }
    HRESULT STDMETHODCALLTYPE Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER* position) override {
        return Guarded([&]() -> HRESULT {
            const auto size = static_cast<LONGLONG>(m_reader.RawSize());
            const LONGLONG base = origin == STREAM_SEEK_CUR   ? static_cast<LONGLONG>(m_position)
                                  : origin == STREAM_SEEK_END ? size
                                                              : 0;
            if (move.QuadPart < -base || move.QuadPart > size - base) {
                return STG_E_INVALIDFUNCTION;
            }
            const HRESULT moved = MoveTo(static_cast<std::uint64_t>(base + move.QuadPart));
            if (SUCCEEDED(moved) && position != nullptr) {
                position->QuadPart = m_position;
            }
            return moved;
        });
    }
    HRESULT STDMETHODCALLTYPE CopyTo(IStream* to, ULARGE_INTEGER count, ULARGE_INTEGER* read,
                                     ULARGE_INTEGER* written) override {
        if (to == nullptr) {
            return STG_E_INVALIDPOINTER;
        }
        std::array<std::byte, 4096> piece;
        std::uint64_t done = 0;
        HRESULT result = S_OK;
        while (SUCCEEDED(result) && done < count.QuadPart) {
            ULONG got = 0;
            result = Read(piece.data(),
                          static_cast<ULONG>(std::min<std::uint64_t>(piece.size(), count.QuadPart - done)), &got);
            if (FAILED(result) || got == 0) {
                break;
            }
            ULONG put = 0;
            result = to->Write(piece.data(), got, &put);
            done += put;
            result = SUCCEEDED(result) && put < got ? STG_E_MEDIUMFULL : result;
        }
        if (read != nullptr) {
            read->QuadPart = done;
        }
        if (written != nullptr) {
            written->QuadPart = done;
        }
        return result;
    }
    HRESULT STDMETHODCALLTYPE Commit(DWORD) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE Stat(STATSTG* stat, DWORD) override {
        return TellSize(stat, STGTY_STREAM, m_reader.RawSize());
    }

private:
    HRESULT MoveTo(std::uint64_t target) {
        if (target < m_position) {
            auto again = rtf::CompressedRtfReader::Open(*m_source);
            if (!again) {
                return ResultOf(again.Failure().code);
            }
            m_reader = *std::move(again);
            m_position = 0;
        }
        std::array<std::byte, 4096> piece;
        while (m_position < target) {
            ULONG got = 0;
            const HRESULT read = Read(
                piece.data(), static_cast<ULONG>(std::min<std::uint64_t>(piece.size(), target - m_position)), &got);
            if (FAILED(read) || got == 0) {
                return read;
            }
        }
        return S_OK;
    }

    std::unique_ptr<ByteSource> m_source;
    rtf::CompressedRtfReader m_reader;
    std::uint64_t m_position = 0;
};

class RtfWriteStream final : public RtfStreamBase {
public:
    RtfWriteStream(ComPtr<IStream> target, bool compress) : m_target(std::move(target)), m_compress(compress) {}

    HRESULT STDMETHODCALLTYPE Read(void*, ULONG, ULONG* read) override {
        if (read != nullptr) {
            *read = 0;
        }
        return STG_E_ACCESSDENIED;
    }
    HRESULT STDMETHODCALLTYPE Write(const void* bytes, ULONG count, ULONG* written) override {
        if (written != nullptr) {
            *written = 0;
        }
        if (bytes == nullptr && count > 0) {
            return STG_E_INVALIDPOINTER;
        }
        return Guarded([&]() -> HRESULT {
            if (count > rtf::kMostRtf - m_rtf.size()) {
                return STG_E_MEDIUMFULL;
            }
            const auto* begin = static_cast<const std::byte*>(bytes);
            m_rtf.insert(m_rtf.end(), begin, begin + count);
            m_isDirty = true;
            if (written != nullptr) {
                *written = count;
            }
            return S_OK;
        });
    }
    HRESULT STDMETHODCALLTYPE Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER* position) override {
        // Only to where it is, which is its end: what was written stays.
        const bool isHere = (move.QuadPart == 0 && origin != STREAM_SEEK_SET)
                            || (origin == STREAM_SEEK_SET && move.QuadPart == static_cast<LONGLONG>(m_rtf.size()));
        if (isHere && position != nullptr) {
            position->QuadPart = m_rtf.size();
        }
        return isHere ? S_OK : MAPI_E_NO_SUPPORT;
    }
    HRESULT STDMETHODCALLTYPE CopyTo(IStream*, ULARGE_INTEGER, ULARGE_INTEGER*, ULARGE_INTEGER*) override {
        return STG_E_ACCESSDENIED;
    }
    HRESULT STDMETHODCALLTYPE Commit(DWORD flags) override {
        return Guarded([&] { return Put(flags); });
    }
    HRESULT STDMETHODCALLTYPE Stat(STATSTG* stat, DWORD) override { return TellSize(stat, STGTY_STREAM, m_rtf.size()); }

protected:
    ~RtfWriteStream() override {
        // Callers often release without a Commit; nobody is left to hear of a failure.
        static_cast<void>(Guarded([&] { return m_isDirty ? Put(STGC_DEFAULT) : S_OK; }));
    }

private:
    HRESULT Put(DWORD flags) {
        auto value = m_compress ? rtf::Compress(m_rtf) : rtf::Store(m_rtf);
        if (!value) {
            return ResultOf(value.Failure().code);
        }
        LARGE_INTEGER start{};
        HRESULT result = m_target->Seek(start, STREAM_SEEK_SET, nullptr);
        if (SUCCEEDED(result)) {
            result = m_target->SetSize(ULARGE_INTEGER{});
        }
        if (SUCCEEDED(result)) {
            OwnedBytes bytes(*std::move(value));
            result = CopyToStream(bytes, *m_target);
        }
        if (FAILED(result)) {
            return result;
        }
        m_isDirty = false;
        return m_target->Commit(flags);
    }

    ComPtr<IStream> m_target;
    bool m_compress;
    bool m_isDirty = false;
    Bytes m_rtf;
};

}  // namespace

HRESULT WrapRtf(IStream& compressed, ULONG flags, ComPtr<IStream>& plain) {
    if ((flags & MAPI_MODIFY) != 0) {
        const bool compress = (flags & STORE_UNCOMPRESSED_RTF) == 0;
        plain = ComPtr<IStream>(MakeObject<RtfWriteStream>(ComPtr<IStream>(&compressed), compress).Get());
        return S_OK;
    }
    auto source = StreamBytes::Open(ComPtr<IStream>(&compressed));
    if (!source) {
        return ResultOf(source.Failure().code);
    }
    auto reader = rtf::CompressedRtfReader::Open(**source);
    if (!reader) {
        return ResultOf(reader.Failure().code);
    }
    plain = ComPtr<IStream>(MakeObject<RtfReadStream>(*std::move(source), *std::move(reader)).Get());
    return S_OK;
}

}  // namespace localmapi
