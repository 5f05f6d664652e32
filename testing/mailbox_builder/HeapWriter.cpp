#include "testing/mailbox_builder/HeapWriter.h"

#include "testing/mailbox_builder/ByteWriter.h"

#include <algorithm>
#include <array>
#include <utility>

namespace mailbox_builder {

namespace {

constexpr std::uint8_t kSignature = 0xEC;
constexpr std::uint8_t kTreeType = 0xB5;
constexpr std::size_t kFirstHeader = 12;  // place of the map, signature, use, root, fill levels of eight blocks
constexpr std::size_t kMapHeader = 66;    // place of the map, fill levels of 128 blocks
constexpr std::size_t kHeader = 2;        // place of the map
constexpr std::size_t kFirstMapBlock = 8;
constexpr std::size_t kBlocksPerMap = 128;
constexpr std::uint32_t kFirstValueNode = 0x401;
constexpr unsigned kIndexShift = 5;

constexpr bool IsMapBlock(std::size_t block) noexcept {
    return block % kBlocksPerMap == kFirstMapBlock;
}

// How full a block is, in a nibble: [MS-PST] 2.3.1.2.
std::uint8_t FillLevel(std::size_t freeBytes) noexcept {
    constexpr std::array<std::size_t, 15> kLeast = {3584, 2560, 2048, 1792, 1536, 1280, 1024, 768,
                                                    512,  256,  128,  64,   32,   16,   8};
    const auto level =
        std::find_if(kLeast.begin(), kLeast.end(), [=](std::size_t least) { return freeBytes >= least; });
    return static_cast<std::uint8_t>(level - kLeast.begin());
}

// What a block takes: header and items, and the map behind them: two counts, where each item begins, and the end.
std::size_t UsedBytes(std::size_t headerAndItems, std::size_t items) noexcept {
    return localmapi::RoundUp(headerAndItems, 2) + 4 + 2 * (items + 1);
}

}  // namespace

bool HeapWriter::Fits(std::size_t size) const noexcept {
    const FileForm& form = m_database.TheForm();
    const std::size_t items = m_current->ends.size() + 1;
    return UsedBytes(m_current->bytes.size() + size, items) <= form.fullBlock
           && items < (std::size_t{1} << form.heapIndexBits);
}

void HeapWriter::Begin() {
    const std::size_t number = m_blocks.size();
    const std::size_t header = number == 0 ? kFirstHeader : IsMapBlock(number) ? kMapHeader : kHeader;
    m_current = Block{header, Bytes(header), {}};
}

Result<std::uint32_t> HeapWriter::Add(ByteView item) {
    if (item.IsEmpty()) {
        return std::uint32_t{0};
    }
    if (m_current && !Fits(item.Size())) {
        VX_TRY(Complete(Place::Middle));
    }
    if (!m_current) {
        Begin();
    }
    const unsigned blockShift = kIndexShift + m_database.TheForm().heapIndexBits;
    if (m_blocks.size() >= std::size_t{1} << (32 - blockShift)) {
        return Error{ErrorCode::TooLarge, "an object has more small values than a heap can hold"};
    }
    m_current->bytes.insert(m_current->bytes.end(), item.Span().begin(), item.Span().end());
    m_current->ends.push_back(static_cast<std::uint16_t>(m_current->bytes.size()));
    return static_cast<std::uint32_t>(m_blocks.size() << blockShift | m_current->ends.size() << kIndexShift);
}

void HeapWriter::Replace(std::uint32_t id, ByteView item) {
    Block& first = m_first ? *m_first : *m_current;
    const std::size_t index = id >> kIndexShift;
    const std::size_t at = index == 1 ? first.headerSize : first.ends[index - 2];
    localmapi::CopyInto(std::span(first.bytes).subspan(at), item);
}

// The block in hand has its last item: it is written, or held back, and the one in charge is told how full it is.
Status HeapWriter::Complete(Place place) {
    const std::size_t number = m_blocks.size();
    const bool isOfFirst = number < kFirstMapBlock;
    Block block = *std::exchange(m_current, std::nullopt);
    const std::size_t used = UsedBytes(block.bytes.size(), block.ends.size());
    const unsigned level = FillLevel(m_database.TheForm().fullBlock - used);
    if (IsMapBlock(number)) {
        VX_TRY(WriteHeldMap());
    }
    m_blocks.emplace_back();
    if (number == 0) {
        m_first = std::move(block);
    } else if (IsMapBlock(number)) {
        m_map = std::move(block);
        m_mapNumber = number;
    } else {
        VX_TRY_ASSIGN(m_blocks[number], Write(block, place));
    }
    Block& charge = isOfFirst ? *m_first : *m_map;
    const std::size_t nibble = isOfFirst ? number : (number - kFirstMapBlock) % kBlocksPerMap;
    charge.bytes[(isOfFirst ? 8 : 2) + nibble / 2] |= static_cast<std::byte>(level << (nibble % 2 * 4));
    return {};
}

Status HeapWriter::WriteHeldMap() {
    if (m_map) {
        const Place place = m_mapNumber + 1 == m_blocks.size() ? Place::Last : Place::Middle;
        VX_TRY_ASSIGN(m_blocks[m_mapNumber], Write(*m_map, place));
        m_map.reset();
    }
    return {};
}

// All blocks but the last are as long as a block can be.
Result<BlockId> HeapWriter::Write(const Block& block, Place place) {
    const std::size_t mapAt = localmapi::RoundUp(block.bytes.size(), 2);
    ByteWriter bytes;
    bytes.Append(block.bytes).PadTo(mapAt).U16(block.ends.size()).U16(0).U16(block.headerSize);
    for (const std::uint16_t end : block.ends) {
        bytes.U16(end);
    }
    if (place == Place::Middle) {
        bytes.PadTo(m_database.TheForm().fullBlock);
    }
    m_lastSize = place == Place::Last ? bytes.Size() : m_lastSize;
    Bytes whole = bytes.Take();
    PutNumber(whole, 0, mapAt, 2);
    return m_database.WriteBlock(std::move(whole));
}

std::uint32_t HeapWriter::AddValueNode(BlockId data) {
    const NodeId id{(kFirstValueNode + m_valueNodes++) << 5 | static_cast<std::uint32_t>(NodeType::Value)};
    AddSubnode(id, {data, {}});
    return id.value;
}

Result<std::uint32_t> HeapWriter::AddValue(const StoredValue& value) {
    const auto* held = std::get_if<Bytes>(&value);
    const Content* content = held == nullptr ? std::get<const Content*>(value) : nullptr;
    const std::uint64_t size = held != nullptr ? held->size() : content->size;
    const auto fill = [&](std::uint64_t offset, std::span<std::byte> out) {
        if (held != nullptr) {
            localmapi::CopyInto(out, ByteView(*held).Part(offset));
        } else {
            content->fill(offset, out);
        }
    };
    if (size > kLongestItem) {
        VX_TRY_ASSIGN(const BlockId data, m_database.WriteData(size, fill));
        return AddValueNode(data);
    }
    Bytes item(static_cast<std::size_t>(size));
    if (size > 0) {
        fill(0, item);
    }
    return Add(item);
}

Result<NodeData> HeapWriter::Finish(std::uint32_t root) {
    if (!m_current) {
        Begin();
    }
    VX_TRY(Complete(Place::Last));
    VX_TRY(WriteHeldMap());
    m_first->bytes[2] = std::byte{kSignature};
    m_first->bytes[3] = static_cast<std::byte>(m_use);
    PutNumber(m_first->bytes, 4, root, 4);
    VX_TRY_ASSIGN(m_blocks[0], Write(*m_first, m_blocks.size() == 1 ? Place::Last : Place::Middle));
    const std::uint64_t total = std::uint64_t{m_blocks.size() - 1} * m_database.TheForm().fullBlock + m_lastSize;
    NodeData node;
    VX_TRY_ASSIGN(node.data, m_database.WriteTree(m_blocks, total));
    VX_TRY_ASSIGN(node.subnodes, m_database.WriteSubnodes(std::move(m_subnodes)));
    return node;
}

Result<HeapTreeWriter> HeapTreeWriter::Begin(HeapWriter& heap, std::size_t keySize, std::size_t dataSize) {
    VX_TRY_ASSIGN(const std::uint32_t header, heap.Reserve(8));
    return HeapTreeWriter(heap, header, keySize, dataSize);
}

Status HeapTreeWriter::AddTo(std::size_t level, ByteView record) {
    if (level == m_levels.size()) {
        m_levels.emplace_back();
    }
    if (m_levels[level].size() + record.Size() > HeapWriter::kLongestItem) {
        VX_TRY(Push(level));
    }
    Bytes& into = m_levels[level];
    into.insert(into.end(), record.Span().begin(), record.Span().end());
    return {};
}

// Adds the item in hand of a level to the heap and names it in the level above, by its first key.
Status HeapTreeWriter::Push(std::size_t level) {
    const Bytes records = std::exchange(m_levels[level], {});
    VX_TRY_ASSIGN(const std::uint32_t item, m_heap->Add(records));
    ByteWriter record;
    record.Append(ByteView(records).Part(0, m_keySize)).U32(item);
    return AddTo(level + 1, record.View());
}

Status HeapTreeWriter::Finish() {
    for (std::size_t level = 0; level + 1 < m_levels.size(); ++level) {
        VX_TRY(Push(level));
    }
    std::uint32_t root = 0;
    if (!m_levels.empty()) {
        VX_TRY_ASSIGN(root, m_heap->Add(m_levels.back()));
    }
    ByteWriter header;
    header.U8(kTreeType).U8(m_keySize).U8(m_dataSize).U8(m_levels.empty() ? 0 : m_levels.size() - 1).U32(root);
    m_heap->Replace(m_header, header.View());
    return {};
}

}  // namespace mailbox_builder
