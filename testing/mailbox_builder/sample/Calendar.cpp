// Appointments, meetings and series, and the messages about meetings.
#include "mapi/PropTags.h"
#include "testing/mailbox_builder/items/Appointment.h"
#include "testing/mailbox_builder/items/Bodies.h"
#include "testing/mailbox_builder/items/Mail.h"
#include "testing/mailbox_builder/items/Task.h"
#include "testing/mailbox_builder/items/Wording.h"
#include "testing/mailbox_builder/sample/Parts.h"

#include <string>

namespace mailbox_builder::sample {
namespace {

std::vector<Message>& Calendar(Tree& tree) {
    return tree.At(Wide("Calendar")).messages;
}

AppointmentFacts Facts(const char* subject, Day day, int hour, int minutes) {
    return {.subject = Wide(subject),
            .location = Wide("Harbour House, room 2"),
            .organizer = People().mara,
            .start = At(day, hour),
            .end = At(day, hour, minutes),
            .created = At(day - std::chrono::days{14}, 10, 15)};
}

std::vector<Attendee> Attendees() {
    const Cast& cast = People();
    const Person room = Colleague(Wide("Harbour House, room 2"), Wide("room2"));
    return {{.person = cast.ines, .response = Response::Accepted},
            {.person = cast.tobias, .response = Response::Tentative},
            {.person = cast.hanna, .response = Response::Declined},
            {.person = cast.priya, .isRequired = false},
            {.person = room, .isRequired = false, .isResource = true, .response = Response::Accepted}};
}

void DescribeSingles(Tree& tree) {
    Dice dice(31);
    constexpr const char* kOccasions[] = {"Site visit, pier 4",
                                          "Call with the harbour office",
                                          "Dentist",
                                          "Review of the drawings",
                                          "Lunch with Priya",
                                          "Train to Malm\u00F6",
                                          "Calibration of gauges",
                                          "Interview",
                                          "Choir"};
    for (int i = 0; i < 24; ++i) {
        const Day day = DayOf(2024, 2, 5) + std::chrono::days{i * 31};
        AppointmentFacts facts = Facts(dice.Pick(kOccasions), day, 8 + static_cast<int>(dice.Roll(9)), 60);
        facts.busy = static_cast<BusyStatus>(i % 5);
        if (i % 3 == 0) {
            facts.reminderMinutes = 15 * (1 + i % 4);
        }
        facts.notes = Wide("Bring the folder.\r\n");
        Calendar(tree).push_back(MakeAppointment(facts));
    }
}

void DescribeSpecials(Tree& tree) {
    const Cast& cast = People();
    AppointmentFacts allDay = Facts("Midsummer", DayOf(2025, 6, 20), 0, 24 * 60);
    allDay.isAllDay = true;
    allDay.busy = BusyStatus::OutOfOffice;
    Calendar(tree).push_back(MakeAppointment(allDay));

    AppointmentFacts trip = Facts("Conference in Boston", DayOf(2025, 9, 15), 9, 4 * 24 * 60);
    trip.zone = &kNewYork;
    trip.organizer = cast.priya;
    Calendar(tree).push_back(MakeAppointment(trip));

    AppointmentFacts call = Facts("Call with Osaka", DayOf(2025, 10, 26), 10, 45);
    call.zone = &kTokyo;
    call.location = {};
    Message accounted = MakeAppointment(call);
    SetAccounting(accounted.properties, Wide("0 km"), Wide("Account 4711"), {Wide("Example Works")},
                  {Wide("Hanna Oksanen"), Wide("Luca Ferri")});
    SetCategories(accounted.properties, {Wide("Calls"), Wide("Abroad")});
    Calendar(tree).push_back(std::move(accounted));

    Message urgent = MakeAppointment(Facts("Storm watch", DayOf(2026, 1, 17), 22, 9 * 60));
    SetImportance(urgent.properties, Importance::High);
    SetSensitivity(urgent.properties, Sensitivity::Private);
    SetHtmlBody(urgent, "<html><body><p>Take the <i>long</i> boots.</p></body></html>");
    Calendar(tree).push_back(std::move(urgent));
}

AppointmentFacts Review() {
    AppointmentFacts facts = Facts("Review of the bridge survey", DayOf(2025, 4, 8), 13, 90);
    facts.attendees = Attendees();
    facts.response = Response::Organized;
    facts.notes = Wide("Agenda: readings, railing, budget.\r\n");
    return facts;
}

void DescribeMeetings(Tree& tree) {
    const Cast& cast = People();
    AppointmentFacts facts = Review();
    Calendar(tree).push_back(MakeAppointment(facts));

    std::vector<Message>& inbox = tree.At(Wide("Inbox")).messages;
    tree.At(Wide("Sent Items")).messages.push_back(MakeMeetingRequest(facts));
    Time answered = After(facts.created, 40);
    for (const Attendee& attendee : facts.attendees) {
        if (attendee.response != Response::None && !attendee.isResource) {
            Message response = MakeMeetingResponse(facts, attendee, answered);
            SetPlainBody(response, Wide("Thanks for the invitation.\r\n"));
            inbox.push_back(std::move(response));
            answered = After(answered, 25);
        }
    }

    AppointmentFacts invited = Facts("Harbour safety round", DayOf(2025, 8, 21), 9, 120);
    invited.organizer = cast.hanna;
    invited.attendees = {{.person = cast.mara}, {.person = cast.oluwaseun, .isRequired = false}};
    invited.response = Response::Open;
    inbox.push_back(MakeMeetingRequest(invited));
    inbox.push_back(MakeCancellation(invited, After(invited.created, 3000)));
    invited.response = Response::Accepted;
    Calendar(tree).push_back(MakeAppointment(invited));
}

struct SeriesRow {
    const char* subject;
    Recurrence recurrence;
    int startMinute;
    int minutes;
};

void DescribeSeries(Tree& tree) {
    const SeriesRow rows[] = {
        {"Daily reading",
         {.frequency = Frequency::Daily, .picks = Picks::Days, .start = DayOf(2025, 3, 24), .every = 3, .count = 12},
         7 * 60,
         20},
        {"Stand-up on workdays",
         {.frequency = Frequency::Daily,
          .picks = Picks::Weekdays,
          .start = DayOf(2025, 1, 7),
          .weekdays = kWorkdays,
          .until = DayOf(2025, 12, 19)},
         9 * 60 + 15,
         15},
        {"Rowing",
         {.frequency = Frequency::Weekly,
          .picks = Picks::Weekdays,
          .start = DayOf(2024, 5, 7),
          .every = 2,
          .weekdays = kTuesday | kThursday,
          .firstWeekday = 1},
         18 * 60,
         90},
        {"Rent",
         {.frequency = Frequency::Monthly,
          .picks = Picks::MonthDay,
          .start = DayOf(2024, 1, 31),
          .day = 31,
          .count = 24},
         8 * 60,
         10},
        {"Reading circle",
         {.frequency = Frequency::Monthly,
          .picks = Picks::Nth,
          .start = DayOf(2024, 2, 14),
          .weekdays = kWednesday,
          .nth = 2},
         19 * 60,
         120},
        {"Last workday: time sheets",
         {.frequency = Frequency::Monthly,
          .picks = Picks::Nth,
          .start = DayOf(2024, 1, 31),
          .weekdays = kWorkdays,
          .nth = 5,
          .count = 36},
         16 * 60,
         30},
        {"Birthday of Sixten",
         {.frequency = Frequency::Yearly,
          .picks = Picks::MonthDay,
          .start = DayOf(2024, 2, 29),
          .every = 12,
          .day = 29},
         0,
         24 * 60},
        {"Open day of the harbour",
         {.frequency = Frequency::Yearly,
          .picks = Picks::Nth,
          .start = DayOf(2024, 9, 7),
          .every = 12,
          .weekdays = kSaturday,
          .nth = 1,
          .count = 5},
         10 * 60,
         6 * 60},
        {"End of quarter",
         {.frequency = Frequency::Monthly,
          .picks = Picks::MonthEnd,
          .start = DayOf(2024, 3, 31),
          .every = 3,
          .day = 31},
         15 * 60,
         60},
    };
    for (const SeriesRow& row : rows) {
        AppointmentFacts facts = Facts(row.subject, row.recurrence.start, 0, 0);
        facts.start = At(row.recurrence.start, 0, row.startMinute);
        facts.end = After(facts.start, row.minutes);
        facts.isAllDay = row.minutes == 24 * 60;
        const Series series = {
            .recurrence = row.recurrence, .startMinute = row.startMinute, .endMinute = row.startMinute + row.minutes};
        Calendar(tree).push_back(MakeSeries(facts, series));
    }
}

// A series with times that were deleted, moved, renamed and lengthened; it crosses two changes of clocks.
void DescribeChangedSeries(Tree& tree) {
    AppointmentFacts facts = Facts("Bridge survey: weekly", DayOf(2025, 3, 3), 0, 0);
    facts.start = At(2025, 3, 3, 10);
    facts.end = At(2025, 3, 3, 11);
    facts.attendees = Attendees();
    facts.reminderMinutes = 10;
    const Series series = {.recurrence = {.frequency = Frequency::Weekly,
                                          .picks = Picks::Weekdays,
                                          .start = DayOf(2025, 3, 3),
                                          .weekdays = kMonday,
                                          .until = DayOf(2025, 11, 24)},
                           .startMinute = 10 * 60,
                           .endMinute = 11 * 60,
                           .deleted = {DayOf(2025, 4, 21), DayOf(2025, 6, 9)},
                           .changed = {{.original = DayOf(2025, 3, 31),
                                        .day = DayOf(2025, 4, 1),
                                        .startMinute = 14 * 60,
                                        .endMinute = 15 * 60 + 30,
                                        .subject = Wide("Bridge survey: weekly, with the divers"),
                                        .hasAttachment = true,
                                        .hasBody = true},
                                       {.original = DayOf(2025, 5, 12),
                                        .day = DayOf(2025, 5, 12),
                                        .startMinute = 10 * 60,
                                        .endMinute = 11 * 60,
                                        .location = Wide("Caf\u00E9 Kaj"),
                                        .busyStatus = 1,
                                        .reminderMinutes = 30,
                                        .hasAttachment = true},
                                       {.original = DayOf(2025, 10, 27),
                                        .day = DayOf(2025, 10, 28),
                                        .startMinute = 0,
                                        .endMinute = 24 * 60,
                                        .allDay = true}}};
    Calendar(tree).push_back(MakeSeries(facts, series));

    AppointmentFacts foreign = Facts("Partner call", DayOf(2025, 2, 3), 0, 0);
    foreign.zone = &kSydney;
    foreign.start = At(2025, 2, 3, 17);
    foreign.end = At(2025, 2, 3, 17, 30);
    Calendar(tree).push_back(MakeSeries(foreign, {.recurrence = {.frequency = Frequency::Weekly,
                                                                 .picks = Picks::Weekdays,
                                                                 .start = DayOf(2025, 2, 3),
                                                                 .every = 4,
                                                                 .weekdays = kMonday,
                                                                 .count = 10},
                                                  .startMinute = 17 * 60,
                                                  .endMinute = 17 * 60 + 30}));
}

void DescribeTeamCalendar(Tree& tree) {
    SampleFolder& folder = tree.At(Wide("Calendar/Team calendar"));
    const Cast& cast = People();
    int week = 0;
    for (const Person* person : cast.Colleagues()) {
        AppointmentFacts facts = Facts("", DayOf(2025, 7, 7) + std::chrono::days{7 * week++}, 0, 5 * 24 * 60);
        facts.subject = person->name + Wide(": holiday");
        facts.organizer = *person;
        facts.isAllDay = true;
        facts.busy = BusyStatus::OutOfOffice;
        folder.messages.push_back(MakeAppointment(facts));
    }
}

}  // namespace

void DescribeCalendar(Tree& tree) {
    DescribeSingles(tree);
    DescribeSpecials(tree);
    DescribeMeetings(tree);
    DescribeSeries(tree);
    DescribeChangedSeries(tree);
    DescribeTeamCalendar(tree);
}

}  // namespace mailbox_builder::sample
