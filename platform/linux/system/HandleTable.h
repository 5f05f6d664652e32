// Handles as numbers that mean something only here: any value may be asked for, and a handle that was closed never
// comes to mean another object. Any thread.
#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <utility>

namespace vx_system {

// A number that no table has given out yet: a multiple of 4, as on Windows, so that no handle of one kind is by chance
// one of another kind.
inline std::uintptr_t NextHandle() noexcept {
    static std::atomic<std::uintptr_t> next = 0x100;
    return next.fetch_add(4, std::memory_order_relaxed);
}

template <typename T>
class HandleTable {
public:
    [[nodiscard]] void* Add(std::shared_ptr<T> object) {
        const std::uintptr_t handle = NextHandle();
        const std::lock_guard lock(m_lock);
        m_objects.emplace(handle, std::move(object));
        return reinterpret_cast<void*>(handle);
    }

    // Null when the handle means nothing. What is given stays alive while the caller holds it.
    [[nodiscard]] std::shared_ptr<T> Find(const void* handle) const {
        const std::lock_guard lock(m_lock);
        const auto found = m_objects.find(reinterpret_cast<std::uintptr_t>(handle));
        return found == m_objects.end() ? nullptr : found->second;
    }

    // As Find, and forgets the handle.
    [[nodiscard]] std::shared_ptr<T> Remove(const void* handle) {
        const std::lock_guard lock(m_lock);
        const auto node = m_objects.extract(reinterpret_cast<std::uintptr_t>(handle));
        return node.empty() ? nullptr : std::move(node.mapped());
    }

    template <typename Visitor>
    void ForEach(Visitor&& visit) {
        const std::lock_guard lock(m_lock);
        for (const auto& [handle, object] : m_objects) {
            visit(*object);
        }
    }

private:
    mutable std::mutex m_lock;
    std::map<std::uintptr_t, std::shared_ptr<T>> m_objects;
};

}  // namespace vx_system
