// Writes the node database: blocks as they come, trees over them, and at the end the two b-trees and the header.
// [MS-PST] 2.2.2. Knows nothing of what the blocks mean. One thread at a time.
//
// Blocks get ascending ids, so the pages of the block b-tree are written along with them and need not be kept; of the
// nodes, which come in any order, 32 bytes each are.
#pragma once

#include "localmapi/pst/ndb/Ids.h"
#include "testing/mailbox_builder/PageStore.h"

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace mailbox_builder {

using localmapi::pst::BlockId;
using localmapi::pst::NodeEntry;
using localmapi::pst::NodeId;
using localmapi::pst::NodeType;

// What makes up a node or sub-node: its data, and its sub-nodes.
struct NodeData {
    BlockId data;
    BlockId subnodes;
};

// Writes a b-tree whose entries are given in the order of their keys: a page is written when it is full.
class PageTreeWriter {
public:
    // `pages` is borrowed and outlives the tree.
    PageTreeWriter(PageStore& pages, PageType type, std::size_t leafEntry)
        : m_pages(pages), m_type(type), m_leafEntry(leafEntry) {}

    Status Add(std::uint64_t key, ByteView entry) { return AddTo(0, key, entry); }

    // Gives the root page. A tree without entries is one empty page.
    Result<PageRef> Finish();

private:
    struct Level {
        Bytes entries;
        std::uint64_t firstKey = 0;
    };
    std::size_t EntrySize(std::size_t level) const noexcept;
    Status AddTo(std::size_t level, std::uint64_t key, ByteView entry);
    Result<PageRef> WritePage(std::size_t level);
    Status Push(std::size_t level);

    PageStore& m_pages;
    PageType m_type;
    std::size_t m_leafEntry;
    std::vector<Level> m_levels;  // the page in hand of each, leaves first
};

class DatabaseWriter {
public:
    // `sink` is borrowed and outlives the writer.
    DatabaseWriter(const FileForm& form, Encryption encryption, ByteSink& sink);
    DatabaseWriter(const DatabaseWriter&) = delete;
    DatabaseWriter& operator=(const DatabaseWriter&) = delete;

    const FileForm& TheForm() const noexcept { return m_pages.TheForm(); }

    // Before anything else.
    Status Begin() { return m_pages.Begin(); }

    // A block of data, at most a full one. It is encoded in place.
    Result<BlockId> WriteBlock(Bytes data);

    // One block for the data in `leaves`, of which all but the last are full: itself, or a tree. `total` is their size.
    // None for no leaves.
    Result<BlockId> WriteTree(std::span<const BlockId> leaves, std::uint64_t total);

    // Data of any size from a source that is asked for one piece after the other. TooLarge, before anything is asked
    // for, when it cannot fit.
    template <class Fill>
    Result<BlockId> WriteData(std::uint64_t size, const Fill& fill) {
        VX_TRY(CheckSize(size));
        std::vector<BlockId> leaves;
        for (std::uint64_t at = 0; at < size;) {
            Bytes block(static_cast<std::size_t>(std::min<std::uint64_t>(size - at, TheForm().fullBlock)));
            fill(at, std::span(block));
            at += block.size();
            VX_TRY_ASSIGN(const BlockId id, WriteBlock(std::move(block)));
            leaves.push_back(id);
        }
        return WriteTree(leaves, size);
    }

    // A list of sub-nodes, in any order; none for an empty one. TooLarge when they are more than two levels hold.
    Result<BlockId> WriteSubnodes(std::vector<NodeEntry> subnodes);

    // A node of the file, which has no other with this id.
    void AddNode(NodeId id, const NodeData& node, NodeId parent = {}) {
        m_nodes.push_back({id, node.data, node.subnodes, parent});
    }

    // The next index of a node of each type: what the header lists for whoever goes on writing the file.
    using NextIndexes = std::array<std::uint32_t, 32>;

    // Writes b-trees, maps and the header.
    Status Finish(FileEnd end, bool isOst, const NextIndexes& nextIndexes);

    std::uint64_t Size() const noexcept { return m_pages.Size(); }

private:
    Status CheckSize(std::uint64_t size) const;
    Result<BlockId> WriteInternal(Bytes content);
    Result<BlockId> Store(BlockId id, ByteView stored, std::size_t size);
    Result<BlockId> WriteList(unsigned type, unsigned level, std::size_t count, Bytes entries);
    Result<BlockId> WriteIdList(unsigned level, std::span<const BlockId> ids, std::uint64_t total);
    Result<BlockId> WriteSubnodeList(std::span<const NodeEntry> subnodes);
    Result<PageRef> WriteNodeTree();
    Status WriteHeader(bool isOst, const NextIndexes& nextIndexes, PageRef nodes, PageRef blocks);

    PageStore m_pages;
    Encryption m_encryption;
    PageTreeWriter m_blocks;
    std::uint64_t m_nextBlock = 4;
    std::vector<NodeEntry> m_nodes;
};

}  // namespace mailbox_builder
