#include "provider/Item/VxEmailItem.h"

#include "mapi/MapiGuids.h"
#include "mapi/PropTags.h"
#include "provider/Common/FileTimeHelpers.h"
#include "provider/Common/Log.h"
#include "provider/Item/Recipients.h"

namespace {

constexpr auto& kSourcePath = "Item\\VxEmailItem.cpp"_w;

// Values of PR_FLAG_STATUS that have a text, and of PR_ICON_INDEX that are kept.
constexpr LONG kFlagComplete = 1;
constexpr LONG kFlagFollowUp = 2;
constexpr LONG kIconReplied = 261;
constexpr LONG kIconForwarded = 262;

constexpr LONG kMsgFlagRead = 1;

constexpr VxField Fixed(LONG id, ULONG tag) {
    return FixedField(eVxItemEmail, id, tag);
}

constexpr VxField Named(LONG id, const GUID& set, LONG name, ULONG type) {
    return NamedField(eVxItemEmail, id, set, name, type);
}

}  // namespace

constexpr ItemRow<CVxEmailItem> CVxEmailItem::s_rows[22] = {
    {Named(15, PSETID_Common, 0x8560, PT_SYSTIME), ReadTime<&CVxEmailItem::m_reminderTime>},
    {KeywordsField(eVxItemEmail, 28), ReadTexts<&CVxEmailItem::m_categories>},
    {Named(29, PSETID_Common, 0x8586, PT_UNICODE), ReadText<&CVxEmailItem::m_contacts>},
    {Fixed(0, PR_SUBJECT_W), ReadText<&CVxEmailItem::m_subject>},
    {Fixed(1, PR_URL_COMP_NAME_W), ReadText<&CVxEmailItem::m_urlCompName>, true},
    {Fixed(3, PR_SENDER_ADDRTYPE_W), ReadText<&CVxEmailItem::m_senderAddrType>, true},
    {Fixed(2, PR_SENDER_EMAIL_ADDRESS_W), ReadText<&CVxEmailItem::m_senderEmail>, true},
    {Fixed(4, PR_SENDER_NAME_W), ReadText<&CVxEmailItem::m_senderName>, true},
    {Fixed(6, PR_CLIENT_SUBMIT_TIME), ReadTime<&CVxEmailItem::m_sentTime>},
    {Fixed(5, PR_MESSAGE_DELIVERY_TIME), ReadTime<&CVxEmailItem::m_receivedTime>},
    {Fixed(7, PR_CREATION_TIME), ReadTime<&CVxEmailItem::m_creationTime>},
    {Fixed(8, PR_IMPORTANCE), ReadImportance<&CVxEmailItem::m_importance>, true},
    {Fixed(9, PR_MESSAGE_FLAGS), &CVxEmailItem::ReadReadStatus},
    {Fixed(10, PR_SENSITIVITY), ReadSensitivity<&CVxEmailItem::m_sensitivity>, true},
    {Fixed(11, PR_MESSAGE_SIZE), ReadNumber<&CVxEmailItem::m_size>},
    {Fixed(12, PR_ORIGINATOR_DELIVERY_REPORT_REQUESTED), ReadFlag<&CVxEmailItem::m_deliveryRequest>},
    {Fixed(13, PR_READ_RECEIPT_REQUESTED), ReadFlag<&CVxEmailItem::m_readRequest>},
    {Fixed(14, PR_EXPIRY_TIME), ReadTime<&CVxEmailItem::m_expiryTime>},
    {Fixed(16, PR_CONVERSATION_TOPIC_W), ReadText<&CVxEmailItem::m_conversationTopic>},
    {Fixed(17, PR_CONVERSATION_INDEX), ReadHex<&CVxEmailItem::m_conversationIndex>},
    {Fixed(18, PR_FLAG_COMPLETE_TIME), ReadTime<&CVxEmailItem::m_flagCompleteTime>},
    {Fixed(19, PR_REPLY_RECIPIENT_NAMES_W), ReadText<&CVxEmailItem::m_replyTo>, true},
};
constexpr std::array<VxField, 22> CVxEmailItem::aVxEmailFields = FieldsOf(s_rows);

CVxEmailItem::CVxEmailItem(CVxConnectable* parent) : CVxItem(parent) {
    m_type = eVxItemEmail;
    m_fields = aVxEmailFields.data();
    m_fieldCount = static_cast<LONG>(aVxEmailFields.size());
}

void CVxEmailItem::ReadReadStatus(CVxEmailItem& item, const SPropValue& value) {
    if (IsOfType(value, PT_LONG)) {
        item.m_readStatus = (value.Value.l & kMsgFlagRead) != 0 ? 1 : 0;
    }
}

void CVxEmailItem::GetProperty(ULONG field, const SPropValue* value) {
    ReadField(*this, s_rows, field, value);
}

std::int64_t CVxEmailItem::GetDateTimeForDisplay() {
    for (const FILETIME& time : {GetLastModified(), m_sentTime, m_receivedTime}) {
        if (!IsZero(time)) {
            return CMapiUtil::FromFileTimeToUnix(time);
        }
    }
    return CMapiUtil::FromFileTimeToUnix(m_creationTime);
}

CStringW CVxEmailItem::GetURLSubject() {
    if (m_urlSubject.empty()) {
        ReplaceSlashesInSubject(m_subject, m_urlCompName);
    }
    return CVxItem::GetURLSubject();
}

void CVxEmailItem::Clear() {
    for (CStringW* text : {&m_subject, &m_senderEmail, &m_senderAddrType, &m_senderName, &m_from, &m_replyTo, &m_to,
                           &m_cc, &m_bcc, &m_categories, &m_contacts, &m_sensitivity}) {
        text->clear();
    }
    for (FILETIME* time : {&m_sentTime, &m_receivedTime, &m_expiryTime, &m_reminderTime, &m_creationTime}) {
        CleanDateTimeValue(*time);
    }
    m_importance = 1;
    m_readStatus = 0;
    m_size = 0;
    m_deliveryRequest = m_readRequest = m_flagged = m_forwarded = m_replied = false;
    CVxItem::Clear();
}

bool CVxEmailItem::ReadLong(ULONG tag, LONG& value) {
    const auto tags = MakeTagArray(tag);
    ULONG count = 0;
    VxMapiFrBufPtr<SPropValue> read;
    if (m_message.get() == nullptr || FAILED(m_message->GetProps(tags, MAPI_UNICODE, &count, &read)) || count == 0
        || read.get() == nullptr || read->ulPropTag != tag) {
        return false;
    }
    value = read->Value.l;
    return true;
}

void CVxEmailItem::ReadFlagStatus() {
    LONG status = 0;
    if (!ReadLong(PR_FLAG_STATUS, status)) {
        return;
    }
    m_flagged = status >= 0;
    if (status == kFlagComplete) {
        m_flagText = "complete"_w;
    } else if (status == kFlagFollowUp) {
        m_flagText = "follow-up"_w;
    }
}

void CVxEmailItem::ReadIconIndex() {
    LONG icon = 0;
    if (ReadLong(PR_ICON_INDEX, icon)) {
        m_replied = icon == kIconReplied;
        m_forwarded = icon == kIconForwarded;
    }
}

bool CVxEmailItem::GetTypeSpecificProperties() {
    LoadBody();
    ReadFlagStatus();
    ReadIconIndex();
    VxMapiPtr<IMAPITable> table;
    if (const HRESULT hr = OpenRecipientTable(m_message, table); FAILED(hr)) {
        VX_LOG('E') << Vx::LogMsg("GetRecipientTable Error: (%x)"_w, hr);
        return true;
    }
    std::vector<Recipient> recipients;
    const TableRead read = ReadRecipients(table, AddressCase::Lower, recipients);
    switch (read.step) {
        case TableStep::Columns: VX_LOG('E') << Vx::LogMsg("SetColumns Error: (%x)"_w, read.hr); return false;
        case TableStep::Seek: VX_LOG('E') << Vx::LogMsg("SeekRow Error: (%x)"_w, read.hr); return false;
        case TableStep::Rows: VX_LOG('E') << Vx::LogMsg("HrQueryAllRows Error: (%x)"_w, read.hr); return false;
        case TableStep::Done: break;
    }
    for (const Recipient& recipient : recipients) {
        switch (recipient.type) {
            case MAPI_TO: AppendToList(m_to, recipient.text); break;
            case MAPI_CC: AppendToList(m_cc, recipient.text); break;
            case MAPI_BCC: AppendToList(m_bcc, recipient.text); break;
            default: break;
        }
    }
    return true;
}
