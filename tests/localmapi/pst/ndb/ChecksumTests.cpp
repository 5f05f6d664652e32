// Checksums and encodings against published values.
#include "localmapi/pst/ndb/Checksum.h"
#include "localmapi/pst/ndb/Encoding.h"
#include "tests/localmapi/pst/support/ImageBuilder.h"
#include "tests/localmapi/pst/support/Sha1.h"

#include <gtest/gtest.h>

#include <string_view>

namespace localmapi::testing {
namespace {

using pst::BlockId;
using pst::Encoding;
using pst::FileOffset;

TEST(Checksum, GivesThePublishedValues) {
    EXPECT_EQ(pst::Crc(BytesOf("")), 0U);
    EXPECT_EQ(pst::Crc(BytesOf("123456789")), 0x2DFD2D88U);
    EXPECT_EQ(pst::Crc(BytesOf("password")), 0x50E099BCU);
    EXPECT_EQ(pst::Crc(BytesOf(std::string_view("K\0e\0y\0w\0o\0r\0d\0s\0", 16))), 0x2EDA4D3BU);
    EXPECT_EQ(pst::Signature(FileOffset{0x4800}, 0x4), 0x4804U);
    EXPECT_EQ(pst::Signature(FileOffset{0x12345600}, 0x100000ABC), 0x4E88U);
}

// A bit at a time, as the definition says.
std::uint32_t SlowCrc(ByteView bytes) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < bytes.Size(); ++i) {
        value ^= bytes.U8(i);
        for (int bit = 0; bit < 8; ++bit) {
            value = (value & 1) != 0 ? (value >> 1) ^ 0xEDB88320U : value >> 1;
        }
    }
    return value;
}

TEST(Checksum, IsTheSameInOnePieceInTwoAndBitByBit) {
    const Bytes bytes = Pattern(67);
    for (std::size_t cut = 0; cut <= bytes.size(); ++cut) {
        const ByteView first = ByteView(bytes).Part(0, cut);
        EXPECT_EQ(pst::Crc(first), SlowCrc(first)) << cut;
        EXPECT_EQ(pst::Crc(ByteView(bytes).Part(cut), pst::Crc(first)), SlowCrc(bytes)) << cut;
    }
}

TEST(Encoding, GivesThePublishedBytes) {
    struct Row {
        const char* name;
        Encoding encoding;
        bool decode;
        std::uint64_t id;
        std::uint32_t out;  // of the bytes 00 01 02 41
    };
    constexpr Row rows[] = {
        {"permute, encoded", Encoding::Permute, false, 4, 0x413613D3},
        {"permute, decoded", Encoding::Permute, true, 4, 0x47F1B400},
        {"cyclic, encoded", Encoding::Cyclic, false, 0x60, 0x7864D49F},
        {"cyclic, decoded", Encoding::Cyclic, true, 0x60, 0x7864D49F},
        {"none", Encoding::None, true, 4, 0x00010241},
    };
    for (const Row& row : rows) {
        Bytes bytes = ByteWriter().U32(0x41020100).Take();
        row.decode ? pst::Decode(row.encoding, BlockId{row.id}, bytes)
                   : pst::Encode(row.encoding, BlockId{row.id}, bytes);
        EXPECT_EQ(bytes, (ByteWriter().U8(row.out >> 24).U8(row.out >> 16).U8(row.out >> 8).U8(row.out).Take()))
            << row.name;
    }
}

TEST(Encoding, ComesBackForEveryByteAndPastTheWrapOfTheCycle) {
    const Bytes plain = Pattern(70'000);  // the cycle's step has 16 bits
    for (const Encoding encoding : {Encoding::Permute, Encoding::Cyclic}) {
        for (const std::uint64_t id : {0x4ULL, 0xFFFF0000ULL, 0x1'8000'7FFCULL}) {
            Bytes bytes = plain;
            pst::Encode(encoding, BlockId{id}, bytes);
            EXPECT_NE(bytes, plain);
            pst::Decode(encoding, BlockId{id}, bytes);
            EXPECT_EQ(bytes, plain) << id;
        }
    }
}

// The digests that the other tests compare with are only as good as this: FIPS 180-4's own examples.
TEST(Sha1, GivesThePublishedDigests) {
    EXPECT_EQ(Sha1Of(BytesOf("abc")), "a9993e364706816aba3e25717850c26c9cd0d89d");
    EXPECT_EQ(Sha1Of(BytesOf("abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq")),
              "84983e441c3bd26ebaae4aa1f95129e5e54670f1");
}

}  // namespace
}  // namespace localmapi::testing
