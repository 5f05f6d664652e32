// The properties of a folder. Rules as in ObjectProperties.h.
#pragma once

#include "localmapi/pst/source/Mailbox.h"
#include "localmapi/pst/source/ObjectProperties.h"

#include <optional>

namespace localmapi::pst {

class FolderProperties final : public ObjectProperties {
public:
    // NotFound, Corrupt or ReadFailed.
    static Result<std::unique_ptr<FolderProperties>> OpenObject(MailboxPtr mailbox, NodeId id);

    FolderProperties(MailboxPtr mailbox, std::unique_ptr<Folder> folder)
        : ObjectProperties(folder->Properties(), mailbox->File().CodePage()),
          m_mailbox(std::move(mailbox)),
          m_folder(std::move(folder)) {}

    Folder& TheFolder() noexcept { return *m_folder; }
    bool IsSearchFolder() const noexcept { return m_folder->Id().Type() == NodeType::SearchFolder; }

protected:
    std::span<const ULONG> MadeIds() const override;
    std::optional<ULONG> MadeTag(ULONG id) override;
    Result<Bytes> Make(ULONG id, std::uint64_t limit) override;

private:
    CStringW LostName();
    bool HasFolders();
    std::uint32_t CountUnread();

    MailboxPtr m_mailbox;
    std::unique_ptr<Folder> m_folder;
    std::optional<bool> m_hasFolders;
};

// The kind of a folder: PR_FOLDER_TYPE.
ULONG FolderTypeOf(NodeId id) noexcept;

}  // namespace localmapi::pst
