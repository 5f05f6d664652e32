// Recipients, attachments and messages within messages, in files made by hand.
#include "localmapi/msg/MessageOnStorage.h"
#include "mapi/PropTags.h"
#include "tests/localmapi/msg/support/Files.h"
#include "tests/localmapi/pst/support/RecordingSink.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace localmapi::testing {
namespace {

constexpr std::size_t kRootHeader = 32;
constexpr std::size_t kEmbeddedHeader = 24;
constexpr std::size_t kPartHeader = 8;

const WideView kObject = "__substg1.0_3701000D"_w;
const WideView kData = "__substg1.0_37010102"_w;

// A part with a name, PR_DISPLAY_NAME, and what else is told.
ComPtr<IStorage> PutPart(IStorage& message, WideView storage, WideView name, std::vector<EntryBytes> entries = {}) {
    auto part = PutStorage(message, storage);
    entries.push_back({PR_DISPLAY_NAME_W, name.size() * 2 + 2});
    PutProperties(*part, kPartHeader, entries);
    PutStream(*part, "__substg1.0_3001001F"_w, BytesOfText(name));
    return part;
}

TEST(MessageRecipients, StandInTheOrderOfTheirNumbers) {
    MemoryFile file;
    {
        const auto root = file.Create();
        // The counts lie.
        PutStream(*root, "__properties_version1.0"_w, PropertyStreamOf(kRootHeader, {{0x0E070003, 1}}, {9, 9, 0, 77}));
        PutPart(*root, "__recip_version1.0_#0000000A"_w, "third"_w);
        PutPart(*root, "__recip_version1.0_#00000002"_w, "first"_w, {{PR_ROWID, 77}, {PR_RECIPIENT_TYPE, 2}});
        PutPart(*root, "__recip_version1.0_#0000000b"_w, "fourth"_w);
        PutPart(*root, "__recip_version1.0_#who"_w, "last, without a number"_w);
        PutPart(*root, "__RECIP_version1.0_#00000003"_w, "second"_w);
        PutStream(*root, "__recip_version1.0_#00000004"_w, BytesOfText("no storage"_w));
    }
    const auto message = Opened(file.Open());
    const auto rows = message->Recipients();
    ASSERT_EQ(rows->Count(), 5U);
    const char* names[] = {"w'first'", "w'second'", "w'third'", "w'fourth'", "w'last, without a number'"};
    for (std::size_t row = 0; row < 5; ++row) {
        EXPECT_EQ(CellOf(*rows, row, PROP_ID(PR_DISPLAY_NAME)), names[row]);
        EXPECT_EQ(CellOf(*rows, row, PROP_ID(PR_ROWID)), std::to_string(row));
    }
    EXPECT_EQ(CellOf(*rows, 0, PROP_ID(PR_RECIPIENT_TYPE)), "2");
    EXPECT_EQ(CellOf(*rows, 1, PROP_ID(PR_RECIPIENT_TYPE)), "not found");
    EXPECT_EQ(CellOf(*rows, 5, PROP_ID(PR_ROWID)), "not found");
}

TEST(MessageRecipients, HaveTheColumnsOfAnyRowAndBoundedCells) {
    constexpr std::size_t kMost = RowSource::kLargestCell;
    MemoryFile file;
    {
        const auto root = file.Create();
        PutProperties(*root, kRootHeader, {});
        PutPart(*root, "__recip_version1.0_#00000000"_w, "a"_w);
        const auto part =
            PutPart(*root, "__recip_version1.0_#00000001"_w, "b"_w, {{0x5FF10102, kMost}, {0x5FF20102, kMost + 1}});
        PutStream(*part, "__substg1.0_5FF10102"_w, Bytes(kMost));
        PutStream(*part, "__substg1.0_5FF20102"_w, Bytes(kMost + 1));
        PutStorage(*root, "__recip_version1.0_#00000002"_w);
    }
    const auto rows = Opened(file.Open())->Recipients();
    const std::vector<ULONG> columns = rows->Columns();
    for (const ULONG tag : {ULONG{0x5FF10102}, ULONG{0x5FF20102}, PR_ROWID, PR_DISPLAY_NAME}) {
        EXPECT_EQ(std::count(columns.begin(), columns.end(), tag), 1) << tag;
    }
    EXPECT_EQ(CellOf(*rows, 1, 0x5FF1).size(), 1 + 2 * kMost);
    EXPECT_EQ(CellOf(*rows, 1, 0x5FF2), "too large");
    EXPECT_EQ(CellOf(*rows, 2, PROP_ID(PR_DISPLAY_NAME)), "not found");
    EXPECT_EQ(CellOf(*rows, 2, PROP_ID(PR_ROWID)), "2");
}

// What the attachment turns out to be.
std::string KindOf(AttachmentSource& attachment) {
    const auto message = attachment.OpenMessage();
    const auto storage = attachment.OpenStorage();
    return ValueOf(attachment, PROP_ID(PR_ATTACH_METHOD))
           + (message ? ", message" : ", " + NameOf(message.Failure().code))
           + (storage ? ", storage" : ", " + NameOf(storage.Failure().code));
}

TEST(MessageAttachments, AreWhatTheirContentIs) {
    MemoryFile inner;
    PutStream(*inner.Create(), "\1Ole10Native"_w, BytesOfText("x"_w));

    enum class Content { None, Bytes, File, Message, NamesOnly, Object, Empty };
    struct Row {
        const char* name;
        std::vector<EntryBytes> entries;
        Content content;
        const char* kind;
    };
    const EntryBytes object{0x3701000D, 0xAB01FFFFFFFF};
    const EntryBytes data{0x37010102, 4};
    const auto method = [](std::uint64_t number) { return EntryBytes{PR_ATTACH_METHOD, number}; };
    const Row rows[] = {
        {"bytes", {method(1), data}, Content::Bytes, "1, not found, not found"},
        {"bytes without a method", {data}, Content::Bytes, "1, not found, not found"},
        {"nothing", {method(7)}, Content::None, "7, not found, not found"},
        {"nothing at all", {}, Content::None, "not found, not found, not found"},
        {"a message", {method(5), object}, Content::Message, "5, message, not found"},
        {"a message called an object", {method(6), object}, Content::Message, "5, message, not found"},
        {"a message without method or entry", {}, Content::Message, "5, message, not found"},
        {"a message without a property stream", {method(5), object}, Content::NamesOnly, "5, message, not found"},
        {"a message with nothing in it", {method(5), object}, Content::Empty, "5, message, not found"},
        {"an object", {method(6), object}, Content::Object, "6, not found, storage"},
        {"an object called a message", {method(5), object}, Content::Object, "6, not found, storage"},
        {"an object with nothing in it", {method(6), object}, Content::Empty, "6, not found, storage"},
        {"an object kept as bytes", {method(6), data}, Content::File, "6, not found, storage"},
        {"bytes that are no object", {method(6), data}, Content::Bytes, "6, not found, corrupt"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        MemoryFile file;
        {
            const auto root = file.Create();
            PutProperties(*root, kRootHeader, {});
            const auto part = PutPart(*root, "__attach_version1.0_#00000003"_w, "a"_w, row.entries);
            if (row.content == Content::Bytes) {
                PutStream(*part, kData, BytesOfText("xy"_w));
            } else if (row.content == Content::File) {
                PutStream(*part, kData, inner.Content());
            } else if (row.content != Content::None) {
                const auto within = PutStorage(*part, kObject);
                if (row.content == Content::Message) {
                    PutProperties(*within, kEmbeddedHeader, {{0x0E070003, 4}});
                } else if (row.content == Content::NamesOnly) {
                    PutStream(*within, "__substg1.0_0037001F"_w, BytesOfText("x"_w));
                } else if (row.content == Content::Object) {
                    PutStream(*within, "\1Ole10Native"_w, BytesOfText("x"_w));
                }
            }
        }
        const auto message = Opened(file.Open());
        ASSERT_EQ(message->AttachmentNumbers(), std::vector<ULONG>{3});
        const auto attachment = message->OpenAttachment(3);
        ASSERT_TRUE(attachment);
        EXPECT_EQ(KindOf(**attachment), row.kind);
        EXPECT_EQ(ValueOf(**attachment, PROP_ID(PR_ATTACH_NUM)), "3");
        EXPECT_EQ(CellOf(*message->Attachments(), 0, PROP_ID(PR_ATTACH_NUM)), "3");
    }
}

TEST(MessageAttachments, NumbersAreThoseOfTheStoragesWhateverTheySayThemselves) {
    MemoryFile file;
    {
        const auto root = file.Create();
        PutProperties(*root, kRootHeader, {});
        PutPart(*root, "__attach_version1.0_#00000004"_w, "four"_w, {{PR_ATTACH_NUM, 1}});
        PutPart(*root, "__attach_version1.0_#00000001"_w, "one"_w, {{PR_ATTACH_NUM, 1}});
        PutPart(*root, "__attach_version1.0_#1"_w, "one too"_w);
        PutPart(*root, "__attach_version1.0_#FFFFFFFF"_w, "far too many"_w);
    }
    const auto message = Opened(file.Open());
    const std::vector<ULONG> numbers = message->AttachmentNumbers();
    ASSERT_EQ(numbers.size(), 4U);
    const auto rows = message->Attachments();
    std::vector<std::string> names;
    for (std::size_t row = 0; row < numbers.size(); ++row) {
        const auto attachment = message->OpenAttachment(numbers[row]);
        ASSERT_TRUE(attachment);
        names.push_back(ValueOf(**attachment, PROP_ID(PR_DISPLAY_NAME)));
        EXPECT_EQ(CellOf(*rows, row, PROP_ID(PR_DISPLAY_NAME)), names.back());
        EXPECT_EQ(CellOf(*rows, row, PROP_ID(PR_ATTACH_NUM)), std::to_string(numbers[row]));
    }
    // The directory has shorter names first; the others get the numbers behind the last.
    const bool shortNameWins = names[0] == "w'one too'";
    EXPECT_EQ(names[0], shortNameWins ? "w'one too'" : "w'one'");
    EXPECT_EQ(names[1], "w'four'");
    EXPECT_EQ(numbers[2], 5U);
    EXPECT_EQ(numbers[3], 6U);
    const auto none = message->OpenAttachment(2);
    ASSERT_FALSE(none);
    EXPECT_EQ(none.Failure().code, ErrorCode::NotFound);
}

TEST(MessageAttachments, MessagesAreFollowedDownToALimit) {
    MemoryFile file;
    {
        std::vector<ComPtr<IStorage>> open{file.Create()};
        PutProperties(*open.back(), kRootHeader, {});
        for (int level = 0; level < 40; ++level) {
            open.push_back(PutStorage(*open.back(), "__attach_version1.0_#00000000"_w));
            open.push_back(PutStorage(*open.back(), kObject));
            PutProperties(*open.back(), kEmbeddedHeader, {});
        }
        while (!open.empty()) {
            open.pop_back();
        }
    }
    std::vector<std::unique_ptr<MessageSource>> messages;
    std::vector<std::unique_ptr<AttachmentSource>> attachments;
    messages.push_back(Opened(file.Open()));
    std::string end;
    while (end.empty()) {
        auto attachment = messages.back()->OpenAttachment(0);
        ASSERT_TRUE(attachment);
        attachments.push_back(*std::move(attachment));
        auto within = attachments.back()->OpenMessage();
        if (within) {
            messages.push_back(*std::move(within));
        } else {
            end = NameOf(within.Failure().code);
        }
    }
    EXPECT_EQ(end, "too large");
    EXPECT_EQ(messages.size(), msg::kMostNesting);
    EXPECT_EQ(messages.back()->Depth(), msg::kMostNesting - 1);
    while (!messages.empty()) {
        attachments.pop_back();
        messages.pop_back();
    }
}

TEST(MessageAttachments, MessagesInThemHaveTheNamesOfTheFileAndTheirOwnPage) {
    MemoryFile file;
    {
        const auto root = file.Create();
        PutProperties(*root, kRootHeader, {{PR_MESSAGE_CODEPAGE, 1251}});
        const auto names = PutStorage(*root, "__nameid_version1.0"_w);
        PutStream(*names, "__substg1.0_00020102"_w, {});
        PutStream(*names, "__substg1.0_00030102"_w, BytesOfText(std::string_view("\7\0\0\0\2\0\0\0", 8)));
        PutStream(*names, "__substg1.0_00040102"_w, {});
        for (const WideView number :
             {WideView("__attach_version1.0_#00000000"_w), WideView("__attach_version1.0_#00000001"_w)}) {
            const auto part = PutPart(*root, number, "a"_w);
            const auto within = PutStorage(*part, kObject);
            const bool isFirst = number.back() == '0';
            PutProperties(*within, kEmbeddedHeader,
                          isFirst ? std::vector<EntryBytes>{{PR_MESSAGE_CODEPAGE, 932}} : std::vector<EntryBytes>{});
        }
    }
    const auto message = Opened(file.Open());
    EXPECT_EQ(message->CodePage(), 1251U);
    const UINT pages[] = {932, 1251};
    for (const ULONG number : {0U, 1U}) {
        // Opened twice: several readers may have one at a time.
        const auto attachment = message->OpenAttachment(number);
        const auto again = message->OpenAttachment(number);
        ASSERT_TRUE(attachment && again);
        const auto within = (*attachment)->OpenMessage();
        ASSERT_TRUE(within && (*again)->OpenMessage());
        EXPECT_EQ((*within)->Depth(), 1U);
        EXPECT_EQ((*within)->CodePage(), pages[number]);
        EXPECT_EQ((*attachment)->CodePage(), 1251U);
        ASSERT_NE((*within)->Names().NameOf(0x8000), nullptr);
        EXPECT_EQ((*within)->Names().NameOf(0x8000)->number, 7U);
    }
}

}  // namespace
}  // namespace localmapi::testing
