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
        return static_cast<std::uint8_t>(Number(offset, 1));
    }
    constexpr std::uint16_t U16(std::uint64_t offset) const noexcept {
        return static_cast<std::uint16_t>(Number(offset, 2));
    }
    constexpr std::uint32_t U32(std::uint64_t offset) const noexcept {
        return static_cast<std::uint32_t>(Number(offset, 4));
    }
    constexpr std::uint64_t U64(std::uint64_t offset) const noexcept { return Number(offset, 8); }

    // A number of `width` bytes, 1 to 8; 0 when one of them lies outside.
    constexpr std::uint64_t Number(std::uint64_t offset, unsigned width) const noexcept {
        if (!Has(offset, width)) {
            return 0;
        }
        std::uint64_t value = 0;
        for (unsigned i = width; i-- > 0;) {
            value = (value << 8) | std::to_integer<std::uint64_t>(m_bytes[static_cast<std::size_t>(offset) + i]);
        }
        return value;
    }

private:
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
