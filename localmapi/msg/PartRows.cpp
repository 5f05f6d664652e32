#include "localmapi/msg/PartRows.h"

#include "localmapi/msg/AttachmentNode.h"
#include "mapi/PropTags.h"

#include <algorithm>
#include <array>
#include <deque>
#include <set>
#include <span>
#include <utility>
#include <vector>

namespace localmapi::msg {

namespace {

// Columns that a table shows at first.
constexpr std::size_t kMostColumns = 512;

// Attachments kept open, for the next column of a row.
constexpr std::size_t kRecentAttachments = 8;

constexpr auto kRecipientColumns =
    std::to_array<ULONG>({PR_ROWID, PR_RECIPIENT_TYPE, PR_DISPLAY_NAME, PR_ADDRTYPE, PR_EMAIL_ADDRESS, PR_ENTRYID,
                          PR_SEARCH_KEY, PR_OBJECT_TYPE, PR_DISPLAY_TYPE});
constexpr auto kAttachmentColumns =
    std::to_array<ULONG>({PR_ATTACH_NUM, PR_ATTACH_METHOD, PR_ATTACH_SIZE, PR_RENDERING_POSITION, PR_ATTACH_FILENAME,
                          PR_ATTACH_LONG_FILENAME, PR_DISPLAY_NAME});

// The usual columns, then what else any of the rows has, but the content of attachments.
class ColumnList {
public:
    explicit ColumnList(std::span<const ULONG> usual) : m_columns(usual.begin(), usual.end()) {
        for (const ULONG tag : usual) {
            m_ids.insert(PROP_ID(tag));
        }
    }

    void Add(const std::vector<ULONG>& tags) {
        for (const ULONG tag : tags) {
            if (m_columns.size() < kMostColumns && PROP_ID(tag) != PROP_ID(PR_ATTACH_DATA_BIN)
                && m_ids.insert(PROP_ID(tag)).second) {
                m_columns.push_back(tag);
            }
        }
    }

    std::vector<ULONG> Take() { return std::move(m_columns); }

private:
    std::vector<ULONG> m_columns;
    std::set<ULONG> m_ids;
};

class RecipientRows final : public RowSource {
public:
    explicit RecipientRows(std::shared_ptr<MessageNode> message) : m_message(std::move(message)) {}

    std::size_t Count() override { return m_message->RecipientCount(); }

    std::vector<ULONG> Columns() override {
        ColumnList columns(kRecipientColumns);
        for (std::size_t row = 0; row < Count(); ++row) {
            if (const auto recipient = m_message->Recipient(row)) {
                columns.Add((*recipient)->properties.Tags());
            }
        }
        return columns.Take();
    }

    Status Read(std::size_t row, ULONG id, ValueMemory& memory, SPropValue& value) override {
        VX_TRY_ASSIGN(const auto recipient, m_message->Recipient(row));
        return recipient->properties.Read(id, kLargestCell, memory, value);
    }

    UINT CodePage(std::size_t) override { return m_message->CodePage(); }

private:
    std::shared_ptr<MessageNode> m_message;
};

class AttachmentRows final : public RowSource {
public:
    explicit AttachmentRows(std::shared_ptr<MessageNode> message)
        : m_message(std::move(message)), m_numbers(m_message->AttachmentNumbers()) {}

    std::size_t Count() override { return m_numbers.size(); }

    std::vector<ULONG> Columns() override {
        ColumnList columns(kAttachmentColumns);
        for (std::size_t row = 0; row < Count(); ++row) {
            if (const auto attachment = Attachment(row)) {
                columns.Add((*attachment)->Properties().Tags());
            }
        }
        return columns.Take();
    }

    Status Read(std::size_t row, ULONG id, ValueMemory& memory, SPropValue& value) override {
        VX_TRY_ASSIGN(const auto attachment, Attachment(row));
        return attachment->Properties().Read(id, kLargestCell, memory, value);
    }

    UINT CodePage(std::size_t) override { return m_message->CodePage(); }

private:
    Result<std::shared_ptr<AttachmentNode>> Attachment(std::size_t row) {
        if (row >= m_numbers.size()) {
            return Error{ErrorCode::NotFound, "there is no attachment in row " + std::to_string(row)};
        }
        VX_TRY_ASSIGN(auto attachment, m_message->Attachment(m_numbers[row]));
        if (std::find(m_recent.begin(), m_recent.end(), attachment) == m_recent.end()) {
            m_recent.push_back(attachment);
        }
        if (m_recent.size() > kRecentAttachments) {
            m_recent.pop_front();
        }
        return attachment;
    }

    std::shared_ptr<MessageNode> m_message;
    std::vector<ULONG> m_numbers;
    std::deque<std::shared_ptr<AttachmentNode>> m_recent;
};

}  // namespace

std::unique_ptr<RowSource> MakeRecipientRows(std::shared_ptr<MessageNode> message) {
    return std::make_unique<RecipientRows>(std::move(message));
}

std::unique_ptr<RowSource> MakeAttachmentRows(std::shared_ptr<MessageNode> message) {
    return std::make_unique<AttachmentRows>(std::move(message));
}

}  // namespace localmapi::msg
