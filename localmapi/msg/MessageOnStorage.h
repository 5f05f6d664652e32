// Messages in message files (.msg), read and written: [MS-OXMSG]. A file is a structured storage; the caller opens it,
// or makes it, and gives it here.
//
// One thread at a time for a file and everything opened from it.
#pragma once

#include "localmapi/base/Diagnostics.h"
#include "localmapi/base/Result.h"
#include "localmapi/com/ComPtr.h"
#include "localmapi/model/MessageSource.h"
#include "platform/Storage.h"

#include <memory>

namespace localmapi::msg {

struct MsgOptions {
    // The storage was opened for writing too. Otherwise all that changes the message answers AccessDenied.
    bool isWritable = false;

    // Save commits the storage. False leaves that to the storage's owner.
    bool commits = true;

    // Receives what is wrong with the file. Not owned; outlives the message. May be null.
    DiagnosticSink* problems = nullptr;

    // Of 8-bit texts where nothing in the file tells; 0: DefaultCodePage().
    UINT fallbackCodePage = 0;
};

// Messages within each other at most, the file's own counted: a level is a handful of frames for whoever walks them.
inline constexpr unsigned kMostNesting = 32;

// The message in a storage. An empty storage opened for writing is a new message, whose texts are wide. A storage that
// has nothing of a message gives one without properties when it is writable, else Unsupported; ReadFailed and the like
// when it cannot be read.
//
// Writing. What is set, removed, added and deleted takes effect at Save, all but these, which are written into the
// storage at once: values above 64 KiB given as a source, what is written by stream, and the content of attachments
// that hold a message or storage. In a transacted storage nothing of this reaches the file before Save. Save on an
// attachment or an embedded message puts its changes into its own storage; Save on the file's message makes them part
// of it, drops attachments that were added and never saved, writes the names of named properties, and commits the
// storage. Texts are kept in the message's form, wide or 8-bit as those of an existing message are; one whose
// characters an 8-bit message's page lacks stays wide. A failed Save leaves a direct storage half written.
//
// PR_ATTACH_NUM of an attachment is the number by which it is opened, and PR_ROWID of a recipient its place, whatever
// the file says; PR_ATTACH_METHOD is what an attachment with an object turns out to hold.
Result<std::unique_ptr<MessageSource>> OpenMessageOnStorage(ComPtr<IStorage> storage, const MsgOptions& options);

}  // namespace localmapi::msg
