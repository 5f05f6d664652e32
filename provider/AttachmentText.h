// The texts that name attachments. There are three kinds:
//
// - A path names an attachment or embedded item inside one root item: components joined by "/". An attachment's
//   component is a number, an embedded item's is "VxEMBITEM" and a number. So "VxEMBITEM2/4" is attachment 4 of the item
//   embedded as attachment 2. A root item's own path is empty.
// - The attachment list of an item's record is one text, an entry after the other: a name, and how to ask for it.
// - A blob reference stands, as UTF-16LE bytes, in the place of an attachment's data when that is in a file or in a named
//   memory section.
//
// Names go into lists as they are: one that holds the list's own markers is not escaped.
// Free functions without state; any thread.
#pragma once

#include "platform/BaseTypes.h"
#include "platform/WideText.h"
#include "provider/ItemTypes.h"

#include <cstddef>
#include <cstdint>

// The path of attachment `number` (PR_ATTACH_NUM, or the index in a decoded S/MIME message's list) of the item at
// `parentPath`.
CStringW AttachmentPath(WideView parentPath, LONG number);

// The path of the item that is embedded as attachment `number` in the item at `parentPath`.
CStringW EmbeddedItemPath(WideView parentPath, LONG number);

// The first `count` components of a path with the "/" between them; the whole path when it has no more.
WideView FirstComponents(WideView path, std::size_t count);

// What a list entry starts with. It is the whole entry for an embedded item that could not be made.
CStringW AttachmentListName(WideView name);

// What follows the name in a list entry, by the kind of attachment. An attachment of a decoded S/MIME message has both
// markers, one after the other: consumers rely on it.
CStringW AttachmentListItemId(EVxItemType type, WideView path);
CStringW AttachmentListFileId(WideView path);
CStringW AttachmentListSmimeId(WideView path);

// The blob reference of data saved in a file.
CStringW FileReference(WideView path);

// The blob reference of data in a memory section, which is also the section's name: the size is read from the name.
CStringW SectionReference(std::uint64_t size, WideView fileName);
