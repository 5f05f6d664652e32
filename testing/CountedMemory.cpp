#include "testing/CountedMemory.h"

#include <cstdlib>
#include <new>

namespace {

std::size_t g_live = 0;
std::size_t g_highest = 0;

// The size of a block stands before it.
constexpr std::size_t kBefore = alignof(std::max_align_t);

void* Allocate(std::size_t size) noexcept {
    auto* block = static_cast<std::byte*>(std::malloc(size + kBefore));
    if (block == nullptr) {
        std::abort();
    }
    *reinterpret_cast<std::size_t*>(block) = size;
    g_live += size;
    g_highest = g_live > g_highest ? g_live : g_highest;
    return block + kBefore;
}

void Free(void* block) noexcept {
    if (block != nullptr) {
        std::byte* begin = static_cast<std::byte*>(block) - kBefore;
        g_live -= *reinterpret_cast<std::size_t*>(begin);
        std::free(begin);
    }
}

}  // namespace

void* operator new(std::size_t size) {
    return Allocate(size);
}
void* operator new[](std::size_t size) {
    return Allocate(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return Allocate(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return Allocate(size);
}
void operator delete(void* block) noexcept {
    Free(block);
}
void operator delete[](void* block) noexcept {
    Free(block);
}
void operator delete(void* block, std::size_t) noexcept {
    Free(block);
}
void operator delete[](void* block, std::size_t) noexcept {
    Free(block);
}

namespace counted_memory {

std::size_t Live() noexcept {
    return g_live;
}

std::size_t Highest() noexcept {
    return g_highest;
}

void ResetHighest() noexcept {
    g_highest = g_live;
}

}  // namespace counted_memory
