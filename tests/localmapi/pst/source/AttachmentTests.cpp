// Recipients and attachments: their rows, contents, embedded messages and objects.
#include "localmapi/pst/source/OpenStoreSource.h"
#include "mapi/PropTags.h"
#include "platform/GlobalMemory.h"
#include "platform/Storage.h"
#include "tests/localmapi/pst/source/SourceReading.h"
#include "tests/localmapi/pst/support/StoreBuilder.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

namespace localmapi::testing {
namespace {

constexpr std::uint32_t kMessage = 0x200004;
constexpr ULONG kMethod = 0x37050003, kContent = 0x37010102, kObject = 0x3701000D;

Bytes Reference(std::uint32_t node, std::uint32_t size) {
    return ByteWriter().U32(node).U32(size).Take();
}

// A compound file with a stream "Contents".
Bytes CompoundFile(ByteView contents) {
    ComPtr<ILockBytes> bytes;
    ComPtr<IStorage> storage;
    ComPtr<IStream> stream;
    EXPECT_EQ(CreateILockBytesOnHGlobal(nullptr, TRUE, bytes.Receive()), S_OK);
    constexpr DWORD kMode = STGM_CREATE | STGM_READWRITE | STGM_SHARE_EXCLUSIVE;
    EXPECT_EQ(StgCreateDocfileOnILockBytes(bytes.Get(), kMode, 0, storage.Receive()), S_OK);
    EXPECT_EQ(storage->CreateStream("Contents"_w, kMode, 0, 0, stream.Receive()), S_OK);
    EXPECT_EQ(stream->Write(contents.Data(), static_cast<ULONG>(contents.Size()), nullptr), S_OK);
    stream = nullptr;
    EXPECT_EQ(storage->Commit(STGC_DEFAULT), S_OK);
    storage = nullptr;
    STATSTG stat{};
    EXPECT_EQ(bytes->Stat(&stat, STATFLAG_NONAME), S_OK);
    Bytes file(static_cast<std::size_t>(stat.cbSize.QuadPart));
    EXPECT_EQ(bytes->ReadAt({}, file.data(), static_cast<ULONG>(file.size()), nullptr), S_OK);
    return file;
}

TEST(Attachment, IsTaggedAndStreamedByWhatItHolds) {
    struct Case {
        const char* name;
        std::vector<Property> properties;
        std::vector<std::pair<std::uint32_t, int>> subnodes;  // id, and 0 for plain data or 1 for a message
        std::string value;
        std::string streamed;
        std::string method;
        std::string size;
    };
    const std::string plain = "706C61696E";
    const Case cases[] = {
        {"by value",
         {{kMethod, Number32(1)}, {kContent, BytesOf("plain")}},
         {},
         "37010102:" + plain,
         plain,
         "37050003:01000000",
         "0E200003:05000000"},
        {"by value, in a node",
         {{kMethod, Number32(1)}, {kObject, Reference(0x8029, 5)}},
         {{0x8029, 0}},
         "37010102:" + plain,
         plain,
         "37050003:01000000",
         "0E200003:05000000"},
        {"nothing by value",
         {{kMethod, Number32(1)}},
         {},
         "not found",
         "not found",
         "37050003:01000000",
         "0E200003:00000000"},
        {"an object",
         {{kMethod, Number32(6)}, {kObject, Reference(0x8029, 5)}},
         {{0x8029, 0}},
         "3701000D:",
         plain,
         "37050003:06000000",
         "0E200003:05000000"},
        {"a message, without a method",
         {{kObject, Reference(0x8024, 99)}},
         {{0x8024, 1}},
         "3701000D:",
         "unsupported",
         "37050003:05000000",
         "0E200003:63000000"},
        {"a reference",
         {{kMethod, Number32(4)}, {0x0E200003, Number32(3)}},
         {},
         "not found",
         "not found",
         "37050003:04000000",
         "0E200003:03000000"},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.name);
        StoreBuilder builder(kUnicode);
        std::vector<std::pair<std::uint32_t, NodeData>> subnodes;
        for (const auto& [id, kind] : test.subnodes) {
            subnodes.emplace_back(id, kind == 1 ? AddMessageNode(builder.image, "inner")
                                                : NodeData{builder.image.AddBlock(BytesOf("plain"))});
        }
        const NodeData attachment = AddProperties(builder.image, test.properties, subnodes);
        builder.AddMessage(kMessage, kTop, AddMessageNode(builder.image, "outer", {attachment}));
        OpenedSource store(builder.Build());
        const auto message = store.Message(kMessage);
        auto opened = message->OpenAttachment(0);
        ASSERT_TRUE(opened) << opened.Failure().text;
        EXPECT_EQ(Shown(**opened, 0x3701), test.value);
        EXPECT_EQ(Streamed(**opened, 0x3701), test.streamed);
        EXPECT_EQ(Shown(**opened, 0x3705), test.method);
        EXPECT_EQ(Shown(**opened, 0x0E20), test.size);
        EXPECT_EQ((*opened)->SizeOf(0x3701), test.value == "not found"          ? 0U
                                             : test.size == "0E200003:63000000" ? 99U
                                                                                : 5U);
        const auto inner = (*opened)->OpenMessage();
        EXPECT_EQ(static_cast<bool>(inner), test.streamed == "unsupported");
        if (inner) {
            EXPECT_EQ((*inner)->Depth(), 1U);
            EXPECT_EQ(TextOf(**inner, 0x0037), "inner");
        }
        if (test.method != "37050003:06000000") {
            EXPECT_TRUE((*opened)->OpenStorage().IsNotFound());
        } else {
            const auto storage = (*opened)->OpenStorage();
            ASSERT_FALSE(storage) << "plain text is no compound file";
            EXPECT_EQ(storage.Failure().code, ErrorCode::Corrupt);
        }
    }
}

TEST(Attachment, OpensItsObjectAsAStorageThatOutlivesTheStore) {
    const Bytes contents = Pattern(20'000);
    StoreBuilder builder(kUnicode);
    const Bytes file = CompoundFile(contents);
    const NodeData attachment = AddProperties(
        builder.image, {{kMethod, Number32(6)}, {kObject, Reference(0x8029, static_cast<std::uint32_t>(file.size()))}},
        {{0x8029, NodeData{builder.image.AddData(file)}}});
    builder.AddMessage(kMessage, kTop, AddMessageNode(builder.image, "outer", {attachment}));
    OpenedSource store(builder.Build());
    ComPtr<IStorage> storage;
    {
        auto opened = store.Message(kMessage)->OpenAttachment(0);
        ASSERT_TRUE(opened);
        auto given = (*opened)->OpenStorage();
        ASSERT_TRUE(given) << given.Failure().text;
        storage = *given;
    }
    store.source.reset();
    ComPtr<IStream> stream;
    ASSERT_EQ(storage->OpenStream("Contents"_w, nullptr, STGM_READ | STGM_SHARE_EXCLUSIVE, 0, stream.Receive()), S_OK);
    Bytes read(contents.size());
    ULONG got = 0;
    ASSERT_EQ(stream->Read(read.data(), static_cast<ULONG>(read.size()), &got), S_OK);
    EXPECT_EQ(read, contents);
}

TEST(AttachmentRows, StandInTheOrderOfTheNumbersAndKeepWhatTheTableHas) {
    StoreBuilder builder(kUnicode);
    const auto attachment = [&](const char* name, unsigned stored) {
        return AddProperties(builder.image, {{0x3707001F, Utf16(name)}, {0x0E210003, Number32(stored)}});
    };
    // The number that an attachment stores is not the one that it is known by.
    const NodeData node = AddMessageNode(builder.image, "s", {attachment("first", 9), attachment("second", 0)});
    builder.AddMessage(kMessage, kTop, node);
    const NodeData table = AddTable(builder.image, {0x0E200003, 0x3704001F},
                                    {{0x8025, {{0x0E200003, Number32(7)}, {0x3704001F, Utf16("1st")}}}});
    builder.AddMessage(0x200024, kTop, AddProperties(builder.image, {}, {{0x671, table}}));
    OpenedSource store(builder.Build());
    const auto message = store.Message(kMessage);
    EXPECT_EQ(message->AttachmentNumbers(), (std::vector<ULONG>{0, 1}));
    const auto rows = message->Attachments();
    ASSERT_EQ(rows->Count(), 2U);
    EXPECT_EQ(Shown(*rows, 1, 0x0E21), "0E210003:01000000");
    EXPECT_EQ(Shown(*rows, 1, 0x3707), Shown(0x3707001F, Utf16("second")));
    EXPECT_EQ(Shown(*rows, 1, 0x0E20), "0E200003:07000000");
    EXPECT_EQ(Shown(*rows, 1, 0x0FFE), "0FFE0003:07000000");
    EXPECT_EQ(Shown(**message->OpenAttachment(1), 0x0E21), "0E210003:01000000");
    EXPECT_EQ(Shown(**message->OpenAttachment(1), 0x3707), Shown(0x3707001F, Utf16("second")));
    EXPECT_TRUE(message->OpenAttachment(2).IsNotFound());

    const auto lost = store.Message(0x200024);
    EXPECT_EQ(Shown(*lost->Attachments(), 0, 0x3704), Shown(0x3704001F, Utf16("1st")));
    EXPECT_EQ(Shown(*lost->Attachments(), 0, 0x3707), "not found");
    EXPECT_TRUE(lost->OpenAttachment(0).IsNotFound());
}

TEST(RecipientRows, HaveNumbersAndATypeOfTheirOwn) {
    StoreBuilder builder(kAnsi);
    const NodeData table = AddTable(builder.image, {0x0C150003, 0x3001001E, 0x0FFE0003},
                                    {{0x71, {{0x3001001E, BytesOf("B")}, {0x0FFE0003, Number32(8)}}},
                                     {0x2D, {{0x3001001E, BytesOf("A")}, {0x0C150003, Number32(2)}}}});
    builder.AddMessage(kMessage, kTop, AddProperties(builder.image, {{0x3FFD0003, Number32(1251)}}, {{0x692, table}}));
    OpenedSource store(builder.Build());
    const auto rows = store.Message(kMessage)->Recipients();
    ASSERT_EQ(rows->Count(), 2U);
    EXPECT_EQ(rows->CodePage(0), 1251U);
    EXPECT_EQ(Shown(*rows, 0, 0x3001), "3001001E:41");
    EXPECT_EQ(Shown(*rows, 0, 0x0C15), "0C150003:02000000");
    EXPECT_EQ(Shown(*rows, 0, 0x0FFE), "0FFE0003:06000000");
    EXPECT_EQ(Shown(*rows, 1, 0x0FFE), "0FFE0003:08000000");
    EXPECT_EQ(Shown(*rows, 1, 0x3000), "30000003:01000000");
    EXPECT_EQ(Shown(*rows, 1, 0x0C15), "not found");
    EXPECT_EQ(rows->Columns()[2], 0x3001001EU) << "texts as they are stored";
    EXPECT_EQ(TextOf(*store.Message(kMessage), 0x0E03), "A");
}

}  // namespace
}  // namespace localmapi::testing
