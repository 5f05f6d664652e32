#include "localmapi/base/Crc.h"

#include <array>

namespace localmapi {

namespace {

// kTables[k][b]: what byte b adds to the value when k more bytes follow it. Eight bytes are then taken at a time.
constexpr auto kTables = [] {
    std::array<std::array<std::uint32_t, 256>, 8> tables{};
    for (std::uint32_t i = 0; i < 256; ++i) {
        std::uint32_t value = i;
        for (int bit = 0; bit < 8; ++bit) {
            value = (value >> 1) ^ ((value & 1) != 0 ? 0xEDB88320U : 0U);
        }
        tables[0][i] = value;
    }
    for (std::size_t k = 1; k < tables.size(); ++k) {
        for (std::size_t i = 0; i < 256; ++i) {
            const std::uint32_t shorter = tables[k - 1][i];
            tables[k][i] = (shorter >> 8) ^ tables[0][shorter & 0xFF];
        }
    }
    return tables;
}();

}  // namespace

std::uint32_t Crc(ByteView bytes, std::uint32_t start) noexcept {
    std::uint32_t value = start;
    const std::byte* next = bytes.Data();
    std::size_t left = bytes.Size();
    const auto at = [&next](std::size_t i) { return std::to_integer<std::uint32_t>(next[i]); };
    for (; left >= 8; left -= 8, next += 8) {
        value ^= at(0) | (at(1) << 8) | (at(2) << 16) | (at(3) << 24);
        value = kTables[7][value & 0xFF] ^ kTables[6][(value >> 8) & 0xFF] ^ kTables[5][(value >> 16) & 0xFF]
                ^ kTables[4][value >> 24] ^ kTables[3][at(4)] ^ kTables[2][at(5)] ^ kTables[1][at(6)]
                ^ kTables[0][at(7)];
    }
    for (; left > 0; --left, ++next) {
        value = (value >> 8) ^ kTables[0][(value ^ at(0)) & 0xFF];
    }
    return value;
}

}  // namespace localmapi
