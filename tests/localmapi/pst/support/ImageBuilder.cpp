#include "tests/localmapi/pst/support/ImageBuilder.h"

#include "localmapi/pst/ndb/Checksum.h"

#include <algorithm>
#include <stdexcept>

#include <zlib.h>

namespace localmapi::testing {

ByteWriter& ByteWriter::Number(std::uint64_t value, unsigned width) {
    for (unsigned i = 0; i < width; ++i) {
        bytes.push_back(static_cast<std::byte>(value >> (8 * i)));
    }
    return *this;
}

ByteWriter& ByteWriter::Append(ByteView more) {
    bytes.insert(bytes.end(), more.Span().begin(), more.Span().end());
    return *this;
}

ByteWriter& ByteWriter::PadTo(std::size_t size) {
    bytes.resize(std::max(size, bytes.size()));
    return *this;
}

void Poke(Bytes& bytes, std::size_t at, std::uint64_t value, unsigned width) {
    for (unsigned i = 0; i < width; ++i) {
        bytes.at(at + i) = static_cast<std::byte>(value >> (8 * i));
    }
}

Bytes BytesOf(std::string_view text) {
    const auto bytes = std::as_bytes(std::span(text));
    return {bytes.begin(), bytes.end()};
}

Bytes Pattern(std::size_t size, std::uint32_t seed) {
    Bytes bytes(size);
    std::uint32_t state = seed * 2654435761U + 1;
    for (std::byte& byte : bytes) {
        state = state * 1664525U + 1013904223U;
        byte = static_cast<std::byte>(state >> 24);
    }
    return bytes;
}

std::uint64_t ImageBuilder::AddBlock(const Bytes& data) {
    const std::uint64_t id = m_nextBlock;
    m_nextBlock += 4;
    Block block{data, data.size()};
    pst::Encode(m_encoding, pst::BlockId{id}, block.stored);
    m_blocks[id] = std::move(block);
    return id;
}

std::uint64_t ImageBuilder::AddInternal(const Bytes& data) {
    const std::uint64_t id = m_nextBlock | 2;
    m_nextBlock += 4;
    m_blocks[id] = Block{data, data.size()};
    return id;
}

std::uint64_t ImageBuilder::AddCompressed(const Bytes& data, int windowBits) {
    const std::uint64_t id = AddBlock(data);
    Block& block = m_blocks.at(id);
    z_stream stream{};
    if (deflateInit2(&stream, 9, Z_DEFLATED, windowBits, 8, Z_DEFAULT_STRATEGY) != Z_OK) {
        throw std::runtime_error("deflateInit2");
    }
    Bytes out(deflateBound(&stream, static_cast<uLong>(data.size())));
    stream.next_in = reinterpret_cast<Bytef*>(block.stored.data());
    stream.avail_in = static_cast<uInt>(block.stored.size());
    stream.next_out = reinterpret_cast<Bytef*>(out.data());
    stream.avail_out = static_cast<uInt>(out.size());
    deflate(&stream, Z_FINISH);
    out.resize(stream.total_out);
    deflateEnd(&stream);
    block.stored = std::move(out);
    return id;
}

std::uint64_t ImageBuilder::AddTree(const std::vector<std::uint64_t>& leaves, std::uint64_t total) {
    ByteWriter ids;
    ids.U8(1).U8(1).U16(leaves.size()).U32(total);
    for (const std::uint64_t leaf : leaves) {
        ids.Number(leaf, m_form.width);
    }
    return AddInternal(ids.bytes);
}

std::uint64_t ImageBuilder::AddTree(const std::vector<std::vector<std::uint64_t>>& groups, std::uint64_t total) {
    ByteWriter ids;
    ids.U8(1).U8(2).U16(groups.size()).U32(total);
    for (const auto& group : groups) {
        std::uint64_t size = 0;
        for (const std::uint64_t leaf : group) {
            size += m_blocks.at(leaf).size;
        }
        ids.Number(AddTree(group, size), m_form.width);
    }
    return AddInternal(ids.bytes);
}

std::uint64_t ImageBuilder::AddData(const Bytes& data) {
    std::vector<std::uint64_t> leaves;
    for (std::size_t at = 0; at < data.size() || leaves.empty(); at += m_form.fullBlock) {
        const std::size_t end = std::min<std::size_t>(data.size(), at + m_form.fullBlock);
        leaves.push_back(AddBlock(
            Bytes(data.begin() + static_cast<std::ptrdiff_t>(at), data.begin() + static_cast<std::ptrdiff_t>(end))));
    }
    const std::size_t perBlock = (m_form.fullBlock - 8) / m_form.width;
    if (leaves.size() <= perBlock) {
        return leaves.size() == 1 ? leaves.front() : AddTree(leaves, data.size());
    }
    std::vector<std::vector<std::uint64_t>> groups;
    for (std::size_t i = 0; i < leaves.size(); ++i) {
        if (i % perBlock == 0) {
            groups.emplace_back();
        }
        groups.back().push_back(leaves[i]);
    }
    return AddTree(groups, data.size());
}

std::uint64_t ImageBuilder::AddSubnodes(const std::vector<Subnode>& nodes) {
    ByteWriter list;
    list.U8(2).U8(0).U16(nodes.size()).PadTo(m_form.width);
    for (const Subnode& node : nodes) {
        list.Number(node.id, m_form.width).Number(node.data, m_form.width).Number(node.subnodes, m_form.width);
    }
    return AddInternal(list.bytes);
}

std::uint64_t ImageBuilder::AddSubnodes(const std::vector<std::vector<Subnode>>& groups) {
    ByteWriter list;
    list.U8(2).U8(1).U16(groups.size()).PadTo(m_form.width);
    for (const auto& group : groups) {
        list.Number(group.front().id, m_form.width).Number(AddSubnodes(group), m_form.width);
    }
    return AddInternal(list.bytes);
}

void ImageBuilder::AddNode(std::uint32_t id, std::uint64_t data, std::uint64_t subnodes, std::uint32_t parent) {
    m_nodes[id] = Node{data, subnodes, parent};
}

Bytes ImageBuilder::Build() {
    ByteWriter file;
    file.PadTo(m_form.pageSize == 512 ? 1024 : m_form.pageSize);  // behind the header
    PlaceBlocks(file);
    file.PadTo(static_cast<std::size_t>(RoundUp(file.bytes.size(), m_form.pageSize)));

    std::map<std::uint64_t, Bytes> blockEntries;
    for (const auto& [id, block] : m_blocks) {
        ByteWriter entry;
        entry.Number(id, m_form.width).Number(block.at, m_form.width).U16(block.stored.size());
        if (m_form.version == 36) {
            entry.U16(block.size);
        }
        entry.U16(2).PadTo(m_form.width == 4 ? 12 : 24);
        blockEntries[id] = entry.bytes;
    }
    std::map<std::uint64_t, Bytes> nodeEntries;
    for (const auto& [id, node] : m_nodes) {
        ByteWriter entry;
        entry.Number(id, m_form.width).Number(node.data, m_form.width).Number(node.subnodes, m_form.width);
        entry.U32(node.parent).PadTo(m_form.width == 4 ? 16 : 32);
        nodeEntries[id] = entry.bytes;
    }
    const PageRef blocks = PlaceTree(file, 0x80, blockEntries);
    const PageRef nodes = PlaceTree(file, 0x81, nodeEntries);
    WriteHeader(file.bytes, nodes, blocks);
    return file.bytes;
}

void ImageBuilder::PlaceBlocks(ByteWriter& file) {
    for (auto& [id, block] : m_blocks) {
        block.at = file.bytes.size();
        file.Append(block.stored);
        file.PadTo(static_cast<std::size_t>(BlockTrailerAt(id)));
        const std::uint16_t signature = pst::Signature(pst::FileOffset{block.at}, id);
        file.U16(block.stored.size()).U16(signature);
        if (m_form.width == 4) {
            file.U32(id).U32(pst::Crc(block.stored));
        } else {
            file.U32(pst::Crc(block.stored)).U64(id);
        }
        if (m_form.version == 36) {
            file.U16(2).U16(block.size).U32(0);
        }
    }
}

std::uint64_t ImageBuilder::BlockTrailerAt(std::uint64_t id) const {
    const Block& block = m_blocks.at(id);
    return block.at + RoundUp(block.stored.size() + m_form.blockTrailer, m_form.blockStep) - m_form.blockTrailer;
}

ImageBuilder::PageRef ImageBuilder::PlaceTree(ByteWriter& file, unsigned type,
                                              const std::map<std::uint64_t, Bytes>& entries) {
    const std::size_t entrySize = entries.empty() ? 1 : entries.begin()->second.size();
    std::vector<std::pair<std::uint64_t, Bytes>> level(entries.begin(), entries.end());
    for (unsigned depth = 0;; ++depth) {
        const std::size_t size = std::max<std::size_t>(1, depth == 0 ? entrySize : std::size_t{3} * m_form.width);
        const std::size_t most = entriesPerPage != 0 ? entriesPerPage : m_form.pageTail / size;
        std::vector<PageRef> placed;
        for (std::size_t at = 0; at < level.size() || placed.empty(); at += most) {
            std::vector<Bytes> part;
            for (std::size_t i = at; i < std::min(level.size(), at + most); ++i) {
                part.push_back(level[i].second);
            }
            placed.push_back(PlacePage(file, type, depth, level.empty() ? 0 : level[at].first, part));
        }
        if (placed.size() == 1) {
            return placed.front();
        }
        level.clear();
        for (const PageRef& page : placed) {
            ByteWriter entry;
            entry.Number(page.key, m_form.width).Number(page.id, m_form.width).Number(page.at, m_form.width);
            level.emplace_back(page.key, entry.bytes);
        }
    }
}

ImageBuilder::PageRef ImageBuilder::PlacePage(ByteWriter& file, unsigned type, unsigned level, std::uint64_t key,
                                              const std::vector<Bytes>& entries) {
    ByteWriter page;
    for (const Bytes& entry : entries) {
        page.Append(entry);
    }
    page.PadTo(m_form.pageTail);
    const std::size_t entrySize = !entries.empty() ? entries.front().size() : type == 0x81 ? 4U * m_form.width : 24;
    const unsigned countWidth = m_form.version == 36 ? 2 : 1;
    page.Number(entries.size(), countWidth).Number(m_form.pageTail / entrySize, countWidth);
    page.U8(entrySize).U8(level).PadTo(m_form.pageSize - m_form.pageTrailer);
    const PageRef ref{key, m_nextPage++, file.bytes.size()};
    page.U8(type).U8(type).U16(pst::Signature(pst::FileOffset{ref.at}, ref.id));
    if (m_form.width == 4) {
        page.U32(ref.id).U32(0);
    } else {
        page.U32(0).U64(ref.id);
    }
    page.PadTo(m_form.pageSize);
    file.Append(page.bytes);
    SealPage(file.bytes, ref.at);
    pages.push_back(PlacedPage{ref.at, type, level});
    return ref;
}

void ImageBuilder::SealPage(Bytes& image, std::uint64_t at) const {
    const std::size_t content = m_form.pageSize - m_form.pageTrailer;
    const std::uint32_t crc = pst::Crc(ByteView(image).Part(at, content));
    Poke(image, static_cast<std::size_t>(at) + content + (m_form.width == 4 ? 8 : 4), crc, 4);
}

void ImageBuilder::WriteHeader(Bytes& image, PageRef nodes, PageRef blocks) const {
    const bool isAnsi = m_form.width == 4;
    Poke(image, 0, 0x4E444221, 4);
    Poke(image, 8, m_form.version == 36 ? 0x4F53 : 0x4D53, 2);
    Poke(image, 10, m_form.version, 2);
    Poke(image, 12, 19, 2);
    Poke(image, isAnsi ? 168 : 184, image.size(), m_form.width);
    Poke(image, isAnsi ? 184 : 216, nodes.id, m_form.width);
    Poke(image, isAnsi ? 188 : 224, nodes.at, m_form.width);
    Poke(image, isAnsi ? 192 : 232, blocks.id, m_form.width);
    Poke(image, isAnsi ? 196 : 240, blocks.at, m_form.width);
    Poke(image, isAnsi ? 460 : 512, 0x80, 1);
    Poke(image, isAnsi ? 461 : 513, static_cast<std::uint64_t>(m_encoding), 1);
    SealHeader(image);
}

void ImageBuilder::SealHeader(Bytes& image) const {
    Poke(image, 4, pst::Crc(ByteView(image).Part(8, 471)), 4);
    if (m_form.width == 8) {
        Poke(image, 524, pst::Crc(ByteView(image).Part(8, 516)), 4);
    }
}

}  // namespace localmapi::testing
