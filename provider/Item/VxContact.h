// CVxContact: a contact in a folder, or an entry of the global address list. The former is a message like other items;
// the latter is a mail user that is opened through the address book, and has neither a body nor attachments.
#pragma once

#include "provider/Item/ItemFields.h"
#include "provider/Item/VxItem.h"

class CVxAddressBook;

class CVxContact final : public CVxItem {
public:
    // An entry of the address book's list when `book` is given, which is then also the contact's store; a contact of a
    // store otherwise, whose id, folder and store come later.
    CVxContact(CVxConnectable* parent, const CStringW& id, CVxAddressBook* book, CVxOutlookFolder* folder);

    bool OnConnect() override;
    void OnDisconnect() override;
    bool MapiConnect() override;
    void MapiDisconnect() override;
    void Clear() override;
    LONG GetBodySizeProperty() override { return -1; }
    using CVxItem::LoadBody;
    bool LoadBody() override;

    // The mail user once it is open, else the message.
    IMAPIProp* GetMapiPropObj() override;
    bool GetLastModifiedTime() override;
    bool GetTypeSpecificProperties() override;
    void GetProperty(ULONG field, const SPropValue* value) override;

    // The time of the last change.
    std::int64_t GetDateTimeForDisplay() override;
    CStringW GetUISubject() override { return Text(eDisplayName); }

    bool IsGlobalAddressBook() const noexcept { return m_globalAddressBook != nullptr; }

    // ---- What the properties tell ----

    // PR_ENTRYID as hexadecimal text.
    const CStringW& GetEntryId() const noexcept { return m_entryId; }

    // Street, city, state, country and postal code with a blank between any two, also where there are none.
    const CStringW& GetBusinessAddress();
    const CStringW& GetHomeAddress();

    const CStringW& GetDisplayName() const noexcept { return Text(eDisplayName); }

    // The addresses of a contact in a folder; an entry of the global address list has GetSmtpAddress.
    const CStringW& GetEmail1() const noexcept { return Text(eEmail1); }
    const CStringW& GetEmail2() const noexcept { return Text(eEmail2); }
    const CStringW& GetEmail3() const noexcept { return Text(eEmail3); }

    const CStringW& GetFileAs() const noexcept { return Text(eFileAs); }
    const CStringW& GetIMAddress() const noexcept { return Text(eIMAddress); }
    const CStringW& GetContacts() const noexcept { return Text(eContacts); }
    const CStringW& GetFlagText() const noexcept { return Text(eFlagText); }
    const CStringW& GetCategories() const noexcept { return Text(eCategories); }

    const CStringW& GetSensitivity() const noexcept { return m_sensitivity; }
    LONG GetImportance() const noexcept { return m_importance; }
    const FILETIME& GetBirthday() const noexcept { return m_birthday; }
    const FILETIME& GetWeddingAnniversary() const noexcept { return m_weddingAnniversary; }
    const FILETIME& GetReminder() const noexcept { return m_reminder; }

    // GetTitle is the prefix of the display name, as GetDisplayNamePrefix; PR_TITLE is GetJobTitle.
    const CStringW& GetBusinessTelephoneNumber() const noexcept { return Text(eBusinessTelephoneNumber); }
    const CStringW& GetHomeTelephoneNumber() const noexcept { return Text(eHomeTelephoneNumber); }
    const CStringW& GetBusinessFaxNumber() const noexcept { return Text(eBusinessFaxNumber); }
    const CStringW& GetMobileTelephoneNumber() const noexcept { return Text(eMobileTelephoneNumber); }
    const CStringW& GetTitle() const noexcept { return Text(eTitle); }
    const CStringW& GetJobTitle() const noexcept { return Text(eJobTitle); }
    const CStringW& GetCompanyName() const noexcept { return Text(eCompanyName); }
    const CStringW& GetBusinessHomePage() const noexcept { return Text(eBusinessHomePage); }
    const CStringW& GetGivenName() const noexcept { return Text(eGivenName); }
    const CStringW& GetMiddleName() const noexcept { return Text(eMiddleName); }
    const CStringW& GetSurname() const noexcept { return Text(eSurname); }
    const CStringW& GetDisplayNamePrefix() const noexcept { return Text(eDisplayNamePrefix); }
    const CStringW& GetGeneration() const noexcept { return Text(eGeneration); }
    const CStringW& GetLanguage() const noexcept { return Text(eLanguage); }
    const CStringW& GetDepartmentName() const noexcept { return Text(eDepartmentName); }
    const CStringW& GetOfficeLocation() const noexcept { return Text(eOfficeLocation); }
    const CStringW& GetPrimaryTelephoneNumber() const noexcept { return Text(ePrimaryTelephoneNumber); }
    const CStringW& GetBusiness2TelephoneNumber() const noexcept { return Text(eBusiness2TelephoneNumber); }
    const CStringW& GetCarTelephoneNumber() const noexcept { return Text(eCarTelephoneNumber); }
    const CStringW& GetOtherTelephoneNumber() const noexcept { return Text(eOtherTelephoneNumber); }
    const CStringW& GetPagerTelephoneNumber() const noexcept { return Text(ePagerTelephoneNumber); }
    const CStringW& GetPrimaryFaxNumber() const noexcept { return Text(ePrimaryFaxNumber); }
    const CStringW& GetHomeFaxNumber() const noexcept { return Text(eHomeFaxNumber); }
    const CStringW& GetAssistantTelephoneNumber() const noexcept { return Text(eAssistantTelephoneNumber); }
    const CStringW& GetHome2TelephoneNumber() const noexcept { return Text(eHome2TelephoneNumber); }
    const CStringW& GetAssistant() const noexcept { return Text(eAssistant); }
    const CStringW& GetHobbies() const noexcept { return Text(eHobbies); }
    const CStringW& GetProfession() const noexcept { return Text(eProfession); }
    const CStringW& GetSpouseName() const noexcept { return Text(eSpouseName); }
    const CStringW& GetComputerNetworkName() const noexcept { return Text(eComputerNetworkName); }
    const CStringW& GetFtpSite() const noexcept { return Text(eFtpSite); }
    const CStringW& GetOrganizationalIdNumber() const noexcept { return Text(eOrganizationalIdNumber); }
    const CStringW& GetGovernmentIdNumber() const noexcept { return Text(eGovernmentIdNumber); }
    const CStringW& GetCustomerId() const noexcept { return Text(eCustomerId); }
    const CStringW& GetPreferredByName() const noexcept { return Text(ePreferredByName); }
    const CStringW& GetManagerName() const noexcept { return Text(eManagerName); }
    const CStringW& GetNickname() const noexcept { return Text(eNickname); }
    const CStringW& GetPersonalHomePage() const noexcept { return Text(ePersonalHomePage); }
    const CStringW& GetCompanyMainPhoneNumber() const noexcept { return Text(eCompanyMainPhoneNumber); }
    const CStringW& GetGender() const noexcept { return Text(eGender); }
    const CStringW& GetChildrensNames() const noexcept { return Text(eChildrensNames); }
    const CStringW& GetTTYTDDPhoneNumber() const noexcept { return Text(eTTYTDDPhoneNumber); }
    const CStringW& GetCallbackTelephoneNumber() const noexcept { return Text(eCallbackTelephoneNumber); }
    const CStringW& GetRadioTelephoneNumber() const noexcept { return Text(eRadioTelephoneNumber); }
    const CStringW& GetISDNNumber() const noexcept { return Text(eISDNNumber); }
    const CStringW& GetTelexNumber() const noexcept { return Text(eTelexNumber); }
    const CStringW& GetSmtpAddress() const noexcept { return Text(eSmtpAddress); }
    const CStringW& GetOtherAddress() const noexcept { return Text(eOtherAddress); }

private:
    // The numbers of the table's fields.
    enum Field : LONG {
        eFirstField = 31,
        eOtherAddress = 31,
        eTitle = 32,
        eJobTitle = 33,
        eBody = 34,
        eBusinessTelephoneNumber = 35,
        eHomeTelephoneNumber = 36,
        eBusinessFaxNumber = 37,
        eUrlCompName = 38,
        eMobileTelephoneNumber = 39,
        eCompanyName = 40,
        eBusinessHomePage = 41,
        eSensitivity = 42,
        eImportance = 43,
        eGivenName = 44,
        eMiddleName = 45,
        eSurname = 46,
        eDisplayNamePrefix = 47,
        eGeneration = 48,
        eDisplayName = 49,
        eLanguage = 50,
        eDepartmentName = 51,
        eOfficeLocation = 52,
        ePrimaryTelephoneNumber = 53,
        eBusiness2TelephoneNumber = 54,
        eCarTelephoneNumber = 55,
        eOtherTelephoneNumber = 56,
        ePagerTelephoneNumber = 57,
        ePrimaryFaxNumber = 58,
        eHomeFaxNumber = 59,
        eAssistantTelephoneNumber = 60,
        eHome2TelephoneNumber = 61,
        eAssistant = 62,
        eHobbies = 63,
        eProfession = 64,
        eSpouseName = 65,
        eComputerNetworkName = 66,
        eFtpSite = 67,
        eOrganizationalIdNumber = 68,
        eGovernmentIdNumber = 69,
        eCustomerId = 70,
        ePreferredByName = 71,
        eManagerName = 72,
        eNickname = 73,
        ePersonalHomePage = 74,
        eCompanyMainPhoneNumber = 75,
        eBirthday = 76,
        eWeddingAnniversary = 77,
        eGender = 78,
        eChildrensNames = 79,
        eTTYTDDPhoneNumber = 80,
        eCallbackTelephoneNumber = 81,
        eRadioTelephoneNumber = 82,
        eISDNNumber = 83,
        eTelexNumber = 84,
        eSmtpAddress = 85,
        eWebPage = 86,
        eEmail1 = 87,
        eEmail2 = 88,
        eEmail3 = 89,
        eBusinessStreet = 90,
        eBusinessCity = 91,
        eBusinessState = 92,
        eBusinessCountry = 93,
        eBusinessPostalCode = 94,
        eHomeStreet = 96,
        eHomeCity = 97,
        eHomeState = 98,
        eHomeCountry = 99,
        eHomePostalCode = 100,
        eFileAs = 101,
        eIMAddress = 102,
        eInstantMessaging = 103,
        eReminder = 104,
        eMileage = 105,
        eBillingInfo = 106,
        eReminderSet = 107,
        eContacts = 108,
        eCompanies = 109,
        eFlagText = 110,
        eCategories = 111,
        eFlagCompleteTime = 112,
        eEntryId = 113,
        eLastField = 113,
    };

    static const ItemRow<CVxContact> s_rows[82];
    static const std::array<VxField, 82> aVxContactFields;

    template <Field F>
    static void ReadContactText(CVxContact& item, const SPropValue& value) {
        item.Text(F) = CMapiUtil::Mapi2SimpleString(&value);
    }
    template <Field F>
    static void ReadContactTexts(CVxContact& item, const SPropValue& value) {
        JoinTexts(value, item.Text(F));
    }
    static void ReadGender(CVxContact& item, const SPropValue& value);
    static void ReadReminderSet(CVxContact& item, const SPropValue& value);

    CStringW& Text(Field field) noexcept { return m_texts[static_cast<std::size_t>(field - eFirstField)]; }
    const CStringW& Text(Field field) const noexcept { return m_texts[static_cast<std::size_t>(field - eFirstField)]; }

    CVxAddressBook* const m_globalAddressBook;  // not owned; null for a contact in a folder

    // What OpenEntry gave for the id: an IMailUser of the address list; in a store the message once more.
    VxMapiPtr<IMAPIProp> m_mailUser;

    std::array<CStringW, eLastField - eFirstField + 1> m_texts;
    CStringW m_entryId;
    CStringW m_sensitivity;
    LONG m_importance = 1;
    FILETIME m_birthday = {0, 0};
    FILETIME m_weddingAnniversary = {0, 0};
    FILETIME m_reminder = {0, 0};
    CStringW m_businessAddress;
    CStringW m_homeAddress;
};
