// The fixed structures of a compound file, [MS-CFB] 2.2 and 2.6: from bytes and to bytes, nothing else.
#pragma once

#include "platform/BaseTypes.h"
#include "platform/Guid.h"
#include "platform/ResultCodes.h"
#include "platform/WideText.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace vx_storage {

inline constexpr std::size_t kHeaderBytes = 512;
inline constexpr std::size_t kHeaderDifatSlots = 109;
inline constexpr std::size_t kEntryBytes = 128;
inline constexpr std::size_t kMiniSectorBytes = 64;
inline constexpr std::uint64_t kMiniStreamCutoff = 4096;  // streams of this size and more have sectors of their own
inline constexpr std::size_t kMaxNameUnits = 31;

// What a slot of an allocation table may say, besides the number of the next sector of the chain.
inline constexpr std::uint32_t kMaxRegularSector = 0xFFFFFFFA;
inline constexpr std::uint32_t kDifatSector = 0xFFFFFFFC;
inline constexpr std::uint32_t kFatSector = 0xFFFFFFFD;
inline constexpr std::uint32_t kEndOfChain = 0xFFFFFFFE;
inline constexpr std::uint32_t kFreeSector = 0xFFFFFFFF;

inline constexpr std::uint32_t kNoEntry = 0xFFFFFFFF;

constexpr std::uint32_t LoadU32(const std::byte* at) noexcept {
    return std::to_integer<std::uint32_t>(at[0]) | std::to_integer<std::uint32_t>(at[1]) << 8U
           | std::to_integer<std::uint32_t>(at[2]) << 16U | std::to_integer<std::uint32_t>(at[3]) << 24U;
}

constexpr void StoreU32(std::byte* at, std::uint32_t value) noexcept {
    for (unsigned i = 0; i < 4; ++i) {
        at[i] = static_cast<std::byte>(value >> (8U * i));
    }
}

// [MS-CFB] 2.2. Of the counts only those are kept that something may be concluded from.
struct CompoundHeader {
    std::uint16_t majorVersion = 3;
    unsigned sectorShift = 9;  // sectors have 512 bytes, in version 4 4096
    std::uint32_t fatSectors = 0;
    std::uint32_t firstDirectorySector = kEndOfChain;
    std::uint32_t firstMiniFatSector = kEndOfChain;
    std::uint32_t miniFatSectors = 0;
    std::uint32_t firstDifatSector = kEndOfChain;
    std::uint32_t difatSectors = 0;
    std::array<std::uint32_t, kHeaderDifatSlots> difat;  // sectors of the FAT, kFreeSector where there is none

    CompoundHeader() noexcept { difat.fill(kFreeSector); }
    std::size_t SectorBytes() const noexcept { return std::size_t{1} << sectorShift; }
};

// True when the bytes begin with the signature of a compound file.
bool HasCompoundSignature(std::span<const std::byte> bytes) noexcept;

// Takes a header apart. STG_E_FILEALREADYEXISTS without the signature (what StgOpenStorage answers for a file of
// another kind), STG_E_OLDFORMAT for a version below 3, STG_E_DOCFILECORRUPT for sizes that no version has.
[[nodiscard]] HRESULT ParseHeader(std::span<const std::byte, kHeaderBytes> bytes, CompoundHeader& header) noexcept;

// Writes a header of version 3.
void StoreHeader(const CompoundHeader& header, std::span<std::byte, kHeaderBytes> bytes) noexcept;

enum class EntryType : std::uint8_t { Unused = 0, Storage = 1, Stream = 2, Root = 5 };
enum class EntryColour : std::uint8_t { Red = 0, Black = 1 };

// [MS-CFB] 2.6.1.
struct DirectoryEntry {
    CStringW name;
    EntryType type = EntryType::Unused;
    EntryColour colour = EntryColour::Black;
    std::uint32_t left = kNoEntry;
    std::uint32_t right = kNoEntry;
    std::uint32_t child = kNoEntry;
    CLSID clsid = GUID_NULL;
    DWORD stateBits = 0;
    FILETIME created = {};
    FILETIME modified = {};
    std::uint32_t startSector = kEndOfChain;
    std::uint64_t size = 0;
};

// Takes an entry apart, whatever it holds: an unknown type becomes Unused, a name without an end is cut. In version 3
// the upper half of the size is not looked at, since some writers leave remains there.
DirectoryEntry ParseEntry(std::span<const std::byte, kEntryBytes> bytes, std::uint16_t majorVersion);

// Writes an entry; an Unused one becomes the filler between the last entry and the end of the sector.
void StoreEntry(const DirectoryEntry& entry, std::span<std::byte, kEntryBytes> bytes) noexcept;

}  // namespace vx_storage
