// Finds the leaf pages of the b-trees by looking through the whole file, for when the pages above them are lost.
//
// Every page carries its own place (in its signature) and a CRC, so a leaf is recognized wherever it lies. Freed pages
// are still there with what they held last: of several leaves that cover a key, the one with the highest page id was
// written last and counts. What was deleted since may come back this way.
//
// The file is read once, at the first question. Memory: about 100 bytes a leaf page meanwhile and half of that afterwards,
// which is 3 to 4 bytes a node. One thread at a time.
#pragma once

#include "localmapi/pst/ndb/PageReader.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace localmapi::pst {

class LeafScan {
public:
    // The reader is borrowed and outlives the scan.
    explicit LeafScan(PageReader& pages) noexcept : m_pages(&pages) {}

    // A range of keys, both ends included, and the leaf that counts for it.
    struct Range {
        std::uint64_t first;
        std::uint64_t last;
        PageRef leaf;
    };

    // The leaf that counts for `key`, if there is one.
    std::optional<PageRef> Covering(TreeKind kind, std::uint64_t key);

    // The ranges that reach to `from` or beyond, in the order of their keys. Borrowed until the scan ends.
    std::span<const Range> From(TreeKind kind, std::uint64_t from);

private:
    struct Leaf {
        std::uint64_t first;
        std::uint64_t last;
        PageRef ref;
    };

    void ScanOnce();
    void LookAt(FileOffset at, ByteView stored, std::vector<Leaf> (&leaves)[2]) const;
    static std::vector<Range> NewestOf(std::vector<Leaf> leaves);
    const std::vector<Range>& RangesOf(TreeKind kind) const noexcept {
        return kind == TreeKind::Nodes ? m_nodes : m_blocks;
    }

    PageReader* m_pages;
    bool m_scanned = false;
    std::vector<Range> m_nodes;  // apart from each other, in order
    std::vector<Range> m_blocks;
};

}  // namespace localmapi::pst
