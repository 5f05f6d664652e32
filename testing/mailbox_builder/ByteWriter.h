// Appends little-endian numbers and bytes. Any thread, one at a time.
#pragma once

#include "localmapi/base/Bytes.h"

#include <cstddef>
#include <cstdint>

namespace mailbox_builder {

using localmapi::Bytes;
using localmapi::ByteView;

// Overwrites the `width` bytes at `at`.
inline void PutNumber(Bytes& bytes, std::size_t at, std::uint64_t value, unsigned width) {
    for (unsigned i = 0; i < width; ++i) {
        bytes[at + i] = static_cast<std::byte>(value >> (8 * i));
    }
}

class ByteWriter {
public:
    ByteWriter& Number(std::uint64_t value, unsigned width) {
        for (unsigned i = 0; i < width; ++i) {
            m_bytes.push_back(static_cast<std::byte>(value >> (8 * i)));
        }
        return *this;
    }
    ByteWriter& U8(std::uint64_t value) { return Number(value, 1); }
    ByteWriter& U16(std::uint64_t value) { return Number(value, 2); }
    ByteWriter& U32(std::uint64_t value) { return Number(value, 4); }
    ByteWriter& U64(std::uint64_t value) { return Number(value, 8); }

    ByteWriter& Append(ByteView more) {
        m_bytes.insert(m_bytes.end(), more.Span().begin(), more.Span().end());
        return *this;
    }
    ByteWriter& Fill(std::size_t count, std::uint8_t value) {
        m_bytes.insert(m_bytes.end(), count, std::byte{value});
        return *this;
    }
    // Zeros up to `size` bytes in all.
    ByteWriter& PadTo(std::size_t size) {
        m_bytes.resize(size);
        return *this;
    }

    std::size_t Size() const noexcept { return m_bytes.size(); }
    ByteView View() const noexcept { return m_bytes; }
    Bytes Take() { return std::move(m_bytes); }

private:
    Bytes m_bytes;
};

}  // namespace mailbox_builder
