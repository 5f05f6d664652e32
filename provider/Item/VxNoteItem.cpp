#include "provider/Item/VxNoteItem.h"

#include "mapi/MapiGuids.h"
#include "mapi/PropTags.h"
#include "provider/Common/FileTimeHelpers.h"

namespace {

constexpr VxField Fixed(LONG id, ULONG tag) {
    return FixedField(eVxItemNote, id, tag);
}

constexpr VxField Named(LONG id, const GUID& set, LONG name, ULONG type) {
    return NamedField(eVxItemNote, id, set, name, type);
}

}  // namespace

constexpr ItemRow<CVxNoteItem> CVxNoteItem::s_rows[8] = {
    {KeywordsField(eVxItemNote, 190), ReadTexts<&CVxNoteItem::m_categories>},
    {Named(191, PSETID_Common, 0x8586, PT_UNICODE), ReadText<&CVxNoteItem::m_contacts>},
    {Named(192, PSETID_Note, 0x831C, PT_LONG), ReadNumber<&CVxNoteItem::m_color>},
    {Fixed(185, PR_MESSAGE_DELIVERY_TIME), ReadTime<&CVxNoteItem::m_createdTime>},
    {Fixed(187, PR_SUBJECT_W), ReadText<&CVxNoteItem::m_subject>, true},
    {Fixed(186, PR_MESSAGE_SIZE), ReadNumber<&CVxNoteItem::m_size>},
    {Fixed(188, PR_CONVERSATION_TOPIC_W), ReadText<&CVxNoteItem::m_conversationTopic>},
    {Fixed(189, PR_CONVERSATION_INDEX), ReadHex<&CVxNoteItem::m_conversationIndex>},
};
constexpr std::array<VxField, 8> CVxNoteItem::aVxNoteFields = FieldsOf(s_rows);

CVxNoteItem::CVxNoteItem(CVxConnectable* parent) : CVxItem(parent) {
    m_type = eVxItemNote;
    m_fields = aVxNoteFields.data();
    m_fieldCount = static_cast<LONG>(aVxNoteFields.size());
}

void CVxNoteItem::GetProperty(ULONG field, const SPropValue* value) {
    ReadField(*this, s_rows, field, value);
}

std::int64_t CVxNoteItem::GetDateTimeForDisplay() {
    return CMapiUtil::FromFileTimeToUnix(IsZero(GetLastModified()) ? m_createdTime : GetLastModified());
}

void CVxNoteItem::Clear() {
    for (CStringW* text : {&m_subject, &m_categories, &m_contacts, &m_conversationTopic, &m_conversationIndex}) {
        text->clear();
    }
    m_size = m_color = 0;
    CleanDateTimeValue(m_createdTime);
    CVxItem::Clear();
}

bool CVxNoteItem::GetTypeSpecificProperties() {
    LoadBody();
    return true;
}
