#include "localmapi/pst/source/ItemRows.h"

#include "localmapi/pst/ltp/Values.h"
#include "localmapi/pst/messaging/PropertyIds.h"
#include "localmapi/pst/source/FolderProperties.h"
#include "localmapi/pst/source/MessageProperties.h"
#include "localmapi/pst/source/StoredRows.h"
#include "localmapi/pst/source/WithinMessageRows.h"
#include "mapi/MapiFlags.h"

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

namespace localmapi::pst {

namespace {

// What the store above knows, and what only servers keep: no file has it, so that no object needs to be opened to say
// so. Sorted.
constexpr auto kNeverKept = std::to_array<ULONG>({
    PROP_ID(PR_ACCESS),
    PROP_ID(PR_ROW_TYPE),
    PROP_ID(PR_ACCESS_LEVEL),
    PROP_ID(PR_MAPPING_SIGNATURE),
    PROP_ID(PR_STORE_RECORD_KEY),
    PROP_ID(PR_STORE_ENTRYID),
    PROP_ID(PR_STORE_SUPPORT_MASK),
    PROP_ID(PR_MDB_PROVIDER),
    PROP_ID(PR_LONGTERM_ENTRYID_FROM_TABLE),
});
static_assert(std::is_sorted(kNeverKept.begin(), kNeverKept.end()));

// Rows that stand for folders or messages.
class EntryRows : public StoredRows {
public:
    std::size_t Count() override { return m_items->Count() + m_more.size(); }
    static bool IsKeyed(ULONG id) noexcept {
        return id == PROP_ID(PR_ENTRYID) || id == PROP_ID(PR_RECORD_KEY) || id == PROP_ID(PR_INSTANCE_KEY);
    }
    bool IsIndexed(ULONG id) const override {
        return IsKeyed(id) || id == PROP_ID(PR_LONGTERM_ENTRYID_FROM_TABLE);  // the last of which no row ever has
    }
    std::optional<std::size_t> Find(ULONG id, ByteView key) override {
        const bool isInstance = id == PROP_ID(PR_INSTANCE_KEY);
        const auto node = isInstance && key.Size() == 4 ? std::optional(NodeId{key.U32(0)})
                          : !isInstance && IsKeyed(id)  ? File()->File().NodeOf(key)
                                                        : std::nullopt;
        if (!node) {
            return std::nullopt;
        }
        if (const auto place = PlaceIn(*m_items, *node)) {
            return place;
        }
        const auto more = std::lower_bound(m_more.begin(), m_more.end(), *node);
        return more != m_more.end() && *more == *node
                   ? std::optional(m_items->Count() + static_cast<std::size_t>(more - m_more.begin()))
                   : std::nullopt;
    }

protected:
    EntryRows(MailboxPtr mailbox, NodeId folder, std::shared_ptr<ItemList> items, std::vector<NodeId> more)
        : StoredRows(std::move(mailbox)), m_folder(folder), m_items(std::move(items)), m_more(std::move(more)) {}

    NodeId Id(std::size_t row) const {
        return row < m_items->Count() ? m_items->Id(row) : m_more[row - m_items->Count()];
    }

    std::optional<MadeValue> Known(std::size_t row, ULONG id) override {
        switch (id) {
            case PROP_ID(PR_ENTRYID): return MadeValue{PR_ENTRYID, File()->EntryIdOf(Id(row))};
            case PROP_ID(PR_RECORD_KEY): return MadeValue{PR_RECORD_KEY, File()->EntryIdOf(Id(row))};
            case PROP_ID(PR_INSTANCE_KEY): return MadeValue{PR_INSTANCE_KEY, LittleEndian(Id(row).value, 4)};
            case PROP_ID(PR_PARENT_ENTRYID): return MadeValue{PR_PARENT_ENTRYID, File()->EntryIdOf(m_folder)};
            default: break;
        }
        return std::binary_search(kNeverKept.begin(), kNeverKept.end(), id) ? std::optional(MadeValue{PR_NULL, {}})
                                                                            : std::nullopt;
    }

    Result<PropertyValue> Cell(std::size_t row, std::uint16_t id) override {
        return row < m_items->Count()
                   ? m_items->Cell(row, id)
                   : Result<PropertyValue>(Error{ErrorCode::NotFound, Name(Id(row)) + " is in no table"});
    }
    std::span<const TableContext::Column> StoredColumns() const { return m_items->Columns(); }

private:
    NodeId m_folder;
    std::shared_ptr<ItemList> m_items;
    std::vector<NodeId> m_more;  // sorted; rows without cells
};

class FolderRowSource final : public EntryRows {
public:
    FolderRowSource(MailboxPtr mailbox, NodeId folder, std::shared_ptr<ItemList> folders, std::vector<NodeId> lost)
        : EntryRows(std::move(mailbox), folder, std::move(folders), std::move(lost)) {}

    std::vector<ULONG> Columns() override {
        static constexpr auto kFirst =
            std::to_array<ULONG>({PR_ENTRYID, PR_DISPLAY_NAME, PR_CONTENT_COUNT, PR_CONTENT_UNREAD, PR_SUBFOLDERS,
                                  PR_CONTAINER_CLASS, PR_FOLDER_TYPE, PR_STATUS, PR_DEPTH, PR_OBJECT_TYPE,
                                  PR_LAST_MODIFICATION_TIME, PR_PARENT_ENTRYID, PR_RECORD_KEY, PR_INSTANCE_KEY});
        return ColumnsOf(kFirst, StoredColumns());
    }
    UINT CodePage(std::size_t) override { return File()->File().CodePage(); }

protected:
    std::optional<MadeValue> Known(std::size_t row, ULONG id) override {
        switch (id) {
            case PROP_ID(PR_OBJECT_TYPE): return MadeLong(PR_OBJECT_TYPE, MAPI_FOLDER);
            case PROP_ID(PR_FOLDER_TYPE): return MadeLong(PR_FOLDER_TYPE, FolderTypeOf(Id(row)));
            case PROP_ID(PR_DEPTH): return MadeLong(PR_DEPTH, 1);
            case PROP_ID(PR_STATUS): return MadeLong(PR_STATUS, 0);
            default: return EntryRows::Known(row, id);
        }
    }
    // What the folder itself finds out stands above its cell.
    Result<PropertyValue> Cell(std::size_t row, std::uint16_t id) override {
        const bool isCount = id == IdOf(PR_CONTENT_COUNT) || id == IdOf(PR_CONTENT_UNREAD);
        if (id == IdOf(PR_SUBFOLDERS) || (isCount && Id(row).Type() == NodeType::SearchFolder)) {
            return Error{ErrorCode::NotFound, "the folder is asked"};
        }
        return EntryRows::Cell(row, id);
    }
    Result<std::unique_ptr<ObjectProperties>> OpenObject(std::size_t row) override {
        VX_TRY_ASSIGN(std::unique_ptr<ObjectProperties> folder, FolderProperties::OpenObject(File(), Id(row)));
        return folder;
    }
};

class MessageRowSource final : public EntryRows {
public:
    MessageRowSource(MailboxPtr mailbox, NodeId folder, std::shared_ptr<ItemList> messages)
        : EntryRows(std::move(mailbox), folder, std::move(messages), {}) {}

    std::vector<ULONG> Columns() override {
        static constexpr auto kFirst = std::to_array<ULONG>(
            {PR_ENTRYID, PR_MESSAGE_CLASS, PR_SUBJECT, PR_SENT_REPRESENTING_NAME, PR_DISPLAY_TO, PR_DISPLAY_CC,
             PR_MESSAGE_DELIVERY_TIME, PR_CLIENT_SUBMIT_TIME, PR_LAST_MODIFICATION_TIME, PR_MESSAGE_FLAGS,
             PR_MESSAGE_SIZE, PR_HASATTACH, PR_OBJECT_TYPE, PR_PARENT_ENTRYID, PR_RECORD_KEY, PR_INSTANCE_KEY});
        return ColumnsOf(kFirst, StoredColumns());
    }

    // That of the message: it has to be opened to know.
    UINT CodePage(std::size_t row) override {
        const ObjectProperties* message = row < Count() ? Object(row) : nullptr;
        return message == nullptr ? File()->File().CodePage() : message->CodePage();
    }

    Result<std::unique_ptr<RowSource>> RowsWithin(std::size_t row, ULONG objectTag) override {
        const bool isRecipients = PROP_ID(objectTag) == PROP_ID(PR_MESSAGE_RECIPIENTS);
        if (row >= Count() || (!isRecipients && PROP_ID(objectTag) != PROP_ID(PR_MESSAGE_ATTACHMENTS))) {
            return Error{ErrorCode::NotFound, "the row has no such list"};
        }
        Error failure{};
        if (Object(row, &failure) == nullptr) {
            return failure;
        }
        return isRecipients ? RecipientRows(File(), *m_message)
                            : AttachmentRows(File(), m_message, m_message->Attachments());
    }

protected:
    std::optional<MadeValue> Known(std::size_t row, ULONG id) override {
        switch (id) {
            case PROP_ID(PR_OBJECT_TYPE): return MadeLong(PR_OBJECT_TYPE, MAPI_MESSAGE);
            case PROP_ID(PR_HASATTACH): return HasAttachments(row);
            default: return EntryRows::Known(row, id);
        }
    }
    Result<std::unique_ptr<ObjectProperties>> OpenObject(std::size_t row) override {
        VX_TRY_ASSIGN(std::unique_ptr<MessageProperties> message, MessageProperties::OpenObject(File(), Id(row)));
        m_message = message->TheMessage();
        return std::unique_ptr<ObjectProperties>(std::move(message));
    }

private:
    // Tables have no column for it, but one for the flags, where it is a bit.
    std::optional<MadeValue> HasAttachments(std::size_t row) {
        if (Cell(row, IdOf(PR_HASATTACH))) {
            return std::nullopt;
        }
        Result<PropertyValue> flags = Cell(row, IdOf(PR_MESSAGE_FLAGS));
        const auto bits = flags ? Integer(*flags) : std::nullopt;
        return bits ? std::optional(MadeValue{PR_HASATTACH, LittleEndian((*bits & MSGFLAG_HASATTACH) != 0 ? 1 : 0, 1)})
                    : std::nullopt;
    }

    std::shared_ptr<Message> m_message;  // of the object that is open
};

class ReceiveFolderRowSource final : public StoredRows {
public:
    explicit ReceiveFolderRowSource(MailboxPtr mailbox) : StoredRows(std::move(mailbox)) {}

    std::size_t Count() override { return File()->ReceiveFolders().size(); }
    std::vector<ULONG> Columns() override { return {PR_MESSAGE_CLASS, PR_ENTRYID, PR_RECORD_KEY, PR_INSTANCE_KEY}; }
    UINT CodePage(std::size_t) override { return File()->File().CodePage(); }

protected:
    std::optional<MadeValue> Known(std::size_t row, ULONG id) override {
        const ReceiveFolder& receive = File()->ReceiveFolders()[row];
        switch (id) {
            case PROP_ID(PR_MESSAGE_CLASS): return MadeValue{PR_MESSAGE_CLASS, BytesOfText(receive.messageClass)};
            case PROP_ID(PR_ENTRYID): return MadeValue{PR_ENTRYID, File()->EntryIdOf(receive.folder)};
            case PROP_ID(PR_RECORD_KEY): return MadeValue{PR_RECORD_KEY, File()->EntryIdOf(receive.folder)};
            case PROP_ID(PR_INSTANCE_KEY): return MadeValue{PR_INSTANCE_KEY, LittleEndian(row, 4)};
            default: return MadeValue{PR_NULL, {}};
        }
    }
    Result<PropertyValue> Cell(std::size_t, std::uint16_t) override { return NoMore(); }
    Result<std::unique_ptr<ObjectProperties>> OpenObject(std::size_t) override { return NoMore(); }

private:
    static Error NoMore() { return {ErrorCode::NotFound, "a receive folder has no such column"}; }
};

}  // namespace

std::unique_ptr<RowSource> FolderRows(MailboxPtr mailbox, Folder& folder) {
    auto items = std::make_shared<ItemList>(folder.Folders(SearchFolders::Include));
    std::vector<NodeId> lost;
    if (folder.Id() == mailbox->IpmSubtree()) {
        lost = mailbox->LostFolders();
        std::erase_if(lost, [&items](NodeId id) { return PlaceIn(*items, id).has_value(); });
    }
    return std::make_unique<FolderRowSource>(std::move(mailbox), folder.Id(), std::move(items), std::move(lost));
}

std::unique_ptr<RowSource> MessageRows(MailboxPtr mailbox, Folder& folder, NodeType table) {
    auto messages = mailbox->MessagesOf(folder, table);
    return std::make_unique<MessageRowSource>(std::move(mailbox), folder.Id(), std::move(messages));
}

std::unique_ptr<RowSource> ReceiveFolderRows(MailboxPtr mailbox) {
    return std::make_unique<ReceiveFolderRowSource>(std::move(mailbox));
}

}  // namespace localmapi::pst
