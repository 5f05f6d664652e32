#include "testing/mailbox_builder/items/OtherItems.h"

#include "mapi/PropTags.h"
#include "testing/mailbox_builder/ByteWriter.h"
#include "testing/mailbox_builder/items/Attachments.h"
#include "testing/mailbox_builder/items/Bodies.h"
#include "testing/mailbox_builder/items/Dates.h"
#include "testing/mailbox_builder/items/Naming.h"
#include "testing/mailbox_builder/items/Wording.h"

#include <algorithm>

namespace mailbox_builder {
namespace {

Message MakeKept(const CStringW& messageClass, const CStringW& subject, Time created) {
    Message message = MakeDraft({.subject = subject, .sent = created, .messageClass = messageClass});
    message.properties.Set(PR_MESSAGE_FLAGS, 1);
    return message;
}

CStringW FirstLine(const CStringW& text) {
    return text.substr(0, std::min(text.find_first_of(Wide("\r\n")), text.size()));
}

// A DER element whose length takes two bytes behind its own mark: [X.690] 8.1.3.5.
Bytes DerElement(std::uint8_t tag, ByteView content) {
    return ByteWriter().U8(tag).U8(0x82).U8(content.Size() >> 8).U8(content.Size()).Append(content).Take();
}

// As much of an enveloped message (RFC 5652) as makes it one: its type, its version, and content that nobody can read.
Bytes MakeEnvelopedData(const Envelope& envelope) {
    ByteWriter oid;
    for (const int byte : {0x06, 0x09, 0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x07, 0x03}) {
        oid.U8(static_cast<std::uint64_t>(byte));
    }
    ByteWriter inner;
    inner.U8(0x02).U8(0x01).U8(0x00);  // the version
    auto state = static_cast<std::uint64_t>(envelope.sent.ticks) | 1;
    ByteWriter noise;
    while (noise.Size() < 1200) {
        state = state * 6364136223846793005u + 1442695040888963407u;
        noise.U8(state >> 56);
    }
    inner.Append(DerElement(0x04, noise.View()));
    const Bytes version = DerElement(0x30, inner.View());
    ByteWriter content;
    content.Append(oid.View()).Append(DerElement(0xA0, version));
    return DerElement(0x30, content.View());
}

Message MakeReport(const CStringW& messageClass, const CStringW& prefix, const Envelope& original, const Person& from,
                   Time when) {
    Message report = MakeMail({.prefix = prefix,
                               .subject = original.prefix + original.subject,
                               .from = from,
                               .to = {original.from},
                               .sent = when,
                               .messageClass = messageClass});
    const Bytes tag = AsBytes(ToCodePage(MessageIdOf(original), 1252));
    report.properties.Set(PR_REPORT_TAG, tag)
        .Set(PR_REPORT_TIME, when)
        .Set(PR_ORIGINAL_SUBJECT, original.prefix + original.subject)
        .Set(PR_ORIGINAL_SUBMIT_TIME, original.sent)
        .Set(PR_ORIG_MESSAGE_CLASS, original.messageClass)
        .Set(PR_ORIGINAL_SENDER_NAME, original.from.name);
    Answer(report, original);
    return report;
}

}  // namespace

Message MakeNote(const NoteFacts& facts) {
    Message note = MakeKept(Wide("IPM.StickyNote"), FirstLine(facts.text), facts.created);
    Properties& properties = note.properties;
    properties.Set(PR_MESSAGE_DELIVERY_TIME, facts.created).Set(PR_ICON_INDEX, 0x300 + static_cast<int>(facts.color));
    SetPlainBody(note, facts.text);
    Set(properties, PidLidNoteColor, static_cast<std::int32_t>(facts.color));
    Set(properties, PidLidNoteWidth, facts.width);
    Set(properties, PidLidNoteHeight, facts.height);
    Set(properties, PidLidNoteX, 80);
    Set(properties, PidLidNoteY, 96);
    // Where some clients ask for the colour.
    constexpr NamedProperty kColorToo = {&PSETID_Note, 0x831C, PT_LONG};
    Set(properties, kColorToo, static_cast<std::int32_t>(facts.color));
    return note;
}

Message MakeJournalEntry(const CStringW& subject, const CStringW& kind, Time start, int minutes,
                         const CStringW& notes) {
    Message entry = MakeKept(Wide("IPM.Activity"), subject, start);
    Properties& properties = entry.properties;
    Set(properties, PidLidLogType, kind);
    Set(properties, PidLidLogTypeDesc, kind);
    Set(properties, PidLidLogStart, start);
    Set(properties, PidLidLogEnd, After(start, minutes));
    Set(properties, PidLidLogDuration, minutes);
    Set(properties, PidLidLogFlags, 0);
    Set(properties, PidLidCommonStart, start);
    Set(properties, PidLidCommonEnd, After(start, minutes));
    SetPlainBody(entry, notes);
    return entry;
}

Message MakePost(const Envelope& envelope, const CStringW& text) {
    Envelope post = envelope;
    post.messageClass = Wide("IPM.Post");
    post.to.clear();
    Message message = MakeMail(post);
    SetPlainBody(message, text);
    return message;
}

Message MakeNonDelivery(const Envelope& original, const Message& sent, const Person& postmaster) {
    constexpr std::int32_t kTransferFailed = 1;
    constexpr std::int32_t kNoSuchMailbox = 0;
    const Person& lost = original.to.front();
    Message report =
        MakeReport(Wide("REPORT.IPM.Note.NDR"), Wide("Undeliverable: "), original, postmaster, After(original.sent, 3));
    const CStringW reason = Wide("550 5.1.1 The mailbox was not found at mx.example.net.");
    report.properties.Set(PR_REPORT_TEXT, Wide("Your message did not reach ") + lost.smtp + Wide(". ") + reason)
        .Set(PR_NDR_REASON_CODE, kTransferFailed)
        .Set(PR_NDR_DIAG_CODE, kNoSuchMailbox)
        .Set(PR_SUPPLEMENTARY_INFO, reason);
    SetPlainBody(report, Wide("Delivery has failed to these recipients:\r\n\r\n") + lost.name + Wide(" (") + lost.smtp
                             + Wide(")\r\n") + reason + Wide("\r\n"));
    report.attachments.push_back(AttachMessage(sent));
    return report;
}

Message MakeReadReceipt(const Envelope& original, const Person& reader, Time read) {
    Message receipt = MakeReport(Wide("REPORT.IPM.Note.IPNRN"), Wide("Read: "), original, reader, read);
    receipt.properties.Set(PR_RECEIPT_TIME, read);
    SetPlainBody(receipt, Wide("Your message was read by ") + reader.name + Wide(".\r\n"));
    return receipt;
}

Message MakeDocument(const CStringW& fileName, const CStringW& classSuffix, Bytes content, const CStringW& mediaType,
                     Time created) {
    Message document = MakeKept(Wide("IPM.Document.") + classSuffix, fileName, created);
    document.properties.Set(PR_DISPLAY_NAME, fileName);
    document.attachments.push_back(AttachBytes(fileName, std::move(content), mediaType));
    return document;
}

Message MakeFeedItem(const CStringW& title, const CStringW& channel, const CStringW& link, std::string_view html,
                     Time published) {
    Message item = MakeMail({.subject = title,
                             .from = Outsider(channel, Wide("feed@example.org")),
                             .sent = published,
                             .messageClass = Wide("IPM.Post.Rss")});
    SetHtmlBody(item, html);
    Set(item.properties, PidLidPostRssChannel, channel);
    Set(item.properties, PidLidPostRssChannelLink, Wide("https://feeds.example.org/all.xml"));
    Set(item.properties, PidLidPostRssItemLink, link);
    Set(item.properties, PidLidPostRssItemGuid, link + Wide("#id"));
    return item;
}

Message MakeEncrypted(const Envelope& envelope) {
    Envelope secured = envelope;
    secured.messageClass = Wide("IPM.Note.SMIME");
    Message message = MakeMail(secured);
    AddHeader(message.properties, Wide("Content-Type"),
              Wide("application/pkcs7-mime; smime-type=enveloped-data; name=\"smime.p7m\""));
    message.attachments.push_back(
        AttachBytes(Wide("smime.p7m"), MakeEnvelopedData(envelope), Wide("application/pkcs7-mime")));
    return message;
}

Message MakeClearSigned(const Envelope& envelope, std::string_view asciiText) {
    Envelope secured = envelope;
    secured.messageClass = Wide("IPM.Note.SMIME.MultipartSigned");
    Message message = MakeMail(secured);
    const std::string boundary = "----=_Signed_0001";
    const std::string type =
        "multipart/signed; protocol=\"application/pkcs7-signature\"; micalg=sha-256; boundary=\"" + boundary + "\"";
    std::string entity = "Content-Type: " + type + "\r\nMIME-Version: 1.0\r\n\r\n--" + boundary + "\r\n";
    entity += "Content-Type: text/plain; charset=us-ascii\r\nContent-Transfer-Encoding: 7bit\r\n\r\n";
    entity += asciiText;
    entity += "\r\n--" + boundary + "\r\nContent-Type: application/pkcs7-signature; name=\"smime.p7s\"\r\n";
    entity += "Content-Transfer-Encoding: base64\r\nContent-Disposition: attachment; filename=\"smime.p7s\"\r\n\r\n";
    entity += "MIAGCSqGSIb3DQEHAqCAMIACAQExDzANBglghkgBZQMEAgEFADCABgkqhkiG9w0BBwEAADEAAAAA\r\n";
    entity += "AAA=\r\n--" + boundary + "--\r\n";
    AddHeader(message.properties, Wide("Content-Type"), Wide(type));
    message.attachments.push_back(AttachBytes(Wide("smime.p7m"), AsBytes(entity), Wide("multipart/signed")));
    return message;
}

Message MakeViewDefinition(const CStringW& name, Time created) {
    Message view = MakeKept(Wide("IPM.Microsoft.FolderDesign.NamedView"), name, created);
    view.properties.Set(PR_DISPLAY_NAME, name);
    return view;
}

Message MakeSettings(const CStringW& messageClass, std::string_view xml, Time created) {
    constexpr std::int32_t kHasXml = 2;
    Message settings = MakeKept(messageClass, messageClass, created);
    settings.properties.Set(PR_ROAMING_DATATYPES, kHasXml).Set(PR_ROAMING_XMLSTREAM, AsBytes(xml));
    return settings;
}

}  // namespace mailbox_builder
