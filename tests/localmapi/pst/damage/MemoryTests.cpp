// What an open store costs: bytes a row of an open table, and the cache whatever is read.
#include "localmapi/pst/messaging/Store.h"
#include "testing/CountedMemory.h"
#include "tests/localmapi/pst/support/ReadEverything.h"
#include "tests/localmapi/pst/support/StoreBuilder.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>

namespace localmapi::testing {
namespace {

constexpr std::size_t kCache = 256 << 10;

Result<std::unique_ptr<pst::Store>> Open(const Bytes& bytes) {
    pst::StoreOptions options;
    options.database.cacheBytes = kCache;
    return pst::Store::Open(std::make_unique<MemorySource>(bytes), options);
}

TEST(Memory, OfAnOpenContentsTableIsAtMost64BytesARow) {
    constexpr std::uint32_t kRows = 20'000;
    StoreBuilder builder(kUnicode);
    builder.AddFolder(0x8062, kTop, "Inbox");
    const NodeData message = AddMessageNode(builder.image, "the same for all");
    for (std::uint32_t i = 0; i < kRows; ++i) {
        builder.AddMessage(0x200004 + i * 0x20, 0x8062, message);
    }
    const Bytes bytes = builder.Build();
    auto store = Open(bytes);
    ASSERT_TRUE(store);
    const std::size_t before = counted_memory::Live();
    auto folder = (*store)->OpenFolder(pst::NodeId{0x8062});
    ASSERT_TRUE(folder);
    const pst::ItemList list = folder->Messages();
    ASSERT_EQ(list.Count(), kRows);
    EXPECT_LE(counted_memory::Live() - before, kCache + std::size_t{64} * kRows);
}

TEST(Memory, OfReadingLargeContentsIsTheCacheAndLittleMore) {
    StoreBuilder builder(kUnicode);
    builder.AddFolder(0x8062, kTop, "Inbox");
    const NodeData attachment =
        AddProperties(builder.image, {{0x37050003, Number32(1)}, {0x37010102, Pattern(12'000'000)}});
    builder.AddMessage(0x200004, 0x8062, AddMessageNode(builder.image, "large", {attachment}));
    const Bytes bytes = builder.Build();
    auto store = Open(bytes);
    ASSERT_TRUE(store);
    const std::size_t before = counted_memory::Live();
    counted_memory::ResetHighest();
    auto message = (*store)->OpenMessage(pst::NodeId{0x200004});
    ASSERT_TRUE(message);
    auto held = message->OpenAttachment(message->Attachments()[0]);
    ASSERT_TRUE(held);
    auto data = held->OpenData();
    ASSERT_TRUE(data);
    std::array<std::byte, 5000> piece;
    std::uint64_t at = 0;
    for (;;) {
        const auto got = data->ReadAt(at, piece);
        ASSERT_TRUE(got);
        if (*got == 0) {
            break;
        }
        at += *got;
    }
    EXPECT_EQ(at, 12'000'000U);
    EXPECT_LE(counted_memory::Highest() - before, kCache + (200 << 10));
}

}  // namespace
}  // namespace localmapi::testing
