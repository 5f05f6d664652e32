#include "testing/mailbox_builder/items/Recurrence.h"

#include "testing/mailbox_builder/ByteWriter.h"
#include "testing/mailbox_builder/items/Wording.h"

#include <algorithm>

namespace mailbox_builder {
namespace {

using std::chrono::days;

constexpr std::uint32_t kEndsByDate = 0x2021;
constexpr std::uint32_t kEndsAfterCount = 0x2022;
constexpr std::uint32_t kNeverEnds = 0x2023;
constexpr std::uint32_t kEndDateOfEndless = 0x5AE980DF;  // the last minute of 4500-08-31

// The flags of an exception: 2.2.1.44.2.
constexpr std::uint32_t kSubjectDiffers = 0x0001;
constexpr std::uint32_t kReminderDeltaDiffers = 0x0004;
constexpr std::uint32_t kReminderDiffers = 0x0008;
constexpr std::uint32_t kLocationDiffers = 0x0010;
constexpr std::uint32_t kBusyStatusDiffers = 0x0020;
constexpr std::uint32_t kAttachmentDiffers = 0x0040;
constexpr std::uint32_t kSubTypeDiffers = 0x0080;
constexpr std::uint32_t kBodyDiffers = 0x0200;

std::chrono::year_month_day DateOf(Day day) {
    return std::chrono::year_month_day{day};
}

std::chrono::year_month_day LastOfMonth(Day day) {
    const auto date = DateOf(day);
    return date.year() / date.month() / std::chrono::last;
}

int MonthsSince1601(Day day) {
    const auto date = DateOf(day);
    return (static_cast<int>(date.year()) - 1601) * 12 + static_cast<int>(static_cast<unsigned>(date.month())) - 1;
}

Day WeekOf(Day day, unsigned firstWeekday) {
    const unsigned weekday = std::chrono::weekday(day).c_encoding();
    return day - days{(weekday + 7 - firstWeekday) % 7};
}

bool IsOneOf(Day day, std::uint32_t weekdays) {
    return (weekdays >> std::chrono::weekday(day).c_encoding() & 1) != 0;
}

// How many days of the month, from its first to `day`, are among `weekdays`.
unsigned RankInMonth(Day day, std::uint32_t weekdays) {
    unsigned rank = 0;
    for (Day other = day - days{static_cast<unsigned>(DateOf(day).day()) - 1}; other <= day; other += days{1}) {
        rank += IsOneOf(other, weekdays) ? 1 : 0;
    }
    return rank;
}

bool IsNthOfMonth(Day day, const Recurrence& recurrence) {
    if (!IsOneOf(day, recurrence.weekdays)) {
        return false;
    }
    if (recurrence.nth < 5) {
        return RankInMonth(day, recurrence.weekdays) == recurrence.nth;
    }
    return RankInMonth(day, recurrence.weekdays) == RankInMonth(Day{LastOfMonth(day)}, recurrence.weekdays);
}

bool IsInMonthOf(Day day, const Recurrence& recurrence) {
    const int distance = MonthsSince1601(day) - MonthsSince1601(recurrence.start);
    return distance % static_cast<int>(recurrence.every) == 0;
}

bool Picked(Day day, const Recurrence& recurrence) {
    const auto every = static_cast<long>(recurrence.every);
    switch (recurrence.picks) {
        case Picks::Days: return (day - recurrence.start).count() % every == 0;
        case Picks::Weekdays: {
            const days distance =
                WeekOf(day, recurrence.firstWeekday) - WeekOf(recurrence.start, recurrence.firstWeekday);
            return IsOneOf(day, recurrence.weekdays) && distance.count() / 7 % every == 0;
        }
        case Picks::Nth: return IsInMonthOf(day, recurrence) && IsNthOfMonth(day, recurrence);
        case Picks::MonthEnd: return IsInMonthOf(day, recurrence) && DateOf(day) == LastOfMonth(day);
        case Picks::MonthDay: break;
    }
    const std::chrono::day wanted = std::min(std::chrono::day{recurrence.day}, LastOfMonth(day).day());
    return IsInMonthOf(day, recurrence) && DateOf(day).day() == wanted;
}

// The period in the structure's unit: minutes, weeks or months.
std::int64_t PeriodOf(const Recurrence& recurrence) {
    return recurrence.picks == Picks::Days ? recurrence.every * kMinutesPerDay : recurrence.every;
}

// Where in its period the series stands: 2.2.1.44.1, "FirstDateTime".
std::int64_t FirstDateTime(const Recurrence& recurrence) {
    const std::int64_t period = PeriodOf(recurrence);
    switch (recurrence.picks) {
        case Picks::Days: return MinutesOf(recurrence.start) % period;
        case Picks::Weekdays:
            return MinutesOf(WeekOf(recurrence.start, recurrence.firstWeekday)) % (period * 7 * kMinutesPerDay);
        default: {
            const std::int64_t months = MonthsSince1601(recurrence.start) % period;
            return MinutesOf(DayOf(1601 + static_cast<int>(months / 12), static_cast<unsigned>(months % 12) + 1, 1));
        }
    }
}

void AppendSpecifics(ByteWriter& blob, const Recurrence& recurrence) {
    switch (recurrence.picks) {
        case Picks::Days: break;
        case Picks::Weekdays: blob.U32(recurrence.weekdays); break;
        case Picks::MonthDay: blob.U32(recurrence.day); break;
        case Picks::MonthEnd: blob.U32(31); break;
        case Picks::Nth: blob.U32(recurrence.weekdays).U32(recurrence.nth); break;
    }
}

void AppendEnd(ByteWriter& blob, const Recurrence& recurrence) {
    const bool isEndless = !recurrence.count && !recurrence.until;
    const std::size_t occurrences = isEndless ? 10 : OccurrencesOf(recurrence).size();
    blob.U32(recurrence.count ? kEndsAfterCount : recurrence.until ? kEndsByDate : kNeverEnds).U32(occurrences);
}

void AppendDates(ByteWriter& blob, std::vector<Day> dates) {
    std::sort(dates.begin(), dates.end());
    blob.U32(dates.size());
    for (const Day date : dates) {
        blob.U32(static_cast<std::uint64_t>(MinutesOf(date)));
    }
}

std::vector<ChangedOccurrence> ByOriginal(std::vector<ChangedOccurrence> changed) {
    std::sort(changed.begin(), changed.end(), [](const auto& a, const auto& b) { return a.original < b.original; });
    return changed;
}

std::uint32_t FlagsOf(const ChangedOccurrence& change) {
    return (change.subject ? kSubjectDiffers : 0) | (change.location ? kLocationDiffers : 0)
           | (change.busyStatus ? kBusyStatusDiffers : 0)
           | (change.reminderMinutes ? kReminderDeltaDiffers | kReminderDiffers : 0)
           | (change.allDay ? kSubTypeDiffers : 0) | (change.hasAttachment ? kAttachmentDiffers : 0)
           | (change.hasBody ? kBodyDiffers : 0);
}

void AppendTimes(ByteWriter& blob, const ChangedOccurrence& change, int seriesStart) {
    blob.U32(Signed(MinutesOf(change.day) + change.startMinute))
        .U32(Signed(MinutesOf(change.day) + change.endMinute))
        .U32(Signed(MinutesOf(change.original) + seriesStart));
}

void AppendNarrow(ByteWriter& blob, const CStringW& text, unsigned codePage) {
    const std::string bytes = ToCodePage(text, codePage);
    blob.U16(bytes.size() + 1).U16(bytes.size()).Append(AsBytes(bytes));
}

void AppendException(ByteWriter& blob, const ChangedOccurrence& change, const Series& series, unsigned codePage) {
    AppendTimes(blob, change, series.startMinute);
    blob.U16(FlagsOf(change));
    if (change.subject) {
        AppendNarrow(blob, *change.subject, codePage);
    }
    if (change.reminderMinutes) {
        constexpr std::uint32_t kReminderIsSet = 1;
        blob.U32(Signed(*change.reminderMinutes)).U32(kReminderIsSet);
    }
    if (change.location) {
        AppendNarrow(blob, *change.location, codePage);
    }
    if (change.busyStatus) {
        blob.U32(Signed(*change.busyStatus));
    }
    if (change.hasAttachment) {
        blob.U32(1);
    }
    if (change.allDay) {
        blob.U32(*change.allDay ? 1 : 0);
    }
}

void AppendWide(ByteWriter& blob, const CStringW& text) {
    blob.U16(text.size()).Append(AsBytes(text));
}

void AppendExtended(ByteWriter& blob, const ChangedOccurrence& change, const Series& series) {
    blob.U32(4).U32(0);  // what was highlighted as changed: nothing
    blob.U32(0);
    if (!change.subject && !change.location) {
        return;
    }
    AppendTimes(blob, change, series.startMinute);
    if (change.subject) {
        AppendWide(blob, *change.subject);
    }
    if (change.location) {
        AppendWide(blob, *change.location);
    }
    blob.U32(0);
}

}  // namespace

std::vector<Day> OccurrencesOf(const Recurrence& recurrence, std::size_t limit) {
    std::size_t most = recurrence.until ? SIZE_MAX : limit;
    if (recurrence.count) {
        most = *recurrence.count;
    }
    // No series of ours is longer than a century, so a pattern that never fits ends here.
    const Day last = recurrence.until.value_or(recurrence.start + days{36524});
    std::vector<Day> occurrences;
    for (Day day = recurrence.start; day <= last && occurrences.size() < most; day += days{1}) {
        if (Picked(day, recurrence)) {
            occurrences.push_back(day);
        }
    }
    return occurrences;
}

Bytes PatternBlob(const Recurrence& recurrence, const std::vector<Day>& deleted,
                  const std::vector<ChangedOccurrence>& changed) {
    constexpr std::uint32_t kVersion = 0x3004;
    ByteWriter blob;
    blob.U16(kVersion)
        .U16(kVersion)
        .U16(static_cast<std::uint16_t>(recurrence.frequency))
        .U16(static_cast<std::uint16_t>(recurrence.picks))
        .U16(0)
        .U32(Signed(FirstDateTime(recurrence)))
        .U32(Signed(PeriodOf(recurrence)))
        .U32(0);
    AppendSpecifics(blob, recurrence);
    AppendEnd(blob, recurrence);
    blob.U32(recurrence.firstWeekday);

    // A changed time counts as deleted from its day, and is among those that were put somewhere.
    std::vector<Day> gone = deleted;
    std::vector<Day> moved;
    for (const ChangedOccurrence& change : changed) {
        gone.push_back(change.original);
        moved.push_back(change.day);
    }
    AppendDates(blob, gone);
    AppendDates(blob, moved);

    const bool isEndless = !recurrence.count && !recurrence.until;
    blob.U32(Signed(MinutesOf(recurrence.start)));
    blob.U32(Signed(isEndless ? kEndDateOfEndless : MinutesOf(OccurrencesOf(recurrence).back())));
    return blob.Take();
}

Bytes SeriesBlob(const Series& series, unsigned codePage) {
    constexpr std::uint32_t kReaderVersion = 0x3006;
    constexpr std::uint32_t kWriterVersion = 0x3009;
    const std::vector<ChangedOccurrence> changed = ByOriginal(series.changed);
    ByteWriter blob;
    blob.Append(PatternBlob(series.recurrence, series.deleted, changed))
        .U32(kReaderVersion)
        .U32(kWriterVersion)
        .U32(Signed(series.startMinute))
        .U32(Signed(series.endMinute))
        .U16(changed.size());
    for (const ChangedOccurrence& change : changed) {
        AppendException(blob, change, series, codePage);
    }
    blob.U32(0);
    for (const ChangedOccurrence& change : changed) {
        AppendExtended(blob, change, series);
    }
    return blob.U32(0).Take();
}

}  // namespace mailbox_builder
