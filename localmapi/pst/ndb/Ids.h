// The ids of the node database. Each is a type of its own, so that mixing them does not compile.
#pragma once

#include "localmapi/base/Format.h"

#include <compare>
#include <cstdint>
#include <string>

namespace localmapi::pst {

// What kind of object a node is, from the low five bits of its id: [MS-PST] 2.2.2.1.
enum class NodeType : std::uint8_t {
    HeapItem = 0x00,
    Internal = 0x01,
    Folder = 0x02,
    SearchFolder = 0x03,
    Message = 0x04,
    Attachment = 0x05,
    AssociatedMessage = 0x08,
    OleObject = 0x09,  // not published; seen as the sub-node that holds an OLE attachment
    HierarchyTable = 0x0D,
    ContentsTable = 0x0E,
    AssociatedTable = 0x0F,
    AttachmentTable = 0x11,
    RecipientTable = 0x12,
    Value = 0x1F,
};

// Names a node of the file or, as a sub-node's id, a node within its owner.
struct NodeId {
    std::uint32_t value = 0;

    constexpr NodeType Type() const noexcept { return static_cast<NodeType>(value & 0x1F); }

    // The node of the same index and another type: a folder's tables are found so.
    constexpr NodeId Sibling(NodeType type) const noexcept {
        return NodeId{(value & ~0x1FU) | static_cast<std::uint32_t>(type)};
    }

    constexpr auto operator<=>(const NodeId&) const = default;  // NOLINT(modernize-use-nullptr): a fault of the check
};

inline std::string Name(NodeId id) {
    return "node " + Hex(id.value);
}

// Names a block. Bit 0 has no meaning and is dropped; bit 1 tells blocks of the database itself (trees of blocks, lists
// of sub-nodes), which are never encoded, from those with data. 0 names none.
struct BlockId {
    std::uint64_t value = 0;

    static constexpr BlockId FromDisk(std::uint64_t raw) noexcept { return BlockId{raw & ~std::uint64_t{1}}; }

    constexpr bool IsNone() const noexcept { return value == 0; }
    constexpr bool IsInternal() const noexcept { return (value & 2) != 0; }

    constexpr auto operator<=>(const BlockId&) const = default;  // NOLINT(modernize-use-nullptr)
};

inline std::string Name(BlockId id) {
    return "block " + Hex(id.value);
}

struct FileOffset {
    std::uint64_t value = 0;

    constexpr auto operator<=>(const FileOffset&) const = default;  // NOLINT(modernize-use-nullptr)
};

// A page as its parent names it: its own id, and where it lies.
struct PageRef {
    std::uint64_t id = 0;
    FileOffset at;
};

// What the node b-tree, or a list of sub-nodes, tells of a node. Sub-nodes have no parent: it is 0.
struct NodeEntry {
    NodeId id;
    BlockId data;      // none: a node without data
    BlockId subnodes;  // none: no sub-nodes
    NodeId parent;     // the folder that holds a message or folder; 0 for tables

    bool operator==(const NodeEntry&) const = default;
};

}  // namespace localmapi::pst
