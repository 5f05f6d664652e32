#include "provider/Item/VxContact.h"

#include "mapi/MapiGuids.h"
#include "mapi/PropTags.h"
#include "provider/Common/FileTimeHelpers.h"
#include "provider/Common/Log.h"
#include "provider/Common/ScopedEntryExitLogger.h"
#include "provider/StoreAndFolder/VxAddressBook.h"

namespace {

constexpr auto& kSourcePath = "Item\\VxContact.cpp"_w;

// Bytes that a contact's id may have.
constexpr ULONG kMostIdBytes = 0x1000;

constexpr VxField Fixed(LONG id, ULONG tag) {
    return FixedField(eVxItemContact, id, tag);
}

constexpr VxField Named(LONG id, const GUID& set, LONG name, ULONG type) {
    return NamedField(eVxItemContact, id, set, name, type);
}

}  // namespace

// The title and the display name's prefix are one property. Mileage and billing are asked for in the set of addresses,
// where other items have them among the common ones.
constexpr ItemRow<CVxContact> CVxContact::s_rows[82] = {
    {Fixed(eEntryId, PR_ENTRYID), ReadHex<&CVxContact::m_entryId>},
    {Fixed(eBusinessTelephoneNumber, PR_BUSINESS_TELEPHONE_NUMBER_W), ReadContactText<eBusinessTelephoneNumber>},
    {Fixed(eHomeTelephoneNumber, PR_HOME_TELEPHONE_NUMBER_W), ReadContactText<eHomeTelephoneNumber>},
    {Fixed(eBusinessFaxNumber, PR_BUSINESS_FAX_NUMBER_W), ReadContactText<eBusinessFaxNumber>},
    {Fixed(eMobileTelephoneNumber, PR_MOBILE_TELEPHONE_NUMBER_W), ReadContactText<eMobileTelephoneNumber>},
    {Fixed(eUrlCompName, PR_URL_COMP_NAME_W), ReadText<&CVxContact::m_urlCompName>},
    {Fixed(eTitle, PR_DISPLAY_NAME_PREFIX_W), ReadContactText<eTitle>},
    {Fixed(eJobTitle, PR_TITLE_W), ReadContactText<eJobTitle>},
    {Fixed(eBody, PR_BODY_W), nullptr},
    {Fixed(eCompanyName, PR_COMPANY_NAME_W), ReadContactText<eCompanyName>},
    {Fixed(eBusinessHomePage, PR_BUSINESS_HOME_PAGE_W), ReadContactText<eBusinessHomePage>},
    {Fixed(eSensitivity, PR_SENSITIVITY), ReadSensitivity<&CVxContact::m_sensitivity>},
    {Fixed(eImportance, PR_IMPORTANCE), ReadImportance<&CVxContact::m_importance>, true},
    {Fixed(eGivenName, PR_GIVEN_NAME_W), ReadContactText<eGivenName>},
    {Fixed(eMiddleName, PR_MIDDLE_NAME_W), ReadContactText<eMiddleName>},
    {Fixed(eSurname, PR_SURNAME_W), ReadContactText<eSurname>},
    {Fixed(eDisplayNamePrefix, PR_DISPLAY_NAME_PREFIX_W), ReadContactText<eDisplayNamePrefix>},
    {Fixed(eGeneration, PR_GENERATION_W), ReadContactText<eGeneration>},
    {Fixed(eDisplayName, PR_DISPLAY_NAME_W), ReadContactText<eDisplayName>},
    {Fixed(eLanguage, PR_LANGUAGE_W), ReadContactText<eLanguage>},
    {Fixed(eDepartmentName, PR_DEPARTMENT_NAME_W), ReadContactText<eDepartmentName>},
    {Fixed(eOfficeLocation, PR_OFFICE_LOCATION_W), ReadContactText<eOfficeLocation>},
    {Fixed(ePrimaryTelephoneNumber, PR_PRIMARY_TELEPHONE_NUMBER_W), ReadContactText<ePrimaryTelephoneNumber>},
    {Fixed(eBusiness2TelephoneNumber, PR_BUSINESS2_TELEPHONE_NUMBER_W), ReadContactText<eBusiness2TelephoneNumber>},
    {Fixed(eCarTelephoneNumber, PR_CAR_TELEPHONE_NUMBER_W), ReadContactText<eCarTelephoneNumber>},
    {Fixed(eOtherTelephoneNumber, PR_OTHER_TELEPHONE_NUMBER_W), ReadContactText<eOtherTelephoneNumber>},
    {Fixed(ePagerTelephoneNumber, PR_PAGER_TELEPHONE_NUMBER_W), ReadContactText<ePagerTelephoneNumber>},
    {Fixed(ePrimaryFaxNumber, PR_PRIMARY_FAX_NUMBER_W), ReadContactText<ePrimaryFaxNumber>},
    {Fixed(eHomeFaxNumber, PR_HOME_FAX_NUMBER_W), ReadContactText<eHomeFaxNumber>},
    {Fixed(eAssistantTelephoneNumber, PR_ASSISTANT_TELEPHONE_NUMBER_W), ReadContactText<eAssistantTelephoneNumber>},
    {Fixed(eHome2TelephoneNumber, PR_HOME2_TELEPHONE_NUMBER_W), ReadContactText<eHome2TelephoneNumber>},
    {Fixed(eAssistant, PR_ASSISTANT_W), ReadContactText<eAssistant>},
    {Fixed(eHobbies, PR_HOBBIES_W), ReadContactText<eHobbies>},
    {Fixed(eProfession, PR_PROFESSION_W), ReadContactText<eProfession>},
    {Fixed(eSpouseName, PR_SPOUSE_NAME_W), ReadContactText<eSpouseName>},
    {Fixed(eComputerNetworkName, PR_COMPUTER_NETWORK_NAME_W), ReadContactText<eComputerNetworkName>},
    {Fixed(eFtpSite, PR_FTP_SITE_W), ReadContactText<eFtpSite>},
    {Fixed(eOrganizationalIdNumber, PR_ORGANIZATIONAL_ID_NUMBER_W), ReadContactText<eOrganizationalIdNumber>},
    {Fixed(eGovernmentIdNumber, PR_GOVERNMENT_ID_NUMBER_W), ReadContactText<eGovernmentIdNumber>},
    {Fixed(eCustomerId, PR_CUSTOMER_ID_W), ReadContactText<eCustomerId>},
    {Fixed(ePreferredByName, PR_PREFERRED_BY_NAME_W), ReadContactText<ePreferredByName>},
    {Fixed(eManagerName, PR_MANAGER_NAME_W), ReadContactText<eManagerName>},
    {Fixed(eNickname, PR_NICKNAME_W), ReadContactText<eNickname>},
    {Fixed(ePersonalHomePage, PR_PERSONAL_HOME_PAGE_W), ReadContactText<ePersonalHomePage>},
    {Fixed(eCompanyMainPhoneNumber, PR_COMPANY_MAIN_PHONE_NUMBER_W), ReadContactText<eCompanyMainPhoneNumber>},
    {Fixed(eBirthday, PR_BIRTHDAY), ReadTime<&CVxContact::m_birthday>},
    {Fixed(eWeddingAnniversary, PR_WEDDING_ANNIVERSARY), ReadTime<&CVxContact::m_weddingAnniversary>},
    {Fixed(eGender, PR_GENDER), &CVxContact::ReadGender},
    {Fixed(eChildrensNames, PR_CHILDRENS_NAMES_W), ReadContactTexts<eChildrensNames>},
    {Fixed(eTTYTDDPhoneNumber, PR_TTYTDD_PHONE_NUMBER_W), ReadContactText<eTTYTDDPhoneNumber>},
    {Fixed(eCallbackTelephoneNumber, PR_CALLBACK_TELEPHONE_NUMBER_W), ReadContactText<eCallbackTelephoneNumber>},
    {Fixed(eRadioTelephoneNumber, PR_RADIO_TELEPHONE_NUMBER_W), ReadContactText<eRadioTelephoneNumber>},
    {Fixed(eISDNNumber, PR_ISDN_NUMBER_W), ReadContactText<eISDNNumber>},
    {Fixed(eTelexNumber, PR_TELEX_NUMBER_W), ReadContactText<eTelexNumber>},
    {Fixed(eSmtpAddress, PR_SMTP_ADDRESS_W), ReadContactText<eSmtpAddress>},
    {Named(eEmail1, PSETID_Address, 0x8084, PT_UNICODE), ReadContactText<eEmail1>},
    {Named(eEmail2, PSETID_Address, 0x8094, PT_UNICODE), ReadContactText<eEmail2>},
    {Named(eEmail3, PSETID_Address, 0x80A4, PT_UNICODE), ReadContactText<eEmail3>},
    {Fixed(eBusinessStreet, PR_STREET_ADDRESS_W), ReadContactText<eBusinessStreet>},
    {Fixed(eBusinessCity, PR_LOCALITY_W), ReadContactText<eBusinessCity>},
    {Fixed(eBusinessState, PR_STATE_OR_PROVINCE_W), ReadContactText<eBusinessState>},
    {Fixed(eBusinessCountry, PR_COUNTRY_W), ReadContactText<eBusinessCountry>},
    {Fixed(eBusinessPostalCode, PR_POSTAL_CODE_W), ReadContactText<eBusinessPostalCode>},
    {Fixed(eHomeStreet, PR_HOME_ADDRESS_STREET_W), ReadContactText<eHomeStreet>},
    {Fixed(eHomeCity, PR_HOME_ADDRESS_CITY_W), ReadContactText<eHomeCity>},
    {Fixed(eHomeState, PR_HOME_ADDRESS_STATE_OR_PROVINCE_W), ReadContactText<eHomeState>},
    {Fixed(eHomeCountry, PR_HOME_ADDRESS_COUNTRY_W), ReadContactText<eHomeCountry>},
    {Fixed(eHomePostalCode, PR_HOME_ADDRESS_POSTAL_CODE_W), ReadContactText<eHomePostalCode>},
    {Named(eFileAs, PSETID_Address, 0x8005, PT_UNICODE), ReadContactText<eFileAs>},
    {Named(eIMAddress, PSETID_Address, 0x8062, PT_UNICODE), ReadContactText<eIMAddress>},
    {Named(eWebPage, PSETID_Address, 0x802B, PT_UNICODE), ReadContactText<eWebPage>},
    {Named(eInstantMessaging, PSETID_Address, 0x8056, PT_UNICODE), ReadContactText<eInstantMessaging>},
    {Named(eMileage, PSETID_Address, 0x8534, PT_UNICODE), ReadContactText<eMileage>},
    {Named(eBillingInfo, PSETID_Address, 0x8535, PT_UNICODE), ReadContactText<eBillingInfo>},
    {Named(eOtherAddress, PSETID_Address, 0x801C, PT_UNICODE), ReadContactText<eOtherAddress>},
    {Named(eReminder, PSETID_Common, 0x8560, PT_SYSTIME), ReadTime<&CVxContact::m_reminder>},
    {Named(eReminderSet, PSETID_Common, 0x8503, PT_BOOLEAN), &CVxContact::ReadReminderSet},
    {Named(eContacts, PSETID_Common, 0x853A, PT_MV_UNICODE), ReadContactTexts<eContacts>},
    {Named(eCompanies, PSETID_Common, 0x8539, PT_UNICODE), ReadContactText<eCompanies>},
    {Named(eFlagText, PSETID_Common, 0x8530, PT_UNICODE), ReadContactText<eFlagText>},
    {KeywordsField(eVxItemContact, eCategories), ReadContactTexts<eCategories>},
    {Fixed(eFlagCompleteTime, PR_FLAG_COMPLETE_TIME), ReadTime<&CVxContact::m_flagCompleteTime>},
};
constexpr std::array<VxField, 82> CVxContact::aVxContactFields = FieldsOf(s_rows);

CVxContact::CVxContact(CVxConnectable* parent, const CStringW& id, CVxAddressBook* book, CVxOutlookFolder* folder)
    : CVxItem(parent), m_globalAddressBook(book) {
    m_type = eVxItemContact;
    m_fields = aVxContactFields.data();
    m_fieldCount = static_cast<LONG>(aVxContactFields.size());
    m_id = id;
    m_folder = folder;
    m_store = book;
    CVxContact::Clear();
}

bool CVxContact::OnConnect() {
    VX_SCOPE_TRACE(trace);
    Clear();
    if (!MapiConnect()) {
        VX_LOG('E') << Vx::LogMsg("MapiConnect failed"_w);
        return false;
    }
    if (!GetProperties()) {
        VX_LOG('E') << Vx::LogMsg("Failed to get properties for item: %s"_w, m_id);
        return false;
    }
    if (!IsGlobalAddressBook() && !GetAttachments()) {
        VX_LOG('D') << Vx::LogMsg("Failed to get attachments for item: %s"_w, m_id);
        return false;
    }
    return true;
}

void CVxContact::OnDisconnect() {
    MapiDisconnect();
    Clear();
}

bool CVxContact::MapiConnect() {
    VX_SCOPE_TRACE_EX(trace);
    BYTE bytes[kMostIdBytes];
    ULONG size = 0;
    if (!CMapiUtil::Hex2Bin(m_id, bytes, &size, kMostIdBytes)) {
        trace.end("Hex2Bin ID failed"_w);
        return false;
    }
    if (!IsGlobalAddressBook()) {
        VX_LOG('D') << Vx::LogMsg("m_pGlobalAddressBook==NULL"_w);
        // The id of an embedded contact is that of the item around it, and opens that.
        if (!CVxItem::MapiConnect() || m_store == nullptr || m_isAttachment) {
            trace.ok();
            return m_message.get() != nullptr;
        }
    } else {
        VX_LOG('D') << Vx::LogMsg("use GlobalAddressBook"_w);
    }
    CVxOutlookStore* opener = IsGlobalAddressBook() ? m_globalAddressBook : m_store;
    ULONG type = 0;
    VxMapiPtr<IUnknown> opened;
    const HRESULT hr =
        opener->OpenEntry(size, reinterpret_cast<LPENTRYID>(bytes), nullptr, MAPI_BEST_ACCESS, &type, &opened);
    trace.end(hr);
    if (hr != S_OK || opened.get() == nullptr) {
        return false;
    }
    m_mailUser.reset(static_cast<IMAPIProp*>(opened.releasePointer()));
    return true;
}

void CVxContact::MapiDisconnect() {
    m_mailUser.release();
    if (!IsGlobalAddressBook()) {
        CVxItem::MapiDisconnect();
    }
}

void CVxContact::Clear() {
    for (CStringW& text : m_texts) {
        text.clear();
    }
    for (CStringW* text : {&m_entryId, &m_businessAddress, &m_homeAddress}) {
        text->clear();
    }
    for (FILETIME* time : {&m_birthday, &m_weddingAnniversary, &m_reminder}) {
        CleanDateTimeValue(*time);
    }
    m_sensitivity = "Normal"_w;
    m_importance = 1;
    CVxItem::Clear();
}

bool CVxContact::LoadBody() {
    return IsGlobalAddressBook() || CVxItem::LoadBody();
}

IMAPIProp* CVxContact::GetMapiPropObj() {
    return m_mailUser.get() != nullptr ? m_mailUser.get() : CVxItem::GetMapiPropObj();
}

bool CVxContact::GetLastModifiedTime() {
    return IsGlobalAddressBook() || CVxMapiProp::GetLastModifiedTime();
}

bool CVxContact::GetTypeSpecificProperties() {
    if (!IsGlobalAddressBook()) {
        LoadBody();
    }
    return true;
}

void CVxContact::GetProperty(ULONG field, const SPropValue* value) {
    ReadField(*this, s_rows, field, value);
}

void CVxContact::ReadGender(CVxContact& item, const SPropValue& value) {
    constexpr SHORT kFemale = 1;
    constexpr SHORT kMale = 2;
    if (IsOfType(value, PT_SHORT) && (value.Value.i == kFemale || value.Value.i == kMale)) {
        item.Text(eGender) = value.Value.i == kFemale ? "Female"_w : "Male"_w;
    }
}

void CVxContact::ReadReminderSet(CVxContact& item, const SPropValue& value) {
    if (IsOfType(value, PT_BOOLEAN)) {
        item.Text(eReminderSet) = value.Value.b != 0 ? "True"_w : "False"_w;
    }
}

std::int64_t CVxContact::GetDateTimeForDisplay() {
    return CMapiUtil::FromFileTimeToUnix(GetLastModified());
}

const CStringW& CVxContact::GetBusinessAddress() {
    m_businessAddress = Text(eBusinessStreet);
    for (const Field piece : {eBusinessCity, eBusinessState, eBusinessCountry, eBusinessPostalCode}) {
        m_businessAddress += ' ';
        m_businessAddress += Text(piece);
    }
    return m_businessAddress;
}

const CStringW& CVxContact::GetHomeAddress() {
    m_homeAddress = Text(eHomeStreet);
    for (const Field piece : {eHomeCity, eHomeState, eHomeCountry, eHomePostalCode}) {
        m_homeAddress += ' ';
        m_homeAddress += Text(piece);
    }
    return m_homeAddress;
}
