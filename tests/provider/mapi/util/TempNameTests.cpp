// Names of temporary files, and names that are valid for a file.
#include "platform/FileTime.h"
#include "platform/Paths.h"
#include "platform/WideText.h"
#include "provider/MAPIUtils.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <set>
#include <string>
#include <string_view>

namespace {

std::string Narrow(const CStringW& text) {
    std::string narrow;
    for (const WCHAR unit : text) {
        narrow += unit < 0x80 ? static_cast<char>(unit) : '?';
    }
    return narrow;
}

// Takes away the beginning of `rest` that has the shape: a digit for each 'd', any other character as it is.
bool TakeShape(std::string_view& rest, std::string_view shape) {
    if (rest.size() < shape.size()) {
        return false;
    }
    for (std::size_t i = 0; i < shape.size(); ++i) {
        if (shape[i] == 'd' ? rest[i] < '0' || rest[i] > '9' : rest[i] != shape[i]) {
            return false;
        }
    }
    rest.remove_prefix(shape.size());
    return true;
}

constexpr std::string_view kDateAndTimeShape = "dddddd@dd-dd-dd";

TEST(ValidFileName, ReplacesWhatNoFileNameMayHold) {
    constexpr std::size_t kLong = 1024;
    struct Row {
        const char* name;
        CStringW given;
        std::size_t maxLength;
        CStringW expected;
    };
    const Row rows[] = {
        {"fine already", "report.doc"_w, kLong, "report.doc"_w},
        {"colon", "a:b"_w, kLong, "a%3ab"_w},
        {"all forbidden ones", "<>:\"/\\|*?"_w, kLong, "%3c%3e%3a%22%2f%5c%7c%2a%3f"_w},
        {"percent is allowed", "100%3a"_w, kLong, "100%3a"_w},
        {"at both ends", "?a?"_w, kLong, "%3fa%3f"_w},
        {"empty", ""_w, kLong, "%00"_w},
        {"blank at the end", "name "_w, kLong, "name %00"_w},
        {"blank within", "na me"_w, kLong, "na me"_w},
        {"not ASCII", CStringW({0x00E4, 0x4E2D, 0xD83D}), kLong, CStringW({0x00E4, 0x4E2D, 0xD83D})},
        {"device", "CON"_w, kLong, "%reservedCON"_w},
        {"device in lower case with extension", "con.txt"_w, kLong, "%reservedcon.txt"_w},
        {"device with two extensions", "Nul.tar.gz"_w, kLong, "%reservedNul.tar.gz"_w},
        {"begins like a device", "CONSOLE"_w, kLong, "CONSOLE"_w},
        {"begins like a device, blank", "con .txt"_w, kLong, "con .txt"_w},
        {"shorter than a device", "CO"_w, kLong, "CO"_w},
        {"clock", "clock$"_w, kLong, "%reservedclock$"_w},
        {"first port", "COM1"_w, kLong, "%reservedCOM1"_w},
        {"last port", "lpt9.log"_w, kLong, "%reservedlpt9.log"_w},
        {"no such port", "COM0"_w, kLong, "COM0"_w},
        {"two digits", "COM10"_w, kLong, "COM10"_w},
        {"fits exactly", "12345678"_w, 8, "12345678"_w},
        {"cut before the extension", "123456789.txt"_w, 8, "1234.txt"_w},
        {"extension too long", "1.extension"_w, 8, "1.ex.tmp"_w},
        {"no extension to keep", "123456789"_w, 8, "1234567."_w},
        {"hardly any room", "123456789.txt"_w, 5, "12345"_w},
        {"no room", "a.txt"_w, 0, ""_w},
        {"grown over the limit", "a:bcdef"_w, 7, "a%3abc."_w},
    };
    for (const Row& row : rows) {
        CStringW name = row.given;
        CMapiUtil::ConvertToValidFileName(name, row.maxLength);
        EXPECT_EQ(name, row.expected) << row.name << ": " << Narrow(name);
    }
}

TEST(Extension, IsCutFromTheLastPartOfAPathOrUrl) {
    struct Row {
        const char* name;
        CStringW path;
        CStringW expected;
    };
    const Row rows[] = {
        {"plain", "report.doc"_w, "doc"_w},
        {"two dots", "a.tar.gz"_w, "gz"_w},
        {"none", "report"_w, ""_w},
        {"empty", ""_w, ""_w},
        {"dot at the end", "report."_w, ""_w},
        {"dot first", ".profile"_w, "profile"_w},
        {"dot in a folder only", "a.b/c"_w, ""_w},
        {"dot in a folder only, backslash", "a.b\\c"_w, ""_w},
        {"later of both separators", "a\\b.x/c.y"_w, "y"_w},
        {"folder alone", "a.b/"_w, ""_w},
        {"URL with parameters", "http://h/a.png?x=b.gif"_w, "png"_w},
        {"dot behind the question mark", "http://h/a?b.gif"_w, ""_w},
        {"question mark in a folder", "a?b/c.txt"_w, "txt"_w},
        {"question mark first", "?a.txt"_w, ""_w},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(CMapiUtil::GetExtension(row.path), row.expected) << row.name;
    }
}

// "ddMMyy@hh-mm-ss" of a local time, written without the functions under test; the day's half is left to the locale.
std::string DateAndTime(const SYSTEMTIME& time) {
    char text[32];
    const int hour = time.wHour % 12 == 0 ? 12 : time.wHour % 12;
    std::snprintf(text, sizeof(text), "%02d%02d%02d@%02d-%02d-%02d", time.wDay, time.wMonth, time.wYear % 100, hour,
                  time.wMinute, time.wSecond);
    return text;
}

TEST(DateTimeForFileName, IsTheLocalTimeWithAnAtSign) {
    // A second may pass between the two readings; then one of the neighbours fits.
    SYSTEMTIME before, after;
    GetLocalTime(&before);
    const std::string text = Narrow(CMapiUtil::GetDateTimeForFileName());
    GetLocalTime(&after);
    EXPECT_TRUE(text.starts_with(DateAndTime(before)) || text.starts_with(DateAndTime(after))) << text;
    std::string_view rest = text;
    EXPECT_TRUE(TakeShape(rest, kDateAndTimeShape)) << text;
    EXPECT_EQ(rest.find_first_of("-@0123456789"), std::string_view::npos) << "only the day's half follows: " << text;
}

TEST(TempFileName, HasNumberTimeAndSuffix) {
    const std::string separator(1, static_cast<char>(kPathSeparator));
    const CStringW folder = FromPath(ToPath("some"_w) / "folder");
    std::set<std::string> numbers;
    const auto expectName = [&](const std::string& path, const std::string& expectedFolder, std::string_view suffix) {
        SCOPED_TRACE(path);
        ASSERT_TRUE(path.starts_with(expectedFolder));
        std::string_view rest = std::string_view(path).substr(expectedFolder.size());
        ASSERT_TRUE(TakeShape(rest, "tmp_"));
        std::string number;
        while (TakeShape(rest, "d")) {
            number += rest.data()[-1];
        }
        EXPECT_TRUE(!number.empty() && numbers.insert(number).second) << "none, or used twice";
        EXPECT_TRUE(TakeShape(rest, "_"));
        EXPECT_TRUE(TakeShape(rest, kDateAndTimeShape));
        ASSERT_TRUE(rest.ends_with(suffix));
        rest.remove_suffix(suffix.size());
        EXPECT_EQ(rest.find_first_of("0123456789-_%."), std::string_view::npos) << "only the day's half stands between";
    };
    const std::int32_t start = CMapiUtil::s_tempFilesCounter;
    expectName(Narrow(CMapiUtil::GetATempFileName(folder, "/?x.txt"_w, 1024)), Narrow(folder) + separator,
               "%2f%3fx.txt");
    expectName(Narrow(CMapiUtil::GetATempFileName(folder + kPathSeparator)), Narrow(folder) + separator, "");
    expectName(Narrow(CMapiUtil::GetATempFileName(""_w)), "", "");
    WCHAR temp[1024];
    ASSERT_GT(GetTempPathW(1023, temp), 0U);
    expectName(Narrow(CMapiUtil::GetATempFileName()), Narrow(temp), "");
    EXPECT_EQ(CMapiUtil::s_tempFilesCounter - start, 4);
}

TEST(TempFileName, FitsTheLimitWithItsFolder) {
    const CStringW folder = "1234567890"_w;
    const CStringW suffix = CStringW(500, 'x') + CStringW(".txt"_w);
    for (const std::size_t limit : {12U, 20U, 60U, 200U}) {
        const CStringW path = CMapiUtil::GetATempFileName(folder, suffix, limit);
        EXPECT_EQ(path.size(), limit);
        EXPECT_TRUE(limit < 20 || path.ends_with(".txt"_w)) << Narrow(path);
    }
    // No room for any name at all: nothing is invented, and nothing wraps around.
    for (const std::size_t limit : {0U, 5U, 11U}) {
        EXPECT_EQ(CMapiUtil::GetATempFileName(folder, suffix, limit), folder + kPathSeparator);
    }
}

}  // namespace
