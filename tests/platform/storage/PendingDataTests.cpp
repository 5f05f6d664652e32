// Written data that waits for its commit: what goes to the scratch file, and that what is given back is used again.
#include "StorageTestSupport.h"
#include "platform/linux/storage/PendingData.h"

#include <array>

using namespace storage_test;
using vx_storage::kBlockBytes;
using vx_storage::PendingBlock;
using vx_storage::PendingData;

namespace {

std::span<const std::byte> AsBytes(const Bytes& bytes) {
    return std::as_bytes(std::span(bytes));
}

Bytes ReadBlock(const PendingBlock& block, std::size_t offset, std::size_t size) {
    Bytes bytes(size, 0xEE);
    EXPECT_EQ(block.Read(offset, std::as_writable_bytes(std::span(bytes))), S_OK);
    return bytes;
}

TEST(PendingData, KeepsEveryByteWhereverItWaits) {
    // Memory for nothing, for part of a block, for one block, for all.
    for (const std::size_t memory : {std::size_t{0}, std::size_t{1000}, kBlockBytes, 10 * kBlockBytes}) {
        SCOPED_TRACE(memory);
        const auto pending = std::make_shared<PendingData>(memory);
        std::array<std::unique_ptr<PendingBlock>, 4> blocks;
        std::array<Bytes, 4> model;
        std::mt19937 random(7);
        for (int step = 0; step < 400; ++step) {
            const std::size_t which = random() % blocks.size();
            if (blocks[which] == nullptr || random() % 40 == 0) {
                blocks[which] = std::make_unique<PendingBlock>(pending);  // into a slot with another block's remains
                model[which].clear();
            }
            const std::size_t offset = random() % kBlockBytes;
            const std::size_t size = random() % std::min<std::size_t>(kBlockBytes - offset + 1, 5000);
            const Bytes bytes = Pattern(size, static_cast<std::uint32_t>(random()));
            ASSERT_EQ(blocks[which]->Write(offset, AsBytes(bytes)), S_OK);
            model[which].resize(std::max(model[which].size(), offset + size));
            std::copy(bytes.begin(), bytes.end(), model[which].begin() + static_cast<std::ptrdiff_t>(offset));
            if (random() % 10 == 0) {
                const std::size_t cut = random() % kBlockBytes;
                blocks[which]->Truncate(cut);
                model[which].resize(std::min(model[which].size(), cut));
            }
            ASSERT_EQ(blocks[which]->Used(), model[which].size());
            Bytes expected = model[which];
            expected.resize(kBlockBytes);
            ASSERT_TRUE(ReadBlock(*blocks[which], 0, kBlockBytes) == expected) << step;
        }
    }
}

TEST(PendingData, UsesMemoryAndSlotsAgain) {
    const auto pending = std::make_shared<PendingData>(kBlockBytes);
    const Bytes full = Pattern(kBlockBytes, 1);
    for (int round = 0; round < 20; ++round) {
        PendingBlock inMemory(pending);
        PendingBlock inScratch(pending);
        ASSERT_EQ(inMemory.Write(0, AsBytes(full)), S_OK);
        EXPECT_FALSE(pending->TakeMemory(1)) << "all of it is in use";
        ASSERT_EQ(inScratch.Write(0, AsBytes(full)), S_OK);
    }
    EXPECT_TRUE(pending->TakeMemory(kBlockBytes));
    std::uint64_t size = 0;
    EXPECT_EQ(pending->ScratchFile().GetSize(size), S_OK);
    EXPECT_EQ(size, kBlockBytes);
}

}  // namespace
