// Counts what the calling thread takes from the heap through operator new, and makes that fail.
#pragma once

#include <cstddef>

std::size_t AllocationsOfThisThread() noexcept;

// While it lives, the calling thread gets `granted` more blocks; every later request throws std::bad_alloc.
class LimitedHeap {
public:
    explicit LimitedHeap(std::size_t granted) noexcept;
    LimitedHeap(const LimitedHeap&) = delete;
    LimitedHeap& operator=(const LimitedHeap&) = delete;
    ~LimitedHeap();

    // Whether a request has failed so far.
    bool Failed() const noexcept;
};
