// Where everything of a tree goes in a fresh compound file of version 3: the directory's entries and the sectors of
// every chain, all known before the first byte is written. Chains are laid out without gaps, so a chain is a start and a
// length, and the allocation tables follow from the list of chains.
#pragma once

#include "platform/linux/storage/CompoundFormat.h"
#include "platform/linux/storage/Node.h"

#include <cstdint>
#include <vector>

namespace vx_storage {

// One chain without gaps.
struct Extent {
    std::uint32_t start = kEndOfChain;
    std::uint32_t count = 0;
};

struct ImageLayout {
    // An element and its stream id, which is its place in `entries`.
    std::vector<Node*> nodes;  // the tree's; entries[i] describes nodes[i]
    std::vector<DirectoryEntry> entries;

    std::vector<std::uint32_t> regular;  // ids of the streams in sectors of their own, in the order of their sectors
    std::vector<std::uint32_t> mini;     // ids of those in the mini stream, in order

    // Sectors of the file, in this order.
    Extent streams;  // of all regular streams together
    Extent miniStream;
    Extent miniFat;
    Extent directory;
    Extent fat;
    Extent difat;
    std::uint32_t miniSectors = 0;

    std::uint64_t sectors = 0;  // of the whole file

    std::uint64_t ImageBytes() const noexcept;
};

inline constexpr std::size_t kImageSectorBytes = 512;
inline constexpr std::size_t kImageSlotsPerSector = kImageSectorBytes / sizeof(std::uint32_t);

// Lays a tree out. STG_E_DOCFILETOOLARGE when the file would exceed kMaxImageBytes.
[[nodiscard]] HRESULT PlanImage(Node& root, ImageLayout& layout);

}  // namespace vx_storage
