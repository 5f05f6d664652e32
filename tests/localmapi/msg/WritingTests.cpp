// New messages: what is written reads back, and stands in the file as the format says.
#include "localmapi/props/MapiMemory.h"
#include "localmapi/props/Values.h"
#include "mapi/MapiGuids.h"
#include "mapi/PropTags.h"
#include "tests/localmapi/msg/support/Files.h"
#include "tests/localmapi/pst/support/RecordingSink.h"
#include "tests/localmapi/support/ValueText.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace localmapi::testing {
namespace {

// Names are arrays of text; braces of temporaries of them are more than one compiler bears.
const WideView kProperties = "__properties_version1.0"_w;
const WideView kNames = "__nameid_version1.0"_w;
const WideView kFirstAttachment = "__attach_version1.0_#00000000"_w;
const WideView kFirstRecipient = "__recip_version1.0_#00000000"_w;
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

TEST(NewMessage, StandsInTheFileAsTheFormatSays) {
    MemoryFile file;
    {
        const auto message = OpenedForWriting(file.Create());
        ASSERT_TRUE(message);
        WriteWide(*message, PR_SUBJECT_W, "Hi"_w);
        WriteWide(*message, PR_MESSAGE_CLASS_W, "IPM.Note"_w);
        WriteLong(*message, PR_IMPORTANCE, -2);
        Arena memory;
        EXPECT_TRUE(message->Write(BinaryValue(PR_SEARCH_KEY, "\1\2\3"_b, memory)));
        WriteWide(*message, PR_BODY_W, WideView());
        ULONG number = 99;
        auto attachment = message->CreateAttachment(number);
        ASSERT_TRUE(attachment);
        EXPECT_EQ(number, 0U);
        EXPECT_TRUE((*attachment)->Write(BinaryValue(PR_ATTACH_DATA_BIN, "data"_b, memory)));
        Save(**attachment);
        std::array<SPropValue, 2> row{LongValue(PR_RECIPIENT_TYPE, 1), WideValue(PR_DISPLAY_NAME_W, "Ann"_w, memory)};
        EXPECT_TRUE(message->ReplaceRecipients({{0, 2, row.data()}}));
        Save(*message);
    }
    const auto root = file.Open();
    CLSID classId{};
    EXPECT_EQ(ReadClassStg(root.Get(), &classId), S_OK);
    EXPECT_TRUE(classId == OleGuid(0x00020D0B));
    const std::vector<std::string> elements = {"__attach_version1.0_#00000000/", "__nameid_version1.0/",
                                               "__properties_version1.0",        "__recip_version1.0_#00000000/",
                                               "__substg1.0_001A001F",           "__substg1.0_0037001F",
                                               "__substg1.0_1000001F",           "__substg1.0_300B0102"};
    EXPECT_EQ(ElementsOf(*root), elements);

    const Bytes header = "\0\0\0\0\0\0\0\0\1\0\0\0\1\0\0\0\1\0\0\0\1\0\0\0\0\0\0\0\0\0\0\0"_b;
    const Bytes stream = StreamIn(*root, kProperties);
    EXPECT_EQ(Bytes(stream.begin(), stream.begin() + 32), header);
    const std::vector<std::string> entries = {"00170003 6 FFFFFFFE", "001A001F 6 12", "0037001F 6 6",
                                              "1000001F 6 2",        "300B0102 6 3",  "340D0003 6 40E79"};
    EXPECT_EQ(EntriesIn(*root, 32), entries);
    EXPECT_EQ(StreamIn(*root, "__substg1.0_0037001F"_w), "H\0i\0"_b);
    EXPECT_EQ(StreamIn(*root, "__substg1.0_1000001F"_w), Bytes());

    const auto attachment = StorageIn(*root, kFirstAttachment);
    const std::vector<std::string> attachmentEntries = {"0E210003 6 0", "0FFE0003 6 7", "37010102 6 4", "37050003 6 1",
                                                        "370B0003 6 FFFFFFFF"};
    EXPECT_EQ(EntriesIn(*attachment, 8), attachmentEntries);
    const auto recipient = StorageIn(*root, kFirstRecipient);
    const std::vector<std::string> recipientEntries = {"0C150003 6 1", "0FFE0003 6 6", "30000003 6 0", "3001001F 6 8"};
    EXPECT_EQ(EntriesIn(*recipient, 8), recipientEntries);
    const std::vector<std::string> nameStreams = {"__substg1.0_00020102", "__substg1.0_00030102",
                                                  "__substg1.0_00040102"};
    EXPECT_EQ(ElementsOf(*StorageIn(*root, kNames)), nameStreams);
}

TEST(NewMessage, ValuesOfEveryTypeReadBack) {
    GUID guids[2] = {OleGuid(0x00020D0B), OleGuid(0x00062008)};
    SHORT shorts[] = {-1, 2};
    LONG longs[] = {-3, 4};
    float reals[] = {1.5F, -2};
    double doubles[] = {2.5, -1e300};
    FILETIME times[] = {{1, 2}, {0xFFFFFFFF, 0x7FFFFFFF}};
    LARGE_INTEGER large[2];
    large[0].QuadPart = INT64_MIN;
    large[1].QuadPart = 5;
    CURRENCY money[2];
    money[0].int64 = -10000;
    money[1].int64 = 1;
    BYTE raw[] = {0, 1, 0xFF};
    SBinary binaries[] = {{3, raw}, {0, raw}};
    char narrow[] = "na\xEFve";
    char empty[] = "";
    LPSTR narrows[] = {narrow, empty};
    WCHAR wide[] = {'w', static_cast<WCHAR>(0x20AC), static_cast<WCHAR>(0xD800), 0};
    LPWSTR wides[] = {wide, wide + 3};

    const auto value = [](ULONG tag, auto member, auto content) {
        SPropValue made{};
        made.ulPropTag = tag;
        made.Value.*member = content;
        return made;
    };
    using V = SPropValue::Contents;
    const std::vector<SPropValue> values = {
        value(0x60000002, &V::i, SHORT{-2}),
        value(0x60010003, &V::l, LONG{INT32_MIN}),
        value(0x60020004, &V::flt, 0.25F),
        value(0x60030005, &V::dbl, -1e-300),
        value(0x60040006, &V::cur, money[0]),
        value(0x60050007, &V::at, 43831.5),
        value(0x6006000B, &V::b, USHORT{1}),
        value(0x60070014, &V::li, large[0]),
        value(0x60080040, &V::ft, times[1]),
        value(0x60090048, &V::lpguid, &guids[0]),
        value(0x600A0102, &V::bin, binaries[0]),
        value(0x600B0102, &V::bin, binaries[1]),
        value(0x600C001F, &V::lpszW, static_cast<LPWSTR>(wide)),
        value(0x60101002, &V::MVi, SShortArray{2, shorts}),
        value(0x60111003, &V::MVl, SLongArray{2, longs}),
        value(0x60121004, &V::MVflt, SRealArray{2, reals}),
        value(0x60131005, &V::MVdbl, SDoubleArray{2, doubles}),
        value(0x60141006, &V::MVcur, SCurrencyArray{2, money}),
        value(0x60151007, &V::MVat, SAppTimeArray{2, doubles}),
        value(0x60161014, &V::MVli, SLargeIntegerArray{2, large}),
        value(0x60171040, &V::MVft, SDateTimeArray{2, times}),
        value(0x60181048, &V::MVguid, SGuidArray{2, guids}),
        value(0x60191102, &V::MVbin, SBinaryArray{2, binaries}),
        value(0x601A101F, &V::MVszW, SWStringArray{2, wides}),
    };
    MemoryFile file;
    {
        const auto message = OpenedForWriting(file.Create());
        for (const SPropValue& each : values) {
            EXPECT_TRUE(message->Write(each));
            EXPECT_EQ(ValueOf(*message, PROP_ID(each.ulPropTag)), TextOf(each)) << "before it is saved";
        }
        // Narrow texts become wide, as all of a new message's.
        EXPECT_TRUE(message->Write(value(0x6020001E, &V::lpszA, static_cast<LPSTR>(narrow))));
        EXPECT_TRUE(message->Write(value(0x6021101E, &V::MVszA, SLPSTRArray{2, narrows})));
        for (const ULONG tag : {0x6030000DU, 0x603000FDU, 0x60300001U}) {
            const Status refused = message->Write(value(tag, &V::l, LONG{0}));
            ASSERT_FALSE(refused);
            EXPECT_EQ(refused.Failure().code, ErrorCode::Unsupported);
        }
        Save(*message);
    }
    const auto message = Opened(file.Open());
    for (const SPropValue& each : values) {
        EXPECT_EQ(ValueOf(*message, PROP_ID(each.ulPropTag)), TextOf(each));
    }
    EXPECT_EQ(ValueOf(*message, 0x6020), "w'na<00EF>ve'");
    EXPECT_EQ(ValueOf(*message, 0x6021), "[w'na<00EF>ve',w'']");
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

// Bytes that repeat only after a long while.
Bytes Pattern(std::size_t size) {
    Bytes bytes(size);
    for (std::size_t i = 0; i < size; ++i) {
        bytes[i] = static_cast<std::byte>(i * 31 + (i >> 9));
    }
    return bytes;
}

TEST(NewMessage, ValuesOfAnySizeAreTakenFromASource) {
    for (const std::size_t size :
         {std::size_t{0}, std::size_t{1}, std::size_t{65536}, std::size_t{65537}, std::size_t{3} << 20}) {
        SCOPED_TRACE(size);
        const Bytes bytes = Pattern(size);
        MemoryFile file;
        {
            const auto message = OpenedForWriting(file.Create());
            MemorySource source(bytes);
            EXPECT_TRUE(message->Write(PR_RTF_COMPRESSED, source));
            EXPECT_EQ(message->SizeOf(PROP_ID(PR_RTF_COMPRESSED)), size);
            Save(*message);
        }
        const auto root = file.Open();
        EXPECT_EQ(StreamIn(*root, "__substg1.0_10090102"_w), bytes);
        EXPECT_EQ(ByteView(StreamIn(*root, kProperties)).U32(32 + 8), size);
    }
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

TEST(NewMessage, HoldsMessagesWithinMessages) {
    MemoryFile file;
    {
        const auto message = OpenedForWriting(file.Create(STGM_TRANSACTED));
        WriteWide(*message, PR_SUBJECT_W, "outer"_w);
        ULONG number = 0;
        const auto attachment = message->CreateAttachment(number);
        ASSERT_TRUE(attachment);
        Arena memory;
        EXPECT_TRUE((*attachment)->Write(BinaryValue(PR_ATTACH_DATA_BIN, "replaced"_b, memory)));
        const auto within = (*attachment)->CreateMessage();
        ASSERT_TRUE(within);
        WriteWide(**within, PR_SUBJECT_W, "inner"_w);
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
        Save(*message);
    }
    const auto root = file.Open();
    const auto outerStorage = StorageIn(*root, kFirstAttachment);
    const std::vector<std::string> entries = {"0E210003 6 0", "0FFE0003 6 7", "3701000D 6 1FFFFFFFF", "37050003 6 5",
                                              "370B0003 6 FFFFFFFF"};
    EXPECT_EQ(EntriesIn(*outerStorage, 8), entries);
    const auto innerStorage = StorageIn(*outerStorage, kObject);
    const std::vector<std::string> innerEntries = {"0037001F 6 C", "340D0003 6 40E79", "80000003 6 6"};
    EXPECT_EQ(EntriesIn(*innerStorage, 24), innerEntries);
    const auto deepStorage = StorageIn(*innerStorage, kFirstAttachment);
    EXPECT_EQ(EntriesIn(*deepStorage, 8)[2], "3701000D 6 4FFFFFFFF");
    EXPECT_EQ(StreamIn(*StorageIn(*deepStorage, kObject), "\1Ole"_w), "ole"_b);
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

#ifndef _WIN32
// What another program, the command of libgsf, gives for a command line; `found` is false where there is none.
std::string OutputOf(const std::string& command, bool& found) {
    std::string text;
    FILE* pipe = popen((command + " 2>/dev/null").c_str(), "r");
    std::array<char, 4096> piece;
    for (std::size_t got = 1; pipe != nullptr && got > 0;) {
        got = std::fread(piece.data(), 1, piece.size(), pipe);
        text.append(piece.data(), got);
    }
    found = pipe != nullptr && pclose(pipe) == 0;
    return text;
}

TEST(NewMessage, IsReadByAnotherProgram) {
    bool found = false;
    OutputOf("gsf help", found);
    if (!found) {
        GTEST_SKIP() << "gsf (libgsf-bin) is not installed";
    }
    const std::filesystem::path path = std::filesystem::temp_directory_path() / "vx-msg-writing.msg";
    const std::string large(70'000, 'z');
    {
        ComPtr<IStorage> root;
        ASSERT_EQ(StgCreateDocfile(path.u16string().c_str(), STGM_CREATE | STGM_TRANSACTED | STGM_READWRITE, 0,
                                   root.Receive()),
                  S_OK);
        const auto message = OpenedForWriting(root);
        Arena memory;
        EXPECT_TRUE(message->Write(BinaryValue(PR_HTML, "<p>"_b, memory)));
        const Bytes bytes = BytesOfText(large);
        MemorySource source(bytes);
        EXPECT_TRUE(message->Write(PR_RTF_COMPRESSED, source));
        ULONG number = 0;
        const auto attachment = message->CreateAttachment(number);
        ASSERT_TRUE(attachment);
        EXPECT_TRUE((*attachment)->Write(BinaryValue(PR_ATTACH_DATA_BIN, "file"_b, memory)));
        Save(**attachment);
        Save(*message);
    }
    const std::string name = path.string();
    const std::string list = OutputOf("gsf list " + name, found);
    EXPECT_TRUE(found);
    EXPECT_NE(list.find("__nameid_version1.0"), std::string::npos) << list;
    EXPECT_EQ(OutputOf("gsf cat " + name + " __substg1.0_10130102", found), "<p>");
    EXPECT_EQ(OutputOf("gsf cat " + name + " __substg1.0_10090102", found), large);
    EXPECT_EQ(OutputOf("gsf cat " + name + " '__attach_version1.0_#00000000/__substg1.0_37010102'", found), "file");
    std::filesystem::remove(path);
}
#endif

}  // namespace
}  // namespace localmapi::testing
