// IStream::CopyTo, the same for every kind of stream.
#pragma once

#include "platform/Storage.h"
#include "platform/linux/storage/Limits.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace vx_storage {

// Writes all of `bytes` to a stream; one that takes less without saying why is full.
[[nodiscard]] inline HRESULT WriteAll(IStream& to, std::span<const std::byte> bytes, std::uint64_t& written) {
    ULONG count = 0;
    const HRESULT hr = to.Write(bytes.data(), static_cast<ULONG>(bytes.size()), &count);
    written += count;
    return SUCCEEDED(hr) && count < bytes.size() ? STG_E_MEDIUMFULL : hr;
}

// Copies `size` bytes, or what is there, that `read(span, got)` gives one after the other. `left` is what the source
// holds when the copy begins: a stream copied into itself does not run after its own growth.
template <class Read>
[[nodiscard]] HRESULT CopyToStream(IStream& to, std::uint64_t size, std::uint64_t left, Read&& read,
                                   std::uint64_t& bytesRead, std::uint64_t& bytesWritten) {
    std::uint64_t remaining = std::min(size, left);
    std::vector<std::byte> buffer(static_cast<std::size_t>(std::min<std::uint64_t>(remaining, kBlockBytes)));
    while (remaining > 0) {
        const std::span<std::byte> part =
            std::span(buffer).first(static_cast<std::size_t>(std::min<std::uint64_t>(remaining, buffer.size())));
        std::size_t got = 0;
        if (const HRESULT hr = read(part, got); FAILED(hr)) {
            return hr;
        }
        if (got == 0) {
            break;
        }
        bytesRead += got;
        if (const HRESULT hr = WriteAll(to, part.first(got), bytesWritten); FAILED(hr)) {
            return hr;
        }
        remaining -= got;
    }
    return S_OK;
}

// Where a seek leads: false before the start of the stream, beyond what a position can say, and for an unknown origin.
[[nodiscard]] inline bool SeekTarget(std::int64_t move, DWORD origin, std::uint64_t position, std::uint64_t size,
                                     std::uint64_t& target) noexcept {
    const std::uint64_t from = origin == STREAM_SEEK_CUR ? position : origin == STREAM_SEEK_END ? size : 0;
    std::int64_t reached = 0;
    if (origin > STREAM_SEEK_END || __builtin_add_overflow(from, move, &reached) || reached < 0) {
        return false;
    }
    target = static_cast<std::uint64_t>(reached);
    return true;
}

}  // namespace vx_storage
