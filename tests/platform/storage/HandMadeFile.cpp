#include "HandMadeFile.h"

#include <numeric>

namespace storage_test {
namespace {

std::size_t Sectors(std::size_t size, std::size_t unit) {
    return (size + unit - 1) / unit;
}

}  // namespace

std::uint32_t HandMadeFile::Get(std::size_t at) const {
    std::uint32_t value = 0;
    for (std::size_t i = 4; i-- > 0;) {
        value = value << 8U | bytes[at + i];
    }
    return value;
}

void HandMadeFile::Set(std::size_t at, std::uint32_t value) {
    for (std::size_t i = 0; i < 4; ++i) {
        bytes[at + i] = static_cast<std::uint8_t>(value >> (8 * i));
    }
}

std::uint32_t HandMadeFile::IdOf(const std::string& name) const {
    for (std::uint32_t i = 0; i < streams.size(); ++i) {
        if (streams[i].name == name) {
            return 3 + i;
        }
    }
    ADD_FAILURE() << "no stream " << name;
    return 0;
}

// Sectors: the FAT, the mini FAT, then everything else, taken from the end of the file backwards. One sector of each
// table is enough here: 64 KiB of file in version 3.
HandMadeFile::HandMadeFile(unsigned version, const std::vector<Stream>& given)
    : sectorBytes(version == 4 ? 4096 : 512), streams(given) {
    Bytes mini(64, 'i');
    std::size_t sectors = 2 + Sectors(3 + streams.size(), sectorBytes / 128);
    std::size_t miniBytes = 64;
    for (const Stream& stream : streams) {
        (stream.bytes.size() >= 4096 ? sectors : miniBytes) += stream.bytes.size() >= 4096
                                                                   ? Sectors(stream.bytes.size(), sectorBytes)
                                                                   : 64 * Sectors(stream.bytes.size(), 64);
    }
    sectors += Sectors(miniBytes, sectorBytes);
    EXPECT_LE(sectors, sectorBytes / 4);
    bytes.resize((sectors + 1) * sectorBytes);
    fatSector = 0;
    miniFatSector = 1;
    std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(SectorAt(0)), 2 * sectorBytes, 0xFF);
    Set(FatSlotAt(0), 0xFFFFFFFD);
    Set(FatSlotAt(1), kEnd);
    m_free.resize(sectors - 2);
    std::iota(m_free.begin(), m_free.end(), 2U);

    const std::size_t directoryBytes = Sectors(3 + streams.size(), sectorBytes / 128) * sectorBytes;
    std::uint32_t at = PutChain(Bytes(directoryBytes));
    for (; at != kEnd; at = Get(FatSlotAt(at))) {
        directorySectors.push_back(at);
    }
    Set(MiniFatSlotAt(0), kEnd);
    PutEntry(1, "Folder", 1, 0, 0);
    PutEntry(2, "inside", 2, 0, 10);
    for (std::uint32_t i = 0; i < streams.size(); ++i) {
        const Bytes& data = streams[i].bytes;
        std::uint32_t start = kEnd;
        if (data.size() >= 4096) {
            start = PutChain(data);
        } else if (!data.empty()) {
            // Mini sectors of a stream backwards too.
            const std::size_t count = Sectors(data.size(), 64);
            const auto first = static_cast<std::uint32_t>(mini.size() / 64);
            mini.resize(mini.size() + 64 * count);
            for (std::uint32_t piece = 0; piece < count; ++piece) {
                const std::uint32_t place = first + static_cast<std::uint32_t>(count) - 1 - piece;
                const std::size_t length = std::min<std::size_t>(64, data.size() - 64 * std::size_t{piece});
                std::copy_n(data.begin() + 64 * std::ptrdiff_t{piece}, length,
                            mini.begin() + 64 * std::ptrdiff_t{place});
                Set(MiniFatSlotAt(place), piece + 1 < count ? place - 1 : kEnd);
            }
            start = first + static_cast<std::uint32_t>(count) - 1;
        }
        PutEntry(3 + i, streams[i].name, 2, start, data.size());
    }
    const std::size_t miniSize = mini.size();
    PutEntry(0, "Root Entry", 5, PutChain(mini), miniSize);
    // No search tree: every sibling hangs to the right of the one before, in the order given.
    Link(0, kChild, 1);
    Link(1, kChild, 2);
    for (std::uint32_t id = 3; id < 3 + streams.size(); ++id) {
        Link(id == 3 ? 1 : id - 1, kRight, id);
    }
    PutHeader(version);
}

std::uint32_t HandMadeFile::PutChain(const Bytes& data) {
    std::uint32_t first = kEnd;
    std::uint32_t previous = kEnd;
    for (std::size_t offset = 0; offset < data.size(); offset += sectorBytes) {
        const std::uint32_t sector = m_free.back();
        m_free.pop_back();
        std::copy_n(data.begin() + static_cast<std::ptrdiff_t>(offset), std::min(sectorBytes, data.size() - offset),
                    bytes.begin() + static_cast<std::ptrdiff_t>(SectorAt(sector)));
        Set(FatSlotAt(sector), kEnd);
        if (previous == kEnd) {
            first = sector;
        } else {
            Set(FatSlotAt(previous), sector);
        }
        previous = sector;
    }
    return first;
}

void HandMadeFile::PutEntry(std::uint32_t id, const std::string& name, std::uint8_t type, std::uint32_t start,
                            std::uint64_t size) {
    const std::size_t at = EntryAt(id);
    for (std::size_t i = 0; i < name.size(); ++i) {
        bytes[at + 2 * i] = static_cast<std::uint8_t>(name[i]);
    }
    bytes[at + 64] = static_cast<std::uint8_t>(2 * (name.size() + 1));
    bytes[at + 66] = type;
    for (const std::size_t link : {kLeft, kRight, kChild}) {
        Set(at + link, kFree);
    }
    Set(at + kStart, start);
    Set(at + kSizeField, static_cast<std::uint32_t>(size));
}

void HandMadeFile::PutHeader(unsigned version) {
    constexpr std::uint8_t kSignature[] = {0xD0, 0xCF, 0x11, 0xE0, 0xA1, 0xB1, 0x1A, 0xE1};
    std::copy(std::begin(kSignature), std::end(kSignature), bytes.begin());
    Set(24, 0x3E | version << 16U);
    Set(28, 0xFFFE | (version == 4 ? 12U : 9U) << 16U);
    Set(32, 6);
    Set(40, version == 4 ? static_cast<std::uint32_t>(directorySectors.size()) : 0);
    Set(44, 1);
    Set(48, directorySectors.front());
    Set(56, 4096);
    Set(60, miniFatSector);
    Set(64, 1);
    Set(68, kEnd);
    std::fill_n(bytes.begin() + 76, 436, 0xFF);
    Set(76, fatSector);
}

}  // namespace storage_test
