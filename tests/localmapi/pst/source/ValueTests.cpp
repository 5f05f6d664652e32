// Values of objects: every type, what is lost or too large, and what is made from other facts.
#include "localmapi/pst/source/OpenStoreSource.h"
#include "mapi/PropTags.h"
#include "tests/localmapi/pst/source/SourceReading.h"
#include "tests/localmapi/pst/support/StoreBuilder.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace localmapi::testing {
namespace {

constexpr std::uint32_t kMessage = 0x200004;

Bytes Mailbox(const std::vector<Property>& properties, const Form& form = kUnicode) {
    StoreBuilder builder(form);
    builder.AddMessage(kMessage, kTop, AddProperties(builder.image, properties));
    return builder.Build();
}

TEST(StoredValue, KeepsItsTypeAndItsBytes) {
    const Bytes texts = ByteWriter().U32(2).U32(12).U32(16).Append(Utf16("ab")).Append(Utf16("c")).Take();
    const Bytes narrow = ByteWriter().U32(2).U32(12).U32(14).Append(BytesOf("ab")).Append(BytesOf("c")).Take();
    struct Row {
        const char* name;
        Property stored;
        std::string shown;
    };
    const Row rows[] = {
        {"short", {0x80010002, {std::byte{0xFE}, std::byte{0xFF}}}, "80010002:FEFF"},
        {"long", {0x80010003, Number32(0x12345678)}, "80010003:78563412"},
        {"float", {0x80010004, Number32(0x3F800000)}, "80010004:0000803F"},
        {"double", {0x80010005, Pattern(8)}, Shown(0x80010005, Pattern(8))},
        {"currency", {0x80010006, Pattern(8)}, Shown(0x80010006, Pattern(8))},
        {"true", {0x8001000B, {std::byte{1}}}, "8001000B:01"},
        {"false", {0x8001000B, {std::byte{0}}}, "8001000B:00"},
        {"large", {0x80010014, Pattern(8)}, Shown(0x80010014, Pattern(8))},
        {"time", {0x80010040, Pattern(8)}, Shown(0x80010040, Pattern(8))},
        {"guid", {0x80010048, Pattern(16)}, Shown(0x80010048, Pattern(16))},
        {"binary", {0x80010102, Pattern(5000)}, Shown(0x80010102, Pattern(5000))},
        {"empty binary", {0x80010102, {}}, "80010102:"},
        {"wide", {0x8001001F, Utf16("text")}, Shown(0x8001001F, Utf16("text"))},
        {"wide, terminated",
         {0x8001001F, ByteWriter().Append(Utf16("text")).U16(0).Take()},
         Shown(0x8001001F, Utf16("text"))},
        {"wide that is narrow", {0x8001001F, BytesOf("abc")}, Shown(0x8001001F, Utf16("abc"))},
        {"narrow", {0x8001001E, BytesOf("text")}, Shown(0x8001001E, BytesOf("text"))},
        {"server's entry id", {0x800100FB, Pattern(21)}, Shown(0x80010102, Pattern(21))},
        {"restriction", {0x800100FD, Pattern(30)}, Shown(0x80010102, Pattern(30))},
        {"error", {0x8001000A, Number32(5)}, "not found"},
        {"shorts",
         {0x80011002, Pattern(4)},
         "80011002:" + Shown(0, Pattern(4)).substr(9, 4) + "," + Shown(0, Pattern(4)).substr(13)},
        {"wide texts", {0x8001101F, texts}, "8001101F:61006200,6300"},
        {"narrow texts", {0x8001101E, narrow}, "8001101E:6162,63"},
        {"binaries", {0x80011102, narrow}, "80011102:6162,63"},
        {"no texts", {0x8001101F, Number32(0)}, "8001101F:"},
        {"offsets that lie", {0x8001101F, ByteWriter().U32(1).U32(400).Take()}, "corrupt"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        OpenedSource store(Mailbox({row.stored}));
        const auto message = store.Message(kMessage);
        EXPECT_EQ(Shown(*message, 0x8001), row.shown);
        const bool isOffered = row.shown != "not found";
        EXPECT_EQ(message->TagOf(0x8001).has_value(), isOffered);
        if (isOffered && row.shown != "corrupt") {
            EXPECT_EQ(Shown(*message->TagOf(0x8001), {}), row.shown.substr(0, 9));
        }
    }
}

TEST(StoredValue, ByStreamIsWhatItIsByValue) {
    struct Row {
        const char* name;
        Property stored;
        std::string streamed;
        std::uint64_t limit;  // the largest below which the value does not come
    };
    const Row rows[] = {
        {"binary", {0x80010102, Pattern(20'000)}, Shown(0, Pattern(20'000)).substr(9), 19'999},
        {"wide, terminated",
         {0x8001001F, ByteWriter().Append(Utf16("text")).U16(0).Take()},
         Shown(0, Utf16("text")).substr(9),
         9},
        {"narrow", {0x8001001E, BytesOf("text")}, "74657874", 3},
        {"wide that is narrow", {0x8001001F, BytesOf("abc")}, "610062006300", 2},
        {"empty", {0x8001001F, {}}, "", UINT64_MAX},
        {"number", {0x80010003, Number32(1)}, "unsupported", UINT64_MAX},
        {"several", {0x80011003, Pattern(8)}, "unsupported", 7},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        OpenedSource store(Mailbox({row.stored}));
        const auto message = store.Message(kMessage);
        EXPECT_EQ(Streamed(*message, 0x8001), row.streamed);
        EXPECT_EQ(message->SizeOf(0x8001), row.streamed == "unsupported" ? 0U : row.streamed.size() / 2);
        if (row.limit != UINT64_MAX) {
            EXPECT_EQ(Shown(*message, 0x8001, row.limit), "too large");
            EXPECT_NE(Shown(*message, 0x8001, row.limit + 1), "too large");
        }
    }
    OpenedSource store(Mailbox({}));
    EXPECT_EQ(Streamed(*store.Message(kMessage), 0x8001), "not found");
}

// A value in a sub-node that a damaged file does not have any more.
TEST(StoredValue, ThatIsLostIsNotFound) {
    ImageBuilder image(kUnicode);
    HeapBuilder heap(image, 0xBC);
    HeapBuilder::Records records;
    records.emplace_back(ByteWriter().U16(0x1000).Take(), ByteWriter().U16(0x1F).U32(0x9F).Take());
    const NodeData node = heap.Finish(heap.AddTree(2, 6, records));
    image.AddNode(kMessage, node.data, node.subnodes, kTop);
    OpenedSource store(image.Build());
    const auto message = store.Message(kMessage);
    EXPECT_EQ(message->TagOf(0x1000), 0x1000001FU);
    EXPECT_EQ(Shown(*message, 0x1000), "not found");
    EXPECT_EQ(Streamed(*message, 0x1000), "not found");
}

TEST(Subject, ComesWithoutItsMarkAndInItsParts) {
    struct Row {
        const char* name;
        std::string stored;
        const char* subject;
        const char* prefix;
        const char* normalized;
    };
    const Row rows[] = {
        {"marked",
         "\x01\x05"
         "FW: x",
         "FW: x", "FW: ", "x"},
        {"marked, no prefix",
         "\x01\x01"
         "FW: x",
         "FW: x", "", "FW: x"},
        {"marked, a prefix of its own",
         "\x01\x0A"
         "Forward: x",
         "Forward: x", "Forward: ", "x"},
        {"a mark that lies",
         "\x01\x7F"
         "x",
         "x", "", "x"},
        {"not marked", "RE: x", "RE: x", "RE: ", "x"},
        {"not marked, no prefix", "Note: x", "Note: x", "", "Note: x"},
        {"not marked, no space", "RE:x", "RE:x", "", "RE:x"},
        {"not marked, a digit", "R2: x", "R2: x", "", "R2: x"},
        {"a colon alone", ": x", ": x", "", ": x"},
        {"empty", "", "", "", ""},
    };
    for (const Row& row : rows) {
        for (const bool isWide : {true, false}) {
            SCOPED_TRACE(std::string(row.name) + (isWide ? ", wide" : ", narrow"));
            OpenedSource store(
                Mailbox({{isWide ? PR_SUBJECT_W : PR_SUBJECT_A, isWide ? Utf16(row.stored) : BytesOf(row.stored)}}));
            const auto message = store.Message(kMessage);
            EXPECT_EQ(message->TagOf(0x0037), isWide ? PR_SUBJECT_W : PR_SUBJECT_A);
            EXPECT_EQ(TextOf(*message, 0x0037), row.subject);
            EXPECT_EQ(TextOf(*message, 0x003D), row.prefix);
            EXPECT_EQ(TextOf(*message, 0x0E1D), row.normalized);
            EXPECT_EQ(message->SizeOf(0x0037), std::string_view(row.subject).size() * (isWide ? 2 : 1));
        }
    }
    OpenedSource store(
        Mailbox({{0x003D001F, Utf16("own")}, {0x0E1D001F, Utf16("own too")}, {PR_SUBJECT_W, Utf16("RE: x")}}));
    EXPECT_EQ(TextOf(*store.Message(kMessage), 0x003D), "own");
    EXPECT_EQ(TextOf(*store.Message(kMessage), 0x0E1D), "own too");
    OpenedSource none(Mailbox({}));
    EXPECT_EQ(TextOf(*none.Message(kMessage), 0x0E1D), "not found");
}

// The row of the message has the time first; then its own, in this order.
TEST(LastModification, IsTheFirstTimeThatThereIs) {
    constexpr ULONG kChanged = 0x30080040, kCreated = 0x30070040, kDelivered = 0x0E060040, kSent = 0x00390040;
    const auto time = [](unsigned n) { return ByteWriter().U64(0x01D0000000000000 + n).Take(); };
    struct Row {
        const char* name;
        std::vector<Property> object;
        std::vector<Property> cells;
        std::string expected;
    };
    const Row rows[] = {
        {"its own", {{kSent, time(1)}, {kCreated, time(2)}, {kChanged, time(3)}}, {}, Shown(kChanged, time(3))},
        {"that of the row", {{kSent, time(1)}, {kCreated, time(2)}}, {{kChanged, time(4)}}, Shown(kChanged, time(4))},
        {"creation", {{kSent, time(1)}, {kDelivered, time(5)}, {kCreated, time(2)}}, {}, Shown(kChanged, time(2))},
        {"delivery", {{kSent, time(1)}, {kDelivered, time(5)}}, {}, Shown(kChanged, time(5))},
        {"submission", {{kSent, time(1)}}, {}, Shown(kChanged, time(1))},
        {"none", {}, {}, Shown(kChanged, ByteWriter().U64(0).Take())},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        StoreBuilder builder(kUnicode);
        builder.replaced[(kTop & ~0x1FU) | 0x0E] =
            AddTable(builder.image, {0x0037001F, kChanged}, {{kMessage, row.cells}});
        builder.AddMessage(kMessage, kTop, AddProperties(builder.image, row.object));
        OpenedSource store(builder.Build());
        const auto message = store.Message(kMessage);
        EXPECT_EQ(Shown(*message, 0x3008), row.expected);
        EXPECT_EQ(message->TagOf(0x3008), kChanged);
        EXPECT_EQ(Shown(*store.Folder(kTop)->Messages(), 0, 0x3008), row.expected);
    }
}

TEST(Message, TellsOfItsRecipientsAndAttachmentsWhatItDoesNotStore) {
    const auto recipient = [](std::uint32_t id, unsigned type, const char* name) {
        return Row{id, {{0x0C150003, Number32(type)}, {0x3001001F, Utf16(name)}}};
    };
    StoreBuilder builder(kUnicode);
    const NodeData attachment = AddProperties(builder.image, {{0x37010102, Pattern(500)}, {0x0E200003, Number32(700)}});
    builder.AddMessage(
        kMessage, kTop,
        AddMessageNode(builder.image, "s", {attachment},
                       {recipient(1, 1, "A"), recipient(2, 2, "C"), recipient(3, 1, "B"), recipient(4, 1, "")}));
    builder.AddMessage(0x200024, kTop, AddMessageNode(builder.image, "s"));
    builder.AddMessage(0x200044, kTop,
                       AddProperties(builder.image, {{0x0E04001F, Utf16("stored")}, {0x0E1B000B, {std::byte{1}}}}));
    OpenedSource store(builder.Build());
    const auto full = store.Message(kMessage);
    EXPECT_EQ(TextOf(*full, 0x0E04), "A; B");
    EXPECT_EQ(TextOf(*full, 0x0E03), "C");
    EXPECT_EQ(TextOf(*full, 0x0E02), "");
    EXPECT_EQ(Shown(*full, 0x0E1B), "0E1B000B:01");
    // The class and the subject in UTF-16, and the attachment's size.
    EXPECT_EQ(Shown(*full, 0x0E08), Shown(0x0E080003, Number32(16 + 2 + 700)));
    const auto empty = store.Message(0x200024);
    EXPECT_EQ(TextOf(*empty, 0x0E04), "");
    EXPECT_EQ(Shown(*empty, 0x0E1B), "0E1B000B:00");
    EXPECT_EQ(TextOf(*store.Message(0x200044), 0x0E04), "stored");
    EXPECT_EQ(Shown(*store.Message(0x200044), 0x0E1B), "0E1B000B:01");
    EXPECT_EQ(Shown(*store.Message(0x200044), 0x001A), "not found") << "a class is not made up";
}

}  // namespace
}  // namespace localmapi::testing
