#include "platform/Storage.h"
#include "provider/Common/Log.h"
#include "provider/Common/ScopedEntryExitLogger.h"
#include "provider/MAPIUtils.h"
#include "provider/StreamReads.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <memory>
#include <new>
#include <utility>

namespace {

using vx_streams::ReadPiece;

constexpr auto& kSourcePath = "MAPIUtils.cpp"_w;

constexpr ULONG kUnknownSizePiece = 0x4000;
constexpr std::size_t kUnknownSizeReserve = 0x8000;
constexpr ULONG kUnknownSizeLimit = 0x7FFFFFFF;
constexpr ULONG kRtfPiece = 4096;

constexpr std::uint64_t kLargestSize = std::numeric_limits<ULONG>::max();

HRESULT StatSize(IStream* stream, std::uint64_t& size) {
    STATSTG stat = {};
    const HRESULT hr = stream->Stat(&stat, STATFLAG_NONAME);
    size = stat.cbSize.QuadPart;
    return hr;
}

// The block of CopyWrappedRtfStreamToBuffer, which goes to free() in the end.
struct FreeBlock {
    void operator()(BYTE* block) const noexcept { std::free(block); }
};
using GrowingBlock = std::unique_ptr<BYTE, FreeBlock>;

// Makes the block hold `needed` bytes. It grows by half, since realloc may copy: a large text read in small pieces
// would otherwise be copied once for every piece.
bool Grow(GrowingBlock& block, std::size_t& capacity, std::size_t needed) {
    if (needed <= capacity) {
        return true;
    }
    const std::size_t wanted = std::max(needed, capacity + capacity / 2);
    void* const grown = std::realloc(block.get(), wanted);
    if (grown == nullptr) {
        return false;
    }
    // The old address went with realloc; only the new one is to be freed.
    static_cast<void>(block.release());
    block.reset(static_cast<BYTE*>(grown));
    capacity = wanted;
    return true;
}

// Makes the vector that large, all zero. Where memory does not suffice it is E_OUTOFMEMORY, as beyond a limit.
HRESULT ResizeCleared(std::vector<BYTE>& bytes, std::size_t size) {
    try {
        bytes.assign(size, 0);
        return S_OK;
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    }
}

HRESULT ReadToEndOfUnknownSize(IStream* stream, std::vector<BYTE>& bytes, ULONG maxSize) {
    bytes.clear();
    bytes.reserve(kUnknownSizeReserve);
    BYTE piece[kUnknownSizePiece];
    auto allowance = static_cast<std::int64_t>(std::min(maxSize, kUnknownSizeLimit));
    while (allowance > 0) {
        ULONG read = 0;
        const HRESULT hr = ReadPiece(stream, piece, kUnknownSizePiece, read);
        if (FAILED(hr)) {
            return hr;
        }
        if (read == 0) {
            return S_OK;
        }
        bytes.insert(bytes.end(), piece, piece + read);
        allowance -= read;
    }
    // Used up: whether the stream had more is not asked.
    return E_OUTOFMEMORY;
}

}  // namespace

HRESULT CMapiUtil::GetStreamSize(IStream* stream, ULONG* size) {
    std::uint64_t claimed = 0;
    const HRESULT hr = StatSize(stream, claimed);
    if (FAILED(hr)) {
        return hr;
    }
    if (claimed > kLargestSize) {
        return E_OUTOFMEMORY;
    }
    *size = static_cast<ULONG>(claimed);
    return hr;
}

HRESULT CMapiUtil::ReadStream(IStream* stream, ULONG size, BYTE* buffer, ULONG* read) {
    *read = 0;
    HRESULT hr = S_OK;
    while (*read < size) {
        ULONG piece = 0;
        hr = ReadPiece(stream, buffer + *read, size - *read, piece);
        if (FAILED(hr) || piece == 0) {
            break;
        }
        *read += piece;
    }
    return hr;
}

HRESULT CMapiUtil::ReadStreamWithUnknownSize(IStream* stream, std::vector<BYTE>& bytes, ULONG maxSize) {
    try {
        return ReadToEndOfUnknownSize(stream, bytes, maxSize);
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    }
}

HRESULT CMapiUtil::CopyStreamToBuffer(IStream* stream, BYTE** buffer, ULONG* size, ULONG extra) {
    VX_SCOPE_TRACE_EX(trace);
    *buffer = nullptr;
    *size = 0;
    std::uint64_t claimed = 0;
    HRESULT hr = StatSize(stream, claimed);
    if (FAILED(hr)) {
        trace.end(hr);
        return hr;
    }
    if (claimed > kLargestSize || claimed + extra > kLargestSize) {
        trace.end("E_OUTOFMEMORY"_w);
        return E_OUTOFMEMORY;
    }
    std::unique_ptr<BYTE[]> block(new (std::nothrow) BYTE[static_cast<std::size_t>(claimed + extra)]);
    if (block == nullptr) {
        trace.end("E_OUTOFMEMORY"_w);
        return E_OUTOFMEMORY;
    }
    ULONG read = 0;
    hr = stream->Read(block.get(), static_cast<ULONG>(claimed), &read);
    if (FAILED(hr)) {
        trace.end(hr);
        return hr;
    }
    if (read != claimed) {
        trace.end("readSize != stat.cbSize.QuadPart"_w);
        return E_UNEXPECTED;
    }
    *buffer = block.release();
    *size = read;
    trace.ok();
    return hr;
}

HRESULT CMapiUtil::CopyStreamToBuffer(IStream* stream, ULONG maxSize, std::vector<BYTE>& bytes, ULONG* size,
                                      ULONG extra) {
    bytes.clear();
    *size = 0;
    // A stream that cannot seek is mostly at its start anyway.
    stream->Seek(LARGE_INTEGER{}, STREAM_SEEK_SET, nullptr);
    std::uint64_t claimed = 0;
    HRESULT hr = StatSize(stream, claimed);
    if (hr == E_NOTIMPL) {
        hr = ReadStreamWithUnknownSize(stream, bytes, maxSize);
        *size = static_cast<ULONG>(bytes.size());
        return hr;
    }
    if (FAILED(hr)) {
        return hr;
    }
    if (claimed > kLargestSize || claimed + extra > kLargestSize || claimed > maxSize) {
        return E_OUTOFMEMORY;
    }
    hr = ResizeCleared(bytes, static_cast<std::size_t>(claimed + extra));
    if (SUCCEEDED(hr)) {
        hr = ReadStream(stream, static_cast<ULONG>(claimed), bytes.data(), size);
    }
    if (FAILED(hr)) {
        bytes.clear();
    }
    return hr;
}

HRESULT CMapiUtil::CopyWrappedRtfStreamToBuffer(IStream* stream, char** buffer) {
    VX_SCOPE_TRACE_EX(trace);
    *buffer = nullptr;
    GrowingBlock block;
    std::size_t capacity = 0;
    std::size_t length = 0;
    for (ULONG read = kRtfPiece; read == kRtfPiece; length += read) {
        // One byte more than the next read can fill: the terminator. The bound on the length keeps a stream without an
        // end from taking all memory there is.
        if (length > kLargestSize - kRtfPiece || !Grow(block, capacity, length + kRtfPiece + 1)) {
            trace.end("E_OUTOFMEMORY"_w);
            return E_OUTOFMEMORY;
        }
        const HRESULT hr = ReadPiece(stream, block.get() + length, kRtfPiece, read);
        if (FAILED(hr)) {
            trace.end(hr);
            return hr;
        }
    }
    block.get()[length] = 0;
    *buffer = reinterpret_cast<char*>(block.release());
    trace.ok();
    return S_OK;
}
