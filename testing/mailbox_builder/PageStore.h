// Gives out the space of the file from its beginning on, writes pages into it, and keeps the maps of what is taken:
// [MS-PST] 2.2.2.7. One thread at a time.
//
// The space is cut into intervals, each beginning with the page that maps it. Only the map of the interval in hand is
// kept; it is written when the interval is full.
#pragma once

#include "testing/mailbox_builder/ByteSink.h"
#include "testing/mailbox_builder/FileForm.h"

#include <cstdint>
#include <vector>

namespace mailbox_builder {

enum class PageType : std::uint8_t {
    BlockTree = 0x80,
    NodeTree = 0x81,
    FreeMap = 0x82,
    PageMap = 0x83,
    AllocationMap = 0x84,
    FreePageMap = 0x85,
    FreeList = 0x86,
};

// A page as its parent names it.
struct PageRef {
    std::uint64_t id = 0;
    std::uint64_t at = 0;
};

// CRC-32 started at 0 and not inverted: [MS-PST] 5.3.
std::uint32_t Crc(ByteView bytes) noexcept;

// What the trailer of a page or block at `at` carries: [MS-PST] 5.5.
constexpr std::uint16_t Signature(std::uint64_t at, std::uint64_t id) noexcept {
    const auto mixed = static_cast<std::uint32_t>(at ^ id);
    return static_cast<std::uint16_t>((mixed >> 16) ^ mixed);
}

class PageStore {
public:
    // Both are borrowed and outlive the store.
    PageStore(const FileForm& form, ByteSink& sink) : m_form(form), m_sink(sink) {}

    // Takes the pages of the first interval; before anything else.
    Status Begin() { return OpenInterval(0); }

    // A place for a block of `size` bytes, trailer and padding included. TooLarge when the file would grow beyond what
    // its form can hold.
    Result<std::uint64_t> Allocate(std::uint64_t size) { return Allocate(size, m_form.step); }

    // Writes a page of a b-tree. `content` is all of it but the trailer.
    Result<PageRef> WritePage(PageType type, Bytes content);

    // Writes what is left of the maps, and the file's last byte. Nothing is allocated afterwards.
    Status Finish(FileEnd end);

    // Of the file so far; known for good after Finish, as are the numbers of the header.
    std::uint64_t Size() const noexcept { return m_size; }
    std::uint64_t LastMapAt() const noexcept { return m_intervalAt; }
    std::uint64_t FreeBytes() const noexcept { return m_freeSteps * m_form.step; }
    std::uint64_t NextPageId() const noexcept { return m_nextPage; }

    const FileForm& TheForm() const noexcept { return m_form; }
    ByteSink& Sink() const noexcept { return m_sink; }

private:
    struct FreePlace {
        std::uint32_t interval;
        std::uint32_t steps;
    };

    Result<std::uint64_t> Allocate(std::uint64_t size, std::uint64_t alignment);
    Status OpenInterval(std::uint64_t number);
    Status CloseInterval();
    Status WriteMap(PageType type, std::uint64_t at, ByteView map);
    Status WriteFreeList();
    Status Place(PageType type, std::uint64_t id, std::uint64_t at, Bytes content);
    void Take(std::uint64_t at, std::uint64_t size);

    const FileForm& m_form;
    ByteSink& m_sink;
    std::uint64_t m_interval = 0;    // number of the one in hand
    std::uint64_t m_intervalAt = 0;  // its map's place
    Bytes m_map;                     // a bit a step, the highest first
    std::uint64_t m_size = 0;        // where the next page or block may begin
    std::uint64_t m_freeSteps = 0;   // of all intervals that are closed
    std::uint64_t m_nextPage = 1;
    std::vector<FreePlace> m_freePlaces;  // intervals with room left; few bytes for each 250 KB of file
};

}  // namespace mailbox_builder
