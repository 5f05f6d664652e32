// The properties of an attachment. Rules as in ObjectProperties.h.
#pragma once

#include "localmapi/pst/source/Mailbox.h"
#include "localmapi/pst/source/ObjectProperties.h"

#include <memory>

namespace localmapi::pst {

class AttachmentProperties final : public ObjectProperties {
public:
    // `number` is the attachment's place in the list of its message. NotFound, Corrupt or ReadFailed.
    static Result<std::unique_ptr<AttachmentProperties>> OpenObject(Message& message, NodeId id, ULONG number);

    AttachmentProperties(std::unique_ptr<Attachment> attachment, UINT codePage, ULONG number)
        : ObjectProperties(&attachment->Properties(), codePage),
          m_attachment(std::move(attachment)),
          m_number(number) {}

    Attachment& TheAttachment() noexcept { return *m_attachment; }

protected:
    std::span<const ULONG> MadeIds() const override;
    std::optional<ULONG> MadeTag(ULONG id) override;
    Result<Bytes> Make(ULONG id, std::uint64_t limit) override;

    // The content: bytes are bytes, whether they lie in a binary or in an object's node.
    std::optional<ULONG> StoredTag(ULONG id) override;
    Result<PropertyValue> OpenStored(ULONG id) override;

private:
    std::unique_ptr<Attachment> m_attachment;
    ULONG m_number;
};

}  // namespace localmapi::pst
