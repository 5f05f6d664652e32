// The node database of one file: nodes by id, their data and their sub-nodes. The face of this layer.
//
// A database belongs to one thread at a time; any number of databases may be open over the same file. Everything that
// it hands out borrows from it and must not outlive it.
#pragma once

#include "localmapi/base/ByteSource.h"
#include "localmapi/base/Diagnostics.h"
#include "localmapi/base/Result.h"
#include "localmapi/pst/ndb/BlockReader.h"
#include "localmapi/pst/ndb/DataStream.h"
#include "localmapi/pst/ndb/Header.h"
#include "localmapi/pst/ndb/SubnodeTree.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace localmapi::pst {

struct OpenOptions {
    std::size_t cacheBytes = std::size_t{32} << 20;  // for pages and blocks together
    DiagnosticSink* sink = nullptr;                  // borrowed; outlives the database
};

class Database {
public:
    // Unsupported when this is no such file or a form that cannot be read; ReadFailed. Damage behind the header does
    // not keep a file from being opened.
    static Result<std::unique_ptr<Database>> Open(std::unique_ptr<ByteSource> source, const OpenOptions& options);

    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    const FileHeader& Header() const noexcept { return m_header; }
    Diagnostics& Problems() noexcept { return m_problems; }

    // NotFound, Corrupt or ReadFailed.
    Result<NodeEntry> FindNode(NodeId id);

    // Calls `visit` for the nodes with ids from `from` on, in ascending order, until it gives false. Unreadable parts
    // are reported and passed over.
    void ForEachNode(NodeId from, const std::function<bool(const NodeEntry&)>& visit);

    // Every node that another names as its parent, whether the file still holds it or not, in ascending order. The first
    // call walks over all nodes; what is kept is 4 bytes a folder. For damaged files.
    const std::vector<NodeId>& Parents();

    // A node's data. `node` is one of the file or a sub-node, whose owner then stands in messages as `owner`.
    Result<DataStream> OpenData(const NodeEntry& node) { return OpenData(node, node.id); }
    Result<DataStream> OpenData(const NodeEntry& node, NodeId owner) {
        return DataStream::Open(m_blocks, node.data, owner);
    }

    SubnodeTree Subnodes(const NodeEntry& node) { return Subnodes(node, node.id); }
    SubnodeTree Subnodes(const NodeEntry& node, NodeId owner) { return {m_blocks, node.subnodes, owner}; }

    // How data blocks are taken to be encoded: what the header says, until somebody who knows what the data should look
    // like finds out better.
    Encoding DataEncoding() const noexcept { return m_blocks.DataEncoding(); }
    void SetDataEncoding(Encoding encoding) { m_blocks.SetDataEncoding(encoding); }

    // Bytes of pages and blocks kept now.
    std::size_t CachedBytes() const noexcept { return m_cache.Size(); }

private:
    Database(std::unique_ptr<ByteSource> source, const OpenOptions& options, const FileHeader& header,
             Diagnostics problems);

    NodeEntry NodeOf(std::uint64_t key, ByteView entry) const noexcept;

    // In the order in which they lean on each other.
    std::unique_ptr<ByteSource> m_source;
    FileHeader m_header;
    Diagnostics m_problems;
    BufferCache m_cache;
    PageReader m_pages;
    LeafScan m_scan;
    PageTree m_nodes;
    PageTree m_blockTree;
    BlockReader m_blocks;
    std::optional<std::vector<NodeId>> m_parents;
};

}  // namespace localmapi::pst
