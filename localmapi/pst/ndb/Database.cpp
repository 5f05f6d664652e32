#include "localmapi/pst/ndb/Database.h"

#include <algorithm>
#include <unordered_set>
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
    const Result<LeafEntry> entry = m_nodes.Find(id.value);
    if (!entry) {
        const Error& why = entry.Failure();
        return entry.IsNotFound() ? why : Error{why.code, Name(id) + " cannot be found: " + why.text};
    }
    return NodeOf(id.value, entry->bytes);
}

const std::vector<NodeId>& Database::Parents() {
    if (!m_parents) {
        std::unordered_set<std::uint32_t> parents;
        ForEachNode(NodeId{}, [&](const NodeEntry& node) {
            if (node.parent != NodeId{}) {
                parents.insert(node.parent.value);
            }
            return true;
        });
        m_parents.emplace();
        for (const std::uint32_t id : parents) {
            m_parents->push_back(NodeId{id});
        }
        std::sort(m_parents->begin(), m_parents->end());
    }
    return *m_parents;
}

void Database::ForEachNode(NodeId from, const std::function<bool(const NodeEntry&)>& visit) {
    m_nodes.Walk(from.value, [&](std::uint64_t key, ByteView entry) { return visit(NodeOf(key, entry)); });
}

}  // namespace localmapi::pst
