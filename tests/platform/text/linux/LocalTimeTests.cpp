// Local time in zones of the tests' own.
#include "platform/FileTime.h"
#include "platform/LastError.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <string>
#include <tuple>

namespace {

// Sets the process's time zone for as long as it lives.
class ZoneScope {
public:
    explicit ZoneScope(const char* zone) {
        if (const char* const old = std::getenv("TZ"); old != nullptr) {
            m_old = old;
            m_wasSet = true;
        }
        setenv("TZ", zone, 1);
        tzset();
    }
    ZoneScope(const ZoneScope&) = delete;
    ZoneScope& operator=(const ZoneScope&) = delete;
    ~ZoneScope() {
        m_wasSet ? setenv("TZ", m_old.c_str(), 1) : unsetenv("TZ");
        tzset();
    }

private:
    std::string m_old;
    bool m_wasSet = false;
};

constexpr const char* kCentralEurope = "CET-1CEST,M3.5.0,M10.5.0/3";
constexpr const char* kNewYork = "EST5EDT,M3.2.0,M11.1.0";
constexpr const char* kIndia = "IST-5:30";
constexpr std::int64_t kMinute = 600'000'000;

auto Fields(const SYSTEMTIME& time) {
    return std::tuple(time.wYear, time.wMonth, time.wDay, time.wHour, time.wMinute, time.wSecond, time.wMilliseconds);
}

struct Row {
    const char* name;
    const char* zone;
    SYSTEMTIME utc;
    SYSTEMTIME local;
};

TEST(LocalTime, FollowsTheRulesOfTheDate) {
    const Row rows[] = {
        {"winter", kCentralEurope, {2024, 1, 0, 31, 23, 30, 1, 2}, {2024, 2, 0, 1, 0, 30, 1, 2}},
        {"summer", kCentralEurope, {2024, 7, 0, 1, 12, 0, 0, 0}, {2024, 7, 0, 1, 14, 0, 0, 0}},
        {"last hour of winter", kCentralEurope, {2024, 3, 0, 31, 0, 59, 59, 999}, {2024, 3, 0, 31, 1, 59, 59, 999}},
        {"first hour of summer", kCentralEurope, {2024, 3, 0, 31, 1, 0, 0, 0}, {2024, 3, 0, 31, 3, 0, 0, 0}},
        {"west of Greenwich", kNewYork, {2024, 1, 0, 1, 3, 0, 0, 0}, {2023, 12, 0, 31, 22, 0, 0, 0}},
        {"half an hour", kIndia, {1969, 12, 0, 31, 20, 0, 0, 0}, {1970, 1, 0, 1, 1, 30, 0, 0}},
        {"the first moment", kIndia, {1601, 1, 0, 1, 0, 0, 0, 0}, {1601, 1, 0, 1, 5, 30, 0, 0}},
        {"the last year", kNewYork, {30827, 7, 0, 1, 3, 0, 0, 0}, {30827, 6, 0, 30, 23, 0, 0, 0}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const ZoneScope zone(row.zone);
        SYSTEMTIME result{};
        EXPECT_TRUE(SystemTimeToTzSpecificLocalTime(nullptr, &row.utc, &result));
        EXPECT_EQ(Fields(result), Fields(row.local));
        EXPECT_TRUE(TzSpecificLocalTimeToSystemTime(nullptr, &row.local, &result));
        EXPECT_EQ(Fields(result), Fields(row.utc));
    }
}

TEST(LocalTime, DecidesWhereClocksChange) {
    const ZoneScope zone(kCentralEurope);
    SYSTEMTIME utc{};
    const SYSTEMTIME twice{2024, 10, 0, 27, 2, 30, 0, 0};
    ASSERT_TRUE(TzSpecificLocalTimeToSystemTime(nullptr, &twice, &utc));
    EXPECT_EQ(Fields(utc), Fields({2024, 10, 0, 27, 0, 30, 0, 0})) << "the first of the two";
    const SYSTEMTIME never{2024, 3, 0, 31, 2, 30, 0, 0};
    ASSERT_TRUE(TzSpecificLocalTimeToSystemTime(nullptr, &never, &utc));
    EXPECT_EQ(Fields(utc), Fields({2024, 3, 0, 31, 0, 30, 0, 0})) << "with the summer's bias";
}

TEST(LocalTime, RefusesWhatFallsOutOfTheCalendar) {
    SYSTEMTIME result{};
    const SYSTEMTIME first{1601, 1, 0, 1, 0, 0, 0, 0};
    const SYSTEMTIME missing{2023, 2, 0, 29, 0, 0, 0, 0};
    {
        const ZoneScope zone(kNewYork);
        EXPECT_FALSE(SystemTimeToTzSpecificLocalTime(nullptr, &first, &result));
        EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
        const FILETIME zero{0, 0};
        FILETIME local{};
        EXPECT_FALSE(FileTimeToLocalFileTime(&zero, &local));
    }
    const ZoneScope zone(kIndia);
    EXPECT_FALSE(TzSpecificLocalTimeToSystemTime(nullptr, &first, &result));
    EXPECT_FALSE(SystemTimeToTzSpecificLocalTime(nullptr, &missing, &result));
    EXPECT_FALSE(TzSpecificLocalTimeToSystemTime(nullptr, &missing, &result));
    const FILETIME last{0xFFFFFFFF, 0x7FFFFFFF};
    FILETIME local{};
    EXPECT_FALSE(FileTimeToLocalFileTime(&last, &local));
}

TEST(LocalTime, OfAFileTimeHasThePresentBias) {
    struct Bias {
        const char* zone;
        std::int64_t minutes;
    };
    for (const Bias& row : {Bias{"UTC0", 0}, Bias{kIndia, 330}, Bias{"HST10", -600}}) {
        const ZoneScope zone(row.zone);
        const std::int64_t utcTicks = 116'444'736'000'000'000;
        const FILETIME utc{static_cast<DWORD>(utcTicks & 0xFFFFFFFF), static_cast<DWORD>(utcTicks >> 32)};
        FILETIME local{};
        ASSERT_TRUE(FileTimeToLocalFileTime(&utc, &local));
        const auto localTicks =
            static_cast<std::int64_t>(static_cast<std::uint64_t>(local.dwHighDateTime) << 32 | local.dwLowDateTime);
        EXPECT_EQ(localTicks - utcTicks, row.minutes * kMinute) << row.zone;
    }
}

// Germany had no summer time from 1950 to 1979.
TEST(LocalTime, KnowsTheZonesHistory) {
    if (!std::filesystem::exists("/usr/share/zoneinfo/Europe/Berlin")) {
        GTEST_SKIP() << "the machine has no time zone data";
    }
    const ZoneScope zone("Europe/Berlin");
    SYSTEMTIME local{};
    const SYSTEMTIME before{1975, 7, 0, 1, 12, 0, 0, 0};
    ASSERT_TRUE(SystemTimeToTzSpecificLocalTime(nullptr, &before, &local));
    EXPECT_EQ(local.wHour, 13);
    const SYSTEMTIME since{1985, 7, 0, 1, 12, 0, 0, 0};
    ASSERT_TRUE(SystemTimeToTzSpecificLocalTime(nullptr, &since, &local));
    EXPECT_EQ(local.wHour, 14);
}

TEST(Calendar, RefusesLeapDaysThatAreNone) {
    for (const SYSTEMTIME& calendar : {SYSTEMTIME{2023, 2, 0, 29, 0, 0, 0, 0}, SYSTEMTIME{1900, 2, 0, 29, 0, 0, 0, 0},
                                       SYSTEMTIME{30828, 1, 0, 1, 0, 0, 0, 0}}) {
        FILETIME time{};
        EXPECT_FALSE(SystemTimeToFileTime(&calendar, &time)) << calendar.wYear;
    }
}

}  // namespace
