// Messages and their attachments, whatever file they are in. The writing operations answer AccessDenied where the
// message is only read. Rules as in PropertySource.h.
#pragma once

#include "localmapi/model/PropertySource.h"
#include "localmapi/model/RowSource.h"
#include "mapi/MapiTypes.h"
#include "platform/Storage.h"

#include <memory>
#include <vector>

namespace localmapi {

class MessageSource;

class AttachmentSource : public PropertySource {
public:
    // The message of an attachment of method 5. NotFound when it is none; TooLarge when messages are nested too deeply.
    virtual Result<std::unique_ptr<MessageSource>> OpenMessage() = 0;

    // The object of an attachment of method 6, for reading. NotFound when it is none; Corrupt when it is no storage.
    virtual Result<ComPtr<IStorage>> OpenStorage() = 0;

    // Makes the attachment hold an empty message, or an empty storage; what it held is lost.
    virtual Result<std::unique_ptr<MessageSource>> CreateMessage();
    virtual Result<ComPtr<IStorage>> CreateStorage();
};

class MessageSource : public PropertySource {
public:
    // The names of its properties, those of its recipients and attachments, and of the messages within it.
    virtual PropertyNames& Names() = 0;

    // The recipients, in their order. Never fails: what is damaged is left out, and reported.
    virtual std::unique_ptr<RowSource> Recipients() = 0;

    // The attachments' numbers in their order: what OpenAttachment takes, and PR_ATTACH_NUM of their rows. The rows
    // stand in the same order.
    virtual std::vector<ULONG> AttachmentNumbers() = 0;
    virtual std::unique_ptr<RowSource> Attachments() = 0;

    // NotFound, Corrupt or ReadFailed.
    virtual Result<std::unique_ptr<AttachmentSource>> OpenAttachment(ULONG number) = 0;

    // How many messages there are around it: 0 for one that is in no other.
    virtual unsigned Depth() const = 0;

    // Sets the list of recipients: one SRow each, deep copies are taken.
    virtual Status ReplaceRecipients(const std::vector<SRow>& rows);

    virtual Result<std::unique_ptr<AttachmentSource>> CreateAttachment(ULONG& number);
    virtual Status DeleteAttachment(ULONG number);
};

}  // namespace localmapi
