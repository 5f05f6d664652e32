#include "tests/localmapi/pst/support/Sha1.h"

#include <bit>

namespace localmapi::testing {

void Sha1::Add(ByteView bytes) {
    for (std::size_t i = 0; i < bytes.Size(); ++i) {
        m_block[m_used++] = bytes.U8(i);
        if (m_used == m_block.size()) {
            Compress();
            m_used = 0;
        }
    }
    m_length += bytes.Size();
}

std::string Sha1::Digest() {
    const std::uint64_t bits = m_length * 8;
    constexpr std::byte kEnd{0x80};
    constexpr std::byte kZero{0};
    Add(ByteView(&kEnd, 1));
    while (m_used != 56) {
        Add(ByteView(&kZero, 1));
    }
    for (int shift = 56; shift >= 0; shift -= 8) {
        const auto byte = static_cast<std::byte>(bits >> shift);
        Add(ByteView(&byte, 1));
    }
    std::string digits;
    for (const std::uint32_t word : m_state) {
        for (int shift = 28; shift >= 0; shift -= 4) {
            digits.push_back("0123456789abcdef"[(word >> shift) & 0xF]);
        }
    }
    return digits;
}

void Sha1::Compress() {
    std::array<std::uint32_t, 80> w{};
    for (std::size_t t = 0; t < 16; ++t) {
        w[t] = static_cast<std::uint32_t>(m_block[4 * t]) << 24 | static_cast<std::uint32_t>(m_block[4 * t + 1]) << 16
               | static_cast<std::uint32_t>(m_block[4 * t + 2]) << 8 | m_block[4 * t + 3];
    }
    for (std::size_t t = 16; t < 80; ++t) {
        w[t] = std::rotl(w[t - 3] ^ w[t - 8] ^ w[t - 14] ^ w[t - 16], 1);
    }
    auto [a, b, c, d, e] = m_state;
    for (std::size_t t = 0; t < 80; ++t) {
        const std::uint32_t f = t < 20   ? (b & c) | (~b & d)
                                : t < 40 ? b ^ c ^ d
                                : t < 60 ? (b & c) | (b & d) | (c & d)
                                         : b ^ c ^ d;
        const std::uint32_t k = t < 20 ? 0x5A827999 : t < 40 ? 0x6ED9EBA1 : t < 60 ? 0x8F1BBCDC : 0xCA62C1D6;
        const std::uint32_t next = std::rotl(a, 5) + f + e + k + w[t];
        e = d;
        d = c;
        c = std::rotl(b, 30);
        b = a;
        a = next;
    }
    m_state[0] += a;
    m_state[1] += b;
    m_state[2] += c;
    m_state[3] += d;
    m_state[4] += e;
}

std::string Sha1Of(ByteView bytes) {
    Sha1 digest;
    digest.Add(bytes);
    return digest.Digest();
}

}  // namespace localmapi::testing
