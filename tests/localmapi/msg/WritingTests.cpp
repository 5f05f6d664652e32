// New messages: what is written reads back, and stands in the file as the format says.
#include "localmapi/props/MapiMemory.h"
#include "localmapi/props/Values.h"
#include "mapi/MapiGuids.h"
#include "mapi/PropTags.h"
#include "tests/localmapi/msg/support/Files.h"
#include "tests/localmapi/pst/support/RecordingSink.h"
#include "tests/localmapi/support/EveryValue.h"
#include "tests/localmapi/support/ValueText.h"

#include <gtest/gtest.h>

#include <array>
#include <map>
#include <string>
#include <vector>

namespace localmapi::testing {
namespace {

// Names are arrays of text; braces of temporaries of them are more than one compiler bears.
const WideView kProperties = "__properties_version1.0"_w;
const WideView kNames = "__nameid_version1.0"_w;
const WideView kFirstAttachment = "__attach_version1.0_#00000000"_w;
const WideView kObject = "__substg1.0_3701000D"_w;

void WriteWide(PropertySource& source, ULONG tag, WideView text) {
    Arena memory;
    const Status written = source.Write(WideValue(tag, text, memory));
    EXPECT_TRUE(written) << written.Failure().text;
}

void WriteLong(PropertySource& source, ULONG tag, std::int32_t number) {
    EXPECT_TRUE(source.Write(LongValue(tag, number)));
}

// The entries of a property stream, "tag area" each.
std::vector<std::string> EntriesIn(IStorage& storage, std::size_t header) {
    const Bytes bytes = StreamIn(storage, kProperties);
    const ByteView view(bytes);
    std::vector<std::string> entries;
    for (std::size_t at = header; view.Has(at, 16); at += 16) {
        char text[64];
        std::snprintf(text, sizeof text, "%08X %X %llX", static_cast<unsigned>(view.U32(at)),
                      static_cast<unsigned>(view.U32(at + 4)), static_cast<unsigned long long>(view.U64(at + 8)));
        entries.emplace_back(text);
    }
    return entries;
}

using Names = std::vector<std::string>;

// A message with a recipient, a file, and a message that holds an object.
void WriteMessage(MessageSource& message) {
    Arena memory;
    WriteWide(message, PR_SUBJECT_W, "Hi"_w);
    WriteWide(message, PR_BODY_W, WideView());
    WriteLong(message, PR_IMPORTANCE, -2);
    EXPECT_TRUE(message.Write(BinaryValue(PR_SEARCH_KEY, "\1\2\3"_b, memory)));
    std::array<SPropValue, 2> row{LongValue(PR_RECIPIENT_TYPE, 1), WideValue(PR_DISPLAY_NAME_W, "Ann"_w, memory)};
    EXPECT_TRUE(message.ReplaceRecipients({{0, 2, row.data()}}));
    ULONG number = 99;
    const auto attachedFile = message.CreateAttachment(number);
    ASSERT_TRUE(attachedFile);
    EXPECT_EQ(number, 0U);
    EXPECT_TRUE((*attachedFile)->Write(BinaryValue(PR_ATTACH_DATA_BIN, "data"_b, memory)));
    Save(**attachedFile);
    const auto attachment = message.CreateAttachment(number);
    ASSERT_TRUE(attachment);
    EXPECT_TRUE((*attachment)->Write(BinaryValue(PR_ATTACH_DATA_BIN, "replaced"_b, memory)));
    const auto within = (*attachment)->CreateMessage();
    ASSERT_TRUE(within);
    const auto id = (*within)->Names().FindOrAdd({PS_MAPI, false, 5, {}});
    ASSERT_TRUE(id);
    WriteLong(**within, PROP_TAG(PT_LONG, *id), 6);
    const auto deeper = (*within)->CreateAttachment(number);
    ASSERT_TRUE(deeper);
    const auto object = (*deeper)->CreateStorage();
    ASSERT_TRUE(object);
    PutStream(**object, "\1Ole"_w, "ole"_b);
    Save(**deeper);
    Save(**within);
    Save(**attachment);
    Save(message);
}

TEST(NewMessage, StandsInTheFileAsTheFormatSays) {
    MemoryFile file;
    WriteMessage(*OpenedForWriting(file.Create(STGM_TRANSACTED)));
    const auto root = file.Open();
    CLSID classId{};
    EXPECT_EQ(ReadClassStg(root.Get(), &classId), S_OK);
    EXPECT_TRUE(classId == OleGuid(0x00020D0B));
    const Names elements = {"__attach_version1.0_#00000000/", "__attach_version1.0_#00000001/",
                            "__nameid_version1.0/",           "__properties_version1.0",
                            "__recip_version1.0_#00000000/",  "__substg1.0_0037001F",
                            "__substg1.0_1000001F",           "__substg1.0_300B0102"};
    EXPECT_EQ(ElementsOf(*root), elements);
    const Bytes header = "\0\0\0\0\0\0\0\0\1\0\0\0\2\0\0\0\1\0\0\0\2\0\0\0\0\0\0\0\0\0\0\0"_b;
    const Bytes stream = StreamIn(*root, kProperties);
    EXPECT_EQ(Bytes(stream.begin(), stream.begin() + 32), header);
    EXPECT_EQ(StreamIn(*root, "__substg1.0_0037001F"_w), "H\0i\0"_b);
    EXPECT_EQ(StreamIn(*root, "__substg1.0_1000001F"_w), Bytes());

    const auto attachment = StorageIn(*root, "__attach_version1.0_#00000001"_w);
    const auto within = StorageIn(*attachment, kObject);
    const auto deeper = StorageIn(*within, kFirstAttachment);
    struct Row {
        const char* name;
        ComPtr<IStorage> storage;
        std::size_t header;
        Names entries;
    };
    const Row rows[] = {
        {"message",
         root,
         32,
         {"00170003 6 FFFFFFFE", "0037001F 6 6", "1000001F 6 2", "300B0102 6 3", "340D0003 6 40E79"}},
        {"recipient",
         StorageIn(*root, "__recip_version1.0_#00000000"_w),
         8,
         {"0C150003 6 1", "0FFE0003 6 6", "30000003 6 0", "3001001F 6 8"}},
        {"file",
         StorageIn(*root, kFirstAttachment),
         8,
         {"0E210003 6 0", "0FFE0003 6 7", "37010102 6 4", "37050003 6 1", "370B0003 6 FFFFFFFF"}},
        {"attached message",
         attachment,
         8,
         {"0E210003 6 1", "0FFE0003 6 7", "3701000D 6 1FFFFFFFF", "37050003 6 5", "370B0003 6 FFFFFFFF"}},
        {"message within", within, 24, {"340D0003 6 40E79", "80000003 6 6"}},
        {"object",
         deeper,
         8,
         {"0E210003 6 0", "0FFE0003 6 7", "3701000D 6 4FFFFFFFF", "37050003 6 6", "370B0003 6 FFFFFFFF"}},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(EntriesIn(*row.storage, row.header), row.entries) << row.name;
    }
    EXPECT_EQ(StreamIn(*StorageIn(*deeper, kObject), "\1Ole"_w), "ole"_b);
}

TEST(NewMessage, ValuesOfEveryTypeReadBack) {
    Arena memory;
    MemoryFile file;
    std::map<ULONG, std::string> expected;  // by id
    {
        const auto message = OpenedForWriting(file.Create());
        for (const NamedValue& each : EveryValue(memory)) {
            SCOPED_TRACE(each.name);
            const ULONG tag = each.value.ulPropTag;
            const Status written = message->Write(each.value);
            if (PROP_TYPE(tag) == PT_NULL || PROP_TYPE(tag) == PT_OBJECT || PROP_TYPE(tag) == PT_SVREID) {
                EXPECT_EQ(written ? ErrorCode{} : written.Failure().code, ErrorCode::Unsupported);
                continue;
            }
            EXPECT_TRUE(written);
            // 8-bit texts become wide, as all of a new message's.
            SPropValue wide = each.value;
            ChangeWidth(wide, PT_UNICODE, 1252, memory);
            const std::string& text = expected[PROP_ID(tag)] = TextOf(wide);
            EXPECT_EQ(ValueOf(*message, PROP_ID(tag)), text) << "before it is saved";
        }
        Save(*message);
    }
    const auto message = Opened(file.Open());
    for (const auto& [id, text] : expected) {
        EXPECT_EQ(ValueOf(*message, id), text == "[]" ? "not found" : text) << "of several values none is nothing";
    }
}

// The buckets follow from [MS-OXMSG] 2.2.3.2.2: a number xor-ed with set and kind, or the text's CRC, modulo 31.
TEST(NewMessage, NamesAreIndexedByHash) {
    MemoryFile file;
    {
        const auto message = OpenedForWriting(file.Create());
        const auto reminder = message->Names().FindOrAdd({OleGuid(0x00062008), false, 0x8505, {}});
        const auto keywords = message->Names().FindOrAdd({PS_PUBLIC_STRINGS, true, 0, CStringW("Keywords"_w)});
        const auto test = message->Names().FindOrAdd({PS_PUBLIC_STRINGS, true, 0, CStringW("x-vx-test"_w)});
        ASSERT_TRUE(reminder && keywords && test);
        EXPECT_EQ(*reminder, 0x8000);
        EXPECT_EQ(*keywords, 0x8001);
        WriteLong(*message, PROP_TAG(PT_LONG, *reminder), 15);
        Save(*message);
    }
    const auto root = file.Open();
    auto names = StorageIn(*root, kNames);
    EXPECT_EQ(StreamIn(*names, "__substg1.0_00020102"_w), "\x08\x20\6\0\0\0\0\0\xC0\0\0\0\0\0\0\x46"_b);
    EXPECT_EQ(StreamIn(*names, "__substg1.0_00030102"_w),
              "\5\x85\0\0\6\0\0\0"
              "\0\0\0\0\5\0\1\0"
              "\x14\0\0\0\5\0\2\0"_b);
    EXPECT_EQ(StreamIn(*names, "__substg1.0_00040102"_w),
              "\x10\0\0\0K\0e\0y\0w\0o\0r\0d\0s\0"
              "\x12\0\0\0x\0-\0v\0x\0-\0t\0e\0s\0t\0\0\0"_b);
    EXPECT_EQ(StreamIn(*names, "__substg1.0_100D0102"_w), "\5\x85\0\0\6\0\0\0"_b);
    EXPECT_EQ(StreamIn(*names, "__substg1.0_10150102"_w),
              "\x3B\x4D\xDA\x2E\5\0\1\0"
              "\xFA\x36\xFE\x08\5\0\2\0"_b);
    names = {};
    const auto message = Opened(root);
    EXPECT_EQ(message->Names().Find({PS_PUBLIC_STRINGS, true, 0, CStringW("x-vx-test"_w)}), 0x8002);
    EXPECT_EQ(ValueOf(*message, 0x8000), "15");
}

TEST(NewMessage, LargeTextsChangeTheirWidthPieceByPiece) {
    // Two bytes a character in 932, so that a cut at an even place of a piece can go through one.
    std::string narrow = "x";
    std::string expected = "x";
    while (narrow.size() < 200'000) {
        narrow += narrow.size() % 1000 == 1 ? "  " : "\x93\xFA";
        expected += narrow.back() == ' ' ? "  " : "\xE6\x97\xA5";
    }
    MemoryFile file;
    {
        const auto message = OpenedForWriting(file.Create());
        WriteLong(*message, PR_MESSAGE_CODEPAGE, 932);
        const Bytes bytes = BytesOfText(narrow);
        MemorySource source(bytes);
        EXPECT_TRUE(message->Write(PR_BODY_A, source));
        Save(*message);
    }
    const auto message = Opened(file.Open());
    EXPECT_EQ(message->TagOf(PROP_ID(PR_BODY)), PR_BODY_W);
    EXPECT_TRUE(TextOf(*message, PROP_ID(PR_BODY)) == expected);
}

void WriteTo(IStream& stream, const Bytes& bytes) {
    ULONG written = 0;
    EXPECT_EQ(stream.Write(bytes.data(), static_cast<ULONG>(bytes.size()), &written), S_OK);
    EXPECT_EQ(written, bytes.size());
}

TEST(NewMessage, StreamsAreWrittenUntilSave) {
    MemoryFile file;
    {
        const auto message = OpenedForWriting(file.Create());
        {
            const auto stream = message->OpenForWriting(PR_HTML, true);
            ASSERT_TRUE(stream);
            WriteTo(**stream, "<html>"_b);
            Save(*message);
            WriteTo(**stream, "</html>"_b);
        }
        Save(*message);
        EXPECT_EQ(BytesIn(*message, PROP_ID(PR_HTML)), "<html></html>");

        // Not replaced: the stream begins with what is there, here in the other width.
        WriteWide(*message, PR_BODY_W, "abc"_w);
        const auto kept = message->OpenForWriting(PR_BODY_A, false);
        ASSERT_TRUE(kept);
        WriteTo(**kept, "X"_b);
        const auto replaced = message->OpenForWriting(PR_SUBJECT_W, true);
        ASSERT_TRUE(replaced);
        WriteTo(**replaced, "s\0"_b);
        const auto removed = message->OpenForWriting(PR_SENDER_NAME_W, true);
        ASSERT_TRUE(removed);
        EXPECT_TRUE(message->Remove(PROP_ID(PR_SENDER_NAME)));
        Save(*message);
    }
    const auto root = file.Open();
    const std::vector<std::string> entries = {"0037001F 6 4", "1000001F 6 8", "10130102 6 D", "340D0003 6 40E79"};
    EXPECT_EQ(EntriesIn(*root, 32), entries);
    const auto message = Opened(root);
    EXPECT_EQ(ValueOf(*message, PROP_ID(PR_BODY)), "w'Xbc'");
    EXPECT_EQ(ValueOf(*message, PROP_ID(PR_SUBJECT)), "w's'");
}

TEST(NewMessage, AttachmentsThatWereNotSavedAreNotInIt) {
    MemoryFile file;
    {
        const auto message = OpenedForWriting(file.Create());
        ULONG first = 0;
        ULONG second = 0;
        ULONG third = 0;
        {
            const auto dropped = message->CreateAttachment(first);
            ASSERT_TRUE(dropped);
            WriteLong(**dropped, PR_ATTACH_METHOD, 1);
        }
        const auto open = message->CreateAttachment(second);
        ASSERT_TRUE(open);
        const auto saved = message->CreateAttachment(third);
        ASSERT_TRUE(saved);
        Save(**saved);
        EXPECT_EQ(message->AttachmentNumbers(), std::vector<ULONG>{third});
        Save(*message);
        // Open still, and saved later, is in time for the next Save; what no Save follows is gone.
        Save(**open);
        Save(*message);
        ULONG fourth = 0;
        const auto late = message->CreateAttachment(fourth);
        ASSERT_TRUE(late);
        Save(**late);
    }
    const auto root = file.Open();
    EXPECT_EQ(Opened(root)->AttachmentNumbers(), (std::vector<ULONG>{1, 2}));
    const Bytes stream = StreamIn(*root, kProperties);
    EXPECT_EQ(ByteView(stream).U32(12), 3U) << "the next number";
    EXPECT_EQ(ByteView(stream).U32(20), 2U);
}

}  // namespace
}  // namespace localmapi::testing
