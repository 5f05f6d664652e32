// Calendar and local time. Nothing here depends on the machine's time zone.
#include "platform/FileTime.h"
#include "platform/LastError.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <tuple>

namespace {

constexpr std::uint64_t kDay = 864'000'000'000;
constexpr std::uint64_t kHour = kDay / 24;

constexpr FILETIME Time(std::uint64_t ticks) {
    return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}

constexpr std::uint64_t Ticks(const FILETIME& time) {
    return static_cast<std::uint64_t>(time.dwHighDateTime) << 32 | time.dwLowDateTime;
}

auto Fields(const SYSTEMTIME& time) {
    return std::tuple(time.wYear, time.wMonth, time.wDay, time.wDayOfWeek, time.wHour, time.wMinute, time.wSecond,
                      time.wMilliseconds);
}

SYSTEMTIME Calendar(std::uint64_t ticks) {
    const FILETIME time = Time(ticks);
    SYSTEMTIME calendar{};
    EXPECT_TRUE(FileTimeToSystemTime(&time, &calendar));
    return calendar;
}

TEST(FileTime, IsTheCalendarsMoment) {
    struct Row {
        const char* name;
        std::uint64_t ticks;
        SYSTEMTIME calendar;  // year, month, day of week, day, hour, minute, second, ms
    };
    constexpr Row rows[] = {
        {"the first", 0, {1601, 1, 1, 1, 0, 0, 0, 0}},
        {"before the century without a leap day ends", 94'354'847'999'990'000, {1899, 12, 0, 31, 23, 59, 59, 999}},
        {"behind 28 February 1900", 94'405'824'000'000'000, {1900, 3, 4, 1, 0, 0, 0, 0}},
        {"a millisecond before 1970", 116'444'735'999'990'000, {1969, 12, 3, 31, 23, 59, 59, 999}},
        {"1970", 116'444'736'000'000'000, {1970, 1, 4, 1, 0, 0, 0, 0}},
        {"leap day of 2000", 125'962'560'000'000'000, {2000, 2, 2, 29, 0, 0, 0, 0}},
        {"a billion seconds behind 1970", 126'444'736'000'000'000, {2001, 9, 0, 9, 1, 46, 40, 0}},
        {"behind what 32 bits of seconds hold", 137'919'572'480'000'000, {2038, 1, 2, 19, 3, 14, 8, 0}},
        {"the last that a calendar time can ask for", 0x7FFF35F4F06C58F0, {30827, 12, 5, 31, 23, 59, 59, 999}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(Fields(Calendar(row.ticks)), Fields(row.calendar));
        SYSTEMTIME calendar = row.calendar;
        calendar.wDayOfWeek = 99;  // not looked at
        FILETIME time{};
        EXPECT_TRUE(SystemTimeToFileTime(&calendar, &time));
        EXPECT_EQ(Ticks(time), row.ticks);
    }
    EXPECT_EQ(Fields(Calendar(9'999)), Fields(Calendar(0))) << "less than a millisecond counts for nothing";
    EXPECT_EQ(Fields(Calendar(0x7FFFFFFFFFFFFFFF)), Fields({30828, 9, 4, 14, 2, 48, 5, 477}));
}

// Against a calendar that counts day by day.
TEST(FileTime, FollowsTheCalendarDayByDay) {
    const int lengths[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    std::uint64_t ticks = 0;
    int dayOfWeek = 1;
    for (int year = 1601; year <= 2101; ++year) {
        const bool isLeap = year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
        for (int month = 1; month <= 12; ++month) {
            for (int day = 1; day <= lengths[month - 1] + (month == 2 && isLeap ? 1 : 0); ++day) {
                const SYSTEMTIME expected{static_cast<WORD>(year),
                                          static_cast<WORD>(month),
                                          static_cast<WORD>(dayOfWeek),
                                          static_cast<WORD>(day),
                                          23,
                                          0,
                                          0,
                                          0};
                FILETIME time{};
                ASSERT_TRUE(SystemTimeToFileTime(&expected, &time));
                ASSERT_EQ(Ticks(time), ticks + 23 * kHour) << year << '-' << month << '-' << day;
                ASSERT_EQ(Fields(Calendar(Ticks(time))), Fields(expected));
                ticks += kDay;
                dayOfWeek = (dayOfWeek + 1) % 7;
            }
        }
    }
}

TEST(FileTime, RefusesWhatDoesNotExist) {
    struct Row {
        const char* name;
        SYSTEMTIME calendar;
    };
    constexpr Row rows[] = {
        {"year 1600", {1600, 12, 0, 31, 0, 0, 0, 0}},    {"month 0", {2023, 0, 0, 1, 0, 0, 0, 0}},
        {"month 13", {2023, 13, 0, 1, 0, 0, 0, 0}},      {"day 0", {2023, 1, 0, 0, 0, 0, 0, 0}},
        {"31 April", {2023, 4, 0, 31, 0, 0, 0, 0}},      {"day 32", {2023, 1, 0, 32, 0, 0, 0, 0}},
        {"hour 24", {2023, 1, 0, 1, 24, 0, 0, 0}},       {"minute 60", {2023, 1, 0, 1, 0, 60, 0, 0}},
        {"second 60", {2023, 1, 0, 1, 0, 0, 60, 0}},     {"ms 1000", {2023, 1, 0, 1, 0, 0, 0, 1000}},
        {"day 65535", {2023, 1, 0, 0xFFFF, 0, 0, 0, 0}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        FILETIME time = Time(42);
        SetLastError(ERROR_SUCCESS);
        EXPECT_FALSE(SystemTimeToFileTime(&row.calendar, &time));
        EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
        EXPECT_EQ(Ticks(time), 42U);
    }
    for (const std::uint64_t ticks : {0x8000000000000000, 0xFFFFFFFFFFFFFFFF}) {
        const FILETIME time = Time(ticks);
        SYSTEMTIME calendar{};
        SetLastError(ERROR_SUCCESS);
        EXPECT_FALSE(FileTimeToSystemTime(&time, &calendar));
        EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
    }
}

TEST(FileTime, ComparesAsUnsigned) {
    struct Row {
        std::uint64_t first;
        std::uint64_t second;
        LONG order;
    };
    for (const Row& row : {Row{5, 5, 0}, Row{4, 5, -1}, Row{0x100000000, 0xFFFFFFFF, 1},
                           Row{0x8000000000000000, 0x7FFFFFFFFFFFFFFF, 1}}) {
        const FILETIME first = Time(row.first);
        const FILETIME second = Time(row.second);
        EXPECT_EQ(CompareFileTime(&first, &second), row.order) << row.first << ", " << row.second;
        EXPECT_EQ(CompareFileTime(&second, &first), -row.order) << row.second << ", " << row.first;
    }
}

// The bias of this moment holds for every date.
TEST(LocalFileTime, IsOneDistanceFromUtcForEveryDate) {
    std::uint64_t distance = 0;
    for (const SYSTEMTIME& calendar : {SYSTEMTIME{1955, 1, 0, 15, 0, 0, 0, 0}, SYSTEMTIME{2023, 1, 0, 15, 0, 0, 0, 0},
                                       SYSTEMTIME{2023, 7, 0, 15, 0, 0, 0, 0}}) {
        FILETIME utc{};
        FILETIME local{};
        FILETIME again{};
        ASSERT_TRUE(SystemTimeToFileTime(&calendar, &utc));
        ASSERT_TRUE(FileTimeToLocalFileTime(&utc, &local));
        ASSERT_TRUE(LocalFileTimeToFileTime(&local, &again));
        EXPECT_EQ(Ticks(again), Ticks(utc));
        if (calendar.wYear == 1955) {
            distance = Ticks(local) - Ticks(utc);
        }
        EXPECT_EQ(Ticks(local) - Ticks(utc), distance) << calendar.wYear << '-' << calendar.wMonth;
    }
}

TEST(LocalTime, GoesThereAndBack) {
    for (WORD month = 1; month <= 12; ++month) {
        const SYSTEMTIME noon{2023, month, 0, 15, 12, 34, 56, 789};
        SYSTEMTIME local{};
        SYSTEMTIME utc{};
        ASSERT_TRUE(SystemTimeToTzSpecificLocalTime(nullptr, &noon, &local));
        ASSERT_TRUE(TzSpecificLocalTimeToSystemTime(nullptr, &local, &utc));
        utc.wDayOfWeek = 0;
        EXPECT_EQ(Fields(utc), Fields(noon));
        EXPECT_EQ(local.wSecond, 56);
        EXPECT_EQ(local.wMilliseconds, 789);
    }
}

// UTC, local time and FILETIME tell of the same moment.
TEST(TimeNow, IsTheSameInAllForms) {
    FILETIME before{};
    FILETIME behind{};
    SYSTEMTIME utc{};
    SYSTEMTIME local{};
    SYSTEMTIME fromLocal{};
    FILETIME utcTime{};
    FILETIME localTime{};
    constexpr std::uint64_t kMillisecond = 10'000;
    GetSystemTimeAsFileTime(&before);
    GetSystemTime(&utc);
    GetLocalTime(&local);
    GetSystemTimeAsFileTime(&behind);
    ASSERT_TRUE(TzSpecificLocalTimeToSystemTime(nullptr, &local, &fromLocal));
    ASSERT_TRUE(SystemTimeToFileTime(&utc, &utcTime));
    ASSERT_TRUE(SystemTimeToFileTime(&fromLocal, &localTime));
    for (const FILETIME& time : {utcTime, localTime}) {
        EXPECT_GE(Ticks(time) + 20 * kMillisecond, Ticks(before));
        EXPECT_LE(Ticks(time), Ticks(behind) + 20 * kMillisecond);
    }
}

}  // namespace
