#include "localmapi/pst/ndb/SubnodeTree.h"

#include <unordered_set>

namespace localmapi::pst {

namespace {

// SLBLOCK (level 0, sub-nodes) and SIBLOCK (level 1, blocks of sub-nodes): type, level, count, entries.
constexpr std::uint8_t kSubnodeTree = 2;

unsigned LevelOf(ByteView list) noexcept {
    return list.U8(1);
}
std::uint32_t CountOf(ByteView list) noexcept {
    return list.U16(2);
}

}  // namespace

Error SubnodeTree::Broken(BlockId id, const char* reason) const {
    return Error{ErrorCode::Corrupt, Name(m_owner) + ": " + Name(id) + " " + reason};
}

Error SubnodeTree::NoSuchNode(NodeId id) const {
    return Error{ErrorCode::NotFound, Name(m_owner) + ": there is no sub-" + Name(id)};
}

Result<BufferHold> SubnodeTree::ReadList(BlockId id, unsigned highestLevel) const {
    if (!id.IsInternal()) {
        return Broken(id, "is no list of sub-nodes, though one is expected there");
    }
    VX_TRY_ASSIGN(BufferHold block, m_blocks->Read(id, m_owner));
    const ByteView list(block->bytes);
    if (list.U8(0) != kSubnodeTree || LevelOf(list) > highestLevel) {
        return Broken(id, "is no list of sub-nodes of the level that is expected there");
    }
    const Layout& layout = m_blocks->Form();
    const unsigned entrySize = LevelOf(list) == 0 ? layout.SubnodeEntrySize() : layout.SubnodeIndexEntrySize();
    if (!list.Has(layout.SubnodeEntriesAt(), std::uint64_t{CountOf(list)} * entrySize)) {
        return Broken(id, "claims more sub-nodes than it holds");
    }
    return block;
}

NodeEntry SubnodeTree::EntryAt(ByteView list, std::uint32_t index) const noexcept {
    const Layout& layout = m_blocks->Form();
    const unsigned width = layout.idWidth;
    const std::uint64_t at = layout.SubnodeEntriesAt() + std::uint64_t{index} * layout.SubnodeEntrySize();
    return NodeEntry{NodeId{list.U32(at)}, BlockId::FromDisk(list.Number(at + width, width)),
                     BlockId::FromDisk(list.Number(at + std::uint64_t{2} * width, width)), NodeId{}};
}

Result<NodeEntry> SubnodeTree::Find(NodeId id) const {
    if (m_root.IsNone()) {
        return NoSuchNode(id);
    }
    VX_TRY_ASSIGN(const BufferHold root, ReadList(m_root, 1));
    const ByteView list(root->bytes);
    if (LevelOf(list) == 0) {
        return FindInList(list, id);
    }
    // The block with the highest first id that is not above the wanted one; looked for from end to end, so that an
    // index out of order still gives an answer.
    const Layout& layout = m_blocks->Form();
    BlockId child;
    std::uint32_t childKey = 0;
    for (std::uint32_t i = 0; i < CountOf(list); ++i) {
        const std::uint64_t at = layout.SubnodeEntriesAt() + std::uint64_t{i} * layout.SubnodeIndexEntrySize();
        const std::uint32_t key = list.U32(at);
        if (child.IsNone() || (key <= id.value && key >= childKey)) {
            child = BlockId::FromDisk(list.Number(at + layout.idWidth, layout.idWidth));
            childKey = key;
        }
    }
    if (child.IsNone()) {
        return NoSuchNode(id);
    }
    VX_TRY_ASSIGN(const BufferHold leaf, ReadList(child, 0));
    return FindInList(leaf->bytes, id);
}

Result<NodeEntry> SubnodeTree::FindInList(ByteView list, NodeId id) const {
    for (std::uint32_t i = 0; i < CountOf(list); ++i) {
        if (const NodeEntry entry = EntryAt(list, i); entry.id == id) {
            return entry;
        }
    }
    return NoSuchNode(id);
}

void SubnodeTree::ForEach(const std::function<bool(const NodeEntry&)>& visit) const {
    if (m_root.IsNone()) {
        return;
    }
    const auto visitList = [&](ByteView list) {
        for (std::uint32_t i = 0; i < CountOf(list); ++i) {
            if (!visit(EntryAt(list, i))) {
                return false;
            }
        }
        return true;
    };
    const Result<BufferHold> root = ReadList(m_root, 1);
    if (!root) {
        m_blocks->Problems().Report(root.Failure().text + "; the sub-nodes are lost");
        return;
    }
    const ByteView list((*root)->bytes);
    if (LevelOf(list) == 0) {
        visitList(list);
        return;
    }
    const Layout& layout = m_blocks->Form();
    std::unordered_set<std::uint64_t> visited;
    for (std::uint32_t i = 0; i < CountOf(list); ++i) {
        const std::uint64_t at = layout.SubnodeEntriesAt() + std::uint64_t{i} * layout.SubnodeIndexEntrySize();
        const BlockId child = BlockId::FromDisk(list.Number(at + layout.idWidth, layout.idWidth));
        if (!visited.insert(child.value).second) {
            continue;
        }
        const Result<BufferHold> leaf = ReadList(child, 0);
        if (!leaf) {
            m_blocks->Problems().Report(leaf.Failure().text + "; the sub-nodes in it are lost");
        } else if (!visitList((*leaf)->bytes)) {
            return;
        }
    }
}

}  // namespace localmapi::pst
