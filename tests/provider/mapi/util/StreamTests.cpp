// Reading streams into memory, honest ones and others.
#include "platform/ResultCodes.h"
#include "platform/WideText.h"
#include "provider/MAPIUtils.h"
#include "tests/provider/mapi/util/ScriptedStream.h"
#include "tests/provider/mapi/util/TestSupport.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

namespace {

using vx_testing::ScriptedStream;

constexpr ULONG kNoLimit = 0xFFFFFFFF;

std::vector<BYTE> Counting(std::size_t size) {
    std::vector<BYTE> bytes(size);
    for (std::size_t i = 0; i < size; ++i) {
        bytes[i] = static_cast<BYTE>(i * 7 + i / 256);
    }
    return bytes;
}

TEST(StreamSize, IsWhatTheStreamClaimsWithin32Bits) {
    struct Row {
        const char* name;
        std::uint64_t claimed;
        HRESULT statResult;
        HRESULT expected;
        ULONG size;
    };
    const Row rows[] = {
        {"empty", 0, S_OK, S_OK, 0},
        {"largest", 0xFFFFFFFF, S_OK, S_OK, 0xFFFFFFFF},
        {"one more", 0x100000000, S_OK, E_OUTOFMEMORY, 77},
        {"all bits", 0xFFFFFFFFFFFFFFFF, S_OK, E_OUTOFMEMORY, 77},
        {"no answer", 5, STG_E_REVERTED, STG_E_REVERTED, 77},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        ScriptedStream stream;
        stream.claimedSize = row.claimed;
        stream.statResult = row.statResult;
        ULONG size = 77;
        EXPECT_EQ(CMapiUtil::GetStreamSize(&stream, &size), row.expected);
        EXPECT_EQ(size, row.size);
        EXPECT_EQ(stream.statFlag, 1U);
    }
}

TEST(ReadStream, GoesOnUntilTheSizeTheEndOrAFailure) {
    struct Row {
        const char* name;
        std::size_t streamSize;
        ULONG piece;
        std::size_t failAt;
        ULONG asked;
        HRESULT expected;
        ULONG read;
    };
    constexpr std::size_t kNever = ScriptedStream::kNever;
    const Row rows[] = {
        {"in one piece", 10, 100, kNever, 10, S_OK, 10},
        {"byte by byte", 10, 1, kNever, 10, S_OK, 10},
        {"part of it", 10, 3, kNever, 7, S_OK, 7},
        {"stream ends before", 10, 3, kNever, 20, S_OK, 10},
        {"nothing asked", 10, 3, 0, 0, S_OK, 0},
        {"fails at once", 10, 3, 0, 10, STG_E_READFAULT, 0},
        {"fails half-way", 10, 3, 6, 10, STG_E_READFAULT, 6},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        ScriptedStream stream;
        stream.bytes = Counting(row.streamSize);
        stream.largestPiece = row.piece;
        stream.failAt = row.failAt;
        std::vector<BYTE> buffer(row.asked + 1, 0xEE);
        ULONG read = 99;
        EXPECT_EQ(CMapiUtil::ReadStream(&stream, row.asked, buffer.data(), &read), row.expected);
        EXPECT_EQ(read, row.read);
        std::vector<BYTE> expected = Counting(row.read);
        expected.resize(buffer.size(), 0xEE);
        EXPECT_EQ(buffer, expected);
    }
}

TEST(ReadStream, BelievesNoClaimToHaveReadMore) {
    ScriptedStream stream;
    stream.bytes = Counting(100);
    stream.excess = 1000;
    std::vector<BYTE> buffer(10);
    ULONG read = 0;
    EXPECT_EQ(CMapiUtil::ReadStream(&stream, 10, buffer.data(), &read), S_OK);
    EXPECT_EQ(read, 10U);
    EXPECT_EQ(buffer, Counting(10));
}

TEST(UnknownSize, FailsAsSoonAsTheAllowanceIsUsedUp) {
    struct Row {
        const char* name;
        std::size_t streamSize;
        ULONG maxSize;
        HRESULT expected;
        std::size_t read;
    };
    const Row rows[] = {
        {"empty", 0, 1, S_OK, 0},
        {"one byte below the limit", 99, 100, S_OK, 99},
        {"exactly the limit", 100, 100, E_OUTOFMEMORY, 100},
        {"one byte above", 101, 100, E_OUTOFMEMORY, 101},
        {"a limit of nothing", 10, 0, E_OUTOFMEMORY, 0},
        {"several pieces", 0x4000 * 2 + 5, 0x10000, S_OK, 0x4000 * 2 + 5},
        {"whole pieces", 0x4000 * 3, 0x10000, S_OK, 0x4000 * 3},
        {"whole pieces up to the limit", 0x4000 * 3, 0x4000 * 3, E_OUTOFMEMORY, 0x4000 * 3},
        {"limit beyond a signed size", 10, kNoLimit, S_OK, 10},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        ScriptedStream stream;
        stream.bytes = Counting(row.streamSize);
        std::vector<BYTE> bytes = {1, 2, 3};
        EXPECT_EQ(CMapiUtil::ReadStreamWithUnknownSize(&stream, bytes, row.maxSize), row.expected);
        EXPECT_EQ(bytes, Counting(row.read));
    }
}

TEST(UnknownSize, EndsAnEndlessStreamAtTheLimitAndGivesAFailureOn) {
    ScriptedStream endless;
    endless.endless = true;
    endless.excess = 5;
    std::vector<BYTE> bytes;
    EXPECT_EQ(CMapiUtil::ReadStreamWithUnknownSize(&endless, bytes, 1000000), E_OUTOFMEMORY);
    EXPECT_LT(bytes.size(), 1000000U + 0x4000U);

    ScriptedStream failing;
    failing.bytes = Counting(0x5000);
    failing.failAt = 0x4000;
    EXPECT_EQ(CMapiUtil::ReadStreamWithUnknownSize(&failing, bytes, 1000000), STG_E_READFAULT);
}

TEST(CopyToBlock, ReadsTheStreamWithOneCall) {
    struct Row {
        const char* name;
        std::size_t streamSize;
        std::uint64_t claimed;
        ULONG extra;
        ULONG piece;
        HRESULT expected;
        const char* exit;
    };
    const Row rows[] = {
        {"plain", 5000, 5000, 0, 5000, S_OK, "Exit"},
        {"with extra bytes", 10, 10, 3, 10, S_OK, "Exit"},
        {"empty", 0, 0, 0, 1, S_OK, "Exit"},
        {"ends early", 10, 11, 0, 100, E_UNEXPECTED, "Exit readSize != stat.cbSize.QuadPart"},
        {"gives it in two pieces", 10, 10, 0, 5, E_UNEXPECTED, "Exit readSize != stat.cbSize.QuadPart"},
        {"too large", 10, 0x100000000, 0, 10, E_OUTOFMEMORY, "Exit E_OUTOFMEMORY"},
        {"too large with the extra bytes", 10, 0xFFFFFFFF, 1, 10, E_OUTOFMEMORY, "Exit E_OUTOFMEMORY"},
        {"so large that a sum would wrap", 10, 0xFFFFFFFFFFFFFFFF, 2, 10, E_OUTOFMEMORY, "Exit E_OUTOFMEMORY"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const LogCapture log;
        ScriptedStream stream;
        stream.bytes = Counting(row.streamSize);
        stream.claimedSize = row.claimed;
        stream.largestPiece = row.piece;
        BYTE* buffer = nullptr;
        ULONG size = 99;
        EXPECT_EQ(CMapiUtil::CopyStreamToBuffer(&stream, &buffer, &size, row.extra), row.expected);
        const std::unique_ptr<BYTE[]> owner(buffer);
        EXPECT_EQ(stream.statFlag, 1U);
        ASSERT_EQ(log.Lines().size(), 2U);
        EXPECT_EQ(log.Lines()[1].text, row.exit);
        if (FAILED(row.expected)) {
            EXPECT_EQ(buffer, nullptr);
            EXPECT_EQ(size, 0U);
            EXPECT_LE(stream.reads, 1);
            continue;
        }
        ASSERT_EQ(size, row.streamSize);
        EXPECT_EQ(std::vector<BYTE>(buffer, buffer + size), stream.bytes);
        std::fill_n(buffer + size, row.extra, BYTE{1});  // the extra bytes are there
        EXPECT_EQ(stream.reads, 1);
    }
}

TEST(CopyToBlock, GivesTheStreamsFailureOn) {
    for (const bool atStat : {true, false}) {
        ScriptedStream stream;
        stream.bytes = Counting(10);
        stream.claimedSize = 10;
        (atStat ? stream.statResult : stream.readFailure) = STG_E_REVERTED;
        stream.failAt = 0;
        BYTE* buffer = nullptr;
        ULONG size = 0;
        EXPECT_EQ(CMapiUtil::CopyStreamToBuffer(&stream, &buffer, &size, 0), STG_E_REVERTED);
        EXPECT_EQ(buffer, nullptr);
    }
}

TEST(CopyToVector, HoldsTheLimitBeforeItAllocates) {
    struct Row {
        const char* name;
        std::size_t streamSize;
        std::uint64_t claimed;
        ULONG maxSize;
        ULONG extra;
        HRESULT expected;
        std::size_t vectorSize;
        ULONG size;
    };
    const Row rows[] = {
        {"plain", 5000, 5000, 6000, 0, S_OK, 5000, 5000},
        {"exactly the limit", 100, 100, 100, 2, S_OK, 102, 100},
        {"above the limit", 101, 101, 100, 0, E_OUTOFMEMORY, 0, 0},
        {"empty", 0, 0, 0, 1, S_OK, 1, 0},
        {"ends early", 7, 10, 100, 1, S_OK, 11, 7},
        {"nearly 4 GiB, over the limit", 10, 0xFFFFFFFF, 0x6400000, 0, E_OUTOFMEMORY, 0, 0},
        {"4 GiB with the extra byte", 10, 0xFFFFFFFF, kNoLimit, 1, E_OUTOFMEMORY, 0, 0},
        {"beyond 32 bits", 10, 0x100000000, kNoLimit, 0, E_OUTOFMEMORY, 0, 0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        ScriptedStream stream;
        stream.bytes = Counting(row.streamSize);
        stream.claimedSize = row.claimed;
        stream.position = row.streamSize / 2;  // must be read from its start all the same
        stream.largestPiece = 512;
        std::vector<BYTE> bytes = {1, 2, 3};
        ULONG size = 99;
        EXPECT_EQ(CMapiUtil::CopyStreamToBuffer(&stream, row.maxSize, bytes, &size, row.extra), row.expected);
        EXPECT_EQ(size, row.size);
        std::vector<BYTE> expected = Counting(row.size);
        expected.resize(row.vectorSize, 0);
        EXPECT_EQ(bytes, expected);
    }
}

TEST(CopyToVector, ReadsAStreamThatDoesNotKnowItsSize) {
    struct Row {
        const char* name;
        std::size_t streamSize;
        ULONG maxSize;
        HRESULT expected;
    };
    for (const Row& row : {Row{"below the limit", 99, 100, S_OK}, Row{"exactly the limit", 100, 100, E_OUTOFMEMORY}}) {
        SCOPED_TRACE(row.name);
        ScriptedStream stream;
        stream.bytes = Counting(row.streamSize);
        stream.statResult = E_NOTIMPL;
        stream.seekResult = E_NOTIMPL;
        std::vector<BYTE> bytes;
        ULONG size = 0;
        EXPECT_EQ(CMapiUtil::CopyStreamToBuffer(&stream, row.maxSize, bytes, &size, 4), row.expected);
        EXPECT_EQ(size, row.streamSize);
        EXPECT_EQ(bytes, stream.bytes);
    }
}

TEST(CopyToVector, IsEmptyAfterAFailure) {
    struct Row {
        const char* name;
        HRESULT statResult;
        std::size_t failAt;
        HRESULT expected;
    };
    for (const Row& row : {Row{"size", STG_E_REVERTED, ScriptedStream::kNever, STG_E_REVERTED},
                           Row{"first read", S_OK, 0, STG_E_READFAULT}, Row{"later read", S_OK, 4, STG_E_READFAULT}}) {
        SCOPED_TRACE(row.name);
        ScriptedStream stream;
        stream.bytes = Counting(10);
        stream.claimedSize = 10;
        stream.largestPiece = 4;
        stream.statResult = row.statResult;
        stream.failAt = row.failAt;
        std::vector<BYTE> bytes = {1, 2, 3};
        ULONG size = 0;
        EXPECT_EQ(CMapiUtil::CopyStreamToBuffer(&stream, 100, bytes, &size, 0), row.expected);
        EXPECT_TRUE(bytes.empty());
    }
}

TEST(CopyOfRtf, IsTerminatedTextOfAnyLength) {
    for (const std::size_t size : {0U, 1U, 4095U, 4096U, 4097U, 8192U, 300000U}) {
        SCOPED_TRACE(size);
        ScriptedStream stream;
        stream.bytes.assign(size, 'r');
        stream.excess = 3;
        char* text = nullptr;
        ASSERT_EQ(CMapiUtil::CopyWrappedRtfStreamToBuffer(&stream, &text), S_OK);
        const std::unique_ptr<char, decltype(&std::free)> owner(text, &std::free);
        EXPECT_EQ(std::string(text), std::string(size, 'r'));
    }
}

TEST(CopyOfRtf, EndsAtAPieceThatIsNotFull) {
    ScriptedStream stream;
    stream.bytes.assign(5000, 'r');
    stream.largestPiece = 1000;
    char* text = nullptr;
    ASSERT_EQ(CMapiUtil::CopyWrappedRtfStreamToBuffer(&stream, &text), S_OK);
    const std::unique_ptr<char, decltype(&std::free)> owner(text, &std::free);
    EXPECT_EQ(std::string(text).size(), 1000U);
}

TEST(CopyOfRtf, IsNothingAfterAFailure) {
    ScriptedStream stream;
    stream.bytes.assign(10000, 'r');
    stream.failAt = 8192;
    char* text = nullptr;
    EXPECT_EQ(CMapiUtil::CopyWrappedRtfStreamToBuffer(&stream, &text), STG_E_READFAULT);
    EXPECT_EQ(text, nullptr);
}

}  // namespace
