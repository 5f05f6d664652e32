#include "testing/mailbox_builder/items/Mail.h"

#include "mapi/PropTags.h"
#include "platform/FileTime.h"
#include "testing/mailbox_builder/ByteWriter.h"
#include "testing/mailbox_builder/items/Dates.h"
#include "testing/mailbox_builder/items/Naming.h"
#include "testing/mailbox_builder/items/Wording.h"

#include <array>
#include <cstdio>

namespace mailbox_builder {
namespace {

constexpr std::int32_t kRead = 0x01;    // MSGFLAG_READ
constexpr std::int32_t kUnsent = 0x08;  // MSGFLAG_UNSENT

// A message is underway for this long.
constexpr std::int64_t kDeliveryMinutes = 1;

// A hash that tells messages apart: FNV-1a over the UTF-16 units.
std::uint64_t HashOf(WideView text, std::uint64_t hash = 0xCBF29CE484222325u) {
    for (const WCHAR unit : text) {
        hash = (hash ^ unit) * 0x100000001B3u;
    }
    return hash;
}

template <class... Values>
CStringW Formatted(const char* format, Values... values) {
    std::array<char, 128> text{};
    std::snprintf(text.data(), text.size(), format, values...);
    return Wide(text.data());
}

// "Tue, 05 Mar 2024 09:30:00 +0000".
CStringW InternetDate(Time time) {
    static constexpr const char* kDays[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
    static constexpr const char* kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                              "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    const std::chrono::year_month_day date{DayOf(time)};
    const auto minute = static_cast<int>(MinutesOf(time) % kMinutesPerDay);
    return Formatted("%s, %02u %s %d %02d:%02d:00 +0000", kDays[std::chrono::weekday(DayOf(time)).c_encoding()],
                     static_cast<unsigned>(date.day()), kMonths[static_cast<unsigned>(date.month()) - 1],
                     static_cast<int>(date.year()), minute / 60, minute % 60);
}

// What a conversation index begins with, time and identity of its first message: [MS-OXOMSG] 2.2.1.3.
Bytes ConversationHeader(const Envelope& first) {
    ByteWriter blob;
    blob.U8(1);
    for (int shift = 48; shift >= 16; shift -= 8) {
        blob.U8(static_cast<std::uint64_t>(first.sent.ticks) >> shift);
    }
    const std::uint64_t hash = HashOf(first.subject);
    return blob.U64(hash).U64(HashOf(first.from.smtp, hash)).Take();
}

// The five bytes that an answer appends.
void AppendAnswer(ByteWriter& blob, Time first, Time answer) {
    const auto distance = static_cast<std::uint64_t>(answer.ticks - first.ticks);
    const bool isLong = (distance >> 49) != 0;
    const std::uint64_t units = (distance >> (isLong ? 23 : 18)) & 0x7FFFFFFF;
    const std::uint64_t coded = units | (isLong ? 0x80000000u : 0u);
    blob.U8(coded >> 24).U8(coded >> 16).U8(coded >> 8).U8(coded).U8(0x10);
}

CStringW AddressList(const std::vector<Person>& people) {
    CStringW list;
    for (const Person& person : people) {
        list += (list.empty() ? ""_w : ", "_w) + ("\""_w + person.name) + "\" <"_w + person.smtp + ">"_w;
    }
    return list;
}

// ASCII as it is; other text as one encoded word, RFC 2047.
CStringW HeaderText(const CStringW& text) {
    CStringW encoded = "=?utf-8?Q?"_w;
    bool isAscii = true;
    for (const char c : ToCodePage(text, 65001)) {
        const auto byte = static_cast<unsigned char>(c);
        isAscii = isAscii && byte < 0x80;
        encoded += byte == ' ' ? CStringW("_"_w) : Formatted("=%02X", static_cast<unsigned>(byte));
    }
    return isAscii ? text : encoded + "?="_w;
}

void SetTransportHeaders(Properties& properties, const Envelope& envelope) {
    properties.Set(PR_TRANSPORT_MESSAGE_HEADERS, CStringW("\r\n"_w));
    const CStringW host = envelope.from.smtp.substr(envelope.from.smtp.find(WCHAR{'@'}) + 1);
    AddHeader(properties, "Received"_w,
              "from mail."_w + host + " (mail."_w + host + " [192.0.2.25])\r\n\tby mx1.example.com with ESMTPS; "_w
                  + InternetDate(After(envelope.sent, kDeliveryMinutes)));
    AddHeader(properties, "From"_w, HeaderText(envelope.from.name) + " <"_w + envelope.from.smtp + ">"_w);
    if (!envelope.to.empty()) {
        AddHeader(properties, "To"_w, HeaderText(AddressList(envelope.to)));
    }
    if (!envelope.cc.empty()) {
        AddHeader(properties, "Cc"_w, HeaderText(AddressList(envelope.cc)));
    }
    AddHeader(properties, "Subject"_w, HeaderText(envelope.prefix + envelope.subject));
    AddHeader(properties, "Date"_w, InternetDate(envelope.sent));
    AddHeader(properties, "Message-ID"_w, MessageIdOf(envelope));
    AddHeader(properties, "MIME-Version"_w, "1.0"_w);
}

Message MakeUnsent(const Envelope& envelope) {
    Message message;
    message.codePage = envelope.codePage;
    Properties& properties = message.properties;
    properties.Set(PR_MESSAGE_CLASS, envelope.messageClass)
        .Set(PR_MESSAGE_CODEPAGE, static_cast<std::int32_t>(envelope.codePage))
        .Set(PR_PRIORITY, 0);
    SetImportance(properties, Importance::Normal);
    SetSensitivity(properties, Sensitivity::Normal);
    SetSubject(properties, envelope.prefix, envelope.subject);
    properties.Set(PR_CONVERSATION_INDEX, ConversationHeader(envelope));
    SetCreated(properties, envelope.sent, After(envelope.sent, 2 * kDeliveryMinutes));
    for (const Person& person : envelope.to) {
        AddRecipient(message, RecipientType::To, person);
    }
    for (const Person& person : envelope.cc) {
        AddRecipient(message, RecipientType::Cc, person);
    }
    for (const Person& person : envelope.bcc) {
        AddRecipient(message, RecipientType::Bcc, person);
    }
    return message;
}

}  // namespace

Message MakeMail(const Envelope& envelope) {
    Message message = MakeUnsent(envelope);
    Properties& properties = message.properties;
    SetSender(properties, envelope.from);
    SetRepresented(properties, envelope.onBehalfOf.value_or(envelope.from));
    properties.Set(PR_MESSAGE_FLAGS, kRead)
        .Set(PR_CLIENT_SUBMIT_TIME, envelope.sent)
        .Set(PR_MESSAGE_DELIVERY_TIME, After(envelope.sent, kDeliveryMinutes))
        .Set(PR_INTERNET_MESSAGE_ID, MessageIdOf(envelope))
        .Set(PR_ORIGINATOR_DELIVERY_REPORT_REQUESTED, false)
        .Set(PR_READ_RECEIPT_REQUESTED, false);
    SetTransportHeaders(properties, envelope);
    return message;
}

Message MakeDraft(const Envelope& envelope) {
    Message message = MakeUnsent(envelope);
    message.properties.Set(PR_MESSAGE_FLAGS, kRead | kUnsent);
    return message;
}

CStringW MessageIdOf(const Envelope& envelope) {
    const std::uint64_t hash = HashOf(envelope.from.smtp, HashOf(envelope.prefix + envelope.subject));
    return Formatted("<%016llx.%llx@mail.example.com>", static_cast<unsigned long long>(hash),
                     static_cast<unsigned long long>(envelope.sent.ticks));
}

void Answer(Message& reply, const Envelope& first, std::span<const Envelope> between) {
    Properties& properties = reply.properties;
    CStringW references = MessageIdOf(first);
    CStringW parent = references;
    ByteWriter index;
    index.Append(ConversationHeader(first));
    for (const Envelope& envelope : between) {
        parent = MessageIdOf(envelope);
        references += " "_w + parent;
        AppendAnswer(index, first.sent, envelope.sent);
    }
    const Property* sent = properties.Find(PR_CREATION_TIME);
    AppendAnswer(index, first.sent, std::get<Time>(sent->value));
    properties.Set(PR_CONVERSATION_INDEX, index.Take())
        .Set(PR_IN_REPLY_TO_ID, parent)
        .Set(PR_INTERNET_REFERENCES, references);
    if (properties.Find(PR_TRANSPORT_MESSAGE_HEADERS) != nullptr) {
        AddHeader(properties, "In-Reply-To"_w, parent);
        AddHeader(properties, "References"_w, references);
    }
}

void SetSubject(Properties& properties, const CStringW& prefix, const CStringW& subject) {
    CStringW stored(1, WCHAR{1});
    stored += static_cast<WCHAR>(prefix.size() + 1);
    stored += prefix + subject;
    CStringW url = prefix + subject + ".EML"_w;
    for (WCHAR& unit : url) {
        unit = unit == '/' || unit == '\\' ? WCHAR{'?'} : unit;
    }
    properties.Set(PR_SUBJECT, stored)
        .Set(PR_SUBJECT_PREFIX, prefix)
        .Set(PR_NORMALIZED_SUBJECT, subject)
        .Set(PR_CONVERSATION_TOPIC, subject)
        .Set(PR_URL_COMP_NAME, url);
}

void SetCreated(Properties& properties, Time created, Time modified) {
    properties.Set(PR_CREATION_TIME, created).Set(PR_LAST_MODIFICATION_TIME, modified);
}

void SetCategories(Properties& properties, std::vector<CStringW> categories) {
    Set(properties, PidNameKeywords, std::move(categories));
}

void MarkUnread(Properties& properties) {
    const Property* flags = properties.Find(PR_MESSAGE_FLAGS);
    const std::int32_t before = flags != nullptr ? std::get<std::int32_t>(flags->value) : 0;
    properties.Set(PR_MESSAGE_FLAGS, before & ~kRead);
}

void SetImportance(Properties& properties, Importance importance) {
    properties.Set(PR_IMPORTANCE, static_cast<std::int32_t>(importance));
}

void SetSensitivity(Properties& properties, Sensitivity sensitivity) {
    properties.Set(PR_SENSITIVITY, static_cast<std::int32_t>(sensitivity));
    Set(properties, PidLidPrivate, sensitivity == Sensitivity::Private);
}

void MarkAnswered(Properties& properties, AnsweredBy how, Time when) {
    constexpr std::int32_t kRepliedIcon = 261;
    constexpr std::int32_t kForwardedIcon = 262;
    constexpr std::int32_t kReplyVerb = 102;
    const bool isForward = how == AnsweredBy::Forward;
    properties.Set(PR_ICON_INDEX, isForward ? kForwardedIcon : kRepliedIcon)
        .Set(PR_LAST_VERB_EXECUTED, kReplyVerb + static_cast<std::int32_t>(how))
        .Set(PR_LAST_VERB_EXECUTION_TIME, when);
}

void SetFollowUp(Properties& properties, const FollowUp& followUp) {
    constexpr std::int32_t kComplete = 1;
    constexpr std::int32_t kFlagged = 2;
    constexpr std::int32_t kRedIcon = 6;
    properties.Set(PR_FLAG_STATUS, followUp.completed ? kComplete : kFlagged);
    Set(properties, PidLidFlagRequest, followUp.request);
    Set(properties, PidLidToDoTitle, followUp.request);
    Set(properties, PidLidTaskStartDate, followUp.start);
    Set(properties, PidLidTaskDueDate, followUp.due);
    Set(properties, PidLidCommonStart, followUp.start);
    Set(properties, PidLidCommonEnd, followUp.due);
    if (followUp.completed) {
        properties.Set(PR_FLAG_COMPLETE_TIME, *followUp.completed);
        Set(properties, PidLidTaskDateCompleted, *followUp.completed);
    } else {
        properties.Set(PR_FOLLOWUP_ICON, kRedIcon);
    }
    Set(properties, PidLidReminderSet, followUp.reminder.has_value());
    if (followUp.reminder) {
        Set(properties, PidLidReminderTime, *followUp.reminder);
        Set(properties, PidLidReminderSignalTime, *followUp.reminder);
    }
}

void SetMailingList(Properties& properties, const CStringW& list, const CStringW& domain) {
    const CStringW base = "<mailto:"_w + list + "-"_w;
    const CStringW help = base + "help@"_w + domain + ">"_w;
    const CStringW subscribe = base + "subscribe@"_w + domain + ">"_w;
    const CStringW unsubscribe = base + "unsubscribe@"_w + domain + ">"_w;
    properties.Set(PR_LIST_HELP, help).Set(PR_LIST_SUBSCRIBE, subscribe).Set(PR_LIST_UNSUBSCRIBE, unsubscribe);
    AddHeader(properties, "List-Id"_w, "<"_w + list + "."_w + domain + ">"_w);
    AddHeader(properties, "List-Help"_w, help);
    AddHeader(properties, "List-Subscribe"_w, subscribe);
    AddHeader(properties, "List-Unsubscribe"_w, unsubscribe);
    AddHeader(properties, "Precedence"_w, "list"_w);
}

void AddHeader(Properties& properties, const CStringW& name, const CStringW& value) {
    const Property* before = properties.Find(PR_TRANSPORT_MESSAGE_HEADERS);
    CStringW headers = before != nullptr ? std::get<CStringW>(before->value) : CStringW("\r\n"_w);
    headers.insert(headers.size() - 2, name + ": "_w + value + "\r\n"_w);
    properties.Set(PR_TRANSPORT_MESSAGE_HEADERS, headers);
}

}  // namespace mailbox_builder
