// Names of result codes, and the reports of failures as they stand in the log.
#include "platform/LastError.h"
#include "platform/ResultCodes.h"
#include "platform/WideText.h"
#include "provider/ErrorNames.h"
#include "provider/ErrorReport.h"
#include "tests/provider/mapi/util/TestSupport.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

// The codes as published: [MS-OXCDATA] 2.4, [MS-ERREF] 2.1.1, and the reference of structured storage.
constexpr char kPublishedCodes[] = R"(
80004005 MAPI_E_CALL_FAILED  80004002 MAPI_E_INTERFACE_NOT_SUPPORTED  80030001 STG_E_INVALIDFUNCTION
80030002 STG_E_FILENOTFOUND  80030003 STG_E_PATHNOTFOUND  80030004 STG_E_TOOMANYOPENFILES
80030005 STG_E_ACCESSDENIED  80030006 STG_E_INVALIDHANDLE  80030008 STG_E_INSUFFICIENTMEMORY
80030009 STG_E_INVALIDPOINTER  80030012 STG_E_NOMOREFILES  80030013 STG_E_DISKISWRITEPROTECTED
80030019 STG_E_SEEKERROR  8003001D STG_E_WRITEFAULT  8003001E STG_E_READFAULT  80030020 STG_E_SHAREVIOLATION
80030021 STG_E_LOCKVIOLATION  80030050 STG_E_FILEALREADYEXISTS  80030057 STG_E_INVALIDPARAMETER
80030070 STG_E_MEDIUMFULL  800300F0 STG_E_PROPSETMISMATCHED  800300FA STG_E_ABNORMALAPIEXIT
800300FB STG_E_INVALIDHEADER  800300FC STG_E_INVALIDNAME  800300FD STG_E_UNKNOWN
800300FE STG_E_UNIMPLEMENTEDFUNCTION  800300FF STG_E_INVALIDFLAG  80030100 STG_E_INUSE  80030101 STG_E_NOTCURRENT
80030102 STG_E_REVERTED  80030103 STG_E_CANTSAVE  80030104 STG_E_OLDFORMAT  80030105 STG_E_OLDDLL
80030106 STG_E_SHAREREQUIRED  80030107 STG_E_NOTFILEBASEDSTORAGE  80030108 STG_E_EXTANTMARSHALLINGS
80030109 STG_E_DOCFILECORRUPT  80030110 STG_E_BADBASEADDRESS  80030111 STG_E_DOCFILETOOLARGE
80030112 STG_E_NOTSIMPLEFORMAT  80030201 STG_E_INCOMPLETE  80030202 STG_E_TERMINATED  80040102 MAPI_E_NO_SUPPORT
80040103 MAPI_E_BAD_CHARWIDTH  80040105 MAPI_E_STRING_TOO_LONG  80040106 MAPI_E_UNKNOWN_FLAGS
80040107 MAPI_E_INVALID_ENTRYID  80040108 MAPI_E_INVALID_OBJECT  80040109 MAPI_E_OBJECT_CHANGED
8004010A MAPI_E_OBJECT_DELETED  8004010B MAPI_E_BUSY  8004010D MAPI_E_NOT_ENOUGH_DISK
8004010E MAPI_E_NOT_ENOUGH_RESOURCES  8004010F MAPI_E_NOT_FOUND  80040110 MAPI_E_VERSION
80040111 MAPI_E_LOGON_FAILED  80040112 MAPI_E_SESSION_LIMIT  80040113 MAPI_E_USER_CANCEL
80040114 MAPI_E_UNABLE_TO_ABORT  80040115 MAPI_E_NETWORK_ERROR  80040116 MAPI_E_DISK_ERROR
80040117 MAPI_E_TOO_COMPLEX  80040118 MAPI_E_BAD_COLUMN  80040119 MAPI_E_EXTENDED_ERROR  8004011A MAPI_E_COMPUTED
8004011B MAPI_E_CORRUPT_DATA  8004011C MAPI_E_UNCONFIGURED  8004011D MAPI_E_FAILONEPROVIDER
8004011E MAPI_E_UNKNOWN_CPID  8004011F MAPI_E_UNKNOWN_LCID  80040120 MAPI_E_PASSWORD_CHANGE_REQUIRED
80040121 MAPI_E_PASSWORD_EXPIRED  80040122 MAPI_E_INVALID_WORKSTATION_ACCOUNT  80040123 MAPI_E_INVALID_ACCESS_TIME
80040124 MAPI_E_ACCOUNT_DISABLED  800401F3 CO_E_CLASSSTRING  80040151 REGDB_E_WRITEREGDB
80040154 REGDB_E_CLASSNOTREG  80040200 MAPI_E_END_OF_SESSION  80040202 MAPI_E_MISSING_REQUIRED_COLUMN
80040201 MAPI_E_UNKNOWN_ENTRYID  80040301 MAPI_E_BAD_VALUE  80040302 MAPI_E_INVALID_TYPE
80040303 MAPI_E_TYPE_NO_SUPPORT  80040304 MAPI_E_UNEXPECTED_TYPE  80040305 MAPI_E_TOO_BIG
80040306 MAPI_E_DECLINE_COPY  80040307 MAPI_E_UNEXPECTED_ID  80040400 MAPI_E_UNABLE_TO_COMPLETE
80040403 MAPI_E_TABLE_TOO_BIG  80040402 MAPI_E_TABLE_EMPTY  80040401 MAPI_E_TIMEOUT
80040405 MAPI_E_INVALID_BOOKMARK  80040502 MAPI_E_NOT_ME  80040501 MAPI_E_CANCEL  80040500 MAPI_E_WAIT
80040600 MAPI_E_CORRUPT_STORE  80040601 MAPI_E_NOT_IN_QUEUE  80040602 MAPI_E_NO_SUPPRESS
80040604 MAPI_E_COLLISION  80040605 MAPI_E_NOT_INITIALIZED  80040606 MAPI_E_NON_STANDARD
80040607 MAPI_E_NO_RECIPIENTS  80040608 MAPI_E_SUBMITTED  80040609 MAPI_E_HAS_FOLDERS
8004060A MAPI_E_HAS_MESSAGES  8004060B MAPI_E_FOLDER_CYCLE  80040700 MAPI_E_AMBIGUOUS_RECIP
80040803 SYNC_E_NO_PARENT  80040802 SYNC_E_CONFLICT  80040801 SYNC_E_IGNORE  80040800 SYNC_E_OBJECT_DELETED
80040805 SYNC_E_UNSYNCHRONIZED  00000001 S_FALSE  80070057 MAPI_E_INVALID_PARAMETER
8007000E MAPI_E_NOT_ENOUGH_MEMORY  80070005 MAPI_E_NO_ACCESS  00030200 STG_S_CONVERTED  00030203 STG_S_MONITORING
00030202 STG_S_RETRYNOW  00030201 STG_S_BLOCK  00030204 STG_S_MULTIPLEOPENS  00040203 MAPI_W_NO_SERVICE
00040181 OLEOBJ_S_CANNOT_DOVERB_NOW  00030206 STG_S_CANNOTCONSOLIDATE  00040380 MAPI_W_ERRORS_RETURNED
00040580 MAPI_W_CANCEL_MESSAGE  00040482 MAPI_W_APPROX_COUNT  00040481 MAPI_W_POSITION_CHANGED
00040680 MAPI_W_PARTIAL_COMPLETION  00040821 SYNC_W_CLIENT_CHANGE_NEWER  00040820 SYNC_W_PROGRESS
)";

HRESULT Result(std::uint32_t code) {
    return static_cast<HRESULT>(code);
}

CStringW Wide(const std::string& ascii) {
    return {ascii.begin(), ascii.end()};
}

TEST(ErrorName, IsTheSymbolOfEveryNamedCode) {
    std::istringstream published(kPublishedCodes);
    std::uint32_t code = 0;
    std::string name;
    int count = 0;
    for (; published >> std::hex >> code >> name; ++count) {
        EXPECT_EQ(ErrorNameFromErrorCode(Result(code)), Wide(name)) << name;
    }
    EXPECT_EQ(count, 132);
}

TEST(ErrorName, IsHexadecimalForEveryOtherCode) {
    struct Row {
        const char* name;
        std::uint32_t code;
        CStringW expected;
    };
    const Row rows[] = {
        {"success", 0, "0x00000000"_w},
        {"number of a Win32 error", 2, "0x00000002"_w},
        {"all bits", 0xFFFFFFFF, "0xFFFFFFFF"_w},
        {"storage code without a row", 0x00030205, "0x00030205"_w},
        {"synchronization code without a row", 0x80040804, "0x80040804"_w},
        {"just beyond a row", 0x80040125, "0x80040125"_w},
        {"COM's E_ABORT", 0x80004004, "0x80004004"_w},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(ErrorNameFromErrorCode(Result(row.code)), row.expected) << row.name;
    }
}

TEST(ErrorName, OfAnUnknownCodeStandsInOneBufferAThread) {
    const WCHAR* first = ErrorNameFromErrorCode(Result(0xA0000001));
    const WCHAR* known = ErrorNameFromErrorCode(S_FALSE);
    EXPECT_EQ(CStringW(first), "0xA0000001"_w);
    std::thread([] { ErrorNameFromErrorCode(Result(0xB0000002)); }).join();
    EXPECT_EQ(CStringW(first), "0xA0000001"_w) << "another thread has a buffer of its own";
    EXPECT_EQ(ErrorNameFromErrorCode(Result(0xC0000003)), first);
    EXPECT_EQ(CStringW(first), "0xC0000003"_w);
    EXPECT_EQ(CStringW(known), "S_FALSE"_w);
}

std::vector<LogLine> Report(const char* text) {
    return {{"ERROR", text}};
}

TEST(ErrorReport, HasTextCodeAndPlaceInTheLog) {
    struct Row {
        const char* name;
        std::uint32_t code;
        std::vector<LogLine> expected;
    };
    const Row rows[] = {
        {"named failure", 0x8004010F,
         Report("Error: \r\nCode: MAPI_E_NOT_FOUND == 0x8004010F\r\nFunction Open%s\r\nFile A.cpp\r\nLine 12")},
        {"unnamed failure", 0x80070002,
         Report("Error: \r\nCode: 0x80070002 == 0x80070002\r\nFunction Open%s\r\nFile A.cpp\r\nLine 12")},
        {"warning", 0x00040380,
         Report("Warning: \r\nCode: MAPI_W_ERRORS_RETURNED == 0x00040380\r\nFunction Open%s\r\nFile A.cpp\r\nLine 12")},
        {"success", 0,
         Report("Warning: \r\nCode: 0x00000000 == 0x00000000\r\nFunction Open%s\r\nFile A.cpp\r\nLine 12")},
    };
    for (const bool isError : {false, true}) {
        for (const Row& row : rows) {
            SCOPED_TRACE(row.name);
            const LogCapture log;
            LogError(Result(row.code), 0, "A.cpp", 12, "Open%s", isError, false);
            EXPECT_EQ(log.Lines(), row.expected);
        }
    }
}

TEST(ErrorReport, TakesTheSystemsTextForAnErrorNumber) {
    WCHAR text[256] = {};
    const DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                                        ERROR_FILE_NOT_FOUND, 0, text, 256, nullptr);
    ASSERT_GT(length, 0U);
    const std::string system(text, text + length);

    const LogCapture log;
    LogError(E_FAIL, ERROR_FILE_NOT_FOUND, "A.cpp", 1, "F", true, true);
    LogError(E_FAIL, 0x2FFFFFFF, "A.cpp", 1, "F", true, true);
    const std::string rest = "\r\nCode: MAPI_E_CALL_FAILED == 0x80004005\r\nFunction F\r\nFile A.cpp\r\nLine 1";
    EXPECT_EQ(log.Texts("ERROR"), (std::vector<std::string>{"Error: " + system + rest, "Error: " + rest}));
}

TEST(ErrorCheck, ReportsAndJudgesAResult) {
    struct Row {
        const char* name;
        std::uint32_t code;
        bool check;
        bool warn;
        std::size_t reports;
    };
    for (const Row& row : {Row{"success", 0, true, true, 0}, Row{"positive", 1, false, true, 1},
                           Row{"failure", 0x80004005, false, false, 1}}) {
        SCOPED_TRACE(row.name);
        const LogCapture check;
        EXPECT_EQ(CheckHResFn(Result(row.code), "F", 0, "A.cpp", 1), row.check);
        EXPECT_EQ(check.Lines().size(), row.reports);
        const LogCapture warn;
        EXPECT_EQ(WarnHResFn(Result(row.code), "F", 0, "A.cpp", 1), row.warn);
        EXPECT_EQ(warn.Lines().size(), row.reports);
    }
}

TEST(Win32ErrorReport, MakesAResultOfTheLastError) {
    struct Row {
        const char* name;
        std::uint32_t lastError;
        std::uint32_t expected;
        std::size_t reports;
    };
    const Row rows[] = {
        {"no error", 0, 0, 0},
        {"file not found", 2, 0x80070002, 1},
        {"more than 16 bits", 0x12345, 0x80072345, 1},
        {"a result already", 0x80030005, 0x80030005, 1},
    };
    for (const auto function : {&DialogOnWin32Error, &WarnOnWin32Error}) {
        for (const Row& row : rows) {
            SCOPED_TRACE(row.name);
            const LogCapture log;
            SetLastError(row.lastError);
            EXPECT_EQ(static_cast<std::uint32_t>(function("A.cpp", 7, "F")), row.expected);
            EXPECT_EQ(log.Texts("ERROR").size(), row.reports);
        }
    }
}

}  // namespace
