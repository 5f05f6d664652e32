#include "localmapi/pst/ndb/LeafScan.h"

#include <algorithm>
#include <queue>
#include <string>
#include <utility>

namespace localmapi::pst {

namespace {

constexpr std::uint64_t kChunk = 1U << 20;  // a multiple of every page size

}  // namespace

std::optional<PageRef> LeafScan::Covering(TreeKind kind, std::uint64_t key) {
    const std::span<const Range> ranges = From(kind, key);
    if (ranges.empty() || ranges.front().first > key) {
        return std::nullopt;
    }
    return ranges.front().leaf;
}

std::span<const LeafScan::Range> LeafScan::From(TreeKind kind, std::uint64_t from) {
    ScanOnce();
    const std::vector<Range>& ranges = RangesOf(kind);
    const auto first = std::lower_bound(ranges.begin(), ranges.end(), from,
                                        [](const Range& range, std::uint64_t key) { return range.last < key; });
    return {first, ranges.end()};
}

void LeafScan::ScanOnce() {
    if (std::exchange(m_scanned, true)) {
        return;
    }
    const std::uint64_t size = m_pages->Source().Size();
    const unsigned pageSize = m_pages->Form().page.size;
    std::vector<Leaf> leaves[2];
    Bytes chunk;
    for (std::uint64_t at = 0; at < size; at += kChunk) {
        chunk.resize(static_cast<std::size_t>(std::min(kChunk, size - at)));
        if (!m_pages->Source().ReadAt(at, chunk)) {
            m_pages->Problems().Report("the file cannot be read from " + Hex(at) + " on; b-tree pages there are lost");
            break;
        }
        for (std::uint64_t in = 0; Inside(in, pageSize, chunk.size()); in += pageSize) {
            LookAt(FileOffset{at + in}, ByteView(chunk).Part(in, pageSize), leaves);
        }
    }
    m_pages->Problems().Report("b-trees: looking through the file found " + std::to_string(leaves[0].size())
                               + " pages of nodes and " + std::to_string(leaves[1].size()) + " of blocks");
    m_nodes = NewestOf(std::move(leaves[0]));
    m_blocks = NewestOf(std::move(leaves[1]));
}

void LeafScan::LookAt(FileOffset at, ByteView stored, std::vector<Leaf> (&leaves)[2]) const {
    const Layout& layout = m_pages->Form();
    const std::uint8_t type = stored.U8(layout.page.size - layout.page.trailerSize);
    for (const TreeKind kind : {TreeKind::Nodes, TreeKind::Blocks}) {
        if (type != static_cast<std::uint8_t>(kind)) {
            continue;
        }
        const BufferHold page = m_pages->Recognize(at, stored, kind);
        if (!page || page->level != 0 || page->entryCount == 0) {
            continue;
        }
        const ByteView trailer = stored.Part(layout.page.size - layout.page.trailerSize);
        Leaf leaf{UINT64_MAX, 0, PageRef{trailer.Number(layout.TrailerIdAt(), layout.idWidth), at}};
        for (unsigned i = 0; i < page->entryCount; ++i) {
            const std::uint64_t key = KeyOf(layout, kind, EntryOf(*page, i));
            leaf.first = std::min(leaf.first, key);
            leaf.last = std::max(leaf.last, key);
        }
        leaves[kind == TreeKind::Nodes ? 0 : 1].push_back(leaf);
    }
}

// Cuts the keys at every place where a leaf begins or has ended, and gives each piece to the newest leaf over it.
std::vector<LeafScan::Range> LeafScan::NewestOf(std::vector<Leaf> leaves) {
    std::sort(leaves.begin(), leaves.end(), [](const Leaf& a, const Leaf& b) { return a.first < b.first; });
    std::vector<std::uint64_t> cuts;
    for (const Leaf& leaf : leaves) {
        cuts.push_back(leaf.first);
        if (leaf.last != UINT64_MAX) {
            cuts.push_back(leaf.last + 1);
        }
    }
    std::sort(cuts.begin(), cuts.end());
    cuts.erase(std::unique(cuts.begin(), cuts.end()), cuts.end());

    const auto older = [](const Leaf* a, const Leaf* b) { return a->ref.id < b->ref.id; };
    std::priority_queue<const Leaf*, std::vector<const Leaf*>, decltype(older)> open(older);
    std::vector<Range> ranges;
    std::size_t next = 0;
    for (std::size_t i = 0; i < cuts.size(); ++i) {
        const std::uint64_t from = cuts[i];
        const std::uint64_t last = i + 1 < cuts.size() ? cuts[i + 1] - 1 : UINT64_MAX;
        for (; next < leaves.size() && leaves[next].first <= from; ++next) {
            open.push(&leaves[next]);
        }
        while (!open.empty() && open.top()->last < from) {
            open.pop();
        }
        if (open.empty()) {
            continue;
        }
        const PageRef leaf = open.top()->ref;
        if (!ranges.empty() && ranges.back().leaf.at == leaf.at && ranges.back().last + 1 == from) {
            ranges.back().last = last;
        } else {
            ranges.push_back(Range{from, last, leaf});
        }
    }
    return ranges;
}

}  // namespace localmapi::pst
