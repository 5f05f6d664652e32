#include "localmapi/pst/source/MessageProperties.h"

#include "localmapi/pst/ltp/Values.h"
#include "localmapi/pst/messaging/PropertyIds.h"
#include "mapi/MapiFlags.h"

#include <algorithm>
#include <array>
#include <string>
#include <utility>

namespace localmapi::pst {

Result<std::unique_ptr<MessageProperties>> MessageProperties::OpenObject(MailboxPtr mailbox, NodeId id) {
    if (!IsMessageNode(id)) {
        return Error{ErrorCode::NotFound, Name(id) + " is no message"};
    }
    VX_TRY_ASSIGN(Message message, mailbox->File().OpenMessage(id));
    return std::make_unique<MessageProperties>(std::move(mailbox), std::make_shared<Message>(std::move(message)));
}

std::span<const ULONG> MessageProperties::MadeIds() const {
    static constexpr auto kIds = std::to_array<ULONG>({
        PROP_ID(PR_SUBJECT),
        PROP_ID(PR_SUBJECT_PREFIX),
        PROP_ID(PR_DISPLAY_BCC),
        PROP_ID(PR_DISPLAY_CC),
        PROP_ID(PR_DISPLAY_TO),
        PROP_ID(PR_MESSAGE_SIZE),
        PROP_ID(PR_HASATTACH),
        PROP_ID(PR_NORMALIZED_SUBJECT),
        PROP_ID(PR_LAST_MODIFICATION_TIME),
    });
    return kIds;
}

std::optional<ULONG> MessageProperties::MadeTag(ULONG id) {
    const auto subject = [&]() -> std::optional<ULONG> {
        const auto stored = StoredTag(PROP_ID(PR_SUBJECT));
        const bool isText = stored == PR_SUBJECT_W || stored == PR_SUBJECT_A;
        return isText ? std::optional(PROP_TAG(PROP_TYPE(*stored), id)) : std::nullopt;
    };
    switch (id) {
        case PROP_ID(PR_SUBJECT): return subject();
        case PROP_ID(PR_SUBJECT_PREFIX):
        case PROP_ID(PR_NORMALIZED_SUBJECT): return IsStored(id) ? std::nullopt : subject();
        case PROP_ID(PR_DISPLAY_TO):
        case PROP_ID(PR_DISPLAY_CC):
        case PROP_ID(PR_DISPLAY_BCC): return IsStored(id) ? std::nullopt : std::optional(PROP_TAG(PT_UNICODE, id));
        case PROP_ID(PR_MESSAGE_SIZE): return IsStored(id) ? std::nullopt : std::optional(PR_MESSAGE_SIZE);
        case PROP_ID(PR_HASATTACH): return IsStored(id) ? std::nullopt : std::optional(PR_HASATTACH);
        case PROP_ID(PR_LAST_MODIFICATION_TIME):
            return IsStored(id) ? std::nullopt : std::optional(PR_LAST_MODIFICATION_TIME);
        default: return std::nullopt;
    }
}

Result<Bytes> MessageProperties::Make(ULONG id, std::uint64_t limit) {
    switch (id) {
        case PROP_ID(PR_SUBJECT): {
            VX_TRY_ASSIGN(SubjectParts subject, ReadSubject(limit));
            return std::move(subject.text);
        }
        case PROP_ID(PR_SUBJECT_PREFIX): {
            VX_TRY_ASSIGN(SubjectParts subject, ReadSubject(ValueStream::kTextLimit));
            subject.text.resize(subject.prefix);
            return std::move(subject.text);
        }
        case PROP_ID(PR_NORMALIZED_SUBJECT): {
            VX_TRY_ASSIGN(SubjectParts subject, ReadSubject(ValueStream::kTextLimit));
            return Bytes(subject.text.begin() + static_cast<std::ptrdiff_t>(subject.prefix), subject.text.end());
        }
        case PROP_ID(PR_DISPLAY_TO): return BytesOfText(NamesOf(MAPI_TO));
        case PROP_ID(PR_DISPLAY_CC): return BytesOfText(NamesOf(MAPI_CC));
        case PROP_ID(PR_DISPLAY_BCC): return BytesOfText(NamesOf(MAPI_BCC));
        case PROP_ID(PR_MESSAGE_SIZE): return LittleEndian(MeasureAll(), 4);
        case PROP_ID(PR_HASATTACH): return LittleEndian(m_message->Attachments().empty() ? 0 : 1, 1);
        case PROP_ID(PR_LAST_MODIFICATION_TIME): {
            Result<PropertyValue> found = FindTime();
            if (found.IsNotFound()) {
                return LittleEndian(0, 8);
            }
            VX_TRY_ASSIGN(PropertyValue time, std::move(found));
            return WholeBytes(time, CodePage(), ValueStream::kTextLimit);
        }
        default: return NoSuchProperty(id);
    }
}

Result<SubjectParts> MessageProperties::ReadSubject(std::uint64_t limit) {
    constexpr std::uint64_t kMark = 4;  // bytes at most, which go
    VX_TRY_ASSIGN(PropertyValue stored, OpenStored(PROP_ID(PR_SUBJECT)));
    const bool isWide = stored.type == PropertyType::Unicode;
    VX_TRY_ASSIGN(Bytes bytes,
                  WholeBytes(stored, CodePage(), std::min(limit, ValueStream::kTextLimit - kMark) + kMark));
    return SplitSubjectBytes(std::move(bytes), isWide);
}

// The time that stands in for the one of the last change, see OpenStoreSource.h.
Result<PropertyValue> MessageProperties::FindTime() {
    if (m_message->Parent() != NodeId{}) {
        Result<PropertyValue> listed =
            m_mailbox->CellOf(m_message->Parent(), m_message->Id(), IdOf(PR_LAST_MODIFICATION_TIME));
        if (listed && listed->type == PropertyType::Time) {
            return listed;
        }
    }
    for (const ULONG tag : {PR_CREATION_TIME, PR_MESSAGE_DELIVERY_TIME, PR_CLIENT_SUBMIT_TIME}) {
        if (IsStoredAs(tag)) {
            if (Result<PropertyValue> time = OpenStored(PROP_ID(tag))) {
                return time;
            }
        }
    }
    return NoSuchProperty(PROP_ID(PR_LAST_MODIFICATION_TIME));
}

// The names of the recipients of one type, as PR_DISPLAY_TO lists them.
CStringW MessageProperties::NamesOf(std::int64_t recipientType) {
    CStringW names;
    Result<TableContext> table = m_message->OpenRecipients();
    if (!table) {
        if (!table.IsNotFound()) {
            m_mailbox->Report(table.Failure(), "its recipients are not named");
        }
        return names;
    }
    for (std::size_t row = 0; row < table->RowCount(); ++row) {
        Result<PropertyValue> type = table->Cell(row, IdOf(PR_RECIPIENT_TYPE));
        Result<PropertyValue> name = table->Cell(row, IdOf(PR_DISPLAY_NAME));
        Result<CStringW> text = name ? Text(*name, CodePage()) : Result<CStringW>(name.TakeFailure());
        if (type && Integer(*type) == recipientType && text && !text->empty()) {
            names += names.empty() ? ""_w : "; "_w;
            names += *text;
        }
    }
    return names;
}

// Bytes of all values and attachments: what the sum of sizes that Outlook stores is roughly made of.
std::uint64_t MessageProperties::MeasureAll() {
    std::uint64_t size = 0;
    for (const PropertyContext::Record& record : Stored()->Records()) {
        const Result<PropertyValue> value = Stored()->Read(record);
        size += value ? value->bytes.Size() : 0;
    }
    for (const NodeId id : m_message->Attachments()) {
        Result<Attachment> attachment = m_message->OpenAttachment(id);
        const auto told =
            attachment ? ReadInteger(attachment->Properties(), IdOf(PR_ATTACH_SIZE)) : std::optional<std::int64_t>();
        size += told && *told > 0 ? static_cast<std::uint64_t>(*told) : 0;
    }
    return std::min<std::uint64_t>(size, INT32_MAX);
}

}  // namespace localmapi::pst
