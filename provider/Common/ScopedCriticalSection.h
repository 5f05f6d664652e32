// Holds a recursive lock, if there is one, to the end of a scope.
#pragma once

#include <mutex>
#include <utility>

class ScopedCriticalSection {
public:
    // Takes the lock unless it is null; the lock outlives this object.
    explicit ScopedCriticalSection(std::recursive_mutex* lock) : m_lock(lock) {
        if (m_lock != nullptr) {
            m_lock->lock();
        }
    }
    ScopedCriticalSection(const ScopedCriticalSection&) = delete;
    ScopedCriticalSection& operator=(const ScopedCriticalSection&) = delete;
    ~ScopedCriticalSection() { leave(); }

    // Lets the lock go before the scope ends; a second call does nothing.
    void leave() noexcept {
        if (std::recursive_mutex* held = std::exchange(m_lock, nullptr)) {
            held->unlock();
        }
    }

private:
    std::recursive_mutex* m_lock;  // not owned; null when not held
};
