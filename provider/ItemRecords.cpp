#include "provider/ItemRecords.h"

#include "provider/Attachments/VxAttachment.h"
#include "provider/Common/ScopedEntryExitLogger.h"
#include "provider/ExchObjectData.h"
#include "provider/Item/VxCalendarItem.h"
#include "provider/Item/VxContact.h"
#include "provider/Item/VxEmailItem.h"
#include "provider/Item/VxNoteItem.h"
#include "provider/Item/VxTaskItem.h"
#include "provider/MAPIUtils.h"

#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace {

constexpr auto& kSourcePath = "OutlookInstance.cpp"_w;

// A field of a kind of item, and how it is filled.
template <typename Item>
struct FieldRow {
    std::size_t field;
    void (*fill)(CExchObjectData& data, std::size_t field, Item& item);
};

// From a getter to the field's form: a text, a flag, a number, a time.
template <auto Getter, typename Item>
void Fill(CExchObjectData& data, std::size_t field, Item& item) {
    using Result = std::remove_cvref_t<decltype((item.*Getter)())>;
    if constexpr (std::is_same_v<Result, CStringW>) {
        data.SetStringFieldVal(field, (item.*Getter)(), true);
    } else if constexpr (std::is_same_v<Result, bool>) {
        data.SetBooleanFieldVal(field, (item.*Getter)(), true);
    } else if constexpr (std::is_same_v<Result, FILETIME>) {
        data.SetLongLongFieldVal(field, CMapiUtil::FromFileTimeToUnix((item.*Getter)()), true);
    } else if constexpr (std::is_same_v<Result, double>) {
        data.SetDoubleFieldVal(field, (item.*Getter)());
    } else {
        static_assert(std::is_same_v<Result, LONG>);
        data.SetIntFieldVal(field, (item.*Getter)(), true);
    }
}

template <typename Item>
void EmptyText(CExchObjectData& data, std::size_t field, Item&) {
    data.SetStringFieldVal(field, ""_w, true);
}

template <typename Item>
void No(CExchObjectData& data, std::size_t field, Item&) {
    data.SetBooleanFieldVal(field, false, true);
}

template <typename Item>
void NoTime(CExchObjectData& data, std::size_t field, Item&) {
    data.SetLongLongFieldVal(field, 0, true);
}

void ReadStatus(CExchObjectData& data, std::size_t field, CVxEmailItem& item) {
    data.SetStringFieldVal(field, item.GetReadStatus() != 0 ? "1"_w : "0"_w, true);
}

void FlagText(CExchObjectData& data, std::size_t field, CVxEmailItem& item) {
    data.SetStringFieldVal(field, item.GetFlagged() ? item.GetFlagText() : CStringW(), true);
}

void FirstAddress(CExchObjectData& data, std::size_t field, CVxContact& item) {
    data.SetStringFieldVal(field, item.IsGlobalAddressBook() ? item.GetSmtpAddress() : item.GetEmail1(), true);
}

// email_bIsAttached is not here: the caller knows it.
using Email = CVxEmailItem;
constexpr FieldRow<Email> kEmailRows[] = {
    {"email_sAttachments"_field, Fill<&Email::GetAttachmentList, Email>},
    {"email_sBCC"_field, Fill<&Email::GetBCC, Email>},
    {"email_sBody"_field, Fill<&Email::GetBody, Email>},
    {"email_sCategories"_field, Fill<&Email::GetCategories, Email>},
    {"email_sCC"_field, Fill<&Email::GetCC, Email>},
    {"email_sContacts"_field, Fill<&Email::GetContacts, Email>},
    {"email_bDeliveryReceiptRequested"_field, Fill<&Email::GetDeliveryRequest, Email>},
    {"email_sEID"_field, Fill<&Email::GetID, Email>},
    {"email_sFlagComplete"_field, EmptyText<Email>},
    {"email_sFlagText"_field, FlagText},
    {"email_sFrom"_field, Fill<&Email::GetFrom, Email>},
    {"email_iImportance"_field, Fill<&Email::GetImportance, Email>},
    {"email_bReadReceiptRequested"_field, Fill<&Email::GetReadRequest, Email>},
    {"email_sReadStatus"_field, ReadStatus},
    {"email_sReplyTo"_field, Fill<&Email::GetReplyto, Email>},
    {"email_sSensitivity"_field, Fill<&Email::GetSensitivity, Email>},
    {"email_sSubject"_field, Fill<&Email::GetSubject, Email>},
    {"email_sTo"_field, Fill<&Email::GetTo, Email>},
    {"email_lUTCDateReceived"_field, Fill<&Email::GetReceivedDateTime, Email>},
    {"email_lUTCDateSent"_field, Fill<&Email::GetSentDateTime, Email>},
    {"email_lUTCExpiration"_field, Fill<&Email::GetExpireDateTime, Email>},
    {"email_lUTCReminder"_field, Fill<&Email::GetReminder, Email>},
    {"email_sConversationIndex"_field, Fill<&Email::GetConversationIndex, Email>},
    {"email_PR_CONVERSATION_INDEX"_field, Fill<&Email::GetPR_CONVERSATION_INDEX, Email>},
};

using Contact = CVxContact;
constexpr FieldRow<Contact> kContactRows[] = {
    {"contacts_sAssistant"_field, Fill<&Contact::GetAssistant, Contact>},
    {"contacts_sAssistantPhone"_field, Fill<&Contact::GetAssistantTelephoneNumber, Contact>},
    {"contacts_sAttachments"_field, Fill<&Contact::GetAttachmentList, Contact>},
    {"contacts_sBody"_field, Fill<&Contact::GetBody, Contact>},
    {"contacts_sBusinessAddress"_field, Fill<&Contact::GetBusinessAddress, Contact>},
    {"contacts_sBusinessFAX"_field, Fill<&Contact::GetBusinessFaxNumber, Contact>},
    {"contacts_sBusinessPhone"_field, Fill<&Contact::GetBusinessTelephoneNumber, Contact>},
    {"contacts_sBusinessPhone2"_field, Fill<&Contact::GetBusiness2TelephoneNumber, Contact>},
    {"contacts_sBusinessWebPage"_field, Fill<&Contact::GetBusinessHomePage, Contact>},
    {"contacts_sCallbackPhone"_field, Fill<&Contact::GetCallbackTelephoneNumber, Contact>},
    {"contacts_sCarPhone"_field, Fill<&Contact::GetCarTelephoneNumber, Contact>},
    {"contacts_sCategories"_field, Fill<&Contact::GetCategories, Contact>},
    {"contacts_sChildren"_field, Fill<&Contact::GetChildrensNames, Contact>},
    {"contacts_sCompany"_field, Fill<&Contact::GetCompanyName, Contact>},
    {"contacts_sCompanyMainPhone"_field, Fill<&Contact::GetCompanyMainPhoneNumber, Contact>},
    {"contacts_sComputerNetwork"_field, Fill<&Contact::GetComputerNetworkName, Contact>},
    {"contacts_sContacts"_field, Fill<&Contact::GetContacts, Contact>},
    {"contacts_sCustomerID"_field, Fill<&Contact::GetCustomerId, Contact>},
    {"contacts_sDepartment"_field, Fill<&Contact::GetDepartmentName, Contact>},
    {"contacts_sDisplayName"_field, Fill<&Contact::GetDisplayName, Contact>},
    {"contacts_sDisplayNamePrefix"_field, Fill<&Contact::GetDisplayNamePrefix, Contact>},
    {"contacts_sEID"_field, Fill<&Contact::GetID, Contact>},
    {"contacts_sEmail"_field, FirstAddress},
    {"contacts_sEmail2"_field, Fill<&Contact::GetEmail2, Contact>},
    {"contacts_sEmail3"_field, Fill<&Contact::GetEmail3, Contact>},
    {"contacts_sFileAs"_field, Fill<&Contact::GetFileAs, Contact>},
    {"contacts_sFlagComplete"_field, EmptyText<Contact>},
    {"contacts_sFlagText"_field, Fill<&Contact::GetFlagText, Contact>},
    {"contacts_sFTPSite"_field, Fill<&Contact::GetFtpSite, Contact>},
    {"contacts_sGender"_field, Fill<&Contact::GetGender, Contact>},
    {"contacts_sGeneration"_field, Fill<&Contact::GetGeneration, Contact>},
    {"contacts_sGivenName"_field, Fill<&Contact::GetGivenName, Contact>},
    {"contacts_sGovernmentID"_field, Fill<&Contact::GetGovernmentIdNumber, Contact>},
    {"contacts_sHobbies"_field, Fill<&Contact::GetHobbies, Contact>},
    {"contacts_sHomeAddress"_field, Fill<&Contact::GetHomeAddress, Contact>},
    {"contacts_sHomeFAX"_field, Fill<&Contact::GetHomeFaxNumber, Contact>},
    {"contacts_sHomePhone"_field, Fill<&Contact::GetHomeTelephoneNumber, Contact>},
    {"contacts_sHomePhone2"_field, Fill<&Contact::GetHome2TelephoneNumber, Contact>},
    {"contacts_sIMAddress"_field, Fill<&Contact::GetIMAddress, Contact>},
    {"contacts_iImportance"_field, Fill<&Contact::GetImportance, Contact>},
    {"contacts_bIsAttached"_field, No<Contact>},
    {"contacts_sISDNNumber"_field, Fill<&Contact::GetISDNNumber, Contact>},
    {"contacts_sJobTitle"_field, Fill<&Contact::GetJobTitle, Contact>},
    {"contacts_sLanguage"_field, Fill<&Contact::GetLanguage, Contact>},
    {"contacts_sManager"_field, Fill<&Contact::GetManagerName, Contact>},
    {"contacts_sMiddleName"_field, Fill<&Contact::GetMiddleName, Contact>},
    {"contacts_sMobilePhone"_field, Fill<&Contact::GetMobileTelephoneNumber, Contact>},
    {"contacts_sNickname"_field, Fill<&Contact::GetNickname, Contact>},
    {"contacts_sOffice"_field, Fill<&Contact::GetOfficeLocation, Contact>},
    {"contacts_sOrganizationalID"_field, Fill<&Contact::GetOrganizationalIdNumber, Contact>},
    {"contacts_sOtherAddress"_field, Fill<&Contact::GetOtherAddress, Contact>},
    {"contacts_sOtherPhone"_field, Fill<&Contact::GetOtherTelephoneNumber, Contact>},
    {"contacts_sPager"_field, Fill<&Contact::GetPagerTelephoneNumber, Contact>},
    {"contacts_sPersonalWebPage"_field, Fill<&Contact::GetPersonalHomePage, Contact>},
    {"contacts_sPreferredByName"_field, Fill<&Contact::GetPreferredByName, Contact>},
    {"contacts_sPrimaryFAX"_field, Fill<&Contact::GetPrimaryFaxNumber, Contact>},
    {"contacts_sPrimaryPhone"_field, Fill<&Contact::GetPrimaryTelephoneNumber, Contact>},
    {"contacts_sProfession"_field, Fill<&Contact::GetProfession, Contact>},
    {"contacts_sRadioPhone"_field, Fill<&Contact::GetRadioTelephoneNumber, Contact>},
    {"contacts_sSensitivity"_field, Fill<&Contact::GetSensitivity, Contact>},
    {"contacts_sSpouse"_field, Fill<&Contact::GetSpouseName, Contact>},
    {"contacts_sSurname"_field, Fill<&Contact::GetSurname, Contact>},
    {"contacts_sTelexNumber"_field, Fill<&Contact::GetTelexNumber, Contact>},
    {"contacts_sTitle"_field, Fill<&Contact::GetTitle, Contact>},
    {"contacts_sTTYTDDPhone"_field, Fill<&Contact::GetTTYTDDPhoneNumber, Contact>},
    {"contacts_lUTCAnniversary"_field, Fill<&Contact::GetWeddingAnniversary, Contact>},
    {"contacts_lUTCBirthday"_field, Fill<&Contact::GetBirthday, Contact>},
    {"contacts_lUTCReminder"_field, Fill<&Contact::GetReminder, Contact>},
};

using Calendar = CVxCalendarItem;
constexpr FieldRow<Calendar> kCalendarRows[] = {
    {"calendar_sAttachments"_field, Fill<&Calendar::GetAttachmentList, Calendar>},
    {"calendar_sBillingInfo"_field, Fill<&Calendar::GetBillingInfo, Calendar>},
    {"calendar_sBody"_field, Fill<&Calendar::GetBody, Calendar>},
    {"calendar_iBusyStatus"_field, Fill<&Calendar::GetBusyStatus, Calendar>},
    {"calendar_sCategories"_field, Fill<&Calendar::GetCategories, Calendar>},
    {"calendar_sCompany"_field, Fill<&Calendar::GetCompany, Calendar>},
    {"calendar_sContacts"_field, Fill<&Calendar::GetContacts, Calendar>},
    {"calendar_iDuration"_field, Fill<&Calendar::GetDuration, Calendar>},
    {"calendar_sEID"_field, Fill<&Calendar::GetID, Calendar>},
    {"calendar_sEvent"_field, Fill<&Calendar::GetEvent, Calendar>},
    {"calendar_iImportance"_field, Fill<&Calendar::GetImportance, Calendar>},
    {"calendar_bIsAttached"_field, No<Calendar>},
    {"calendar_sLocation"_field, Fill<&Calendar::GetLocation, Calendar>},
    {"calendar_sMileage"_field, Fill<&Calendar::GetMileage, Calendar>},
    {"calendar_bOnline"_field, No<Calendar>},
    {"calendar_sOptAttendees"_field, Fill<&Calendar::GetOptAttendees, Calendar>},
    {"calendar_sOrganizer"_field, Fill<&Calendar::GetOrganizer, Calendar>},
    {"calendar_sRecipients"_field, Fill<&Calendar::GetRecipients, Calendar>},
    {"calendar_sRecurrence"_field, Fill<&Calendar::GetRecurrence, Calendar>},
    {"calendar_sRecurrenceType"_field, Fill<&Calendar::GetRecurrenceType, Calendar>},
    {"calendar_sReqAttendees"_field, Fill<&Calendar::GetReqAttendees, Calendar>},
    {"calendar_sResources"_field, Fill<&Calendar::GetResources, Calendar>},
    {"calendar_sResponse"_field, Fill<&Calendar::GetResponse, Calendar>},
    {"calendar_sSensitivity"_field, Fill<&Calendar::GetSensitivity, Calendar>},
    {"calendar_iStatus"_field, Fill<&Calendar::GetStatus, Calendar>},
    {"calendar_sSubject"_field, Fill<&Calendar::GetSubject, Calendar>},
    {"calendar_lUTCDateCreated"_field, Fill<&Calendar::GetCreatedTime, Calendar>},
    {"calendar_lUTCEndDate"_field, Fill<&Calendar::GetEndDate, Calendar>},
    {"calendar_lUTCEndTime"_field, Fill<&Calendar::GetEndTime, Calendar>},
    {"calendar_lUTCReminder"_field, Fill<&Calendar::GetReminder, Calendar>},
    {"calendar_lUTCReplyTime"_field, Fill<&Calendar::GetReplyTime, Calendar>},
    {"calendar_lUTCStartDate"_field, Fill<&Calendar::GetStartDate, Calendar>},
    {"calendar_lUTCStartTime"_field, Fill<&Calendar::GetStartTime, Calendar>},
};

// A task has no property for its end.
using Task = CVxTaskItem;
constexpr FieldRow<Task> kTaskRows[] = {
    {"tasks_iActualWork"_field, Fill<&Task::GetActualWork, Task>},
    {"tasks_sAttachments"_field, Fill<&Task::GetAttachmentList, Task>},
    {"tasks_sBillingInfo"_field, Fill<&Task::GetBilling, Task>},
    {"tasks_sBody"_field, Fill<&Task::GetBody, Task>},
    {"tasks_sCategories"_field, Fill<&Task::GetCategories, Task>},
    {"tasks_sCompany"_field, Fill<&Task::GetCompany, Task>},
    {"tasks_sContacts"_field, Fill<&Task::GetContacts, Task>},
    {"tasks_sDelegation"_field, Fill<&Task::GetDelegation, Task>},
    {"tasks_sDelegator"_field, Fill<&Task::GetDelegator, Task>},
    {"tasks_sEID"_field, Fill<&Task::GetID, Task>},
    {"tasks_sGroup"_field, Fill<&Task::GetGroup, Task>},
    {"tasks_iImportance"_field, Fill<&Task::GetImportance, Task>},
    {"tasks_bIsAttached"_field, No<Task>},
    {"tasks_bIsComplete"_field, Fill<&Task::GetIsComplete, Task>},
    {"tasks_sMileage"_field, Fill<&Task::GetMileage, Task>},
    {"tasks_sOwner"_field, Fill<&Task::GetOwner, Task>},
    {"tasks_sOwnership"_field, Fill<&Task::GetOwnership, Task>},
    {"tasks_dPercentComplete"_field, Fill<&Task::GetPercentComplete, Task>},
    {"tasks_sRecipients"_field, Fill<&Task::GetRecipients, Task>},
    {"tasks_sRecurrence"_field, Fill<&Task::GetRecurrence, Task>},
    {"tasks_sRecurrenceType"_field, Fill<&Task::GetRecurrenceType, Task>},
    {"tasks_sResponse"_field, Fill<&Task::GetResponse, Task>},
    {"tasks_sRole"_field, Fill<&Task::GetRole, Task>},
    {"tasks_sSensitivity"_field, Fill<&Task::GetSensitivity, Task>},
    {"tasks_iStatus"_field, Fill<&Task::GetStatus, Task>},
    {"tasks_sSubject"_field, Fill<&Task::GetSubject, Task>},
    {"tasks_iTotalWork"_field, Fill<&Task::GetTotalWork, Task>},
    {"tasks_sUpdateList"_field, Fill<&Task::GetUpdateList, Task>},
    {"tasks_lUTCCompletedDate"_field, Fill<&Task::GetCompletedDate, Task>},
    {"tasks_lUTCDateCreated"_field, Fill<&Task::GetCreatedTime, Task>},
    {"tasks_lUTCDueDate"_field, Fill<&Task::GetDueDate, Task>},
    {"tasks_lUTCEndDate"_field, NoTime<Task>},
    {"tasks_lUTCReminder"_field, Fill<&Task::GetReminder, Task>},
    {"tasks_lUTCStartDate"_field, Fill<&Task::GetStartDate, Task>},
};

// A note has its conversation in the fields of mails.
using Note = CVxNoteItem;
constexpr FieldRow<Note> kNoteRows[] = {
    {"eobj_note_bIsAttached"_field, No<Note>},
    {"eobj_note_sBody"_field, Fill<&Note::GetBody, Note>},
    {"eobj_note_sCategories"_field, Fill<&Note::GetCategories, Note>},
    {"eobj_note_sContacts"_field, Fill<&Note::GetContacts, Note>},
    {"eobj_note_iColor"_field, Fill<&Note::GetColor, Note>},
    {"eobj_note_sEID"_field, Fill<&Note::GetID, Note>},
    {"eobj_note_sSubject"_field, Fill<&Note::GetSubject, Note>},
    {"eobj_note_lUTCDateCreated"_field, Fill<&Note::GetCreatedTime, Note>},
    {"email_sConversationIndex"_field, Fill<&Note::GetConversationIndex, Note>},
    {"email_PR_CONVERSATION_INDEX"_field, Fill<&Note::GetPR_CONVERSATION_INDEX, Note>},
};

// What an item of a class adds to the fields of all items. The factory makes each type of that class alone, so a type
// tells the class.
template <typename Item, std::size_t N>
void FillRows(CVxItem& base, CExchObjectData& data, LONG size, const FieldRow<Item> (&rows)[N]) {
    auto& item = static_cast<Item&>(base);
    data.SetIntFieldVal("common_iSize"_field, size, true);
    data.SetIntFieldVal("schemaUID"_field, item.GetType(), true);
    for (const FieldRow<Item>& row : rows) {
        row.fill(data, row.field, item);
    }
    data.SetStringFieldVal("common_sURLSubject"_field, item.GetURLSubject(), true);
}

void SetCommonFields(CVxItem& item, CExchObjectData& data) {
    data.SetBooleanFieldVal("common_sDigitallySigned"_field, item.IsDigitallysigned(), true);
    data.SetStringFieldVal("common_sFolderId"_field, item.GetFolderId(), true);
    data.SetStringFieldVal("common_sFolderName"_field, item.GetFolderName(), true);
    data.SetStringFieldVal("common_sFolderPath"_field, item.GetFolderPath(), true);
    data.SetLongLongFieldVal("common_lUTCLastModifiedTime"_field,
                             CMapiUtil::FromFileTimeToInt64(item.GetLastModified()), true);
}

const WCHAR* ParentTypeText(EVxItemType type) noexcept {
    switch (type) {
        case eVxItemEmail: return "Email Item"_w;
        case eVxItemContact: return "Contact Item"_w;
        case eVxItemCalendar: return "Calendar Item"_w;
        case eVxItemTask: return "Task Item"_w;
        case eVxItemNote: return "Note Item"_w;
        case eVxItemUnknown: break;
    }
    return ""_w;
}

const CStringW& AttachmentName(const CVxAttachment& attachment) noexcept {
    if (!attachment.GetLongFileName().empty()) {
        return attachment.GetLongFileName();
    }
    return attachment.GetDisplayName().empty() ? attachment.GetFileName() : attachment.GetDisplayName();
}

// Who wrote the item that the attachment hangs on, and when. Contacts and notes tell nothing but that they have no dates.
void SetParentFields(CVxItem& parent, CExchObjectData& data) {
    std::int64_t received = 0;
    std::int64_t sent = 0;
    if (parent.GetType() == eVxItemEmail) {
        auto& email = static_cast<CVxEmailItem&>(parent);
        data.SetStringFieldVal("attachments_sFrom"_field, email.GetFrom(), true);
        data.SetStringFieldVal("attachments_sSubject"_field, email.GetSubject(), true);
        data.SetStringFieldVal("attachments_sTo"_field, email.GetTo(), true);
        received = CMapiUtil::FromFileTimeToUnix(email.GetReceivedDateTime());
        sent = CMapiUtil::FromFileTimeToUnix(email.GetSentDateTime());
    } else if (parent.GetType() == eVxItemCalendar || parent.GetType() == eVxItemTask) {
        data.SetStringFieldVal("attachments_sFrom"_field, ""_w, true);
        data.SetStringFieldVal("attachments_sSubject"_field, parent.GetUISubject(), true);
        data.SetStringFieldVal("attachments_sTo"_field, ""_w, true);
    }
    data.SetLongLongFieldVal("attachments_lUTCDateReceived"_field, received, true);
    data.SetLongLongFieldVal("attachments_lUTCDateSent"_field, sent, true);
}

}  // namespace

bool SetObjectData(CVxItem& item, CExchObjectData& data, bool isAttached) {
    VX_SCOPE_TRACE(trace);
    item.EnsureConnected();
    data.SetLongLongFieldVal("eobj_vx_lErrors"_field, item.getVxErrors(), true);
    item.OnErrorsProcessed();
    SetCommonFields(item, data);
    data.SetLongLongFieldVal("common_lUTCFlagCompleteTime"_field,
                             CMapiUtil::FromFileTimeToUnix(item.GetFlagCompleteTime()), true);
    switch (item.GetType()) {
        case eVxItemNote: FillRows(item, data, static_cast<Note&>(item).GetSize(), kNoteRows); break;
        case eVxItemTask: FillRows(item, data, static_cast<Task&>(item).GetSize(), kTaskRows); break;
        case eVxItemCalendar: FillRows(item, data, static_cast<Calendar&>(item).GetSize(), kCalendarRows); break;
        case eVxItemContact: FillRows(item, data, static_cast<LONG>(item.GetBody().size()), kContactRows); break;
        case eVxItemEmail:
            FillRows(item, data, static_cast<Email&>(item).GetSize(), kEmailRows);
            data.SetBooleanFieldVal("email_bIsAttached"_field, isAttached, true);
            break;
        case eVxItemUnknown: data.SetIntFieldVal("common_iSize"_field, 0, true); break;
    }
    return true;
}

void SetBinaryObjectData(CVxAttachment& attachment, CExchObjectData& data) {
    VX_SCOPE_TRACE(trace);
    CVxItem& parent = *attachment.GetParentItem();
    attachment.EnsureConnected();
    SetCommonFields(parent, data);
    data.SetLongLongFieldVal("eobj_vx_lErrors"_field, parent.getVxErrors() | attachment.getVxErrors(), true);
    attachment.OnErrorsProcessed();
    data.SetIntFieldVal("schemaUID"_field, kAttachmentSchema, true);
    data.SetIntFieldVal("common_iSize"_field, attachment.GetSize(), true);
    data.SetLongLongFieldVal("common_lUTCFlagCompleteTime"_field, 0, true);
    data.SetStringFieldVal("common_sURLSubject"_field, parent.GetURLSubject(), true);

    const BYTE* blob = attachment.GetBlobData();
    const LONG blobSize = attachment.GetBlobDataSize();
    data.SetBinaryBlobFieldVal("attachments_abBinaryBlob"_field, blob, blob == nullptr ? 0 : blobSize);
    data.SetStringFieldVal("attachments_sName"_field, AttachmentName(attachment), true);
    data.SetStringFieldVal("attachments_sParentType"_field, ParentTypeText(parent.GetType()), true);
    data.SetIntFieldVal("attachments_iSize"_field, blobSize, true);
    SetParentFields(parent, data);
}
