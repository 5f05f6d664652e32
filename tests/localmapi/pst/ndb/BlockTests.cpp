// Data blocks, trees of blocks and lists of sub-nodes, sound and damaged.
#include "tests/localmapi/pst/support/ImageBuilder.h"
#include "tests/localmapi/pst/support/Opened.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace localmapi::testing {
namespace {

using pst::Encoding;
using pst::NodeEntry;
using pst::NodeId;

constexpr std::uint32_t kNode = 0x204;

Result<Bytes> DataOf(Opened& file, std::uint32_t node = kNode) {
    auto stream = file->OpenData(file.Node(node));
    return stream ? ReadWhole(*stream) : Result<Bytes>(stream.TakeFailure());
}

TEST(Block, OfEveryFormAndEncodingGivesItsBytes) {
    for (const Form* form : kForms) {
        for (const Encoding encoding : {Encoding::None, Encoding::Permute, Encoding::Cyclic}) {
            for (const std::size_t size : {std::size_t{0}, std::size_t{1}, std::size_t{51}, std::size_t{52},
                                           std::size_t{53}, std::size_t{form->fullBlock}}) {
                SCOPED_TRACE(std::string(form->name) + ", " + std::to_string(size));
                ImageBuilder image(*form, encoding);
                image.AddNode(kNode, image.AddBlock(Pattern(size)));
                Opened file(image.Build());
                EXPECT_EQ(*DataOf(file), Pattern(size));
                EXPECT_TRUE(file.sink.problems.empty());
            }
        }
    }
}

TEST(Block, ThatIsCompressedIsInflatedBeforeItIsDecoded) {
    const Bytes data(60'000, std::byte{'x'});
    for (const Encoding encoding : {Encoding::None, Encoding::Permute, Encoding::Cyclic}) {
        for (const int windowBits : {15, -15}) {  // a zlib stream, a bare one
            ImageBuilder image(kLarge, encoding);
            image.AddNode(kNode, image.AddCompressed(data, windowBits));
            Opened file(image.Build());
            const Result<Bytes> read = DataOf(file);
            ASSERT_TRUE(read) << read.Failure().text;
            EXPECT_EQ(*read, data);
        }
    }
}

TEST(Block, ThatDoesNotInflateToItsSizeIsRefused) {
    for (const std::uint64_t said : {4999U, 5001U}) {
        ImageBuilder image(kLarge);
        image.AddNode(kNode, image.AddCompressed(Pattern(5000)));
        Bytes bytes = image.Build();
        const std::uint64_t leaf = image.pages.front().at;
        Poke(bytes, static_cast<std::size_t>(leaf) + 18, said, 2);
        image.SealPage(bytes, leaf);
        Opened file(bytes);
        const Result<Bytes> read = DataOf(file);
        ASSERT_FALSE(read);
        EXPECT_NE(read.Failure().text.find("does not inflate"), std::string::npos);
    }
}

TEST(Block, IsBelievedWhenItsTrailerVouchesForItEitherWay) {
    struct Row {
        const char* name;
        std::function<void(Bytes&, std::size_t block, std::size_t trailer)> damage;
        const char* report;  // null: refused
    };
    const Row rows[] = {
        {"a byte flipped", [](Bytes& b, std::size_t block, std::size_t) { b[block] ^= std::byte{1}; }, "fails its CRC"},
        {"CRC flipped", [](Bytes& b, std::size_t, std::size_t t) { b[t + 4] ^= std::byte{1}; }, "fails its CRC"},
        {"another id", [](Bytes& b, std::size_t, std::size_t t) { b[t + 8] ^= std::byte{4}; }, "carries another id"},
        {"another size", [](Bytes& b, std::size_t, std::size_t t) { b[t] ^= std::byte{4}; }, "carries another size"},
        {"another signature", [](Bytes& b, std::size_t, std::size_t t) { b[t + 2] ^= std::byte{4}; },
         "fails its signature"},
        {"another block there",
         [](Bytes& b, std::size_t block, std::size_t t) {
             b[block] ^= std::byte{1};
             b[t + 8] ^= std::byte{4};
         },
         nullptr},
        {"zeroed",
         [](Bytes& b, std::size_t block, std::size_t t) {
             std::fill_n(b.begin() + static_cast<long>(block), t + 16 - block, std::byte{});
         },
         nullptr},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        ImageBuilder image(kUnicode);
        const std::uint64_t block = image.AddBlock(Pattern(100));
        image.AddNode(kNode, block);
        Bytes bytes = image.Build();
        row.damage(bytes, static_cast<std::size_t>(image.BlockAt(block)),
                   static_cast<std::size_t>(image.BlockTrailerAt(block)));
        Opened file(bytes);
        const Result<Bytes> read = DataOf(file);
        EXPECT_EQ(static_cast<bool>(read), row.report != nullptr);
        if (row.report != nullptr) {
            EXPECT_EQ(file.sink.Count(row.report), 1);
            EXPECT_EQ(file.sink.Count("node 0x204: block 0x4 at "), 1) << file.sink.problems[0];
            EXPECT_TRUE(DataOf(file));
            EXPECT_EQ(file.sink.problems.size(), 1U) << "a second time is not reported again";
        } else {
            EXPECT_EQ(read.Failure().code, ErrorCode::Corrupt);
        }
    }
}

TEST(Block, OfImpossiblePlaceOrSizeIsRefused) {
    struct Row {
        const char* name;
        unsigned at;  // in the entry of the block b-tree
        std::uint64_t value;
        unsigned width;
        const char* reason;
    };
    constexpr Row rows[] = {
        {"past the end", 8, 1 << 24, 8, "past the end"},
        {"near the top of 64 bits", 8, UINT64_MAX - 64, 8, "past the end"},
        {"too large", 16, 8177, 2, "more than a block can"},
        {"unknown", 0, 0x400, 8, "is not in the file"},
    };
    for (const Row& row : rows) {
        ImageBuilder image(kUnicode);
        image.AddNode(kNode, image.AddBlock(Pattern(100)));
        Bytes bytes = image.Build();
        const std::uint64_t leaf = image.pages.front().at;
        Poke(bytes, static_cast<std::size_t>(leaf) + row.at, row.value, row.width);
        image.SealPage(bytes, leaf);
        Opened file(bytes);
        const Result<Bytes> read = DataOf(file);
        ASSERT_FALSE(read) << row.name;
        EXPECT_NE(read.Failure().text.find(row.reason), std::string::npos) << read.Failure().text;
    }
}

// Bit 0 of an id has no meaning; some writers set it.
TEST(Block, IsFoundWhateverBitZeroOfItsIdSays) {
    ImageBuilder image(kUnicode);
    const std::uint64_t block = image.AddBlock(Pattern(100));
    image.AddNode(kNode, block | 1);
    Opened file(image.Build());
    EXPECT_EQ(*DataOf(file), Pattern(100));
}

TEST(DataStream, OfEverySizeAroundAFullBlockGivesItsBytesInAnyPieces) {
    for (const Form* form : kForms) {
        const std::size_t full = form->fullBlock;
        for (const std::size_t size : {full, full + 1, 2 * full - 1, 2 * full, 3 * full + 7}) {
            ImageBuilder image(*form, Encoding::Permute);
            image.AddNode(kNode, image.AddData(Pattern(size)));
            Opened file(image.Build());
            for (const std::size_t piece : {std::size_t{977}, full, 3 * full}) {
                SCOPED_TRACE(std::string(form->name) + ' ' + std::to_string(size) + " in " + std::to_string(piece));
                auto stream = file->OpenData(file.Node(kNode));
                ASSERT_TRUE(stream);
                EXPECT_EQ(stream->Size(), size);
                EXPECT_TRUE(*ReadWhole(*stream, piece) == Pattern(size));
            }
            EXPECT_TRUE(file.sink.problems.empty());
        }
    }
}

// Two levels, with leaves that are not full: no writer of note makes them, and they are read all the same.
TEST(DataStream, OverTwoLevelsIsReadByPosition) {
    for (const Form* form : kForms) {
        SCOPED_TRACE(form->name);
        ImageBuilder image(*form);
        Bytes whole;
        std::vector<std::vector<std::uint64_t>> groups(3);
        for (unsigned i = 0; i < 30; ++i) {
            const Bytes part = Pattern(i * 7 % 40 + 1, i + 1);
            whole.insert(whole.end(), part.begin(), part.end());
            groups[i / 10].push_back(image.AddBlock(part));
        }
        image.AddNode(kNode, image.AddTree(groups, whole.size()));
        Opened file(image.Build());
        auto stream = file->OpenData(file.Node(kNode));
        ASSERT_TRUE(stream);
        EXPECT_EQ(stream->Size(), whole.size());
        EXPECT_EQ(stream->BlockCount(), 30U);
        for (const std::size_t at :
             {whole.size() - 1, std::size_t{0}, whole.size() / 2, whole.size(), whole.size() + 9}) {
            Bytes part(50);
            const auto got = stream->ReadAt(at, part);
            ASSERT_TRUE(got);
            part.resize(*got);
            const ByteView expected = ByteView(whole).Part(at, 50);
            EXPECT_EQ(part, Bytes(expected.Span().begin(), expected.Span().end())) << at;
        }
        EXPECT_EQ(*ReadWhole(*stream, 11), whole);
        EXPECT_TRUE(file.sink.problems.empty());
    }
}

TEST(DataStream, WhoseTreeContradictsItselfIsRefusedOrCutToWhatIsThere) {
    struct Row {
        const char* name;
        std::function<std::uint64_t(ImageBuilder&, std::uint64_t a, std::uint64_t b)> root;
        const char* reason;  // of the refusal; null when it is read
        std::size_t size = 0;
    };
    const Row rows[] = {
        {"total too high",
         [](ImageBuilder& i, auto a, auto b) {
             return i.AddTree({a, b}, 5000);
         },
         nullptr, 200},
        {"total too low",
         [](ImageBuilder& i, auto a, auto b) {
             return i.AddTree({a, b}, 3);
         },
         nullptr, 200},
        {"no leaves", [](ImageBuilder& i, auto, auto) { return i.AddTree(std::vector<std::uint64_t>{}, 0); }, nullptr,
         0},
        {"type unknown",
         [](ImageBuilder& i, auto, auto) { return i.AddInternal(ByteWriter().U8(9).U8(1).U16(0).U32(0).Take()); },
         "is no block of ids", 0},
        {"level 3",
         [](ImageBuilder& i, auto, auto) { return i.AddInternal(ByteWriter().U8(1).U8(3).U16(0).U32(0).Take()); },
         "is no block of ids", 0},
        {"count too high",
         [](ImageBuilder& i, auto, auto) {
             return i.AddInternal(ByteWriter().U8(1).U8(1).U16(99).U32(8).U64(4).Take());
         },
         "more ids than it holds", 0},
        {"empty block", [](ImageBuilder& i, auto, auto) { return i.AddInternal({}); }, "is no block of ids", 0},
        {"data where ids belong",
         [](ImageBuilder& i, auto a, auto) {
             return i.AddInternal(ByteWriter().U8(1).U8(2).U16(1).U32(8).U64(a).Take());
         },
         "is no block of ids", 0},
        {"its own child",
         [](ImageBuilder& i, auto, auto b) {
             return i.AddInternal(ByteWriter().U8(1).U8(2).U16(1).U32(8).U64((b + 4) | 2).Take());
         },
         "is no block of ids of the level", 0},
        {"a thousand times the same branch, to claim more than the file",
         [](ImageBuilder& i, auto a, auto b) {
             const std::uint64_t branch = i.AddTree(std::vector<std::uint64_t>(100, a), 10'000);
             ByteWriter ids;
             ids.U8(1).U8(2).U16(1000).U32(10'000'000);
             for (int n = 0; n < 1000; ++n) {
                 ids.U64(branch);
             }
             (void)b;
             return i.AddInternal(ids.bytes);
         },
         "more data than the file can hold", 0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        ImageBuilder image(kUnicode);
        const std::uint64_t a = image.AddBlock(Pattern(100, 1));
        const std::uint64_t b = image.AddBlock(Pattern(100, 2));
        image.AddNode(kNode, row.root(image, a, b));
        Opened file(image.Build());
        const Result<Bytes> read = DataOf(file);
        EXPECT_EQ(static_cast<bool>(read), row.reason == nullptr);
        if (read) {
            EXPECT_EQ(read->size(), row.size);
        } else {
            EXPECT_EQ(read.Failure().code, ErrorCode::Corrupt);
            EXPECT_NE(read.Failure().text.find(row.reason), std::string::npos) << read.Failure().text;
        }
    }
}

TEST(DataStream, WithALostBlockGivesTheBytesBeforeAndBehindIt) {
    ImageBuilder image(kUnicode);
    const Bytes whole = Pattern(std::size_t{3} * 8176);
    const std::uint64_t first = image.AddBlock(Bytes(whole.begin(), whole.begin() + 8176));
    const std::uint64_t last = image.AddBlock(Bytes(whole.begin() + 16352, whole.end()));
    image.AddNode(kNode, image.AddTree({first, 0x9990, last}, whole.size()));
    Opened file(image.Build());
    auto stream = file->OpenData(file.Node(kNode));
    ASSERT_TRUE(stream);
    EXPECT_EQ(stream->Size(), whole.size());
    Bytes part(8176);
    for (const std::size_t block : {std::size_t{0}, std::size_t{2}}) {
        ASSERT_TRUE(stream->ReadAt(block * 8176, part));
        EXPECT_TRUE(std::equal(part.begin(), part.end(), whole.begin() + static_cast<long>(block * 8176)));
    }
    EXPECT_FALSE(stream->ReadAt(8176, part));
    EXPECT_EQ(file.sink.Count("block 0x9990 is not in the file"), 1);
}

TEST(SubnodeTree, FindsAndListsSubnodesOnOneLevelAndOnTwo) {
    for (const Form* form : kForms) {
        SCOPED_TRACE(form->name);
        ImageBuilder image(*form);
        const std::uint64_t data = image.AddBlock(BytesOf("x"));
        image.AddNode(1, 0, image.AddSubnodes(std::vector<Subnode>{{0x25, data}, {0x45, data, data | 2}}));
        image.AddNode(2, 0,
                      image.AddSubnodes(std::vector<std::vector<Subnode>>{{{0x25, data}, {0x45, data}},
                                                                          {{0x65, data}, {0x85, data}}}));
        image.AddNode(3, 0);
        Opened file(image.Build());
        const std::vector<std::vector<std::uint32_t>> expected = {{0x25, 0x45}, {0x25, 0x45, 0x65, 0x85}, {}};
        for (std::uint32_t node = 1; node <= 3; ++node) {
            const pst::SubnodeTree tree = file->Subnodes(file.Node(node));
            std::vector<std::uint32_t> ids;
            tree.ForEach([&](const NodeEntry& entry) {
                ids.push_back(entry.id.value);
                return true;
            });
            EXPECT_EQ(ids, expected[node - 1]);
            for (const std::uint32_t id : ids) {
                ASSERT_TRUE(tree.Find(NodeId{id}));
                EXPECT_EQ(tree.Find(NodeId{id})->data.value, data);
            }
            for (const std::uint32_t absent : {0U, 0x24U, 0x55U, 0x1000U}) {
                EXPECT_TRUE(tree.Find(NodeId{absent}).IsNotFound());
            }
        }
        EXPECT_TRUE(file.sink.problems.empty());
    }
}

TEST(SubnodeTree, ThatContradictsItselfIsReportedAndEnds) {
    struct Row {
        const char* name;
        std::function<std::uint64_t(ImageBuilder&)> root;
    };
    const Row rows[] = {
        {"data block", [](ImageBuilder& i) { return i.AddBlock(Pattern(50)); }},
        {"tree of data", [](ImageBuilder& i) { return i.AddTree(std::vector<std::uint64_t>{}, 0); }},
        {"count too high",
         [](ImageBuilder& i) { return i.AddInternal(ByteWriter().U8(2).U8(0).U16(9).PadTo(40).Take()); }},
        {"level 2", [](ImageBuilder& i) { return i.AddInternal(ByteWriter().U8(2).U8(2).U16(0).PadTo(40).Take()); }},
        {"its own child",
         [](ImageBuilder& i) { return i.AddInternal(ByteWriter().U8(2).U8(1).U16(1).U32(0).U64(0x25).U64(6).Take()); }},
        {"unknown", [](ImageBuilder&) { return std::uint64_t{0x9992}; }},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        ImageBuilder image(kUnicode);
        image.AddNode(kNode, 0, row.root(image));
        Opened file(image.Build());
        const pst::SubnodeTree tree = file->Subnodes(file.Node(kNode));
        const auto found = tree.Find(NodeId{0x25});
        ASSERT_FALSE(found);
        EXPECT_EQ(found.Failure().code, ErrorCode::Corrupt) << found.Failure().text;
        unsigned visits = 0;
        tree.ForEach([&](const NodeEntry&) { return ++visits < 1000; });
        EXPECT_EQ(visits, 0U);
        EXPECT_EQ(file.sink.problems.size(), 1U);
    }
}

}  // namespace
}  // namespace localmapi::testing
