#include "provider/Item/VxPlannedItem.h"

#include "provider/Common/FileTimeHelpers.h"
#include "provider/Common/Log.h"

namespace {

constexpr auto& kSourcePath = "Item\\VxPlannedItem.cpp"_w;

}  // namespace

void CVxPlannedItem::Clear() {
    for (CStringW* text : {&m_subject, &m_sensitivity, &m_response, &m_recurrence, &m_recurrenceType, &m_mileage,
                           &m_billing, &m_company, &m_contacts, &m_categories, &m_recipients}) {
        text->clear();
    }
    for (LONG* number : {&m_importance, &m_size, &m_status}) {
        *number = 0;
    }
    CleanDateTimeValue(m_createdTime);
    CleanDateTimeValue(m_reminder);
    CVxItem::Clear();
}

bool CVxPlannedItem::LoadWithRecipients(AddressCase addressCase, std::vector<Recipient>& recipients) {
    LoadBody();
    VxMapiPtr<IMAPITable> table;
    if (const HRESULT hr = OpenRecipientTable(m_message, table); FAILED(hr)) {
        VX_LOG('E') << Vx::LogMsg("GetRecipientTable Error: (%x)"_w, hr);
        return false;
    }
    const TableRead read = ReadRecipients(table, addressCase, recipients);
    if (read.step != TableStep::Done) {
        VX_LOG('E') << Vx::LogMsg(FailureFormat(read.step), read.hr);
    }
    return read.step == TableStep::Done;
}
