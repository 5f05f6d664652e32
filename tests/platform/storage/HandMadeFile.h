// A compound file put together by hand, for what no writer of ours makes: version 4, chains that run backwards through
// the file, siblings that are no sorted tree, and, with the places of all tables at hand, any kind of damage. It shares
// nothing with the implementation.
#pragma once

#include "StorageTestSupport.h"

namespace storage_test {

class HandMadeFile {
public:
    struct Stream {
        std::string name;  // ASCII
        Bytes bytes;
    };
    // The root holds the streams and one storage "Folder", whose only element is a stream "inside" of 10 bytes.
    HandMadeFile(unsigned version, const std::vector<Stream>& streams);

    Bytes bytes;

    std::size_t sectorBytes;
    std::size_t SectorAt(std::uint32_t sector) const { return (sector + 1) * sectorBytes; }
    std::size_t FatSlotAt(std::uint32_t sector) const { return SectorAt(fatSector) + 4 * std::size_t{sector}; }
    std::size_t MiniFatSlotAt(std::uint32_t sector) const { return SectorAt(miniFatSector) + 4 * std::size_t{sector}; }
    // Root 0, Folder 1, inside 2, then the streams.
    std::size_t EntryAt(std::uint32_t id) const {
        const std::uint32_t perSector = static_cast<std::uint32_t>(sectorBytes / 128);
        return SectorAt(directorySectors[id / perSector]) + 128 * std::size_t{id % perSector};
    }
    std::uint32_t IdOf(const std::string& name) const;
    std::uint32_t StartOf(const std::string& name) const { return Get(EntryAt(IdOf(name)) + 116); }

    std::uint32_t Get(std::size_t at) const;
    void Set(std::size_t at, std::uint32_t value);

    std::vector<Stream> streams;
    std::uint32_t fatSector = 0;
    std::uint32_t miniFatSector = 0;
    std::vector<std::uint32_t> directorySectors;

private:
    void PutHeader(unsigned version);
    void PutEntry(std::uint32_t id, const std::string& name, std::uint8_t type, std::uint32_t start,
                  std::uint64_t size);
    void Link(std::uint32_t id, std::size_t field, std::uint32_t target) { Set(EntryAt(id) + field, target); }
    std::uint32_t PutChain(const Bytes& data);

    std::vector<std::uint32_t> m_free;  // sectors not used yet; chains take them from the end of the file
};

inline constexpr std::size_t kLeft = 68;
inline constexpr std::size_t kRight = 72;
inline constexpr std::size_t kChild = 76;
inline constexpr std::size_t kStart = 116;
inline constexpr std::size_t kSizeField = 120;
inline constexpr std::uint32_t kEnd = 0xFFFFFFFE;
inline constexpr std::uint32_t kFree = 0xFFFFFFFF;

}  // namespace storage_test
