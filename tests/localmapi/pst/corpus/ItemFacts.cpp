#include "tests/localmapi/pst/corpus/ItemFacts.h"

#include "localmapi/pst/ltp/Values.h"
#include "localmapi/pst/messaging/PropertyIds.h"
#include "platform/CodePage.h"
#include "tests/localmapi/pst/support/Sha1.h"

#include <array>
#include <span>
#include <utility>

namespace localmapi::testing {

namespace {

using pst::IdOf;
using pst::PropertyType;

constexpr std::size_t kRecordedRecipients = 25;

// Length and digest, read in pieces of an awkward size.
std::pair<std::uint64_t, std::string> Digest(pst::ValueStream& stream) {
    Sha1 digest;
    std::array<std::byte, 5003> piece{};
    std::uint64_t at = 0;
    for (;;) {
        const Result<std::size_t> got = stream.ReadAt(at, piece);
        if (!got) {
            return {at, "unreadable: " + got.Failure().text};
        }
        if (*got == 0) {
            break;
        }
        digest.Add(ByteView(piece.data(), *got));
        at += *got;
    }
    return {at, digest.Digest()};
}

struct TextFact {
    const char* name;
    ULONG tag;
};
constexpr auto kTexts = std::to_array<TextFact>({
    {"class", PR_MESSAGE_CLASS},
    {"sender_name", PR_SENDER_NAME},
    {"sender_email", PR_SENDER_EMAIL_ADDRESS},
    {"sent_repr_name", PR_SENT_REPRESENTING_NAME},
    {"sent_repr_email", PR_SENT_REPRESENTING_EMAIL_ADDRESS},
    {"message_id", PR_INTERNET_MESSAGE_ID},
    {"display_to", PR_DISPLAY_TO},
    {"display_cc", PR_DISPLAY_CC},
    {"display_name", PR_DISPLAY_NAME},
});
constexpr auto kNumbers = std::to_array<TextFact>({
    {"size_0e08", PR_MESSAGE_SIZE},
    {"flags_0e07", PR_MESSAGE_FLAGS},
    {"internet_cpid", PR_INTERNET_CPID},
    {"codepage", PR_MESSAGE_CODEPAGE},
    {"importance", PR_IMPORTANCE},
});
constexpr auto kTimes = std::to_array<TextFact>({
    {"submit", PR_CLIENT_SUBMIT_TIME},
    {"delivery", PR_MESSAGE_DELIVERY_TIME},
    {"created", PR_CREATION_TIME},
    {"modified", PR_LAST_MODIFICATION_TIME},
});

void AddBodies(Facts& facts, pst::Message& message) {
    pst::PropertyContext& properties = message.Properties();
    if (Result<pst::PropertyValue> body = properties.Read(IdOf(PR_BODY))) {
        const auto [length, sha1] = Digest(body->bytes);
        Put(facts, "plain",
            length == 0
                ? ""
                : (body->type == PropertyType::Unicode ? "001f " : "001e ") + std::to_string(length) + ' ' + sha1);
    }
    if (Result<pst::PropertyValue> body = properties.Read(IdOf(PR_HTML))) {
        const auto [length, sha1] = Digest(body->bytes);
        facts["html"] = std::to_string(length) + ' ' + sha1;
    }
    if (Result<pst::PropertyValue> body = properties.Read(IdOf(PR_RTF_COMPRESSED))) {
        facts["rtf compressed"] = std::to_string(Digest(body->bytes).first);
    }
}

void AddRecipients(Facts& facts, pst::Message& message) {
    Result<pst::TableContext> table = message.OpenRecipients();
    facts["recipients"] = std::to_string(table ? table->RowCount() : 0);
    if (!table) {
        return;
    }
    const auto text = [&](std::size_t row, ULONG tag) {
        Result<pst::PropertyValue> cell = table->Cell(row, IdOf(tag));
        Result<CStringW> value = cell ? pst::Text(*cell, message.CodePage()) : Result<CStringW>(CStringW{});
        return value ? Utf8(*value) : std::string();
    };
    for (std::size_t row = 0; row < table->RowCount() && row < kRecordedRecipients; ++row) {
        const std::string prefix = "recipient " + std::to_string(row) + ' ';
        Put(facts, prefix + "name", text(row, PR_DISPLAY_NAME));
        Put(facts, prefix + "email", text(row, PR_EMAIL_ADDRESS));
        Put(facts, prefix + "smtp", text(row, PR_SMTP_ADDRESS));
        Result<pst::PropertyValue> cell = table->Cell(row, IdOf(PR_RECIPIENT_TYPE));
        const auto type = cell ? pst::Integer(*cell) : std::nullopt;
        Put(facts, prefix + "type", type == 1 ? "to" : type == 2 ? "cc" : type == 3 ? "bcc" : "");
    }
}

void AddAttachments(Facts& facts, pst::Message& message) {
    const std::vector<pst::NodeId> ids = message.Attachments();
    facts["attachments"] = std::to_string(ids.size());
    for (std::size_t i = 0; i < ids.size(); ++i) {
        const std::string prefix = "attachment " + std::to_string(i) + ' ';
        Result<pst::Attachment> attachment = message.OpenAttachment(ids[i]);
        if (!attachment) {
            facts[prefix + "unreadable"] = attachment.Failure().text;
            continue;
        }
        facts[prefix + "method"] = std::to_string(static_cast<int>(attachment->Method()));
        CStringW name = attachment->Text(IdOf(PR_ATTACH_FILENAME));
        if (name.empty()) {
            name = attachment->Text(IdOf(PR_ATTACH_LONG_FILENAME));
        }
        if (name.empty()) {
            name = attachment->Text(IdOf(PR_DISPLAY_NAME));
        }
        Put(facts, prefix + "name", Utf8(name));
        if (const auto size = pst::ReadInteger(attachment->Properties(), IdOf(PR_ATTACH_SIZE))) {
            facts[prefix + "size"] = std::to_string(*size);
        }
        Put(facts, prefix + "long name", Utf8(attachment->Text(IdOf(PR_ATTACH_LONG_FILENAME))));
        if (Result<pst::ValueStream> data = attachment->OpenData()) {
            const auto [length, sha1] = Digest(*data);
            facts[prefix + "content"] = std::to_string(length) + ' ' + sha1;
            facts[prefix + "length"] = std::to_string(length);
        }
        if (Result<pst::Message> embedded = attachment->OpenMessage()) {
            PutAll(facts, prefix, FactsOf(*embedded));
        }
    }
}

}  // namespace

std::string Utf8(WideView text) {
    CStringW shown(text);
    for (WCHAR& unit : shown) {
        if (unit >= 0x80 && unit < 0xA0) {
            unit = static_cast<WCHAR>(0xFFFD);
        }
    }
    if (shown.empty()) {
        return {};
    }
    std::string bytes(shown.size() * 3, '\0');
    const int length = WideCharToMultiByte(65001, 0, shown.data(), static_cast<int>(shown.size()), bytes.data(),
                                           static_cast<int>(bytes.size()), nullptr, nullptr);
    bytes.resize(static_cast<std::size_t>(length));
    return bytes;
}

Facts FactsOf(pst::Message& message) {
    Facts facts;
    for (const TextFact& fact : kTexts) {
        Put(facts, fact.name, Utf8(message.Text(IdOf(fact.tag))));
    }
    Put(facts, "subject", Utf8(message.ReadSubject().text));
    for (const TextFact& fact : kNumbers) {
        if (const auto number = pst::ReadInteger(message.Properties(), IdOf(fact.tag))) {
            facts[fact.name] = std::to_string(*number);
        }
    }
    for (const TextFact& fact : kTimes) {
        if (const auto ticks = pst::ReadInteger(message.Properties(), IdOf(fact.tag))) {
            facts[fact.name] = TimeText(static_cast<std::uint64_t>(*ticks));
        }
    }
    AddBodies(facts, message);
    AddRecipients(facts, message);
    AddAttachments(facts, message);
    return facts;
}

Facts FactsOf(const nlohmann::json& item) {
    Facts facts;
    for (const std::span<const TextFact> list : {std::span<const TextFact>(kTexts), {kNumbers}, {kTimes}}) {
        for (const TextFact& fact : list) {
            Put(facts, fact.name, StringIn(item, fact.name));
        }
    }
    Put(facts, "subject", StringIn(item, "subject"));
    if (const auto body = item.find("plain"); body != item.end() && body->contains("raw")) {
        facts["plain"] = StringIn(*body, "type") + ' ' + DigestIn((*body)["raw"], "length", "sha1");
    }
    if (const auto body = item.find("html"); body != item.end()) {
        facts["html"] = DigestIn(*body, "length", "sha1");
    }
    if (const auto body = item.find("rtf"); body != item.end()) {
        facts["rtf compressed"] = StringIn(*body, "compressed");
    }
    facts["recipients"] = StringIn(item, "recipient_count");
    const nlohmann::json recipients = ListIn(item, "recipients");
    for (std::size_t i = 0; i < recipients.size(); ++i) {
        for (const char* key : {"name", "email", "smtp", "type"}) {
            Put(facts, "recipient " + std::to_string(i) + ' ' + key, StringIn(recipients[i], key));
        }
    }
    facts["attachments"] = StringIn(item, "attachment_count");
    const nlohmann::json attachments = ListIn(item, "attachments");
    for (std::size_t i = 0; i < attachments.size(); ++i) {
        const std::string prefix = "attachment " + std::to_string(i) + ' ';
        Put(facts, prefix + "method", StringIn(attachments[i], "method"));
        Put(facts, prefix + "name", StringIn(attachments[i], "name"));
        Put(facts, prefix + "size", StringIn(attachments[i], "size_0e20"));
        if (attachments[i].contains("sha1")) {
            facts[prefix + "content"] = DigestIn(attachments[i], "length", "sha1");
        }
        if (attachments[i].contains("embedded")) {
            PutAll(facts, prefix, FactsOf(attachments[i]["embedded"]));
        }
    }
    return facts;
}

}  // namespace localmapi::testing
