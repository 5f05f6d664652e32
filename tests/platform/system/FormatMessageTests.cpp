// FormatMessageW: inserts, escapes, line breaks, the buffer's rules and the system's own texts.
#include "platform/LastError.h"
#include "platform/WideText.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdarg>
#include <iterator>

namespace {

struct Outcome {
    DWORD error;  // 0 for success
    CStringW text;
};

Outcome FormatWith(DWORD flags, LPCWSTR format, va_list* arguments) {
    WCHAR buffer[256] = {};
    SetLastError(0);
    const DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_STRING | flags, format, 0, 0, buffer,
                                        static_cast<DWORD>(std::size(buffer)), arguments);
    return {length == 0 ? GetLastError() : 0, CStringW(buffer, length)};
}

// Not a template: a va_list comes from arguments of any number and type.
Outcome Format(DWORD flags, LPCWSTR format, ...) {
    va_list arguments;
    va_start(arguments, format);
    Outcome outcome = FormatWith(flags, format, &arguments);
    va_end(arguments);
    return outcome;
}

TEST(FormatMessage, PutsInsertsWhereTheirNumbersStand) {
    const struct {
        const char* name;
        LPCWSTR format;
        LPCWSTR expected;
    } rows[] = {
        {"wide text by default", "[%1]"_w, "[Disk full]"_w},
        {"any order, repeated", "%4 %1 %4"_w, "x Disk full x"_w},
        {"hexadecimal with zeros", "0x%2!08X!"_w, "0x0000BEEF"_w},
        {"integers", "%2!d! %2!u! %2!o! %2!x! %2!i! %2!lu!"_w, "48879 48879 137357 beef 48879 48879"_w},
        {"flags and widths", "[%2!8d!][%2!-8d!][%2!+d!][%2!#x!]"_w, "[   48879][48879   ][+48879][0xbeef]"_w},
        {"narrow text", "%3!hs!|%3!S!"_w, "Save|Save"_w},
        {"wide text by its other names", "%1!s!|%1!ls!|%1!ws!"_w, "Disk full|Disk full|Disk full"_w},
        {"text with width and precision", "[%4!4s!][%1!-6.4s!]"_w, "[   x][Disk  ]"_w},
        {"64 bits", "%5!I64d! %5!I64x!"_w, "-5000000000 fffffffed5fa0e00"_w},
        {"32 of 64 bits", "%5!d!"_w, "-705032704"_w},
        {"a character", "<%6!c!>"_w, "<Q>"_w},
        {"two digits, and a third that is text", "%10!d!0"_w, "100"_w},
        {"null texts", "%7 %7!hs!"_w, "(null) (null)"_w},
    };
    for (const auto& row : rows) {
        const Outcome outcome = Format(0, row.format, "Disk full"_w, 0xBEEF, "Save", "x"_w, -5'000'000'000LL, 'Q',
                                       static_cast<void*>(nullptr), 8, 9, 10);
        EXPECT_EQ(outcome.text, CStringW(row.expected)) << row.name;
    }
}

TEST(FormatMessage, WritesTheLinesOfAFailureReport) {
    const Outcome outcome =
        Format(0, "Warning: %1\r\nCode: %2 == 0x%3!08X!\r\nFunction %4!hs!\r\nFile %5!hs!\r\nLine %6!d!"_w, "Bad"_w,
               "MAPI_E_NOT_FOUND"_w, 0x8004010FU, "Read", "VxItem.cpp", 42);
    EXPECT_EQ(outcome.text, CStringW("Warning: Bad\r\nCode: MAPI_E_NOT_FOUND == 0x8004010F\r\nFunction Read\r\n"
                                     "File VxItem.cpp\r\nLine 42"_w));
}

TEST(FormatMessage, TakesEscapesAndLineBreaksAsPublished) {
    const struct {
        const char* name;
        DWORD flags;
        LPCWSTR format;
        LPCWSTR expected;
    } rows[] = {
        {"escapes", 0, "a%%b%nc%rd%te%.f%!g% h"_w, "a%b\r\nc\rd\te.f!g h"_w},
        {"%0 ends the text", 0, "abc%0def %1!d"_w, "abc"_w},
        {"line breaks of any kind", 0, "a\nb\r\nc\rd\n\re"_w, "a\r\nb\r\nc\r\nd\r\n\r\ne"_w},
        {"line breaks joined", FORMAT_MESSAGE_MAX_WIDTH_MASK, "a\nb\r\nc\rd%ne"_w, "a b c d\r\ne"_w},
        {"inserts ignored", FORMAT_MESSAGE_IGNORE_INSERTS, "a %1!d! %2 %%b%nc"_w, "a %1!d! %2 %%b\r\nc"_w},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(FormatWith(row.flags, row.format, nullptr).text, CStringW(row.expected)) << row.name;
    }
}

TEST(FormatMessage, ReadsAnArrayOfArguments) {
    DWORD_PTR arguments[] = {reinterpret_cast<DWORD_PTR>("one"_w), 2};
    const Outcome outcome =
        FormatWith(FORMAT_MESSAGE_ARGUMENT_ARRAY, "%2!d! %1"_w, reinterpret_cast<va_list*>(&arguments[0]));
    EXPECT_EQ(outcome.text, CStringW("2 one"_w));
}

TEST(FormatMessage, RefusesWhatItCannotCarryOut) {
    EXPECT_EQ(FormatWith(0, "a %1"_w, nullptr).error, DWORD{ERROR_INVALID_PARAMETER}) << "an insert without arguments";
    EXPECT_EQ(Format(0, "ends in %"_w, 1).error, DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(Format(0, "%1!d"_w, 1).error, DWORD{ERROR_INVALID_PARAMETER}) << "no closing mark";
    EXPECT_EQ(Format(0, ""_w, 1).error, 235U) << "ERROR_NO_WORK_DONE";
#ifndef _WIN32
    for (const LPCWSTR format :
         {"%1!q!"_w, "%1!!"_w, "%1!*d!"_w, "%1!f!"_w, "%1!n!"_w, "%1!d%s!"_w, "%1!99999999999d!"_w, "%1!.70000s!"_w}) {
        EXPECT_EQ(Format(0, format, 1, 2).error, ERROR_INVALID_PARAMETER) << testing::PrintToString(CStringW(format));
    }
#endif
}

TEST(FormatMessage, FillsABufferOnlyWhenTextAndTerminatorFit) {
    for (const DWORD size : {0U, 1U, 4U, 5U, 8U}) {
        SCOPED_TRACE(size);
        WCHAR buffer[9];
        std::fill(std::begin(buffer), std::end(buffer), WCHAR{0x5555});
        SetLastError(0);
        const DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_STRING, "abcd"_w, 0, 0, buffer, size, nullptr);
        const bool fits = size > 4;
        EXPECT_EQ(length, fits ? 4U : 0U);
        EXPECT_EQ(GetLastError(), fits ? DWORD{0} : DWORD{ERROR_INSUFFICIENT_BUFFER});
        EXPECT_TRUE(!fits || CStringW(buffer) == "abcd"_w);
        EXPECT_EQ(std::count(buffer + size, std::end(buffer), WCHAR{0x5555}), 9 - static_cast<int>(size));
    }
}

TEST(FormatMessage, AllocatesTheSystemsTextAndGivesNullForAnUnknownNumber) {
    LPWSTR block = nullptr;
    constexpr DWORD kFlags = FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM;
    const DWORD length =
        FormatMessageW(kFlags, nullptr, ERROR_ACCESS_DENIED, 0, reinterpret_cast<LPWSTR>(&block), 0, nullptr);
    ASSERT_GT(length, 2U);
    EXPECT_EQ(CStringW(block).size(), length);
    EXPECT_EQ(CStringW(block).substr(length - 2), CStringW("\r\n"_w));
    EXPECT_EQ(LocalFree(block), nullptr);

    block = reinterpret_cast<LPWSTR>(&block);
    SetLastError(0);
    EXPECT_EQ(FormatMessageW(kFlags, nullptr, 0x2BADBEEF, 0, reinterpret_cast<LPWSTR>(&block), 0, nullptr), 0U);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_MR_MID_NOT_FOUND});
    EXPECT_EQ(block, nullptr);
}

TEST(FormatMessage, FindsTheSameTextForAnErrorNumberAndForItsResultCode) {
    const auto text = [](DWORD code, DWORD flags) {
        WCHAR buffer[256] = {};
        SetLastError(0);
        const DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | flags, nullptr, code, 0, buffer, 256, nullptr);
        return CStringW(buffer, length);
    };
    EXPECT_FALSE(text(ERROR_FILE_NOT_FOUND, 0).empty());
    EXPECT_EQ(text(0x80070002, 0), text(ERROR_FILE_NOT_FOUND, 0));
    EXPECT_FALSE(text(0x80004005, 0).empty()) << "E_FAIL";
    // This text names the file, which only an argument could tell.
    EXPECT_TRUE(text(ERROR_BAD_EXE_FORMAT, 0).empty());
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_NE(text(ERROR_BAD_EXE_FORMAT, FORMAT_MESSAGE_IGNORE_INSERTS).find("%1"_w), CStringW::npos);
}

}  // namespace
