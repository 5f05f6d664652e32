// Writes small PST and OST files in memory, sound or, with a hand from the test, damaged. Its numbers are its own, taken
// from [MS-PST] and not from the reader, so that a wrong number in the reader is seen.
#pragma once

#include "localmapi/base/Bytes.h"
#include "localmapi/pst/ndb/Encoding.h"

#include <cstdint>
#include <map>
#include <string_view>
#include <vector>

namespace localmapi::testing {

// Appends little-endian numbers.
class ByteWriter {
public:
    ByteWriter& Number(std::uint64_t value, unsigned width);
    ByteWriter& U8(std::uint64_t value) { return Number(value, 1); }
    ByteWriter& U16(std::uint64_t value) { return Number(value, 2); }
    ByteWriter& U32(std::uint64_t value) { return Number(value, 4); }
    ByteWriter& U64(std::uint64_t value) { return Number(value, 8); }
    ByteWriter& Append(ByteView more);
    ByteWriter& PadTo(std::size_t size);
    Bytes Take() { return std::move(bytes); }

    Bytes bytes;
};

// Overwrites a little-endian number.
void Poke(Bytes& bytes, std::size_t at, std::uint64_t value, unsigned width);

Bytes BytesOf(std::string_view text);

// `size` bytes that look alike nowhere.
Bytes Pattern(std::size_t size, std::uint32_t seed = 1);

// The numbers of a form of the file.
struct Form {
    const char* name;
    unsigned version;
    unsigned width;  // of ids and offsets
    unsigned pageSize;
    unsigned pageTrailer;
    unsigned pageTail;  // count, size and level of a b-tree page lie here
    unsigned blockTrailer;
    unsigned blockStep;
    unsigned fullBlock;  // data in a full block
    unsigned heapIndexBits;
};
inline constexpr Form kAnsi = {"ANSI", 14, 4, 512, 12, 496, 12, 64, 8180, 11};
inline constexpr Form kUnicode = {"Unicode", 23, 8, 512, 16, 488, 16, 64, 8176, 11};
inline constexpr Form kLarge = {"4 KiB pages", 36, 8, 4096, 24, 4056, 24, 512, 65512, 14};
inline constexpr const Form* kForms[] = {&kAnsi, &kUnicode, &kLarge};

struct Subnode {
    std::uint32_t id;
    std::uint64_t data;
    std::uint64_t subnodes = 0;
};

class ImageBuilder {
public:
    explicit ImageBuilder(const Form& form, pst::Encoding encoding = pst::Encoding::None)
        : m_form(form), m_encoding(encoding) {}

    const Form& TheForm() const { return m_form; }

    // All give the new block's id. Data is encoded; blocks of ids are not.
    std::uint64_t AddBlock(const Bytes& data);
    std::uint64_t AddInternal(const Bytes& data);
    std::uint64_t AddCompressed(const Bytes& data, int windowBits = 15);

    // A tree over data blocks: one level, or two when the leaves are given in groups.
    std::uint64_t AddTree(const std::vector<std::uint64_t>& leaves, std::uint64_t total);
    std::uint64_t AddTree(const std::vector<std::vector<std::uint64_t>>& groups, std::uint64_t total);

    // Data of any size in full blocks.
    std::uint64_t AddData(const Bytes& data);

    // Lists of sub-nodes: one block, or one a group and one over them.
    std::uint64_t AddSubnodes(const std::vector<Subnode>& nodes);
    std::uint64_t AddSubnodes(const std::vector<std::vector<Subnode>>& groups);

    void AddNode(std::uint32_t id, std::uint64_t data, std::uint64_t subnodes = 0, std::uint32_t parent = 0);

    // Entries that a b-tree page may hold: few make deep trees. 0: as many as fit.
    unsigned entriesPerPage = 0;

    // Lays everything out. May be called once; the places below are known afterwards.
    Bytes Build();

    std::uint64_t BlockAt(std::uint64_t id) const { return m_blocks.at(id).at; }
    std::uint64_t BlockTrailerAt(std::uint64_t id) const;

    struct PlacedPage {
        std::uint64_t at;
        unsigned type;
        unsigned level;
    };
    std::vector<PlacedPage> pages;  // in the order of the file

    // Makes the CRC of a page, or of the header, fit what is there now.
    void SealPage(Bytes& image, std::uint64_t at) const;
    void SealHeader(Bytes& image) const;

private:
    struct Block {
        Bytes stored;
        std::size_t size;  // of the data; differs from what is stored when compressed
        std::uint64_t at = 0;
    };
    struct Node {
        std::uint64_t data;
        std::uint64_t subnodes;
        std::uint32_t parent;
    };
    struct PageRef {
        std::uint64_t key;
        std::uint64_t id;
        std::uint64_t at;
    };

    void PlaceBlocks(ByteWriter& file);
    PageRef PlaceTree(ByteWriter& file, unsigned type, const std::map<std::uint64_t, Bytes>& entries);
    PageRef PlacePage(ByteWriter& file, unsigned type, unsigned level, std::uint64_t key,
                      const std::vector<Bytes>& entries);
    void WriteHeader(Bytes& image, PageRef nodes, PageRef blocks) const;

    const Form& m_form;
    pst::Encoding m_encoding;
    std::map<std::uint64_t, Block> m_blocks;
    std::map<std::uint32_t, Node> m_nodes;
    std::uint64_t m_nextBlock = 4;
    std::uint64_t m_nextPage = 1;
};

}  // namespace localmapi::testing
