#include "testing/mailbox_builder/PageStore.h"

#include "testing/mailbox_builder/ByteWriter.h"

#include <algorithm>
#include <bit>
#include <string>
#include <utility>

#include <zlib.h>

namespace mailbox_builder {

namespace {

// A page map stands for eight allocation maps; a free map for as many of them as a page has bytes, and a free page map
// for as many page maps as it has bits. Those of the first 128 and 8192 intervals are in the header.
constexpr std::uint64_t kMapsPerPageMap = 8;
constexpr std::uint64_t kFirstFreeMap = 128;
constexpr std::uint64_t kFirstFreePageMap = 8192;

// The free list: a flag, a count, the page in use; then an entry each of 20 bits of number and 12 of free steps.
constexpr std::size_t kFreeListHeader = 8;
constexpr std::size_t kFreeListBytes = 476;
constexpr std::uint32_t kMostSteps = 0xFFF;

}  // namespace

std::uint32_t Crc(ByteView bytes) noexcept {
    const auto* data = reinterpret_cast<const Bytef*>(bytes.Data());
    return static_cast<std::uint32_t>(crc32_z(0xFFFFFFFFU, data, bytes.Size())) ^ 0xFFFFFFFFU;
}

void PageStore::Take(std::uint64_t at, std::uint64_t size) {
    const std::uint64_t first = (at - m_intervalAt) / m_form.step;
    const std::uint64_t count = (size + m_form.step - 1) / m_form.step;
    for (std::uint64_t bit = first; bit < first + count; ++bit) {
        m_map[static_cast<std::size_t>(bit / 8)] |= static_cast<std::byte>(0x80U >> (bit % 8));
    }
}

Status PageStore::OpenInterval(std::uint64_t number) {
    m_interval = number;
    m_intervalAt = m_form.firstMapAt + number * m_form.Interval();
    m_map.assign(m_form.mapBytes, std::byte{});
    m_size = m_intervalAt;
    const Bytes full(m_form.mapBytes, std::byte{0xFF});
    const auto next = [this] { return std::exchange(m_size, m_size + m_form.pageSize); };
    next();
    if (number % kMapsPerPageMap == 0) {
        VX_TRY(WriteMap(PageType::PageMap, next(), full));
    }
    if (number >= kFirstFreeMap && (number - kFirstFreeMap) % m_form.mapBytes == 0) {
        VX_TRY(WriteMap(PageType::FreeMap, next(), full));
    }
    if (number >= kFirstFreePageMap && (number - kFirstFreePageMap) % (m_form.mapBytes * 8 * kMapsPerPageMap) == 0) {
        VX_TRY(WriteMap(PageType::FreePageMap, next(), full));
    }
    Take(m_intervalAt, m_size - m_intervalAt);
    return {};
}

Status PageStore::CloseInterval() {
    std::uint32_t free = 0;
    for (const std::byte byte : m_map) {
        free += 8U - static_cast<std::uint32_t>(std::popcount(std::to_integer<unsigned>(byte)));
    }
    if (free > 0) {
        m_freePlaces.push_back({static_cast<std::uint32_t>(m_interval), std::min(free, kMostSteps)});
    }
    m_freeSteps += free;
    return WriteMap(PageType::AllocationMap, m_intervalAt, m_map);
}

Status PageStore::WriteMap(PageType type, std::uint64_t at, ByteView map) {
    // The pages of the 32-bit form begin with four unused bytes.
    ByteWriter content;
    content.PadTo(m_form.PageContent() - m_form.mapBytes).Append(map);
    return Place(type, at, at, content.Take());
}

Status PageStore::Place(PageType type, std::uint64_t id, std::uint64_t at, Bytes content) {
    const bool isMap = type != PageType::BlockTree && type != PageType::NodeTree && type != PageType::FreeList;
    const std::uint32_t crc = Crc(content);
    ByteWriter page;
    page.Append(content).U8(static_cast<std::uint8_t>(type)).U8(static_cast<std::uint8_t>(type));
    page.U16(isMap ? 0 : Signature(at, id));
    if (m_form.width == 4) {
        page.U32(id).U32(crc);
    } else {
        page.U32(crc).U64(id);
    }
    page.PadTo(m_form.pageSize);
    return m_sink.WriteAt(at, page.View());
}

Result<std::uint64_t> PageStore::Allocate(std::uint64_t size, std::uint64_t alignment) {
    std::uint64_t at = localmapi::RoundUp(m_size, alignment);
    if (at + size > m_intervalAt + m_form.Interval()) {
        VX_TRY(CloseInterval());
        VX_TRY(OpenInterval(m_interval + 1));
        at = localmapi::RoundUp(m_size, alignment);
    }
    if (at + size > m_form.sizeLimit - m_form.Interval()) {
        return Error{ErrorCode::TooLarge, "the mailbox grows beyond the " + std::to_string(m_form.sizeLimit)
                                              + " bytes that this form of the file can hold"};
    }
    Take(at, size);
    m_size = at + localmapi::RoundUp(size, m_form.step);
    return at;
}

Result<PageRef> PageStore::WritePage(PageType type, Bytes content) {
    VX_TRY_ASSIGN(const std::uint64_t at, Allocate(m_form.pageSize, m_form.pageSize));
    const PageRef page{m_nextPage++, at};
    VX_TRY(Place(type, page.id, page.at, std::move(content)));
    return page;
}

Status PageStore::Finish(FileEnd end) {
    const std::uint64_t intervalEnd = m_intervalAt + m_form.Interval();
    const std::uint64_t written = m_size;
    m_size = localmapi::RoundUp(m_size, m_form.pageSize);
    if (end == FileEnd::Early) {
        // What the file does not have is not free.
        Take(m_size, intervalEnd - m_size);
    } else {
        m_size = intervalEnd;
    }
    VX_TRY(CloseInterval());
    VX_TRY(WriteFreeList());
    return m_size > written ? m_sink.WriteAt(m_size - 1, Bytes(1)) : Status();
}

Status PageStore::WriteFreeList() {
    std::stable_sort(m_freePlaces.begin(), m_freePlaces.end(),
                     [](const FreePlace& a, const FreePlace& b) { return a.steps > b.steps; });
    m_freePlaces.resize(std::min(m_freePlaces.size(), (kFreeListBytes - kFreeListHeader) / 4));
    ByteWriter list;
    list.U8(0).U8(m_freePlaces.size()).U16(0).U32(0);
    for (const FreePlace& place : m_freePlaces) {
        list.U32(std::uint64_t{place.steps} << 20 | (place.interval & 0xFFFFF));
    }
    list.PadTo(m_form.PageContent());
    return Place(PageType::FreeList, m_nextPage++, m_form.freeListAt, list.Take());
}

}  // namespace mailbox_builder
