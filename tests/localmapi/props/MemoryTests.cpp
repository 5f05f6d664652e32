// MAPI's blocks, and the memories that values are put into.
#include "localmapi/props/MapiMemory.h"
#include "tests/localmapi/support/LeakCheck.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <set>
#include <span>
#include <vector>

namespace localmapi::testing {
namespace {

class Memory : public LeakCheck {};

bool IsAligned(const void* block, std::size_t alignment) {
    return reinterpret_cast<std::uintptr_t>(block) % alignment == 0;
}

TEST_F(Memory, OfARootIsFreedWithAllThatGoesWithIt) {
    void* const root = AllocateRoot(3);
    ASSERT_NE(root, nullptr);
    std::memset(root, 0xAA, 3);
    for (const std::size_t size : {0U, 1U, 24U, 100'000U}) {
        void* const more = AllocateWith(root, size);
        ASSERT_NE(more, nullptr) << size;
        EXPECT_TRUE(IsAligned(more, alignof(std::max_align_t)));
        std::memset(more, 0xBB, size);
    }
    EXPECT_EQ(LiveBuffers(), 1) << "only roots count";
    EXPECT_TRUE(FreeRoot(root));
}

TEST_F(Memory, ThatIsNoRootIsNeitherFreedNorGrown) {
    void* const root = AllocateRoot(64);
    void* const more = AllocateWith(root, 64);
    alignas(16) std::byte plain[64] = {};
    struct Row {
        const char* name;
        void* block;
    };
    const Row rows[] = {
        {"a block that goes with a root", more},
        {"the inside of a root", static_cast<std::byte*>(root) + 16},
        {"a crooked address", static_cast<std::byte*>(root) + 1},
        {"memory from elsewhere", plain + 32},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_FALSE(FreeRoot(row.block));
        EXPECT_EQ(AllocateWith(row.block, 8), nullptr);
    }
    EXPECT_EQ(AllocateWith(nullptr, 8), nullptr);
    EXPECT_TRUE(FreeRoot(nullptr));
    EXPECT_EQ(LiveBuffers(), 1);
    EXPECT_TRUE(FreeRoot(root));
}

TEST_F(Memory, OfASizeThatCannotBeIsRefused) {
    constexpr std::size_t kMost = std::numeric_limits<std::size_t>::max();
    EXPECT_EQ(AllocateRoot(kMost), nullptr);
    EXPECT_EQ(AllocateRoot(kMost - 15), nullptr);
    Arena arena;
    EXPECT_THROW(arena.Array<std::uint64_t>(kMost / 4), std::bad_alloc);
    const MapiPointer<void> root(AllocateRoot(8));
    EXPECT_THROW(RootMemory(root.get()).Array<std::uint64_t>(kMost / 4), std::bad_alloc);
}

TEST_F(Memory, OfABlockEndsWhereTheBlockEnds) {
    alignas(8) std::byte block[24];
    BlockMemory memory(block, 20);
    EXPECT_EQ(memory.Allocate(1), block);
    EXPECT_EQ(memory.Allocate(8), block + 8);
    EXPECT_THROW(memory.Allocate(4), std::bad_alloc) << "its size counts up to the next 8";
    EXPECT_NE(memory.Allocate(0), nullptr);
}

// Every block is written to its end, so that blocks that overlap or leave their chunk show.
TEST_F(Memory, OfAnArenaHoldsAllBlocksAtOnceAndAgainAfterClearing) {
    Arena arena;
    for (int round = 0; round < 3; ++round) {
        std::vector<std::span<std::uint8_t>> blocks;
        std::set<void*> begins;
        std::uint8_t mark = 0;
        for (const std::size_t size : {0U, 1U, 7U, 8U, 1016U, 1024U, 1025U, 4096U, 3000U, 1000U, 1000U, 1000U, 40U}) {
            auto* const bytes = arena.Array<std::uint8_t>(size);
            ASSERT_TRUE(bytes != nullptr && IsAligned(bytes, 8));
            ASSERT_TRUE(size == 0 || begins.insert(bytes).second);
            std::memset(bytes, ++mark, size);
            blocks.emplace_back(bytes, size);
        }
        mark = 0;
        for (const auto& block : blocks) {
            ++mark;
            EXPECT_TRUE(std::ranges::all_of(block, [mark](std::uint8_t byte) { return byte == mark; })) << int{mark};
        }
        arena.Clear();
    }
}

}  // namespace
}  // namespace localmapi::testing
