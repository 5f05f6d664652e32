// Messages, recipients, attachments and embedded messages.
#include "localmapi/pst/messaging/ItemText.h"
#include "localmapi/pst/messaging/PropertyIds.h"
#include "localmapi/pst/messaging/Store.h"
#include "mapi/MapiGuids.h"
#include "tests/localmapi/pst/support/Opened.h"
#include "tests/localmapi/pst/support/StoreBuilder.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace localmapi::testing {
namespace {

using pst::AttachMethod;
using pst::Message;
using pst::NodeId;

constexpr std::uint32_t kMessage = 0x200004;
constexpr std::uint32_t kMethod = 0x37050003;
constexpr std::uint32_t kContent = 0x37010102;
constexpr std::uint32_t kObject = 0x3701000D;
constexpr UINT kPage = 1252;

Result<Message> OpenMessage(Opened& file) {
    return Message::Open(*file, file.Node(kMessage), NodeId{kMessage}, kPage);
}

Bytes Reference(std::uint32_t node) {
    return ByteWriter().U32(node).U32(99).Take();
}

TEST(Message, GivesRecipientsInTheOrderOfTheirRows) {
    ImageBuilder image(kUnicode);
    const NodeData node = AddMessageNode(image, "s", {},
                                         {{0x71, {{0x3001001F, Utf16("third")}}},
                                          {0x1, {{0x3001001F, Utf16("first")}}},
                                          {0x2D, {{0x3001001F, Utf16("second")}}}});
    image.AddNode(kMessage, node.data, node.subnodes);
    Opened file(image.Build());
    auto message = OpenMessage(file);
    ASSERT_TRUE(message);
    auto table = message->OpenRecipients();
    ASSERT_TRUE(table);
    ASSERT_EQ(table->RowCount(), 3U);
    EXPECT_EQ(*table->Cell(0, 0x3001)->bytes.ReadAll(), Utf16("first"));
    EXPECT_EQ(*table->Cell(2, 0x3001)->bytes.ReadAll(), Utf16("third"));
    EXPECT_TRUE(message->OpenAttachmentTable().IsNotFound());
    EXPECT_TRUE(message->Attachments().empty());
    EXPECT_TRUE(file.sink.problems.empty());
}

TEST(Attachment, GivesItsContentByItsMethodOrByWhatIsThere) {
    struct Row {
        const char* name;
        std::vector<Property> properties;
        std::vector<std::pair<std::uint32_t, int>> subnodes;  // id, and 0 for plain data or 1 for a message
        AttachMethod method;
        std::optional<Bytes> content;
        bool isMessage = false;
    };
    const Row rows[] = {
        {"by value", {{kMethod, Number32(1)}, {kContent, Pattern(100)}}, {}, AttachMethod::ByValue, Pattern(100)},
        {"by value, large",
         {{kMethod, Number32(1)}, {kContent, Pattern(30'000)}},
         {},
         AttachMethod::ByValue,
         Pattern(30'000)},
        {"by value, nothing", {{kMethod, Number32(1)}}, {}, AttachMethod::ByValue, Bytes{}},
        {"by reference",
         {{kMethod, Number32(4)}, {0x370D001F, Utf16("\\\\server\\x")}},
         {},
         AttachMethod::ByReferenceOnly,
         std::nullopt},
        {"OLE in a node",
         {{kMethod, Number32(6)}, {kObject, Reference(0x8029)}},
         {{0x8029, 0}},
         AttachMethod::Ole,
         BytesOf("plain")},
        {"OLE by value", {{kMethod, Number32(6)}, {kContent, Pattern(50)}}, {}, AttachMethod::Ole, Pattern(50)},
        {"OLE, node missing",
         {{kMethod, Number32(6)}, {kObject, Reference(0x8049)}},
         {{0x8029, 0}},
         AttachMethod::Ole,
         std::nullopt},
        {"message",
         {{kMethod, Number32(5)}, {kObject, Reference(0x8024)}},
         {{0x8024, 1}},
         AttachMethod::EmbeddedMessage,
         std::nullopt,
         true},
        {"message, node missing",
         {{kMethod, Number32(5)}, {kObject, Reference(0x8044)}},
         {{0x8024, 1}},
         AttachMethod::EmbeddedMessage,
         std::nullopt},
        {"message, no object", {{kMethod, Number32(5)}}, {}, AttachMethod::EmbeddedMessage, std::nullopt},
        {"message that is none",
         {{kMethod, Number32(5)}, {kObject, Reference(0x8024)}},
         {{0x8024, 0}},
         AttachMethod::EmbeddedMessage,
         std::nullopt},
        {"no method, content", {{kContent, Pattern(9)}}, {}, AttachMethod::ByValue, Pattern(9)},
        {"no method, message",
         {{kObject, Reference(0x8024)}},
         {{0x8024, 1}},
         AttachMethod::EmbeddedMessage,
         std::nullopt,
         true},
        {"no method, object", {{kObject, Reference(0x8029)}}, {{0x8029, 0}}, AttachMethod::Ole, BytesOf("plain")},
        {"nothing", {}, {}, AttachMethod::None, std::nullopt},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        ImageBuilder image(kUnicode);
        std::vector<std::pair<std::uint32_t, NodeData>> subnodes;
        for (const auto& [id, kind] : row.subnodes) {
            subnodes.emplace_back(
                id, kind == 1 ? AddMessageNode(image, "inner") : NodeData{image.AddBlock(BytesOf("plain"))});
        }
        const NodeData node = AddMessageNode(image, "outer", {AddProperties(image, row.properties, subnodes)});
        image.AddNode(kMessage, node.data, node.subnodes);
        Opened file(image.Build());
        auto message = OpenMessage(file);
        ASSERT_TRUE(message);
        ASSERT_EQ(message->Attachments().size(), 1U);
        auto attachment = message->OpenAttachment(message->Attachments()[0]);
        ASSERT_TRUE(attachment);
        EXPECT_EQ(attachment->Method(), row.method);
        auto data = attachment->OpenData();
        ASSERT_EQ(static_cast<bool>(data), row.content.has_value());
        if (data) {
            EXPECT_EQ(*ReadWhole(*data), *row.content);
        }
        auto inner = attachment->OpenMessage();
        ASSERT_EQ(static_cast<bool>(inner), row.isMessage);
        if (inner) {
            EXPECT_EQ(inner->ReadSubject().text, "inner"_w);
        }
    }
}

TEST(Message, WithADamagedAttachmentTableStillHasItsAttachments) {
    ImageBuilder image(kUnicode);
    const NodeData one = AddProperties(image, {{kMethod, Number32(1)}, {kContent, Pattern(9)}});
    const NodeData node =
        AddProperties(image, {{0x001A001F, Utf16("IPM.Note")}},
                      {{0x671, {image.AddBlock(Pattern(200)), 0}}, {0x8025, one}, {0x8065, one}, {0x8044, one}});
    image.AddNode(kMessage, node.data, node.subnodes);
    Opened file(image.Build());
    auto message = OpenMessage(file);
    ASSERT_TRUE(message);
    EXPECT_EQ(message->Attachments(), (std::vector<NodeId>{NodeId{0x8025}, NodeId{0x8065}}));
    EXPECT_EQ(file.sink.Count("the attachment table is damaged"), 1);
}

// The attachment holds the message that holds the attachment: the list of its sub-nodes is the message's own.
TEST(Message, ThatHoldsItselfEndsAtTheLimit) {
    ImageBuilder image(kUnicode);
    const NodeData attachment = AddProperties(image, {{kMethod, Number32(5)}, {kObject, Reference(0x8024)}});
    const NodeData message = AddProperties(image, {{0x001A001F, Utf16("IPM.Note")}});
    const NodeData table = AddTable(image, {0x0E200003}, {{0x8025, {}}});
    // The list that is about to be written is the next block of the file.
    const std::uint64_t itself = (image.AddBlock({}) + 4) | 2;
    ASSERT_EQ(
        image.AddSubnodes(std::vector<Subnode>{
            {0x671, table.data, table.subnodes}, {0x8024, message.data, itself}, {0x8025, attachment.data, itself}}),
        itself);
    image.AddNode(kMessage, message.data, itself);
    Opened file(image.Build());
    std::optional<Message> current;
    {
        auto opened = OpenMessage(file);
        ASSERT_TRUE(opened);
        current.emplace(*std::move(opened));
    }
    unsigned depth = 0;
    for (;;) {
        auto held = current->OpenAttachment(NodeId{0x8025});
        ASSERT_TRUE(held);
        auto inner = held->OpenMessage();
        if (!inner) {
            EXPECT_EQ(inner.Failure().code, ErrorCode::TooLarge);
            break;
        }
        current.emplace(*std::move(inner));
        ASSERT_LT(++depth, 100U);
    }
    EXPECT_EQ(depth, Message::kMostNesting - 1);
}

TEST(ItemText, OfAMessageIsInThePageThatItsPropertiesTell) {
    struct Row {
        const char* name;
        std::vector<Property> properties;
        UINT page;
    };
    constexpr std::uint32_t kDeclared = 0x3FFD0003, kLocale = 0x3FF10003, kBody = 0x3FDE0003;
    const Row rows[] = {
        {"declared", {{kDeclared, Number32(932)}, {kLocale, Number32(1031)}}, 932},
        {"declared as UTF-16", {{kDeclared, Number32(1200)}, {kLocale, Number32(1049)}}, 1251},
        {"declared as a mail encoding", {{kDeclared, Number32(50220)}, {kLocale, Number32(1041)}}, 932},
        {"locale before body", {{kLocale, Number32(1031)}, {kBody, Number32(1251)}}, 1252},
        {"Taiwan", {{kLocale, Number32(1028)}}, 950},
        {"PRC", {{kLocale, Number32(2052)}}, 936},
        {"Korea", {{kLocale, Number32(1042)}}, 949},
        {"Serbian, Cyrillic", {{kLocale, Number32(3098)}}, 1251},
        {"Croatian", {{kLocale, Number32(1050)}}, 1250},
        {"no locale", {{kLocale, Number32(0)}, {kBody, Number32(28592)}}, 28592},
        {"body in UTF-8", {{kBody, Number32(65001)}}, 874},
        {"nothing", {}, 874},
    };
    for (const Row& row : rows) {
        ImageBuilder image(kAnsi);
        const NodeData node = AddProperties(image, row.properties);
        image.AddNode(kMessage, node.data, node.subnodes);
        Opened file(image.Build());
        auto message = Message::Open(*file, file.Node(kMessage), NodeId{kMessage}, 874);
        ASSERT_TRUE(message);
        EXPECT_EQ(message->CodePage(), row.page) << row.name;
    }
}

TEST(ItemText, OfASubjectIsFreedFromItsMark) {
    struct Row {
        const char* name;
        CStringW stored;
        CStringW text;
        std::size_t prefix;
    };
    const Row rows[] = {
        {"no mark", "FW: x"_w, "FW: x"_w, 0},
        {"a prefix", {1, 5, 'F', 'W', ':', ' ', 'x'}, "FW: x"_w, 4},
        {"no prefix", {1, 1, 'x'}, "x"_w, 0},
        {"longer than the text", {1, 9, 'x'}, "x"_w, 0},
        {"mark alone", {1, 1}, ""_w, 0},
        {"half a mark", {1}, {1}, 0},
        {"empty", {}, {}, 0},
    };
    for (const Row& row : rows) {
        const pst::Subject subject = pst::SplitSubject(row.stored);
        EXPECT_TRUE(subject.text == row.text) << row.name;
        EXPECT_EQ(subject.prefixLength, row.prefix) << row.name;
    }
}

}  // namespace
}  // namespace localmapi::testing
