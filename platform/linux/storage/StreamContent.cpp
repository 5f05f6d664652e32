#include "platform/linux/storage/StreamContent.h"

#include <algorithm>
#include <array>

namespace vx_storage {

StreamContent::StreamContent(std::shared_ptr<CompoundReader> file, std::uint32_t startSector,
                             std::uint64_t size) noexcept
    : m_size(size),
      m_file(std::move(file)),
      m_fileSize(size),
      m_fileLimit(size),
      m_startSector(startSector),
      m_kind(size < kMiniStreamCutoff ? ChainKind::Mini : ChainKind::Regular) {}

HRESULT StreamContent::Read(std::uint64_t offset, std::span<std::byte> out, std::size_t& got) const {
    got = 0;
    const std::uint64_t left = offset < m_size ? m_size - offset : 0;
    const std::span<std::byte> wanted = out.first(static_cast<std::size_t>(std::min<std::uint64_t>(left, out.size())));
    while (got < wanted.size()) {
        const std::uint64_t at = offset + got;
        const std::uint64_t block = at / kBlockBytes;
        const auto within = static_cast<std::size_t>(at % kBlockBytes);
        std::span<std::byte> part = wanted.subspan(got);
        if (HasBlock(block)) {
            part = part.first(std::min(part.size(), kBlockBytes - within));
            if (const HRESULT hr = m_blocks[static_cast<std::size_t>(block)]->Read(within, part); FAILED(hr)) {
                return hr;
            }
            got += part.size();
            continue;
        }
        // As many blocks at once as were not written.
        std::size_t count = kBlockBytes - within;
        while (count < part.size() && !HasBlock((at + count) / kBlockBytes)) {
            count += kBlockBytes;
        }
        part = part.first(std::min(part.size(), count));
        std::size_t read = 0;
        const HRESULT hr = ReadFile(at, part, read);
        got += read;
        if (FAILED(hr)) {
            return hr;
        }
    }
    return S_OK;
}

// Reads what nothing was written over: the file's bytes up to their limit, then zeros.
HRESULT StreamContent::ReadFile(std::uint64_t offset, std::span<std::byte> out, std::size_t& got) const {
    got = 0;
    const std::uint64_t left = offset < m_fileLimit ? m_fileLimit - offset : 0;
    const auto there = static_cast<std::size_t>(std::min<std::uint64_t>(left, out.size()));
    if (there > 0) {
        if (m_chain == nullptr) {
            m_chain = std::make_shared<SectorChain>(m_startSector, m_file->SectorsFor(m_kind, m_fileSize));
        }
        if (const HRESULT hr = m_file->ReadChain(*m_chain, m_kind, offset, out.first(there), got); FAILED(hr)) {
            return hr;
        }
    }
    std::ranges::fill(out.subspan(there), std::byte{0});
    got = out.size();
    return S_OK;
}

HRESULT StreamContent::Write(std::uint64_t offset, std::span<const std::byte> in,
                             const std::shared_ptr<PendingData>& pending, std::size_t& done) {
    done = 0;
    if (offset > kMaxImageBytes || in.size() > kMaxImageBytes - offset) {
        return STG_E_DOCFILETOOLARGE;
    }
    while (done < in.size()) {
        const std::uint64_t at = offset + done;
        const auto block = static_cast<std::size_t>(at / kBlockBytes);
        const auto within = static_cast<std::size_t>(at % kBlockBytes);
        const std::size_t count = std::min(in.size() - done, kBlockBytes - within);
        if (const HRESULT hr = OwnBlock(block, count < kBlockBytes, pending); FAILED(hr)) {
            return hr;
        }
        if (const HRESULT hr = m_blocks[block]->Write(within, in.subspan(done, count)); FAILED(hr)) {
            return hr;
        }
        done += count;
        m_size = std::max(m_size, at + count);
    }
    return S_OK;
}

// Makes sure that block `index` is there and nobody else's, with the bytes that the stream has there unless all of them
// are about to be written.
HRESULT StreamContent::OwnBlock(std::size_t index, bool keepContents, const std::shared_ptr<PendingData>& pending) {
    if (HasBlock(index) && m_blocks[index].use_count() == 1) {
        return S_OK;
    }
    auto block = std::make_shared<PendingBlock>(pending);
    const std::uint64_t start = std::uint64_t{index} * kBlockBytes;
    const std::uint64_t holds = HasBlock(index)       ? m_blocks[index]->Used()
                                : start < m_fileLimit ? std::min(m_fileLimit - start, std::uint64_t{kBlockBytes})
                                                      : 0;
    if (keepContents && holds > 0) {
        std::vector<std::byte> bytes(static_cast<std::size_t>(holds));
        std::size_t got = 0;
        if (const HRESULT hr = Read(start, bytes, got); FAILED(hr)) {
            return hr;
        }
        if (const HRESULT hr = block->Write(0, std::span(bytes).first(got)); FAILED(hr)) {
            return hr;
        }
    }
    if (index >= m_blocks.size()) {
        m_blocks.resize(index + 1);
    }
    m_blocks[index] = std::move(block);
    return S_OK;
}

HRESULT StreamContent::SetSize(std::uint64_t size, const std::shared_ptr<PendingData>& pending) {
    if (size > kMaxImageBytes) {
        return STG_E_DOCFILETOOLARGE;
    }
    if (size < m_size) {
        // What is cut off must not come back when the stream grows again.
        const auto blocks = static_cast<std::size_t>((size + kBlockBytes - 1) / kBlockBytes);
        if (blocks > 0 && HasBlock(blocks - 1)) {
            if (const HRESULT hr = OwnBlock(blocks - 1, true, pending); FAILED(hr)) {
                return hr;
            }
            m_blocks[blocks - 1]->Truncate(static_cast<std::size_t>(size - std::uint64_t{blocks - 1} * kBlockBytes));
        }
        m_blocks.resize(std::min(m_blocks.size(), blocks));
        m_fileLimit = std::min(m_fileLimit, size);
    }
    m_size = size;
    return S_OK;
}

}  // namespace vx_storage
