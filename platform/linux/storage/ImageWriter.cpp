#include "platform/linux/storage/ImageWriter.h"

#include "platform/linux/storage/Limits.h"

#include <algorithm>
#include <array>
#include <span>
#include <vector>

namespace vx_storage {
namespace {

// Collects what is appended and writes it in large pieces.
class Appender {
public:
    explicit Appender(BackingBytes& target) : m_target(target) { m_buffer.reserve(kBufferBytes); }

    HRESULT Append(std::span<const std::byte> bytes) {
        while (!bytes.empty()) {
            const std::span<const std::byte> part = bytes.first(std::min(bytes.size(), kBufferBytes - m_buffer.size()));
            m_buffer.insert(m_buffer.end(), part.begin(), part.end());
            bytes = bytes.subspan(part.size());
            if (m_buffer.size() == kBufferBytes) {
                if (const HRESULT hr = Flush(); FAILED(hr)) {
                    return hr;
                }
            }
        }
        return S_OK;
    }

    HRESULT AppendSlot(std::uint32_t slot) {
        std::array<std::byte, sizeof slot> bytes = {};
        StoreU32(bytes.data(), slot);
        return Append(bytes);
    }

    // The rest of the unit, of `unit` bytes, that was begun: filled with `filler`.
    HRESULT PadTo(std::size_t unit, std::byte filler) {
        static_assert(kBufferBytes % kImageSectorBytes == 0);
        const std::size_t over = m_buffer.size() % unit;
        const std::vector<std::byte> padding(over == 0 ? 0 : unit - over, filler);
        return Append(padding);
    }

    HRESULT Flush() {
        const HRESULT hr = m_target.WriteAt(m_written, m_buffer);
        m_written += m_buffer.size();
        m_buffer.clear();
        return hr;
    }

private:
    static constexpr std::size_t kBufferBytes = 4 * kBlockBytes;

    BackingBytes& m_target;
    std::vector<std::byte> m_buffer;
    std::uint64_t m_written = 0;
};

class ImageWriter {
public:
    ImageWriter(const ImageLayout& layout, BackingBytes& target) : m_layout(layout), m_out(target) {}

    HRESULT Run() {
        for (HRESULT (ImageWriter::*const step)() :
             {&ImageWriter::WriteHeader, &ImageWriter::WriteStreams, &ImageWriter::WriteMiniStream,
              &ImageWriter::WriteMiniFat, &ImageWriter::WriteDirectory, &ImageWriter::WriteFat,
              &ImageWriter::WriteDifat}) {
            if (const HRESULT hr = (this->*step)(); FAILED(hr)) {
                return hr;
            }
        }
        return m_out.Flush();
    }

private:
    HRESULT WriteHeader() {
        CompoundHeader header;
        header.fatSectors = m_layout.fat.count;
        header.firstDirectorySector = m_layout.directory.start;
        header.firstMiniFatSector = m_layout.miniFat.start;
        header.miniFatSectors = m_layout.miniFat.count;
        header.firstDifatSector = m_layout.difat.start;
        header.difatSectors = m_layout.difat.count;
        for (std::uint32_t i = 0; i < std::min<std::size_t>(m_layout.fat.count, kHeaderDifatSlots); ++i) {
            header.difat[i] = m_layout.fat.start + i;
        }
        std::array<std::byte, kHeaderBytes> bytes = {};
        StoreHeader(header, bytes);
        return m_out.Append(bytes);
    }

    HRESULT WriteStreams() { return WriteContents(m_layout.regular, kImageSectorBytes); }

    HRESULT WriteMiniStream() {
        const HRESULT hr = WriteContents(m_layout.mini, kMiniSectorBytes);
        return FAILED(hr) ? hr : m_out.PadTo(kImageSectorBytes, std::byte{0});
    }

    HRESULT WriteContents(const std::vector<std::uint32_t>& ids, std::size_t unit) {
        for (const std::uint32_t id : ids) {
            if (const HRESULT hr = WriteContent(m_layout.nodes[id]->content); FAILED(hr)) {
                return hr;
            }
            if (const HRESULT hr = m_out.PadTo(unit, std::byte{0}); FAILED(hr)) {
                return hr;
            }
        }
        return S_OK;
    }

    HRESULT WriteContent(const StreamContent& content) {
        for (std::uint64_t offset = 0; offset < content.Size();) {
            std::size_t got = 0;
            if (const HRESULT hr = content.Read(offset, m_block, got); FAILED(hr)) {
                return hr;
            }
            if (const HRESULT hr = m_out.Append(std::span(m_block).first(got)); FAILED(hr)) {
                return hr;
            }
            offset += got;
        }
        return S_OK;
    }

    // The slots of a chain without gaps: each says the next, the last one that the chain ends.
    HRESULT WriteChain(std::uint32_t start, std::uint32_t count) {
        for (std::uint32_t i = 0; i < count; ++i) {
            if (const HRESULT hr = m_out.AppendSlot(i + 1 < count ? start + i + 1 : kEndOfChain); FAILED(hr)) {
                return hr;
            }
        }
        return S_OK;
    }

    HRESULT WriteMarks(std::uint32_t count, std::uint32_t mark) {
        for (std::uint32_t i = 0; i < count; ++i) {
            if (const HRESULT hr = m_out.AppendSlot(mark); FAILED(hr)) {
                return hr;
            }
        }
        return S_OK;
    }

    HRESULT WriteStreamChains(const std::vector<std::uint32_t>& ids, std::uint64_t unit) {
        for (const std::uint32_t id : ids) {
            const DirectoryEntry& entry = m_layout.entries[id];
            const auto count = static_cast<std::uint32_t>((entry.size + unit - 1) / unit);
            if (const HRESULT hr = WriteChain(entry.startSector, count); FAILED(hr)) {
                return hr;
            }
        }
        return S_OK;
    }

    HRESULT WriteMiniFat() {
        const HRESULT hr = WriteStreamChains(m_layout.mini, kMiniSectorBytes);
        return FAILED(hr) ? hr : m_out.PadTo(kImageSectorBytes, std::byte{0xFF});
    }

    HRESULT WriteDirectory() {
        std::array<std::byte, kEntryBytes> bytes = {};
        const std::size_t perSector = kImageSectorBytes / kEntryBytes;
        const DirectoryEntry filler;
        for (std::size_t i = 0; i < std::size_t{m_layout.directory.count} * perSector; ++i) {
            StoreEntry(i < m_layout.entries.size() ? m_layout.entries[i] : filler, bytes);
            if (const HRESULT hr = m_out.Append(bytes); FAILED(hr)) {
                return hr;
            }
        }
        return S_OK;
    }

    // The slots in the order of the sectors that they speak of.
    HRESULT WriteFat() {
        if (const HRESULT hr = WriteStreamChains(m_layout.regular, kImageSectorBytes); FAILED(hr)) {
            return hr;
        }
        for (const Extent& extent : {m_layout.miniStream, m_layout.miniFat, m_layout.directory}) {
            if (const HRESULT hr = WriteChain(extent.start, extent.count); FAILED(hr)) {
                return hr;
            }
        }
        if (const HRESULT hr = WriteMarks(m_layout.fat.count, kFatSector); FAILED(hr)) {
            return hr;
        }
        const HRESULT hr = WriteMarks(m_layout.difat.count, kDifatSector);
        return FAILED(hr) ? hr : m_out.PadTo(kImageSectorBytes, std::byte{0xFF});
    }

    // The numbers of the FAT's sectors beyond those in the header; the last slot of a sector says the next sector.
    HRESULT WriteDifat() {
        std::uint32_t next = kHeaderDifatSlots;
        for (std::uint32_t i = 0; i < m_layout.difat.count; ++i) {
            for (std::size_t slot = 0; slot + 1 < kImageSlotsPerSector; ++slot, ++next) {
                const bool used = next < m_layout.fat.count;
                if (const HRESULT hr = m_out.AppendSlot(used ? m_layout.fat.start + next : kFreeSector); FAILED(hr)) {
                    return hr;
                }
            }
            const bool last = i + 1 == m_layout.difat.count;
            if (const HRESULT hr = m_out.AppendSlot(last ? kEndOfChain : m_layout.difat.start + i + 1); FAILED(hr)) {
                return hr;
            }
        }
        return S_OK;
    }

    const ImageLayout& m_layout;
    Appender m_out;
    std::vector<std::byte> m_block = std::vector<std::byte>(kBlockBytes);
};

}  // namespace

HRESULT WriteImage(const ImageLayout& layout, BackingBytes& target) {
    return ImageWriter(layout, target).Run();
}

}  // namespace vx_storage
