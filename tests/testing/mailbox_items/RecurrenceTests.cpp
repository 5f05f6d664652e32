// The bytes of recurrences: as published, as computed by hand, and as a small decoder of its own finds them.
#include "testing/mailbox_builder/items/Recurrence.h"
#include "testing/mailbox_builder/items/TimeZones.h"
#include "testing/mailbox_builder/items/Wording.h"

#include <gtest/gtest.h>

#include <string>

namespace mailbox_builder {
namespace {

std::string Hex(const Bytes& bytes) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    std::string text;
    for (const std::byte byte : bytes) {
        text += kDigits[std::to_integer<unsigned>(byte) >> 4];
        text += kDigits[std::to_integer<unsigned>(byte) & 15];
    }
    return text;
}

TEST(Recurrence, EncodesTheSeriesThatThePublishedExampleShows) {
    // [MS-OXOCAL] 4.1.1.1: Mondays, Thursdays and Fridays, twelve times, from 2007-03-26 on, 11:00 to 11:30.
    const Series series = {.recurrence = {.frequency = Frequency::Weekly,
                                          .picks = Picks::Weekdays,
                                          .start = DayOf(2007, 3, 26),
                                          .weekdays = kMonday | kThursday | kFriday,
                                          .count = 12},
                           .startMinute = 11 * 60,
                           .endMinute = 11 * 60 + 30};
    EXPECT_EQ(Hex(SeriesBlob(series)),
              "043004300B2001000000C0210000010000000000000032000000222000000C0000000000000000000000000000008020BC0C"
              "20ADBC0C063000000930000094020000B202000000000000000000000000");
}

TEST(Recurrence, EncodesEachKindOfPattern) {
    struct Row {
        const char* name;
        Recurrence recurrence;
        const char* hex;
    };
    const Row rows[] = {
        {"every third day, one deleted, up to a date",
         {.frequency = Frequency::Daily,
          .picks = Picks::Days,
          .start = DayOf(2025, 3, 24),
          .every = 3,
          .until = DayOf(2025, 4, 21)},
         "043004300A2000000000A0050000E010000000000000212000000A000000000000000000000000000000A08D4C0D80254D0D"},
        {"yearly on a day that most years lack, without end",
         {.frequency = Frequency::Yearly,
          .picks = Picks::MonthDay,
          .start = DayOf(2024, 2, 29),
          .every = 12,
          .day = 29},
         "043004300D200200000060AE00000C000000000000001D000000232000000A0000000000000000000000000000008001440DDF80"
         "E95A"},
        {"the last workday of every other month",
         {.frequency = Frequency::Monthly,
          .picks = Picks::Nth,
          .start = DayOf(2024, 1, 31),
          .every = 2,
          .weekdays = kWorkdays,
          .nth = 5,
          .count = 3},
         "043004300C20030000000000000002000000000000003E000000050000002220000003000000000000000000000000000000605E"
         "430D0007460D"},
        {"the end of each quarter, up to a date",
         {.frequency = Frequency::Monthly,
          .picks = Picks::MonthEnd,
          .start = DayOf(2024, 3, 31),
          .every = 3,
          .until = DayOf(2025, 1, 1)},
         "043004300C2004000000E04B010003000000000000001F0000002120000004000000000000000000000000000000E0AF440DC0BA"
         "4A0D"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(Hex(PatternBlob(row.recurrence)), row.hex);
    }
}

TEST(Recurrence, PicksTheDaysThatACalendarShows) {
    struct Row {
        const char* name;
        Recurrence recurrence;
        std::vector<Day> days;
    };
    const Row rows[] = {
        {"every second week, the week beginning on Monday",
         {.frequency = Frequency::Weekly,
          .picks = Picks::Weekdays,
          .start = DayOf(2024, 5, 7),
          .every = 2,
          .weekdays = kTuesday | kSunday,
          .count = 4,
          .firstWeekday = 1},
         {DayOf(2024, 5, 7), DayOf(2024, 5, 12), DayOf(2024, 5, 21), DayOf(2024, 5, 26)}},
        {"the same, the week beginning on Sunday",
         {.frequency = Frequency::Weekly,
          .picks = Picks::Weekdays,
          .start = DayOf(2024, 5, 7),
          .every = 2,
          .weekdays = kTuesday | kSunday,
          .count = 4},
         {DayOf(2024, 5, 7), DayOf(2024, 5, 19), DayOf(2024, 5, 21), DayOf(2024, 6, 2)}},
        {"the 31st, or the last day there is",
         {.frequency = Frequency::Monthly,
          .picks = Picks::MonthDay,
          .start = DayOf(2024, 1, 31),
          .day = 31,
          .count = 3},
         {DayOf(2024, 1, 31), DayOf(2024, 2, 29), DayOf(2024, 3, 31)}},
        {"the first Saturday of September",
         {.frequency = Frequency::Yearly,
          .picks = Picks::Nth,
          .start = DayOf(2024, 9, 7),
          .every = 12,
          .weekdays = kSaturday,
          .nth = 1,
          .count = 3},
         {DayOf(2024, 9, 7), DayOf(2025, 9, 6), DayOf(2026, 9, 5)}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(OccurrencesOf(row.recurrence), row.days);
    }
}

// Reads a series' bytes from front to back.
struct Cursor {
    localmapi::ByteView bytes;
    std::size_t at = 0;

    std::uint32_t U16() { return bytes.U16((at += 2) - 2); }
    std::uint32_t U32() { return bytes.U32((at += 4) - 4); }
    std::string Narrow() {
        const std::uint32_t longer = U16();
        const std::uint32_t length = U16();
        EXPECT_EQ(longer, length + 1);
        const auto part = bytes.Part((at += length) - length, length);
        return std::string(reinterpret_cast<const char*>(part.Data()), part.Size());
    }
    CStringW Wide16() {
        CStringW text;
        for (std::uint32_t left = U16(); left > 0; --left) {
            text.push_back(static_cast<WCHAR>(U16()));
        }
        return text;
    }
};

constexpr std::uint32_t Minute(int year, unsigned month, unsigned day, int minute = 0) {
    return static_cast<std::uint32_t>(MinutesOf(At(year, month, day, 0, minute)));
}

TEST(Recurrence, KeepsDeletedAndChangedTimesWhereADecoderFindsThem) {
    const Series series = {
        .recurrence = {.frequency = Frequency::Daily, .picks = Picks::Days, .start = DayOf(2025, 6, 2), .count = 10},
        .startMinute = 600,
        .endMinute = 660,
        .deleted = {DayOf(2025, 6, 9)},
        // Given in another order than that of the days.
        .changed = {{.original = DayOf(2025, 6, 5),
                     .day = DayOf(2025, 6, 6),
                     .startMinute = 90,
                     .endMinute = 120,
                     .location = Wide("Caf\u00E9"),
                     .busyStatus = 3,
                     .reminderMinutes = 45,
                     .allDay = true},
                    {.original = DayOf(2025, 6, 3),
                     .day = DayOf(2025, 6, 3),
                     .startMinute = 600,
                     .endMinute = 720,
                     .subject = Wide("\u0416"),
                     .hasAttachment = true}}};
    const Bytes blob = SeriesBlob(series, 1251);
    Cursor cursor{blob, 22};  // behind the fixed part: a pattern of days has nothing of its own
    EXPECT_EQ(cursor.U32(), 0x2022u);
    EXPECT_EQ(cursor.U32(), 10u);
    EXPECT_EQ(cursor.U32(), 0u);
    ASSERT_EQ(cursor.U32(), 3u) << "a changed time is deleted from its own day";
    EXPECT_EQ(cursor.U32(), Minute(2025, 6, 3));
    EXPECT_EQ(cursor.U32(), Minute(2025, 6, 5));
    EXPECT_EQ(cursor.U32(), Minute(2025, 6, 9));
    ASSERT_EQ(cursor.U32(), 2u);
    EXPECT_EQ(cursor.U32(), Minute(2025, 6, 3));
    EXPECT_EQ(cursor.U32(), Minute(2025, 6, 6));
    EXPECT_EQ(cursor.U32(), Minute(2025, 6, 2));
    EXPECT_EQ(cursor.U32(), Minute(2025, 6, 11));
    EXPECT_EQ(cursor.U32(), 0x3006u);
    EXPECT_EQ(cursor.U32(), 0x3009u);
    EXPECT_EQ(cursor.U32(), 600u);
    EXPECT_EQ(cursor.U32(), 660u);

    ASSERT_EQ(cursor.U16(), 2u);
    EXPECT_EQ(cursor.U32(), Minute(2025, 6, 3, 600));
    EXPECT_EQ(cursor.U32(), Minute(2025, 6, 3, 720));
    EXPECT_EQ(cursor.U32(), Minute(2025, 6, 3, 600));
    EXPECT_EQ(cursor.U16(), 0x0041u);
    EXPECT_EQ(cursor.Narrow(), "\xC6");
    EXPECT_EQ(cursor.U32(), 1u);

    EXPECT_EQ(cursor.U32(), Minute(2025, 6, 6, 90));
    EXPECT_EQ(cursor.U32(), Minute(2025, 6, 6, 120));
    EXPECT_EQ(cursor.U32(), Minute(2025, 6, 5, 600));
    EXPECT_EQ(cursor.U16(), 0x00BCu);
    EXPECT_EQ(cursor.U32(), 45u);
    EXPECT_EQ(cursor.U32(), 1u);
    EXPECT_EQ(cursor.Narrow().substr(0, 3), "Caf");
    EXPECT_EQ(cursor.U32(), 3u);
    EXPECT_EQ(cursor.U32(), 1u);

    EXPECT_EQ(cursor.U32(), 0u);
    for (const CStringW& text : {Wide("\u0416"), Wide("Caf\u00E9")}) {
        EXPECT_EQ(cursor.U32(), 4u);
        EXPECT_EQ(cursor.U32(), 0u);
        EXPECT_EQ(cursor.U32(), 0u);
        cursor.at += 12;
        EXPECT_EQ(cursor.Wide16(), text);
        EXPECT_EQ(cursor.U32(), 0u);
    }
    EXPECT_EQ(cursor.U32(), 0u);
    EXPECT_EQ(cursor.at, blob.size());
}

TEST(TimeZones, TellUtcAroundTheChangesOfClocks) {
    struct Row {
        const char* name;
        const Zone& zone;
        Time local, utc;
    };
    const Row rows[] = {
        {"Berlin, winter", kBerlin, At(2025, 1, 15, 12), At(2025, 1, 15, 11)},
        {"Berlin, summer", kBerlin, At(2025, 7, 15, 12), At(2025, 7, 15, 10)},
        {"Berlin, before the change in March", kBerlin, At(2025, 3, 30, 1, 59), At(2025, 3, 30, 0, 59)},
        {"Berlin, behind it", kBerlin, At(2025, 3, 30, 3, 0), At(2025, 3, 30, 1, 0)},
        {"Berlin, in the repeated hour", kBerlin, At(2025, 10, 26, 2, 30), At(2025, 10, 26, 0, 30)},
        {"Berlin, behind it", kBerlin, At(2025, 10, 26, 3, 0), At(2025, 10, 26, 2, 0)},
        {"New York, second Sunday of March", kNewYork, At(2025, 3, 9, 3, 0), At(2025, 3, 9, 7, 0)},
        {"New York, first Sunday of November", kNewYork, At(2025, 11, 2, 2, 0), At(2025, 11, 2, 7, 0)},
        {"Tokyo never changes", kTokyo, At(2025, 7, 1, 9), At(2025, 7, 1, 0)},
        {"Sydney, its summer", kSydney, At(2025, 1, 1, 12), At(2025, 1, 1, 1)},
        {"Sydney, its winter", kSydney, At(2025, 7, 1, 12), At(2025, 7, 1, 2)},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(row.zone.ToUtc(row.local).ticks, row.utc.ticks);
        EXPECT_EQ(row.zone.ToLocal(row.utc).ticks, row.local.ticks);
    }
}

}  // namespace
}  // namespace mailbox_builder
