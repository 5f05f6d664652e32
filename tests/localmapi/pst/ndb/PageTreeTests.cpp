// The two b-trees: finding, walking, and doing both in damaged files.
#include "tests/localmapi/pst/support/ImageBuilder.h"
#include "tests/localmapi/pst/support/Opened.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <set>
#include <string>
#include <vector>

namespace localmapi::testing {
namespace {

using pst::NodeEntry;
using pst::NodeId;

constexpr std::uint32_t kFirstNode = 0x2000;
constexpr std::uint32_t kStep = 0x20;
constexpr unsigned kNodes = 60;

// 60 nodes, 4 to a page: 15 leaves and, above them, pages on two levels. Node i's data is the text of i.
struct Tree {
    explicit Tree(const Form& form) : image(form) {
        image.entriesPerPage = 4;
        for (unsigned i = 0; i < kNodes; ++i) {
            image.AddNode(kFirstNode + i * kStep, image.AddBlock(BytesOf(std::to_string(i))), 0, i);
        }
        bytes = image.Build();
    }

    // The nodes' pages of a level, in the order of their keys.
    std::vector<std::uint64_t> Pages(unsigned level) const {
        std::vector<std::uint64_t> places;
        for (const auto& page : image.pages) {
            if (page.type == 0x81 && page.level == level) {
                places.push_back(page.at);
            }
        }
        return places;
    }

    // Where an entry of a page begins.
    std::size_t EntryAt(std::uint64_t page, unsigned index, unsigned size) const {
        return static_cast<std::size_t>(page) + std::size_t{index} * size;
    }

    ImageBuilder image;
    Bytes bytes;
};

std::set<std::uint32_t> Walk(Opened& file, std::uint32_t from = 0) {
    std::set<std::uint32_t> ids;
    file->ForEachNode(NodeId{from}, [&](const NodeEntry& node) {
        ids.insert(node.id.value);
        return true;
    });
    return ids;
}

// How many of the nodes are found with their data.
unsigned Found(Opened& file) {
    unsigned found = 0;
    for (unsigned i = 0; i < kNodes; ++i) {
        const auto node = file->FindNode(NodeId{kFirstNode + i * kStep});
        auto data = node ? file->OpenData(*node) : Result<pst::DataStream>(Error(node.Failure()));
        const auto bytes = data ? ReadWhole(*data) : Result<Bytes>(Error(data.Failure()));
        found += bytes && *bytes == BytesOf(std::to_string(i)) && node->parent.value == i ? 1 : 0;
    }
    return found;
}

TEST(PageTree, FindsEveryKeyAndNoOther) {
    for (const Form* form : kForms) {
        SCOPED_TRACE(form->name);
        Opened file(Tree(*form).bytes);
        EXPECT_EQ(Found(file), kNodes);
        for (const std::uint32_t absent :
             {0U, kFirstNode - 1, kFirstNode + 1, kFirstNode + kStep / 2, kFirstNode + kNodes * kStep, UINT32_MAX}) {
            EXPECT_TRUE(file->FindNode(NodeId{absent}).IsNotFound()) << absent;
        }
        EXPECT_TRUE(file.sink.problems.empty());
    }
}

TEST(PageTree, IsWalkedInOrderFromAnyKeyAndUntilTheVisitorHasEnough) {
    Opened file(Tree(kUnicode).bytes);
    EXPECT_EQ(Walk(file).size(), kNodes);
    EXPECT_EQ(Walk(file, kFirstNode + 10 * kStep).size(), kNodes - 10);
    EXPECT_EQ(Walk(file, kFirstNode + 10 * kStep + 1).size(), kNodes - 11);
    EXPECT_TRUE(Walk(file, kFirstNode + kNodes * kStep).empty());
    std::vector<std::uint32_t> order;
    file->ForEachNode(NodeId{}, [&](const NodeEntry& node) {
        order.push_back(node.id.value);
        return order.size() < 7;
    });
    EXPECT_EQ(order.size(), 7U);
    EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
}

TEST(PageTree, OfAnEmptyFileHasNoNodes) {
    for (const Form* form : kForms) {
        ImageBuilder image(*form);
        Opened file(image.Build());
        EXPECT_TRUE(file->FindNode(NodeId{0x21}).IsNotFound()) << form->name;
        EXPECT_TRUE(Walk(file).empty());
    }
}

TEST(PageTree, LosesNothingToDamageAboveTheLeaves) {
    struct Row {
        const char* name;
        std::function<void(Tree&)> damage;
    };
    const Row rows[] = {
        {"root zeroed",
         [](Tree& t) { std::fill_n(t.bytes.begin() + static_cast<long>(t.Pages(2)[0]), 512, std::byte{}); }},
        {"root's key flipped", [](Tree& t) { t.bytes[t.Pages(2)[0]] ^= std::byte{0x80}; }},
        {"root's child elsewhere", [](Tree& t) { Poke(t.bytes, t.EntryAt(t.Pages(2)[0], 1, 24) + 16, 1 << 30, 8); }},
        {"root's child misplaced by a byte",
         [](Tree& t) { Poke(t.bytes, t.EntryAt(t.Pages(2)[0], 1, 24) + 16, t.Pages(1)[1] + 1, 8); }},
        {"inner page's level wrong", [](Tree& t) { t.bytes[t.Pages(1)[1] + 491] = std::byte{0}; }},
        {"inner page without entries", [](Tree& t) { t.bytes[t.Pages(1)[1] + 488] = std::byte{0}; }},
        {"inner page's count too high", [](Tree& t) { t.bytes[t.Pages(1)[1] + 488] = std::byte{200}; }},
        {"inner page is its own child, CRC and all",
         [](Tree& t) {
             Poke(t.bytes, t.EntryAt(t.Pages(1)[1], 0, 24) + 16, t.Pages(1)[1], 8);
             t.image.SealPage(t.bytes, t.Pages(1)[1]);
         }},
        {"inner page is the root again, CRC and all",
         [](Tree& t) {
             Poke(t.bytes, t.EntryAt(t.Pages(2)[0], 2, 24) + 16, t.Pages(2)[0], 8);
             t.image.SealPage(t.bytes, t.Pages(2)[0]);
         }},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        Tree tree(kUnicode);
        row.damage(tree);
        Opened file(tree.bytes);
        EXPECT_EQ(Found(file), kNodes);
        EXPECT_EQ(Walk(file).size(), kNodes);
        EXPECT_EQ(file.sink.Count("looking through the file found 15 pages of nodes"), 1);
    }
}

TEST(PageTree, LosesAtMostOneLeafToDamageInIt) {
    struct Row {
        const char* name;
        std::function<void(Tree&, std::size_t leaf)> damage;
        unsigned left;
    };
    const Row rows[] = {
        {"zeroed",
         [](Tree& t, std::size_t leaf) { std::fill_n(t.bytes.begin() + static_cast<long>(leaf), 512, std::byte{}); },
         kNodes - 4},
        {"a key flipped", [](Tree& t, std::size_t leaf) { t.bytes[leaf + 32] ^= std::byte{0x01}; }, kNodes - 1},
        {"a key flipped out of order", [](Tree& t, std::size_t leaf) { t.bytes[leaf + 34] ^= std::byte{0x40}; },
         kNodes - 1},
        {"count too high", [](Tree& t, std::size_t leaf) { t.bytes[leaf + 488] = std::byte{0xFF}; }, kNodes},
        {"entry size wrong", [](Tree& t, std::size_t leaf) { t.bytes[leaf + 490] = std::byte{3}; }, kNodes},
        {"level wrong", [](Tree& t, std::size_t leaf) { t.bytes[leaf + 491] = std::byte{9}; }, kNodes},
        {"one type wrong", [](Tree& t, std::size_t leaf) { t.bytes[leaf + 497] = std::byte{0}; }, kNodes},
        {"CRC itself flipped", [](Tree& t, std::size_t leaf) { t.bytes[leaf + 500] ^= std::byte{1}; }, kNodes},
        {"another id", [](Tree& t, std::size_t leaf) { t.bytes[leaf + 504] ^= std::byte{1}; }, kNodes},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        Tree tree(kUnicode);
        row.damage(tree, static_cast<std::size_t>(tree.Pages(0)[7]));
        Opened file(tree.bytes);
        EXPECT_EQ(Found(file), row.left);
        EXPECT_FALSE(file.sink.problems.empty());
    }
}

TEST(PageTree, WhoseLeafStandsTwiceGivesWhatTheOtherLeafHolds) {
    Tree tree(kUnicode);
    const std::uint64_t inner = tree.Pages(1)[0];
    Poke(tree.bytes, tree.EntryAt(inner, 1, 24) + 16, tree.Pages(0)[0], 8);
    tree.image.SealPage(tree.bytes, inner);
    Opened file(tree.bytes);
    unsigned visits = 0;
    file->ForEachNode(NodeId{}, [&](const NodeEntry&) { return ++visits < 1000; });
    EXPECT_EQ(visits, kNodes);
    EXPECT_EQ(Walk(file).size(), kNodes);
    EXPECT_EQ(file.sink.Count("stands in its b-tree twice"), 1);
}

TEST(PageTree, LookedThroughBelievesTheNewestOfSeveralLeaves) {
    Tree tree(kUnicode);
    // An older copy of a leaf, with other parents, behind the end of the file; and the root lost.
    const std::size_t leaf = static_cast<std::size_t>(tree.Pages(0)[3]);
    Bytes old(tree.bytes.begin() + static_cast<long>(leaf), tree.bytes.begin() + static_cast<long>(leaf) + 512);
    const std::size_t at = tree.bytes.size();
    tree.bytes.insert(tree.bytes.end(), old.begin(), old.end());
    for (unsigned i = 0; i < 4; ++i) {
        Poke(tree.bytes, at + std::size_t{i} * 32 + 24, 999, 4);
    }
    const std::uint64_t oldId = 0;
    Poke(tree.bytes, at + 504, oldId, 8);
    Poke(tree.bytes, at + 498, (at >> 16) ^ (at & 0xFFFF), 2);
    tree.image.SealPage(tree.bytes, at);
    std::fill_n(tree.bytes.begin() + static_cast<long>(tree.Pages(2)[0]), 512, std::byte{});
    Opened file(tree.bytes);
    EXPECT_EQ(Found(file), kNodes);
    EXPECT_EQ(file.sink.Count("found 16 pages of nodes"), 1);
}

TEST(PageTree, CutOffAnywhereGivesNodesThatAreThereAndEnds) {
    const Tree tree(kAnsi);
    for (std::size_t size = 512; size < tree.bytes.size(); size += 509) {
        Opened file(Bytes(tree.bytes.begin(), tree.bytes.begin() + static_cast<long>(size)));
        const std::set<std::uint32_t> ids = Walk(file);
        for (const std::uint32_t id : ids) {
            EXPECT_TRUE(file->FindNode(NodeId{id})) << size;
        }
    }
}

}  // namespace
}  // namespace localmapi::testing
