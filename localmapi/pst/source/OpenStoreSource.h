// A PST or OST file as a source of stores: the face of this room. Everything that it hands out shares the open file, so
// that nothing here needs to be released in a certain order; but all of it belongs to one thread at a time.
//
// What the sources tell that the file does not store, or not so:
//  - subjects without the mark of their prefix; the prefix and the normalized subject made from it;
//  - PR_LAST_MODIFICATION_TIME of a message without one: that in its folder's table (OST files keep it there only), else
//    the time of its creation, delivery or submission, the first that it has, else 0. Clients that sort by it, or want
//    what is newer, then still come by the message;
//  - PR_DISPLAY_TO, _CC and _BCC from the recipients, PR_HASATTACH from the attachments, PR_MESSAGE_SIZE from the sizes
//    of the values, where they are missing;
//  - PR_SUBFOLDERS always from the list of folders; the counts of a folder from its lists where they are missing;
//  - PR_IPM_SUBTREE_ENTRYID, which OST files do not have;
//  - properties of the types PtypServerId, PtypRestriction and PtypRuleAction as the bytes that they are stored in, of
//    type PT_BINARY. Properties of type PtypErrorCode are left out.
// The rows of a table give what the table stores, which may lag behind the object, and the rest from the object.
#pragma once

#include "localmapi/com/ComObject.h"
#include "localmapi/model/StoreSource.h"
#include "localmapi/pst/messaging/Store.h"

#include <filesystem>
#include <memory>

namespace localmapi::pst {

// As Store::Open. `lock` is that of the objects above, under which the sources are used: the storages in attachments,
// which their readers use on their own, hold it whenever they read. Null: they get one of their own, for users of the
// sources who have but one thread.
Result<std::unique_ptr<StoreSource>> OpenStoreSource(const std::filesystem::path& file, const StoreOptions& options,
                                                     SharedLock lock = nullptr);
Result<std::unique_ptr<StoreSource>> OpenStoreSource(std::unique_ptr<ByteSource> source, const StoreOptions& options,
                                                     SharedLock lock = nullptr);

}  // namespace localmapi::pst
