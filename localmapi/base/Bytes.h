// Bounded views of foreign bytes. Numbers are assembled from little-endian bytes, never cast; no read leaves the view.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <vector>

namespace localmapi {

using Bytes = std::vector<std::byte>;

// True when `count` bytes from `offset` lie inside `size` bytes. Cannot wrap.
constexpr bool Inside(std::uint64_t offset, std::uint64_t count, std::uint64_t size) noexcept {
    return offset <= size && count <= size - offset;
}

// `value` rounded up to a multiple of `step`, a power of two. `value` is at most 2^63.
constexpr std::uint64_t RoundUp(std::uint64_t value, std::uint64_t step) noexcept {
    return (value + step - 1) & ~(step - 1);
}

// Borrowed bytes. Every operation is total: what lies outside the view reads as zero, and a part is cut to the view. A
// parser checks the size of a structure once, with Has(), and then reads its fields.
class ByteView {
public:
    constexpr ByteView() = default;
    constexpr ByteView(const std::byte* data, std::size_t size) noexcept : m_bytes(data, size) {}
    // NOLINTNEXTLINE(google-explicit-constructor): a view of owned bytes is taken wherever a view is asked for.
    ByteView(const Bytes& bytes) noexcept : m_bytes(bytes) {}
    // NOLINTNEXTLINE(google-explicit-constructor)
    constexpr ByteView(std::span<const std::byte> bytes) noexcept : m_bytes(bytes) {}

    constexpr std::size_t Size() const noexcept { return m_bytes.size(); }
    constexpr bool IsEmpty() const noexcept { return m_bytes.empty(); }
    constexpr const std::byte* Data() const noexcept { return m_bytes.data(); }
    constexpr std::span<const std::byte> Span() const noexcept { return m_bytes; }

    constexpr bool Has(std::uint64_t offset, std::uint64_t count) const noexcept {
        return Inside(offset, count, m_bytes.size());
    }

    // The bytes from `offset` on, at most `count` of them.
    constexpr ByteView Part(std::uint64_t offset, std::uint64_t count = UINT64_MAX) const noexcept {
        if (offset >= m_bytes.size()) {
            return {};
        }
        const std::uint64_t left = m_bytes.size() - offset;
        return ByteView(m_bytes.data() + offset, static_cast<std::size_t>(count < left ? count : left));
    }

    constexpr std::uint8_t U8(std::uint64_t offset) const noexcept {
        return static_cast<std::uint8_t>(Has(offset, 1) ? At(offset) : 0);
    }
    constexpr std::uint16_t U16(std::uint64_t offset) const noexcept {
        return static_cast<std::uint16_t>(Has(offset, 2) ? At(offset) | At(offset + 1) << 8 : 0);
    }
    constexpr std::uint32_t U32(std::uint64_t offset) const noexcept {
        return Has(offset, 4) ? At(offset) | At(offset + 1) << 8 | At(offset + 2) << 16 | At(offset + 3) << 24 : 0;
    }
    constexpr std::uint64_t U64(std::uint64_t offset) const noexcept {
        return Has(offset, 8) ? U32(offset) | std::uint64_t{U32(offset + 4)} << 32 : 0;
    }

    // A number of `width` bytes: 1, 2, 4 or 8.
    constexpr std::uint64_t Number(std::uint64_t offset, unsigned width) const noexcept {
        switch (width) {
            case 1: return U8(offset);
            case 2: return U16(offset);
            case 4: return U32(offset);
            default: return U64(offset);
        }
    }

private:
    constexpr std::uint32_t At(std::uint64_t offset) const noexcept {
        return std::to_integer<std::uint32_t>(m_bytes[static_cast<std::size_t>(offset)]);
    }

    std::span<const std::byte> m_bytes;
};

// Copies as much of `from` as fits into `to`; gives the count.
inline std::size_t CopyInto(std::span<std::byte> to, ByteView from) noexcept {
    const std::size_t count = to.size() < from.Size() ? to.size() : from.Size();
    if (count > 0) {
        std::memcpy(to.data(), from.Data(), count);
    }
    return count;
}

}  // namespace localmapi
