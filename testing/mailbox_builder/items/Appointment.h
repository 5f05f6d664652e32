// Appointments, and the messages that meetings are arranged with: [MS-OXOCAL]. Any thread.
#pragma once

#include "testing/mailbox_builder/Model.h"
#include "testing/mailbox_builder/items/People.h"
#include "testing/mailbox_builder/items/Recurrence.h"
#include "testing/mailbox_builder/items/TimeZones.h"

#include <optional>
#include <vector>

namespace mailbox_builder {

// PidLidBusyStatus: 2.2.1.2.
enum class BusyStatus : std::int32_t { Free = 0, Tentative = 1, Busy = 2, OutOfOffice = 3, Elsewhere = 4 };

// PidLidResponseStatus: 2.2.1.11.
enum class Response : std::int32_t { None = 0, Organized = 1, Tentative = 2, Accepted = 3, Declined = 4, Open = 5 };

struct Attendee {
    Person person;
    bool isRequired = true;
    bool isResource = false;
    Response response = Response::None;
};

// Start and end are told by the clocks of `zone`. An appointment with attendees is a meeting.
struct AppointmentFacts {
    CStringW subject = {};
    CStringW location = {};
    Person organizer = {};
    std::vector<Attendee> attendees = {};
    Time start = {};
    Time end = {};
    const Zone* zone = &kBerlin;
    bool isAllDay = false;
    BusyStatus busy = BusyStatus::Busy;
    Response response = Response::None;
    std::optional<int> reminderMinutes = {};
    Time created = {};
    CStringW notes = {};
    unsigned codePage = 1252;
};

Message MakeAppointment(const AppointmentFacts& facts);

// A series, of which `facts` tells the first time. Changed times with `hasAttachment` become hidden embedded messages.
Message MakeSeries(const AppointmentFacts& facts, const Series& series);

// What travels between organizer and attendees: requests, answers with a text of their own, cancellations.
Message MakeMeetingRequest(const AppointmentFacts& facts);
Message MakeMeetingResponse(const AppointmentFacts& facts, const Attendee& attendee, Time answered);
Message MakeCancellation(const AppointmentFacts& facts, Time cancelled);

// What identifies a meeting in all of its messages: 2.2.1.27.
Bytes GlobalObjectId(const AppointmentFacts& facts);

}  // namespace mailbox_builder
