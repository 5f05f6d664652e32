// Writes a node that is a heap: small items by id, larger values in sub-nodes, and b-trees over items. [MS-PST] 2.3.1,
// 2.3.2. One thread at a time.
//
// Blocks are written when they are full, save for those that tell how full others are: the first, and one of every 128.
#pragma once

#include "testing/mailbox_builder/DatabaseWriter.h"
#include "testing/mailbox_builder/Model.h"

#include <cstdint>
#include <optional>
#include <span>
#include <utility>
#include <variant>
#include <vector>

namespace mailbox_builder {

// What a heap is used for.
enum class HeapUse : std::uint8_t { Table = 0x7C, Properties = 0xBC };

// The bytes of a value as the file holds them. Content is borrowed.
using StoredValue = std::variant<Bytes, const Content*>;

class HeapWriter {
public:
    // No item is longer; longer values have a sub-node.
    static constexpr std::size_t kLongestItem = 3580;

    // `database` is borrowed and outlives the heap.
    HeapWriter(DatabaseWriter& database, HeapUse use) : m_database(database), m_use(use) {}

    // Gives the item's id, 0 for an empty one. At most kLongestItem bytes. TooLarge when the heap is full: some 500 MB.
    Result<std::uint32_t> Add(ByteView item);

    // An item of `size` bytes whose bytes come later, with Replace: only while it lies in the first block, so among the
    // first that are added.
    Result<std::uint32_t> Reserve(std::size_t size) { return Add(Bytes(size)); }
    void Replace(std::uint32_t id, ByteView item);

    // Puts a value of any size where it belongs and gives the item's or sub-node's id; 0 for an empty one.
    Result<std::uint32_t> AddValue(const StoredValue& value);

    // A new sub-node for data that is written already.
    std::uint32_t AddValueNode(BlockId data);
    void AddSubnode(NodeId id, const NodeData& node) { m_subnodes.push_back({id, node.data, node.subnodes, {}}); }

    // Writes the rest. `root` is the item that everything else hangs from.
    Result<NodeData> Finish(std::uint32_t root);

    DatabaseWriter& Database() const noexcept { return m_database; }

private:
    struct Block {
        std::size_t headerSize;
        Bytes bytes;                      // header and items; their map follows when the block is written
        std::vector<std::uint16_t> ends;  // of the items
    };

    bool Fits(std::size_t size) const noexcept;
    void Begin();
    enum class Place : std::uint8_t { Middle, Last };
    Status Complete(Place place);
    Status WriteHeldMap();
    Result<BlockId> Write(const Block& block, Place place);

    DatabaseWriter& m_database;
    HeapUse m_use;
    std::optional<Block> m_current;
    std::vector<BlockId> m_blocks;  // those that are full; none for the ones that are held back:
    std::optional<Block> m_first;   // the first,
    std::optional<Block> m_map;     // and the last one that tells of others
    std::size_t m_mapNumber = 0;
    std::size_t m_lastSize = 0;
    std::vector<NodeEntry> m_subnodes;
    std::uint32_t m_valueNodes = 0;
};

// Writes a b-tree into a heap from records in the order of their keys.
class HeapTreeWriter {
public:
    // Reserves the header: among the first items of the heap, which is borrowed.
    static Result<HeapTreeWriter> Begin(HeapWriter& heap, std::size_t keySize, std::size_t dataSize);

    // The id of the header, by which the tree is known.
    std::uint32_t Id() const noexcept { return m_header; }

    // A record: key and data.
    Status Add(ByteView record) { return AddTo(0, record); }
    Status Finish();

private:
    HeapTreeWriter(HeapWriter& heap, std::uint32_t header, std::size_t keySize, std::size_t dataSize)
        : m_heap(&heap), m_header(header), m_keySize(keySize), m_dataSize(dataSize) {}
    Status AddTo(std::size_t level, ByteView record);
    Status Push(std::size_t level);

    HeapWriter* m_heap;
    std::uint32_t m_header;
    std::size_t m_keySize;
    std::size_t m_dataSize;
    std::vector<Bytes> m_levels;  // the item in hand of each, records first
};

}  // namespace mailbox_builder
