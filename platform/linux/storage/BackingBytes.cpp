#include "platform/linux/storage/BackingBytes.h"

#include "platform/linux/storage/FileBytes.h"
#include "platform/linux/storage/Limits.h"

#include <algorithm>
#include <cstring>

namespace vx_storage {

HRESULT MemoryBytes::ReadAt(std::uint64_t offset, std::span<std::byte> out, std::size_t& got) {
    got = 0;
    if (offset < m_bytes.size()) {
        got = std::min(out.size(), m_bytes.size() - static_cast<std::size_t>(offset));
        std::memcpy(out.data(), m_bytes.data() + offset, got);
    }
    return S_OK;
}

HRESULT MemoryBytes::WriteAt(std::uint64_t offset, std::span<const std::byte> in) {
    if (offset > kMaxImageBytes || in.size() > kMaxImageBytes - offset) {
        return STG_E_DOCFILETOOLARGE;
    }
    if (offset + in.size() > m_bytes.size()) {
        m_bytes.resize(static_cast<std::size_t>(offset) + in.size());
    }
    std::ranges::copy(in, m_bytes.begin() + static_cast<std::ptrdiff_t>(offset));
    return S_OK;
}

HRESULT MemoryBytes::SetSize(std::uint64_t size) {
    if (size > kMaxImageBytes) {
        return STG_E_DOCFILETOOLARGE;
    }
    m_bytes.resize(static_cast<std::size_t>(size));
    return S_OK;
}

HRESULT MemoryBytes::GetSize(std::uint64_t& size) {
    size = m_bytes.size();
    return S_OK;
}

HRESULT MemoryBytes::Flush(Durability) {
    return S_OK;
}

void MemoryBytes::Close() noexcept {
    m_bytes = {};
}

HRESULT CopyBytes(BackingBytes& from, BackingBytes& to) {
    std::vector<std::byte> buffer(kBlockBytes);
    std::uint64_t offset = 0;
    for (;;) {
        std::size_t got = 0;
        if (const HRESULT hr = from.ReadAt(offset, buffer, got); FAILED(hr)) {
            return hr;
        }
        if (got == 0) {
            return to.SetSize(offset);
        }
        if (const HRESULT hr = to.WriteAt(offset, std::span(buffer).first(got)); FAILED(hr)) {
            return hr;
        }
        offset += got;
    }
}

HRESULT MakeUnnamedBytes(std::uint64_t expectedSize, std::shared_ptr<BackingBytes>& bytes) {
    if (expectedSize <= kPendingMemoryBytes) {
        bytes = std::make_shared<MemoryBytes>();
        return S_OK;
    }
    std::shared_ptr<FileBytes> file;
    const HRESULT hr = FileBytes::MakeUnnamed(file);
    bytes = std::move(file);
    return hr;
}

}  // namespace vx_storage
