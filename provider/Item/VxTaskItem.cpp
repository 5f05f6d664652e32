#include "provider/Item/VxTaskItem.h"

#include "mapi/MapiGuids.h"
#include "mapi/PropTags.h"
#include "provider/Common/FileTimeHelpers.h"
#include "provider/Common/ScopedEntryExitLogger.h"

namespace {

constexpr auto& kSourcePath = "Item\\VxTaskItem.cpp"_w;

constexpr VxField Fixed(LONG id, ULONG tag) {
    return FixedField(eVxItemTask, id, tag);
}

constexpr VxField Named(LONG id, const GUID& set, LONG name, ULONG type) {
    return NamedField(eVxItemTask, id, set, name, type);
}

}  // namespace

constexpr ItemRow<CVxTaskItem> CVxTaskItem::s_rows[28] = {
    {Fixed(117, PR_IMPORTANCE), ReadImportance<&CVxTaskItem::m_importance>, true},
    {Fixed(116, PR_SENSITIVITY), ReadSensitivity<&CVxTaskItem::m_sensitivity>, true},
    {Fixed(114, PR_SUBJECT_W), ReadText<&CVxTaskItem::m_subject>, true},
    {Fixed(115, PR_URL_COMP_NAME_W), ReadText<&CVxTaskItem::m_urlCompName>, true},
    {Fixed(118, PR_MESSAGE_SIZE), ReadNumber<&CVxTaskItem::m_size>},
    {Fixed(119, PR_CREATION_TIME), ReadTime<&CVxTaskItem::m_createdTime>},
    {Named(121, PSETID_Task, 0x8101, PT_LONG), ReadNumber<&CVxTaskItem::m_status>},
    {Named(122, PSETID_Task, 0x811F, PT_UNICODE), ReadText<&CVxTaskItem::m_owner>},
    {Named(130, PSETID_Task, 0x8116, PT_BINARY),
     ReadRecurrence<&CVxTaskItem::m_recurrenceType, &CVxTaskItem::m_recurrence>},
    {Named(131, PSETID_Task, 0x8103, PT_BOOLEAN), ReadFlagText<&CVxTaskItem::m_group>},
    {Named(132, PSETID_Task, 0x8129, PT_LONG), ReadNumberText<&CVxTaskItem::m_ownership>},
    {Named(133, PSETID_Task, 0x811C, PT_BOOLEAN), ReadFlag<&CVxTaskItem::m_isComplete>},
    {Named(135, PSETID_Task, 0x8120, PT_LONG), ReadNumberText<&CVxTaskItem::m_response>},
    {Named(136, PSETID_Task, 0x812A, PT_LONG), ReadNumberText<&CVxTaskItem::m_delegation>},
    {Named(137, PSETID_Task, 0x8121, PT_UNICODE), &CVxTaskItem::ReadDelegator},
    {Named(139, PSETID_Task, 0x8127, PT_UNICODE), ReadText<&CVxTaskItem::m_role>},
    {Named(140, PSETID_Task, 0x8105, PT_SYSTIME), ReadTime<&CVxTaskItem::m_dueDate>},
    {Named(141, PSETID_Task, 0x8104, PT_SYSTIME), ReadTime<&CVxTaskItem::m_startDate>},
    {Named(144, PSETID_Task, 0x810F, PT_SYSTIME), ReadTime<&CVxTaskItem::m_completedDate>},
    {Named(145, PSETID_Task, 0x8102, PT_DOUBLE), ReadDouble<&CVxTaskItem::m_percentComplete>},
    {Named(146, PSETID_Task, 0x8110, PT_LONG), ReadNumber<&CVxTaskItem::m_actualWork>},
    {Named(147, PSETID_Task, 0x8111, PT_LONG), ReadNumber<&CVxTaskItem::m_totalWork>},
    {Named(123, PSETID_Common, 0x8534, PT_UNICODE), ReadText<&CVxTaskItem::m_mileage>},
    {Named(124, PSETID_Common, 0x8535, PT_UNICODE), ReadText<&CVxTaskItem::m_billing>},
    {Named(125, PSETID_Common, 0x8539, PT_MV_UNICODE), ReadTexts<&CVxTaskItem::m_company>},
    {Named(127, PSETID_Common, 0x853A, PT_MV_UNICODE), ReadTexts<&CVxTaskItem::m_contacts>},
    {KeywordsField(eVxItemTask, 128), ReadTexts<&CVxTaskItem::m_categories>},
    {Named(143, PSETID_Common, 0x8502, PT_SYSTIME), ReadTime<&CVxTaskItem::m_reminder>},
};
constexpr std::array<VxField, 28> CVxTaskItem::aVxTaskFields = FieldsOf(s_rows);

CVxTaskItem::CVxTaskItem(CVxConnectable* parent) : CVxPlannedItem(parent) {
    m_type = eVxItemTask;
    m_fields = aVxTaskFields.data();
    m_fieldCount = static_cast<LONG>(aVxTaskFields.size());
}

void CVxTaskItem::ReadDelegator(CVxTaskItem& item, const SPropValue& value) {
    item.m_delegator = CMapiUtil::Mapi2SimpleString(&value);
    item.m_updateList += item.m_delegator;
}

void CVxTaskItem::GetProperty(ULONG field, const SPropValue* value) {
    ReadField(*this, s_rows, field, value);
}

std::int64_t CVxTaskItem::GetDateTimeForDisplay() {
    return CMapiUtil::FromFileTimeToUnix(IsZero(GetLastModified()) ? m_createdTime : GetLastModified());
}

void CVxTaskItem::Clear() {
    for (CStringW* text : {&m_ownership, &m_delegation, &m_owner, &m_delegator, &m_role, &m_group, &m_updateList}) {
        text->clear();
    }
    for (LONG* number : {&m_actualWork, &m_totalWork}) {
        *number = 0;
    }
    for (FILETIME* time : {&m_dueDate, &m_startDate, &m_completedDate}) {
        CleanDateTimeValue(*time);
    }
    m_percentComplete = 0;
    m_isComplete = false;
    CVxPlannedItem::Clear();
}

bool CVxTaskItem::GetTypeSpecificProperties() {
    VX_SCOPE_TRACE(trace);
    std::vector<Recipient> recipients;
    if (!LoadWithRecipients(AddressCase::AsIs, recipients)) {
        return false;
    }
    for (const Recipient& recipient : recipients) {
        if (recipient.type == static_cast<LONG>(MAPI_TO)) {
            AppendToList(m_recipients, recipient.text);
        }
    }
    if (!m_recipients.empty()) {
        AppendToList(m_updateList, m_recipients);
    }
    return true;
}
