// Reads of a compound file through a bounded number of cached lines. Short reads share lines; long ones go past them.
// For bytes that do not change while it exists. One thread at a time.
#pragma once

#include "platform/linux/storage/BackingBytes.h"
#include "platform/linux/storage/Limits.h"

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace vx_storage {

class SectorCache {
public:
    explicit SectorCache(std::shared_ptr<BackingBytes> bytes) noexcept : m_bytes(std::move(bytes)) {
        m_lineNumbers.fill(kNoLine);
    }

    // As BackingBytes::ReadAt.
    [[nodiscard]] HRESULT ReadAt(std::uint64_t offset, std::span<std::byte> out, std::size_t& got);

    // The same bytes are elsewhere from now on; what is cached stays right.
    void Rebind(std::shared_ptr<BackingBytes> bytes) noexcept { m_bytes = std::move(bytes); }

    BackingBytes& Bytes() const noexcept { return *m_bytes; }

private:
    static constexpr std::uint64_t kNoLine = ~std::uint64_t{0};

    struct Line {
        std::vector<std::byte> bytes;
        std::size_t valid = 0;  // less than a line only at the end of the file
        std::uint64_t lastUse = 0;
    };

    [[nodiscard]] HRESULT FindLine(std::uint64_t number, const Line*& line);

    std::shared_ptr<BackingBytes> m_bytes;
    std::array<std::uint64_t, kCacheLines> m_lineNumbers = {};  // apart from the lines, so that a search is short
    std::array<Line, kCacheLines> m_lines;
    std::uint64_t m_uses = 0;
};

}  // namespace vx_storage
