// The bytes of one stream as its storage sees them: what the file holds, with the blocks written since on top. A copy is
// cheap and independent: blocks are shared until one side writes. One thread at a time.
#pragma once

#include "platform/linux/storage/CompoundReader.h"
#include "platform/linux/storage/PendingData.h"

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace vx_storage {

class StreamContent {
public:
    // An empty stream, or a stream of the file.
    StreamContent() = default;
    StreamContent(std::shared_ptr<CompoundReader> file, std::uint32_t startSector, std::uint64_t size) noexcept;

    std::uint64_t Size() const noexcept { return m_size; }

    // Reads from `offset`; `got` is less than asked at the end. STG_E_DOCFILECORRUPT where the file's chain is damaged,
    // with `got` saying what lies before the damage.
    [[nodiscard]] HRESULT Read(std::uint64_t offset, std::span<std::byte> out, std::size_t& got) const;

    // Writes all of `in` at `offset`; a gap before it becomes zeros. STG_E_DOCFILETOOLARGE beyond kMaxImageBytes. On
    // failure `done` bytes from the start are written.
    [[nodiscard]] HRESULT Write(std::uint64_t offset, std::span<const std::byte> in,
                                const std::shared_ptr<PendingData>& pending, std::size_t& done);

    // Cuts the stream, or adds zeros.
    [[nodiscard]] HRESULT SetSize(std::uint64_t size, const std::shared_ptr<PendingData>& pending);

    // The file that unwritten bytes come from, and how many of them there may be; null and 0 for none.
    const CompoundReader* File() const noexcept { return m_file.get(); }
    std::uint64_t BytesInFile() const noexcept { return m_fileLimit; }

private:
    [[nodiscard]] HRESULT ReadFile(std::uint64_t offset, std::span<std::byte> out, std::size_t& got) const;
    [[nodiscard]] HRESULT OwnBlock(std::size_t index, bool keepContents, const std::shared_ptr<PendingData>& pending);
    bool HasBlock(std::uint64_t index) const noexcept {
        return index < m_blocks.size() && m_blocks[static_cast<std::size_t>(index)] != nullptr;
    }

    std::uint64_t m_size = 0;
    std::vector<std::shared_ptr<PendingBlock>> m_blocks;  // null where nothing was written
    std::shared_ptr<CompoundReader> m_file;
    std::uint64_t m_fileSize = 0;   // of the stream in the file
    std::uint64_t m_fileLimit = 0;  // bytes from here on are not the file's, even where no block is
    std::uint32_t m_startSector = kEndOfChain;
    ChainKind m_kind = ChainKind::Regular;
    mutable std::shared_ptr<SectorChain> m_chain;  // made by the first read; shared, since it only remembers
};

}  // namespace vx_storage
