#include "platform/linux/storage/ImageLayout.h"

#include "platform/linux/storage/FileTally.h"
#include "platform/linux/storage/Limits.h"

#include <algorithm>
#include <bit>
#include <span>
#include <utility>

namespace vx_storage {
namespace {

constexpr std::uint64_t UnitsFor(std::uint64_t bytes, std::uint64_t unit) noexcept {
    return (bytes + unit - 1) / unit;
}

// Makes the entries with ids `first` to `first + count - 1`, which are in order, a binary search tree and gives its
// root. The tree is as flat as can be; where its lowest level is not full, that level is red and all others black,
// which makes every way down pass equally many black entries.
class SiblingTree {
public:
    SiblingTree(std::vector<DirectoryEntry>& entries, std::size_t count)
        : m_entries(entries),
          m_redLevel(std::has_single_bit(count + 1) ? kNoLevel : static_cast<int>(std::bit_width(count)) - 1) {}

    std::uint32_t Build(std::uint32_t first, std::uint32_t count, int level) {
        if (count == 0) {
            return kNoEntry;
        }
        const std::uint32_t below = count / 2;
        const std::uint32_t middle = first + below;
        DirectoryEntry& entry = m_entries[middle];
        entry.colour = level == m_redLevel ? EntryColour::Red : EntryColour::Black;
        entry.left = Build(first, below, level + 1);
        entry.right = Build(middle + 1, count - below - 1, level + 1);
        return middle;
    }

private:
    static constexpr int kNoLevel = -1;

    std::vector<DirectoryEntry>& m_entries;
    int m_redLevel;
};

DirectoryEntry EntryOf(const Node& node) {
    DirectoryEntry entry;
    entry.name = node.name;
    if (node.kind == NodeKind::Stream) {
        entry.type = EntryType::Stream;
        entry.size = node.content.Size();
        return entry;
    }
    entry.type = EntryType::Storage;
    entry.clsid = node.clsid;
    entry.stateBits = node.stateBits;
    entry.created = node.created;
    entry.modified = node.modified;
    entry.startSector = 0;
    return entry;
}

// Gives every node its id: the elements of one storage get neighbouring ones, in order.
HRESULT PlanEntries(Node& root, ImageLayout& layout) {
    layout.nodes.push_back(&root);
    layout.entries.push_back(EntryOf(root));
    layout.entries.front().type = EntryType::Root;
    layout.entries.front().name = "Root Entry"_w;
    layout.entries.front().startSector = kEndOfChain;
    for (std::size_t id = 0; id < layout.nodes.size(); ++id) {
        const Node::Children& children = layout.nodes[id]->children;
        if (layout.nodes.size() + children.size() > kMaxElements) {
            return STG_E_DOCFILETOOLARGE;
        }
        const auto first = static_cast<std::uint32_t>(layout.nodes.size());
        for (const auto& [name, child] : children) {
            layout.nodes.push_back(child.get());
            layout.entries.push_back(EntryOf(*child));
        }
        layout.entries[id].child =
            SiblingTree(layout.entries, children.size()).Build(first, static_cast<std::uint32_t>(children.size()), 0);
    }
    return S_OK;
}

// Gives every stream its first sector, counted from the start of all streams, or its first mini sector.
HRESULT PlanStreams(ImageLayout& layout) {
    std::uint64_t sectors = 0;
    std::uint64_t miniSectors = 0;
    FileTally tally;
    for (std::uint32_t id = 1; id < layout.entries.size(); ++id) {
        DirectoryEntry& entry = layout.entries[id];
        if (entry.type != EntryType::Stream || entry.size == 0) {
            continue;
        }
        if (!tally.Add(layout.nodes[id]->content)) {
            return STG_E_DOCFILECORRUPT;
        }
        const bool isMini = entry.size < kMiniStreamCutoff;
        (isMini ? layout.mini : layout.regular).push_back(id);
        std::uint64_t& next = isMini ? miniSectors : sectors;
        entry.startSector = static_cast<std::uint32_t>(next);
        next += UnitsFor(entry.size, isMini ? kMiniSectorBytes : kImageSectorBytes);
        if (sectors * kImageSectorBytes > kMaxImageBytes || miniSectors * kMiniSectorBytes > kMaxImageBytes) {
            return STG_E_DOCFILETOOLARGE;
        }
    }
    layout.streams = {0, static_cast<std::uint32_t>(sectors)};
    layout.miniSectors = static_cast<std::uint32_t>(miniSectors);
    return S_OK;
}

// Counts the sectors of the FAT and of the DIFAT, which have slots for themselves too: [MS-CFB] 2.3 and 2.5.
std::pair<std::uint64_t, std::uint64_t> TableSectors(std::uint64_t others) noexcept {
    std::uint64_t fat = 0;
    std::uint64_t difat = 0;
    for (;;) {
        const std::uint64_t neededFat = UnitsFor(others + fat + difat, kImageSlotsPerSector);
        const std::uint64_t beyondHeader = neededFat > kHeaderDifatSlots ? neededFat - kHeaderDifatSlots : 0;
        const std::uint64_t neededDifat = UnitsFor(beyondHeader, kImageSlotsPerSector - 1);
        if (neededFat == fat && neededDifat == difat) {
            return {fat, difat};
        }
        fat = neededFat;
        difat = neededDifat;
    }
}

}  // namespace

std::uint64_t ImageLayout::ImageBytes() const noexcept {
    return (sectors + 1) * kImageSectorBytes;
}

HRESULT PlanImage(Node& root, ImageLayout& layout) {
    if (const HRESULT hr = PlanEntries(root, layout); FAILED(hr)) {
        return hr;
    }
    if (const HRESULT hr = PlanStreams(layout); FAILED(hr)) {
        return hr;
    }
    layout.sectors = layout.streams.count;
    const auto append = [&](Extent& extent, std::uint64_t count) {
        if (count > 0) {
            extent = {static_cast<std::uint32_t>(layout.sectors), static_cast<std::uint32_t>(count)};
        }
        layout.sectors += count;
    };
    const std::uint64_t miniStreamBytes = std::uint64_t{layout.miniSectors} * kMiniSectorBytes;
    append(layout.miniStream, UnitsFor(miniStreamBytes, kImageSectorBytes));
    append(layout.miniFat, UnitsFor(layout.miniSectors, kImageSlotsPerSector));
    append(layout.directory, UnitsFor(layout.entries.size(), kImageSectorBytes / kEntryBytes));
    const auto [fat, difat] = TableSectors(layout.sectors);
    append(layout.fat, fat);
    append(layout.difat, difat);

    layout.entries.front().startSector = layout.miniStream.start;
    layout.entries.front().size = miniStreamBytes;
    return layout.ImageBytes() > kMaxImageBytes ? STG_E_DOCFILETOOLARGE : S_OK;
}

}  // namespace vx_storage
