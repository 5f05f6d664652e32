#include "localmapi/props/MapiMemory.h"

#include "localmapi/base/Bytes.h"

#include <atomic>
#include <cstdlib>

namespace localmapi {

namespace {

// In front of every block. The mark depends on where the block is, so that a copy of a block is none.
struct alignas(std::max_align_t) Header {
    std::uint64_t mark;
    Header* next;  // of a root the first block that goes with it, of such a block the one after it
};
static_assert(sizeof(Header) == 16);

constexpr std::uint64_t kRootMark = 0x4D415049524F4F54;
constexpr std::uint64_t kMoreMark = 0x4D4150494D4F5245;

std::atomic<std::int64_t> g_roots{0};

std::uint64_t MarkAt(const Header* header, std::uint64_t mark) noexcept {
    return mark ^ reinterpret_cast<std::uintptr_t>(header);
}

Header* Allocate(std::size_t size, std::uint64_t mark) noexcept {
    if (size > PTRDIFF_MAX - sizeof(Header)) {
        return nullptr;
    }
    auto* header = static_cast<Header*>(std::malloc(sizeof(Header) + size));
    if (header != nullptr) {
        *header = {MarkAt(header, mark), nullptr};
    }
    return header;
}

// Takes the mark away first: a second free of the same block then mostly finds none.
void Free(Header* header) noexcept {
    *const_cast<volatile std::uint64_t*>(&header->mark) = 0;  // a plain store ahead of free() is optimised away
    std::free(header);
}

// The header of a root; null for what is none.
Header* HeaderOf(void* root) noexcept {
    if (root == nullptr || reinterpret_cast<std::uintptr_t>(root) % alignof(Header) != 0) {
        return nullptr;
    }
    Header* const header = static_cast<Header*>(root) - 1;
    return header->mark == MarkAt(header, kRootMark) ? header : nullptr;
}

}  // namespace

void* AllocateRoot(std::size_t size) noexcept {
    Header* const header = Allocate(size, kRootMark);
    if (header == nullptr) {
        return nullptr;
    }
    g_roots.fetch_add(1, std::memory_order_relaxed);
    return header + 1;
}

bool IsRoot(const void* block) noexcept {
    return HeaderOf(const_cast<void*>(block)) != nullptr;
}

void* AllocateWith(void* root, std::size_t size) noexcept {
    Header* const owner = HeaderOf(root);
    Header* const header = owner == nullptr ? nullptr : Allocate(size, kMoreMark);
    if (header == nullptr) {
        return nullptr;
    }
    header->next = owner->next;
    owner->next = header;
    return header + 1;
}

bool FreeRoot(void* root) noexcept {
    if (root == nullptr) {
        return true;
    }
    Header* const header = HeaderOf(root);
    if (header == nullptr) {
        return false;
    }
    for (Header* more = header->next; more != nullptr;) {
        Header* const next = more->next;
        Free(more);
        more = next;
    }
    Free(header);
    g_roots.fetch_sub(1, std::memory_order_relaxed);
    return true;
}

std::int64_t LiveBuffers() noexcept {
    return g_roots.load(std::memory_order_relaxed);
}

void* RootMemory::Allocate(std::size_t size) {
    void* const block = AllocateWith(m_root, size);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    return block;
}

void* BlockMemory::Allocate(std::size_t size) {
    if (size > m_room || RoundUp(size, kAlignment) > m_room) {
        throw std::bad_alloc();
    }
    const auto taken = static_cast<std::size_t>(RoundUp(size, kAlignment));
    m_room -= taken;
    m_next += taken;
    return m_next - taken;
}

void* Arena::Allocate(std::size_t size) {
    if (size >= kLarge) {
        return m_large.emplace_back(std::make_unique_for_overwrite<std::byte[]>(size)).get();
    }
    const auto taken = static_cast<std::size_t>(RoundUp(size, kAlignment));
    if (m_chunks.empty() || taken > m_room) {
        m_chunks.push_back(std::make_unique_for_overwrite<std::byte[]>(kChunk));
        m_room = kChunk;
    }
    std::byte* const block = m_chunks.back().get() + (kChunk - m_room);
    m_room -= taken;
    return block;
}

void Arena::Clear() noexcept {
    m_large.clear();
    if (m_chunks.size() > 1) {
        m_chunks.erase(m_chunks.begin() + 1, m_chunks.end());
    }
    m_room = m_chunks.empty() ? 0 : kChunk;
}

}  // namespace localmapi
