#include "platform/linux/storage/PendingData.h"

#include "platform/linux/storage/FileBytes.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace vx_storage {

bool PendingData::TakeMemory(std::size_t bytes) noexcept {
    if (bytes > m_memoryLeft) {
        return false;
    }
    m_memoryLeft -= bytes;
    return true;
}

HRESULT PendingData::TakeSlot(std::uint64_t& offset) {
    if (!m_freeSlots.empty()) {
        offset = m_freeSlots.back();
        m_freeSlots.pop_back();
        return S_OK;
    }
    if (m_scratch == nullptr) {
        std::shared_ptr<FileBytes> file;
        if (const HRESULT hr = FileBytes::MakeUnnamed(file); FAILED(hr)) {
            return hr;
        }
        m_scratch = std::move(file);
    }
    if (m_freeSlots.capacity() <= m_slots) {
        m_freeSlots.reserve(2 * m_slots + 16);
    }
    ++m_slots;
    offset = m_scratchEnd;
    m_scratchEnd += kBlockBytes;
    return S_OK;
}

void PendingData::ReturnSlot(std::uint64_t offset) noexcept {
    m_freeSlots.push_back(offset);
}

PendingBlock::~PendingBlock() {
    if (m_slot != kInMemory) {
        m_pending->ReturnSlot(m_slot);
    }
    m_pending->ReturnMemory(m_memory.size());
}

HRESULT PendingBlock::Read(std::size_t offset, std::span<std::byte> out) const {
    const std::size_t there = offset < m_used ? std::min(out.size(), m_used - offset) : 0;
    std::ranges::fill(out.subspan(there), std::byte{0});
    if (there == 0) {
        return S_OK;
    }
    if (m_slot == kInMemory) {
        std::memcpy(out.data(), m_memory.data() + offset, there);
        return S_OK;
    }
    std::size_t got = 0;
    const HRESULT hr = m_pending->ScratchFile().ReadAt(m_slot + offset, out.first(there), got);
    return SUCCEEDED(hr) && got < there ? STG_E_READFAULT : hr;
}

HRESULT PendingBlock::Write(std::size_t offset, std::span<const std::byte> in) {
    if (const HRESULT hr = MakeRoom(offset + in.size()); FAILED(hr)) {
        return hr;
    }
    static constexpr std::array<std::byte, 4096> kZeros = {};
    while (m_used < offset) {
        const std::size_t count = std::min(kZeros.size(), offset - m_used);
        if (const HRESULT hr = Store(m_used, std::span(kZeros).first(count)); FAILED(hr)) {
            return hr;
        }
        m_used += count;
    }
    const HRESULT hr = Store(offset, in);
    if (SUCCEEDED(hr)) {
        m_used = std::max(m_used, offset + in.size());
    }
    return hr;
}

// Memory grows in powers of two, so that a stream written byte by byte is moved seldom and a small one stays small.
HRESULT PendingBlock::MakeRoom(std::size_t bytes) {
    if (m_slot != kInMemory || bytes <= m_memory.size()) {
        return S_OK;
    }
    std::size_t size = std::max<std::size_t>(m_memory.size(), 64);
    while (size < bytes) {
        size *= 2;
    }
    if (!m_pending->TakeMemory(size - m_memory.size())) {
        return MoveToScratch();
    }
    const std::size_t before = m_memory.size();
    try {
        m_memory.resize(size);
    } catch (...) {
        m_pending->ReturnMemory(size - before);
        throw;
    }
    return S_OK;
}

HRESULT PendingBlock::MoveToScratch() {
    std::uint64_t slot = 0;
    if (const HRESULT hr = m_pending->TakeSlot(slot); FAILED(hr)) {
        return hr;
    }
    if (const HRESULT hr = m_pending->ScratchFile().WriteAt(slot, std::span(m_memory).first(m_used)); FAILED(hr)) {
        m_pending->ReturnSlot(slot);
        return hr;
    }
    m_slot = slot;
    m_pending->ReturnMemory(m_memory.size());
    m_memory = {};
    return S_OK;
}

HRESULT PendingBlock::Store(std::size_t offset, std::span<const std::byte> in) {
    if (m_slot != kInMemory) {
        return m_pending->ScratchFile().WriteAt(m_slot + offset, in);
    }
    std::ranges::copy(in, m_memory.begin() + static_cast<std::ptrdiff_t>(offset));
    return S_OK;
}

}  // namespace vx_storage
