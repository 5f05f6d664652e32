#include "testing/mailbox_builder/items/People.h"

#include "mapi/PropTags.h"
#include "testing/mailbox_builder/ByteWriter.h"
#include "testing/mailbox_builder/items/Wording.h"

#include <utility>

namespace mailbox_builder {
namespace {

constexpr GUID kOneOffProvider = {0xA41F2B81, 0xA3BE, 0x1910, {0x9D, 0x6E, 0x00, 0xDD, 0x01, 0x0F, 0x54, 0x02}};
constexpr GUID kDirectoryProvider = {0xC840A7DC, 0x42C0, 0x1A10, {0xB4, 0xB9, 0x08, 0x00, 0x2B, 0x2F, 0xE1, 0x82}};
constexpr GUID kContactsProvider = {0x0AAA42FE, 0xC718, 0x101A, {0xE8, 0x85, 0x0B, 0x65, 0x1C, 0x24, 0x00, 0x00}};

constexpr std::int32_t kMailUser = 6;            // MAPI_MAILUSER
constexpr std::int32_t kDistributionList = 8;    // MAPI_DISTLIST
constexpr std::int32_t kPrivateDisplayList = 5;  // DT_PRIVATE_DISTLIST

CStringW Upper(CStringW text) {
    for (WCHAR& unit : text) {
        if (unit >= 'a' && unit <= 'z') {
            unit = static_cast<WCHAR>(unit - 'a' + 'A');
        }
    }
    return text;
}

Bytes DirectoryEntryId(const Person& person) {
    constexpr std::uint32_t kVersion = 1;
    constexpr std::uint32_t kLocalMailUser = 0;
    return ByteWriter()
        .U32(0)
        .Append(BytesOf(kDirectoryProvider))
        .U32(kVersion)
        .U32(kLocalMailUser)
        .Append(AsBytes(ToCodePage(person.address, 1252)))
        .U8(0)
        .Take();
}

Bytes PrivateListEntryId(const Person& person) {
    constexpr std::uint32_t kVersion = 3;
    constexpr std::uint32_t kPersonalList = 5;
    const Bytes inner = OneOffEntryId(person);
    return ByteWriter()
        .U32(0)
        .Append(BytesOf(kContactsProvider))
        .U32(kVersion)
        .U32(kPersonalList)
        .U32(0xFF)
        .U32(inner.size())
        .Append(inner)
        .Take();
}

// The tags that say the same of the four parts that people play in a message.
struct PartTags {
    std::uint32_t name, type, address, entryId, searchKey, smtp;
};

void SetPart(Properties& properties, const PartTags& tags, const Person& person) {
    properties.Set(tags.name, person.name)
        .Set(tags.type, person.TypeText())
        .Set(tags.address, person.Address())
        .Set(tags.entryId, EntryIdOf(person))
        .Set(tags.searchKey, SearchKeyOf(person))
        .Set(tags.smtp, person.smtp);
}

}  // namespace

CStringW Person::TypeText() const {
    switch (type) {
        case AddressType::Exchange: return "EX"_w;
        case AddressType::PrivateList: return "MAPIPDL"_w;
        case AddressType::Fax: return "FAX"_w;
        default: return "SMTP"_w;
    }
}

Person Colleague(CStringW name, const CStringW& alias) {
    return {std::move(name), alias + "@example.com"_w, AddressType::Exchange,
            "/o=Example Works/ou=First Administrative Group/cn=Recipients/cn="_w + alias};
}

Person Outsider(CStringW name, CStringW smtp) {
    return {std::move(name), std::move(smtp)};
}

Bytes OneOffEntryId(const Person& person) {
    constexpr std::uint32_t kWideText = 0x8000;
    constexpr std::uint32_t kNoLookup = 0x1000;
    constexpr std::uint32_t kNoRichText = 0x0001;
    ByteWriter blob;
    blob.U32(0).Append(BytesOf(kOneOffProvider)).U16(0).U16(kWideText | kNoLookup | kNoRichText);
    for (const CStringW& text : {person.name, person.TypeText(), person.Address()}) {
        blob.Append(AsBytes(text)).U16(0);
    }
    return blob.Take();
}

Bytes EntryIdOf(const Person& person) {
    switch (person.type) {
        case AddressType::Exchange: return DirectoryEntryId(person);
        case AddressType::PrivateList: return PrivateListEntryId(person);
        default: return OneOffEntryId(person);
    }
}

Bytes SearchKeyOf(const Person& person) {
    const CStringW key = person.TypeText() + ":"_w + Upper(person.Address());
    return ByteWriter().Append(AsBytes(ToCodePage(key, 1252))).U8(0).Take();
}

Properties Recipient(RecipientType type, const Person& person, Resolution resolution) {
    Properties row;
    row.Set(PR_RECIPIENT_TYPE, static_cast<std::int32_t>(type)).Set(PR_DISPLAY_NAME, person.name);
    row.Set(PR_RESPONSIBILITY, false).Set(PR_SEND_RICH_INFO, person.type == AddressType::Exchange);
    if (resolution == Resolution::Unresolved) {
        return row;
    }
    const bool isList = person.type == AddressType::PrivateList;
    row.Set(PR_ADDRTYPE, person.TypeText())
        .Set(PR_EMAIL_ADDRESS, person.Address())
        .Set(PR_ENTRYID, EntryIdOf(person))
        .Set(PR_SEARCH_KEY, SearchKeyOf(person))
        .Set(PR_RECORD_KEY, EntryIdOf(person))
        .Set(PR_OBJECT_TYPE, isList ? kDistributionList : kMailUser)
        .Set(PR_DISPLAY_TYPE, isList ? kPrivateDisplayList : 0)
        .Set(PR_RECIPIENT_DISPLAY_NAME, person.name)
        .Set(PR_RECIPIENT_ENTRYID, EntryIdOf(person));
    if (!person.smtp.empty()) {
        row.Set(PR_SMTP_ADDRESS, person.smtp);
    }
    return row;
}

void AddRecipient(Message& message, RecipientType type, const Person& person, Resolution resolution) {
    Properties row = Recipient(type, person, resolution);
    row.Set(PR_ROWID, static_cast<std::int32_t>(message.recipients.size()));
    message.recipients.push_back(std::move(row));
}

void SetSender(Properties& properties, const Person& person) {
    SetPart(properties,
            {PR_SENDER_NAME, PR_SENDER_ADDRTYPE, PR_SENDER_EMAIL_ADDRESS, PR_SENDER_ENTRYID, PR_SENDER_SEARCH_KEY,
             PR_SENDER_SMTP_ADDRESS},
            person);
}

void SetRepresented(Properties& properties, const Person& person) {
    SetPart(properties,
            {PR_SENT_REPRESENTING_NAME, PR_SENT_REPRESENTING_ADDRTYPE, PR_SENT_REPRESENTING_EMAIL_ADDRESS,
             PR_SENT_REPRESENTING_ENTRYID, PR_SENT_REPRESENTING_SEARCH_KEY, PR_SENT_REPRESENTING_SMTP_ADDRESS},
            person);
}

void SetReceivedBy(Properties& properties, const Person& person) {
    SetPart(properties,
            {PR_RECEIVED_BY_NAME, PR_RECEIVED_BY_ADDRTYPE, PR_RECEIVED_BY_EMAIL_ADDRESS, PR_RECEIVED_BY_ENTRYID,
             PR_RECEIVED_BY_SEARCH_KEY, PR_RECEIVED_BY_SMTP_ADDRESS},
            person);
}

void SetReplyTo(Properties& properties, std::span<const Person> people) {
    CStringW names;
    ByteWriter entries;
    for (const Person& person : people) {
        names += (names.empty() ? ""_w : ";"_w) + (person.name.empty() ? person.Address() : person.name);
        const Bytes id = EntryIdOf(person);
        entries.U32(id.size()).Append(id).Fill(localmapi::RoundUp(id.size(), 4) - id.size(), 0);
    }
    const Bytes flat = entries.Take();
    properties.Set(PR_REPLY_RECIPIENT_NAMES, names)
        .Set(PR_REPLY_RECIPIENT_ENTRIES, ByteWriter().U32(people.size()).U32(flat.size()).Append(flat).Take());
}

}  // namespace mailbox_builder
