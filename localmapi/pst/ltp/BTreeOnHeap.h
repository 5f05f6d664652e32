// A b-tree whose pages are items of a heap: [MS-PST] 2.3.2. Properties and row indexes are kept in such trees.
#pragma once

#include "localmapi/base/Result.h"
#include "localmapi/pst/ltp/Heap.h"

#include <functional>
#include <unordered_set>

namespace localmapi::pst {

class BTreeOnHeap {
public:
    // The tree whose header is the item `header`. Corrupt when it is none, or has keys and data of sizes that no tree
    // has. The heap is borrowed and outlives the tree.
    static Result<BTreeOnHeap> Open(Heap& heap, HeapId header);

    unsigned KeySize() const noexcept { return m_keySize; }
    unsigned DataSize() const noexcept { return m_dataSize; }

    // Calls `visit` with every record's key and data, in the order of the tree. False when a part was lost: it has been
    // reported, with `consequence`, and passed over.
    using Visitor = std::function<void(ByteView key, ByteView data)>;
    bool ForEach(const Visitor& visit, const char* consequence);

private:
    struct WalkState {
        const Visitor* visit;
        const char* consequence;
        std::unordered_set<std::uint32_t> visited;  // items
    };

    explicit BTreeOnHeap(Heap& heap) noexcept : m_heap(&heap) {}
    bool Walk(HeapId id, unsigned level, WalkState& state);

    Heap* m_heap;
    unsigned m_keySize = 0;
    unsigned m_dataSize = 0;
    unsigned m_levels = 0;  // above the records
    HeapId m_root;
};

}  // namespace localmapi::pst
