// The tree of elements as one transaction sees it, in memory: names and properties of all elements, contents of streams
// by reference. One thread at a time.
#pragma once

#include "platform/Guid.h"
#include "platform/WideText.h"
#include "platform/linux/storage/ElementName.h"
#include "platform/linux/storage/StreamContent.h"

#include <functional>
#include <map>
#include <memory>

namespace vx_storage {

// Whether an opened object is still good. An object holds a scope that hangs under the scope of the storage it was
// opened from; ending a scope ends, at once and for ever, all those under it.
class Scope {
public:
    explicit Scope(std::shared_ptr<const Scope> parent) noexcept : m_parent(std::move(parent)) {}

    void End() noexcept { m_ended = true; }
    bool Ended() const noexcept;
    bool IsUnder(const Scope* other) const noexcept;

private:
    std::shared_ptr<const Scope> m_parent;
    bool m_ended = false;
};

enum class NodeKind { Storage, Stream };

struct Node {
    using Children = std::map<CStringW, std::shared_ptr<Node>, NameLess>;

    NodeKind kind = NodeKind::Storage;
    CStringW name;  // of the root: empty

    // Storages only.
    CLSID clsid = GUID_NULL;
    DWORD stateBits = 0;
    FILETIME created = {};
    FILETIME modified = {};
    Children children;

    // Streams only.
    StreamContent content;

    // The object that has this element open, if any.
    std::weak_ptr<Scope> opened;

    Node() = default;
    Node(const Node&) = delete;
    Node& operator=(const Node&) = delete;
    ~Node();

    bool IsOpen() const noexcept;
    // Ends the object that has this element open, and all under it.
    void EndOpened() noexcept;
    // The element of that name, whatever its case; null when there is none.
    std::shared_ptr<Node> Find(WideView name) const;
};

// Copies all of a tree but what is open in it.
std::shared_ptr<Node> CopyTree(const Node& root);

// Calls `visit` with each node of the tree, a storage before its elements.
void ForEachNode(Node& root, const std::function<void(Node&)>& visit);

}  // namespace vx_storage
