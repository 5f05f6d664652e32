// The heap that a node's data holds: small items by id, and larger values in the node's own sub-nodes. [MS-PST] 2.3.1.
// One thread at a time; items keep their block alive and may outlive the heap.
#pragma once

#include "localmapi/base/Result.h"
#include "localmapi/pst/ltp/ValueStream.h"
#include "localmapi/pst/ndb/Database.h"

#include <cstdint>

namespace localmapi::pst {

// Names an item of a heap: its number within a block, counted from 1, and the block. 0 names none.
struct HeapId {
    std::uint32_t value = 0;

    constexpr bool IsNone() const noexcept { return value == 0; }
};

class Heap {
public:
    // What a heap is used for.
    enum class Use : std::uint8_t { Table = 0x7C, Properties = 0xBC };

    // The heap of `node`, a node of the file or a sub-node; `owner` is the node of the file that messages speak of.
    // Corrupt when the data is no heap: many special nodes hold plain lists. The database outlives the heap.
    static Result<Heap> Open(Database& database, const NodeEntry& node, NodeId owner);

    std::uint8_t ClientSignature() const noexcept { return m_clientSignature; }

    // The item that everything else hangs from.
    HeapId UserRoot() const noexcept { return m_userRoot; }

    // An item's bytes; empty for none and for a freed item. Corrupt when there is no such item.
    Result<HeldBytes> Item(HeapId id);

    // A value named by an id of either kind: an item of the heap, or a sub-node ([MS-PST] 2.3.3.2). 0 is an empty
    // value. NotFound, reported, when the sub-node is missing.
    Result<ValueStream> OpenValue(std::uint32_t heapOrNodeId);

    // True when an id names a sub-node rather than an item or nothing.
    static constexpr bool IsNodeId(std::uint32_t heapOrNodeId) noexcept { return (heapOrNodeId & 0x1F) != 0; }

    // The data of a sub-node.
    Result<DataStream> OpenSubnodeData(NodeId id);

    // True once a block was read that fails its CRC: what it holds may be right, or wrong in one place.
    bool IsDoubtful() const noexcept { return m_isDoubtful; }

    const SubnodeTree& Subnodes() const noexcept { return m_subnodes; }
    Database& Owner() const noexcept { return *m_database; }
    NodeId OwnerId() const noexcept { return m_owner; }
    Error Broken(const std::string& reason) const;

private:
    Heap(Database& database, NodeId owner) noexcept : m_database(&database), m_owner(owner) {}

    Database* m_database;
    NodeId m_owner;
    DataStream m_data;
    SubnodeTree m_subnodes;
    std::uint8_t m_clientSignature = 0;
    HeapId m_userRoot;
    bool m_isDoubtful = false;
};

}  // namespace localmapi::pst
