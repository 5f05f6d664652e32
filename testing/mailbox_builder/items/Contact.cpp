#include "testing/mailbox_builder/items/Contact.h"

#include "mapi/PropTags.h"
#include "testing/mailbox_builder/ByteWriter.h"
#include "testing/mailbox_builder/items/Attachments.h"
#include "testing/mailbox_builder/items/Bodies.h"
#include "testing/mailbox_builder/items/Dates.h"
#include "testing/mailbox_builder/items/Mail.h"
#include "testing/mailbox_builder/items/Naming.h"
#include "testing/mailbox_builder/items/Wording.h"

#include <array>
#include <initializer_list>

namespace mailbox_builder {
namespace {

void SetUnlessEmpty(Properties& properties, std::uint32_t tag, const CStringW& text) {
    if (!text.empty()) {
        properties.Set(tag, text);
    }
}

// The properties of one of the three e-mail addresses of a contact.
struct EmailNames {
    NamedProperty display, type, address, original, entryId;
};
constexpr std::array<EmailNames, 3> kEmails = {{
    {PidLidEmail1DisplayName, PidLidEmail1AddressType, PidLidEmail1EmailAddress, PidLidEmail1OriginalDisplayName,
     PidLidEmail1OriginalEntryId},
    {PidLidEmail2DisplayName, PidLidEmail2AddressType, PidLidEmail2EmailAddress, PidLidEmail2OriginalDisplayName,
     PidLidEmail2OriginalEntryId},
    {PidLidEmail3DisplayName, PidLidEmail3AddressType, PidLidEmail3EmailAddress, PidLidEmail3OriginalDisplayName,
     PidLidEmail3OriginalEntryId},
}};

void SetEmail(Properties& properties, const EmailNames& names, const Person& person) {
    Set(properties, names.display, person.name + " ("_w + person.smtp + ")"_w);
    Set(properties, names.type, person.TypeText());
    Set(properties, names.address, person.Address());
    Set(properties, names.original, person.smtp);
    Set(properties, names.entryId, EntryIdOf(person));
}

void SetBusinessAddress(Properties& properties, const PostalAddress& address) {
    SetUnlessEmpty(properties, PR_STREET_ADDRESS, address.street);
    SetUnlessEmpty(properties, PR_LOCALITY, address.city);
    SetUnlessEmpty(properties, PR_STATE_OR_PROVINCE, address.state);
    SetUnlessEmpty(properties, PR_POSTAL_CODE, address.postalCode);
    SetUnlessEmpty(properties, PR_COUNTRY, address.country);
    if (!address.IsEmpty()) {
        properties.Set(PR_POSTAL_ADDRESS, address.OnOneLine());
        Set(properties, PidLidWorkAddress, address.OnOneLine());
        Set(properties, PidLidWorkAddressStreet, address.street);
        Set(properties, PidLidWorkAddressCity, address.city);
        Set(properties, PidLidWorkAddressState, address.state);
        Set(properties, PidLidWorkAddressPostalCode, address.postalCode);
        Set(properties, PidLidWorkAddressCountry, address.country);
    }
}

void SetHomeAddress(Properties& properties, const PostalAddress& address) {
    SetUnlessEmpty(properties, PR_HOME_ADDRESS_STREET, address.street);
    SetUnlessEmpty(properties, PR_HOME_ADDRESS_CITY, address.city);
    SetUnlessEmpty(properties, PR_HOME_ADDRESS_STATE_OR_PROVINCE, address.state);
    SetUnlessEmpty(properties, PR_HOME_ADDRESS_POSTAL_CODE, address.postalCode);
    SetUnlessEmpty(properties, PR_HOME_ADDRESS_COUNTRY, address.country);
    if (!address.IsEmpty()) {
        Set(properties, PidLidHomeAddress, address.OnOneLine());
    }
}

void SetOtherAddress(Properties& properties, const PostalAddress& address) {
    SetUnlessEmpty(properties, PR_OTHER_ADDRESS_STREET, address.street);
    SetUnlessEmpty(properties, PR_OTHER_ADDRESS_CITY, address.city);
    SetUnlessEmpty(properties, PR_OTHER_ADDRESS_STATE_OR_PROVINCE, address.state);
    SetUnlessEmpty(properties, PR_OTHER_ADDRESS_POSTAL_CODE, address.postalCode);
    SetUnlessEmpty(properties, PR_OTHER_ADDRESS_COUNTRY, address.country);
    if (!address.IsEmpty()) {
        Set(properties, PidLidOtherAddress, address.OnOneLine());
    }
}

CStringW Joined(std::initializer_list<CStringW> parts, const CStringW& between) {
    CStringW joined;
    for (const CStringW& part : parts) {
        joined += (joined.empty() || part.empty() ? CStringW() : between) + part;
    }
    return joined;
}

struct TextRow {
    std::uint32_t tag;
    const char* text;
};

// Fields of the form that MakeContact leaves alone.
constexpr TextRow kMoreTexts[] = {
    {PR_BUSINESS2_TELEPHONE_NUMBER, "+46 8 5550 0102"},
    {PR_HOME2_TELEPHONE_NUMBER, "+46 8 5550 0103"},
    {PR_HOME_FAX_NUMBER, "+46 8 5550 0104"},
    {PR_PRIMARY_FAX_NUMBER, "+46 8 5550 0105"},
    {PR_PRIMARY_TELEPHONE_NUMBER, "+46 8 5550 0106"},
    {PR_CAR_TELEPHONE_NUMBER, "+46 70 5550 107"},
    {PR_OTHER_TELEPHONE_NUMBER, "+46 8 5550 0108"},
    {PR_PAGER_TELEPHONE_NUMBER, "+46 74 5550 109"},
    {PR_ASSISTANT_TELEPHONE_NUMBER, "+46 8 5550 0110"},
    {PR_COMPANY_MAIN_PHONE_NUMBER, "+46 8 5550 0100"},
    {PR_TTYTDD_PHONE_NUMBER, "+46 8 5550 0112"},
    {PR_CALLBACK_TELEPHONE_NUMBER, "+46 8 5550 0113"},
    {PR_RADIO_TELEPHONE_NUMBER, "+46 74 5550 114"},
    {PR_ISDN_NUMBER, "+46 8 5550 0115"},
    {PR_TELEX_NUMBER, "0555 EXAMPLE S"},
    {PR_BUSINESS_HOME_PAGE, "https://www.example.com/people/directory"},
    {PR_PERSONAL_HOME_PAGE, "https://home.example.org/~birgit"},
    {PR_FTP_SITE, "ftp://ftp.example.net/pub/birgit"},
    {PR_COMPUTER_NETWORK_NAME, "bridgenet"},
    {PR_LANGUAGE, "Swedish"},
    {PR_OFFICE_LOCATION, "Harbour House, 3.14"},
    {PR_ASSISTANT, "Emil Example"},
    {PR_HOBBIES, "Rowing, letterpress, mending radios"},
    {PR_PROFESSION, "Structural engineer"},
    {PR_SPOUSE_NAME, "Henrik Example"},
    {PR_MANAGER_NAME, "Ines Duarte"},
    {PR_NICKNAME, "Bibbi"},
    {PR_INITIALS, "B.A.E."},
    {PR_ORGANIZATIONAL_ID_NUMBER, "EW-00417"},
    {PR_GOVERNMENT_ID_NUMBER, "000000-0000"},
    {PR_CUSTOMER_ID, "C-7781"},
    {PR_PREFERRED_BY_NAME, "Oluwaseun Bello"},
    {PR_ACCOUNT, "bibbi"},
    {PR_LOCATION, "Stockholm"},
};

struct NamedTextRow {
    NamedProperty name;
    const char* text;
};
constexpr NamedTextRow kMoreNamedTexts[] = {
    {PidLidInstantMessagingAddress, "birgit.example@im.example.com"},
    {PidLidHtml, "https://www.example.com/people/birgit"},
    {PidLidFreeBusyLocation, "https://calendar.example.com/birgit.ifb"},
    {PidLidContactUserField1, "Prefers calls before noon"},
    {PidLidContactUserField2, "Met at the bridge survey"},
    {PidLidContactUserField3, "Vegetarian"},
    {PidLidContactUserField4, "Key holder"},
    {PidLidYomiFirstName, "biru-gitto"},
    {PidLidYomiLastName, "egu-zampuru"},
    {PidLidYomiCompanyName, "egu-zampuru wa-kusu"},
    {PidLidBilling, "Account 4711"},
    {PidLidMileage, "120 km"},
    {PidLidContactLinkName, "Emil Example"},
    // Numbers that belong to other sets, where some clients ask this set for them as well.
    {{&PSETID_Address, 0x8056, PT_UNICODE}, "Birgit Anna Example"},
    {{&PSETID_Address, 0x8534, PT_UNICODE}, "121 km"},
    {{&PSETID_Address, 0x8535, PT_UNICODE}, "Account 4712"},
    {{&PSETID_Common, 0x8539, PT_UNICODE}, "Example Works"},
};

}  // namespace

CStringW PostalAddress::OnOneLine() const {
    return Joined({street, Joined({postalCode, city}, " "_w), state, country}, ", "_w);
}

Message MakeContact(const ContactFacts& facts) {
    Message contact;
    contact.codePage = facts.codePage;
    Properties& properties = contact.properties;
    const CStringW name = Joined({facts.title, facts.given, facts.middle, facts.surname, facts.generation}, " "_w);
    const CStringW fileAs = Joined({facts.surname, Joined({facts.given, facts.middle}, " "_w)}, ", "_w);
    SetSubject(properties, {}, name.empty() ? facts.company : name);
    SetCreated(properties, facts.created, After(facts.created, 30));
    SetImportance(properties, Importance::Normal);
    SetSensitivity(properties, Sensitivity::Normal);
    properties.Set(PR_MESSAGE_CLASS, "IPM.Contact"_w)
        .Set(PR_DISPLAY_NAME, name.empty() ? facts.company : name)
        .Set(PR_MESSAGE_CODEPAGE, static_cast<std::int32_t>(facts.codePage));
    Set(properties, PidLidFileUnder, fileAs.empty() ? facts.company : fileAs);
    SetUnlessEmpty(properties, PR_DISPLAY_NAME_PREFIX, facts.title);
    SetUnlessEmpty(properties, PR_GIVEN_NAME, facts.given);
    SetUnlessEmpty(properties, PR_MIDDLE_NAME, facts.middle);
    SetUnlessEmpty(properties, PR_SURNAME, facts.surname);
    SetUnlessEmpty(properties, PR_GENERATION, facts.generation);
    SetUnlessEmpty(properties, PR_COMPANY_NAME, facts.company);
    SetUnlessEmpty(properties, PR_DEPARTMENT_NAME, facts.department);
    SetUnlessEmpty(properties, PR_TITLE, facts.jobTitle);
    SetUnlessEmpty(properties, PR_BUSINESS_TELEPHONE_NUMBER, facts.businessPhone);
    SetUnlessEmpty(properties, PR_HOME_TELEPHONE_NUMBER, facts.homePhone);
    SetUnlessEmpty(properties, PR_MOBILE_TELEPHONE_NUMBER, facts.mobilePhone);
    SetUnlessEmpty(properties, PR_BUSINESS_FAX_NUMBER, facts.businessFax);
    SetBusinessAddress(properties, facts.business);
    SetHomeAddress(properties, facts.home);
    SetOtherAddress(properties, facts.other);
    for (std::size_t i = 0; i < facts.emails.size() && i < kEmails.size(); ++i) {
        SetEmail(properties, kEmails[i], facts.emails[i]);
    }
    if (!facts.notes.empty()) {
        SetPlainBody(contact, facts.notes);
    }
    return contact;
}

void FillEveryContactField(Message& contact) {
    Properties& properties = contact.properties;
    for (const TextRow& row : kMoreTexts) {
        properties.Set(row.tag, Wide(row.text));
    }
    for (const NamedTextRow& row : kMoreNamedTexts) {
        Set(properties, row.name, Wide(row.text));
    }
    properties.Set(PR_BIRTHDAY, At(1979, 4, 21, 23))
        .Set(PR_WEDDING_ANNIVERSARY, At(2008, 6, 6, 22))
        .Set(PR_CHILDRENS_NAMES, std::vector<CStringW>{"Sixten"_w, "Alva"_w, "Love"_w});
    Set(properties, PidLidContacts, std::vector<CStringW>{"Emil Example"_w, "Ines Duarte"_w});
    Set(properties, PidLidFileUnderId, 0x00008017);  // "surname, given name"
    Set(properties, PidLidPostalAddressId, 2);       // the business address
    Set(properties, PidLidEmailList, std::vector<std::int32_t>{0, 1, 2});
    Set(properties, PidLidAddressBookProviderEmailList, std::vector<std::int32_t>{0, 1, 2});
    Set(properties, PidLidAddressBookProviderArrayType, 7);
    SetGender(properties, Gender::Female);
    SetCategories(properties, {"Suppliers"_w, "Bridge survey"_w});
    SetFollowUp(properties, {"Call"_w, At(2025, 9, 1), At(2025, 9, 5), At(2025, 9, 4, 9), {}});
}

void SetGender(Properties& properties, Gender gender) {
    properties.Set(PR_GENDER, static_cast<std::int16_t>(gender));
}

void SetPhoto(Message& contact, Bytes jpegOrGif) {
    Attachment photo = Hidden(AttachBytes("ContactPicture.jpg"_w, std::move(jpegOrGif), "image/jpeg"_w));
    photo.properties.Set(PR_ATTACHMENT_CONTACTPHOTO, true);
    contact.attachments.push_back(std::move(photo));
    Set(contact.properties, PidLidHasPicture, true);
}

Message MakeDistributionList(const CStringW& name, std::span<const Person> members, Time created) {
    // A member that is no contact, wrapped: [MS-OXOCNTC] 2.2.2.2.4.1.
    constexpr GUID kWrapped = {0xD3AD91C0, 0x9D51, 0x11CF, {0xA4, 0xA9, 0x00, 0xAA, 0x00, 0x47, 0xFA, 0xA4}};
    constexpr std::uint32_t kOneOff = 0;
    Message list;
    Properties& properties = list.properties;
    SetSubject(properties, {}, name);
    SetCreated(properties, created, After(created, 5));
    properties.Set(PR_MESSAGE_CLASS, "IPM.DistList"_w).Set(PR_DISPLAY_NAME, name);
    Set(properties, PidLidFileUnder, name);
    Set(properties, PidLidDistributionListName, name);
    std::vector<Bytes> wrapped;
    std::vector<Bytes> oneOffs;
    for (const Person& member : members) {
        oneOffs.push_back(OneOffEntryId(member));
        wrapped.push_back(ByteWriter().U32(0).Append(BytesOf(kWrapped)).U8(kOneOff).Append(oneOffs.back()).Take());
    }
    Set(properties, PidLidDistributionListMembers, wrapped);
    Set(properties, PidLidDistributionListOneOffMembers, oneOffs);
    return list;
}

}  // namespace mailbox_builder
