// An attachment of a message: its storage, its properties, and the message or object in it. One thread at a time.
#pragma once

#include "localmapi/base/Result.h"
#include "localmapi/msg/MessageNode.h"
#include "localmapi/msg/OpenedStorage.h"
#include "localmapi/msg/PropertySet.h"

#include <memory>
#include <string>

namespace localmapi::msg {

class AttachmentNode : public std::enable_shared_from_this<AttachmentNode> {
public:
    AttachmentNode(std::shared_ptr<MessageNode> owner, ULONG number, ComPtr<IStorage> storage, std::string path);

    // Reads what the storage has.
    Status Load();

    MessageNode& Owner() noexcept { return *m_owner; }
    OpenedStorage& Storage() noexcept { return m_storage; }
    PropertySet& Properties() noexcept { return m_properties; }
    UINT CodePage() { return m_owner->CodePage(); }
    TextForm Form() { return m_owner->Form(); }

    // As AttachmentSource.
    Result<std::shared_ptr<MessageNode>> OpenMessage();
    Result<ComPtr<IStorage>> OpenStorage();
    Result<std::shared_ptr<MessageNode>> CreateMessage();
    Result<ComPtr<IStorage>> CreateStorage();

    Status Save();

    // Forgets what was set and not saved.
    void Discard();

private:
    void FindObject();
    Result<ComPtr<IStorage>> OpenBytesAsStorage();
    Status ReplaceContent(std::uint32_t kind, std::int32_t method);
    std::string ObjectPath() const;

    std::shared_ptr<MessageNode> m_owner;
    ULONG m_number;
    OpenedStorage m_storage;
    PropertySet m_properties;

    ComPtr<IStorage> m_object;  // the storage in the attachment, opened once for all; null when there is none
    bool m_isMessage = false;   // what m_object is
    std::weak_ptr<MessageNode> m_message;
};

}  // namespace localmapi::msg
