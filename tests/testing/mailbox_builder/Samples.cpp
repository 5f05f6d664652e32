#include "tests/testing/mailbox_builder/Samples.h"

#include "mapi/MapiGuids.h"
#include "mapi/PropTags.h"

#include <limits>

namespace mailbox_builder {

namespace {

constexpr Time kSubmitted{133'600'000'000'000'000};

// One of the bytes of a pattern, by its position.
std::byte PatternAt(std::uint64_t at, std::uint32_t seed) {
    const std::uint64_t mixed = (at / 8 + 1) * (0x9E37'79B9'7F4A'7C15U + 2 * std::uint64_t{seed});
    return static_cast<std::byte>((mixed ^ mixed >> 29) >> (at % 8 * 8));
}

void FillPattern(std::uint64_t offset, std::span<std::byte> out, std::uint32_t seed) {
    for (std::byte& byte : out) {
        byte = PatternAt(offset++, seed);
    }
}

template <class T>
std::vector<T> Extremes() {
    return {std::numeric_limits<T>::lowest(), T{-1}, T{0}, T{1}, std::numeric_limits<T>::max()};
}

}  // namespace

CStringW Wide(std::string_view ascii) {
    return CStringW(ascii.begin(), ascii.end());
}

Bytes Pattern(std::size_t size, std::uint32_t seed) {
    Bytes bytes(size);
    FillPattern(0, bytes, seed);
    return bytes;
}

Content PatternContent(std::uint64_t size, std::uint32_t seed) {
    return {size, [seed](std::uint64_t offset, std::span<std::byte> out) { FillPattern(offset, out, seed); }};
}

Message SimpleMessage(std::string_view subject) {
    Message message;
    message.properties.Set(PR_MESSAGE_CLASS_W, Wide("IPM.Note"))
        .Set(PR_SUBJECT_W, Wide(subject))
        .Set(PR_CLIENT_SUBMIT_TIME, kSubmitted)
        .Set(PR_MESSAGE_DELIVERY_TIME, kSubmitted)
        .Set(PR_SENT_REPRESENTING_NAME_W, Wide("Anna Author"))
        .Set(PR_BODY_W, Wide("Body of ") + Wide(subject));
    message.recipients.push_back(Recipient(1, "Berta Reader"));
    return message;
}

Properties Recipient(std::int32_t type, std::string_view name) {
    Properties recipient;
    recipient.Set(PR_RECIPIENT_TYPE, type)
        .Set(PR_DISPLAY_NAME_W, Wide(name))
        .Set(PR_ADDRTYPE_W, Wide("SMTP"))
        .Set(PR_EMAIL_ADDRESS_W, Wide("someone@example.org"))
        .Set(PR_OBJECT_TYPE, std::int32_t{6});
    return recipient;
}

Attachment FileAttachment(std::string_view name, Value content) {
    Attachment attachment;
    attachment.properties.Set(PR_ATTACH_LONG_FILENAME_W, Wide(name))
        .Set(PR_ATTACH_FILENAME_W, Wide(name))
        .Set(PR_ATTACH_DATA_BIN, std::move(content));
    return attachment;
}

Attachment MessageAttachment(Message inner) {
    Attachment attachment;
    attachment.properties.Set(PR_DISPLAY_NAME_W, Wide("a message"));
    attachment.embedded = std::make_shared<Message>(std::move(inner));
    return attachment;
}

Message EveryType() {
    Message message = SimpleMessage("every type");
    const GUID guid = {0x01234567, 0x89AB, 0xCDEF, {0x10, 0x32, 0x54, 0x76, 0x98, 0xBA, 0xDC, 0xFE}};
    std::uint32_t id = 0x6700'0000;
    const auto set = [&](std::uint16_t type, const Value& value) {
        message.properties.Set((id += 0x1'0000) | type, value);
    };
    const auto setAll = [&](std::uint16_t type, const auto& values) {
        for (const auto& value : values) {
            set(type, value);
        }
        set(0x1000 | type, values);
        set(0x1000 | type, decltype(values){});
    };
    setAll(PT_SHORT, Extremes<std::int16_t>());
    setAll(PT_LONG, Extremes<std::int32_t>());
    setAll(PT_I8, Extremes<std::int64_t>());
    setAll(PT_CURRENCY, Extremes<std::int64_t>());
    setAll(PT_FLOAT, Extremes<float>());
    setAll(PT_DOUBLE, Extremes<double>());
    setAll(PT_APPTIME, Extremes<double>());
    setAll(PT_SYSTIME, std::vector<Time>{{0}, {1}, kSubmitted, {std::numeric_limits<std::int64_t>::max()}});
    setAll(PT_CLSID, std::vector<GUID>{GUID{}, guid});
    setAll(PT_UNICODE, std::vector<CStringW>{{}, Wide("one"), Wide("a longer text, the third of three")});
    setAll(PT_STRING8, std::vector<Text8>{{}, {"narrow"}, {"caf\xE9"}});
    setAll(PT_BINARY, std::vector<Bytes>{{}, Pattern(1), Pattern(700)});
    set(PT_BOOLEAN, true);
    set(PT_BOOLEAN, false);
    set(PT_ERROR, std::int32_t{-2147221233});
    set(PT_MV_UNICODE, std::vector<CStringW>(900, Wide("many of them")));
    set(PT_MV_LONG, std::vector<std::int32_t>(5000, 7));
    return message;
}

Message EveryLength() {
    Message message = SimpleMessage("every length");
    std::uint32_t id = 0x6700'0000;
    for (const std::size_t size :
         {0U, 1U, 3579U, 3580U, 3581U, 8175U, 8176U, 8177U, 8179U, 8180U, 8181U, 65511U, 65512U, 65513U, 200'000U}) {
        message.properties.Set(id | PT_BINARY, Pattern(size, id))
            .Set((id + 0x1'0000) | PT_BINARY, PatternContent(size, id + 1))
            .Set((id + 0x2'0000) | PT_UNICODE, CStringW(size / 2, 'u'));
        id += 0x3'0000;
    }
    message.properties.Set(PR_DISPLAY_NAME_W, CStringW(2000, 'n'));
    return message;
}

Message EveryAttachment() {
    Message message = SimpleMessage("every attachment");
    message.properties.Set(PR_MESSAGE_FLAGS, std::int32_t{1});
    message.recipients = {Recipient(1, "Berta Reader"), Recipient(2, "Carl Copy"), Recipient(3, "Dora Blind"),
                          Recipient(1, "Emil Extra")};
    message.recipients[3].Set(PR_SMTP_ADDRESS_W, Wide("emil@example.org")).Set(PR_ENTRYID, Pattern(5000));
    message.attachments = {FileAttachment("empty.bin", Bytes{}), FileAttachment("small.bin", Pattern(100)),
                           FileAttachment("large.bin", PatternContent(300'000))};
    for (const std::int32_t method : {2, 3, 4, 7}) {
        Attachment reference;
        reference.properties.Set(PR_ATTACH_METHOD, method)
            .Set(PR_ATTACH_LONG_PATHNAME_W, Wide("\\\\server\\share\\file.txt"))
            .Set(PR_ATTACH_LONG_FILENAME_W, Wide("file.txt"));
        message.attachments.push_back(std::move(reference));
    }
    Message inner = SimpleMessage("the innermost");
    inner.attachments.push_back(FileAttachment("deep.bin", Pattern(20'000)));
    for (const char* around : {"two around", "one around", "the outermost"}) {
        Message outer = SimpleMessage(around);
        outer.attachments.push_back(MessageAttachment(std::move(inner)));
        outer.attachments.push_back(FileAttachment("beside.bin", Pattern(10)));
        inner = std::move(outer);
    }
    message.attachments.push_back(MessageAttachment(std::move(inner)));
    Attachment ole;
    ole.properties.Set(PR_DISPLAY_NAME_W, Wide("Picture (Device Independent Bitmap)"));
    ole.ole = Pattern(70'000);
    message.attachments.push_back(std::move(ole));
    return message;
}

Message NamesAndPages() {
    Message message = SimpleMessage("names and pages");
    message.codePage = 1251;
    const GUID own = {0x8C2F'1D00, 0x11, 0x22, {1, 2, 3, 4, 5, 6, 7, 8}};
    const CStringW cyrillic = {0x041F, 0x0440, 0x0438, 0x0432, 0x0435, 0x0442};
    message.properties.Set(PR_SUBJECT_W, cyrillic)
        .Set(PR_CONVERSATION_TOPIC_A, Text8{"\xCF\xF0\xE8\xE2\xE5\xF2"})
        .Set({PS_PUBLIC_STRINGS, 0, Wide("Keywords")}, PT_MV_UNICODE, std::vector<CStringW>{cyrillic, Wide("red")})
        .Set({PS_MAPI, 0, Wide("in PS_MAPI")}, PT_LONG, std::int32_t{1})
        .Set({GUID{}, 5, {}}, PT_LONG, std::int32_t{2})
        .Set({PSETID_Common, 0x8506, {}}, PT_BOOLEAN, true)
        .Set({own, 0x8506, {}}, PT_BOOLEAN, false)
        .Set({own, 0, Wide("x")}, PT_UNICODE, Wide("odd length of name"))
        .Set({own, 0, CStringW(1000, 'y')}, PT_BINARY, Pattern(4000))
        .Set({own, 0, cyrillic}, PT_SYSTIME, kSubmitted);
    message.recipients[0].Set({own, 77, {}}, PT_LONG, std::int32_t{77});
    return message;
}

MailboxBuilder::MailboxBuilder(const WriterOptions& options) {
    auto writer = MailboxWriter::Create(CreateMemorySink(*m_bytes), options);
    EXPECT_TRUE(writer) << writer.Failure().text;
    m_writer = *std::move(writer);
}

FolderId MailboxBuilder::AddFolder(std::string_view name) {
    Properties properties;
    properties.Set(PR_DISPLAY_NAME_W, Wide(name)).Set(PR_CONTAINER_CLASS_W, Wide("IPF.Note"));
    const auto folder = m_writer->AddFolder(m_writer->IpmSubtree(), properties);
    EXPECT_TRUE(folder) << folder.Failure().text;
    return *folder;
}

void MailboxBuilder::Add(FolderId folder, Message message, bool isAssociated) {
    const auto id = isAssociated ? m_writer->AddAssociated(folder, message) : m_writer->AddMessage(folder, message);
    ASSERT_TRUE(id) << id.Failure().text;
    m_mailbox.messages.push_back({folder, *id, std::move(message), isAssociated});
}

Mailbox MailboxBuilder::Finish() {
    const Status finished = m_writer->Finish();
    EXPECT_TRUE(finished) << finished.Failure().text;
    m_mailbox.bytes = std::move(*m_bytes);
    return std::move(m_mailbox);
}

Mailbox EverythingMailbox(const WriterOptions& options, std::size_t plainMessages) {
    MailboxBuilder builder(options);
    const FolderId all = builder.AddFolder("Everything");
    const FolderId plain = builder.AddFolder("Plain");
    builder.Add(all, EveryType());
    builder.Add(all, EveryLength());
    for (std::size_t i = 0; i < plainMessages; ++i) {
        builder.Add(plain, SimpleMessage("plain " + std::to_string(i)));
    }
    builder.Add(all, EveryAttachment());
    builder.Add(all, NamesAndPages());
    builder.Add(all, SimpleMessage("hidden"), true);
    return builder.Finish();
}

}  // namespace mailbox_builder
