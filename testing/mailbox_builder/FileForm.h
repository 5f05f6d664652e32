// The numbers of the three forms of the file, as a writer needs them: [MS-PST] 2.2.2. They are this writer's own and not
// the reader's, so that each is checked against the other.
#pragma once

#include "testing/mailbox_builder/MailboxWriter.h"

#include <cstddef>
#include <cstdint>

namespace mailbox_builder {

struct FileForm {
    std::uint16_t version;  // wVer
    unsigned width;         // of ids and offsets

    unsigned headerSize;

    std::size_t pageSize;
    std::size_t pageTrailer;
    std::size_t pageEntries;  // bytes of a b-tree page's entries; count, limit, size and level follow
    unsigned pageCountWidth;
    std::size_t mapBytes;  // of an allocation page: a bit for each step of the space that follows it

    std::uint64_t freeListAt;  // the page of the space's free places
    std::uint64_t firstMapAt;  // the first allocation page
    std::uint64_t step;        // what a bit stands for: the alignment of blocks
    std::uint64_t sizeLimit;

    std::size_t blockTrailer;
    std::size_t fullBlock;  // data in a full block
    bool compresses;

    unsigned heapIndexBits;  // of a heap id: they number an item in its block
    unsigned rowNumberWidth;

    // Bytes from one allocation page to the next.
    constexpr std::uint64_t Interval() const noexcept { return mapBytes * 8 * step; }

    constexpr std::size_t PageContent() const noexcept { return pageSize - pageTrailer; }
    constexpr std::size_t InnerEntry() const noexcept { return std::size_t{3} * width; }
    constexpr std::size_t NodeEntry() const noexcept { return std::size_t{4} * width; }
    constexpr std::size_t BlockEntry() const noexcept { return width == 4 ? 12 : 24; }

    // How many ids or sub-nodes a block of the database itself holds.
    constexpr std::size_t BlocksPerList() const noexcept { return (fullBlock - 8) / width; }
    constexpr std::size_t SubnodesPerList() const noexcept { return (fullBlock - width) / (std::size_t{3} * width); }
    constexpr std::size_t ListsPerIndex() const noexcept { return (fullBlock - width) / (std::size_t{2} * width); }
};

inline constexpr FileForm kUnicodeForm = {
    .version = 23,
    .width = 8,
    .headerSize = 564,
    .pageSize = 512,
    .pageTrailer = 16,
    .pageEntries = 488,
    .pageCountWidth = 1,
    .mapBytes = 496,
    .freeListAt = 0x4200,
    .firstMapAt = 0x4400,
    .step = 64,
    .sizeLimit = std::uint64_t{1} << 62,
    .blockTrailer = 16,
    .fullBlock = 8176,
    .compresses = false,
    .heapIndexBits = 11,
    .rowNumberWidth = 4,
};

inline constexpr FileForm kAnsiForm = {
    .version = 14,
    .width = 4,
    .headerSize = 512,
    .pageSize = 512,
    .pageTrailer = 12,
    .pageEntries = 496,
    .pageCountWidth = 1,
    .mapBytes = 496,
    .freeListAt = 0x4200,
    .firstMapAt = 0x4400,
    .step = 64,
    .sizeLimit = 0x7FFF'FFFF,
    .blockTrailer = 12,
    .fullBlock = 8180,
    .compresses = false,
    .heapIndexBits = 11,
    .rowNumberWidth = 2,
};

inline constexpr FileForm kLargePageForm = {
    .version = 36,
    .width = 8,
    .headerSize = 564,
    .pageSize = 4096,
    .pageTrailer = 24,
    .pageEntries = 4056,
    .pageCountWidth = 2,
    .mapBytes = 4072,
    .freeListAt = 0x21000,
    .firstMapAt = 0x22000,
    .step = 512,
    .sizeLimit = std::uint64_t{1} << 62,
    .blockTrailer = 24,
    .fullBlock = 65512,
    .compresses = true,
    .heapIndexBits = 14,
    .rowNumberWidth = 4,
};

static_assert(kUnicodeForm.Interval() == 253'952 && kLargePageForm.Interval() == 16'678'912);
static_assert(kUnicodeForm.BlocksPerList() == 1021 && kAnsiForm.BlocksPerList() == 2043);

constexpr const FileForm& FormOf(Form form) noexcept {
    switch (form) {
        case Form::Ansi: return kAnsiForm;
        case Form::LargePages: return kLargePageForm;
        default: return kUnicodeForm;
    }
}

}  // namespace mailbox_builder
