// What differs between the three forms of the file, as numbers. One reader serves all of them: it takes every width,
// offset and limit from here. [MS-PST] 2.2.2; the form with 4 KiB pages has no published description.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace localmapi::pst {

struct Layout {
    std::string_view name;

    unsigned idWidth;  // bytes of a block id, of an offset and, in b-tree entries, of a node id

    struct {
        unsigned size;         // of the header
        unsigned nodeRootAt;   // id and offset of the root page of the node b-tree
        unsigned blockRootAt;  // the same for the block b-tree
        unsigned fileEndAt;    // length of the file as its writer knew it
        unsigned sentinelAt;   // 0x80
        unsigned encodingAt;   // how data blocks are encoded
    } header;

    struct {
        unsigned size;
        unsigned trailerSize;
        unsigned countAt;  // of a b-tree page: entries in it, of countWidth bytes
        unsigned countWidth;
        unsigned entrySizeAt;  // one byte
        unsigned levelAt;      // one byte, 0 for a leaf
        unsigned entriesSize;  // bytes that the entries may take, from the page's start
    } page;

    struct {
        unsigned alignment;
        unsigned trailerSize;
        unsigned sizeLimit;  // of a stored block with trailer and padding
        bool mayBeCompressed;
    } block;

    unsigned heapIndexBits;  // bits of a heap id that number an item within its block

    // Trailers hold the id and the CRC in this order in the 32-bit form, and the other way round in the others.
    constexpr unsigned TrailerIdAt() const noexcept { return idWidth == 4 ? 4 : 8; }
    constexpr unsigned TrailerCrcAt() const noexcept { return idWidth == 4 ? 8 : 4; }

    // Bytes of data in a full block.
    constexpr unsigned FullBlock() const noexcept { return block.sizeLimit - block.trailerSize; }

    // Sizes of the entries in b-tree pages and in blocks of ids.
    constexpr unsigned InnerEntrySize() const noexcept { return 3 * idWidth; }
    constexpr unsigned BlockEntrySize() const noexcept { return idWidth == 4 ? 12 : 24; }
    constexpr unsigned NodeEntrySize() const noexcept { return 4 * idWidth; }
    constexpr unsigned SubnodeEntrySize() const noexcept { return 3 * idWidth; }
    constexpr unsigned SubnodeIndexEntrySize() const noexcept { return 2 * idWidth; }
    constexpr unsigned SubnodeEntriesAt() const noexcept { return idWidth; }
};

// wVer 14 and 15.
inline constexpr Layout kAnsiLayout = {
    .name = "ANSI",
    .idWidth = 4,
    .header =
        {.size = 512, .nodeRootAt = 184, .blockRootAt = 192, .fileEndAt = 168, .sentinelAt = 460, .encodingAt = 461},
    .page = {.size = 512,
             .trailerSize = 12,
             .countAt = 496,
             .countWidth = 1,
             .entrySizeAt = 498,
             .levelAt = 499,
             .entriesSize = 496},
    .block = {.alignment = 64, .trailerSize = 12, .sizeLimit = 8192, .mayBeCompressed = false},
    .heapIndexBits = 11,
};

// wVer 21 and 23, and 37 where its blocks are encoded like those of 23.
inline constexpr Layout kUnicodeLayout = {
    .name = "Unicode",
    .idWidth = 8,
    .header =
        {.size = 564, .nodeRootAt = 216, .blockRootAt = 232, .fileEndAt = 184, .sentinelAt = 512, .encodingAt = 513},
    .page = {.size = 512,
             .trailerSize = 16,
             .countAt = 488,
             .countWidth = 1,
             .entrySizeAt = 490,
             .levelAt = 491,
             .entriesSize = 488},
    .block = {.alignment = 64, .trailerSize = 16, .sizeLimit = 8192, .mayBeCompressed = false},
    .heapIndexBits = 11,
};

// wVer 36: .ost files of newer Outlooks.
inline constexpr Layout kLargePageLayout = {
    .name = "Unicode with 4 KiB pages",
    .idWidth = 8,
    .header = kUnicodeLayout.header,
    .page = {.size = 4096,
             .trailerSize = 24,
             .countAt = 4056,
             .countWidth = 2,
             .entrySizeAt = 4060,
             .levelAt = 4061,
             .entriesSize = 4056},
    .block = {.alignment = 512, .trailerSize = 24, .sizeLimit = 65536, .mayBeCompressed = true},
    .heapIndexBits = 14,
};

inline constexpr std::array<const Layout*, 3> kLayouts = {&kAnsiLayout, &kUnicodeLayout, &kLargePageLayout};

}  // namespace localmapi::pst
