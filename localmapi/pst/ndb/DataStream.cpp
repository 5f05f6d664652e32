#include "localmapi/pst/ndb/DataStream.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <utility>

namespace localmapi::pst {

namespace {

// Blocks of ids, XBLOCK and XXBLOCK of [MS-PST] 2.2.2.8.3.2: type, level, count, total of the data below, ids.
constexpr std::uint8_t kDataTree = 1;
constexpr unsigned kIdsAt = 8;

// No stream of deflated data grows by more than this.
constexpr std::uint64_t kMostInflation = 1100;

// A file that was cut to a quarter still gives what is left of its largest values.
constexpr std::uint64_t kMostTruncation = 4;

}  // namespace

Error DataStream::Broken(BlockId id, const char* reason) const {
    return Error{ErrorCode::Corrupt, Name(m_owner) + ": " + Name(id) + " " + reason};
}

Result<DataStream> DataStream::Open(BlockReader& blocks, BlockId root, NodeId owner) {
    DataStream stream;
    stream.m_blocks = &blocks;
    stream.m_owner = owner;
    if (root.IsNone()) {
        return stream;
    }
    if (root.IsInternal()) {
        VX_TRY(stream.OpenBranches(root));
        return stream;
    }
    VX_TRY_ASSIGN(const BlockEntry entry, blocks.Find(root, owner));
    stream.m_branches.push_back(Branch{BlockId{}, 0, entry.size, 0, 1});
    stream.m_loaded.push_back(Loaded{0, {Leaf{entry, 0, entry.size}}});
    stream.m_size = entry.size;
    stream.m_blockCount = 1;
    return stream;
}

Status DataStream::OpenBranches(BlockId root) {
    VX_TRY_ASSIGN(const BufferHold block, m_blocks->Read(root, m_owner));
    const unsigned level = ByteView(block->bytes).U8(1);
    if (level == 1) {
        VX_TRY(AddBranch(root));
        // The sizes of the leaves are at hand, so the exact total is too.
        VX_TRY_ASSIGN(const Loaded* loaded, LoadLeaves(0));
        m_size = loaded->leaves.empty() ? 0 : loaded->leaves.back().start + loaded->leaves.back().size;
        if (m_size != m_branches.front().size) {
            m_blocks->Problems().Report(Name(m_owner) + ": " + Name(root) + " claims "
                                        + std::to_string(m_branches.front().size) + " bytes and leads to "
                                        + std::to_string(m_size) + ", which are read");
            m_branches.front().size = m_size;
        }
        return CheckSize(root);
    }
    VX_TRY_ASSIGN(const BufferHold ids, ReadIds(root, 2));
    const std::uint32_t count = ByteView(ids->bytes).U16(2);
    for (std::uint32_t i = 0; i < count; ++i) {
        VX_TRY(AddBranch(IdAt(*ids, i)));
        VX_TRY(CheckSize(root));
    }
    const std::uint32_t claimed = ByteView(ids->bytes).U32(4);
    if (claimed != static_cast<std::uint32_t>(m_size)) {
        m_blocks->Problems().Report(Name(m_owner) + ": " + Name(root) + " claims " + std::to_string(claimed)
                                    + " bytes and leads to " + std::to_string(m_size) + ", which are read");
    }
    return {};
}

// No node holds more than its file held: a tree that leads to the same blocks again and again is a trap.
Status DataStream::CheckSize(BlockId root) const {
    const std::uint64_t inflation = m_blocks->Form().block.mayBeCompressed ? kMostInflation : 1;
    return m_size > m_blocks->FileSize() * inflation * kMostTruncation
               ? Status(Broken(root, "claims more data than the file can hold"))
               : Status();
}

// A branch's own count of bytes is believed when its number of blocks allows it; reading finds out the rest.
Status DataStream::AddBranch(BlockId id) {
    VX_TRY_ASSIGN(const BufferHold ids, ReadIds(id, 1));
    const std::uint32_t count = ByteView(ids->bytes).U16(2);
    const std::uint64_t most = std::uint64_t{count} * m_blocks->Form().FullBlock();
    const std::uint64_t size = std::min<std::uint64_t>(ByteView(ids->bytes).U32(4), most);
    m_branches.push_back(Branch{id, m_size, size, m_blockCount, count});
    m_size += size;
    m_blockCount += count;
    return {};
}

Result<BufferHold> DataStream::ReadIds(BlockId id, unsigned level) const {
    if (!id.IsInternal()) {
        return Broken(id, "is no block of ids, though one is expected there");
    }
    VX_TRY_ASSIGN(BufferHold block, m_blocks->Read(id, m_owner));
    const ByteView view(block->bytes);
    if (view.U8(0) != kDataTree || view.U8(1) != level) {
        return Broken(id, "is no block of ids of the level that is expected there");
    }
    if (!view.Has(kIdsAt, std::uint64_t{view.U16(2)} * m_blocks->Form().idWidth)) {
        return Broken(id, "claims more ids than it holds");
    }
    return block;
}

BlockId DataStream::IdAt(const Buffer& ids, std::uint32_t index) const noexcept {
    const unsigned width = m_blocks->Form().idWidth;
    return BlockId::FromDisk(ByteView(ids.bytes).Number(kIdsAt + std::uint64_t{index} * width, width));
}

Result<const DataStream::Loaded*> DataStream::LoadLeaves(std::size_t branch) {
    const auto known =
        std::find_if(m_loaded.begin(), m_loaded.end(), [branch](const Loaded& one) { return one.branch == branch; });
    if (known != m_loaded.end()) {
        std::rotate(known, std::next(known), m_loaded.end());
        return &m_loaded.back();
    }
    const Branch& wanted = m_branches[branch];
    VX_TRY_ASSIGN(const BufferHold ids, ReadIds(wanted.id, 1));
    Loaded loaded{branch, {}};
    loaded.leaves.reserve(wanted.leafCount);
    std::uint64_t start = wanted.start;
    for (std::uint32_t i = 0; i < wanted.leafCount; ++i) {
        const BlockId id = IdAt(*ids, i);
        Leaf leaf{BlockEntry{}, start, 0};
        Result<BlockEntry> entry = id.IsInternal() ? Broken(id, "is no data block, though one is expected there")
                                                   : m_blocks->Find(id, m_owner);
        if (entry) {
            leaf.entry = *entry;
            leaf.size = entry->size;
        } else {
            m_blocks->Problems().Report(entry.Failure().text + "; the data ends before it or has a hole there");
            const std::uint64_t left = wanted.start + wanted.size - std::min(start, wanted.start + wanted.size);
            leaf.size = std::min<std::uint64_t>(left, m_blocks->Form().FullBlock());
        }
        start += leaf.size;
        loaded.leaves.push_back(leaf);
    }
    if (m_loaded.size() == kMostLoaded) {
        m_loaded.erase(m_loaded.begin());
    }
    m_loaded.push_back(std::move(loaded));
    return &m_loaded.back();
}

Result<BufferHold> DataStream::ReadLeaf(const Leaf& leaf) const {
    if (leaf.entry.id.IsNone()) {
        return Error{ErrorCode::Corrupt, Name(m_owner) + ": the data at " + Hex(leaf.start) + " is lost"};
    }
    return m_blocks->Read(leaf.entry, m_owner);
}

Result<BufferHold> DataStream::ReadBlock(std::uint32_t index) {
    const auto after = std::upper_bound(m_branches.begin(), m_branches.end(), index,
                                        [](std::uint32_t at, const Branch& branch) { return at < branch.firstLeaf; });
    if (index >= m_blockCount || after == m_branches.begin()) {
        return Error{ErrorCode::Corrupt, Name(m_owner) + ": there is no block " + std::to_string(index) + " of "
                                             + std::to_string(m_blockCount)};
    }
    const auto branch = static_cast<std::size_t>(after - m_branches.begin()) - 1;
    VX_TRY_ASSIGN(const Loaded* loaded, LoadLeaves(branch));
    return ReadLeaf(loaded->leaves[index - m_branches[branch].firstLeaf]);
}

Result<std::size_t> DataStream::ReadAt(std::uint64_t offset, std::span<std::byte> out) {
    std::size_t done = 0;
    while (done < out.size() && offset + done < m_size) {
        const std::uint64_t at = offset + done;
        const auto after = std::upper_bound(m_branches.begin(), m_branches.end(), at,
                                            [](std::uint64_t place, const Branch& one) { return place < one.start; });
        const std::size_t branch = static_cast<std::size_t>(after - m_branches.begin()) - 1;
        VX_TRY_ASSIGN(const Loaded* loaded, LoadLeaves(branch));
        const auto leaf = std::upper_bound(loaded->leaves.begin(), loaded->leaves.end(), at,
                                           [](std::uint64_t place, const Leaf& one) { return place < one.start; });
        if (leaf == loaded->leaves.begin()) {
            return Error{ErrorCode::Corrupt, Name(m_owner) + ": the data at " + Hex(at) + " is lost"};
        }
        VX_TRY_ASSIGN(const std::size_t got, ReadWithin(branch, *std::prev(leaf), at, out.subspan(done)));
        done += got;
    }
    return done;
}

// At least one byte, since the caller asks for bytes that the stream is to have.
Result<std::size_t> DataStream::ReadWithin(std::size_t branch, const Leaf& leaf, std::uint64_t offset,
                                           std::span<std::byte> out) const {
    VX_TRY_ASSIGN(const BufferHold block, ReadLeaf(leaf));
    const std::uint64_t within = offset - leaf.start;
    std::uint64_t most = m_size - offset;
    if (branch + 1 < m_branches.size()) {
        most = std::min(most, m_branches[branch + 1].start - offset);
    }
    const ByteView part = ByteView(block->bytes).Part(within, most);
    if (part.IsEmpty()) {
        return Error{ErrorCode::Corrupt, Name(m_owner) + ": the data at " + Hex(offset) + " is lost: "
                                             + Name(leaf.entry.id) + " is shorter than its tree of blocks tells"};
    }
    return CopyInto(out, part);
}

}  // namespace localmapi::pst
