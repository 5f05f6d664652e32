// SHA-1 (FIPS 180-4), to compare contents with digests that other programs made.
#pragma once

#include "localmapi/base/Bytes.h"

#include <array>
#include <cstdint>
#include <string>

namespace localmapi::testing {

class Sha1 {
public:
    void Add(ByteView bytes);

    // The digest in lower-case hexadecimal digits. Ends the computation.
    std::string Digest();

private:
    void Compress();

    std::array<std::uint32_t, 5> m_state{0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476, 0xC3D2E1F0};
    std::array<std::uint8_t, 64> m_block{};
    std::size_t m_used = 0;
    std::uint64_t m_length = 0;
};

std::string Sha1Of(ByteView bytes);

}  // namespace localmapi::testing
