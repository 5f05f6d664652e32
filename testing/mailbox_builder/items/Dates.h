// Dates and times of descriptions. Gregorian calendar, from 1601 on. Any thread.
#pragma once

#include "testing/mailbox_builder/Model.h"

#include <chrono>
#include <cstdint>

namespace mailbox_builder {

inline constexpr std::int64_t kTicksPerMinute = 600'000'000;
inline constexpr std::int64_t kMinutesPerDay = 24 * 60;

// A date of the calendar as days since 1970, what std::chrono counts.
using Day = std::chrono::sys_days;

constexpr Day DayOf(int year, unsigned month, unsigned day) {
    return std::chrono::year{year} / static_cast<int>(month) / static_cast<int>(day);
}

inline constexpr Day kFirstDay = DayOf(1601, 1, 1);

// Whole minutes since 1601, which recurrences count in.
constexpr std::int64_t MinutesOf(Day day) {
    return (day - kFirstDay).count() * kMinutesPerDay;
}
constexpr std::int64_t MinutesOf(Time time) {
    return time.ticks / kTicksPerMinute;
}

constexpr Time AtMinute(std::int64_t minutesSince1601) {
    return {minutesSince1601 * kTicksPerMinute};
}
constexpr Time At(Day day, int hour = 0, int minute = 0) {
    return AtMinute(MinutesOf(day) + hour * 60 + minute);
}
constexpr Time At(int year, unsigned month, unsigned day, int hour = 0, int minute = 0) {
    return At(DayOf(year, month, day), hour, minute);
}

constexpr Time After(Time time, std::int64_t minutes) {
    return {time.ticks + minutes * kTicksPerMinute};
}

constexpr Day DayOf(Time time) {
    return kFirstDay + std::chrono::days{MinutesOf(time) / kMinutesPerDay};
}

}  // namespace mailbox_builder
