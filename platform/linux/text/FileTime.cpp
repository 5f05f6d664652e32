#include "platform/FileTime.h"

#include "platform/LastError.h"

#include <chrono>
#include <cstdint>
#include <ctime>
#include <optional>

namespace {

using namespace std::chrono;

// Time since 1601-01-01 in a FILETIME's steps of 100 ns.
using Ticks = duration<std::int64_t, std::ratio<1, 10'000'000>>;

constexpr sys_days kEpoch = sys_days(year(1601) / January / 1);
constexpr int kFirstYear = 1601;
constexpr int kLastYear = 30827;

BOOL Fail() noexcept {
    SetLastError(ERROR_INVALID_PARAMETER);
    return FALSE;
}

constexpr Ticks FromFileTime(const FILETIME& time) noexcept {
    return Ticks(static_cast<std::int64_t>(static_cast<std::uint64_t>(time.dwHighDateTime) << 32 | time.dwLowDateTime));
}

constexpr FILETIME ToFileTime(Ticks ticks) noexcept {
    const auto value = static_cast<std::uint64_t>(ticks.count());
    return {static_cast<DWORD>(value), static_cast<DWORD>(value >> 32)};
}

// The sum, if it is a FILETIME's.
constexpr std::optional<Ticks> Add(Ticks time, Ticks distance) noexcept {
    std::int64_t sum = 0;
    if (__builtin_add_overflow(time.count(), distance.count(), &sum) || sum < 0) {
        return std::nullopt;
    }
    return Ticks(sum);
}

// Calendar time of ticks that are not negative.
SYSTEMTIME ToCalendar(Ticks ticks) noexcept {
    const auto wholeDays = floor<days>(ticks);
    const sys_days day = kEpoch + wholeDays;
    const year_month_day date(day);
    const hh_mm_ss time(floor<milliseconds>(ticks - wholeDays));
    return {
        .wYear = static_cast<WORD>(static_cast<int>(date.year())),
        .wMonth = static_cast<WORD>(static_cast<unsigned>(date.month())),
        .wDayOfWeek = static_cast<WORD>(weekday(day).c_encoding()),
        .wDay = static_cast<WORD>(static_cast<unsigned>(date.day())),
        .wHour = static_cast<WORD>(time.hours().count()),
        .wMinute = static_cast<WORD>(time.minutes().count()),
        .wSecond = static_cast<WORD>(time.seconds().count()),
        .wMilliseconds = static_cast<WORD>(time.subseconds().count()),
    };
}

std::optional<Ticks> FromCalendar(const SYSTEMTIME& time) noexcept {
    const year_month_day date = year(time.wYear) / static_cast<int>(time.wMonth) / static_cast<int>(time.wDay);
    if (time.wYear < kFirstYear || time.wYear > kLastYear || time.wMonth > 12 || time.wDay > 31 || !date.ok()
        || time.wHour > 23 || time.wMinute > 59 || time.wSecond > 59 || time.wMilliseconds > 999) {
        return std::nullopt;
    }
    return Ticks(sys_days(date) - kEpoch) + hours(time.wHour) + minutes(time.wMinute) + seconds(time.wSecond)
           + milliseconds(time.wMilliseconds);
}

// Distance of local time from UTC, positive to the east of Greenwich, at a moment given in UTC.
Ticks BiasAt(Ticks utc) noexcept {
    const std::time_t moment = (kEpoch + floor<seconds>(utc)).time_since_epoch().count();
    std::tm local{};
    return localtime_r(&moment, &local) == nullptr ? Ticks(0) : Ticks(seconds(local.tm_gmtoff));
}

Ticks Now() noexcept {
    return floor<Ticks>(system_clock::now().time_since_epoch()) - kEpoch.time_since_epoch();
}

// UTC of a local time. A day to either side, the bias is that from before or behind a change of clocks nearby.
std::optional<Ticks> FromLocal(Ticks local) noexcept {
    const Ticks before = BiasAt(local - days(1));
    const Ticks behind = BiasAt(local + days(1));
    const bool holdsBefore = BiasAt(local - before) == before;
    return Add(local, holdsBefore ? -before : -behind);
}

}  // namespace

BOOL FileTimeToSystemTime(const FILETIME* lpFileTime, SYSTEMTIME* lpSystemTime) noexcept {
    const Ticks ticks = FromFileTime(*lpFileTime);
    if (ticks < Ticks(0)) {
        return Fail();
    }
    *lpSystemTime = ToCalendar(ticks);
    return TRUE;
}

BOOL SystemTimeToFileTime(const SYSTEMTIME* lpSystemTime, FILETIME* lpFileTime) noexcept {
    const std::optional<Ticks> ticks = FromCalendar(*lpSystemTime);
    if (!ticks) {
        return Fail();
    }
    *lpFileTime = ToFileTime(*ticks);
    return TRUE;
}

BOOL FileTimeToLocalFileTime(const FILETIME* lpFileTime, FILETIME* lpLocalFileTime) noexcept {
    const std::optional<Ticks> local = Add(FromFileTime(*lpFileTime), BiasAt(Now()));
    if (!local) {
        return Fail();
    }
    *lpLocalFileTime = ToFileTime(*local);
    return TRUE;
}

BOOL LocalFileTimeToFileTime(const FILETIME* lpLocalFileTime, FILETIME* lpFileTime) noexcept {
    const std::optional<Ticks> utc = Add(FromFileTime(*lpLocalFileTime), -BiasAt(Now()));
    if (!utc) {
        return Fail();
    }
    *lpFileTime = ToFileTime(*utc);
    return TRUE;
}

BOOL SystemTimeToTzSpecificLocalTime(const TIME_ZONE_INFORMATION* lpTimeZoneInformation,
                                     const SYSTEMTIME* lpUniversalTime, SYSTEMTIME* lpLocalTime) noexcept {
    const std::optional<Ticks> utc = FromCalendar(*lpUniversalTime);
    const std::optional<Ticks> local = utc ? Add(*utc, BiasAt(*utc)) : std::nullopt;
    if (lpTimeZoneInformation != nullptr || !local) {
        return Fail();
    }
    *lpLocalTime = ToCalendar(*local);
    return TRUE;
}

BOOL TzSpecificLocalTimeToSystemTime(const TIME_ZONE_INFORMATION* lpTimeZoneInformation, const SYSTEMTIME* lpLocalTime,
                                     SYSTEMTIME* lpUniversalTime) noexcept {
    const std::optional<Ticks> local = FromCalendar(*lpLocalTime);
    const std::optional<Ticks> utc = local ? FromLocal(*local) : std::nullopt;
    if (lpTimeZoneInformation != nullptr || !utc) {
        return Fail();
    }
    *lpUniversalTime = ToCalendar(*utc);
    return TRUE;
}

void GetSystemTimeAsFileTime(FILETIME* lpSystemTimeAsFileTime) noexcept {
    *lpSystemTimeAsFileTime = ToFileTime(Now());
}

void GetSystemTime(SYSTEMTIME* lpSystemTime) noexcept {
    *lpSystemTime = ToCalendar(Now());
}

void GetLocalTime(SYSTEMTIME* lpSystemTime) noexcept {
    const Ticks now = Now();
    *lpSystemTime = ToCalendar(now + BiasAt(now));
}

LONG CompareFileTime(const FILETIME* lpFileTime1, const FILETIME* lpFileTime2) noexcept {
    const auto first = static_cast<std::uint64_t>(FromFileTime(*lpFileTime1).count());
    const auto second = static_cast<std::uint64_t>(FromFileTime(*lpFileTime2).count());
    return first < second ? -1 : first > second ? 1 : 0;
}
