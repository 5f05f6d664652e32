// Heaps and the b-trees on them, sound and damaged.
#include "localmapi/pst/ltp/BTreeOnHeap.h"
#include "localmapi/pst/ltp/Heap.h"
#include "tests/localmapi/pst/support/HeapBuilder.h"
#include "tests/localmapi/pst/support/Opened.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace localmapi::testing {
namespace {

using pst::BTreeOnHeap;
using pst::Heap;
using pst::HeapId;
using pst::NodeId;

constexpr std::uint32_t kNode = 0x204;

Bytes Held(const pst::HeldBytes& bytes) {
    return {bytes.view.Span().begin(), bytes.view.Span().end()};
}

Result<Heap> OpenHeap(Opened& file) {
    return Heap::Open(*file, file.Node(kNode), NodeId{kNode});
}

// More than 136 blocks, so that the blocks that begin with fill levels (8 and 136) are among them.
TEST(Heap, GivesItsItemsFromEveryKindOfBlock) {
    for (const Form* form : kForms) {
        SCOPED_TRACE(form->name);
        ImageBuilder image(*form, pst::Encoding::Cyclic);
        HeapBuilder builder(image, 0xBC);
        std::vector<std::uint32_t> ids;
        for (std::uint32_t i = 0; i < 280; ++i) {
            if (i % 2 == 0 && i > 0) {
                builder.BeginBlock();
            }
            ids.push_back(builder.Add(Pattern(i * 13 % 3580 + 1, i + 1)));
        }
        const NodeData node = builder.Finish(ids[5]);
        image.AddNode(kNode, node.data, node.subnodes);
        Opened file(image.Build());
        Result<Heap> heap = OpenHeap(file);
        ASSERT_TRUE(heap) << heap.Failure().text;
        EXPECT_EQ(heap->ClientSignature(), 0xBC);
        EXPECT_EQ(heap->UserRoot().value, ids[5]);
        for (std::uint32_t i = 0; i < ids.size(); ++i) {
            const auto item = heap->Item(HeapId{ids[i]});
            ASSERT_TRUE(item) << item.Failure().text;
            ASSERT_EQ(Held(*item), Pattern(i * 13 % 3580 + 1, i + 1)) << i;
        }
        EXPECT_TRUE(heap->Item(HeapId{})->view.IsEmpty());
        const std::uint32_t pastItems = ids.back() + (1 << 5);
        const std::uint32_t pastBlocks = ids.back() + (1 << (5 + form->heapIndexBits));
        for (const std::uint32_t absent : {pastItems, pastBlocks, 0xFFFFFFE0U}) {
            EXPECT_EQ(heap->Item(HeapId{absent}).Failure().code, ErrorCode::Corrupt) << absent;
        }
    }
}

TEST(Heap, ThatIsNoneIsRefusedAndOneWithADamagedMapLosesItsItems) {
    struct Row {
        const char* name;
        std::function<void(Bytes&)> damage;
        bool opens;
        bool firstItem;
    };
    const Row rows[] = {
        {"sound", [](Bytes&) {}, true, true},
        {"signature", [](Bytes& b) { b[2] = std::byte{0xED}; }, false, false},
        {"short", [](Bytes& b) { b.resize(11); }, false, false},
        {"empty", [](Bytes& b) { b.clear(); }, false, false},
        {"map outside", [](Bytes& b) { Poke(b, 0, b.size() - 3, 2); }, true, false},
        {"map far outside", [](Bytes& b) { Poke(b, 0, 0xFFFF, 2); }, true, false},
        {"count too high", [](Bytes& b) { Poke(b, ByteView(b).U16(0), 0xFFFF, 2); }, true, false},
        {"count 0", [](Bytes& b) { Poke(b, ByteView(b).U16(0), 0, 2); }, true, false},
        {"item backwards", [](Bytes& b) { Poke(b, ByteView(b).U16(0) + 6U, 3, 2); }, true, false},
        {"item into the map", [](Bytes& b) { Poke(b, ByteView(b).U16(0) + 6U, ByteView(b).U16(0) + 1U, 2); }, true,
         false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        ImageBuilder image(kUnicode);
        HeapBuilder builder(image, 0x7C);
        const std::uint32_t id = builder.Add(BytesOf("item"));
        Bytes block = builder.Blocks(id)[0];
        row.damage(block);
        image.AddNode(kNode, image.AddBlock(block));
        Opened file(image.Build());
        Result<Heap> heap = OpenHeap(file);
        EXPECT_EQ(static_cast<bool>(heap), row.opens);
        if (heap) {
            const auto item = heap->Item(HeapId{id});
            EXPECT_EQ(item && Held(*item) == BytesOf("item"), row.firstItem);
        }
    }
}

TEST(Heap, OfANodeWithoutDataIsRefused) {
    ImageBuilder image(kUnicode);
    image.AddNode(kNode, 0);
    Opened file(image.Build());
    EXPECT_FALSE(OpenHeap(file));
}

TEST(Heap, FollowsIdsOfBothKindsToValues) {
    ImageBuilder image(kAnsi);
    HeapBuilder builder(image, 0xBC);
    const std::uint32_t item = builder.Add(BytesOf("small"));
    const std::uint32_t node = builder.AddSubnode(image.AddData(Pattern(20'000)));
    const NodeData data = builder.Finish(item);
    image.AddNode(kNode, data.data, data.subnodes);
    Opened file(image.Build());
    Result<Heap> heap = OpenHeap(file);
    ASSERT_TRUE(heap);
    auto small = heap->OpenValue(item);
    auto large = heap->OpenValue(node);
    auto none = heap->OpenValue(0);
    ASSERT_TRUE(small && large && none);
    EXPECT_EQ(*ReadWhole(*small, 2), BytesOf("small"));
    EXPECT_EQ(*ReadWhole(*large, 999), Pattern(20'000));
    EXPECT_EQ(*large->ReadAll(), Pattern(20'000));
    EXPECT_EQ(large->ReadAll(19'999).Failure().code, ErrorCode::TooLarge);
    EXPECT_EQ(none->Size(), 0U);
    EXPECT_TRUE(heap->OpenValue(node + 0x20).IsNotFound());
    EXPECT_EQ(file.sink.Count("there is no sub-node"), 1);
}

TEST(BTreeOnHeap, GivesItsRecordsInOrderFromAnyNumberOfLevels) {
    for (const std::size_t count : {0U, 1U, 300U, 301U, 3000U}) {
        for (const std::size_t perItem : {3U, 300U}) {
            SCOPED_TRACE(std::to_string(count) + " by " + std::to_string(perItem));
            ImageBuilder image(kUnicode);
            HeapBuilder builder(image, 0x7C);
            HeapBuilder::Records records;
            for (std::uint32_t i = 0; i < count; ++i) {
                records.emplace_back(Number32(i * 3), Number32(i ^ 0x5555));
            }
            const NodeData node = builder.Finish(builder.AddTree(4, 4, records, perItem));
            image.AddNode(kNode, node.data, node.subnodes);
            Opened file(image.Build());
            Result<Heap> heap = OpenHeap(file);
            ASSERT_TRUE(heap);
            auto tree = BTreeOnHeap::Open(*heap, heap->UserRoot());
            ASSERT_TRUE(tree) << tree.Failure().text;
            HeapBuilder::Records read;
            EXPECT_TRUE(tree->ForEach(
                [&](ByteView key, ByteView data) { read.emplace_back(Number32(key.U32(0)), Number32(data.U32(0))); },
                "lost"));
            EXPECT_TRUE(read == records);
        }
    }
}

TEST(BTreeOnHeap, ThatContradictsItselfIsRefusedOrReported) {
    struct Row {
        const char* name;
        std::function<std::uint32_t(HeapBuilder&)> header;
        bool opens;
        unsigned records;
    };
    const auto head = [](HeapBuilder& b, unsigned type, unsigned key, unsigned data, unsigned levels,
                         std::uint32_t root) {
        return b.Add(ByteWriter().U8(type).U8(key).U8(data).U8(levels).U32(root).Take());
    };
    const Bytes two = ByteWriter().U32(1).U32(2).U32(3).U32(4).U8(9).Take();
    const Row rows[] = {
        {"a byte over", [&](HeapBuilder& b) { return head(b, 0xB5, 4, 4, 0, b.Add(two)); }, true, 2},
        {"type", [&](HeapBuilder& b) { return head(b, 0xB4, 4, 4, 0, b.Add(two)); }, false, 0},
        {"key of 3", [&](HeapBuilder& b) { return head(b, 0xB5, 3, 4, 0, b.Add(two)); }, false, 0},
        {"data of 0", [&](HeapBuilder& b) { return head(b, 0xB5, 4, 0, 0, b.Add(two)); }, false, 0},
        {"data of 33", [&](HeapBuilder& b) { return head(b, 0xB5, 4, 33, 0, b.Add(two)); }, false, 0},
        {"9 levels", [&](HeapBuilder& b) { return head(b, 0xB5, 4, 4, 9, b.Add(two)); }, false, 0},
        {"short header", [](HeapBuilder& b) { return b.Add(ByteWriter().U8(0xB5).U8(4).U16(4).Take()); }, false, 0},
        {"root missing", [&](HeapBuilder& b) { return head(b, 0xB5, 4, 4, 0, 0x20 * 99); }, true, 0},
        {"leaf in place of an index", [&](HeapBuilder& b) { return head(b, 0xB5, 4, 4, 1, b.Add(two)); }, true, 0},
        // Item 1 leads to itself in both of its records; at eight levels that would be 256 ways.
        {"loop",
         [&](HeapBuilder& b) {
             return head(b, 0xB5, 4, 4, 8, b.Add(ByteWriter().U32(1).U32(0x20).U32(2).U32(0x20).Take()));
         },
         true, 0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        ImageBuilder image(kUnicode);
        HeapBuilder builder(image, 0x7C);
        const NodeData node = builder.Finish(row.header(builder));
        image.AddNode(kNode, node.data, node.subnodes);
        Opened file(image.Build());
        Result<Heap> heap = OpenHeap(file);
        ASSERT_TRUE(heap);
        auto tree = BTreeOnHeap::Open(*heap, heap->UserRoot());
        ASSERT_EQ(static_cast<bool>(tree), row.opens);
        if (tree) {
            unsigned records = 0;
            const bool whole = tree->ForEach([&](ByteView, ByteView) { ++records; }, "they are lost");
            EXPECT_EQ(records, row.records);
            EXPECT_EQ(whole, file.sink.problems.empty());
            EXPECT_LE(file.sink.problems.size(), 2U);
        }
    }
}

}  // namespace
}  // namespace localmapi::testing
