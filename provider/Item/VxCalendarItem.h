// CVxCalendarItem: an appointment or a meeting.
#pragma once

#include "provider/Item/ItemFields.h"
#include "provider/Item/VxItem.h"

class CVxCalendarItem final : public CVxItem {
public:
    explicit CVxCalendarItem(CVxConnectable* parent);

    // The first of the times of change, start date, start time and creation that there is.
    std::int64_t GetDateTimeForDisplay() override;
    CStringW GetUISubject() override { return m_subject; }
    void Clear() override;
    LONG GetBodySizeProperty() override { return m_size; }
    bool GetTypeSpecificProperties() override;
    void GetProperty(ULONG field, const SPropValue* value) override;

    const CStringW& GetSubject() const noexcept { return m_subject; }
    const CStringW& GetSensitivity() const noexcept { return m_sensitivity; }
    LONG GetImportance() const noexcept { return m_importance; }
    LONG GetSize() const noexcept { return m_size; }

    // Status and response are numbers of MAPI's, passed on as they are.
    LONG GetStatus() const noexcept { return m_status; }
    const CStringW& GetResponse() const noexcept { return m_response; }
    LONG GetBusyStatus() const noexcept { return m_busyStatus; }
    LONG GetDuration() const noexcept { return m_duration; }  // in minutes
    const CStringW& GetLocation() const noexcept { return m_location; }
    const CStringW& GetOrganizer() const noexcept { return m_organizer; }

    // "True" for an appointment of whole days, otherwise "False"; empty when it is not known.
    const CStringW& GetEvent() const noexcept { return m_event; }

    // "Recurrent", "None" or "Unknown", and of what kind; empty without a pattern.
    const CStringW& GetRecurrence() const noexcept { return m_recurrence; }
    const CStringW& GetRecurrenceType() const noexcept { return m_recurrenceType; }

    const CStringW& GetMileage() const noexcept { return m_mileage; }
    const CStringW& GetBillingInfo() const noexcept { return m_billingInfo; }
    const CStringW& GetCompany() const noexcept { return m_company; }
    const CStringW& GetContacts() const noexcept { return m_contacts; }
    const CStringW& GetCategories() const noexcept { return m_categories; }

    // Recipients are the required attendees once more.
    const CStringW& GetRecipients() const noexcept { return m_recipients; }
    const CStringW& GetReqAttendees() const noexcept { return m_reqAttendees; }
    const CStringW& GetOptAttendees() const noexcept { return m_optAttendees; }
    const CStringW& GetResources() const noexcept { return m_resources; }

    const FILETIME& GetCreatedTime() const noexcept { return m_createdTime; }
    const FILETIME& GetReplyTime() const noexcept { return m_replyTime; }
    const FILETIME& GetStartTime() const noexcept { return m_startTime; }
    const FILETIME& GetEndTime() const noexcept { return m_endTime; }
    const FILETIME& GetStartDate() const noexcept { return m_startDate; }
    const FILETIME& GetEndDate() const noexcept { return m_endDate; }
    const FILETIME& GetReminder() const noexcept { return m_reminder; }

private:
    static const ItemRow<CVxCalendarItem> s_rows[28];
    static const std::array<VxField, 28> aVxCalendarFields;

    static void ReadSenderName(CVxCalendarItem& item, const SPropValue& value);

    CStringW m_subject;
    CStringW m_sensitivity;
    CStringW m_response;
    CStringW m_location;
    CStringW m_organizer;
    CStringW m_event;
    CStringW m_isOnline;
    CStringW m_recurrence;
    CStringW m_recurrenceType;
    CStringW m_mileage;
    CStringW m_billingInfo;
    CStringW m_company;
    CStringW m_contacts;
    CStringW m_categories;
    CStringW m_recipients;
    CStringW m_reqAttendees;
    CStringW m_optAttendees;
    CStringW m_resources;
    LONG m_importance = 0;
    LONG m_size = 0;
    LONG m_status = 0;
    LONG m_busyStatus = 0;
    LONG m_duration = 0;
    LONG m_recurrenceKind = 0;
    FILETIME m_createdTime = {0, 0};
    FILETIME m_replyTime = {0, 0};
    FILETIME m_startTime = {0, 0};
    FILETIME m_endTime = {0, 0};
    FILETIME m_startDate = {0, 0};
    FILETIME m_endDate = {0, 0};
    FILETIME m_reminder = {0, 0};
};
