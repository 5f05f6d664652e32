// How the properties of message files made by hand are read.
#include "mapi/PropTags.h"
#include "tests/localmapi/msg/support/Files.h"
#include "tests/localmapi/pst/support/RecordingSink.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

namespace localmapi::testing {
namespace {

constexpr std::size_t kRootHeader = 32;
constexpr std::size_t kEmbeddedHeader = 24;
const WideView kValueName = "__substg1.0_"_w;

// Of the stream's name what follows "__substg1.0_".
struct Stream {
    std::string_view name;
    Bytes bytes;
};
// A property and the streams in the root that belong to it; the value, and what SizeOf tells of it.
struct ValueRow {
    const char* name;
    EntryBytes entry;
    std::vector<Stream> streams;
    const char* value;
    std::uint64_t size = 0;
};

TEST(MessageProperties, AreReadFromTheirEntryAndTheStreamsThatAreThere) {
    const ValueRow rows[] = {
        // What stands behind a number of fewer bytes does not count.
        {"short", {0x10000002, 0xDEADBEEFDEADFFFE}, {}, "-2:I2"},
        {"long", {0x10000003, 0xDEADBEEFFFFFFFFF}, {}, "-1"},
        {"real", {0x10000004, 0xDEADBEEF3FC00000}, {}, "1.5:R4"},
        {"double", {0x10000005, 0xC004000000000000}, {}, "-2.5:R8"},
        {"currency", {0x10000006, 0x0000000100000000}, {}, "4294967296:CY"},
        {"application time", {0x10000007, 0x40E0000000000000}, {}, "32768:AT"},
        {"error", {0x1000000A, 0xDEADBEEF8004010F}, {}, "!0F"},
        {"true", {0x1000000B, 0xDEADBEEFDEAD0001}, {}, "true"},
        {"false", {0x1000000B, 0xDEADBEEFDEAD0000}, {}, "false"},
        {"large integer", {0x10000014, 0x8000000000000000}, {}, "-9223372036854775808:I8"},
        {"time", {0x10000040, 0x01D6F0A1B2C3D4E5}, {}, "t132557816333587685"},
        // Streams tell their own sizes.
        {"narrow", {0x1000001E, 4}, {{"1000001E", "abc"_b}}, "a'abc'", 3},
        {"narrow with its terminator", {0x1000001E, 4}, {{"1000001E", "abc\0"_b}}, "a'abc'", 3},
        {"narrow, declared wrongly", {0x1000001E, 0xFFFFFFFF}, {{"1000001E", "abc"_b}}, "a'abc'", 3},
        {"narrow, empty", {0x1000001E, 1}, {{"1000001E", {}}}, "a''"},
        {"narrow, empty and without a stream", {0x1000001E, 1}, {}, "a''"},
        {"narrow, of which only the terminator is there", {0x1000001E, 2}, {{"1000001E", "\0"_b}}, "a''"},
        {"wide", {0x1000001F, 6}, {{"1000001F", "a\0b\0"_b}}, "w'ab'", 4},
        {"wide with its terminator", {0x1000001F, 6}, {{"1000001F", "a\0b\0\0\0"_b}}, "w'ab'", 4},
        {"wide with half a unit behind it", {0x1000001F, 6}, {{"1000001F", "a\0b\0c"_b}}, "w'ab'", 4},
        {"wide with a lone surrogate", {0x1000001F, 6}, {{"1000001F", "\x00\xD8z\0"_b}}, "w'<D800>z'", 4},
        {"wide without a stream", {0x1000001F, 6}, {}, "not found"},
        {"binary", {0x10000102, 1}, {{"10000102", "\0\1\xFF\0"_b}}, "x0001FF00", 4},
        {"binary, name in lower case", {0xABCD0102, 2}, {{"abcd0102", "\5\6"_b}}, "x0506", 2},
        {"guid", {0x10000048, 16}, {{"10000048", "\x0B\x0D\2\0\0\0\0\0\xC0\0\0\0\0\0\0\x46"_b}}, "g00020D0B"},
        {"guid cut short", {0x10000048, 16}, {{"10000048", "\x0B\x0D\2\0"_b}}, "corrupt"},
        {"packed shorts, and half of one", {0x10001002, 6}, {{"10001002", "\1\0\xFF\xFF\3"_b}}, "[1,-1]:I2"},
        {"packed longs", {0x10001003, 8}, {{"10001003", "\1\0\0\0\2\0\0\0"_b}}, "[1,2]"},
        {"packed times", {0x10001040, 8}, {{"10001040", "\7\0\0\0\0\0\0\0"_b}}, "[t7]"},
        {"packed values of which there are none", {0x10001003, 0}, {}, "not found"},
        // Values in parts are counted by their main stream.
        {"wide texts, terminated",
         {0x8000101F, 99},
         {{"8000101F", "\4\0\0\0\4\0\0\0"_b}, {"8000101F-00000000", "a\0\0\0"_b}, {"8000101F-00000001", "b\0\0\0"_b}},
         "[w'a',w'b']"},
        {"wide texts, not terminated",
         {0x8000101F, 8},
         {{"8000101F", "\4\0\0\0\4\0\0\0"_b}, {"8000101F-00000000", "a\0"_b}, {"8000101F-00000001", {}}},
         "[w'a',w'']"},
        {"a part is missing",
         {0x8000101F, 12},
         {{"8000101F", "\4\0\0\0\4\0\0\0\4\0\0\0"_b}, {"8000101F-00000000", "a\0"_b}, {"8000101F-00000002", "c\0"_b}},
         "[w'a',w'c']"},
        {"a part too many",
         {0x8000101F, 4},
         {{"8000101F", "\4\0\0\0"_b}, {"8000101F-00000000", "a\0"_b}, {"8000101F-00000001", "b\0"_b}},
         "[w'a']"},
        {"no parts at all", {0x8000101F, 4}, {{"8000101F", "\4\0\0\0"_b}}, "not found"},
        {"narrow texts", {0x8000101E, 4}, {{"8000101E", "\2\0\0\0"_b}, {"8000101E-00000000", "x\0"_b}}, "[a'x']"},
        {"binaries",
         {0x80001102, 16},
         {{"80001102", "\1\0\0\0\0\0\0\0\2\0\0\0\0\0\0\0"_b},
          {"80001102-00000000", "\0"_b},
          {"80001102-00000001", "\1\2"_b}},
         "[x00,x0102]"},
    };
    for (const ValueRow& row : rows) {
        SCOPED_TRACE(row.name);
        MemoryFile file;
        {
            const auto root = file.Create();
            PutProperties(*root, kRootHeader, {row.entry});
            for (const Stream& stream : row.streams) {
                PutStream(*root, CStringW(kValueName) + CStringW(stream.name.begin(), stream.name.end()), stream.bytes);
            }
        }
        const auto message = Opened(file.Open());
        EXPECT_EQ(ValueOf(*message, PROP_ID(row.entry.tag)), row.value);
        EXPECT_EQ(message->SizeOf(PROP_ID(row.entry.tag)), row.size);
    }
}

std::string TagList(PropertySource& source) {
    std::string list;
    for (const ULONG tag : source.Tags()) {
        char text[16];
        std::snprintf(text, sizeof text, "%08X ", static_cast<unsigned>(tag));
        list += text;
    }
    return list;
}

TEST(MessageProperties, EntriesThatMakeNoSenseAreLeftOut) {
    const Bytes text = BytesOfText("x"_w);
    const EntryBytes flag{0x0E07'0003, 1};
    const EntryBytes junk{0x2B00'6800, 0x1234};
    struct Row {
        const char* name;
        std::size_t header;
        std::vector<EntryBytes> entries;
        const char* tags;
    };
    const Row rows[] = {
        {"any order, any flags", kRootHeader, {{0x0E070003, 1, 0xFFFFFFFF}, {0x00170003, 1, 0}}, "00170003 0E070003 "},
        {"the first of two", kRootHeader, {flag, {0x0E070003, 2}}, "0E070003 "},
        {"the first of two types that has a stream", kRootHeader, {{0x0037001E, 5}, {0x0037001F, 4}}, "0037001F "},
        {"unknown types between others", kRootHeader, {junk, flag, junk, {0x00170003, 1}}, "00170003 0E070003 "},
        {"types that are only carried along", kRootHeader, {{0x001000FD, 0}, flag, {0x001100FE, 0}}, "0E070003 "},
        {"ids that no property has", kRootHeader, {{0x00000003, 0}, flag, {0xFFFF0003, 0}}, "0E070003 "},
        {"the header of an embedded message", kEmbeddedHeader, {flag}, "0E070003 "},
        {"nothing but junk: streams tell",
         kRootHeader,
         {junk, junk, junk, junk, junk, junk, junk, junk, flag},
         "0037001F "},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        MemoryFile file;
        {
            const auto root = file.Create();
            PutProperties(*root, row.header, row.entries);
            PutStream(*root, "__substg1.0_0037001F"_w, text);
        }
        EXPECT_EQ(TagList(*Opened(file.Open())), row.tags);
    }
}

TEST(MessageProperties, StreamNamesTellThePropertiesWhereThePropertyStreamIsMissing) {
    MemoryFile file;
    {
        const auto root = file.Create();
        PutStream(*root, "__substg1.0_0037001F"_w, BytesOfText("x"_w));
        PutStream(*root, "__substg1.0_10130102"_w, BytesOfText(std::string_view("<p>")));
        PutStream(*root, "__substg1.0_8000101F"_w, "\4\0\0\0"_b);
        PutStream(*root, "__substg1.0_8000101F-00000000"_w, BytesOfText("k"_w));
        PutStream(*root, "__substg1.0_0E070003"_w, "\1\0\0\0"_b);        // no type of a stream
        PutStream(*root, "__substg1.0_003G001F"_w, BytesOfText("x"_w));  // no tag
        PutStream(*root, "__substg1.0_00370"_w, BytesOfText("x"_w));
        PutStream(*root, "MsoDataStore"_w, BytesOfText("x"_w));
    }
    RecordingSink sink;
    const auto message = Opened(file.Open(), &sink);
    EXPECT_EQ(TagList(*message), "0037001F 10130102 8000101F ");
    EXPECT_EQ(ValueOf(*message, 0x8000), "[w'k']");
    EXPECT_EQ(sink.Count("has no property stream"), 1);
}

TEST(MessageProperties, AStorageWithoutAMessageIsRefusedUnlessItCanBecomeOne) {
    MemoryFile file;
    PutStream(*file.Create(), "Workbook"_w, BytesOfText("x"_w));
    const auto refused = msg::OpenMessageOnStorage(file.Open(), {});
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.Failure().code, ErrorCode::Unsupported);
}

TEST(MessageProperties, LargeValuesAreReadByPosition) {
    const Bytes large(3 << 20, std::byte{7});
    MemoryFile file;
    {
        const auto root = file.Create();
        PutProperties(*root, kRootHeader, {{0x10000102, large.size()}, {0x00370003, 5}});
        PutStream(*root, "__substg1.0_10000102"_w, large);
    }
    const auto message = Opened(file.Open());
    const auto source = message->Open(0x1000);
    const auto again = message->Open(0x1000);  // the same stream, while it is open
    ASSERT_TRUE(source && again);
    EXPECT_EQ((*source)->Size(), large.size());
    Bytes piece(5);
    EXPECT_TRUE((*again)->ReadAt(large.size() - 5, piece));
    EXPECT_EQ(piece, Bytes(5, std::byte{7}));
    EXPECT_FALSE((*source)->ReadAt(large.size() - 4, piece));
    Arena memory;
    SPropValue value{};
    EXPECT_TRUE(message->Read(0x1000, large.size(), memory, value));
    EXPECT_EQ(value.Value.bin.cb, large.size());
    const Status tooLarge = message->Read(0x1000, large.size() - 1, memory, value);
    EXPECT_EQ(tooLarge ? ErrorCode{} : tooLarge.Failure().code, ErrorCode::TooLarge);
    const auto number = message->Open(0x0037);
    EXPECT_EQ(number ? ErrorCode{} : number.Failure().code, ErrorCode::Unsupported);
}

TEST(MessageProperties, NothingIsChangedInAMessageThatIsOnlyRead) {
    MemoryFile file;
    PutProperties(*file.Create(), kRootHeader, {{0x0E070003, 7}});
    const auto message = Opened(file.Open());
    SPropValue value{};
    value.ulPropTag = PR_IMPORTANCE;
    MemorySource bytes({});
    ULONG number = 0;
    const auto denied = [](const auto& result) { return !result && result.Failure().code == ErrorCode::AccessDenied; };
    EXPECT_FALSE(message->IsWritable());
    EXPECT_TRUE(denied(message->Write(value)));
    EXPECT_TRUE(denied(message->Write(PR_BODY, bytes)));
    EXPECT_TRUE(denied(message->Remove(0x0E07)));
    EXPECT_TRUE(denied(message->OpenForWriting(PR_BODY, true)));
    EXPECT_TRUE(denied(message->CreateAttachment(number)));
    EXPECT_TRUE(denied(message->DeleteAttachment(0)));
    EXPECT_TRUE(denied(message->ReplaceRecipients({})));
    EXPECT_TRUE(denied(message->Save()));
}

// ---- Code pages

struct PageRow {
    const char* name;
    std::vector<EntryBytes> entries;
    std::string_view text;  // of PR_SUBJECT_A
    std::string_view rtf;   // uncompressed, wrapped
    UINT fallback;
    UINT page;
};

// "MELA": RTF that is wrapped without being compressed ([MS-OXRTFCP] 2.1.3.1).
Bytes Wrapped(std::string_view rtf) {
    Bytes bytes = BytesOfText(std::string_view("....    MELA\0\0\0\0", 16));
    const auto put = [&bytes](std::size_t at, std::size_t number) {
        for (std::size_t i = 0; i < 4; ++i) {
            bytes[at + i] = static_cast<std::byte>(number >> (8 * i));
        }
    };
    put(0, rtf.size() + 12);
    put(4, rtf.size());
    for (const char c : rtf) {
        bytes.push_back(static_cast<std::byte>(c));
    }
    return bytes;
}

TEST(MessageCodePage, IsTheFirstThatIsToldAndHoldsTheText) {
    const EntryBytes page1251{PR_MESSAGE_CODEPAGE, 1251};
    const EntryBytes page932{PR_MESSAGE_CODEPAGE, 932};
    const EntryBytes pageUtf8{PR_MESSAGE_CODEPAGE, 65001};
    const EntryBytes japanese{PR_MESSAGE_LOCALE_ID, 1041};
    const EntryBytes german{PR_MESSAGE_LOCALE_ID, 1031};
    const EntryBytes internet1251{PR_INTERNET_CPID, 1251};
    const EntryBytes internetUtf8{PR_INTERNET_CPID, 65001};
    const EntryBytes internetMail{PR_INTERNET_CPID, 50220};
    const std::string_view rtf1250 = "{\\rtf1\\ansi\\ansicpg1250 x}";
    const std::string_view high = "\xE4\xF6\xFC";       // single-byte letters; no text of 932
    const std::string_view kanji = "\x93\xFA\x96\x7B";  // two characters of 932; no letters of 1252
    const std::string_view utf8 = "\xC5\x81\xC4\x85";   // holds a byte that 1252 does not define
    const PageRow rows[] = {
        {"the message's own page", {page1251, japanese, internetUtf8}, high, rtf1250, 0, 1251},
        {"a page that no text is stored in is passed over", {pageUtf8, german}, high, "", 0, 1252},
        {"the RTF body's", {german, internet1251}, high, rtf1250, 0, 1250},
        {"the locale's", {japanese, internet1251}, kanji, "", 0, 932},
        {"the internet body's", {internet1251}, high, "", 0, 1251},
        {"no page of mail", {internetMail}, high, "", 1253, 1253},
        {"the caller's, without any word", {}, high, "", 1253, 1253},
        {"the system's, without that", {}, high, "", 0, 1252},
        {"one that the text contradicts is passed over", {page932, internet1251}, high, "", 0, 1251},
        {"ASCII contradicts nothing", {page932, internet1251}, "abc", "", 0, 932},
        {"UTF-8, when nothing else holds the text", {page932}, utf8, "", 0, 65001},
    };
    for (const PageRow& row : rows) {
        SCOPED_TRACE(row.name);
        MemoryFile file;
        {
            const auto root = file.Create();
            std::vector<EntryBytes> entries = row.entries;
            entries.push_back({PR_SUBJECT_A, row.text.size() + 1});
            PutStream(*root, "__substg1.0_0037001E"_w, BytesOfText(row.text));
            if (!row.rtf.empty()) {
                const Bytes wrapped = Wrapped(row.rtf);
                entries.push_back({PR_RTF_COMPRESSED, wrapped.size()});
                PutStream(*root, "__substg1.0_10090102"_w, wrapped);
            }
            PutProperties(*root, kRootHeader, entries);
        }
        EXPECT_EQ(Opened(file.Open(), nullptr, row.fallback)->CodePage(), row.page);
    }
}

}  // namespace
}  // namespace localmapi::testing
