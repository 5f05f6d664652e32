// File headers: the forms, and what is said about those that are none.
#include "localmapi/pst/ndb/Header.h"
#include "tests/localmapi/pst/support/ImageBuilder.h"
#include "tests/localmapi/pst/support/Opened.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

namespace localmapi::testing {
namespace {

using pst::Encoding;
using pst::FileHeader;

Bytes SmallFile(const Form& form, Encoding encoding = Encoding::None) {
    ImageBuilder image(form, encoding);
    image.AddNode(0x21, image.AddBlock(BytesOf("data")));
    return image.Build();
}

TEST(Header, TellsTheFormsApart) {
    struct Row {
        unsigned version;
        const Form* form;
        const pst::Layout* layout;
    };
    constexpr Row rows[] = {
        {14, &kAnsi, &pst::kAnsiLayout},       {15, &kAnsi, &pst::kAnsiLayout},
        {21, &kUnicode, &pst::kUnicodeLayout}, {23, &kUnicode, &pst::kUnicodeLayout},
        {36, &kLarge, &pst::kLargePageLayout}, {37, &kUnicode, &pst::kUnicodeLayout},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.version);
        Form form = *row.form;
        ImageBuilder image(form, Encoding::Cyclic);
        image.AddNode(0x21, image.AddBlock(BytesOf("data")));
        Bytes bytes = image.Build();
        Poke(bytes, 10, row.version, 2);
        image.SealHeader(bytes);
        Opened file(bytes);
        EXPECT_EQ(file->Header().layout, row.layout);
        EXPECT_EQ(file->Header().encoding, Encoding::Cyclic);
        EXPECT_EQ(file->Header().isOst, row.version == 36);
        auto data = file->OpenData(file.Node(0x21));
        ASSERT_TRUE(data);
        EXPECT_EQ(*ReadWhole(*data), BytesOf("data"));
        EXPECT_TRUE(file.sink.problems.empty());
    }
}

TEST(Header, OfWhatIsNoSuchFileIsRefusedWithTheReason) {
    const Bytes sound = SmallFile(kUnicode);
    ImageBuilder sealer(kUnicode);
    struct Row {
        const char* name;
        std::function<Bytes()> make;
        const char* reason;
    };
    const Row rows[] = {
        {"empty", [] { return Bytes(); }, "does not begin with"},
        {"text", [] { return BytesOf("From someone@example.com Mon Jan 1"); }, "does not begin with"},
        {"magic only", [&] { return Bytes(sound.begin(), sound.begin() + 22); }, "ends within its header"},
        {"one byte short", [&] { return Bytes(sound.begin(), sound.begin() + 563); }, "ends within its header"},
        {"protected",
         [&] {
             Bytes bytes = sound;
             Poke(bytes, 513, 0x10, 1);
             sealer.SealHeader(bytes);
             return bytes;
         },
         "information protection"},
        {"unknown encoding",
         [&] {
             Bytes bytes = sound;
             Poke(bytes, 513, 7, 1);
             sealer.SealHeader(bytes);
             return bytes;
         },
         "method 0x7, which is not known"},
    };
    for (const Row& row : rows) {
        const Bytes bytes = row.make();
        MemorySource source{ByteView(bytes)};
        Diagnostics problems(nullptr);
        const Result<FileHeader> header = pst::ReadHeader(source, problems);
        ASSERT_FALSE(header) << row.name;
        EXPECT_EQ(header.Failure().code, ErrorCode::Unsupported) << row.name;
        EXPECT_NE(header.Failure().text.find(row.reason), std::string::npos) << header.Failure().text;
    }
}

TEST(Header, WithADamagedByteIsReportedAndTheFileReadAllTheSame) {
    for (const Form* form : kForms) {
        const Bytes sound = SmallFile(*form);
        const unsigned roots = form->width == 4 ? 184 : 216;
        // The version, its high byte, the root's id, the encoding, a byte that nobody looks at.
        for (const unsigned at : {10U, 11U, roots, form->width == 4 ? 461U : 513U, 100U}) {
            SCOPED_TRACE(std::string(form->name) + " at " + std::to_string(at));
            Bytes bytes = sound;
            bytes[at] ^= std::byte{0x40};
            Opened file(bytes);
            EXPECT_EQ(file.sink.Count("header: its CRC does not fit"), 1);
            EXPECT_EQ(file.Node(0x21).id.value, 0x21U);
        }
    }
}

TEST(Header, OfATruncatedFileSaysHowMuchIsLost) {
    const Bytes bytes = SmallFile(kUnicode);
    const std::size_t whole = bytes.size();
    Opened file(Bytes(bytes.begin(), bytes.end() - 100));
    EXPECT_EQ(file.sink.Count(std::to_string(whole) + " bytes long and now ends after " + std::to_string(whole - 100)),
              1);
}

}  // namespace
}  // namespace localmapi::testing
