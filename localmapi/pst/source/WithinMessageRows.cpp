#include "localmapi/pst/source/WithinMessageRows.h"

#include "localmapi/pst/messaging/PropertyIds.h"
#include "localmapi/pst/source/AttachmentProperties.h"
#include "localmapi/pst/source/StoredRows.h"
#include "mapi/MapiFlags.h"

#include <algorithm>
#include <array>
#include <utility>

namespace localmapi::pst {

namespace {

// What both are: rows of a table that the message may have, in the order of the rows' ids.
class InnerRows : public StoredRows {
public:
    UINT CodePage(std::size_t) override { return m_codePage; }

protected:
    InnerRows(MailboxPtr mailbox, Result<TableContext> table, UINT codePage)
        : StoredRows(std::move(mailbox)), m_codePage(codePage) {
        if (table) {
            m_table.emplace(*std::move(table));
        } else if (!table.IsNotFound()) {
            File()->Report(table.Failure(), "the rows of the message's table are lost");
        }
    }

    TableContext* Table() noexcept { return m_table ? &*m_table : nullptr; }
    std::span<const TableContext::Column> StoredColumns() const {
        return m_table ? m_table->Columns() : std::span<const TableContext::Column>();
    }

private:
    std::optional<TableContext> m_table;
    UINT m_codePage;
};

class RecipientRowSource final : public InnerRows {
public:
    RecipientRowSource(MailboxPtr mailbox, Message& message)
        : InnerRows(std::move(mailbox), message.OpenRecipients(), message.CodePage()) {}

    std::size_t Count() override { return Table() == nullptr ? 0 : Table()->RowCount(); }
    std::vector<ULONG> Columns() override {
        static constexpr auto kFirst =
            std::to_array<ULONG>({PR_ROWID, PR_RECIPIENT_TYPE, PR_DISPLAY_NAME, PR_ADDRTYPE, PR_EMAIL_ADDRESS,
                                  PR_ENTRYID, PR_SEARCH_KEY, PR_DISPLAY_TYPE, PR_OBJECT_TYPE, PR_INSTANCE_KEY});
        return ColumnsOf(kFirst, StoredColumns());
    }

protected:
    std::optional<MadeValue> Known(std::size_t row, ULONG id) override {
        switch (id) {
            case PROP_ID(PR_ROWID): return MadeLong(PR_ROWID, row);
            case PROP_ID(PR_INSTANCE_KEY): return MadeValue{PR_INSTANCE_KEY, LittleEndian(row, 4)};
            case PROP_ID(PR_OBJECT_TYPE):
                return Cell(row, IdOf(PR_OBJECT_TYPE)) ? std::nullopt
                                                       : std::optional(MadeLong(PR_OBJECT_TYPE, MAPI_MAILUSER));
            default: return std::nullopt;
        }
    }
    Result<PropertyValue> Cell(std::size_t row, std::uint16_t id) override { return Table()->Cell(row, id); }
    Result<std::unique_ptr<ObjectProperties>> OpenObject(std::size_t) override {
        return Error{ErrorCode::NotFound, "the recipient has no such property"};
    }
};

class AttachmentRowSource final : public InnerRows {
public:
    AttachmentRowSource(MailboxPtr mailbox, std::shared_ptr<Message> message, std::vector<NodeId> ids)
        : InnerRows(std::move(mailbox), message->OpenAttachmentTable(), message->CodePage()),
          m_message(std::move(message)),
          m_ids(std::move(ids)) {}

    std::size_t Count() override { return m_ids.size(); }
    std::vector<ULONG> Columns() override {
        static constexpr auto kFirst = std::to_array<ULONG>(
            {PR_ATTACH_NUM, PR_ATTACH_METHOD, PR_ATTACH_SIZE, PR_ATTACH_LONG_FILENAME, PR_ATTACH_FILENAME,
             PR_DISPLAY_NAME, PR_RENDERING_POSITION, PR_ATTACH_MIME_TAG, PR_OBJECT_TYPE, PR_INSTANCE_KEY});
        return ColumnsOf(kFirst, StoredColumns());
    }

protected:
    std::optional<MadeValue> Known(std::size_t row, ULONG id) override {
        switch (id) {
            case PROP_ID(PR_ATTACH_NUM): return MadeLong(PR_ATTACH_NUM, row);
            case PROP_ID(PR_INSTANCE_KEY): return MadeValue{PR_INSTANCE_KEY, LittleEndian(row, 4)};
            case PROP_ID(PR_OBJECT_TYPE): return MadeLong(PR_OBJECT_TYPE, MAPI_ATTACH);
            default: return std::nullopt;
        }
    }

    // An attachment that only its sub-node tells of has no row in the table.
    Result<PropertyValue> Cell(std::size_t row, std::uint16_t id) override {
        const std::uint32_t wanted = m_ids[row].value;
        const std::size_t count = Table() == nullptr ? 0 : Table()->RowCount();
        const std::size_t place = FirstFrom(count, [&](std::size_t other) { return Table()->RowId(other) < wanted; });
        return place < count && Table()->RowId(place) == wanted
                   ? Table()->Cell(place, id)
                   : Result<PropertyValue>(Error{ErrorCode::NotFound, Name(m_ids[row]) + " has no row"});
    }
    Result<std::unique_ptr<ObjectProperties>> OpenObject(std::size_t row) override {
        VX_TRY_ASSIGN(std::unique_ptr<ObjectProperties> attachment,
                      AttachmentProperties::OpenObject(*m_message, m_ids[row], static_cast<ULONG>(row)));
        return attachment;
    }

private:
    std::shared_ptr<Message> m_message;
    std::vector<NodeId> m_ids;
};

}  // namespace

std::unique_ptr<RowSource> RecipientRows(MailboxPtr mailbox, Message& message) {
    return std::make_unique<RecipientRowSource>(std::move(mailbox), message);
}

std::unique_ptr<RowSource> AttachmentRows(MailboxPtr mailbox, std::shared_ptr<Message> message,
                                          std::vector<NodeId> ids) {
    return std::make_unique<AttachmentRowSource>(std::move(mailbox), std::move(message), std::move(ids));
}

}  // namespace localmapi::pst
