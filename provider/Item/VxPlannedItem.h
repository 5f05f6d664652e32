// CVxPlannedItem: what appointments and tasks have in common. Values that the item does not have are empty or 0.
#pragma once

#include "provider/Item/Recipients.h"
#include "provider/Item/VxItem.h"

#include <vector>

class CVxPlannedItem : public CVxItem {
public:
    using CVxItem::CVxItem;

    CStringW GetUISubject() override { return m_subject; }
    void Clear() override;
    LONG GetBodySizeProperty() override { return m_size; }

    const CStringW& GetSubject() const noexcept { return m_subject; }
    const CStringW& GetSensitivity() const noexcept { return m_sensitivity; }
    LONG GetImportance() const noexcept { return m_importance; }
    LONG GetSize() const noexcept { return m_size; }

    // Numbers of MAPI's, passed on as they are.
    LONG GetStatus() const noexcept { return m_status; }
    const CStringW& GetResponse() const noexcept { return m_response; }

    // "Recurrent", "None" or "Unknown", and of what kind; empty without a pattern.
    const CStringW& GetRecurrence() const noexcept { return m_recurrence; }
    const CStringW& GetRecurrenceType() const noexcept { return m_recurrenceType; }

    const CStringW& GetMileage() const noexcept { return m_mileage; }
    const CStringW& GetCompany() const noexcept { return m_company; }
    const CStringW& GetContacts() const noexcept { return m_contacts; }
    const CStringW& GetCategories() const noexcept { return m_categories; }

    // The required attendees of an appointment once more; those to whom a task was given.
    const CStringW& GetRecipients() const noexcept { return m_recipients; }

    const FILETIME& GetCreatedTime() const noexcept { return m_createdTime; }
    const FILETIME& GetReminder() const noexcept { return m_reminder; }

protected:
    // Loads the body, and reads the recipients. False, with a line in the log, when they cannot be read.
    bool LoadWithRecipients(AddressCase addressCase, std::vector<Recipient>& recipients);

    CStringW m_subject;
    CStringW m_sensitivity;
    CStringW m_response;
    CStringW m_recurrence;
    CStringW m_recurrenceType;
    CStringW m_mileage;
    CStringW m_billing;
    CStringW m_company;
    CStringW m_contacts;
    CStringW m_categories;
    CStringW m_recipients;
    LONG m_importance = 0;
    LONG m_size = 0;
    LONG m_status = 0;
    FILETIME m_createdTime = {0, 0};
    FILETIME m_reminder = {0, 0};
};
