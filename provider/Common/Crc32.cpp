#include "provider/Common/Crc32.h"

#include <array>

namespace {

constexpr std::uint32_t kPolynomial = 0xEDB88320;

// The register after one byte, for each byte value.
constexpr auto kTable = [] {
    std::array<std::uint32_t, 256> table{};
    for (std::uint32_t byte = 0; byte < table.size(); ++byte) {
        std::uint32_t value = byte;
        for (int bit = 0; bit < 8; ++bit) {
            value = (value & 1) != 0 ? (value >> 1) ^ kPolynomial : value >> 1;
        }
        table[byte] = value;
    }
    return table;
}();

}  // namespace

void Crc32::Update(std::uint8_t byte) noexcept {
    m_value = kTable[(m_value ^ byte) & 0xFF] ^ (m_value >> 8);
}

std::uint32_t CRC32Block(std::uint32_t start, std::size_t length, const char* data) noexcept {
    Crc32 crc(start);
    for (std::size_t i = 0; i < length; ++i) {
        crc.Update(static_cast<std::uint8_t>(data[i]));
    }
    return crc.Value();
}
