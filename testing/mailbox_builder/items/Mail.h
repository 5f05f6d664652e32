// E-mails: envelopes, threads, flags. Any thread.
#pragma once

#include "mapi/MapiCodes.h"
#include "testing/mailbox_builder/Model.h"
#include "testing/mailbox_builder/items/People.h"
#include "testing/mailbox_builder/items/Wording.h"

#include <initializer_list>
#include <optional>
#include <span>
#include <vector>

namespace mailbox_builder {

// What every e-mail has. The subject is `prefix` and `subject` together; a thread shares `subject`.
struct Envelope {
    CStringW prefix = {};
    CStringW subject = {};
    Person from = {};
    std::optional<Person> onBehalfOf = {};
    std::vector<Person> to = {};
    std::vector<Person> cc = {};
    std::vector<Person> bcc = {};
    Time sent = {};
    unsigned codePage = 1252;
    CStringW messageClass = Wide("IPM.Note");
};

// A message that was sent and has arrived and been read: sender, recipients, times, subject, conversation, message id
// and transport headers. No body. Messages that agree in sender, subject and time of sending are equal.
Message MakeMail(const Envelope& envelope);

// One that was never sent: PR_MESSAGE_FLAGS say so, and there are neither headers nor a message id nor a delivery.
Message MakeDraft(const Envelope& envelope);

// "<...@example.com>", made of the envelope.
CStringW MessageIdOf(const Envelope& envelope);

// Makes `reply` the answer to `first`, by way of `between` further messages: its message ids, references, and a
// conversation index one level deeper than there are messages between: [MS-OXOMSG] 2.2.1.3.
void Answer(Message& reply, const Envelope& first, std::span<const Envelope> between = {});

// PR_SUBJECT with its hidden prefix ([MS-PST] 2.5.3.1.1), and what is derived from it.
void SetSubject(Properties& properties, const CStringW& prefix, const CStringW& subject);

void SetCreated(Properties& properties, Time created, Time modified);
void SetCategories(Properties& properties, std::vector<CStringW> categories);
void MarkUnread(Properties& properties);

enum class Importance : std::int32_t { Low = 0, Normal = 1, High = 2 };
void SetImportance(Properties& properties, Importance importance);

enum class Sensitivity : std::int32_t { Normal = 0, Personal = 1, Private = 2, Confidential = 3 };
void SetSensitivity(Properties& properties, Sensitivity sensitivity);

// PR_ICON_INDEX and PR_LAST_VERB_EXECUTED say it.
enum class AnsweredBy : std::uint8_t { Reply, ReplyToAll, Forward };
void MarkAnswered(Properties& properties, AnsweredBy how, Time when);

// A flag for follow-up: [MS-OXOFLAG]. With `completed` it is a flag that is done.
struct FollowUp {
    CStringW request = Wide("Follow up");
    Time start = {};
    Time due = {};
    std::optional<Time> reminder = {};
    std::optional<Time> completed = {};
};
void SetFollowUp(Properties& properties, const FollowUp& followUp);

// The headers of a mailing list, as properties of their own and among the transport headers.
void SetMailingList(Properties& properties, const CStringW& list, const CStringW& domain);

// Adds a line to PR_TRANSPORT_MESSAGE_HEADERS_W, before the empty line that ends them.
void AddHeader(Properties& properties, const CStringW& name, const CStringW& value);

}  // namespace mailbox_builder
