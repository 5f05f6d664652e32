// Dates and times by picture.
#include "platform/FileTime.h"
#include "platform/LastError.h"
#include "platform/LocaleText.h"
#include "platform/WideText.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

constexpr LCID kEnglishUs = 0x0409;
constexpr WCHAR kCanary = 0x5AA5;

using Format = int(WINAPI*)(LCID, DWORD, const SYSTEMTIME*, LPCWSTR, LPWSTR, int);

// What the picture makes of the time, without the terminator. Every smaller buffer must fail and stay in its bounds.
CStringW Text(Format format, const SYSTEMTIME& time, LPCWSTR picture) {
    const int size = format(kEnglishUs, 0, &time, picture, nullptr, 0);
    std::vector<WCHAR> buffer(static_cast<std::size_t>(size) + 1, kCanary);
    EXPECT_EQ(format(kEnglishUs, 0, &time, picture, buffer.data(), size), size);
    EXPECT_EQ(buffer.back(), kCanary);
    const CStringW text(buffer.data());
    EXPECT_EQ(text.size() + 1, static_cast<std::size_t>(size));
    for (int room = 1; room < size; ++room) {
        std::vector<WCHAR> small(static_cast<std::size_t>(room) + 1, kCanary);
        SetLastError(ERROR_SUCCESS);
        EXPECT_EQ(format(kEnglishUs, 0, &time, picture, small.data(), room), 0);
        EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INSUFFICIENT_BUFFER));
        EXPECT_EQ(small.back(), kCanary);
    }
    return text;
}

struct Row {
    LPCWSTR picture;
    LPCWSTR text;
};

TEST(DateText, FollowsThePicture) {
    constexpr SYSTEMTIME kDate{2024, 2, 0, 9, 99, 99, 99, 9999};  // a Friday; the rest is not looked at
    const Row rows[] = {
        {"ddMMyy"_w, "090224"_w},
        {"d/M/y"_w, "9/2/24"_w},
        {"ddd dddd ddddd"_w, "Fri Friday Friday"_w},
        {"MMM MMMM MMMMM"_w, "Feb February February"_w},
        {"yy yyy yyyy yyyyy"_w, "24 2024 2024 2024"_w},
        {"dd/MM/yyyy"_w, "09/02/2024"_w},
        {"'d' d"_w, "d 9"_w},
        {"d 'o''clock'"_w, "9 o'clock"_w},
        {"'d''d' d"_w, "d'd 9"_w},
        {"d 'open d"_w, "9 open d"_w},
        {"d''d"_w, "99"_w},
        {"h:mm"_w, "h:mm"_w},
        {""_w, ""_w},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(Text(GetDateFormatW, kDate, row.picture), row.text);
    }
    EXPECT_EQ(Text(GetDateFormatW, {30827, 12, 0, 31, 0, 0, 0, 0}, "dddd d yyyy yy"_w), "Friday 31 30827 27"_w);
    EXPECT_EQ(Text(GetDateFormatW, {1601, 1, 0, 1, 0, 0, 0, 0}, "ddd ddMMyyyy yy"_w), "Mon 01011601 01"_w);
    EXPECT_EQ(Text(GetDateFormatW, {2000, 2, 0, 29, 0, 0, 0, 0}, "dddd"_w), "Tuesday"_w);
}

TEST(TimeText, FollowsThePicture) {
    constexpr SYSTEMTIME kTime{0, 99, 99, 99, 7, 5, 3, 4};
    const Row rows[] = {
        {"hh'-'mm'-'sstt"_w, "07-05-03AM"_w},
        {"h:m:s t"_w, "7:5:3 A"_w},
        {"hhh HHH mmm sss ttt"_w, "07 07 05 03 AM"_w},
        {"d M y"_w, "d M y"_w},
        {"HH.mm 'Uhr'"_w, "07.05 Uhr"_w},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(Text(GetTimeFormatW, kTime, row.picture), row.text);
    }
    struct Hour {
        WORD hour;
        LPCWSTR text;
    };
    for (const Hour& row :
         {Hour{0, "12 12 0 00 A AM"_w}, Hour{1, "1 01 1 01 A AM"_w}, Hour{11, "11 11 11 11 A AM"_w},
          Hour{12, "12 12 12 12 P PM"_w}, Hour{13, "1 01 13 13 P PM"_w}, Hour{23, "11 11 23 23 P PM"_w}}) {
        EXPECT_EQ(Text(GetTimeFormatW, {2024, 2, 0, 9, row.hour, 0, 0, 0}, "h hh H HH t tt"_w), row.text);
    }
}

TEST(DateText, KnowsTheUsersAndTheInvariantLocale) {
    constexpr SYSTEMTIME kTime{2024, 2, 0, 9, 7, 5, 3, 4};
    WCHAR buffer[16] = {};
    EXPECT_EQ(GetDateFormatW(LOCALE_USER_DEFAULT, 0, &kTime, "ddMMyy"_w, buffer, 16), 7);
    EXPECT_EQ(CStringW(buffer), "090224"_w);
    EXPECT_EQ(GetDateFormatW(LOCALE_INVARIANT, 0, &kTime, "MMMM"_w, buffer, 16), 9);
    EXPECT_EQ(CStringW(buffer), "February"_w);
    EXPECT_EQ(GetTimeFormatW(LOCALE_INVARIANT, 0, &kTime, "tt"_w, buffer, 16), 3);
    EXPECT_EQ(CStringW(buffer), "AM"_w);
}

TEST(DateText, RefusesWhatDoesNotExist) {
    struct Bad {
        const char* name;
        Format format;
        SYSTEMTIME time;
        LCID locale;
        DWORD flags;
        int room;
        DWORD error;
    };
    constexpr SYSTEMTIME kGood{2024, 2, 0, 9, 7, 5, 3, 4};
    const Bad rows[] = {
        {"month 13", GetDateFormatW, {2024, 13, 0, 9, 0, 0, 0, 0}, kEnglishUs, 0, 8, ERROR_INVALID_PARAMETER},
        {"30 February", GetDateFormatW, {2024, 2, 0, 30, 0, 0, 0, 0}, kEnglishUs, 0, 8, ERROR_INVALID_PARAMETER},
        {"year 1600", GetDateFormatW, {1600, 2, 0, 9, 0, 0, 0, 0}, kEnglishUs, 0, 8, ERROR_INVALID_PARAMETER},
        {"hour 24", GetTimeFormatW, {2024, 2, 0, 9, 24, 0, 0, 0}, kEnglishUs, 0, 8, ERROR_INVALID_PARAMETER},
        {"second 60", GetTimeFormatW, {2024, 2, 0, 9, 0, 0, 60, 0}, kEnglishUs, 0, 8, ERROR_INVALID_PARAMETER},
        {"ms 1000", GetTimeFormatW, {2024, 2, 0, 9, 0, 0, 0, 1000}, kEnglishUs, 0, 8, ERROR_INVALID_PARAMETER},
        {"locale", GetDateFormatW, kGood, 0x12345, 0, 8, ERROR_INVALID_PARAMETER},
        {"negative room", GetDateFormatW, kGood, kEnglishUs, 0, -1, ERROR_INVALID_PARAMETER},
        {"flag beside a picture", GetDateFormatW, kGood, kEnglishUs, 1, 8, ERROR_INVALID_FLAGS},
    };
    for (const Bad& row : rows) {
        SCOPED_TRACE(row.name);
        WCHAR buffer[8] = {kCanary};
        SetLastError(ERROR_SUCCESS);
        EXPECT_EQ(row.format(row.locale, row.flags, &row.time, "yyyy"_w, buffer, row.room), 0);
        EXPECT_EQ(GetLastError(), row.error);
        EXPECT_EQ(buffer[0], kCanary);
    }
    EXPECT_EQ(GetDateFormatW(kEnglishUs, 0, &kGood, "yyyy"_w, nullptr, 8), 0) << "room without a buffer";
}

TEST(DateText, OfNoDateIsOfToday) {
    SYSTEMTIME before{};
    SYSTEMTIME behind{};
    WCHAR buffer[32] = {};
    GetLocalTime(&before);
    ASSERT_NE(GetDateFormatW(kEnglishUs, 0, nullptr, "yyyy-MM-dd"_w, buffer, 32), 0);
    GetLocalTime(&behind);
    const CStringW text(buffer);
    EXPECT_TRUE(text == Text(GetDateFormatW, before, "yyyy-MM-dd"_w)
                || text == Text(GetDateFormatW, behind, "yyyy-MM-dd"_w));
}

}  // namespace
