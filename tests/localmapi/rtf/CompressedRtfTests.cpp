// Compressed RTF: the published examples, damage of every kind, and a second decoder that is slow and obvious.
#include "localmapi/base/Crc.h"
#include "localmapi/rtf/CompressedRtf.h"
#include "localmapi/rtf/CompressedRtfWriter.h"
#include "tests/localmapi/rtf/RtfTesting.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <initializer_list>
#include <random>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace localmapi::testing {
namespace {

using rtf::CompressedRtfReader;
using rtf::Reading;

constexpr std::uint32_t kLzfu = 0x75465A4C;
constexpr std::uint32_t kMela = 0x414C454D;

Bytes Numbers(std::initializer_list<unsigned> values) {
    Bytes bytes;
    for (const unsigned value : values) {
        bytes.push_back(static_cast<std::byte>(value));
    }
    return bytes;
}

void Poke(Bytes& bytes, std::size_t at, std::uint32_t number) {
    for (std::size_t i = 0; i < 4; ++i) {
        bytes[at + i] = static_cast<std::byte>(number >> (8 * i));
    }
}

// A value around `data`, whose header is right but for what the caller makes of it.
Bytes ValueOf(std::uint32_t type, std::size_t rawSize, const Bytes& data) {
    Bytes value(16);
    value.insert(value.end(), data.begin(), data.end());
    Poke(value, 0, static_cast<std::uint32_t>(value.size() - 4));
    Poke(value, 4, static_cast<std::uint32_t>(rawSize));
    Poke(value, 8, type);
    Poke(value, 12, type == kLzfu ? Crc(data) : 0);
    return value;
}

// What a reading delivers before it ends, and why it ended if that was an error.
struct Outcome {
    std::string rtf;
    std::string error;
};

Outcome ReadInPieces(ByteSource& source, Reading reading, std::size_t pieceSize = 7) {
    Outcome outcome;
    Result<CompressedRtfReader> reader = CompressedRtfReader::Open(source, reading);
    if (!reader) {
        outcome.error = reader.Failure().text;
        return outcome;
    }
    Bytes piece(pieceSize);
    for (;;) {
        const Result<std::size_t> count = reader->Read(piece);
        if (!count) {
            outcome.error = count.Failure().text;
            EXPECT_FALSE(reader->Read(piece)) << "an error does not go away";
            return outcome;
        }
        if (*count == 0) {
            return outcome;
        }
        outcome.rtf += TextIn(ByteView(piece).Part(0, *count));
    }
}

Outcome ReadInPieces(ByteView value, Reading reading, std::size_t pieceSize = 7) {
    MemorySource source(value);
    return ReadInPieces(source, reading, pieceSize);
}

// [MS-OXRTFCP] 3.1.3 step by step: a ring, one byte at a time. Gives what comes before the end, whatever ends it.
std::string SlowDecode(ByteView data) {
    constexpr std::string_view kPreset =
        "{\\rtf1\\ansi\\mac\\deff0\\deftab720{\\fonttbl;}{\\f0\\fnil \\froman \\fswiss \\fmodern \\fscript \\fdecor MS "
        "Sans SerifSymbolArialTimes New RomanCourier{\\colortbl\\red0\\green0\\blue0\r\n\\par "
        "\\pard\\plain\\f0\\fs20\\b\\i\\u\\tab\\tx";
    std::array<char, 4096> ring{};
    std::copy(kPreset.begin(), kPreset.end(), ring.begin());
    std::size_t write = kPreset.size();
    std::string out;
    const auto put = [&](char c) {
        out.push_back(c);
        ring[write] = c;
        write = (write + 1) % ring.size();
    };
    for (std::size_t at = 0; at < data.Size();) {
        const unsigned control = data.U8(at++);
        for (unsigned bit = 0; bit < 8; ++bit) {
            const bool isReference = (control >> bit & 1) != 0;
            if (!data.Has(at, isReference ? 2 : 1)) {
                return out;
            }
            if (!isReference) {
                put(static_cast<char>(data.U8(at++)));
                continue;
            }
            const std::size_t reference = static_cast<std::size_t>(data.U8(at)) << 8 | data.U8(at + 1);
            at += 2;
            std::size_t from = reference >> 4;
            if (from == write) {
                return out;
            }
            for (unsigned i = 0; i < (reference & 0xF) + 2; ++i, from = (from + 1) % ring.size()) {
                put(ring[from]);
            }
        }
    }
    return out;
}

// [MS-OXRTFCP] 4.1: a first example, and one whose reference reaches beyond the place that is written.
struct Published {
    const char* name;
    Bytes value;
    std::string_view rtf;
};
const std::vector<Published>& PublishedExamples() {
    static const std::vector<Published> examples = {
        {"hello world",
         Numbers({0x2D, 0,  0, 0,    0x2B, 0,    0,    0,    0x4C, 0x5A, 0x46, 0x75, 0xF1, 0xC5, 0xC7, 0xA7, 3,
                  0,    10, 0, 0x72, 0x63, 0x70, 0x67, 0x31, 0x32, 0x35, 0x42, 0x32, 0x0A, 0xF3, 0x20, 0x68, 0x65,
                  0x6C, 9,  0, 0x20, 0x62, 0x77, 5,    0xB0, 0x6C, 0x64, 0x7D, 10,   0x80, 0x0F, 0xA0}),
         "{\\rtf1\\ansi\\ansicpg1252\\pard hello world}\r\n"},
        {"crossing the write position",
         Numbers({0x1A, 0,    0, 0, 0x1C, 0,    0,    0,    0x4C, 0x5A, 0x46, 0x75, 0xE2, 0xD4, 0x4B,
                  0x51, 0x41, 0, 4, 0x20, 0x57, 0x58, 0x59, 0x5A, 0x0D, 0x6E, 0x7D, 1,    0x0E, 0xB0}),
         "{\\rtf1 WXYZWXYZWXYZWXYZWXYZ}"},
    };
    return examples;
}

TEST(CompressedRtf, ReadsThePublishedExamplesInAnyPieces) {
    for (const Published& example : PublishedExamples()) {
        SCOPED_TRACE(example.name);
        for (const std::size_t size : {1U, 2U, 5U, 1000U}) {
            const Outcome outcome = ReadInPieces(example.value, Reading::Strict, size);
            EXPECT_EQ(outcome.rtf, example.rtf);
            EXPECT_EQ(outcome.error, "");
        }
    }
}

// Which of several equal matches is taken is the writer's choice.
TEST(CompressedRtf, IsWrittenAsShortAsThePublishedExamplesAre) {
    for (const Published& example : PublishedExamples()) {
        const Bytes value = *rtf::Compress(ViewOf(example.rtf));
        EXPECT_EQ(value.size(), example.value.size()) << example.name;
        EXPECT_EQ(TextIn(*rtf::Decompress(value)), example.rtf) << example.name;
    }
}

// Every cut delivers a beginning of the text; strictly with an error that says so, leniently without.
TEST(CompressedRtf, CutAnywhereGivesWhatIsThere) {
    const Published& example = PublishedExamples().front();
    std::size_t longest = 0;
    for (std::size_t size = 0; size < example.value.size(); ++size) {
        SCOPED_TRACE(size);
        const ByteView cut = ByteView(example.value).Part(0, size);
        const Outcome strict = ReadInPieces(cut, Reading::Strict);
        const Outcome lenient = ReadInPieces(cut, Reading::Lenient);
        EXPECT_EQ(lenient.rtf, strict.rtf);
        EXPECT_TRUE(example.rtf.starts_with(strict.rtf));
        EXPECT_EQ(strict.error, size < 16
                                    ? "a value of " + std::to_string(size) + " bytes is too short for compressed RTF"
                                    : "the compressed RTF is cut short");
        EXPECT_EQ(lenient.error.empty(), size >= 16);
        EXPECT_GE(strict.rtf.size(), longest) << "a longer beginning gives no less";
        longest = strict.rtf.size();
    }
    EXPECT_EQ(longest, example.rtf.size());
}

TEST(CompressedRtf, FailsStrictlyWithAnyByteChanged) {
    const Published& example = PublishedExamples().front();
    for (std::size_t at = 0; at < example.value.size(); ++at) {
        Bytes changed = example.value;
        changed[at] ^= std::byte{0x10};
        EXPECT_FALSE(rtf::Decompress(changed)) << at;
    }
}

TEST(CompressedRtf, SaysWhatIsWrong) {
    const Bytes sound = PublishedExamples().front().value;
    const Bytes data(sound.begin() + 16, sound.end());
    const Bytes noMarker(data.begin(), data.end() - 2);
    const auto changed = [&sound](std::size_t at, std::uint32_t number) {
        Bytes value = sound;
        Poke(value, at, number);
        return value;
    };
    constexpr std::string_view kWhole = "{\\rtf1\\ansi\\ansicpg1252\\pard hello world}\r\n";
    struct Row {
        const char* name;
        Bytes value;
        std::string_view error;
        std::size_t delivered;
        std::string_view lenient;
    };
    const std::vector<Row> rows = {
        {"no end marker", ValueOf(kLzfu, 43, noMarker), "has no end marker", 43, kWhole},
        {"wrong CRC", changed(12, 1), "fails its CRC", 43, kWhole},
        {"declares less", ValueOf(kLzfu, 42, data), "another size than it declares", 42, kWhole},
        {"declares more", ValueOf(kLzfu, 44, data), "another size than it declares", 43, kWhole},
        {"cannot hold it", changed(4, 47 * 20 + 5000), "cannot hold the 5940 bytes", 0, kWhole},
        {"declares a gigabyte", changed(4, 1U << 30), "declares 1073741824 bytes", 0, kWhole},
        {"size below the header's", changed(0, 8), "a size smaller than its header", 0, kWhole},
        {"size too large", changed(0, 46), "is cut short", 43, kWhole},
        {"stored, cut short", ValueOf(kMela, 20, Numbers({'a', 'b'})), "", 2, "ab"},
        {"other type", changed(8, 0x4C5A4674), "no compressed RTF: its type is 0x4C5A4674", 0, ""},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const Outcome strict = ReadInPieces(row.value, Reading::Strict);
        EXPECT_NE(strict.error.find(row.error), std::string::npos) << strict.error;
        EXPECT_EQ(strict.error.empty(), row.error.empty());
        EXPECT_EQ(strict.rtf.size(), row.delivered);
        EXPECT_EQ(ReadInPieces(row.value, Reading::Lenient).rtf, row.lenient);
    }
}

TEST(CompressedRtf, IgnoresWhatLiesBehindTheValue) {
    Bytes value = PublishedExamples().front().value;
    value.resize(value.size() + 100, std::byte{0x55});
    EXPECT_TRUE(rtf::Decompress(value));
}

TEST(CompressedRtf, StoredIsReadBack) {
    const std::string text = "{\\rtf1 stored}";
    const Bytes value = *rtf::Store(ViewOf(text));
    EXPECT_EQ(value, ValueOf(kMela, text.size(), Bytes(ViewOf(text).Span().begin(), ViewOf(text).Span().end())));
    EXPECT_EQ(ReadInPieces(value, Reading::Strict).rtf, text);
    Bytes cut = value;
    cut.pop_back();
    EXPECT_EQ(ReadInPieces(cut, Reading::Strict).error, "the stored RTF is cut short");
    EXPECT_EQ(ReadInPieces(cut, Reading::Lenient).rtf + "}", text);
    EXPECT_EQ(ReadInPieces(cut, Reading::Lenient).error, "");
}

TEST(CompressedRtf, IsRefusedBeyondALimit) {
    const Bytes& value = PublishedExamples().front().value;
    EXPECT_TRUE(rtf::Decompress(value, Reading::Strict, 43));
    const Result<Bytes> refused = rtf::Decompress(value, Reading::Strict, 42);
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.Failure().code, ErrorCode::TooLarge);
}

// A source that fails from some offset on.
class FailingSource final : public ByteSource {
public:
    FailingSource(ByteView bytes, std::uint64_t failsAt) : m_bytes(bytes), m_failsAt(failsAt) {}
    std::uint64_t Size() const noexcept override { return m_bytes.Size(); }
    Status ReadAt(std::uint64_t offset, std::span<std::byte> out) override {
        if (offset + out.size() > m_failsAt) {
            return Error{ErrorCode::ReadFailed, "the disk is gone"};
        }
        CopyInto(out, m_bytes.Part(offset));
        return {};
    }

private:
    ByteView m_bytes;
    std::uint64_t m_failsAt;
};

TEST(CompressedRtf, PassesOnWhatItsSourceSays) {
    std::mt19937 random(1);
    std::string text(40'000, ' ');
    std::generate(text.begin(), text.end(), [&random] { return static_cast<char>('a' + random() % 26); });
    for (const Bytes& value : {*rtf::Compress(ViewOf(text)), *rtf::Store(ViewOf(text))}) {
        FailingSource source(value, value.size() / 2);
        const Outcome strict = ReadInPieces(source, Reading::Strict, 1000);
        EXPECT_EQ(strict.error, "the disk is gone");
        EXPECT_TRUE(text.starts_with(strict.rtf));
        EXPECT_GT(strict.rtf.size(), 5000U);
        const Outcome lenient = ReadInPieces(source, Reading::Lenient, 1000);
        EXPECT_EQ(lenient.error, "");
        EXPECT_EQ(lenient.rtf, strict.rtf);
    }
    FailingSource none(PublishedExamples().front().value, 0);
    EXPECT_EQ(ReadInPieces(none, Reading::Lenient).error, "the disk is gone");
}

// Any bytes are references and literals: far ones, overlapping ones, into zeros, around the ring's end.
TEST(CompressedRtf, DecodesAnyBytesAsTheSlowDecoderDoes) {
    std::mt19937 random(2);
    for (int round = 0; round < 300; ++round) {
        Bytes data(random() % 20'000);
        const bool isMostlyReferences = round % 2 == 0;
        for (std::size_t i = 0; i < data.size(); ++i) {
            const bool isControl = isMostlyReferences && i % 17 == 0;
            data[i] = isControl ? std::byte{0xFF} : static_cast<std::byte>(random());
        }
        const std::string expected = SlowDecode(data);
        const Bytes value = ValueOf(kLzfu, expected.size(), data);
        EXPECT_EQ(ReadInPieces(value, Reading::Lenient, 1 + random() % 5000).rtf, expected) << round;
    }
}

struct Shape {
    const char* name;
    std::string text;
};

std::vector<Shape> Shapes() {
    std::mt19937 random(3);
    std::vector<Shape> shapes = {
        {"empty", ""}, {"one", "{"},  {"two", "{\\"}, {"preset", "{\\rtf1\\ansi\\mac\\deff0\\deftab720"},
        {"same", {}},  {"pairs", {}}, {"random", {}}, {"words", {}},
        {"far", {}},
    };
    shapes[4].text = std::string(100'000, 'a');
    for (int i = 0; i < 100'000; ++i) {
        shapes[5].text += static_cast<char>('a' + random() % 2);
        shapes[6].text += static_cast<char>(random());
        shapes[7].text += i % 7 == 0   ? " \\par "
                          : i % 3 == 0 ? "hello"
                                       : std::string(1, static_cast<char>('a' + i % 26));
    }
    // The same text again at the ring's whole length, one less and one more.
    for (const std::size_t distance : {4094U, 4095U, 4096U, 4097U}) {
        std::string filler(distance - 20, ' ');
        std::generate(filler.begin(), filler.end(), [&random] { return static_cast<char>(0x80 + random() % 128); });
        shapes[8].text += "twenty bytes of text" + filler + "twenty bytes of text";
    }
    return shapes;
}

TEST(CompressedRtf, IsReadBackByBothDecodersHoweverItWasWritten) {
    for (const Shape& shape : Shapes()) {
        SCOPED_TRACE(shape.name);
        const Bytes value = *rtf::Compress(ViewOf(shape.text));
        EXPECT_TRUE(SlowDecode(ByteView(value).Part(16)) == shape.text);
        const Result<Bytes> again = rtf::Decompress(value);
        ASSERT_TRUE(again) << again.Failure().text;
        EXPECT_TRUE(TextIn(*again) == shape.text);
        EXPECT_LE(value.size(), 16 + shape.text.size() * 9 / 8 + 4);
        for (const std::size_t piece : {1U, 17U, 5000U}) {
            rtf::CompressedRtfWriter writer;
            for (ByteView rest = ViewOf(shape.text); !rest.IsEmpty(); rest = rest.Part(piece)) {
                ASSERT_TRUE(writer.Append(rest.Part(0, piece)));
            }
            EXPECT_TRUE(writer.Finish() == value) << "in pieces of " << piece;
        }
    }
}

}  // namespace
}  // namespace localmapi::testing
