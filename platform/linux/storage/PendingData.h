// Data that was written and is not committed yet: blocks of kBlockBytes, the first megabytes of them in memory, the
// others in a scratch file that nobody else sees. One PendingData per root; one thread at a time.
#pragma once

#include "platform/linux/storage/BackingBytes.h"
#include "platform/linux/storage/Limits.h"

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace vx_storage {

class PendingData {
public:
    explicit PendingData(std::size_t memoryBytes = kPendingMemoryBytes) noexcept : m_memoryLeft(memoryBytes) {}

    // Takes `bytes` from what memory is allowed; false when there is not as much.
    bool TakeMemory(std::size_t bytes) noexcept;
    void ReturnMemory(std::size_t bytes) noexcept { m_memoryLeft += bytes; }

    // Gives a place of kBlockBytes in the scratch file, whose old bytes may be anything.
    [[nodiscard]] HRESULT TakeSlot(std::uint64_t& offset);
    void ReturnSlot(std::uint64_t offset) noexcept;

    BackingBytes& ScratchFile() const noexcept { return *m_scratch; }

private:
    std::size_t m_memoryLeft;
    std::shared_ptr<BackingBytes> m_scratch;  // made when the first slot is
    std::uint64_t m_scratchEnd = 0;
    std::vector<std::uint64_t> m_freeSlots;  // has room for every slot there is, so that returning one cannot fail
    std::size_t m_slots = 0;
};

// Up to kBlockBytes of one stream. It begins in memory and moves to the scratch file when memory is used up.
class PendingBlock {
public:
    explicit PendingBlock(std::shared_ptr<PendingData> pending) noexcept : m_pending(std::move(pending)) {}
    PendingBlock(const PendingBlock&) = delete;
    PendingBlock& operator=(const PendingBlock&) = delete;
    ~PendingBlock();

    // Reads from `offset`, all of `out`; zeros beyond what was written.
    [[nodiscard]] HRESULT Read(std::size_t offset, std::span<std::byte> out) const;
    // Writes at `offset`; a gap before it becomes zeros. `offset + in.size()` is at most kBlockBytes.
    [[nodiscard]] HRESULT Write(std::size_t offset, std::span<const std::byte> in);
    // Forgets what lies from `size` on.
    void Truncate(std::size_t size) noexcept { m_used = size < m_used ? size : m_used; }

    std::size_t Used() const noexcept { return m_used; }

private:
    static constexpr std::uint64_t kInMemory = ~std::uint64_t{0};

    [[nodiscard]] HRESULT MakeRoom(std::size_t bytes);
    [[nodiscard]] HRESULT MoveToScratch();
    [[nodiscard]] HRESULT Store(std::size_t offset, std::span<const std::byte> in);

    std::shared_ptr<PendingData> m_pending;
    std::vector<std::byte> m_memory;
    std::uint64_t m_slot = kInMemory;
    std::size_t m_used = 0;
};

}  // namespace vx_storage
