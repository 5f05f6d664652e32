// A compound file as it was last written: header, allocation tables, the mini stream, and the bytes of any chain. Knows
// sectors; knows nothing of names and elements. Nothing of it changes, so any number of streams may look at it. What is
// kept in memory: the cache of a fixed size, and the numbers of the FAT's sectors, four bytes for each 64 KiB of file
// (in version 4, for each 4 MiB). One thread at a time.
#pragma once

#include "platform/linux/storage/BackingBytes.h"
#include "platform/linux/storage/CompoundFormat.h"
#include "platform/linux/storage/SectorCache.h"
#include "platform/linux/storage/SectorChain.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace vx_storage {

// Where the sectors of a chain lie: among the sectors of the file, or as 64-byte pieces in the mini stream.
enum class ChainKind { Regular, Mini };

class CompoundReader {
public:
    // Reads the header, the list of the FAT's sectors and the root's entry. The codes of ParseHeader;
    // STG_E_DOCFILECORRUPT when there is no FAT or no root.
    [[nodiscard]] static HRESULT Open(std::shared_ptr<BackingBytes> bytes, std::shared_ptr<CompoundReader>& reader);

    explicit CompoundReader(std::shared_ptr<BackingBytes> bytes) noexcept : m_cache(std::move(bytes)) {}

    // Reads from a chain, `offset` bytes into it. The caller knows the size: running out of chain or of file is
    // STG_E_DOCFILECORRUPT, with `got` saying what was there.
    [[nodiscard]] HRESULT ReadChain(SectorChain& chain, ChainKind kind, std::uint64_t offset, std::span<std::byte> out,
                                    std::size_t& got);

    // Reads entry `id` of the directory. STG_E_DOCFILECORRUPT when the directory does not reach as far.
    [[nodiscard]] HRESULT ReadEntry(std::uint32_t id, DirectoryEntry& entry);

    // How many sectors a stream of `size` bytes has.
    std::uint64_t SectorsFor(ChainKind kind, std::uint64_t size) const noexcept;

    const DirectoryEntry& Root() const noexcept { return m_root; }

    // Bytes that the file has in sectors: no stream is longer, nor are all together.
    std::uint64_t SectorBytesInFile() const noexcept { return m_sectors << m_header.sectorShift; }

    // The bytes underneath, and the same bytes in another place.
    BackingBytes& Bytes() const noexcept { return m_cache.Bytes(); }
    void Rebind(std::shared_ptr<BackingBytes> bytes) noexcept { m_cache.Rebind(std::move(bytes)); }

private:
    class Fat;
    class MiniFat;

    [[nodiscard]] HRESULT Load();
    [[nodiscard]] HRESULT LoadFatSectors();
    std::uint64_t UnitOf(ChainKind kind) const noexcept {
        return kind == ChainKind::Mini ? kMiniSectorBytes : m_header.SectorBytes();
    }
    [[nodiscard]] HRESULT ReadSectors(std::uint64_t sector, std::uint64_t within, std::span<std::byte> out);
    [[nodiscard]] HRESULT ReadRun(std::uint64_t offsetInMiniStream, std::span<std::byte> out);

    SectorCache m_cache;
    CompoundHeader m_header;
    std::uint64_t m_fileBytes = 0;
    std::uint64_t m_sectors = 0;              // that the file has, a cut last one included
    std::vector<std::uint32_t> m_fatSectors;  // all of them below m_sectors
    std::unique_ptr<AllocationTable> m_fat;
    std::unique_ptr<AllocationTable> m_miniFat;
    std::optional<SectorChain> m_directory;
    std::optional<SectorChain> m_miniFatChain;
    std::optional<SectorChain> m_miniStream;
    std::uint64_t m_miniStreamBytes = 0;  // up to the end of its last sector
    DirectoryEntry m_root;
};

}  // namespace vx_storage
