// The blocks that MAPI hands out and takes back: root blocks and blocks that go with a root. And the places that values
// are put into: such blocks, or memory that lives no longer than a call. Any thread; one root at a time by one thread.
#pragma once

#include "mapi/MapiTypes.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <vector>

namespace localmapi {

// A root block of `size` bytes, aligned for every type, not initialised; null when memory is out. A size of 0 is a block
// too.
void* AllocateRoot(std::size_t size) noexcept;

// Whether a block is a living root, as far as that can be told: each block has a mark in front of it, so sixteen bytes
// before the address are read where it is aligned as blocks are. False for null.
bool IsRoot(const void* block) noexcept;

// A block that is freed with `root`; null for what is no root, and when memory is out.
void* AllocateWith(void* root, std::size_t size) noexcept;

// Frees a root with all that goes with it. Null does nothing. False for what is no root, which is left alone.
bool FreeRoot(void* root) noexcept;

// Root blocks that live in this process.
std::int64_t LiveBuffers() noexcept;

struct FreeRootBlock {
    void operator()(void* root) const noexcept { FreeRoot(root); }
};

// A root block as long as it is not handed out.
template <class T>
using MapiPointer = std::unique_ptr<T, FreeRootBlock>;

// Where values put what they point at. Throws std::bad_alloc when memory is out.
class ValueMemory {
public:
    // What all of it is aligned to, and no type that a value points at needs more.
    static constexpr std::size_t kAlignment = 8;

    virtual ~ValueMemory() = default;

    // Never null, for a size of 0 either.
    virtual void* Allocate(std::size_t size) = 0;

    template <class T>
    T* Array(std::size_t count) {
        static_assert(alignof(T) <= kAlignment);
        if (count > SIZE_MAX / sizeof(T)) {
            throw std::bad_alloc();
        }
        return static_cast<T*>(Allocate(count * sizeof(T)));
    }
};

// Blocks that go with a root.
class RootMemory final : public ValueMemory {
public:
    explicit RootMemory(void* root) noexcept : m_root(root) {}

    void* Allocate(std::size_t size) override;

private:
    void* m_root;
};

// One block, given out from its beginning. The block is aligned to kAlignment and outlives the values; each size is
// rounded up to kAlignment. Throws std::bad_alloc when the block is full.
class BlockMemory final : public ValueMemory {
public:
    BlockMemory(void* block, std::size_t size) noexcept : m_next(static_cast<std::byte*>(block)), m_room(size) {}

    void* Allocate(std::size_t size) override;

private:
    std::byte* m_next;
    std::size_t m_room;
};

// Memory that all goes with the arena: for the values of one call. Not for several threads.
class Arena final : public ValueMemory {
public:
    Arena() = default;
    Arena(const Arena&) = delete;
    Arena& operator=(const Arena&) = delete;

    void* Allocate(std::size_t size) override;

    // Forgets every value and keeps one chunk for the next.
    void Clear() noexcept;

private:
    using Chunk = std::unique_ptr<std::byte[]>;

    static constexpr std::size_t kChunk = 4096;
    static constexpr std::size_t kLarge = kChunk / 4;  // from here on a value has a chunk of its own

    std::vector<Chunk> m_chunks;  // of kChunk bytes
    std::vector<Chunk> m_large;
    std::size_t m_room = 0;  // at the end of the last of m_chunks
};

// A root of `size` bytes, for a structure with an array behind it, like SRowSet. Throws std::bad_alloc.
template <class T>
MapiPointer<T> MakeRoot(std::size_t size) {
    void* root = AllocateRoot(size);
    if (root == nullptr) {
        throw std::bad_alloc();
    }
    return MapiPointer<T>(static_cast<T*>(root));
}

}  // namespace localmapi
