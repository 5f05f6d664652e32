// One of the two b-trees: finds an entry by its key, or walks over all of them. Where a page is lost, the leaves below
// it are found by looking through the file. One thread at a time.
#pragma once

#include "localmapi/base/Result.h"
#include "localmapi/pst/ndb/LeafScan.h"
#include "localmapi/pst/ndb/PageReader.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <unordered_set>

namespace localmapi::pst {

// An entry of a leaf, and the page that it stands in.
struct LeafEntry {
    BufferHold page;
    ByteView bytes;  // lives in the page
};

class PageTree {
public:
    // Reader and scan are borrowed and outlive the tree. The root is not looked at before the first question.
    PageTree(PageReader& pages, LeafScan& scan, TreeKind kind, PageRef root) noexcept
        : m_pages(&pages), m_scan(&scan), m_kind(kind), m_root(root) {}

    // NotFound when the tree has no such key; Corrupt when the pages that would tell are lost; ReadFailed.
    Result<LeafEntry> Find(std::uint64_t key);

    // Calls `visit` with the key and the entry of every leaf entry whose key is `from` or higher, in the order of the
    // tree, which is that of the keys in a sound file; until `visit` gives false. Lost pages are reported and passed
    // over.
    using Visitor = std::function<bool(std::uint64_t key, ByteView entry)>;
    void Walk(std::uint64_t from, const Visitor& visit);

private:
    // Keys from `first` to `last`, both included.
    struct Keys {
        std::uint64_t first;
        std::uint64_t last;
    };
    struct WalkState {
        const Visitor* visit;
        std::unordered_set<std::uint64_t> visited;  // offsets of pages
    };

    PageRef ChildAt(const Buffer& page, unsigned index) const noexcept;
    unsigned ChildFor(const Buffer& page, std::uint64_t key) const noexcept;
    std::optional<LeafEntry> FindInLeaf(const BufferHold& page, std::uint64_t key) const noexcept;
    Result<LeafEntry> FindByScan(std::uint64_t key, Error otherwise);
    bool IsStrange(const Buffer& page, Keys keys) const noexcept;
    std::optional<Keys> KeysBelow(const Buffer& page, unsigned index, Keys keys) const noexcept;
    bool WalkPage(PageRef ref, std::optional<unsigned> level, Keys keys, WalkState& state);
    bool WalkInner(const Buffer& page, Keys keys, WalkState& state);
    bool WalkLeaf(const Buffer& page, Keys keys, WalkState& state) const;
    bool WalkByScan(Keys keys, WalkState& state);

    PageReader* m_pages;
    LeafScan* m_scan;
    TreeKind m_kind;
    PageRef m_root;
};

}  // namespace localmapi::pst
