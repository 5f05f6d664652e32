#include "provider/Item/VxCalendarItem.h"

#include "mapi/MapiGuids.h"
#include "mapi/PropTags.h"
#include "provider/Common/FileTimeHelpers.h"
#include "provider/Common/ScopedEntryExitLogger.h"

namespace {

constexpr auto& kSourcePath = "Item\\VxCalendarItem.cpp"_w;

constexpr VxField Fixed(LONG id, ULONG tag) {
    return FixedField(eVxItemCalendar, id, tag);
}

constexpr VxField Named(LONG id, const GUID& set, LONG name, ULONG type) {
    return NamedField(eVxItemCalendar, id, set, name, type);
}

}  // namespace

constexpr ItemRow<CVxCalendarItem> CVxCalendarItem::s_rows[28] = {
    {Fixed(151, PR_IMPORTANCE), ReadImportance<&CVxCalendarItem::m_importance>, true},
    {Fixed(150, PR_SENSITIVITY), ReadSensitivity<&CVxCalendarItem::m_sensitivity>, true},
    {Fixed(148, PR_SUBJECT_W), ReadText<&CVxCalendarItem::m_subject>, true},
    {Fixed(149, PR_URL_COMP_NAME_W), ReadText<&CVxCalendarItem::m_urlCompName>, true},
    {Fixed(152, PR_MESSAGE_SIZE), ReadNumber<&CVxCalendarItem::m_size>},
    {Fixed(153, PR_CREATION_TIME), ReadTime<&CVxCalendarItem::m_createdTime>},
    {Fixed(155, PR_SENDER_NAME_W), &CVxCalendarItem::ReadSenderName, true},
    {Fixed(156, PR_SENDER_EMAIL_ADDRESS_W), ReadText<&CVxCalendarItem::m_senderEmail>, true},
    {Named(183, PSETID_Appointment, 0x8217, PT_LONG), ReadNumber<&CVxCalendarItem::m_status>},
    {Named(180, PSETID_Appointment, 0x8220, PT_SYSTIME), ReadTime<&CVxCalendarItem::m_replyTime>},
    {Named(159, PSETID_Appointment, 0x820D, PT_SYSTIME), ReadTime<&CVxCalendarItem::m_startTime>},
    {Named(160, PSETID_Appointment, 0x820E, PT_SYSTIME), ReadTime<&CVxCalendarItem::m_endTime>},
    {Named(174, PSETID_Appointment, 0x8235, PT_SYSTIME), ReadTime<&CVxCalendarItem::m_startDate>},
    {Named(175, PSETID_Appointment, 0x8236, PT_SYSTIME), ReadTime<&CVxCalendarItem::m_endDate>},
    {Named(168, PSETID_Appointment, 0x8216, PT_BINARY),
     ReadRecurrence<&CVxCalendarItem::m_recurrenceType, &CVxCalendarItem::m_recurrence>},
    {Named(179, PSETID_Appointment, 0x8231, PT_LONG), ReadNumber<&CVxCalendarItem::m_recurrenceKind>},
    {Named(178, PSETID_Appointment, 0x8213, PT_LONG), ReadNumber<&CVxCalendarItem::m_duration>},
    {Named(157, PSETID_Appointment, 0x8208, PT_UNICODE), ReadText<&CVxCalendarItem::m_location>},
    {Named(182, PSETID_Appointment, 0x8218, PT_LONG), ReadNumberText<&CVxCalendarItem::m_response>},
    {Named(170, PSETID_Appointment, 0x8240, PT_BOOLEAN), ReadFlagText<&CVxCalendarItem::m_isOnline>},
    {Named(169, PSETID_Appointment, 0x8215, PT_BOOLEAN), ReadFlagText<&CVxCalendarItem::m_event>},
    {Named(165, PSETID_Appointment, 0x8205, PT_LONG), ReadNumber<&CVxCalendarItem::m_busyStatus>},
    {Named(166, PSETID_Common, 0x8516, PT_SYSTIME), ReadTime<&CVxCalendarItem::m_reminder>},
    {Named(176, PSETID_Common, 0x8534, PT_UNICODE), ReadText<&CVxCalendarItem::m_mileage>},
    {Named(177, PSETID_Common, 0x8535, PT_UNICODE), ReadText<&CVxCalendarItem::m_billing>},
    {Named(184, PSETID_Common, 0x8539, PT_MV_UNICODE), ReadTexts<&CVxCalendarItem::m_company>},
    {Named(163, PSETID_Common, 0x853A, PT_MV_UNICODE), ReadTexts<&CVxCalendarItem::m_contacts>},
    {KeywordsField(eVxItemCalendar, 164), ReadTexts<&CVxCalendarItem::m_categories>},
};
constexpr std::array<VxField, 28> CVxCalendarItem::aVxCalendarFields = FieldsOf(s_rows);

CVxCalendarItem::CVxCalendarItem(CVxConnectable* parent) : CVxPlannedItem(parent) {
    m_type = eVxItemCalendar;
    m_fields = aVxCalendarFields.data();
    m_fieldCount = static_cast<LONG>(aVxCalendarFields.size());
}

void CVxCalendarItem::ReadSenderName(CVxCalendarItem& item, const SPropValue& value) {
    item.m_senderName = CMapiUtil::Mapi2SimpleString(&value);
    item.m_organizer = item.m_senderName;
}

void CVxCalendarItem::GetProperty(ULONG field, const SPropValue* value) {
    ReadField(*this, s_rows, field, value);
}

std::int64_t CVxCalendarItem::GetDateTimeForDisplay() {
    for (const FILETIME& time : {GetLastModified(), m_startDate, m_startTime}) {
        if (!IsZero(time)) {
            return CMapiUtil::FromFileTimeToUnix(time);
        }
    }
    return CMapiUtil::FromFileTimeToUnix(m_createdTime);
}

void CVxCalendarItem::Clear() {
    for (CStringW* text : {&m_senderName, &m_senderEmail, &m_location, &m_organizer, &m_event, &m_isOnline,
                           &m_reqAttendees, &m_optAttendees, &m_resources}) {
        text->clear();
    }
    for (LONG* number : {&m_busyStatus, &m_duration, &m_recurrenceKind}) {
        *number = 0;
    }
    for (FILETIME* time : {&m_replyTime, &m_startTime, &m_endTime, &m_startDate, &m_endDate}) {
        CleanDateTimeValue(*time);
    }
    CVxPlannedItem::Clear();
}

bool CVxCalendarItem::GetTypeSpecificProperties() {
    VX_SCOPE_TRACE(trace);
    std::vector<Recipient> recipients;
    if (!LoadWithRecipients(AddressCase::Lower, recipients)) {
        return false;
    }
    for (const Recipient& recipient : recipients) {
        switch (recipient.type) {
            case MAPI_TO: AppendToList(m_reqAttendees, recipient.text); break;
            case MAPI_CC: AppendToList(m_optAttendees, recipient.text); break;
            case MAPI_BCC: AppendToList(m_resources, recipient.text); break;
            default: break;
        }
    }
    m_recipients = m_reqAttendees;
    return true;
}
