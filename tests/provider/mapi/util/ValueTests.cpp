// Times, hexadecimal entry ids, and the small string operations.
#include "mapi/MapiCodes.h"
#include "mapi/PropTags.h"
#include "platform/TaskMemory.h"
#include "provider/MAPIUtils.h"
#include "testing/StubInterfaces.h"
#include "tests/provider/mapi/util/FakeMapi.h"
#include "tests/provider/mapi/util/TestSupport.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace {

constexpr std::int64_t kLowest = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kHighest = std::numeric_limits<std::int64_t>::max();

TEST(FileTimeValue, KeepsItsBitsBothWays) {
    for (const std::int64_t value :
         {std::int64_t{0}, std::int64_t{1}, std::int64_t{-1}, std::int64_t{0x123456789ABCDEF0}, kLowest, kHighest}) {
        EXPECT_EQ(CMapiUtil::FromFileTimeToInt64(CMapiUtil::FileTimeFromInt64(value)), value);
    }
    const FILETIME halves = CMapiUtil::FileTimeFromInt64(0x0123456789ABCDEF);
    EXPECT_EQ(halves.dwHighDateTime, 0x01234567U);
    EXPECT_EQ(halves.dwLowDateTime, 0x89ABCDEFU);
}

TEST(UnixTime, CountsMillisecondsFrom1970) {
    struct Row {
        const char* name;
        std::int64_t ticks;
        std::int64_t expected;
    };
    const Row rows[] = {
        {"no time", 0, 0},
        {"the epoch", 116444736000000000, 0},
        {"one millisecond on", 116444736000010000, 1},
        {"less than a millisecond", 116444736000009999, 0},
        {"less than a millisecond before", 116444735999990001, 0},
        {"one second before", 116444735990000000, -1000},
        {"1601-01-01, one tick in", 1, -11644473599999},
        {"2009-02-13 23:31:30", 128790414900000000, 1234567890000},
        {"last FILETIME", kHighest, 910692730085477},
        {"highest bit set", kLowest, 910692730085477},
        {"all bits set", -1, -11644473600000},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(CMapiUtil::FromFileTimeToUnix(CMapiUtil::FileTimeFromInt64(row.ticks)), row.expected) << row.name;
    }
}

TEST(Hex, OfBytesReadsBackInEitherCase) {
    constexpr std::array<BYTE, 8> kBytes = {0x00, 0x01, 0x0A, 0x10, 0x7F, 0x80, 0xAB, 0xFF};
    const CStringW text = CMapiUtil::Bin2Hex(kBytes.size(), kBytes.data());
    EXPECT_EQ(text, "00010A107F80ABFF"_w);
    EXPECT_EQ(CMapiUtil::Bin2Hex(0, kBytes.data()), CStringW());
    EXPECT_EQ(CMapiUtil::Bin2Hex(4, nullptr), CStringW());

    for (const CStringW& spelling : {text, CStringW("00010a107f80abff"_w), CStringW("00010A107f80Abff"_w)}) {
        std::array<BYTE, 8> bytes = {};
        ULONG size = 0;
        EXPECT_TRUE(CMapiUtil::Hex2Bin(spelling, bytes.data(), &size, bytes.size()));
        EXPECT_EQ(size, 8U);
        EXPECT_EQ(bytes, kBytes);
        std::vector<BYTE> vector;
        EXPECT_TRUE(CMapiUtil::Hex2Bin(spelling, vector));
        EXPECT_EQ(vector, std::vector<BYTE>(kBytes.begin(), kBytes.end()));
    }
}

TEST(Hex, IntoABufferTellsTheSizeAndStopsAtTheFirstWrongDigit) {
    constexpr BYTE kUntouched = 0xEE;
    struct Row {
        const char* name;
        CStringW text;
        ULONG capacity;
        bool expected;
        ULONG size;
        std::vector<BYTE> written;
    };
    const Row rows[] = {
        {"empty", ""_w, 4, true, 0, {}},
        {"odd length", "ABC"_w, 4, false, 1, {}},
        {"one digit", "A"_w, 4, false, 0, {}},
        {"exactly full", "01020304"_w, 4, true, 4, {1, 2, 3, 4}},
        {"one byte too many", "0102030405"_w, 4, false, 5, {}},
        {"no room at all", "01"_w, 0, false, 1, {}},
        {"letter beyond F, high", "01G2"_w, 4, false, 2, {1}},
        {"letter beyond F, low", "012g"_w, 4, false, 2, {1}},
        {"below the digits", "01 2"_w, 4, false, 2, {1}},
        {"slash, just below the digits", "/0"_w, 4, false, 1, {}},
        {"between digits and letters", ":@"_w, 4, true, 1, {0x39}},
        {"beyond Latin", CStringW({'0', 0x0130}), 4, false, 1, {}},
        {"fullwidth digits", CStringW({0xFF11, 0xFF12}), 4, false, 1, {}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        std::array<BYTE, 5> bytes;
        bytes.fill(kUntouched);
        ULONG size = 99;
        EXPECT_EQ(CMapiUtil::Hex2Bin(row.text, bytes.data(), &size, row.capacity), row.expected);
        EXPECT_EQ(size, row.size);
        std::array<BYTE, 5> expected;
        expected.fill(kUntouched);
        std::copy(row.written.begin(), row.written.end(), expected.begin());
        EXPECT_EQ(bytes, expected);
    }
}

TEST(Hex, IntoAVectorRefusesTheEmptyText) {
    struct Row {
        const char* name;
        CStringW text;
        bool expected;
    };
    const Row rows[] = {
        {"empty", ""_w, false},
        {"odd length", "abc"_w, false},
        {"wrong digit", "zz"_w, false},
        {"one byte", "fe"_w, true},
    };
    for (const Row& row : rows) {
        std::vector<BYTE> bytes;
        EXPECT_EQ(CMapiUtil::Hex2Bin(row.text, bytes), row.expected) << row.name;
    }
}

TEST(SimpleString, IsTheTextOfAWideValueOnly) {
    CStringW text = "subject"_w;
    char narrow[] = "subject";
    SPropValue wide = {PR_SUBJECT_W, 0, {}};
    wide.Value.lpszW = text.data();
    EXPECT_EQ(CMapiUtil::Mapi2SimpleString(&wide), text);
    wide.Value.lpszW = nullptr;
    EXPECT_EQ(CMapiUtil::Mapi2SimpleString(&wide), CStringW());
    SPropValue ansi = {PR_SUBJECT_A, 0, {}};
    ansi.Value.lpszA = narrow;
    EXPECT_EQ(CMapiUtil::Mapi2SimpleString(&ansi), CStringW());
    // An absent property: the union holds a result code, which must not be taken for an address.
    SPropValue missing = {PROP_TAG(PT_ERROR, PROP_ID(PR_SUBJECT_W)), 0, {}};
    missing.Value.err = E_FAIL;
    EXPECT_EQ(CMapiUtil::Mapi2SimpleString(&missing), CStringW());
    EXPECT_EQ(CMapiUtil::Mapi2SimpleString(nullptr), CStringW());
}

TEST(ServerAndShare, AreCutFromAUncPath) {
    struct Row {
        const char* name;
        CStringW path;
        bool expected;
        CStringW server, share, rest;
    };
    const Row rows[] = {
        {"whole path", "\\\\srv\\data\\mail\\a.pst"_w, true, "srv"_w, "data"_w, "\\mail\\a.pst"_w},
        {"nothing behind the share", "\\\\srv\\data\\"_w, true, "srv"_w, "data"_w, "\\"_w},
        {"empty server and share", "\\\\\\\\"_w, true, ""_w, ""_w, "\\"_w},
        {"double backslash further on", "file:\\\\srv\\data\\x"_w, true, "srv"_w, "data"_w, "\\x"_w},
        {"no third backslash", "\\\\srv\\data"_w, false, "1"_w, "2"_w, "3"_w},
        {"no second backslash", "\\\\srv"_w, false, "1"_w, "2"_w, "3"_w},
        {"a drive", "C:\\a\\b\\c"_w, false, "1"_w, "2"_w, "3"_w},
        {"forward slashes", "//srv/data/x"_w, false, "1"_w, "2"_w, "3"_w},
        {"empty", ""_w, false, "1"_w, "2"_w, "3"_w},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        CStringW server = "1"_w, share = "2"_w, rest = "3"_w;
        EXPECT_EQ(CMapiUtil::GetServerAndShareName(row.path, server, share, rest), row.expected);
        EXPECT_EQ(server, row.server);
        EXPECT_EQ(share, row.share);
        EXPECT_EQ(rest, row.rest);
    }
    CStringW path = "\\\\srv\\data\\x"_w, server, share;
    EXPECT_TRUE(CMapiUtil::GetServerAndShareName(path, server, share, path)) << "an output may be the input";
    EXPECT_EQ(path, "\\x"_w);
    EXPECT_EQ(share, "data"_w);
}

TEST(ErrorText, IsAppendedForFailuresOnly) {
    CStringW message = "a"_w;
    HrToError(S_OK, "fine"_w, message);
    HrToError(S_FALSE, "fine"_w, message);
    EXPECT_EQ(message, "a"_w);
    HrToError(E_OUTOFMEMORY, "CopyStreamToBuffer"_w, message);
    EXPECT_EQ(message, "aError 0x8007000e. Msg: CopyStreamToBuffer"_w);
}

TEST(ContainerClass, DecidesTheKindOfAFolder) {
    struct Row {
        CStringW containerClass;
        int expected;
        std::vector<LogLine> lines;
    };
    const Row rows[] = {
        {"IPF.Note"_w, 1, {}},
        {"IPF.Contact"_w, 2, {}},
        {"IPF.Appointment"_w, 3, {}},
        {"IPF.Task"_w, 4, {}},
        {"IPF.StickyNote"_w, 5, {}},
        {"IPF.Note.OutlookHomepage"_w, 1, {}},
        {"IPF.Note.SocialConnector.FeedItems"_w, 1, {}},
        {"IPF.Journal"_w, 10, {{"DEBUG", "Ignored folder type 'IPF.Journal'"}}},
        {"Outlook.Reminder"_w, 10, {{"DEBUG", "Ignored folder type 'Outlook.Reminder'"}}},
        {"IPF.Configuration"_w, 10, {{"DEBUG", "Ignored folder type 'IPF.Configuration'"}}},
        {"ipf.note"_w, -1, {{"ERROR", "Unknown folder type 'ipf.note'"}}},
        {"IPF.Note.Other"_w, -1, {{"ERROR", "Unknown folder type 'IPF.Note.Other'"}}},
        {""_w, -1, {{"ERROR", "Unknown folder type ''"}}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(std::string(row.containerClass.begin(), row.containerClass.end()));
        const LogCapture log;
        EXPECT_EQ(ParseContainerClass(row.containerClass), row.expected);
        EXPECT_EQ(log.Lines(), row.lines);
    }
}

TEST(StatName, IsFreedOnce) {
    STATSTG stat = {};
    stat.pwcsName = static_cast<LPOLESTR>(CoTaskMemAlloc(16));
    FreeName(stat);
    EXPECT_EQ(stat.pwcsName, nullptr);
    FreeName(stat);
}

class ObjectWithId : public vx_testing::StubMapiProp<IMAPIProp> {
public:
    HRESULT result = S_OK;
    ULONG tag = PR_ENTRYID;
    std::vector<BYTE> id;
    ULONG askedTag = 0;
    ULONG askedFlags = 0;

    HRESULT STDMETHODCALLTYPE GetProps(LPSPropTagArray tags, ULONG flags, ULONG* count, LPSPropValue* values) override {
        askedTag = tags->cValues == 1 ? tags->aulPropTag[0] : 0;
        askedFlags = flags;
        if (FAILED(result)) {
            return result;
        }
        *count = 1;
        *values = FakeMapi::NewProps(1);
        (*values)->ulPropTag = tag;
        (*values)->Value.bin = {static_cast<ULONG>(id.size()), id.data()};
        return result;
    }
};

TEST(EntryIdText, IsThatOfThePropertyIfThereIsOne) {
    const FakeMapi mapi;
    struct Row {
        const char* name;
        HRESULT result;
        ULONG tag;
        CStringW expected;
    };
    const Row rows[] = {
        {"an id", S_OK, PR_ENTRYID, "00FF10"_w},
        {"missing", MAPI_W_ERRORS_RETURNED, PROP_TAG(PT_ERROR, PROP_ID(PR_ENTRYID)), ""_w},
        {"call fails", E_FAIL, PR_ENTRYID, ""_w},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const LogCapture log;
        ObjectWithId object;
        object.id = {0x00, 0xFF, 0x10};
        object.result = row.result;
        object.tag = row.tag;
        EXPECT_EQ(CMapiUtil::GetEID(&object), row.expected);
        EXPECT_EQ(object.askedTag, 0x0FFF0102U);
        EXPECT_EQ(object.askedFlags, 0x80000000U);
        EXPECT_EQ(log.Texts("DEBUG").size(), row.expected.empty() ? 0U : 1U);
    }
    EXPECT_EQ(FakeMapi::LiveBlocks(), 0);
}

}  // namespace
