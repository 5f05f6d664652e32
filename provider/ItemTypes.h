// The kinds of things that the provider tells apart, with the numbers that the host knows them by. All of these numbers
// cross the boundary, in records or as arguments, so any int may come in: each type holds any value of its width.
#pragma once

#include "platform/BaseTypes.h"
#include "platform/WideText.h"

// What an object URI names. Only these values have a meaning here; where the order is tested, it is that of the numbers.
enum UriType : int {
    eUriFolder = 6,
    eUriItem = 8,
    eUriAttachment = 9,  // an attachment, or an item embedded in another
};

// Classes of items, by message class.
enum EVxItemType : int {
    eVxItemUnknown = -1,  // in a URI also: an attachment that is no item
    eVxItemEmail = 1,
    eVxItemContact = 3,
    eVxItemCalendar = 6,
    eVxItemTask = 7,
    eVxItemNote = 14,
};

// `schemaUID` of an attachment's record; those of items are their EVxItemType.
inline constexpr int kAttachmentSchema = 4;

// Kinds of folders, by container class.
enum EVxFolderType : int {
    eVxFolderUnknown = -1,
    eVxFolderEmail = 1,
    eVxFolderContact = 2,
    eVxFolderCalendar = 3,
    eVxFolderTask = 4,
    eVxFolderNote = 5,
    eVxFolderIgnored = 10,
};

// Kinds of message stores, by provider.
enum EVxStoreType : int {
    eVxStorePrivate = 0,
    eVxStorePublic = 1,
    eVxStoreDelegate = 2,
    eVxStorePst = 3,
    eVxStoreHotmailOst = 4,
    eVxStoreOracle = 5,
    eVxStoreImap = 6,
};

// The form in which a body or an attachment's data is asked for. Text, RTF and HTML are one and the same for attachments:
// the bytes.
enum TBodyFormat : int {
    eBodyNone = 0,  // not loaded at all
    eBodyText = 1,
    eBodyRtf = 2,
    eBodyHtml = 3,
    eBodyFile = 4,      // saved to a file; what is given is its path
    eBodyFileKept = 5,  // the same; that the file outlives the body is noted in the log
    eBodySection = 6,   // attachments only: in a named memory section; what is given is its name
};

// What went wrong with an object, as bits of a mask that is collected until it is read.
enum TVxErrors : LONGLONG {
    VxErrorBodyTooBig = 1,      // the item's body was not loaded
    VxErrorAttachmentBody = 2,  // the attachment's data was not loaded: too big, or out of memory
    VxErrorConnect = 4,         // the object could not be opened
};

// The name of an item type, for the log; "<INVALID>" for a number that is none.
constexpr const WCHAR* ItemTypeToPsz(EVxItemType type) noexcept {
    switch (type) {
        case eVxItemUnknown: return "eVxItemUnknown"_w;
        case eVxItemEmail: return "eVxItemEmail"_w;
        case eVxItemContact: return "eVxItemContact"_w;
        case eVxItemCalendar: return "eVxItemCalendar"_w;
        case eVxItemTask: return "eVxItemTask"_w;
        case eVxItemNote: return "eVxItemNote"_w;
    }
    return "<INVALID>"_w;
}
