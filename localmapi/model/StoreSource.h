// Stores and their folders, whatever file they are in. Only read. Rules as in PropertySource.h.
#pragma once

#include "localmapi/model/MessageSource.h"
#include "localmapi/model/PropertySource.h"
#include "localmapi/model/RowSource.h"
#include "platform/WideText.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace localmapi {

// What an entry id of a store names.
enum class EntryKind : std::uint8_t { Folder, Message };

// The folders and messages of a store are known by numbers within it.
using EntryNumber = std::uint64_t;

struct Entry {
    EntryKind kind;
    EntryNumber number;
};

class FolderSource : public PropertySource {
public:
    virtual EntryNumber Number() const = 0;

    // The folder that holds it; its own number for the topmost.
    virtual EntryNumber Parent() const = 0;

    // The folders right below it, its messages, its hidden messages. Never fail: what is damaged is left out or rebuilt,
    // and reported.
    virtual std::unique_ptr<RowSource> Folders() = 0;
    virtual std::unique_ptr<RowSource> Messages() = 0;
    virtual std::unique_ptr<RowSource> AssociatedMessages() = 0;
};

// The properties of a store source are those of the store object itself.
class StoreSource : public PropertySource {
public:
    // The 16 bytes that entry ids of this store carry, and its record key.
    virtual Bytes Key() = 0;
    virtual Bytes EntryIdOf(EntryNumber number) = 0;
    virtual std::optional<Entry> EntryOf(ByteView entryId) = 0;

    // The folder that a folder or message lies in; 0 when the store does not know it.
    virtual EntryNumber ParentOf(EntryNumber number) = 0;

    virtual EntryNumber TopFolder() = 0;
    virtual EntryNumber IpmSubtree() = 0;

    // The folder that a property of the store (PR_IPM_OUTBOX_ENTRYID and the like) names, where it does.
    virtual std::optional<EntryNumber> FolderNamedBy(ULONG id) = 0;

    // Where messages of a class go: the longest class in the store's table that it begins with, or is. `matched` gets
    // that class.
    virtual std::optional<EntryNumber> ReceiveFolder(WideView messageClass, CStringW& matched) = 0;
    virtual std::unique_ptr<RowSource> ReceiveFolders() = 0;

    virtual PropertyNames& Names() = 0;

    // NotFound, Corrupt or ReadFailed.
    virtual Result<std::unique_ptr<FolderSource>> OpenFolder(EntryNumber number) = 0;
    virtual Result<std::unique_ptr<MessageSource>> OpenMessage(EntryNumber number) = 0;
};

}  // namespace localmapi
