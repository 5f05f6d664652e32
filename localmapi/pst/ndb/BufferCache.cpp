#include "localmapi/pst/ndb/BufferCache.h"

#include <utility>

namespace localmapi::pst {

namespace {

// The list's and the map's nodes, their share of the map's table, and the shared count, rounded up.
constexpr std::size_t kBookkeeping = 192;

}  // namespace

std::size_t BufferCache::CostOf(const Buffer& buffer) noexcept {
    return buffer.bytes.capacity() + sizeof(Buffer) + kBookkeeping;
}

BufferHold BufferCache::Find(std::uint64_t key) {
    const auto found = m_byKey.find(key);
    if (found == m_byKey.end()) {
        return nullptr;
    }
    m_entries.splice(m_entries.begin(), m_entries, found->second);
    return found->second->buffer;
}

void BufferCache::Keep(std::uint64_t key, BufferHold buffer) {
    if (const auto found = m_byKey.find(key); found != m_byKey.end()) {
        Drop(found->second);
    }
    const std::size_t cost = CostOf(*buffer);
    if (cost > m_capacity) {
        return;
    }
    while (m_size > m_capacity - cost) {
        Drop(std::prev(m_entries.end()));
    }
    m_entries.push_front(Entry{key, std::move(buffer)});
    m_byKey[key] = m_entries.begin();
    m_size += cost;
}

void BufferCache::Clear() {
    m_entries.clear();
    m_byKey.clear();
    m_size = 0;
}

void BufferCache::Drop(std::list<Entry>::iterator entry) {
    m_size -= CostOf(*entry->buffer);
    m_byKey.erase(entry->key);
    m_entries.erase(entry);
}

}  // namespace localmapi::pst
