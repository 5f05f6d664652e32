#include "localmapi/pst/ltp/Heap.h"

#include <string>
#include <utility>

namespace localmapi::pst {

namespace {

constexpr unsigned kHeaderSize = 12;  // of the first block: map, signature, use, root, fill levels
constexpr std::uint8_t kSignature = 0xEC;

// The bytes of item `index` (from 1) of one block. Every block begins with the offset of its map: count of items, count
// of freed ones, then where each item begins and the last one ends.
struct Item {
    const char* fault;  // null when there is none
    ByteView bytes;
};
Item ItemOf(ByteView block, std::uint32_t index) {
    const std::uint64_t map = block.U16(0);
    if (!block.Has(map, 4)) {
        return {"has a block whose map lies outside of it", {}};
    }
    const std::uint64_t count = block.U16(map);
    if (!block.Has(map + 4, 2 * (count + 1))) {
        return {"has a block whose map claims more items than it holds", {}};
    }
    if (index == 0 || index > count) {
        return {"has no item of that number", {}};
    }
    const std::uint64_t first = block.U16(map + 4 + 2 * (std::uint64_t{index} - 1));
    const std::uint64_t end = block.U16(map + 4 + 2 * std::uint64_t{index});
    if (first > end || end > map) {
        return {"has an item that reaches out of its block", {}};
    }
    return {nullptr, block.Part(first, end - first)};
}

}  // namespace

Error Heap::Broken(const std::string& reason) const {
    return Error{ErrorCode::Corrupt, Name(m_owner) + ": the heap " + reason};
}

Result<Heap> Heap::Open(Database& database, const NodeEntry& node, NodeId owner) {
    Heap heap(database, owner);
    VX_TRY_ASSIGN(heap.m_data, database.OpenData(node, owner));
    heap.m_subnodes = database.Subnodes(node, owner);
    if (heap.m_data.BlockCount() == 0) {
        return heap.Broken("is missing: the node has no data");
    }
    VX_TRY_ASSIGN(const BufferHold first, heap.m_data.ReadBlock(0));
    const ByteView header(first->bytes);
    if (!header.Has(0, kHeaderSize) || header.U8(2) != kSignature) {
        return heap.Broken("does not begin like one");
    }
    heap.m_isDoubtful = !first->crcFits;
    heap.m_clientSignature = header.U8(3);
    heap.m_userRoot = HeapId{header.U32(4)};
    return heap;
}

Result<HeldBytes> Heap::Item(HeapId id) {
    if (id.IsNone()) {
        return HeldBytes{};
    }
    const unsigned bits = m_database->Header().layout->heapIndexBits;
    const std::uint32_t index = (id.value >> 5) & ((1U << bits) - 1);
    VX_TRY_ASSIGN(BufferHold block, m_data.ReadBlock(id.value >> (5 + bits)));
    m_isDoubtful = m_isDoubtful || !block->crcFits;
    const auto item = ItemOf(block->bytes, index);
    if (item.fault != nullptr) {
        return Broken(item.fault + (" (item " + Hex(id.value) + ")"));
    }
    return HeldBytes{std::move(block), item.bytes};
}

Result<DataStream> Heap::OpenSubnodeData(NodeId id) {
    VX_TRY_ASSIGN(const NodeEntry entry, m_subnodes.Find(id));
    return m_database->OpenData(entry, m_owner);
}

Result<ValueStream> Heap::OpenValue(std::uint32_t heapOrNodeId) {
    if (IsNodeId(heapOrNodeId)) {
        Result<DataStream> data = OpenSubnodeData(NodeId{heapOrNodeId});
        if (data.IsNotFound()) {
            m_database->Problems().Report(data.Failure().text + "; the value in it is lost");
        }
        if (!data) {
            return data.TakeFailure();
        }
        return ValueStream(*std::move(data));
    }
    VX_TRY_ASSIGN(HeldBytes item, Item(HeapId{heapOrNodeId}));
    return ValueStream(std::move(item));
}

}  // namespace localmapi::pst
