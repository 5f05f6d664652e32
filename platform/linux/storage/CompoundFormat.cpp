#include "platform/linux/storage/CompoundFormat.h"

#include <algorithm>
#include <limits>

namespace vx_storage {
namespace {

constexpr std::array<std::byte, 8> kSignature = {std::byte{0xD0}, std::byte{0xCF}, std::byte{0x11}, std::byte{0xE0},
                                                 std::byte{0xA1}, std::byte{0xB1}, std::byte{0x1A}, std::byte{0xE1}};
constexpr std::uint16_t kMinorVersion = 0x3E;
constexpr std::uint16_t kByteOrderMark = 0xFFFE;
constexpr unsigned kMiniSectorShift = 6;

// Where the fields of the header are.
constexpr std::size_t kMinorVersionAt = 24;
constexpr std::size_t kMajorVersionAt = 26;
constexpr std::size_t kByteOrderAt = 28;
constexpr std::size_t kSectorShiftAt = 30;
constexpr std::size_t kMiniSectorShiftAt = 32;
constexpr std::size_t kFatSectorsAt = 44;
constexpr std::size_t kFirstDirectorySectorAt = 48;
constexpr std::size_t kMiniStreamCutoffAt = 56;
constexpr std::size_t kFirstMiniFatSectorAt = 60;
constexpr std::size_t kMiniFatSectorsAt = 64;
constexpr std::size_t kFirstDifatSectorAt = 68;
constexpr std::size_t kDifatSectorsAt = 72;
constexpr std::size_t kDifatAt = 76;

// Where the fields of a directory entry are.
constexpr std::size_t kNameLengthAt = 64;
constexpr std::size_t kTypeAt = 66;
constexpr std::size_t kColourAt = 67;
constexpr std::size_t kLeftAt = 68;
constexpr std::size_t kRightAt = 72;
constexpr std::size_t kChildAt = 76;
constexpr std::size_t kClsidAt = 80;
constexpr std::size_t kStateBitsAt = 96;
constexpr std::size_t kCreatedAt = 100;
constexpr std::size_t kModifiedAt = 108;
constexpr std::size_t kStartSectorAt = 116;
constexpr std::size_t kSizeAt = 120;

std::uint16_t LoadU16(const std::byte* at) noexcept {
    return static_cast<std::uint16_t>(std::to_integer<unsigned>(at[0]) | std::to_integer<unsigned>(at[1]) << 8U);
}

void StoreU16(std::byte* at, unsigned value) noexcept {
    at[0] = static_cast<std::byte>(value);
    at[1] = static_cast<std::byte>(value >> 8U);
}

CLSID LoadGuid(const std::byte* at) noexcept {
    CLSID guid = {LoadU32(at), LoadU16(at + 4), LoadU16(at + 6), {}};
    std::transform(at + 8, at + 16, guid.Data4, [](std::byte b) { return std::to_integer<std::uint8_t>(b); });
    return guid;
}

void StoreGuid(std::byte* at, const CLSID& guid) noexcept {
    StoreU32(at, guid.Data1);
    StoreU16(at + 4, guid.Data2);
    StoreU16(at + 6, guid.Data3);
    std::ranges::transform(guid.Data4, at + 8, [](std::uint8_t b) { return static_cast<std::byte>(b); });
}

FILETIME LoadTime(const std::byte* at) noexcept {
    return {LoadU32(at), LoadU32(at + 4)};
}

void StoreTime(std::byte* at, const FILETIME& time) noexcept {
    StoreU32(at, time.dwLowDateTime);
    StoreU32(at + 4, time.dwHighDateTime);
}

// The name ends at its terminator; the length field, which counts it, may end it earlier.
CStringW LoadName(std::span<const std::byte, kEntryBytes> bytes) {
    const std::size_t said = LoadU16(bytes.data() + kNameLengthAt) / sizeof(WCHAR);
    const std::size_t most = std::min(said == 0 ? 0 : said - 1, kMaxNameUnits);
    CStringW name;
    for (std::size_t i = 0; i < most; ++i) {
        const std::uint16_t unit = LoadU16(bytes.data() + i * sizeof(WCHAR));
        if (unit == 0) {
            break;
        }
        name.push_back(static_cast<WCHAR>(unit));
    }
    return name;
}

EntryType KnownType(std::byte type) noexcept {
    switch (std::to_integer<unsigned>(type)) {
        case 1: return EntryType::Storage;
        case 2: return EntryType::Stream;
        case 5: return EntryType::Root;
        default: return EntryType::Unused;
    }
}

}  // namespace

bool HasCompoundSignature(std::span<const std::byte> bytes) noexcept {
    return bytes.size() >= kSignature.size() && std::ranges::equal(bytes.first(kSignature.size()), kSignature);
}

HRESULT ParseHeader(std::span<const std::byte, kHeaderBytes> bytes, CompoundHeader& header) noexcept {
    const std::byte* const at = bytes.data();
    if (!HasCompoundSignature(bytes)) {
        return STG_E_FILEALREADYEXISTS;
    }
    header.majorVersion = LoadU16(at + kMajorVersionAt);
    header.sectorShift = LoadU16(at + kSectorShiftAt);
    if (header.majorVersion < 3) {
        return STG_E_OLDFORMAT;
    }
    const bool knownSizes =
        (header.majorVersion == 3 && header.sectorShift == 9) || (header.majorVersion == 4 && header.sectorShift == 12);
    if (!knownSizes || LoadU16(at + kMiniSectorShiftAt) != kMiniSectorShift
        || LoadU32(at + kMiniStreamCutoffAt) != kMiniStreamCutoff || LoadU16(at + kByteOrderAt) != kByteOrderMark) {
        return STG_E_DOCFILECORRUPT;
    }
    header.fatSectors = LoadU32(at + kFatSectorsAt);
    header.firstDirectorySector = LoadU32(at + kFirstDirectorySectorAt);
    header.firstMiniFatSector = LoadU32(at + kFirstMiniFatSectorAt);
    header.miniFatSectors = LoadU32(at + kMiniFatSectorsAt);
    header.firstDifatSector = LoadU32(at + kFirstDifatSectorAt);
    header.difatSectors = LoadU32(at + kDifatSectorsAt);
    for (std::size_t i = 0; i < kHeaderDifatSlots; ++i) {
        header.difat[i] = LoadU32(at + kDifatAt + 4 * i);
    }
    return S_OK;
}

void StoreHeader(const CompoundHeader& header, std::span<std::byte, kHeaderBytes> bytes) noexcept {
    std::byte* const at = bytes.data();
    std::ranges::fill(bytes, std::byte{0});
    std::ranges::copy(kSignature, at);
    StoreU16(at + kMinorVersionAt, kMinorVersion);
    StoreU16(at + kMajorVersionAt, header.majorVersion);
    StoreU16(at + kByteOrderAt, kByteOrderMark);
    StoreU16(at + kSectorShiftAt, header.sectorShift);
    StoreU16(at + kMiniSectorShiftAt, kMiniSectorShift);
    StoreU32(at + kFatSectorsAt, header.fatSectors);
    StoreU32(at + kFirstDirectorySectorAt, header.firstDirectorySector);
    StoreU32(at + kMiniStreamCutoffAt, static_cast<std::uint32_t>(kMiniStreamCutoff));
    StoreU32(at + kFirstMiniFatSectorAt, header.firstMiniFatSector);
    StoreU32(at + kMiniFatSectorsAt, header.miniFatSectors);
    StoreU32(at + kFirstDifatSectorAt, header.firstDifatSector);
    StoreU32(at + kDifatSectorsAt, header.difatSectors);
    for (std::size_t i = 0; i < kHeaderDifatSlots; ++i) {
        StoreU32(at + kDifatAt + 4 * i, header.difat[i]);
    }
}

DirectoryEntry ParseEntry(std::span<const std::byte, kEntryBytes> bytes, std::uint16_t majorVersion) {
    const std::byte* const at = bytes.data();
    DirectoryEntry entry;
    entry.type = KnownType(at[kTypeAt]);
    entry.name = LoadName(bytes);
    entry.colour = at[kColourAt] == std::byte{0} ? EntryColour::Red : EntryColour::Black;
    entry.left = LoadU32(at + kLeftAt);
    entry.right = LoadU32(at + kRightAt);
    entry.child = LoadU32(at + kChildAt);
    entry.clsid = LoadGuid(at + kClsidAt);
    entry.stateBits = LoadU32(at + kStateBitsAt);
    entry.created = LoadTime(at + kCreatedAt);
    entry.modified = LoadTime(at + kModifiedAt);
    entry.startSector = LoadU32(at + kStartSectorAt);
    entry.size = LoadU32(at + kSizeAt);
    if (majorVersion > 3) {
        entry.size |= std::uint64_t{LoadU32(at + kSizeAt + 4)} << 32U;
    }
    return entry;
}

void StoreEntry(const DirectoryEntry& entry, std::span<std::byte, kEntryBytes> bytes) noexcept {
    std::byte* const at = bytes.data();
    std::ranges::fill(bytes, std::byte{0});
    StoreU32(at + kLeftAt, entry.left);
    StoreU32(at + kRightAt, entry.right);
    StoreU32(at + kChildAt, entry.child);
    if (entry.type == EntryType::Unused) {
        return;
    }
    const std::size_t units = std::min(entry.name.size(), kMaxNameUnits);
    for (std::size_t i = 0; i < units; ++i) {
        StoreU16(at + i * sizeof(WCHAR), entry.name[i]);
    }
    StoreU16(at + kNameLengthAt, static_cast<unsigned>((units + 1) * sizeof(WCHAR)));
    at[kTypeAt] = static_cast<std::byte>(entry.type);
    at[kColourAt] = static_cast<std::byte>(entry.colour);
    StoreGuid(at + kClsidAt, entry.clsid);
    StoreU32(at + kStateBitsAt, entry.stateBits);
    StoreTime(at + kCreatedAt, entry.created);
    StoreTime(at + kModifiedAt, entry.modified);
    StoreU32(at + kStartSectorAt, entry.startSector);
    StoreU32(at + kSizeAt, static_cast<std::uint32_t>(entry.size));
    StoreU32(at + kSizeAt + 4, static_cast<std::uint32_t>(entry.size >> 32U));
}

}  // namespace vx_storage
