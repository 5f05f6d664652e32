#include "testing/mailbox_builder/items/Appointment.h"

#include "mapi/PropTags.h"
#include "testing/mailbox_builder/ByteWriter.h"
#include "testing/mailbox_builder/items/Attachments.h"
#include "testing/mailbox_builder/items/Bodies.h"
#include "testing/mailbox_builder/items/Mail.h"
#include "testing/mailbox_builder/items/Naming.h"
#include "testing/mailbox_builder/items/Wording.h"

#include <algorithm>

namespace mailbox_builder {
namespace {

// PidLidAppointmentStateFlags: 2.2.1.10.
constexpr std::int32_t kIsMeeting = 1;
constexpr std::int32_t kIsReceived = 2;
constexpr std::int32_t kIsCancelled = 4;

// PR_RECIPIENT_FLAGS: 2.2.4.10.1.
constexpr std::int32_t kSendable = 1;
constexpr std::int32_t kOrganizer = 2;

// PidLidMeetingType: 2.2.6.5.
constexpr std::int32_t kInitialRequest = 1;

std::int32_t DurationOf(const AppointmentFacts& facts) {
    return static_cast<std::int32_t>(MinutesOf(facts.end) - MinutesOf(facts.start));
}

CStringW NamesOf(const std::vector<Attendee>& attendees, bool (*wanted)(const Attendee&)) {
    CStringW names;
    for (const Attendee& attendee : attendees) {
        if (wanted(attendee)) {
            names += (names.empty() ? ""_w : "; "_w) + attendee.person.name;
        }
    }
    return names;
}

RecipientType KindOf(const Attendee& attendee) {
    if (attendee.isResource) {
        return RecipientType::Bcc;
    }
    return attendee.isRequired ? RecipientType::To : RecipientType::Cc;
}

void AddAttendees(Message& message, const AppointmentFacts& facts) {
    if (facts.attendees.empty()) {
        return;
    }
    AddRecipient(message, RecipientType::To, facts.organizer);
    message.recipients.back().Set(PR_RECIPIENT_FLAGS, kSendable | kOrganizer).Set(PR_RECIPIENT_TRACKSTATUS, 0);
    for (const Attendee& attendee : facts.attendees) {
        AddRecipient(message, KindOf(attendee), attendee.person);
        message.recipients.back()
            .Set(PR_RECIPIENT_FLAGS, kSendable)
            .Set(PR_RECIPIENT_TRACKSTATUS, static_cast<std::int32_t>(attendee.response));
        if (attendee.response != Response::None) {
            message.recipients.back().Set(PR_RECIPIENT_TRACKSTATUS_TIME, After(facts.created, 90));
        }
    }
    Properties& properties = message.properties;
    const auto required = [](const Attendee& attendee) { return KindOf(attendee) == RecipientType::To; };
    const auto optional = [](const Attendee& attendee) { return KindOf(attendee) == RecipientType::Cc; };
    const auto resource = [](const Attendee& attendee) { return attendee.isResource; };
    const auto everybody = [](const Attendee&) { return true; };
    Set(properties, PidLidAllAttendeesString, NamesOf(facts.attendees, everybody));
    Set(properties, PidLidToAttendeesString, NamesOf(facts.attendees, required));
    Set(properties, PidLidCcAttendeesString, NamesOf(facts.attendees, optional));
    Set(properties, PidLidRequiredAttendees, NamesOf(facts.attendees, required));
    Set(properties, PidLidOptionalAttendees, NamesOf(facts.attendees, optional));
    Set(properties, PidLidResourceAttendees, NamesOf(facts.attendees, resource));
}

void SetTimes(Properties& properties, const AppointmentFacts& facts) {
    const Time start = facts.zone->ToUtc(facts.start);
    const Time end = facts.zone->ToUtc(facts.end);
    properties.Set(PR_START_DATE, start).Set(PR_END_DATE, end);
    Set(properties, PidLidAppointmentStartWhole, start);
    Set(properties, PidLidAppointmentEndWhole, end);
    Set(properties, PidLidCommonStart, start);
    Set(properties, PidLidCommonEnd, end);
    Set(properties, PidLidClipStart, start);
    Set(properties, PidLidClipEnd, end);
    Set(properties, PidLidAppointmentDuration, DurationOf(facts));
    Set(properties, PidLidAppointmentSubType, facts.isAllDay);
    Set(properties, PidLidAppointmentTimeZoneDefinitionStartDisplay, ZoneDefinition(*facts.zone));
    Set(properties, PidLidAppointmentTimeZoneDefinitionEndDisplay, ZoneDefinition(*facts.zone));
    Set(properties, PidLidReminderSet, facts.reminderMinutes.has_value());
    if (facts.reminderMinutes) {
        Set(properties, PidLidReminderDelta, *facts.reminderMinutes);
        Set(properties, PidLidReminderTime, start);
        Set(properties, PidLidReminderSignalTime, After(start, -*facts.reminderMinutes));
    }
}

// What an appointment and the messages about it have in common.
void SetCalendarProperties(Message& message, const AppointmentFacts& facts) {
    Properties& properties = message.properties;
    SetTimes(properties, facts);
    Set(properties, PidLidLocation, facts.location);
    Set(properties, PidLidWhere, facts.location);
    Set(properties, PidLidBusyStatus, static_cast<std::int32_t>(facts.busy));
    Set(properties, PidLidIntendedBusyStatus, static_cast<std::int32_t>(facts.busy));
    Set(properties, PidLidResponseStatus, static_cast<std::int32_t>(facts.response));
    Set(properties, PidLidAppointmentStateFlags, facts.attendees.empty() ? 0 : kIsMeeting);
    Set(properties, PidLidAppointmentSequence, 0);
    Set(properties, PidLidRecurring, false);
    Set(properties, PidLidRecurrenceType, 0);
    Set(properties, PidLidConferencingCheck, false);
    Set(properties, PidLidFInvited, !facts.attendees.empty());
    Set(properties, PidLidAppointmentReplyTime, After(facts.created, 90));
    Set(properties, PidLidGlobalObjectId, GlobalObjectId(facts));
    Set(properties, PidLidCleanGlobalObjectId, GlobalObjectId(facts));
    properties.Set(PR_RESPONSE_REQUESTED, !facts.attendees.empty());
    AddAttendees(message, facts);
    if (!facts.notes.empty()) {
        SetPlainBody(message, facts.notes);
    }
}

Envelope EnvelopeOf(const AppointmentFacts& facts, const CStringW& prefix, const CStringW& messageClass, Time sent) {
    return {.prefix = prefix,
            .subject = facts.subject,
            .from = facts.organizer,
            .sent = sent,
            .codePage = facts.codePage,
            .messageClass = messageClass};
}

// A time of the series that is unlike the others, as the hidden message that keeps what it has of its own: 2.2.10.
Attachment ExceptionOf(const AppointmentFacts& facts, const ChangedOccurrence& change, int seriesStart) {
    constexpr std::int32_t kIsException = 2;
    AppointmentFacts own = facts;
    own.subject = change.subject.value_or(facts.subject);
    own.location = change.location.value_or(facts.location);
    own.busy = change.busyStatus ? static_cast<BusyStatus>(*change.busyStatus) : facts.busy;
    own.start = At(change.day, 0, change.startMinute);
    own.end = At(change.day, 0, change.endMinute);
    own.isAllDay = change.allDay.value_or(facts.isAllDay);
    own.attendees.clear();
    Message message = MakeAppointment(own);
    message.properties.Set(PR_MESSAGE_CLASS, "IPM.OLE.CLASS.{00061055-0000-0000-C000-000000000046}"_w);
    Set(message.properties, PidLidExceptionReplaceTime, facts.zone->ToUtc(At(change.original, 0, seriesStart)));
    Set(message.properties, PidLidFExceptionalBody, change.hasBody);
    Attachment attachment = Hidden(AttachMessage(std::move(message)));
    attachment.properties.Set(PR_ATTACHMENT_FLAGS, kIsException)
        .Set(PR_EXCEPTION_STARTTIME, own.start)
        .Set(PR_EXCEPTION_ENDTIME, own.end);
    return attachment;
}

// PidLidRecurrenceType: 2.2.1.45.
std::int32_t RecurrenceTypeOf(const Recurrence& recurrence) {
    return static_cast<std::int32_t>(recurrence.frequency) - static_cast<std::int32_t>(Frequency::Daily) + 1;
}

}  // namespace

Message MakeAppointment(const AppointmentFacts& facts) {
    Message message = MakeDraft(EnvelopeOf(facts, {}, "IPM.Appointment"_w, facts.created));
    message.properties.Set(PR_MESSAGE_FLAGS, 1);
    SetSender(message.properties, facts.organizer);
    SetRepresented(message.properties, facts.organizer);
    SetCalendarProperties(message, facts);
    return message;
}

Message MakeSeries(const AppointmentFacts& facts, const Series& series) {
    Message message = MakeAppointment(facts);
    Properties& properties = message.properties;
    const Recurrence& recurrence = series.recurrence;
    Set(properties, PidLidRecurring, true);
    Set(properties, PidLidIsRecurring, true);
    Set(properties, PidLidRecurrenceType, RecurrenceTypeOf(recurrence));
    Set(properties, PidLidAppointmentRecur, SeriesBlob(series, facts.codePage));
    Set(properties, PidLidTimeZoneStruct, ZoneStructure(*facts.zone));
    Set(properties, PidLidTimeZoneDescription, Wide(facts.zone->description));
    Set(properties, PidLidAppointmentTimeZoneDefinitionRecur, ZoneDefinition(*facts.zone));

    // The series as a whole, from the first midnight to the last, or to the end of what clients count.
    const bool isEndless = !recurrence.count && !recurrence.until;
    Set(properties, PidLidClipStart, facts.zone->ToUtc(At(recurrence.start)));
    Set(properties, PidLidClipEnd,
        isEndless ? At(4500, 8, 31, 23, 59) : facts.zone->ToUtc(At(OccurrencesOf(recurrence).back())));
    for (const ChangedOccurrence& change : series.changed) {
        if (change.hasAttachment) {
            message.attachments.push_back(ExceptionOf(facts, change, series.startMinute));
        }
    }
    return message;
}

Message MakeMeetingRequest(const AppointmentFacts& facts) {
    Message message = MakeMail(EnvelopeOf(facts, {}, "IPM.Schedule.Meeting.Request"_w, facts.created));
    SetCalendarProperties(message, facts);
    Set(message.properties, PidLidAppointmentStateFlags, kIsMeeting | kIsReceived);
    Set(message.properties, PidLidMeetingType, kInitialRequest);
    Set(message.properties, PidLidAppointmentMessageClass, "IPM.Appointment"_w);
    return message;
}

Message MakeMeetingResponse(const AppointmentFacts& facts, const Attendee& attendee, Time answered) {
    struct Kind {
        Response response;
        const char* prefix;
        const char* messageClass;
    };
    static constexpr Kind kKinds[] = {{Response::Accepted, "Accepted: ", "IPM.Schedule.Meeting.Resp.Pos"},
                                      {Response::Tentative, "Tentative: ", "IPM.Schedule.Meeting.Resp.Tent"},
                                      {Response::Declined, "Declined: ", "IPM.Schedule.Meeting.Resp.Neg"}};
    const Kind& kind = *std::find_if(std::begin(kKinds), std::end(kKinds) - 1,
                                     [&](const Kind& row) { return row.response == attendee.response; });
    Envelope envelope = EnvelopeOf(facts, Wide(kind.prefix), Wide(kind.messageClass), answered);
    envelope.from = attendee.person;
    envelope.to = {facts.organizer};
    Message message = MakeMail(envelope);
    AppointmentFacts silent = facts;
    silent.attendees.clear();
    silent.response = attendee.response;
    SetCalendarProperties(message, silent);
    Set(message.properties, PidLidAttendeeCriticalChange, answered);
    Set(message.properties, PidLidAppointmentReplyName, attendee.person.name);
    return message;
}

Message MakeCancellation(const AppointmentFacts& facts, Time cancelled) {
    Envelope envelope = EnvelopeOf(facts, "Canceled: "_w, "IPM.Schedule.Meeting.Canceled"_w, cancelled);
    Message message = MakeMail(envelope);
    SetCalendarProperties(message, facts);
    SetImportance(message.properties, Importance::High);
    Set(message.properties, PidLidAppointmentStateFlags, kIsMeeting | kIsReceived | kIsCancelled);
    Set(message.properties, PidLidBusyStatus, static_cast<std::int32_t>(BusyStatus::Free));
    Set(message.properties, PidLidAppointmentSequence, 1);
    return message;
}

Bytes GlobalObjectId(const AppointmentFacts& facts) {
    constexpr GUID kFixed = {0x00000004, 0x0082, 0xE000, {0x74, 0xC5, 0xB7, 0x10, 0x1A, 0x82, 0xE0, 0x08}};
    const Bytes subject = AsBytes(WideView(facts.subject));
    ByteWriter data;
    for (std::size_t i = 0; i < 16; ++i) {
        data.U8(subject.empty() ? i : std::to_integer<unsigned>(subject[i * 2 % subject.size()]) + i);
    }
    return ByteWriter()
        .Append(BytesOf(kFixed))
        .U32(0)  // no exception of a series
        .U64(Signed(facts.created.ticks))
        .U64(0)
        .U32(data.Size())
        .Append(data.View())
        .Take();
}

}  // namespace mailbox_builder
