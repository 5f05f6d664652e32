// The maps of a file's space say of every step of it whether something lies there: [MS-PST] 2.2.2.7.2. The test finds out
// what lies where from the b-trees alone.
#include "localmapi/base/Crc.h"
#include "tests/testing/mailbox_builder/Samples.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

namespace mailbox_builder {
namespace {

// Of a form of the file, as published.
struct Numbers {
    const char* name;
    Form form;
    unsigned width;
    std::uint64_t pageSize;
    std::uint64_t countAt;
    unsigned countWidth;
    std::uint64_t levelAt;
    std::uint64_t crcAt;  // in a page
    std::uint64_t idAt;
    std::uint64_t mapAt;  // in an allocation page
    std::uint64_t mapBytes;
    std::uint64_t step;
    std::uint64_t blockTrailer;
    std::uint64_t firstMap;
    std::uint64_t endAt;  // in the header: the file's end; the last map, free bytes and the roots follow
    std::uint64_t contentSize;
};
constexpr Numbers kNumbers[] = {
    {"Unicode", Form::Unicode, 8, 512, 488, 1, 491, 500, 504, 0, 496, 64, 16, 0x4400, 184, 34'000'000},
    {"ANSI", Form::Ansi, 4, 512, 496, 1, 499, 508, 504, 4, 496, 64, 12, 0x4400, 168, 34'000'000},
    {"4 KiB pages", Form::LargePages, 8, 4096, 4056, 2, 4061, 4076, 4080, 0, 4072, 512, 24, 0x22000, 184, 20'000'000},
};

class Space {
public:
    Space(ByteView file, const Numbers& numbers)
        : m_file(file), m_numbers(numbers), m_used(file.Size() / numbers.step) {}

    std::uint64_t HeaderField(unsigned index) const {
        return m_file.Number(m_numbers.endAt + std::uint64_t{index} * m_numbers.width, m_numbers.width);
    }

    // Marks the pages of a b-tree and, when it is the one of blocks, what they name.
    void WalkTree(std::uint64_t page, std::uint8_t type, unsigned depth = 0) {
        Mark(page, m_numbers.pageSize);
        CheckPage(page, type, m_file.Number(page + m_numbers.idAt, m_numbers.width));
        const std::uint64_t count = m_file.Number(page + m_numbers.countAt, m_numbers.countWidth);
        const bool isLeaf = m_file.U8(page + m_numbers.levelAt) == 0;
        ASSERT_TRUE(count > 0 && depth < 6);
        const unsigned size = m_file.U8(page + m_numbers.levelAt - 1);
        for (std::uint64_t i = 0; i < count; ++i) {
            const std::uint64_t entry = page + i * size;
            if (!isLeaf) {
                WalkTree(m_file.Number(entry + 2 * m_numbers.width, m_numbers.width), type, depth + 1);
            } else if (type == 0x80) {
                const std::uint64_t stored = m_file.U16(entry + 2 * m_numbers.width);
                Mark(m_file.Number(entry + m_numbers.width, m_numbers.width),
                     localmapi::RoundUp(stored + m_numbers.blockTrailer, m_numbers.step));
            }
        }
    }

    // Marks the maps, and compares those of every interval, and the header's sum of them, with what was marked.
    void CompareMaps() {
        std::uint64_t free = 0;
        std::vector<std::uint32_t> freeIn;
        const std::uint64_t interval = m_numbers.mapBytes * 8 * m_numbers.step;
        std::uint64_t number = 0;
        for (std::uint64_t at = m_numbers.firstMap; at < m_file.Size(); at += interval, ++number) {
            CheckMap(at, 0x84);
            std::uint64_t next = at + m_numbers.pageSize;
            if (number % 8 == 0) {
                CheckMap(next, 0x83);
                next += m_numbers.pageSize;
            }
            if (number == 128) {
                CheckMap(next, 0x82);
            }
            const std::uint64_t freeBefore = free;
            for (std::uint64_t i = 0; i < interval / m_numbers.step; ++i) {
                const std::uint8_t byte = m_file.U8(at + m_numbers.mapAt + i / 8);
                const bool isTaken = (byte & (0x80U >> (i % 8))) != 0;
                const std::uint64_t step = at / m_numbers.step + i;
                ASSERT_EQ(isTaken, static_cast<bool>(m_used[step])) << "interval " << number << ", step " << i;
                free += isTaken ? 0 : 1;
            }
            freeIn.push_back(static_cast<std::uint32_t>(free - freeBefore));
        }
        EXPECT_EQ(HeaderField(1), m_numbers.firstMap + (number - 1) * interval);
        EXPECT_EQ(HeaderField(2), free * m_numbers.step);
        CheckFreeList(freeIn);
    }

private:
    void Mark(std::uint64_t at, std::uint64_t size) {
        ASSERT_TRUE(at % m_numbers.step == 0 && at >= m_numbers.firstMap && at + size <= m_file.Size());
        for (std::uint64_t step = at / m_numbers.step; step < (at + size) / m_numbers.step; ++step) {
            ASSERT_FALSE(m_used[step]) << "two things lie at " << step * m_numbers.step;
            m_used[step] = true;
        }
    }

    void CheckMap(std::uint64_t at, std::uint8_t type) {
        Mark(at, m_numbers.pageSize);
        CheckPage(at, type, at);
    }

    // The intervals with the most room, that first: [MS-PST] 2.2.2.7.4.
    void CheckFreeList(const std::vector<std::uint32_t>& freeIn) {
        const std::uint64_t at = m_numbers.firstMap - m_numbers.pageSize;
        CheckPage(at, 0x86, m_file.Number(at + m_numbers.idAt, m_numbers.width));
        const std::uint8_t count = m_file.U8(at + 1);
        const auto withRoom = static_cast<std::ptrdiff_t>(freeIn.size()) - std::count(freeIn.begin(), freeIn.end(), 0);
        EXPECT_EQ(count, std::min<std::ptrdiff_t>(withRoom, 117));
        std::uint32_t before = 0xFFF;
        for (std::uint64_t i = 0; i < count; ++i) {
            const std::uint32_t entry = m_file.U32(at + 8 + 4 * i);
            ASSERT_LT(entry & 0xFFFFF, freeIn.size());
            EXPECT_EQ(entry >> 20, std::min(freeIn[entry & 0xFFFFF], 0xFFFU));
            EXPECT_LE(entry >> 20, before);
            before = entry >> 20;
        }
    }

    void CheckPage(std::uint64_t at, std::uint8_t type, std::uint64_t id) {
        const std::uint64_t trailer = std::min(m_numbers.crcAt, m_numbers.idAt) - 4;
        const ByteView page = m_file.Part(at, m_numbers.pageSize);
        EXPECT_EQ(page.U8(trailer), type) << at;
        EXPECT_EQ(page.U8(trailer + 1), type) << at;
        EXPECT_EQ(page.Number(m_numbers.idAt, m_numbers.width), id) << at;
        EXPECT_EQ(page.U32(m_numbers.crcAt), localmapi::Crc(page.Part(0, trailer))) << at;
    }

    ByteView m_file;
    const Numbers& m_numbers;
    std::vector<bool> m_used;
};

TEST(Space, IsMappedAsItIsUsed) {
    for (const Numbers& numbers : kNumbers) {
        SCOPED_TRACE(numbers.name);
        MailboxBuilder builder({.form = numbers.form, .encryption = Encryption::None});
        const FolderId folder = builder.AddFolder("Folder");
        Message large = SimpleMessage("large");
        large.attachments.push_back(FileAttachment("large", PatternContent(numbers.contentSize)));
        builder.Add(folder, std::move(large));
        builder.Add(folder, SimpleMessage("small"));
        const Mailbox mailbox = builder.Finish();
        const ByteView file(mailbox.bytes);
        Space space(file, numbers);
        EXPECT_EQ(space.HeaderField(0), file.Size());
        EXPECT_EQ((file.Size() - numbers.firstMap) % (numbers.mapBytes * 8 * numbers.step), 0U);
        space.WalkTree(space.HeaderField(5), 0x81);
        space.WalkTree(space.HeaderField(7), 0x80);
        space.CompareMaps();
    }
}

}  // namespace
}  // namespace mailbox_builder
