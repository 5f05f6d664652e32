// CRC-32 by the reflected polynomial 0xEDB88320 as a raw register: nothing is inverted on the way in or out, so the
// value is not the one that archives and networks call CRC-32.
#pragma once

#include <cstddef>
#include <cstdint>

class Crc32 {
public:
    explicit Crc32(std::uint32_t start) noexcept : m_value(start) {}

    void Update(std::uint8_t byte) noexcept;
    std::uint32_t Value() const noexcept { return m_value; }

private:
    std::uint32_t m_value;
};

// The register after `length` bytes of `data`, from `start`; `start` itself when there are none.
std::uint32_t CRC32Block(std::uint32_t start, std::size_t length, const char* data) noexcept;
