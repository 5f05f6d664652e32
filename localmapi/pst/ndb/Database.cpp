#include "localmapi/pst/ndb/Database.h"

#include <utility>

namespace localmapi::pst {

Result<std::unique_ptr<Database>> Database::Open(std::unique_ptr<ByteSource> source, const OpenOptions& options) {
    Diagnostics problems(options.sink);
    VX_TRY_ASSIGN(const FileHeader header, ReadHeader(*source, problems));
    return std::unique_ptr<Database>(new Database(std::move(source), options, header, std::move(problems)));
}

Database::Database(std::unique_ptr<ByteSource> source, const OpenOptions& options, const FileHeader& header,
                   Diagnostics problems)
    : m_source(std::move(source)),
      m_header(header),
      m_problems(std::move(problems)),
      m_cache(options.cacheBytes),
      m_pages(*m_source, *m_header.layout, m_cache, m_problems),
      m_scan(m_pages),
      m_nodes(m_pages, m_scan, TreeKind::Nodes, m_header.nodeRoot),
      m_blockTree(m_pages, m_scan, TreeKind::Blocks, m_header.blockRoot),
      m_blocks(m_pages, m_blockTree, m_cache, m_header.encoding) {}

NodeEntry Database::NodeOf(std::uint64_t key, ByteView entry) const noexcept {
    const unsigned width = m_header.layout->idWidth;
    return NodeEntry{NodeId{static_cast<std::uint32_t>(key)}, BlockId::FromDisk(entry.Number(width, width)),
                     BlockId::FromDisk(entry.Number(std::uint64_t{2} * width, width)),
                     NodeId{entry.U32(std::uint64_t{3} * width)}};
}

Result<NodeEntry> Database::FindNode(NodeId id) {
    VX_TRY_ASSIGN(const LeafEntry entry, m_nodes.Find(id.value));
    return NodeOf(id.value, entry.bytes);
}

void Database::ForEachNode(NodeId from, const std::function<bool(const NodeEntry&)>& visit) {
    m_nodes.Walk(from.value, [&](std::uint64_t key, ByteView entry) { return visit(NodeOf(key, entry)); });
}

}  // namespace localmapi::pst
