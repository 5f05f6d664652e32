#include "platform/linux/storage/SectorCache.h"

#include <algorithm>
#include <cstring>

namespace vx_storage {

HRESULT SectorCache::ReadAt(std::uint64_t offset, std::span<std::byte> out, std::size_t& got) {
    got = 0;
    if (out.size() >= kCacheLineBytes) {
        return m_bytes->ReadAt(offset, out, got);
    }
    while (got < out.size()) {
        const std::uint64_t at = offset + got;
        const Line* line = nullptr;
        if (const HRESULT hr = FindLine(at / kCacheLineBytes, line); FAILED(hr)) {
            return hr;
        }
        const auto within = static_cast<std::size_t>(at % kCacheLineBytes);
        if (within >= line->valid) {
            break;
        }
        const std::size_t count = std::min(out.size() - got, line->valid - within);
        std::memcpy(out.data() + got, line->bytes.data() + within, count);
        got += count;
    }
    return S_OK;
}

HRESULT SectorCache::FindLine(std::uint64_t number, const Line*& line) {
    const auto* const found = std::ranges::find(m_lineNumbers, number);
    if (found != m_lineNumbers.end()) {
        Line& known = m_lines[static_cast<std::size_t>(found - m_lineNumbers.begin())];
        known.lastUse = ++m_uses;
        line = &known;
        return S_OK;
    }
    Line& oldest = *std::ranges::min_element(m_lines, {}, &Line::lastUse);  // one never used comes first
    std::uint64_t& oldestNumber = m_lineNumbers[static_cast<std::size_t>(&oldest - m_lines.data())];
    oldestNumber = kNoLine;
    oldest.bytes.resize(kCacheLineBytes);
    const HRESULT hr = m_bytes->ReadAt(number * kCacheLineBytes, oldest.bytes, oldest.valid);
    if (SUCCEEDED(hr)) {
        oldestNumber = number;
        oldest.lastUse = ++m_uses;
        line = &oldest;
    }
    return hr;
}

}  // namespace vx_storage
