#include "host/Times.h"

#include <gtest/gtest.h>

namespace vxhost {
namespace {

// 2026-03-01T00:00:00Z, by the date command: 1772323200 seconds after 1970.
constexpr std::int64_t kMarch = (1'772'323'200 + 11'644'473'600) * 10'000'000;
constexpr std::int64_t kSecond = 10'000'000;
constexpr std::int64_t kHour = 3600 * kSecond;

TEST(Times, AreReadAsPeopleAndRecordsWriteThem) {
    struct Row {
        const char* text;
        std::int64_t ticks;
    };
    constexpr Row rows[] = {
        {"2026-03-01", kMarch},
        {"2026-03-01T14:30", kMarch + 14 * kHour + 30 * 60 * kSecond},
        {"2026-03-01 14:30", kMarch + 14 * kHour + 30 * 60 * kSecond},
        {"2026-03-01T00:00:05Z", kMarch + 5 * kSecond},
        {"2026-03-01T00:00:05.25z", kMarch + 52'500'000},
        {"2026-03-01T00:00:00.0000001", kMarch + 1},
        {"2026-03-01T00:00:00.00000019", kMarch + 1},
        {"2026-03-01T02:00+02:00", kMarch},
        {"2026-02-28T19:00-0500", kMarch},
        {"1601-01-01", 0},
        {"1970-01-01", 116'444'736'000'000'000},
        {"9999-12-31T23:59:59.9999999", 2'650'467'743'999'999'999},
        {"133800000000000000", 133'800'000'000'000'000},
        {"30m", kMarch - kHour / 2},
        {"12h", kMarch - 12 * kHour},
        {"7d", kMarch - 7 * 24 * kHour},
        {"2w", kMarch - 14 * 24 * kHour},
        {"0d", kMarch},
        {"2024-02-29", kMarch - 731 * 24 * kHour + 0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(ParseTime(row.text, kMarch), row.ticks);
    }
}

TEST(Times, OthersAreNone) {
    for (const char* text : {"",
                             "yesterday",
                             "2026",
                             "2026-3-1",
                             "2026-13-01",
                             "2026-02-29",
                             "2026-03-01T",
                             "2026-03-01T24:00",
                             "2026-03-01T10",
                             "2026-03-01T1000",
                             "2026-03-01T10:60",
                             "2026-03-01T10:00:60",
                             "2026-03-01T10:00:00.",
                             "2026-03-01T10:00X",
                             "2026-03-01T10:00+2",
                             "2026-03-01T10:00+25:00",
                             "2026-03-01x",
                             "1600-12-31",
                             "1601-01-01T00:00+01:00",
                             "7",
                             "12345",
                             "7y",
                             "-7d",
                             "7d ",
                             "9999999999w",
                             "99999999999999999999",
                             "2650467744000000000",
                             "-133800000000000000"}) {
        EXPECT_EQ(ParseTime(text, kMarch), std::nullopt) << text;
    }
}

TEST(Times, ArePrintedInUtcAndReadBack) {
    struct Row {
        std::int64_t ticks;
        const char* text;
    };
    constexpr Row rows[] = {{kMarch, "2026-03-01 00:00:00"},
                            {kMarch - 1, "2026-02-28 23:59:59"},
                            {1, "1601-01-01 00:00:00"},
                            {116'444'736'000'000'000 - kSecond, "1969-12-31 23:59:59"},
                            {0, ""},
                            {-1, ""},
                            {0x7FFFFFFFFFFFFFFF, ""}};
    for (const Row& row : rows) {
        EXPECT_EQ(TimeText(row.ticks), row.text) << row.ticks;
    }
    EXPECT_EQ(ParseTime(TimeText(kMarch + 12'345 * kSecond), 0), kMarch + 12'345 * kSecond);
}

TEST(Times, InMillisecondsBecomeTicks) {
    EXPECT_EQ(TicksOfMilliseconds(1'772'323'200'000), kMarch);
    EXPECT_EQ(TicksOfMilliseconds(-1), 116'444'736'000'000'000 - 10'000);
    for (const std::int64_t none : {std::int64_t{0}, INT64_MAX, INT64_MIN}) {
        EXPECT_EQ(TicksOfMilliseconds(none), 0);
    }
}

}  // namespace
}  // namespace vxhost
