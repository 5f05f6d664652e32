#include "tests/provider/Common/AllocationCounter.h"

#include <cstdlib>
#include <new>

namespace {

constexpr std::size_t kUnlimited = static_cast<std::size_t>(-1);

thread_local std::size_t allocations = 0;
thread_local std::size_t granted = kUnlimited;
thread_local bool refused = false;

}  // namespace

std::size_t AllocationsOfThisThread() noexcept {
    return allocations;
}

LimitedHeap::LimitedHeap(std::size_t blocks) noexcept {
    granted = blocks;
    refused = false;
}

LimitedHeap::~LimitedHeap() {
    granted = kUnlimited;
}

bool LimitedHeap::Failed() const noexcept {
    return refused;
}

// The array and the nothrow forms come here too.
void* operator new(std::size_t size) {
    ++allocations;
    if (granted == 0) {
        refused = true;
        throw std::bad_alloc();
    }
    granted -= granted == kUnlimited ? 0 : 1;
    if (void* block = std::malloc(size == 0 ? 1 : size)) {
        return block;
    }
    throw std::bad_alloc();
}

void operator delete(void* block) noexcept {
    std::free(block);
}

void operator delete(void* block, std::size_t) noexcept {
    std::free(block);
}
