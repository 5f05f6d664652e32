#include "tests/provider/mailbox/ExpectedRecords.h"

#include "mapi/PropTags.h"
#include "platform/CodePage.h"
#include "testing/mailbox_builder/items/Naming.h"
#include "tests/provider/mailbox/MailboxHost.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string_view>

namespace vx_testing {

namespace {

using mailbox_builder::Message;
using mailbox_builder::Properties;
using mailbox_builder::Property;
using mailbox_builder::Time;
using VxOutlookProvider::Value;

// The form that a field gives a property's value. A property that is not there gives the empty text, 0 or false, unless
// the row says otherwise.
enum class Form { Text, Joined, Milliseconds, Number, NumberText, Flag, FlagText, Hex, Real, Sensitivity, Gender };

struct FieldRow {
    std::string_view key;
    Form form;
    std::uint32_t tag = 0;
    const NamedProperty* name = nullptr;
    const TextNamedProperty* textName = nullptr;
    std::int32_t missing = 0;
};

constexpr FieldRow kMailFields[] = {
    {.key = "email_sSubject", .form = Form::Text, .tag = PR_SUBJECT_W},
    {.key = "email_sCategories", .form = Form::Joined, .textName = &PidNameKeywords},
    {.key = "email_sContacts", .form = Form::Text, .name = &PidLidContactLinkName},
    {.key = "email_bDeliveryReceiptRequested", .form = Form::Flag, .tag = PR_ORIGINATOR_DELIVERY_REPORT_REQUESTED},
    {.key = "email_bReadReceiptRequested", .form = Form::Flag, .tag = PR_READ_RECEIPT_REQUESTED},
    {.key = "email_iImportance", .form = Form::Number, .tag = PR_IMPORTANCE, .missing = 1},
    {.key = "email_sSensitivity", .form = Form::Sensitivity, .tag = PR_SENSITIVITY},
    {.key = "email_sReplyTo", .form = Form::Text, .tag = PR_REPLY_RECIPIENT_NAMES_W},
    {.key = "email_lUTCDateReceived", .form = Form::Milliseconds, .tag = PR_MESSAGE_DELIVERY_TIME},
    {.key = "email_lUTCDateSent", .form = Form::Milliseconds, .tag = PR_CLIENT_SUBMIT_TIME},
    {.key = "email_lUTCExpiration", .form = Form::Milliseconds, .tag = PR_EXPIRY_TIME},
    {.key = "email_lUTCReminder", .form = Form::Milliseconds, .name = &PidLidReminderSignalTime},
    {.key = "email_sConversationIndex", .form = Form::Text, .tag = PR_CONVERSATION_TOPIC_W},
    {.key = "email_PR_CONVERSATION_INDEX", .form = Form::Hex, .tag = PR_CONVERSATION_INDEX},
};

constexpr FieldRow kContactFields[] = {
    {.key = "contacts_sAssistant", .form = Form::Text, .tag = PR_ASSISTANT_W},
    {.key = "contacts_sAssistantPhone", .form = Form::Text, .tag = PR_ASSISTANT_TELEPHONE_NUMBER_W},
    {.key = "contacts_sBusinessFAX", .form = Form::Text, .tag = PR_BUSINESS_FAX_NUMBER_W},
    {.key = "contacts_sBusinessPhone", .form = Form::Text, .tag = PR_BUSINESS_TELEPHONE_NUMBER_W},
    {.key = "contacts_sBusinessPhone2", .form = Form::Text, .tag = PR_BUSINESS2_TELEPHONE_NUMBER_W},
    {.key = "contacts_sBusinessWebPage", .form = Form::Text, .tag = PR_BUSINESS_HOME_PAGE_W},
    {.key = "contacts_sCallbackPhone", .form = Form::Text, .tag = PR_CALLBACK_TELEPHONE_NUMBER_W},
    {.key = "contacts_sCarPhone", .form = Form::Text, .tag = PR_CAR_TELEPHONE_NUMBER_W},
    {.key = "contacts_sCategories", .form = Form::Joined, .textName = &PidNameKeywords},
    {.key = "contacts_sChildren", .form = Form::Joined, .tag = PR_CHILDRENS_NAMES_W},
    {.key = "contacts_sCompany", .form = Form::Text, .tag = PR_COMPANY_NAME_W},
    {.key = "contacts_sCompanyMainPhone", .form = Form::Text, .tag = PR_COMPANY_MAIN_PHONE_NUMBER_W},
    {.key = "contacts_sComputerNetwork", .form = Form::Text, .tag = PR_COMPUTER_NETWORK_NAME_W},
    {.key = "contacts_sContacts", .form = Form::Joined, .name = &PidLidContacts},
    {.key = "contacts_sCustomerID", .form = Form::Text, .tag = PR_CUSTOMER_ID_W},
    {.key = "contacts_sDepartment", .form = Form::Text, .tag = PR_DEPARTMENT_NAME_W},
    {.key = "contacts_sDisplayName", .form = Form::Text, .tag = PR_DISPLAY_NAME_W},
    {.key = "contacts_sDisplayNamePrefix", .form = Form::Text, .tag = PR_DISPLAY_NAME_PREFIX_W},
    {.key = "contacts_sEmail", .form = Form::Text, .name = &PidLidEmail1OriginalDisplayName},
    {.key = "contacts_sEmail2", .form = Form::Text, .name = &PidLidEmail2OriginalDisplayName},
    {.key = "contacts_sEmail3", .form = Form::Text, .name = &PidLidEmail3OriginalDisplayName},
    {.key = "contacts_sFileAs", .form = Form::Text, .name = &PidLidFileUnder},
    {.key = "contacts_sFlagText", .form = Form::Text, .name = &PidLidFlagRequest},
    {.key = "contacts_sFTPSite", .form = Form::Text, .tag = PR_FTP_SITE_W},
    {.key = "contacts_sGender", .form = Form::Gender, .tag = PR_GENDER},
    {.key = "contacts_sGeneration", .form = Form::Text, .tag = PR_GENERATION_W},
    {.key = "contacts_sGivenName", .form = Form::Text, .tag = PR_GIVEN_NAME_W},
    {.key = "contacts_sGovernmentID", .form = Form::Text, .tag = PR_GOVERNMENT_ID_NUMBER_W},
    {.key = "contacts_sHobbies", .form = Form::Text, .tag = PR_HOBBIES_W},
    {.key = "contacts_sHomeFAX", .form = Form::Text, .tag = PR_HOME_FAX_NUMBER_W},
    {.key = "contacts_sHomePhone", .form = Form::Text, .tag = PR_HOME_TELEPHONE_NUMBER_W},
    {.key = "contacts_sHomePhone2", .form = Form::Text, .tag = PR_HOME2_TELEPHONE_NUMBER_W},
    {.key = "contacts_sIMAddress", .form = Form::Text, .name = &PidLidInstantMessagingAddress},
    {.key = "contacts_iImportance", .form = Form::Number, .tag = PR_IMPORTANCE, .missing = 1},
    {.key = "contacts_sISDNNumber", .form = Form::Text, .tag = PR_ISDN_NUMBER_W},
    {.key = "contacts_sJobTitle", .form = Form::Text, .tag = PR_TITLE_W},
    {.key = "contacts_sLanguage", .form = Form::Text, .tag = PR_LANGUAGE_W},
    {.key = "contacts_sManager", .form = Form::Text, .tag = PR_MANAGER_NAME_W},
    {.key = "contacts_sMiddleName", .form = Form::Text, .tag = PR_MIDDLE_NAME_W},
    {.key = "contacts_sMobilePhone", .form = Form::Text, .tag = PR_MOBILE_TELEPHONE_NUMBER_W},
    {.key = "contacts_sNickname", .form = Form::Text, .tag = PR_NICKNAME_W},
    {.key = "contacts_sOffice", .form = Form::Text, .tag = PR_OFFICE_LOCATION_W},
    {.key = "contacts_sOrganizationalID", .form = Form::Text, .tag = PR_ORGANIZATIONAL_ID_NUMBER_W},
    {.key = "contacts_sOtherAddress", .form = Form::Text, .name = &PidLidOtherAddress},
    {.key = "contacts_sOtherPhone", .form = Form::Text, .tag = PR_OTHER_TELEPHONE_NUMBER_W},
    {.key = "contacts_sPager", .form = Form::Text, .tag = PR_PAGER_TELEPHONE_NUMBER_W},
    {.key = "contacts_sPersonalWebPage", .form = Form::Text, .tag = PR_PERSONAL_HOME_PAGE_W},
    {.key = "contacts_sPreferredByName", .form = Form::Text, .tag = PR_PREFERRED_BY_NAME_W},
    {.key = "contacts_sPrimaryFAX", .form = Form::Text, .tag = PR_PRIMARY_FAX_NUMBER_W},
    {.key = "contacts_sPrimaryPhone", .form = Form::Text, .tag = PR_PRIMARY_TELEPHONE_NUMBER_W},
    {.key = "contacts_sProfession", .form = Form::Text, .tag = PR_PROFESSION_W},
    {.key = "contacts_sRadioPhone", .form = Form::Text, .tag = PR_RADIO_TELEPHONE_NUMBER_W},
    {.key = "contacts_sSensitivity", .form = Form::Sensitivity, .tag = PR_SENSITIVITY},
    {.key = "contacts_sSpouse", .form = Form::Text, .tag = PR_SPOUSE_NAME_W},
    {.key = "contacts_sSurname", .form = Form::Text, .tag = PR_SURNAME_W},
    {.key = "contacts_sTelexNumber", .form = Form::Text, .tag = PR_TELEX_NUMBER_W},
    {.key = "contacts_sTitle", .form = Form::Text, .tag = PR_DISPLAY_NAME_PREFIX_W},
    {.key = "contacts_sTTYTDDPhone", .form = Form::Text, .tag = PR_TTYTDD_PHONE_NUMBER_W},
    {.key = "contacts_lUTCAnniversary", .form = Form::Milliseconds, .tag = PR_WEDDING_ANNIVERSARY},
    {.key = "contacts_lUTCBirthday", .form = Form::Milliseconds, .tag = PR_BIRTHDAY},
    {.key = "contacts_lUTCReminder", .form = Form::Milliseconds, .name = &PidLidReminderSignalTime},
};

constexpr FieldRow kCalendarFields[] = {
    {.key = "calendar_sBillingInfo", .form = Form::Text, .name = &PidLidBilling},
    {.key = "calendar_iBusyStatus", .form = Form::Number, .name = &PidLidBusyStatus},
    {.key = "calendar_sCategories", .form = Form::Joined, .textName = &PidNameKeywords},
    {.key = "calendar_sCompany", .form = Form::Joined, .name = &PidLidCompanies},
    {.key = "calendar_sContacts", .form = Form::Joined, .name = &PidLidContacts},
    {.key = "calendar_iDuration", .form = Form::Number, .name = &PidLidAppointmentDuration},
    {.key = "calendar_sEvent", .form = Form::FlagText, .name = &PidLidAppointmentSubType},
    {.key = "calendar_iImportance", .form = Form::Number, .tag = PR_IMPORTANCE},
    {.key = "calendar_sLocation", .form = Form::Text, .name = &PidLidLocation},
    {.key = "calendar_sMileage", .form = Form::Text, .name = &PidLidMileage},
    {.key = "calendar_sOrganizer", .form = Form::Text, .tag = PR_SENDER_NAME_W},
    {.key = "calendar_sResponse", .form = Form::NumberText, .name = &PidLidResponseStatus},
    {.key = "calendar_sSensitivity", .form = Form::Sensitivity, .tag = PR_SENSITIVITY},
    {.key = "calendar_iStatus", .form = Form::Number, .name = &PidLidAppointmentStateFlags},
    {.key = "calendar_sSubject", .form = Form::Text, .tag = PR_SUBJECT_W},
    {.key = "calendar_lUTCDateCreated", .form = Form::Milliseconds, .tag = PR_CREATION_TIME},
    {.key = "calendar_lUTCEndDate", .form = Form::Milliseconds, .name = &PidLidClipEnd},
    {.key = "calendar_lUTCEndTime", .form = Form::Milliseconds, .name = &PidLidAppointmentEndWhole},
    {.key = "calendar_lUTCReminder", .form = Form::Milliseconds, .name = &PidLidCommonStart},
    {.key = "calendar_lUTCReplyTime", .form = Form::Milliseconds, .name = &PidLidAppointmentReplyTime},
    {.key = "calendar_lUTCStartDate", .form = Form::Milliseconds, .name = &PidLidClipStart},
    {.key = "calendar_lUTCStartTime", .form = Form::Milliseconds, .name = &PidLidAppointmentStartWhole},
};

constexpr FieldRow kTaskFields[] = {
    {.key = "tasks_iActualWork", .form = Form::Number, .name = &PidLidTaskActualEffort},
    {.key = "tasks_sBillingInfo", .form = Form::Text, .name = &PidLidBilling},
    {.key = "tasks_sCategories", .form = Form::Joined, .textName = &PidNameKeywords},
    {.key = "tasks_sCompany", .form = Form::Joined, .name = &PidLidCompanies},
    {.key = "tasks_sContacts", .form = Form::Joined, .name = &PidLidContacts},
    {.key = "tasks_sDelegation", .form = Form::NumberText, .name = &PidLidTaskAcceptanceState},
    {.key = "tasks_sDelegator", .form = Form::Text, .name = &PidLidTaskAssigner},
    {.key = "tasks_sGroup", .form = Form::FlagText, .name = &PidLidTeamTask},
    {.key = "tasks_iImportance", .form = Form::Number, .tag = PR_IMPORTANCE},
    {.key = "tasks_bIsComplete", .form = Form::Flag, .name = &PidLidTaskComplete},
    {.key = "tasks_sMileage", .form = Form::Text, .name = &PidLidMileage},
    {.key = "tasks_sOwner", .form = Form::Text, .name = &PidLidTaskOwner},
    {.key = "tasks_sOwnership", .form = Form::NumberText, .name = &PidLidTaskOwnership},
    {.key = "tasks_dPercentComplete", .form = Form::Real, .name = &PidLidPercentComplete},
    {.key = "tasks_sResponse", .form = Form::NumberText, .name = &PidLidTaskMultipleRecipients},
    {.key = "tasks_sRole", .form = Form::Text, .name = &PidLidTaskRole},
    {.key = "tasks_sSensitivity", .form = Form::Sensitivity, .tag = PR_SENSITIVITY},
    {.key = "tasks_iStatus", .form = Form::Number, .name = &PidLidTaskStatus},
    {.key = "tasks_sSubject", .form = Form::Text, .tag = PR_SUBJECT_W},
    {.key = "tasks_iTotalWork", .form = Form::Number, .name = &PidLidTaskEstimatedEffort},
    {.key = "tasks_lUTCCompletedDate", .form = Form::Milliseconds, .name = &PidLidTaskDateCompleted},
    {.key = "tasks_lUTCDateCreated", .form = Form::Milliseconds, .tag = PR_CREATION_TIME},
    {.key = "tasks_lUTCDueDate", .form = Form::Milliseconds, .name = &PidLidTaskDueDate},
    {.key = "tasks_lUTCReminder", .form = Form::Milliseconds, .name = &PidLidReminderTime},
    {.key = "tasks_lUTCStartDate", .form = Form::Milliseconds, .name = &PidLidTaskStartDate},
};

// Where the notes of some clients have their colour once more.
constexpr NamedProperty kNoteColor = {&PSETID_Note, 0x831C, PT_LONG};

constexpr FieldRow kNoteFields[] = {
    {.key = "eobj_note_sCategories", .form = Form::Joined, .textName = &PidNameKeywords},
    {.key = "eobj_note_sContacts", .form = Form::Text, .name = &PidLidContactLinkName},
    {.key = "eobj_note_iColor", .form = Form::Number, .name = &kNoteColor},
    {.key = "eobj_note_sSubject", .form = Form::Text, .tag = PR_SUBJECT_W},
    {.key = "eobj_note_lUTCDateCreated", .form = Form::Milliseconds, .tag = PR_MESSAGE_DELIVERY_TIME},
    {.key = "email_sConversationIndex", .form = Form::Text, .tag = PR_CONVERSATION_TOPIC_W},
    {.key = "email_PR_CONVERSATION_INDEX", .form = Form::Hex, .tag = PR_CONVERSATION_INDEX},
};

std::u16string Units(const CStringW& text) {
    return WellFormed(std::u16string(text.begin(), text.end()));
}

const Property* Find(const Properties& properties, const FieldRow& row) {
    if (row.name != nullptr) {
        return properties.Find(mailbox_builder::NameOf(*row.name));
    }
    return row.textName != nullptr ? properties.Find(mailbox_builder::NameOf(*row.textName)) : properties.Find(row.tag);
}

template <typename T>
const T* ValueOf(const Property* property) {
    return property == nullptr ? nullptr : std::get_if<T>(&property->value);
}

template <typename T>
T ValueOr(const Property* property, T missing) {
    const T* value = ValueOf<T>(property);
    return value == nullptr ? missing : *value;
}

// A text as it is read: the mark of a hidden prefix, two units, is not part of a subject ([MS-PST] 2.5.3.1.1).
std::u16string TextOf(const Property* property) {
    std::u16string text = Units(ValueOr(property, CStringW()));
    if (property != nullptr && PROP_ID(property->tag) == PROP_ID(PR_SUBJECT_W) && !text.empty() && text[0] == 1) {
        text.erase(0, 2);
    }
    return text;
}

std::u16string TextOf(const Properties& properties, std::uint32_t tag) {
    return TextOf(properties.Find(tag));
}

std::u16string Joined(const Property* property) {
    std::u16string all;
    for (const CStringW& text : ValueOr(property, std::vector<CStringW>())) {
        all += (all.empty() ? u"" : u", ") + Units(text);
    }
    return all;
}

std::u16string HexOf(const Property* property) {
    std::u16string digits;
    for (const std::byte byte : ValueOr(property, mailbox_builder::Bytes())) {
        digits += u"0123456789ABCDEF"[static_cast<unsigned>(byte) >> 4];
        digits += u"0123456789ABCDEF"[static_cast<unsigned>(byte) & 15];
    }
    return digits;
}

std::int64_t MillisecondsOf(const Property* property) {
    const Time* time = ValueOf<Time>(property);
    return time == nullptr || time->ticks == 0 ? 0 : (time->ticks - 116'444'736'000'000'000) / 10'000;
}

std::u16string Ascii(std::string_view text) {
    return std::u16string(text.begin(), text.end());
}

Value Expected(const FieldRow& row, const Properties& properties) {
    constexpr std::array<std::u16string_view, 4> kSensitivities = {u"Normal", u"Personal", u"Private", u"Confidential"};
    constexpr std::array<std::u16string_view, 3> kGenders = {u"", u"Female", u"Male"};
    const Property* property = Find(properties, row);
    switch (row.form) {
        case Form::Text: return TextOf(property);
        case Form::Joined: return Joined(property);
        case Form::Milliseconds: return MillisecondsOf(property);
        case Form::Number: return ValueOr(property, row.missing);
        case Form::NumberText:
            return property == nullptr ? std::u16string() : Ascii(std::to_string(ValueOr(property, 0)));
        case Form::Flag: return ValueOr(property, false);
        case Form::FlagText:
            return property == nullptr ? std::u16string()
                                       : std::u16string(ValueOr(property, false) ? u"True" : u"False");
        case Form::Hex: return HexOf(property);
        case Form::Real: return ValueOr(property, 0.0);
        case Form::Sensitivity:
            if (property == nullptr) {
                return row.key == "contacts_sSensitivity" ? u"Normal" : u"";
            }
            return std::u16string(kSensitivities.at(static_cast<std::size_t>(ValueOr(property, 0))));
        case Form::Gender:
            return std::u16string(kGenders.at(static_cast<std::size_t>(ValueOr(property, std::int16_t{0}))));
    }
    return {};
}

std::span<const FieldRow> FieldsOf(int type) {
    switch (type) {
        case 1: return kMailFields;
        case 3: return kContactFields;
        case 6: return kCalendarFields;
        case 7: return kTaskFields;
        case 14: return kNoteFields;
        default: return {};
    }
}

std::string_view PrefixOf(int type) {
    switch (type) {
        case 1: return "email_";
        case 3: return "contacts_";
        case 6: return "calendar_";
        case 7: return "tasks_";
        case 14: return "eobj_note_";
        default: return "none_";
    }
}

std::string Shown(const Value& value) {
    switch (value.GetKind()) {
        case Value::Kind::Null: return "nothing";
        case Value::Kind::Text: return '"' + Narrow(std::u16string_view(value.String()).substr(0, 80)) + '"';
        case Value::Kind::Double: return std::to_string(value.Real());
        case Value::Kind::Bool: return value.Boolean() ? "true" : "false";
        default: return std::to_string(value.Integer());
    }
}

// Compares fields of one record; differences are lines.
class Comparison {
public:
    Comparison(const Value& record, const std::string& where, std::vector<std::string>& differences)
        : m_record(record), m_where(where), m_differences(differences) {}

    void Same(std::string_view key, const Value& expected) {
        const Value& found = Get(m_record, key);
        if (found != expected) {
            Tell(key, Shown(found) + " instead of " + Shown(expected));
        }
    }

    void Contains(std::string_view key, const std::u16string& part) {
        if (Get(m_record, key).String().find(part) == std::u16string::npos) {
            Tell(key, Shown(Get(m_record, key)) + " without \"" + Narrow(std::u16string_view(part)) + '"');
        }
    }

    void Tell(std::string_view key, const std::string& what) {
        m_differences.push_back(m_where + ": " + std::string(key) + " is " + what);
    }

private:
    const Value& m_record;
    const std::string& m_where;
    std::vector<std::string>& m_differences;
};

// A recipient's entry in a list of names.
std::u16string EntryOf(const Properties& recipient, bool lowerCase) {
    const std::u16string name = TextOf(recipient, PR_DISPLAY_NAME_W);
    const bool hasEmail = recipient.Find(PR_EMAIL_ADDRESS_W) != nullptr;
    std::u16string address = TextOf(recipient, recipient.Find(PR_SMTP_ADDRESS_W) != nullptr     ? PR_SMTP_ADDRESS_W
                                               : recipient.Find(PR_ORG_EMAIL_ADDR_W) != nullptr ? PR_ORG_EMAIL_ADDR_W
                                                                                                : PR_EMAIL_ADDRESS_W);
    if (address.empty() || !hasEmail) {
        return name;
    }
    if (name.empty()) {
        return address;
    }
    std::erase_if(address, [](char16_t unit) { return unit == u'<' || unit == u'>' || unit == u' '; });
    if (lowerCase) {
        for (char16_t& unit : address) {
            unit = unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit + 32) : unit;
        }
    }
    return name + u" <" + address + u">";
}

Value RecipientsOf(const Message& message, std::int32_t type, bool lowerCase = true) {
    std::u16string list;
    for (const Properties& recipient : message.recipients) {
        if (ValueOr(recipient.Find(PR_RECIPIENT_TYPE), 0) == type) {
            list += (list.empty() ? u"" : u"; ") + EntryOf(recipient, lowerCase);
        }
    }
    return list;
}

std::u16string NameOf(const Properties& attachment) {
    for (const std::uint32_t tag : {PR_DISPLAY_NAME_W, PR_ATTACH_LONG_FILENAME_W, PR_ATTACH_FILENAME_W}) {
        if (std::u16string name = TextOf(attachment, tag); !name.empty()) {
            return name;
        }
    }
    return u"Attachment";
}

// The list of a top-level item's attachments. None for one with attached message files: the description does not say
// what is in them.
std::optional<Value> AttachmentsOf(const Message& message) {
    std::u16string list;
    for (std::size_t i = 0; i < message.attachments.size(); ++i) {
        const mailbox_builder::Attachment& attachment = message.attachments[i];
        const std::int32_t method = ValueOr(attachment.properties.Find(PR_ATTACH_METHOD), 0);
        const std::u16string number = Ascii(std::to_string(i));
        const std::u16string name = NameOf(attachment.properties);
        if (name.ends_with(u".msg") || name.ends_with(u".MSG")) {
            return std::nullopt;
        }
        if (attachment.embedded != nullptr) {
            const int type = ItemTypeOf(*attachment.embedded);
            list += u"//vxAtt:" + name;
            list += type < 0 ? u"" : u"//vxAttId:" + Ascii(std::to_string(type)) + u":VxEMBITEM" + number;
        } else if (method == 1 || method == 6) {
            list += u"//vxAtt:" + name + u"//vxAttId:B:" + number;
        }
    }
    return Value(list);
}

std::u16string AddressOf(const Properties& contact, std::span<const std::uint32_t> tags) {
    std::u16string address;
    for (const std::uint32_t tag : tags) {
        address += (tag == tags.front() ? u"" : u" ") + TextOf(contact, tag);
    }
    return address;
}

void CompareContact(const Message& message, Comparison& fields) {
    constexpr std::array<std::uint32_t, 5> kBusiness = {PR_STREET_ADDRESS_W, PR_LOCALITY_W, PR_STATE_OR_PROVINCE_W,
                                                        PR_COUNTRY_W, PR_POSTAL_CODE_W};
    constexpr std::array<std::uint32_t, 5> kHome = {PR_HOME_ADDRESS_STREET_W, PR_HOME_ADDRESS_CITY_W,
                                                    PR_HOME_ADDRESS_STATE_OR_PROVINCE_W, PR_HOME_ADDRESS_COUNTRY_W,
                                                    PR_HOME_ADDRESS_POSTAL_CODE_W};
    fields.Same("contacts_sBusinessAddress", AddressOf(message.properties, kBusiness));
    fields.Same("contacts_sHomeAddress", AddressOf(message.properties, kHome));
    fields.Same("contacts_bIsAttached", false);
    fields.Same("contacts_sFlagComplete", u"");
}

void CompareMail(const Message& message, bool isEmbedded, Comparison& fields) {
    fields.Same("email_sTo", RecipientsOf(message, 1));
    fields.Same("email_sCC", RecipientsOf(message, 2));
    fields.Same("email_sBCC", RecipientsOf(message, 3));
    fields.Contains("email_sFrom", TextOf(message.properties, PR_SENDER_NAME_W));
    fields.Same("email_bIsAttached", isEmbedded);
    fields.Same("email_sFlagComplete", u"");
    const bool isRead = (ValueOr(message.properties.Find(PR_MESSAGE_FLAGS), 0) & 1) != 0;
    fields.Same("email_sReadStatus", isRead ? u"1" : u"0");
}

void CompareRecurrence(const Message& message, const NamedProperty& property, std::string_view typeKey,
                       std::string_view key, Comparison& fields) {
    const auto* blob = ValueOf<mailbox_builder::Bytes>(message.properties.Find(mailbox_builder::NameOf(property)));
    constexpr std::array<std::u16string_view, 4> kTypes = {u"Daily", u"Weekly", u"Monthly", u"Yearly"};
    std::u16string type;
    if (blob != nullptr && blob->size() > 4) {
        type = kTypes.at(static_cast<std::size_t>(blob->at(4)) - 10);
    }
    fields.Same(typeKey, type);
    fields.Same(key, type.empty() ? u"" : u"Recurrent");
}

void CompareCalendar(const Message& message, Comparison& fields) {
    fields.Same("calendar_sReqAttendees", RecipientsOf(message, 1));
    fields.Same("calendar_sOptAttendees", RecipientsOf(message, 2));
    fields.Same("calendar_sResources", RecipientsOf(message, 3));
    fields.Same("calendar_sRecipients", RecipientsOf(message, 1));
    CompareRecurrence(message, PidLidAppointmentRecur, "calendar_sRecurrenceType", "calendar_sRecurrence", fields);
    fields.Same("calendar_bIsAttached", false);
    fields.Same("calendar_bOnline", false);
}

void CompareTask(const Message& message, Comparison& fields) {
    const Value recipients = RecipientsOf(message, 1, false);
    fields.Same("tasks_sRecipients", recipients);
    std::u16string updates = TextOf(message.properties.Find(mailbox_builder::NameOf(PidLidTaskAssigner)));
    if (!recipients.String().empty()) {
        updates += (updates.empty() ? u"" : u"; ") + recipients.String();
    }
    fields.Same("tasks_sUpdateList", updates);
    CompareRecurrence(message, PidLidTaskRecurrence, "tasks_sRecurrenceType", "tasks_sRecurrence", fields);
    fields.Same("tasks_bIsAttached", false);
    fields.Same("tasks_lUTCEndDate", std::int64_t{0});
}

// The plain text. Where the message has other forms alone it is made from them, so there is some.
void CompareBody(const Message& message, std::string_view key, const Value& record, Comparison& fields) {
    if (message.properties.Find(PR_BODY_W) != nullptr) {
        if (const CStringW* text = ValueOf<CStringW>(message.properties.Find(PR_BODY_W))) {
            fields.Same(key, Units(*text));
        }
        return;
    }
    const bool hasOther =
        message.properties.Find(PR_HTML) != nullptr || message.properties.Find(PR_RTF_COMPRESSED) != nullptr;
    if (Get(record, key).String().empty() == hasOther) {
        fields.Tell(key, Shown(Get(record, key)) + (hasOther ? ", though there is another form" : ", out of nothing"));
    }
}

// Every field of the item's kind is set, and no other kind's.
void CompareSetFields(const Value& record, int type, Comparison& fields) {
    for (std::size_t i = 0; i < VxOutlookProvider::FieldsOf(RecordKind::Item).size(); ++i) {
        const VxOutlookProvider::Field& field = VxOutlookProvider::FieldsOf(RecordKind::Item)[i];
        const bool isCommon =
            field.key.starts_with("common_") || field.key == "schemaUID" || field.key.starts_with("eobj_vx");
        const bool isNotes =
            type == 14 && (field.key == "email_sConversationIndex" || field.key == "email_PR_CONVERSATION_INDEX");
        const bool isOwn = field.key.starts_with(PrefixOf(type)) || isNotes;
        const bool expected = field.type != '-' && (isCommon || isOwn);
        if (record.At(i).IsNull() == expected) {
            fields.Tell(field.key, expected ? "not set" : "set to " + Shown(record.At(i)));
        }
    }
}

CStringW InPage(const CStringW& text, unsigned page) {
    const auto length = static_cast<int>(text.size());
    std::string bytes(text.size() * 4 + 1, 0);
    bytes.resize(static_cast<std::size_t>(WideCharToMultiByte(page, 0, text.data(), length, bytes.data(),
                                                              static_cast<int>(bytes.size()), nullptr, nullptr)));
    CStringW wide(bytes.size() + 1, 0);
    wide.resize(static_cast<std::size_t>(MultiByteToWideChar(page, 0, bytes.data(), static_cast<int>(bytes.size()),
                                                             wide.data(), static_cast<int>(wide.size()))));
    return wide;
}

Properties InPage(const Properties& properties, unsigned page) {
    Properties converted;
    for (const Property& property : properties.All()) {
        mailbox_builder::Value value = property.value;
        if (auto* text = std::get_if<CStringW>(&value)) {
            *text = InPage(*text, page);
        } else if (auto* texts = std::get_if<std::vector<CStringW>>(&value)) {
            for (CStringW& element : *texts) {
                element = InPage(element, page);
            }
        }
        if (property.name) {
            converted.Set(*property.name, static_cast<std::uint16_t>(PROP_TYPE(property.tag)), std::move(value));
        } else {
            converted.Set(property.tag, std::move(value));
        }
    }
    return converted;
}

}  // namespace

Message InItsPage(const Message& message) {
    Message converted = message;
    converted.properties = InPage(message.properties, message.codePage);
    for (Properties& recipient : converted.recipients) {
        recipient = InPage(recipient, message.codePage);
    }
    for (mailbox_builder::Attachment& attachment : converted.attachments) {
        attachment.properties = InPage(attachment.properties, message.codePage);
        if (attachment.embedded != nullptr) {
            attachment.embedded = std::make_shared<Message>(InItsPage(*attachment.embedded));
        }
    }
    return converted;
}

int ItemTypeOf(const Message& message) {
    static constexpr std::pair<std::u16string_view, int> kClasses[] = {{u"ipm.note", 1},    {u"ipm.post", 1},
                                                                       {u"ipm.contact", 3}, {u"ipm.appointment", 6},
                                                                       {u"ipm.task", 7},    {u"ipm.stickynote", 14}};
    const Property* stored = message.properties.Find(PR_MESSAGE_CLASS_W);
    std::u16string name = stored == nullptr ? u"ipm.note" : TextOf(stored);  // what the writer adds
    for (char16_t& unit : name) {
        unit = unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit + 32) : unit;
    }
    for (const auto& [prefix, type] : kClasses) {
        if (name == prefix || name.starts_with(std::u16string(prefix) + u".")) {
            return type;
        }
    }
    return -1;
}

std::vector<std::string> ComparedKeys() {
    std::vector<std::string> keys;
    for (const int type : {1, 3, 6, 7, 14}) {
        for (const FieldRow& row : FieldsOf(type)) {
            keys.emplace_back(row.key);
        }
    }
    return keys;
}

void CompareRecord(const Value& record, const Message& message, bool isEmbedded, const std::string& where,
                   std::vector<std::string>& differences) {
    Comparison fields(record, where, differences);
    const int type = ItemTypeOf(message);
    fields.Same("schemaUID", type);
    fields.Same("eobj_vx_lErrors", std::int64_t{0});
    fields.Same("common_bIsPublic", false);
    fields.Same("common_sDigitallySigned", false);
    CompareSetFields(record, type, fields);
    for (const FieldRow& row : FieldsOf(type)) {
        fields.Same(row.key, Expected(row, message.properties));
    }
    CompareBody(message, std::string(PrefixOf(type)) + "sBody", record, fields);
    if (const auto list = AttachmentsOf(message); list && !isEmbedded && type != 14) {
        fields.Same(std::string(PrefixOf(type)) + "sAttachments", *list);
    }
    switch (type) {
        case 1: CompareMail(message, isEmbedded, fields); break;
        case 3: CompareContact(message, fields); break;
        case 6: CompareCalendar(message, fields); break;
        case 7: CompareTask(message, fields); break;
        default: break;
    }
}

}  // namespace vx_testing
