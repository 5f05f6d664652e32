// Allocation tables and the chains that they hold, [MS-CFB] 2.3 and 2.4: which sector follows which. A chain is followed
// only as far as it is asked for, and what is hostile about it (a loop, a wrong number, an early end) shows as
// STG_E_DOCFILECORRUPT at the place where it lies. One thread at a time.
#pragma once

#include "platform/BaseTypes.h"
#include "platform/ResultCodes.h"
#include "platform/linux/storage/Limits.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace vx_storage {

// A table of one slot for each sector, itself stored in sectors ("blocks" here). One block is kept: neighbours of a
// chain mostly share one, and what lies behind is cached anyway.
class AllocationTable {
public:
    AllocationTable(std::size_t blockBytes, std::uint64_t sectors) : m_block(blockBytes), m_sectors(sectors) {}
    virtual ~AllocationTable() = default;
    AllocationTable(const AllocationTable&) = delete;
    AllocationTable& operator=(const AllocationTable&) = delete;

    // Gives what the slot of a sector says. STG_E_DOCFILECORRUPT when the table has no such slot.
    [[nodiscard]] HRESULT Next(std::uint32_t sector, std::uint32_t& next);

    // True when there is such a sector.
    bool Holds(std::uint32_t sector) const noexcept { return sector < m_sectors; }

private:
    static constexpr std::uint64_t kNoBlock = ~std::uint64_t{0};

    // Reads block `index` of the table, all of it.
    [[nodiscard]] virtual HRESULT ReadBlock(std::uint64_t index, std::span<std::byte> block) = 0;

    std::vector<std::byte> m_block;
    std::uint64_t m_blockIndex = kNoBlock;
    std::uint64_t m_sectors;
};

class SectorChain {
public:
    // The chain that begins at sector `first`, of which `needed` sectors are meant; what follows those does not matter.
    explicit SectorChain(std::uint32_t first, std::uint64_t needed = kAll) noexcept
        : m_first(first), m_needed(needed) {}

    // Finds the sector at place `index` of the chain, and how many of the next ones, up to `most`, directly follow it
    // in the file: `sector` to `sector + count - 1`.
    [[nodiscard]] HRESULT FindRun(AllocationTable& table, std::uint64_t index, std::uint64_t most,
                                  std::uint32_t& sector, std::uint64_t& count);

private:
    static constexpr std::uint64_t kAll = ~std::uint64_t{0};

    struct Place {
        std::uint64_t index = 0;
        std::uint32_t sector = 0;
    };

    [[nodiscard]] HRESULT Find(AllocationTable& table, std::uint64_t index, std::uint32_t& sector);
    [[nodiscard]] Place NearestBefore(std::uint64_t index) const noexcept;
    [[nodiscard]] HRESULT Advance(AllocationTable& table, Place& place);
    [[nodiscard]] std::uint64_t LoopClosedBy(const Place& place) noexcept;
    [[nodiscard]] HRESULT FindFirstRepeat(AllocationTable& table, std::uint64_t loop, std::uint64_t& index) const;
    [[nodiscard]] HRESULT CheckTail(AllocationTable& table);
    void Mark(const Place& place);

    std::uint32_t m_first;
    std::uint64_t m_needed;
    bool m_started = false;
    Place m_cursor;    // where the last search ended
    Place m_frontier;  // the farthest place reached
    Place m_tortoise;  // Brent's: a loop is found when the frontier meets it again
    std::uint64_t m_tortoiseLeap = 1;
    std::uint64_t m_end = kAll;          // from this place on there is no chain, as far as is known
    std::vector<std::uint32_t> m_marks;  // the sectors at places 0, m_markStride, 2 * m_markStride ...
    std::uint64_t m_markStride = kChainMarkStride;
};

}  // namespace vx_storage
