#include "localmapi/pst/source/FolderProperties.h"

#include "localmapi/base/Format.h"
#include "localmapi/pst/ltp/Values.h"
#include "localmapi/pst/messaging/PropertyIds.h"
#include "mapi/MapiFlags.h"

#include <array>
#include <string>
#include <utility>

namespace localmapi::pst {

ULONG FolderTypeOf(NodeId id) noexcept {
    if (id == Store::kRootFolder) {
        return FOLDER_ROOT;
    }
    return id.Type() == NodeType::SearchFolder ? FOLDER_SEARCH : FOLDER_GENERIC;
}

Result<std::unique_ptr<FolderProperties>> FolderProperties::OpenObject(MailboxPtr mailbox, NodeId id) {
    if (!IsFolderNode(id)) {
        return Error{ErrorCode::NotFound, Name(id) + " is no folder"};
    }
    VX_TRY_ASSIGN(Folder folder, mailbox->File().OpenFolder(id));
    return std::make_unique<FolderProperties>(std::move(mailbox), std::make_unique<Folder>(std::move(folder)));
}

std::span<const ULONG> FolderProperties::MadeIds() const {
    static constexpr auto kIds = std::to_array<ULONG>({
        PROP_ID(PR_DISPLAY_NAME),
        PROP_ID(PR_LAST_MODIFICATION_TIME),
        PROP_ID(PR_FOLDER_TYPE),
        PROP_ID(PR_CONTENT_COUNT),
        PROP_ID(PR_CONTENT_UNREAD),
        PROP_ID(PR_SUBFOLDERS),
    });
    return kIds;
}

std::optional<ULONG> FolderProperties::MadeTag(ULONG id) {
    const auto ifMissing = [&](ULONG tag) { return IsStored(id) ? std::nullopt : std::optional(tag); };
    switch (id) {
        case PROP_ID(PR_FOLDER_TYPE): return PR_FOLDER_TYPE;
        case PROP_ID(PR_SUBFOLDERS): return PR_SUBFOLDERS;
        case PROP_ID(PR_DISPLAY_NAME): return ifMissing(PR_DISPLAY_NAME);
        case PROP_ID(PR_CONTENT_COUNT): return IsSearchFolder() ? PR_CONTENT_COUNT : ifMissing(PR_CONTENT_COUNT);
        case PROP_ID(PR_CONTENT_UNREAD): return IsSearchFolder() ? PR_CONTENT_UNREAD : ifMissing(PR_CONTENT_UNREAD);
        case PROP_ID(PR_LAST_MODIFICATION_TIME):
            return IsStoredAs(PR_CREATION_TIME) ? ifMissing(PR_LAST_MODIFICATION_TIME) : std::nullopt;
        default: return std::nullopt;
    }
}

Result<Bytes> FolderProperties::Make(ULONG id, std::uint64_t limit) {
    switch (id) {
        case PROP_ID(PR_FOLDER_TYPE): return LittleEndian(FolderTypeOf(m_folder->Id()), 4);
        case PROP_ID(PR_SUBFOLDERS): return LittleEndian(HasFolders() ? 1 : 0, 1);
        case PROP_ID(PR_DISPLAY_NAME): return BytesOfText(LostName());
        case PROP_ID(PR_CONTENT_COUNT):
            return LittleEndian(m_mailbox->MessagesOf(*m_folder, NodeType::ContentsTable)->Count(), 4);
        case PROP_ID(PR_CONTENT_UNREAD): return LittleEndian(CountUnread(), 4);
        case PROP_ID(PR_LAST_MODIFICATION_TIME): {
            VX_TRY_ASSIGN(PropertyValue created, OpenStored(PROP_ID(PR_CREATION_TIME)));
            return WholeBytes(created, CodePage(), limit);
        }
        default: return NoSuchProperty(id);
    }
}

// A folder without a name is called as the list calls it that holds it. What is in a folder that nothing names is still
// worth finding: it is called by its node.
CStringW FolderProperties::LostName() {
    if (m_folder->Id() == Store::kRootFolder) {
        return {};
    }
    Result<PropertyValue> cell = m_mailbox->CellOf(m_folder->Parent(), m_folder->Id(), IdOf(PR_DISPLAY_NAME));
    Result<CStringW> listed = cell ? Text(*cell, CodePage()) : Result<CStringW>(cell.TakeFailure());
    if (listed) {
        return *std::move(listed);
    }
    const std::string name = "Folder " + Hex(m_folder->Id().value);
    return {name.begin(), name.end()};
}

bool FolderProperties::HasFolders() {
    if (!m_hasFolders) {
        const bool holdsLost = m_folder->Id() == m_mailbox->IpmSubtree() && !m_mailbox->LostFolders().empty();
        m_hasFolders = holdsLost || m_folder->Folders(SearchFolders::Include).Count() > 0;
    }
    return *m_hasFolders;
}

std::uint32_t FolderProperties::CountUnread() {
    const std::shared_ptr<ItemList> messages = m_mailbox->MessagesOf(*m_folder, NodeType::ContentsTable);
    std::uint32_t count = 0;
    for (std::size_t i = 0; i < messages->Count(); ++i) {
        Result<PropertyValue> flags = messages->Cell(i, IdOf(PR_MESSAGE_FLAGS));
        const auto bits = flags ? Integer(*flags) : std::nullopt;
        count += bits && (*bits & MSGFLAG_READ) == 0 ? 1 : 0;
    }
    return count;
}

}  // namespace localmapi::pst
