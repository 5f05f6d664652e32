// Recurring appointments and tasks as the bytes that say when they recur: [MS-OXOCAL] 2.2.1.44. Any thread.
#pragma once

#include "testing/mailbox_builder/Model.h"
#include "testing/mailbox_builder/items/Dates.h"

#include <optional>
#include <vector>

namespace mailbox_builder {

enum class Frequency : std::uint16_t { Daily = 0x200A, Weekly = 0x200B, Monthly = 0x200C, Yearly = 0x200D };

// How a pattern picks its days: the structure's PatternType.
enum class Picks : std::uint16_t {
    Days = 0,      // every `every` days
    Weekdays = 1,  // those of `weekdays`, in every `every`th week
    MonthDay = 2,  // day `day` of every `every`th month; the month's last day where it is shorter
    Nth = 3,       // the `nth` of the days in `weekdays` of every `every`th month; 5 is the last one
    MonthEnd = 4,  // the last day of every `every`th month
};

// Bits of `weekdays`.
inline constexpr std::uint32_t kSunday = 0x01;
inline constexpr std::uint32_t kMonday = 0x02;
inline constexpr std::uint32_t kTuesday = 0x04;
inline constexpr std::uint32_t kWednesday = 0x08;
inline constexpr std::uint32_t kThursday = 0x10;
inline constexpr std::uint32_t kFriday = 0x20;
inline constexpr std::uint32_t kSaturday = 0x40;
inline constexpr std::uint32_t kWorkdays = kMonday | kTuesday | kWednesday | kThursday | kFriday;

// When a series recurs, in the days of its own time zone. A yearly pattern is one of every 12 months. It ends after
// `count` times, or on `until`, or, with neither, never.
struct Recurrence {
    Frequency frequency = Frequency::Daily;
    Picks picks = Picks::Days;
    Day start{};  // the first day that the pattern picks
    unsigned every = 1;
    std::uint32_t weekdays = 0;
    unsigned day = 0;
    unsigned nth = 0;
    std::optional<unsigned> count = {};
    std::optional<Day> until = {};
    unsigned firstWeekday = 0;  // 0 is Sunday
};

// One time of a series that differs from the others. What is absent is as in the series.
struct ChangedOccurrence {
    Day original{};
    Day day{};
    int startMinute = 0;  // of the day
    int endMinute = 0;
    std::optional<CStringW> subject = {};
    std::optional<CStringW> location = {};
    std::optional<std::int32_t> busyStatus = {};
    std::optional<std::int32_t> reminderMinutes = {};
    std::optional<bool> allDay = {};
    bool hasAttachment = false;
    bool hasBody = false;
};

// A series of appointments: every time from `startMinute` to `endMinute` of its day but for what is deleted or changed.
struct Series {
    Recurrence recurrence;
    int startMinute = 0;
    int endMinute = 0;
    std::vector<Day> deleted = {};
    std::vector<ChangedOccurrence> changed = {};
};

// The days that the pattern picks, deleted and changed ones too; of an endless one the first `limit`.
std::vector<Day> OccurrencesOf(const Recurrence& recurrence, std::size_t limit = 10);

// A RecurrencePattern, 2.2.1.44.1, which is what recurring tasks keep.
Bytes PatternBlob(const Recurrence& recurrence, const std::vector<Day>& deleted = {},
                  const std::vector<ChangedOccurrence>& changed = {});

// An AppointmentRecurrencePattern, 2.2.1.44.5. 8-bit texts are in `codePage`.
Bytes SeriesBlob(const Series& series, unsigned codePage = 1252);

}  // namespace mailbox_builder
