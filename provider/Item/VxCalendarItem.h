// CVxCalendarItem: an appointment or a meeting.
#pragma once

#include "provider/Item/ItemFields.h"
#include "provider/Item/VxPlannedItem.h"

class CVxCalendarItem final : public CVxPlannedItem {
public:
    explicit CVxCalendarItem(CVxConnectable* parent);

    // The first of the times of change, start date, start time and creation that there is.
    std::int64_t GetDateTimeForDisplay() override;
    void Clear() override;
    bool GetTypeSpecificProperties() override;
    void GetProperty(ULONG field, const SPropValue* value) override;

    LONG GetBusyStatus() const noexcept { return m_busyStatus; }
    LONG GetDuration() const noexcept { return m_duration; }  // in minutes
    const CStringW& GetLocation() const noexcept { return m_location; }
    const CStringW& GetOrganizer() const noexcept { return m_organizer; }

    // "True" for an appointment of whole days, otherwise "False"; empty when it is not known.
    const CStringW& GetEvent() const noexcept { return m_event; }

    const CStringW& GetBillingInfo() const noexcept { return m_billing; }

    const CStringW& GetReqAttendees() const noexcept { return m_reqAttendees; }
    const CStringW& GetOptAttendees() const noexcept { return m_optAttendees; }
    const CStringW& GetResources() const noexcept { return m_resources; }

    const FILETIME& GetReplyTime() const noexcept { return m_replyTime; }
    const FILETIME& GetStartTime() const noexcept { return m_startTime; }
    const FILETIME& GetEndTime() const noexcept { return m_endTime; }
    const FILETIME& GetStartDate() const noexcept { return m_startDate; }
    const FILETIME& GetEndDate() const noexcept { return m_endDate; }

private:
    static const ItemRow<CVxCalendarItem> s_rows[28];
    static const std::array<VxField, 28> aVxCalendarFields;

    static void ReadSenderName(CVxCalendarItem& item, const SPropValue& value);

    CStringW m_location;
    CStringW m_organizer;
    CStringW m_event;
    CStringW m_isOnline;
    CStringW m_reqAttendees;
    CStringW m_optAttendees;
    CStringW m_resources;
    LONG m_busyStatus = 0;
    LONG m_duration = 0;
    LONG m_recurrenceKind = 0;
    FILETIME m_replyTime = {0, 0};
    FILETIME m_startTime = {0, 0};
    FILETIME m_endTime = {0, 0};
    FILETIME m_startDate = {0, 0};
    FILETIME m_endDate = {0, 0};
};
