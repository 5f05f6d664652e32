#include "platform/GlobalMemory.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>

namespace {

// The handle of a fixed block is the address of its bytes, a multiple of 16 as malloc gives it; that of a movable one
// is the address of its MovableBlock plus 8. So a handle shows which of the two it is.
constexpr std::uintptr_t kMovableTag = 8;

struct MovableBlock {
    void* bytes = nullptr;
    SIZE_T size = 0;
    std::uint32_t locks = 0;
};

// Stands before the bytes of a fixed block.
struct alignas(std::max_align_t) FixedHeader {
    SIZE_T size;
};
static_assert(sizeof(FixedHeader) % 16 == 0);

constexpr SIZE_T kMaxBytes = std::numeric_limits<SIZE_T>::max() / 2;

bool IsMovable(HGLOBAL handle) noexcept {
    return (reinterpret_cast<std::uintptr_t>(handle) & kMovableTag) != 0;
}
MovableBlock& Movable(HGLOBAL handle) noexcept {
    return *reinterpret_cast<MovableBlock*>(static_cast<std::byte*>(handle) - kMovableTag);
}
FixedHeader& Fixed(HGLOBAL handle) noexcept {
    return static_cast<FixedHeader*>(handle)[-1];
}

// realloc with the added bytes cleared on request.
void* Resize(void* bytes, SIZE_T before, SIZE_T after, bool clear) noexcept {
    void* const moved = std::realloc(bytes, after);
    if (moved != nullptr && clear && after > before) {
        std::memset(static_cast<std::byte*>(moved) + before, 0, after - before);
    }
    return moved;
}

HGLOBAL AllocateFixed(SIZE_T size, bool clear) noexcept {
    void* const memory = Resize(nullptr, 0, sizeof(FixedHeader) + size, clear);
    if (memory == nullptr) {
        return nullptr;
    }
    return ::new (memory) FixedHeader{size} + 1;
}

HGLOBAL AllocateMovable(SIZE_T size, bool clear) noexcept {
    void* const memory = std::malloc(sizeof(MovableBlock));
    void* const bytes = size == 0 ? nullptr : Resize(nullptr, 0, size, clear);
    if (memory == nullptr || (size != 0 && bytes == nullptr)) {
        std::free(memory);
        std::free(bytes);
        return nullptr;
    }
    ::new (memory) MovableBlock{bytes, size, 0};
    return static_cast<std::byte*>(memory) + kMovableTag;
}

HGLOBAL ResizeMovable(HGLOBAL handle, SIZE_T size, UINT flags) noexcept {
    MovableBlock& block = Movable(handle);
    if (block.locks != 0 && (flags & GMEM_MOVEABLE) == 0) {
        if (size > block.size) {
            return nullptr;
        }
        block.size = size;  // in place
        return handle;
    }
    if (size == 0) {
        std::free(block.bytes);
        block = {nullptr, 0, block.locks};
        return handle;
    }
    void* const bytes = Resize(block.bytes, block.size, size, (flags & GMEM_ZEROINIT) != 0);
    if (bytes == nullptr) {
        return nullptr;
    }
    block.bytes = bytes;
    block.size = size;
    return handle;
}

HGLOBAL ResizeFixed(HGLOBAL handle, SIZE_T size, UINT flags) noexcept {
    FixedHeader& header = Fixed(handle);
    if ((flags & GMEM_MOVEABLE) == 0) {
        if (size > header.size) {
            return nullptr;
        }
        header.size = size;
        return handle;
    }
    void* const memory =
        Resize(&header, sizeof(FixedHeader) + header.size, sizeof(FixedHeader) + size, (flags & GMEM_ZEROINIT) != 0);
    return memory == nullptr ? nullptr : ::new (memory) FixedHeader{size} + 1;
}

}  // namespace

HGLOBAL GlobalAlloc(UINT uFlags, SIZE_T dwBytes) noexcept {
    if (dwBytes > kMaxBytes) {
        return nullptr;
    }
    const bool clear = (uFlags & GMEM_ZEROINIT) != 0;
    return (uFlags & GMEM_MOVEABLE) != 0 ? AllocateMovable(dwBytes, clear) : AllocateFixed(dwBytes, clear);
}

HGLOBAL GlobalReAlloc(HGLOBAL hMem, SIZE_T dwBytes, UINT uFlags) noexcept {
    if (hMem == nullptr || dwBytes > kMaxBytes) {
        return nullptr;
    }
    if ((uFlags & GMEM_MODIFY) != 0) {
        return hMem;
    }
    return IsMovable(hMem) ? ResizeMovable(hMem, dwBytes, uFlags) : ResizeFixed(hMem, dwBytes, uFlags);
}

LPVOID GlobalLock(HGLOBAL hMem) noexcept {
    if (hMem == nullptr || !IsMovable(hMem)) {
        return hMem;
    }
    MovableBlock& block = Movable(hMem);
    if (block.bytes != nullptr) {
        ++block.locks;
    }
    return block.bytes;
}

BOOL GlobalUnlock(HGLOBAL hMem) noexcept {
    if (hMem == nullptr) {
        return FALSE;
    }
    if (!IsMovable(hMem)) {
        return TRUE;
    }
    MovableBlock& block = Movable(hMem);
    block.locks -= std::min<std::uint32_t>(block.locks, 1);
    return block.locks != 0 ? TRUE : FALSE;
}

SIZE_T GlobalSize(HGLOBAL hMem) noexcept {
    if (hMem == nullptr) {
        return 0;
    }
    return IsMovable(hMem) ? Movable(hMem).size : Fixed(hMem).size;
}

HGLOBAL GlobalFree(HGLOBAL hMem) noexcept {
    if (hMem == nullptr) {
        return nullptr;
    }
    if (IsMovable(hMem)) {
        std::free(Movable(hMem).bytes);
        std::free(&Movable(hMem));
    } else {
        std::free(&Fixed(hMem));
    }
    return nullptr;
}
