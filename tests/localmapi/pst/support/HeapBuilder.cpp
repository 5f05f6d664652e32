#include "tests/localmapi/pst/support/HeapBuilder.h"

#include <algorithm>

namespace localmapi::testing {

namespace {

constexpr std::size_t kBiggestItem = 3580;

unsigned TypeOf(std::uint32_t tag) {
    return tag & 0xFFFF;
}

// Bytes of a cell of a type: [MS-PST] 2.3.4.4.
unsigned CellSize(unsigned type) {
    switch (type) {
        case 0x0B: return 1;
        case 0x02: return 2;
        case 0x05:
        case 0x06:
        case 0x07:
        case 0x14:
        case 0x40: return 8;
        default: return 4;
    }
}

bool IsInline(unsigned type) {
    return type == 0x02 || type == 0x03 || type == 0x04 || type == 0x0A || type == 0x0B;
}

std::uint32_t AddValue(ImageBuilder& image, HeapBuilder& heap, const Bytes& value) {
    if (value.empty()) {
        return 0;
    }
    return value.size() <= kBiggestItem ? heap.Add(value) : heap.AddSubnode(image.AddData(value));
}

}  // namespace

std::uint32_t HeapBuilder::Add(const Bytes& item) {
    std::size_t used = 66 + 4 + 2;
    for (const Bytes& other : m_items.back()) {
        used += other.size() + 2;
    }
    if (used + item.size() + 2 > m_image.TheForm().fullBlock) {
        BeginBlock();
    }
    m_items.back().push_back(item);
    return static_cast<std::uint32_t>((m_items.size() - 1) << (5 + m_image.TheForm().heapIndexBits)
                                      | m_items.back().size() << 5);
}

std::uint32_t HeapBuilder::AddTree(unsigned keySize, unsigned dataSize, const Records& records, std::size_t perItem) {
    Records level = records;
    std::uint32_t root = 0;
    unsigned levels = 0;
    while (!level.empty()) {
        Records above;
        for (std::size_t at = 0; at < level.size(); at += perItem) {
            ByteWriter item;
            for (std::size_t i = at; i < std::min(level.size(), at + perItem); ++i) {
                item.Append(level[i].first).Append(level[i].second);
            }
            root = Add(item.bytes);
            above.emplace_back(level[at].first, ByteWriter().U32(root).Take());
        }
        if (above.size() == 1) {
            break;
        }
        ++levels;
        level = std::move(above);
    }
    return Add(ByteWriter().U8(0xB5).U8(keySize).U8(dataSize).U8(levels).U32(root).Take());
}

std::uint32_t HeapBuilder::AddSubnode(std::uint64_t data, std::uint64_t subnodes, std::uint32_t type) {
    const std::uint32_t id = (0x400 + m_nextSubnode++) << 5 | type;
    m_subnodes.push_back({id, data, subnodes});
    return id;
}

Bytes HeapBuilder::HeaderOf(std::size_t block, std::uint32_t root) const {
    ByteWriter header;
    header.U16(0);
    if (block == 0) {
        header.U8(0xEC).U8(m_use).U32(root).U32(0);
    } else if (block % 128 == 8) {
        header.PadTo(66);  // fill levels of the blocks that follow
    }
    return header.bytes;
}

std::vector<Bytes> HeapBuilder::Blocks(std::uint32_t root) const {
    std::vector<Bytes> blocks;
    for (std::size_t i = 0; i < m_items.size(); ++i) {
        ByteWriter block;
        block.Append(HeaderOf(i, root));
        ByteWriter map;
        map.U16(m_items[i].size()).U16(0).U16(block.bytes.size());
        for (const Bytes& item : m_items[i]) {
            block.Append(item);
            map.U16(block.bytes.size());
        }
        const std::size_t mapAt = (block.bytes.size() + 1) & ~std::size_t{1};
        block.PadTo(mapAt).Append(map.bytes);
        if (i + 1 < m_items.size()) {
            block.PadTo(m_image.TheForm().fullBlock);
        }
        Poke(block.bytes, 0, mapAt, 2);
        blocks.push_back(block.bytes);
    }
    return blocks;
}

NodeData HeapBuilder::Finish(std::uint32_t root) {
    std::vector<std::uint64_t> ids;
    std::size_t total = 0;
    for (const Bytes& block : Blocks(root)) {
        ids.push_back(m_image.AddBlock(block));
        total += block.size();
    }
    std::sort(m_subnodes.begin(), m_subnodes.end(), [](const Subnode& a, const Subnode& b) { return a.id < b.id; });
    return {ids.size() == 1 ? ids.front() : m_image.AddTree(ids, total),
            m_subnodes.empty() ? 0 : m_image.AddSubnodes(m_subnodes)};
}

Bytes Utf16(std::string_view ascii) {
    ByteWriter text;
    for (const char c : ascii) {
        text.U16(static_cast<unsigned char>(c));
    }
    return text.bytes;
}

Bytes Number32(std::uint32_t value) {
    return ByteWriter().U32(value).Take();
}

NodeData AddProperties(ImageBuilder& image, std::vector<Property> properties,
                       const std::vector<std::pair<std::uint32_t, NodeData>>& subnodes) {
    std::sort(properties.begin(), properties.end(), [](const Property& a, const Property& b) { return a.tag < b.tag; });
    HeapBuilder heap(image, 0xBC);
    HeapBuilder::Records records;
    for (const auto& [id, node] : subnodes) {
        heap.AddSubnodeAs(id, node);
    }
    for (const Property& property : properties) {
        Bytes value = property.value;
        if (!IsInline(TypeOf(property.tag))) {
            value = Number32(AddValue(image, heap, property.value));
        }
        value.resize(4);
        records.emplace_back(ByteWriter().U16(property.tag >> 16).Take(),
                             ByteWriter().U16(TypeOf(property.tag)).Append(value).Take());
    }
    return heap.Finish(heap.AddTree(2, 6, records));
}

NodeData AddTable(ImageBuilder& image, const std::vector<std::uint32_t>& columns, const std::vector<Row>& rows,
                  const TableShape& shape) {
    std::vector<std::uint32_t> tags = columns;
    tags.insert(tags.begin(), {0x67F20003, 0x67F30003});
    // Cells by descending size, the bitmap behind them.
    std::vector<unsigned> offsets(tags.size());
    unsigned ends[4] = {};
    unsigned at = 0;
    for (const unsigned size : {8U, 4U, 2U, 1U}) {
        for (std::size_t i = 0; i < tags.size(); ++i) {
            // The id and the version come first whatever their size.
            const bool isFirst = i < 2;
            if ((isFirst && size == 8) || (!isFirst && CellSize(TypeOf(tags[i])) == size)) {
                offsets[i] = at;
                at += CellSize(TypeOf(tags[i]));
            }
        }
        ends[size == 8 ? 0 : size == 4 ? 0 : size == 2 ? 1 : 2] = at;
    }
    ends[3] = at + static_cast<unsigned>(tags.size() + 7) / 8;

    HeapBuilder heap(image, 0x7C);
    std::vector<Bytes> stored;
    HeapBuilder::Records index;
    for (std::size_t number = 0; number < rows.size(); ++number) {
        Bytes row(ends[3]);
        const auto put = [&](std::size_t column, const Bytes& cell) {
            std::copy(cell.begin(), cell.end(), row.begin() + static_cast<std::ptrdiff_t>(offsets[column]));
            row[ends[2] + column / 8] |= static_cast<std::byte>(0x80 >> (column % 8));
        };
        put(0, Number32(rows[number].id));
        put(1, Number32(1));
        for (const Property& cell : rows[number].cells) {
            const auto column = static_cast<std::size_t>(std::find(tags.begin(), tags.end(), cell.tag) - tags.begin());
            const unsigned type = TypeOf(cell.tag);
            const bool isStored = IsInline(type) || CellSize(type) == 8;
            put(column, isStored ? cell.value : Number32(AddValue(image, heap, cell.value)));
        }
        stored.push_back(row);
        const unsigned indexWidth = image.TheForm().width == 4 ? 2 : 4;
        index.emplace_back(Number32(rows[number].id), ByteWriter().Number(number, indexWidth).Take());
    }
    std::sort(index.begin(), index.end(),
              [](const auto& a, const auto& b) { return ByteView(a.first).U32(0) < ByteView(b.first).U32(0); });

    ByteWriter matrix;
    const std::size_t perBlock = image.TheForm().fullBlock / ends[3];
    for (std::size_t i = 0; i < stored.size(); ++i) {
        if (i > 0 && i % perBlock == 0) {
            matrix.PadTo(i / perBlock * image.TheForm().fullBlock);  // no row lies across two blocks
        }
        matrix.Append(stored[i]);
    }
    std::uint32_t rowsId = 0;
    if (!rows.empty()) {
        rowsId =
            rows.size() <= shape.rowsInHeap ? heap.Add(matrix.bytes) : heap.AddSubnode(image.AddData(matrix.bytes));
    }
    const std::uint32_t indexId = heap.AddTree(4, image.TheForm().width == 4 ? 2 : 4, index, shape.indexPerItem);
    ByteWriter info;
    info.U8(0x7C).U8(tags.size()).U16(ends[0]).U16(ends[1]).U16(ends[2]).U16(ends[3]);
    info.U32(indexId).U32(rowsId).U32(0);
    for (std::size_t i = 0; i < tags.size(); ++i) {
        info.U32(tags[i]).U16(offsets[i]).U8(CellSize(TypeOf(tags[i]))).U8(i);
    }
    return heap.Finish(heap.Add(info.bytes));
}

}  // namespace localmapi::testing
