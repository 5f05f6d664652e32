// A message of a file: its storage, its properties, and the lists of its recipients and attachments. What is open of a
// message is open once, however many sources speak of it. One thread at a time.
#pragma once

#include "localmapi/base/Result.h"
#include "localmapi/msg/FileContext.h"
#include "localmapi/msg/OpenedStorage.h"
#include "localmapi/msg/PropertySet.h"
#include "mapi/MapiTypes.h"
#include "platform/Storage.h"

#include <array>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace localmapi::msg {

class AttachmentNode;

// A recipient, in its storage or still in memory.
struct RecipientNode {
    std::optional<OpenedStorage> storage;
    PropertySet properties;
};

class MessageNode : public std::enable_shared_from_this<MessageNode> {
public:
    // Recipients, and attachments, of a message that are looked at.
    static constexpr std::size_t kMostParts = 65535;

    // The message of a file. Unsupported when the storage has nothing of a message and cannot be written.
    static Result<std::shared_ptr<MessageNode>> OpenFile(ComPtr<IStorage> storage, std::shared_ptr<FileContext> file);

    // The message in an attachment's storage, and a new one in a storage that is empty.
    static Result<std::shared_ptr<MessageNode>> OpenWithin(std::shared_ptr<AttachmentNode> around,
                                                           ComPtr<IStorage> storage, std::string path);
    static Result<std::shared_ptr<MessageNode>> CreateWithin(std::shared_ptr<AttachmentNode> around,
                                                             ComPtr<IStorage> storage, std::string path);

    MessageNode(ComPtr<IStorage> storage, std::string path, std::shared_ptr<FileContext> file,
                std::shared_ptr<AttachmentNode> around);
    ~MessageNode();

    FileContext& File() noexcept { return *m_file; }
    const std::shared_ptr<FileContext>& SharedFile() const noexcept { return m_file; }
    OpenedStorage& Storage() noexcept { return m_storage; }
    PropertySet& Properties() noexcept { return m_properties; }
    unsigned Depth() const noexcept { return m_depth; }

    // The page of its 8-bit texts; looked for at the first call, and again when the message tells another.
    UINT CodePage();

    // How texts are written.
    TextForm Form() {
        return {m_isWide, [this] { return CodePage(); }};
    }

    // ---- Recipients, by their places

    std::size_t RecipientCount() const noexcept { return m_recipients.size(); }
    Result<std::shared_ptr<RecipientNode>> Recipient(std::size_t place);

    // On failure the list stays as it was.
    Status ReplaceRecipients(const std::vector<SRow>& rows);

    // ---- Attachments, by their numbers

    std::vector<ULONG> AttachmentNumbers() const;
    Result<std::shared_ptr<AttachmentNode>> Attachment(ULONG number);
    Result<std::shared_ptr<AttachmentNode>> CreateAttachment(ULONG& number);
    Status DeleteAttachment(ULONG number);
    void NoteSaved(ULONG number);

    Status Save();

    // Forgets what was set and not saved.
    void Discard();

private:
    struct RecipientSlot {
        CStringW name;  // of its storage; empty while it is in memory only
        std::shared_ptr<RecipientNode> inMemory;
        std::weak_ptr<RecipientNode> opened;
    };
    enum class AttachmentState : std::uint8_t {
        Added,       // its storage exists; the attachment was never saved
        AddedSaved,  // and it was; the message was not
        Kept,        // part of the message
    };
    struct AttachmentSlot {
        CStringW name;
        AttachmentState state;
        std::weak_ptr<AttachmentNode> opened;
    };

    Status Load();
    void LoadProperties(const std::vector<OpenedStorage::Element>& elements);
    bool FindsWideTexts() const;
    HeaderSize Header() const noexcept;
    void SetSupportMask();
    Status SaveNewNames();
    Status SaveFile();
    Status SaveRecipients();
    Status SaveAttachments();
    Bytes PropertyHeader() const;

    std::shared_ptr<FileContext> m_file;
    std::shared_ptr<AttachmentNode> m_around;  // null for the file's message; its storage holds this one
    unsigned m_depth;
    OpenedStorage m_storage;
    PropertySet m_properties;
    bool m_isWide = true;
    std::optional<UINT> m_codePage;
    std::array<std::optional<std::int32_t>, 3> m_toldPages;  // what the message told of it then

    std::vector<RecipientSlot> m_recipients;
    std::deque<std::shared_ptr<RecipientNode>> m_recentRecipients;  // kept open for the next column of a row
    std::vector<CStringW> m_replacedRecipients;                     // storages that go at Save

    std::map<ULONG, AttachmentSlot> m_attachments;
    std::vector<CStringW> m_deletedAttachments;  // storages that go at Save
    ULONG m_nextAttachment = 0;
};

}  // namespace localmapi::msg
