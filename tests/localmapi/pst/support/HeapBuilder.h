// Writes heaps, b-trees on heaps, property contexts and tables into an ImageBuilder's file.
#pragma once

#include "tests/localmapi/pst/support/ImageBuilder.h"

#include <cstdint>
#include <utility>
#include <vector>

namespace localmapi::testing {

// What makes up a node: its data, and its sub-nodes.
struct NodeData {
    std::uint64_t data = 0;
    std::uint64_t subnodes = 0;
};

class HeapBuilder {
public:
    HeapBuilder(ImageBuilder& image, std::uint8_t use) : m_image(image), m_use(use) {}

    // Gives the item's id. A new block is begun when the item does not fit into the one in hand.
    std::uint32_t Add(const Bytes& item);
    void BeginBlock() { m_items.emplace_back(); }

    // A b-tree over records, sorted by the caller, `perItem` records an item and as many levels as that takes. Gives
    // the id of its header.
    using Records = std::vector<std::pair<Bytes, Bytes>>;
    std::uint32_t AddTree(unsigned keySize, unsigned dataSize, const Records& records, std::size_t perItem = 300);

    // Gives the sub-node's id.
    std::uint32_t AddSubnode(std::uint64_t data, std::uint64_t subnodes = 0, std::uint32_t type = 0x1F);
    void AddSubnodeAs(std::uint32_t id, NodeData node) { m_subnodes.push_back({id, node.data, node.subnodes}); }

    // Writes the heap and the list of sub-nodes.
    NodeData Finish(std::uint32_t root);

    // The blocks as Finish would write them, for tests that damage them.
    std::vector<Bytes> Blocks(std::uint32_t root) const;

private:
    Bytes HeaderOf(std::size_t block, std::uint32_t root) const;

    ImageBuilder& m_image;
    std::uint8_t m_use;
    std::vector<std::vector<Bytes>> m_items{1};  // by block
    std::vector<Subnode> m_subnodes;
    std::uint32_t m_nextSubnode = 1;
};

// A property of an object: the value as its bytes.
struct Property {
    std::uint32_t tag;
    Bytes value;
};
Bytes Utf16(std::string_view ascii);
Bytes Number32(std::uint32_t value);

// Values of up to four bytes stand in the record; others are items, or sub-nodes above 3,580 bytes.
NodeData AddProperties(ImageBuilder& image, std::vector<Property> properties,
                       const std::vector<std::pair<std::uint32_t, NodeData>>& subnodes = {});

// A table. Each row has its id, and cells for some of the columns.
struct Row {
    std::uint32_t id;
    std::vector<Property> cells;
};
struct TableShape {
    std::size_t rowsInHeap = 20;  // tables of more rows keep them in a sub-node
    std::size_t indexPerItem = 300;
};
NodeData AddTable(ImageBuilder& image, const std::vector<std::uint32_t>& columns, const std::vector<Row>& rows,
                  const TableShape& shape = {});

}  // namespace localmapi::testing
