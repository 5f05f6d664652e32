#include "platform/linux/storage/CompoundReader.h"

#include <algorithm>
#include <unordered_set>

namespace vx_storage {

// The FAT's blocks are sectors whose numbers are known.
class CompoundReader::Fat final : public AllocationTable {
public:
    explicit Fat(CompoundReader& file) : AllocationTable(file.m_header.SectorBytes(), file.m_sectors), m_file(file) {}

private:
    HRESULT ReadBlock(std::uint64_t index, std::span<std::byte> block) override {
        if (index >= m_file.m_fatSectors.size()) {
            return STG_E_DOCFILECORRUPT;
        }
        return m_file.ReadSectors(m_file.m_fatSectors[static_cast<std::size_t>(index)], 0, block);
    }

    CompoundReader& m_file;
};

// The mini FAT's blocks are a chain of the FAT.
class CompoundReader::MiniFat final : public AllocationTable {
public:
    explicit MiniFat(CompoundReader& file)
        : AllocationTable(file.m_header.SectorBytes(), file.m_miniStreamBytes / kMiniSectorBytes), m_file(file) {}

private:
    HRESULT ReadBlock(std::uint64_t index, std::span<std::byte> block) override {
        std::size_t got = 0;
        return m_file.ReadChain(*m_file.m_miniFatChain, ChainKind::Regular, index * block.size(), block, got);
    }

    CompoundReader& m_file;
};

HRESULT CompoundReader::Open(std::shared_ptr<BackingBytes> bytes, std::shared_ptr<CompoundReader>& reader) {
    auto made = std::make_shared<CompoundReader>(std::move(bytes));
    const HRESULT hr = made->Load();
    if (SUCCEEDED(hr)) {
        reader = std::move(made);
    }
    return hr;
}

HRESULT CompoundReader::Load() {
    std::array<std::byte, kHeaderBytes> bytes = {};
    std::size_t got = 0;
    if (const HRESULT hr = m_cache.ReadAt(0, bytes, got); FAILED(hr)) {
        return hr;
    }
    if (got < bytes.size()) {
        return HasCompoundSignature(std::span(bytes).first(got)) ? STG_E_DOCFILECORRUPT : STG_E_FILEALREADYEXISTS;
    }
    if (const HRESULT hr = ParseHeader(bytes, m_header); FAILED(hr)) {
        return hr;
    }
    if (const HRESULT hr = Bytes().GetSize(m_fileBytes); FAILED(hr)) {
        return hr;
    }
    // Sector 0 begins one sector into the file, behind the header.
    const std::uint64_t sectorBytes = m_header.SectorBytes();
    const std::uint64_t wholeOrCut = m_fileBytes / sectorBytes + (m_fileBytes % sectorBytes != 0 ? 1 : 0);
    m_sectors = std::min<std::uint64_t>(wholeOrCut == 0 ? 0 : wholeOrCut - 1, std::uint64_t{kMaxRegularSector} + 1);
    if (const HRESULT hr = LoadFatSectors(); FAILED(hr)) {
        return hr;
    }
    m_fat = std::make_unique<Fat>(*this);
    m_directory.emplace(m_header.firstDirectorySector);
    m_miniFatChain.emplace(m_header.firstMiniFatSector);
    if (const HRESULT hr = ReadEntry(0, m_root); FAILED(hr)) {
        return hr;
    }
    if (m_root.type != EntryType::Root) {
        return STG_E_DOCFILECORRUPT;
    }
    // Some writers count the mini stream up to its last piece, some up to the end of its last sector.
    const std::uint64_t miniStreamBytes = std::min(m_root.size, SectorBytesInFile());
    m_miniStreamBytes = (miniStreamBytes + sectorBytes - 1) / sectorBytes * sectorBytes;
    m_miniStream.emplace(m_root.startSector);
    m_miniFat = std::make_unique<MiniFat>(*this);
    return S_OK;
}

// Collects the numbers of the FAT's sectors from the header and the chain of DIFAT sectors, [MS-CFB] 2.5. The counts in
// the header are not believed: a list ends at its first slot that names no sector of the file.
HRESULT CompoundReader::LoadFatSectors() {
    const std::uint64_t slots = m_header.SectorBytes() / sizeof(std::uint32_t);
    const std::uint64_t useful = (m_sectors + slots - 1) / slots;  // more would speak of sectors that are not there
    const auto take = [&](std::uint32_t sector) {
        const bool more = sector < m_sectors && m_fatSectors.size() < useful;
        if (more) {
            m_fatSectors.push_back(sector);
        }
        return more;
    };
    bool more = std::ranges::all_of(m_header.difat, take);
    std::unordered_set<std::uint32_t> seen;
    std::vector<std::byte> block(m_header.SectorBytes());
    std::uint32_t difatSector = m_header.firstDifatSector;
    while (more && difatSector < m_sectors && seen.insert(difatSector).second) {
        if (const HRESULT hr = ReadSectors(difatSector, 0, block); FAILED(hr)) {
            return hr;
        }
        for (std::size_t i = 0; more && i + 1 < slots; ++i) {
            more = take(LoadU32(block.data() + i * sizeof(std::uint32_t)));
        }
        difatSector = LoadU32(block.data() + block.size() - sizeof(std::uint32_t));
    }
    return m_fatSectors.empty() ? STG_E_DOCFILECORRUPT : S_OK;
}

HRESULT CompoundReader::ReadChain(SectorChain& chain, ChainKind kind, std::uint64_t offset, std::span<std::byte> out,
                                  std::size_t& got) {
    AllocationTable& table = kind == ChainKind::Mini ? *m_miniFat : *m_fat;
    const std::uint64_t sectorBytes = UnitOf(kind);
    got = 0;
    while (got < out.size()) {
        const std::uint64_t at = offset + got;
        const std::uint64_t within = at % sectorBytes;
        const std::uint64_t wanted = (within + (out.size() - got) + sectorBytes - 1) / sectorBytes;
        std::uint32_t sector = 0;
        std::uint64_t count = 0;
        if (const HRESULT hr = chain.FindRun(table, at / sectorBytes, wanted, sector, count); FAILED(hr)) {
            return hr;
        }
        const auto bytes =
            static_cast<std::size_t>(std::min<std::uint64_t>(count * sectorBytes - within, out.size() - got));
        const std::span<std::byte> part = out.subspan(got, bytes);
        const HRESULT hr =
            kind == ChainKind::Mini ? ReadRun(sector * sectorBytes + within, part) : ReadSectors(sector, within, part);
        if (FAILED(hr)) {
            return hr;
        }
        got += bytes;
    }
    return S_OK;
}

std::uint64_t CompoundReader::SectorsFor(ChainKind kind, std::uint64_t size) const noexcept {
    const std::uint64_t unit = UnitOf(kind);
    return size / unit + (size % unit != 0 ? 1 : 0);
}

HRESULT CompoundReader::ReadEntry(std::uint32_t id, DirectoryEntry& entry) {
    std::array<std::byte, kEntryBytes> bytes = {};
    std::size_t got = 0;
    const HRESULT hr = ReadChain(*m_directory, ChainKind::Regular, std::uint64_t{id} * kEntryBytes, bytes, got);
    if (SUCCEEDED(hr)) {
        entry = ParseEntry(bytes, m_header.majorVersion);
    }
    return hr;
}

// Reads from neighbouring sectors of the file. A last sector that the file cuts off is filled up with zeros.
HRESULT CompoundReader::ReadSectors(std::uint64_t sector, std::uint64_t within, std::span<std::byte> out) {
    const std::uint64_t offset = ((sector + 1) << m_header.sectorShift) + within;
    std::size_t got = 0;
    if (const HRESULT hr = m_cache.ReadAt(offset, out, got); FAILED(hr)) {
        return hr;
    }
    std::ranges::fill(out.subspan(got), std::byte{0});
    const bool shrank = got < out.size() && offset + got < m_fileBytes;
    return shrank ? STG_E_DOCFILECORRUPT : S_OK;
}

HRESULT CompoundReader::ReadRun(std::uint64_t offsetInMiniStream, std::span<std::byte> out) {
    std::size_t got = 0;
    return ReadChain(*m_miniStream, ChainKind::Regular, offsetInMiniStream, out, got);
}

}  // namespace vx_storage
