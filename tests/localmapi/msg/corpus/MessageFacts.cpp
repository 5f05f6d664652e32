#include "tests/localmapi/msg/corpus/MessageFacts.h"

#include "localmapi/base/Format.h"
#include "localmapi/props/Values.h"
#include "mapi/PropTags.h"
#include "tests/localmapi/msg/support/Files.h"
#include "tests/localmapi/pst/support/Sha1.h"

#include <array>
#include <span>
#include <string_view>

namespace localmapi::testing {

namespace {

struct Fact {
    const char* name;
    ULONG tag;
};
constexpr auto kTexts = std::to_array<Fact>({
    {"message_class", PR_MESSAGE_CLASS},
    {"subject", PR_SUBJECT},
    {"normalized_subject", PR_NORMALIZED_SUBJECT},
    {"subject_prefix", PR_SUBJECT_PREFIX},
    {"conversation_topic", PR_CONVERSATION_TOPIC},
    {"sender_name", PR_SENDER_NAME},
    {"sender_email", PR_SENDER_EMAIL_ADDRESS},
    {"sender_addrtype", PR_SENDER_ADDRTYPE},
    {"sent_repr_name", PR_SENT_REPRESENTING_NAME},
    {"sent_repr_email", PR_SENT_REPRESENTING_EMAIL_ADDRESS},
    {"received_by_name", PR_RECEIVED_BY_NAME},
    {"display_to", PR_DISPLAY_TO},
    {"display_cc", PR_DISPLAY_CC},
    {"display_bcc", PR_DISPLAY_BCC},
    {"internet_message_id", PR_INTERNET_MESSAGE_ID},
    {"in_reply_to", PR_IN_REPLY_TO_ID},
});
constexpr auto kNumbers = std::to_array<Fact>({
    {"importance", PR_IMPORTANCE},
    {"priority", PR_PRIORITY},
    {"sensitivity", PR_SENSITIVITY},
    {"message_flags", PR_MESSAGE_FLAGS},
    {"icon_index", PR_ICON_INDEX},
    {"native_body", PR_NATIVE_BODY_INFO},
    {"internet_cpid_3fde", PR_INTERNET_CPID},
    {"codepage_3ffd", PR_MESSAGE_CODEPAGE},
    {"locale_3ff1", PR_MESSAGE_LOCALE_ID},
});
constexpr auto kTimes = std::to_array<Fact>({
    {"client_submit_time", PR_CLIENT_SUBMIT_TIME},
    {"delivery_time", PR_MESSAGE_DELIVERY_TIME},
    {"creation_time", PR_CREATION_TIME},
    {"last_modification_time", PR_LAST_MODIFICATION_TIME},
});
constexpr auto kRecipientTexts = std::to_array<Fact>({
    {"name", PR_DISPLAY_NAME},
    {"email", PR_EMAIL_ADDRESS},
    {"addrtype", PR_ADDRTYPE},
    {"smtp", PR_SMTP_ADDRESS},
});
constexpr auto kAttachmentTexts = std::to_array<Fact>({
    {"long_filename", PR_ATTACH_LONG_FILENAME},
    {"filename", PR_ATTACH_FILENAME},
    {"display_name", PR_DISPLAY_NAME},
    {"extension", PR_ATTACH_EXTENSION},
    {"mime_tag", PR_ATTACH_MIME_TAG},
    {"content_id", PR_ATTACH_CONTENT_ID},
});

std::string Digest(const std::string& bytes) {
    return std::to_string(bytes.size()) + ' '
           + Sha1Of(ByteView(reinterpret_cast<const std::byte*>(bytes.data()), bytes.size()));
}

std::string TextIn(PropertySource& source, ULONG tag) {
    return source.TagOf(PROP_ID(tag)) ? TextOf(source, PROP_ID(tag)) : std::string();
}

std::string NumberIn(PropertySource& source, ULONG tag) {
    Arena memory;
    SPropValue value{};
    const bool isThere = source.Read(PROP_ID(tag), 8, memory, value) && PROP_TYPE(value.ulPropTag) == PT_LONG;
    return isThere ? std::to_string(value.Value.l) : std::string();
}

std::string CellText(RowSource& rows, std::size_t row, ULONG tag) {
    Arena memory;
    SPropValue value{};
    if (!rows.Read(row, PROP_ID(tag), memory, value)) {
        return {};
    }
    ChangeWidth(value, PT_UNICODE, rows.CodePage(row), memory);
    return PROP_TYPE(value.ulPropTag) == PT_UNICODE ? ToNarrow(value.Value.lpszW, 65001) : std::string();
}

void AddTimes(Facts& facts, MessageSource& message) {
    for (const Fact& fact : kTimes) {
        Arena memory;
        SPropValue value{};
        if (message.Read(PROP_ID(fact.tag), 8, memory, value) && PROP_TYPE(value.ulPropTag) == PT_SYSTIME) {
            facts[fact.name] =
                TimeText(std::uint64_t{value.Value.ft.dwHighDateTime} << 32 | value.Value.ft.dwLowDateTime);
        }
    }
}

void AddBodies(Facts& facts, MessageSource& message) {
    if (const auto tag = message.TagOf(PROP_ID(PR_BODY))) {
        const std::string bytes = BytesIn(message, PROP_ID(PR_BODY));
        facts["body"] = Digest(bytes);
        facts["body terminated"] = Digest(bytes + std::string(PROP_TYPE(*tag) == PT_UNICODE ? 2 : 1, '\0'));
        facts["body type"] = PROP_TYPE(*tag) == PT_UNICODE ? "001f" : "001e";
        facts["body text"] = Digest(TextOf(message, PROP_ID(PR_BODY)));
    }
    if (message.TagOf(PROP_ID(PR_HTML))) {
        const std::string bytes = BytesIn(message, PROP_ID(PR_HTML));
        facts["html"] = Digest(bytes);
        facts["html terminated"] = Digest(bytes + '\0');
    }
    if (message.TagOf(PROP_ID(PR_RTF_COMPRESSED))) {
        facts["rtf"] = Digest(BytesIn(message, PROP_ID(PR_RTF_COMPRESSED)));
    }
}

void AddRecipients(Facts& facts, MessageSource& message) {
    const auto rows = message.Recipients();
    facts["recipients"] = std::to_string(rows->Count());
    for (std::size_t row = 0; row < rows->Count(); ++row) {
        const std::string prefix = "recipient " + std::to_string(row) + ' ';
        for (const Fact& fact : kRecipientTexts) {
            Put(facts, prefix + fact.name, CellText(*rows, row, fact.tag));
        }
        static constexpr std::array kTypes = {"originator", "to", "cc", "bcc"};
        Arena memory;
        SPropValue value{};
        if (rows->Read(row, PROP_ID(PR_RECIPIENT_TYPE), memory, value) && value.Value.ul < kTypes.size()) {
            facts[prefix + "type"] = kTypes[value.Value.ul];
        }
    }
}

std::string ElementList(IStorage& storage) {
    std::string list;
    for (const std::string& name : ElementsOf(storage)) {
        list += name + '\n';
    }
    return list;
}

void AddAttachments(Facts& facts, MessageSource& message) {
    const std::vector<ULONG> numbers = message.AttachmentNumbers();
    facts["attachments"] = std::to_string(numbers.size());
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        const std::string prefix = "attachment " + std::to_string(i) + ' ';
        const auto attachment = message.OpenAttachment(numbers[i]);
        if (!attachment) {
            facts[prefix + "failure"] = attachment.Failure().text;
            continue;
        }
        for (const Fact& fact : kAttachmentTexts) {
            Put(facts, prefix + fact.name, TextIn(**attachment, fact.tag));
        }
        Put(facts, prefix + "method", NumberIn(**attachment, PR_ATTACH_METHOD));
        if ((*attachment)->TagOf(PROP_ID(PR_ATTACH_DATA_BIN)) == PR_ATTACH_DATA_BIN) {
            facts[prefix + "content"] = Digest(BytesIn(**attachment, PROP_ID(PR_ATTACH_DATA_BIN)));
        }
        if (const auto storage = (*attachment)->OpenStorage()) {
            facts[prefix + "storage"] = ElementList(**storage);
        }
        if (const auto embedded = (*attachment)->OpenMessage()) {
            PutAll(facts, prefix, FactsOf(**embedded));
        }
    }
}

void AddRecordedParts(Facts& facts, const nlohmann::json& message) {
    facts["recipients"] = StringIn(message, "recipient_count");
    facts["attachments"] = StringIn(message, "attachment_count");
    const nlohmann::json recipients = ListIn(message, "recipients");
    for (std::size_t i = 0; i < recipients.size(); ++i) {
        for (const char* key : {"name", "email", "addrtype", "smtp", "type"}) {
            Put(facts, "recipient " + std::to_string(i) + ' ' + key, StringIn(recipients[i], key));
        }
    }
    const nlohmann::json attachments = ListIn(message, "attachments");
    for (std::size_t i = 0; i < attachments.size(); ++i) {
        const nlohmann::json& attachment = attachments[i];
        const std::string prefix = "attachment " + std::to_string(i) + ' ';
        for (const Fact& fact : kAttachmentTexts) {
            Put(facts, prefix + fact.name, StringIn(attachment, fact.name));
        }
        Put(facts, prefix + "method", StringIn(attachment, "method"));
        if (attachment.contains("sha1")) {
            facts[prefix + "content"] = DigestIn(attachment, "size", "sha1");
        }
        if (attachment.contains("ole_streams")) {
            std::string list;
            for (const nlohmann::json& name : attachment["ole_streams"]) {
                list += name.get<std::string>() + '\n';
            }
            facts[prefix + "storage"] = list;
        }
        if (attachment.contains("embedded")) {
            PutAll(facts, prefix, FactsOf(attachment["embedded"]));
        }
    }
}

}  // namespace

Facts FactsOf(MessageSource& message) {
    Facts facts;
    for (const Fact& fact : kTexts) {
        Put(facts, fact.name, TextIn(message, fact.tag));
    }
    for (const Fact& fact : kNumbers) {
        Put(facts, fact.name, NumberIn(message, fact.tag));
    }
    if (const std::string headers = TextIn(message, PR_TRANSPORT_MESSAGE_HEADERS); !headers.empty()) {
        facts["transport_headers"] = std::to_string(ToWide(headers, 65001).size());
    }
    facts["property_count"] = std::to_string(message.Tags().size());
    AddTimes(facts, message);
    AddBodies(facts, message);
    AddRecipients(facts, message);
    AddAttachments(facts, message);
    return facts;
}

Facts FactsOf(const nlohmann::json& message) {
    Facts facts;
    for (const std::span<const Fact> list : {std::span<const Fact>(kTexts), {kNumbers}, {kTimes}}) {
        for (const Fact& fact : list) {
            Put(facts, fact.name, StringIn(message, fact.name));
        }
    }
    if (const auto headers = message.find("transport_headers"); headers != message.end()) {
        facts["transport_headers"] = StringIn(*headers, "chars");
    }
    Put(facts, "property_count", StringIn(message, "property_count"));
    if (const auto body = message.find("body"); body != message.end()) {
        facts["body"] = DigestIn((*body)["raw"], "length", "sha1");
        facts["body type"] = StringIn(*body, "type");
        facts["body text"] = DigestIn(*body, "utf8_bytes", "utf8_sha1");
    }
    if (const auto html = message.find("html"); html != message.end()) {
        facts["html"] = DigestIn(*html, "length", "sha1");
    }
    if (const auto rtf = message.find("rtf"); rtf != message.end()) {
        facts["rtf"] = DigestIn(*rtf, "compressed_length", "compressed_sha1");
    }
    AddRecordedParts(facts, message);
    return facts;
}

}  // namespace localmapi::testing
