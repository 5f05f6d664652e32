// CVxTaskItem: a task.
#pragma once

#include "provider/Item/ItemFields.h"
#include "provider/Item/VxItem.h"

class CVxTaskItem final : public CVxItem {
public:
    explicit CVxTaskItem(CVxConnectable* parent);

    // The time of the last change, else of creation.
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

    // Status, ownership, response and delegation are numbers of MAPI's, passed on as they are.
    LONG GetStatus() const noexcept { return m_status; }
    const CStringW& GetOwnership() const noexcept { return m_ownership; }
    const CStringW& GetResponse() const noexcept { return m_response; }
    const CStringW& GetDelegation() const noexcept { return m_delegation; }

    const CStringW& GetOwner() const noexcept { return m_owner; }
    const CStringW& GetDelegator() const noexcept { return m_delegator; }
    const CStringW& GetRole() const noexcept { return m_role; }

    // "True" or "False"; empty when it is not known.
    const CStringW& GetGroup() const noexcept { return m_group; }
    bool GetIsComplete() const noexcept { return m_isComplete; }
    double GetPercentComplete() const noexcept { return m_percentComplete; }  // 1 is all of it
    LONG GetActualWork() const noexcept { return m_actualWork; }              // in minutes, as the next
    LONG GetTotalWork() const noexcept { return m_totalWork; }

    // "Recurrent", "None" or "Unknown", and of what kind; empty without a pattern.
    const CStringW& GetRecurrence() const noexcept { return m_recurrence; }
    const CStringW& GetRecurrenceType() const noexcept { return m_recurrenceType; }

    const CStringW& GetMileage() const noexcept { return m_mileage; }
    const CStringW& GetBilling() const noexcept { return m_billing; }
    const CStringW& GetCompany() const noexcept { return m_company; }
    const CStringW& GetContacts() const noexcept { return m_contacts; }
    const CStringW& GetCategories() const noexcept { return m_categories; }

    // Who the task was given to, and who is told of its progress: the delegator and those.
    const CStringW& GetRecipients() const noexcept { return m_recipients; }
    const CStringW& GetUpdateList() const noexcept { return m_updateList; }

    const FILETIME& GetCreatedTime() const noexcept { return m_createdTime; }
    const FILETIME& GetDueDate() const noexcept { return m_dueDate; }
    const FILETIME& GetStartDate() const noexcept { return m_startDate; }
    const FILETIME& GetCompletedDate() const noexcept { return m_completedDate; }
    const FILETIME& GetReminder() const noexcept { return m_reminder; }

private:
    static const ItemRow<CVxTaskItem> s_rows[28];
    static const std::array<VxField, 28> aVxTaskFields;

    static void ReadDelegator(CVxTaskItem& item, const SPropValue& value);

    CStringW m_subject;
    CStringW m_sensitivity;
    CStringW m_ownership;
    CStringW m_response;
    CStringW m_delegation;
    CStringW m_owner;
    CStringW m_delegator;
    CStringW m_role;
    CStringW m_group;
    CStringW m_recurrence;
    CStringW m_recurrenceType;
    CStringW m_mileage;
    CStringW m_billing;
    CStringW m_company;
    CStringW m_contacts;
    CStringW m_categories;
    CStringW m_recipients;
    CStringW m_updateList;
    LONG m_importance = 0;
    LONG m_size = 0;
    LONG m_status = 0;
    LONG m_actualWork = 0;
    LONG m_totalWork = 0;
    double m_percentComplete = 0;
    bool m_isComplete = false;
    FILETIME m_createdTime = {0, 0};
    FILETIME m_dueDate = {0, 0};
    FILETIME m_startDate = {0, 0};
    FILETIME m_completedDate = {0, 0};
    FILETIME m_reminder = {0, 0};
};
