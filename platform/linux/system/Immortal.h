// An object that is made once and never destroyed, for tables that other objects' destructors still use while the
// program ends.
#pragma once

#include <cstddef>
#include <new>

namespace vx_system {

template <typename T>
class Immortal {
public:
    Immortal() { ::new (static_cast<void*>(m_storage)) T(); }
    Immortal(const Immortal&) = delete;
    Immortal& operator=(const Immortal&) = delete;

    T& operator*() noexcept { return *std::launder(reinterpret_cast<T*>(m_storage)); }
    T* operator->() noexcept { return &**this; }

private:
    alignas(T) std::byte m_storage[sizeof(T)];
};

}  // namespace vx_system
