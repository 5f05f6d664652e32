// The nodes within a node: a list sorted by id, of one or two levels of blocks. [MS-PST] 2.2.2.8.3.3. Blocks are read
// as they are needed and kept by the cache only. One thread at a time.
#pragma once

#include "localmapi/base/Result.h"
#include "localmapi/pst/ndb/BlockReader.h"

#include <cstdint>
#include <functional>

namespace localmapi::pst {

class SubnodeTree {
public:
    // No sub-nodes.
    SubnodeTree() = default;

    // `root` may be none. The reader is borrowed and outlives the tree. Nothing is read yet.
    SubnodeTree(BlockReader& blocks, BlockId root, NodeId owner) noexcept
        : m_blocks(&blocks), m_root(root), m_owner(owner) {}

    // NotFound when there is no such sub-node; Corrupt or ReadFailed when the blocks that would tell cannot be read.
    Result<NodeEntry> Find(NodeId id) const;

    // Calls `visit` for every sub-node until it gives false. Parts that cannot be read are reported and passed over.
    void ForEach(const std::function<bool(const NodeEntry&)>& visit) const;

private:
    Result<BufferHold> ReadList(BlockId id, unsigned highestLevel) const;
    NodeEntry EntryAt(ByteView list, std::uint32_t index) const noexcept;
    Result<NodeEntry> FindInList(ByteView list, NodeId id) const;
    Error Broken(BlockId id, const char* reason) const;
    Error NoSuchNode(NodeId id) const;

    BlockReader* m_blocks = nullptr;
    BlockId m_root;
    NodeId m_owner;
};

}  // namespace localmapi::pst
