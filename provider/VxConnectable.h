// CVxConnectable: what every node of the object tree is. A node has a parent, may be connected (what that means is the
// node's own), and remembers what went wrong with it.
//
// One path: a parent has at most one connected child, so at most one path from the root downwards is connected. Whoever
// connects a node connects its parents first and disconnects the sibling that was connected; nothing else closes a
// path, so it stays open from one call of the host to the next.
//
// The host's threads may use the tree one at a time. The lock is for the few operations that say so.
#pragma once

#include "platform/BaseTypes.h"
#include "provider/ItemTypes.h"

#include <cstdint>
#include <mutex>

class CVxAttachment;
class CVxDomain;
class CVxItem;

class CVxConnectable {
public:
    // `parent` outlives the node; null for the root only.
    explicit CVxConnectable(CVxConnectable* parent) noexcept : m_parent(parent) {}

    // Disconnects nothing: a class that has something to disconnect does so in its own destructor.
    virtual ~CVxConnectable();

    CVxConnectable(const CVxConnectable&) = delete;
    CVxConnectable& operator=(const CVxConnectable&) = delete;

    // The root; null, with a line in the log, where a node without a parent is none.
    virtual CVxDomain* GetDomain();

    // The node itself where it is an item or an attachment; null otherwise.
    virtual CVxItem* GetVxItem() { return nullptr; }
    virtual CVxAttachment* GetVxAttachment() { return nullptr; }

    // What connecting and disconnecting this node alone mean. OnDisconnect is called for a connected node only.
    virtual bool OnConnect() = 0;
    virtual void OnDisconnect() = 0;

    // Connects the path down to this node. A connected node is taken to be fine without a look at its parents. A parent
    // that fails to connect is noted in this node's errors, and this node is tried all the same.
    bool EnsureConnected();

    // Disconnects the connected path beneath this node, leaf first, then the node. Always true.
    bool EnsureDisconnected();

    // Disconnects what is beneath this node and leaves the node as it is. Always true.
    bool EnsureChildDisconnected();

    // Makes `child`, which may be null, the one that this node's path leads to, and connects this node.
    bool EnsureChainIsConnected(CVxConnectable* child);

    // This node alone, without parents, children and error bits.
    bool Connect();
    void Disconnect();

    bool IsConnected() const noexcept { return m_connectState > 0; }

    // Bits of TVxErrors. They stay until somebody has processed them; a successful connect clears VxErrorConnect.
    bool HasErrors(std::int64_t mask) const noexcept { return (m_errors & mask) != 0; }
    std::int64_t getVxErrors() const noexcept { return m_errors; }
    void OnErrorsProcessed() noexcept { m_errors = 0; }

    // Why the node could not be opened the last time; 0 when it could.
    HRESULT GetLastConnectError() const noexcept { return m_lastConnectError; }

protected:
    void RegisteError(std::int64_t bits);
    void ClearError(std::int64_t bits);

    // The child that is connected, or was last asked to be; null for none.
    CVxConnectable* ActiveChild() const noexcept { return m_activeChild; }

    HRESULT m_lastConnectError = 0;
    std::recursive_mutex m_lock;

private:
    CVxConnectable* const m_parent;  // not owned
    std::int64_t m_errors = 0;
    LONG m_connectState = 0;                  // 0 disconnected, 1 connected
    CVxConnectable* m_activeChild = nullptr;  // not owned; a child that ends takes itself out
};
