// A global block that grows, under a memory stream or a memory byte array, and how both are known as ours.
#pragma once

#include "platform/GlobalMemory.h"
#include "platform/Unknown.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace vx_storage {

class GlobalBlock {
public:
    // Borrows a block, or allocates an empty one for null.
    explicit GlobalBlock(HGLOBAL handle);
    GlobalBlock(const GlobalBlock&) = delete;
    GlobalBlock& operator=(const GlobalBlock&) = delete;
    ~GlobalBlock();

    // Whether the block is freed with this object. Until it is said, only one that was allocated here is.
    void FreeAtEnd(bool free) noexcept { m_freeAtEnd = free; }

    HGLOBAL Handle() const noexcept { return m_handle; }
    std::uint64_t Size() const noexcept { return GlobalSize(m_handle); }

    // Gives the bytes read: fewer than asked at the end.
    std::size_t Read(std::uint64_t offset, std::span<std::byte> out) const noexcept;
    // Writes all, growing the block, with zeros up to `offset`. False when memory is short.
    bool Write(std::uint64_t offset, std::span<const std::byte> in) noexcept;
    // False when memory is short, and for 4 GiB and more, as on Windows.
    bool SetSize(std::uint64_t size) noexcept;

private:
    HGLOBAL m_handle;
    bool m_freeAtEnd;
};

// Answered by objects that lie on a global block.
struct IGlobalBlockOwner : IUnknown {
    virtual HGLOBAL STDMETHODCALLTYPE BlockHandle() = 0;
};
inline constexpr IID IID_IGlobalBlockOwner = {
    0x5F0C41D7, 0x8E53, 0x4B0A, {0x9D, 0x16, 0x2C, 0x77, 0xE0, 0x4A, 0x91, 0xB3}};

// The handle under such an object; E_INVALIDARG for any other.
HRESULT HandleUnder(IUnknown* object, HGLOBAL* handle) noexcept;

}  // namespace vx_storage
