// Pages and decoded blocks kept in memory, the least recently used ones dropped first. One thread at a time.
#pragma once

#include "localmapi/base/Bytes.h"

#include <cstddef>
#include <cstdint>
#include <list>
#include <memory>
#include <unordered_map>

namespace localmapi::pst {

// A page as it is stored, or a block's data, and what is known of it.
struct Buffer {
    Bytes bytes;

    bool crcFits = true;

    // Of b-tree pages: what their tail says, checked.
    unsigned entryCount = 0;
    unsigned entrySize = 0;
    unsigned level = 0;          // 0: a leaf
    std::uint64_t askedFor = 0;  // the id by which its parent names it
    bool idFits = true;          // and it carries that id
};

// Whoever holds one keeps it alive; the cache forgets it on its own account only.
using BufferHold = std::shared_ptr<const Buffer>;

class BufferCache {
public:
    // `capacity` bytes at most are kept, bookkeeping included. A buffer larger than that is not kept at all.
    explicit BufferCache(std::size_t capacity) noexcept : m_capacity(capacity) {}

    // Null when there is none.
    BufferHold Find(std::uint64_t key);

    // Replaces what was kept under `key`.
    void Keep(std::uint64_t key, BufferHold buffer);

    void Clear();

    // Bytes kept now, never above the capacity.
    std::size_t Size() const noexcept { return m_size; }

private:
    struct Entry {
        std::uint64_t key;
        BufferHold buffer;
    };

    static std::size_t CostOf(const Buffer& buffer) noexcept;
    void Drop(std::list<Entry>::iterator entry);

    std::size_t m_capacity;
    std::size_t m_size = 0;
    std::list<Entry> m_entries;  // the most recently used first
    std::unordered_map<std::uint64_t, std::list<Entry>::iterator> m_byKey;
};

}  // namespace localmapi::pst
