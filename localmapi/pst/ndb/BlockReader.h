// Reads data blocks: finds them in the block b-tree, checks them, inflates and decodes them. Knows blocks; knows
// nothing of how blocks make up a node. One thread at a time.
#pragma once

#include "localmapi/base/Result.h"
#include "localmapi/pst/ndb/BufferCache.h"
#include "localmapi/pst/ndb/Encoding.h"
#include "localmapi/pst/ndb/Ids.h"
#include "localmapi/pst/ndb/PageTree.h"

#include <cstdint>

namespace localmapi::pst {

// What the block b-tree tells of a block.
struct BlockEntry {
    BlockId id;
    FileOffset at;
    std::uint32_t storedSize = 0;  // bytes on disk, without trailer and padding
    std::uint32_t size = 0;        // bytes of data: more than are stored when the block is compressed
};

class BlockReader {
public:
    // All are borrowed and outlive the reader.
    BlockReader(PageReader& pages, PageTree& tree, BufferCache& cache, Encoding encoding) noexcept
        : m_pages(&pages), m_tree(&tree), m_cache(&cache), m_encoding(encoding) {}

    // Corrupt when the b-tree does not know the block or gives it an impossible size. `owner` is the node on whose
    // behalf the block is read: messages begin with it.
    Result<BlockEntry> Find(BlockId id, NodeId owner);

    // The block's data, `entry.size` bytes of it. A block whose trailer vouches for it either by id and size or by CRC
    // is given, with a report when the other does not fit; one that nothing vouches for is Corrupt.
    Result<BufferHold> Read(const BlockEntry& entry, NodeId owner);
    Result<BufferHold> Read(BlockId id, NodeId owner);

    // How the data blocks are encoded. A change forgets what was decoded the other way.
    Encoding DataEncoding() const noexcept { return m_encoding; }
    void SetDataEncoding(Encoding encoding);

    const Layout& Form() const noexcept { return m_pages->Form(); }
    Diagnostics& Problems() const noexcept { return m_pages->Problems(); }
    std::uint64_t FileSize() const noexcept { return m_pages->Source().Size(); }

private:
    // Gives whether the CRC fits.
    Result<bool> CheckTrailer(const BlockEntry& entry, NodeId owner, ByteView stored, ByteView trailer) const;

    PageReader* m_pages;
    PageTree* m_tree;
    BufferCache* m_cache;
    Encoding m_encoding;
};

}  // namespace localmapi::pst
