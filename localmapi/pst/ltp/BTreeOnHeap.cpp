#include "localmapi/pst/ltp/BTreeOnHeap.h"

#include <string>

namespace localmapi::pst {

namespace {

constexpr unsigned kHeaderSize = 8;
constexpr std::uint8_t kTypeByte = 0xB5;
constexpr unsigned kMostLevels = 8;  // a level is a frame of our recursion, and has at least two children a page
constexpr unsigned kMostData = 32;

constexpr bool IsKeySize(unsigned size) {
    return size == 2 || size == 4 || size == 8 || size == 16;
}

}  // namespace

Result<BTreeOnHeap> BTreeOnHeap::Open(Heap& heap, HeapId header) {
    VX_TRY_ASSIGN(const HeldBytes item, heap.Item(header));
    BTreeOnHeap tree(heap);
    tree.m_keySize = item.view.U8(1);
    tree.m_dataSize = item.view.U8(2);
    tree.m_levels = item.view.U8(3);
    tree.m_root = HeapId{item.view.U32(4)};
    if (!item.view.Has(0, kHeaderSize) || item.view.U8(0) != kTypeByte) {
        return heap.Broken("has no b-tree in item " + Hex(header.value));
    }
    if (!IsKeySize(tree.m_keySize) || tree.m_dataSize == 0 || tree.m_dataSize > kMostData
        || tree.m_levels > kMostLevels) {
        return heap.Broken("has a b-tree of impossible sizes in item " + Hex(header.value));
    }
    return tree;
}

bool BTreeOnHeap::ForEach(const Visitor& visit, const char* consequence) {
    if (m_root.IsNone()) {
        return true;
    }
    WalkState state{&visit, consequence, {}};
    return Walk(m_root, m_levels, state);
}

bool BTreeOnHeap::Walk(HeapId id, unsigned level, WalkState& state) {
    const auto lose = [&](const std::string& reason) {
        m_heap->Owner().Problems().Report(reason + "; " + state.consequence);
        return false;
    };
    if (!state.visited.insert(id.value).second) {
        return lose(m_heap->Broken("has a b-tree that leads to item " + Hex(id.value) + " twice").text);
    }
    const Result<HeldBytes> item = m_heap->Item(id);
    if (!item) {
        return lose(item.Failure().text);
    }
    // A remainder that is no whole record is padding.
    const std::size_t recordSize = m_keySize + (level == 0 ? m_dataSize : 4);
    bool complete = true;
    for (std::size_t at = 0; item->view.Has(at, recordSize); at += recordSize) {
        if (level == 0) {
            (*state.visit)(item->view.Part(at, m_keySize), item->view.Part(at + m_keySize, m_dataSize));
        } else {
            complete = Walk(HeapId{item->view.U32(at + m_keySize)}, level - 1, state) && complete;
        }
    }
    return complete;
}

}  // namespace localmapi::pst
