// The data of a node, whatever number of blocks it takes: [MS-PST] 2.2.2.8.3.2. Bytes are read by position, and never
// more than the blocks that hold them; what is kept is the list of one branch's blocks. One thread at a time.
#pragma once

#include "localmapi/base/Result.h"
#include "localmapi/pst/ndb/BlockReader.h"

#include <cstdint>
#include <span>
#include <vector>

namespace localmapi::pst {

class DataStream {
public:
    // No data: size 0, no blocks.
    DataStream() = default;

    // `root` is a data block, or the root of a tree of blocks; none gives an empty stream. The reader is borrowed and
    // outlives the stream. Corrupt when the tree's own blocks contradict themselves or claim more than the file holds.
    static Result<DataStream> Open(BlockReader& blocks, BlockId root, NodeId owner);

    std::uint64_t Size() const noexcept { return m_size; }

    // Copies the bytes from `offset` on into `out`. Gives their count: fewer than asked only at the end of the data, 0
    // when `offset` lies past it. Corrupt or ReadFailed when a block that holds one of them cannot be read.
    Result<std::size_t> ReadAt(std::uint64_t offset, std::span<std::byte> out);

    // The data block by block: heaps and row matrices are laid out by blocks.
    std::uint32_t BlockCount() const noexcept { return m_blockCount; }
    Result<BufferHold> ReadBlock(std::uint32_t index);

    NodeId Owner() const noexcept { return m_owner; }

private:
    // A block of ids that leads to data blocks; or, without an id, the single data block of a short stream.
    struct Branch {
        BlockId id;
        std::uint64_t start;  // of its first byte in the stream
        std::uint64_t size;
        std::uint32_t firstLeaf;
        std::uint32_t leafCount;
    };
    struct Leaf {
        BlockEntry entry;     // without an id when the block b-tree does not know the block
        std::uint64_t start;  // in the stream
        std::uint64_t size;
    };
    // The leaves of a branch, 40 bytes each and at most 2,043.
    struct Loaded {
        std::size_t branch;
        std::vector<Leaf> leaves;
    };
    // So many branches stay loaded: tables are read out of order, and finding the leaves of a branch takes a search for
    // each of them.
    static constexpr std::size_t kMostLoaded = 8;

    Status OpenBranches(BlockId root);
    Status AddBranch(BlockId id);
    Status CheckSize(BlockId root) const;
    Result<BufferHold> ReadIds(BlockId id, unsigned level) const;
    BlockId IdAt(const Buffer& ids, std::uint32_t index) const noexcept;
    Result<const Loaded*> LoadLeaves(std::size_t branch);
    Result<BufferHold> ReadLeaf(const Leaf& leaf) const;
    Result<std::size_t> ReadWithin(std::size_t branch, const Leaf& leaf, std::uint64_t offset,
                                   std::span<std::byte> out) const;
    Error Broken(BlockId id, const char* reason) const;

    BlockReader* m_blocks = nullptr;
    NodeId m_owner;
    std::uint64_t m_size = 0;
    std::uint32_t m_blockCount = 0;
    std::vector<Branch> m_branches;
    std::vector<Loaded> m_loaded;  // the one used last at the end
};

}  // namespace localmapi::pst
