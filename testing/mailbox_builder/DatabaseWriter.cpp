#include "testing/mailbox_builder/DatabaseWriter.h"

#include "localmapi/pst/ndb/Encoding.h"
#include "testing/mailbox_builder/ByteWriter.h"

#include <algorithm>
#include <string>
#include <utility>

#include <zlib.h>

namespace mailbox_builder {

namespace {

// Set in the ids of blocks of the database itself, which are not encoded.
constexpr std::uint64_t kInternal = 2;
constexpr std::uint64_t kBlockIdStep = 4;

// The first byte of blocks of ids and of lists of sub-nodes.
constexpr unsigned kIdList = 1;
constexpr unsigned kSubnodeList = 2;

// One user, and the entry of the b-tree itself.
constexpr unsigned kReferences = 2;

// Makes `data` smaller, or gives nothing when it does not become so.
std::optional<Bytes> Compress(ByteView data) {
    Bytes packed(data.Size());
    auto size = static_cast<uLongf>(packed.size());
    if (compress2(reinterpret_cast<Bytef*>(packed.data()), &size, reinterpret_cast<const Bytef*>(data.Data()),
                  static_cast<uLong>(data.Size()), Z_BEST_SPEED)
            != Z_OK
        || size >= packed.size()) {
        return std::nullopt;
    }
    packed.resize(size);
    return packed;
}

}  // namespace

std::size_t PageTreeWriter::EntrySize(std::size_t level) const noexcept {
    return level == 0 ? m_leafEntry : m_pages.TheForm().InnerEntry();
}

Status PageTreeWriter::AddTo(std::size_t level, std::uint64_t key, ByteView entry) {
    if (level == m_levels.size()) {
        m_levels.emplace_back();
    }
    if (m_levels[level].entries.size() + EntrySize(level) > m_pages.TheForm().pageEntries) {
        VX_TRY(Push(level));
    }
    Level& into = m_levels[level];
    into.firstKey = into.entries.empty() ? key : into.firstKey;
    into.entries.insert(into.entries.end(), entry.Span().begin(), entry.Span().end());
    return {};
}

Result<PageRef> PageTreeWriter::WritePage(std::size_t level) {
    const FileForm& form = m_pages.TheForm();
    const Bytes entries = std::exchange(m_levels[level].entries, {});
    const std::size_t size = EntrySize(level);
    ByteWriter page;
    page.Append(entries).PadTo(form.pageEntries);
    page.Number(entries.size() / size, form.pageCountWidth).Number(form.pageEntries / size, form.pageCountWidth);
    page.U8(size).U8(level).PadTo(form.PageContent());
    return m_pages.WritePage(m_type, page.Take());
}

// Writes the page in hand of a level and names it in the level above.
Status PageTreeWriter::Push(std::size_t level) {
    const unsigned width = m_pages.TheForm().width;
    const std::uint64_t key = m_levels[level].firstKey;
    VX_TRY_ASSIGN(const PageRef page, WritePage(level));
    ByteWriter entry;
    entry.Number(key, width).Number(page.id, width).Number(page.at, width);
    return AddTo(level + 1, key, entry.View());
}

Result<PageRef> PageTreeWriter::Finish() {
    if (m_levels.empty()) {
        m_levels.emplace_back();
    }
    // A push may add a level.
    for (std::size_t level = 0; level + 1 < m_levels.size(); ++level) {
        VX_TRY(Push(level));
    }
    return WritePage(m_levels.size() - 1);
}

DatabaseWriter::DatabaseWriter(const FileForm& form, Encryption encryption, ByteSink& sink)
    : m_pages(form, sink), m_encryption(encryption), m_blocks(m_pages, PageType::BlockTree, form.BlockEntry()) {}

Result<BlockId> DatabaseWriter::WriteBlock(Bytes data) {
    const BlockId id{std::exchange(m_nextBlock, m_nextBlock + kBlockIdStep)};
    localmapi::pst::Encode(static_cast<localmapi::pst::Encoding>(m_encryption), id, data);
    if (TheForm().compresses) {
        if (const auto packed = Compress(data)) {
            return Store(id, *packed, data.size());
        }
    }
    return Store(id, data, data.size());
}

Result<BlockId> DatabaseWriter::WriteInternal(Bytes content) {
    const BlockId id{std::exchange(m_nextBlock, m_nextBlock + kBlockIdStep) | kInternal};
    return Store(id, content, content.size());
}

// `size` is that of the data, `stored` what is there for it.
Result<BlockId> DatabaseWriter::Store(BlockId id, ByteView stored, std::size_t size) {
    const FileForm& form = TheForm();
    const std::uint64_t whole = localmapi::RoundUp(stored.Size() + form.blockTrailer, form.step);
    VX_TRY_ASSIGN(const std::uint64_t at, m_pages.Allocate(whole));
    ByteWriter block;
    block.Append(stored).PadTo(static_cast<std::size_t>(whole) - form.blockTrailer);
    block.U16(stored.Size()).U16(Signature(at, id.value));
    if (form.width == 4) {
        block.U32(id.value).U32(Crc(stored));
    } else {
        block.U32(Crc(stored)).U64(id.value);
    }
    if (form.compresses) {
        block.U16(2).U16(size).U32(0);  // what the first number means is not published
    }
    VX_TRY(m_pages.Sink().WriteAt(at, block.View()));

    ByteWriter entry;
    entry.Number(id.value, form.width).Number(at, form.width).U16(stored.Size());
    if (form.compresses) {
        entry.U16(size);
    }
    entry.U16(kReferences).PadTo(form.BlockEntry());
    VX_TRY(m_blocks.Add(id.value, entry.View()));
    return id;
}

// Blocks of ids and lists begin alike: type, level, count.
Result<BlockId> DatabaseWriter::WriteList(unsigned type, unsigned level, std::size_t count, Bytes entries) {
    ByteWriter block;
    block.U8(type).U8(level).U16(count).Append(entries);
    return WriteInternal(block.Take());
}

Result<BlockId> DatabaseWriter::WriteIdList(unsigned level, std::span<const BlockId> ids, std::uint64_t total) {
    ByteWriter entries;
    entries.U32(total);
    for (const BlockId id : ids) {
        entries.Number(id.value, TheForm().width);
    }
    return WriteList(kIdList, level, ids.size(), entries.Take());
}

// A tree counts its bytes in 32 bits.
Status DatabaseWriter::CheckSize(std::uint64_t size) const {
    constexpr std::uint64_t kMost = 0xFFFF'FFFF;
    return size <= std::min(kMost, TheForm().sizeLimit)
               ? Status()
               : Error{ErrorCode::TooLarge,
                       "a value of " + std::to_string(size) + " bytes is larger than this form of the file can hold"};
}

Result<BlockId> DatabaseWriter::WriteTree(std::span<const BlockId> leaves, std::uint64_t total) {
    const FileForm& form = TheForm();
    const std::size_t most = form.BlocksPerList();
    if (leaves.size() <= 1) {
        return leaves.empty() ? BlockId{} : leaves.front();
    }
    if (leaves.size() <= most) {
        return WriteIdList(1, leaves, total);
    }
    std::vector<BlockId> lists;
    for (std::size_t first = 0; first < leaves.size(); first += most) {
        const auto part = leaves.subspan(first, std::min(most, leaves.size() - first));
        const std::uint64_t before = std::uint64_t{first} * form.fullBlock;
        const std::uint64_t full = std::uint64_t{most} * form.fullBlock;
        VX_TRY_ASSIGN(const BlockId list, WriteIdList(1, part, std::min(total - before, full)));
        lists.push_back(list);
    }
    return WriteIdList(2, lists, total);
}

Result<BlockId> DatabaseWriter::WriteSubnodeList(std::span<const NodeEntry> subnodes) {
    const unsigned width = TheForm().width;
    ByteWriter entries;
    entries.PadTo(width - 4);
    for (const NodeEntry& node : subnodes) {
        entries.Number(node.id.value, width).Number(node.data.value, width).Number(node.subnodes.value, width);
    }
    return WriteList(kSubnodeList, 0, subnodes.size(), entries.Take());
}

Result<BlockId> DatabaseWriter::WriteSubnodes(std::vector<NodeEntry> subnodes) {
    if (subnodes.empty()) {
        return BlockId{};
    }
    std::sort(subnodes.begin(), subnodes.end(), [](const NodeEntry& a, const NodeEntry& b) { return a.id < b.id; });
    const std::size_t most = TheForm().SubnodesPerList();
    if (subnodes.size() <= most) {
        return WriteSubnodeList(subnodes);
    }
    if (subnodes.size() > most * TheForm().ListsPerIndex()) {
        return Error{ErrorCode::TooLarge, "a node has more sub-nodes than two levels of lists can hold"};
    }
    const unsigned width = TheForm().width;
    ByteWriter index;
    index.PadTo(width - 4);
    std::size_t lists = 0;
    for (std::size_t first = 0; first < subnodes.size(); first += most, ++lists) {
        const auto part = std::span(subnodes).subspan(first, std::min(most, subnodes.size() - first));
        VX_TRY_ASSIGN(const BlockId list, WriteSubnodeList(part));
        index.Number(part.front().id.value, width).Number(list.value, width);
    }
    return WriteList(kSubnodeList, 1, lists, index.Take());
}

Result<PageRef> DatabaseWriter::WriteNodeTree() {
    const FileForm& form = TheForm();
    std::sort(m_nodes.begin(), m_nodes.end(), [](const NodeEntry& a, const NodeEntry& b) { return a.id < b.id; });
    PageTreeWriter tree(m_pages, PageType::NodeTree, form.NodeEntry());
    for (const NodeEntry& node : m_nodes) {
        ByteWriter entry;
        entry.Number(node.id.value, form.width).Number(node.data.value, form.width);
        entry.Number(node.subnodes.value, form.width).U32(node.parent.value).PadTo(form.NodeEntry());
        VX_TRY(tree.Add(node.id.value, entry.View()));
    }
    return tree.Finish();
}

Status DatabaseWriter::Finish(FileEnd end, bool isOst, const NextIndexes& nextIndexes) {
    VX_TRY_ASSIGN(const PageRef nodes, WriteNodeTree());
    VX_TRY_ASSIGN(const PageRef blocks, m_blocks.Finish());
    VX_TRY(m_pages.Finish(end));
    return WriteHeader(isOst, nextIndexes, nodes, blocks);
}

// [MS-PST] 2.2.2.6.
Status DatabaseWriter::WriteHeader(bool isOst, const NextIndexes& nextIndexes, PageRef nodes, PageRef blocks) {
    const FileForm& form = TheForm();
    const bool isWide = form.width == 8;
    ByteWriter header;
    header.Append(std::as_bytes(std::span("!BDN", 4))).U32(0).Append(std::as_bytes(std::span(isOst ? "SO" : "SM", 2)));
    header.U16(form.version).U16(isOst ? 12 : 19).U8(1).U8(1).U64(0);
    if (isWide) {
        header.U64(0).U64(m_pages.NextPageId());
    } else {
        header.U32(m_nextBlock).U32(m_pages.NextPageId());
    }
    header.U32(1);
    for (const std::uint32_t next : nextIndexes) {
        header.U32(next);
    }
    if (isWide) {
        header.U64(0);
    }
    header.U32(0).Number(m_pages.Size(), form.width).Number(m_pages.LastMapAt(), form.width);
    header.Number(m_pages.FreeBytes(), form.width).Number(0, form.width);
    for (const PageRef& root : {nodes, blocks}) {
        header.Number(root.id, form.width).Number(root.at, form.width);
    }
    header.U8(2).U8(0).U16(0);  // the allocation maps are valid
    if (isWide) {
        header.U32(0);
    }
    header.Fill(256, 0xFF);  // the maps of free space of the first 2 GiB, which are no longer kept
    header.U8(0x80).U8(static_cast<std::uint8_t>(m_encryption)).U16(0);
    if (isWide) {
        header.U64(m_nextBlock);
    }
    const std::size_t fullCrcAt = header.Size();
    header.PadTo(form.headerSize);

    Bytes bytes = header.Take();
    PutNumber(bytes, 4, Crc(ByteView(bytes).Part(8, 471)), 4);
    if (isWide) {
        PutNumber(bytes, fullCrcAt, Crc(ByteView(bytes).Part(8, 516)), 4);
    }
    return m_pages.Sink().WriteAt(0, bytes);
}

}  // namespace mailbox_builder
