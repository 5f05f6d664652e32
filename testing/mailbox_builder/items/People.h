// Those who write and are written to, and what a message says of them. Any thread.
#pragma once

#include "mapi/MapiCodes.h"
#include "testing/mailbox_builder/Model.h"

#include <span>
#include <vector>

namespace mailbox_builder {

enum class AddressType : std::uint8_t { Smtp, Exchange, PrivateList, Fax };

struct Person {
    CStringW name;  // may be empty: the address is all that is known
    CStringW smtp = {};
    AddressType type = AddressType::Smtp;

    // Exchange: the distinguished name. Fax: "Name@number". Else empty.
    CStringW address = {};

    // What PR_ADDRTYPE and PR_EMAIL_ADDRESS say.
    CStringW TypeText() const;
    CStringW Address() const { return type == AddressType::Smtp ? smtp : address; }
};

// Someone of the organisation's directory: SMTP address and distinguished name end in `alias`.
Person Colleague(CStringW name, const CStringW& alias);
Person Outsider(CStringW name, CStringW smtp);

// One-off: [MS-OXCDATA] 2.2.5.1. Address book: 2.2.5.2. Private list, a personal distribution list in a folder of
// contacts: 2.2.5.3.
Bytes EntryIdOf(const Person& person);
Bytes OneOffEntryId(const Person& person);

// Address type and address in capitals, zero-terminated: [MS-OXOABK] 2.2.3.4.
Bytes SearchKeyOf(const Person& person);

// The values of PR_RECIPIENT_TYPE, MAPI_SUBMITTED aside.
enum class RecipientType : std::int32_t { Originator = 0, To = 1, Cc = 2, Bcc = 3 };

// Unresolved recipients have what the user typed: a name, and neither address nor entry id.
enum class Resolution : std::uint8_t { Resolved, Unresolved };

Properties Recipient(RecipientType type, const Person& person, Resolution resolution = Resolution::Resolved);

void AddRecipient(Message& message, RecipientType type, const Person& person,
                  Resolution resolution = Resolution::Resolved);

// Who acts (PR_SENDER_...) and on whose behalf (PR_SENT_REPRESENTING_...).
void SetSender(Properties& properties, const Person& person);
void SetRepresented(Properties& properties, const Person& person);
void SetReceivedBy(Properties& properties, const Person& person);

// PR_REPLY_RECIPIENT_NAMES and PR_REPLY_RECIPIENT_ENTRIES, a FLATENTRYLIST: [MS-OXOMSG] 2.2.1.43.
void SetReplyTo(Properties& properties, std::span<const Person> people);

}  // namespace mailbox_builder
