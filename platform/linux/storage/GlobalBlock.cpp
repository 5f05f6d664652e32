#include "platform/linux/storage/GlobalBlock.h"

#include "platform/linux/storage/ComObject.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>

namespace vx_storage {

GlobalBlock::GlobalBlock(HGLOBAL handle)
    : m_handle(handle == nullptr ? GlobalAlloc(GHND, 0) : handle), m_freeAtEnd(handle == nullptr) {
    if (m_handle == nullptr) {
        throw std::bad_alloc();
    }
}

GlobalBlock::~GlobalBlock() {
    if (m_freeAtEnd) {
        GlobalFree(m_handle);
    }
}

std::size_t GlobalBlock::Read(std::uint64_t offset, std::span<std::byte> out) const noexcept {
    const std::uint64_t size = Size();
    const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(out.size(), offset < size ? size - offset : 0));
    if (count > 0) {
        std::memcpy(out.data(), static_cast<const std::byte*>(GlobalLock(m_handle)) + offset, count);
        GlobalUnlock(m_handle);
    }
    return count;
}

bool GlobalBlock::Write(std::uint64_t offset, std::span<const std::byte> in) noexcept {
    if (in.empty()) {
        return true;
    }
    if (offset > std::numeric_limits<std::uint64_t>::max() - in.size()) {
        return false;
    }
    if (offset + in.size() > Size() && !SetSize(offset + in.size())) {
        return false;
    }
    std::memcpy(static_cast<std::byte*>(GlobalLock(m_handle)) + offset, in.data(), in.size());
    GlobalUnlock(m_handle);
    return true;
}

bool GlobalBlock::SetSize(std::uint64_t size) noexcept {
    if (size > std::numeric_limits<std::uint32_t>::max()) {
        return false;
    }
    const HGLOBAL resized = GlobalReAlloc(m_handle, static_cast<SIZE_T>(size), GHND);
    if (resized == nullptr) {
        return false;
    }
    m_handle = resized;
    return true;
}

HRESULT HandleUnder(IUnknown* object, HGLOBAL* handle) noexcept {
    if (object == nullptr || handle == nullptr) {
        return E_INVALIDARG;
    }
    *handle = nullptr;
    ComRef<IGlobalBlockOwner> owner;
    if (FAILED(object->QueryInterface(IID_IGlobalBlockOwner, reinterpret_cast<void**>(owner.Put())))) {
        return E_INVALIDARG;
    }
    *handle = owner->BlockHandle();
    return S_OK;
}

}  // namespace vx_storage
