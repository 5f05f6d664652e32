// The tables of a folder and of the store: folders, messages, receive folders. Rules as in RowSource.h.
//
// A list of items keeps sixteen bytes a row, a row's object is open one at a time, and entry ids are found by the order
// of the lists.
#pragma once

#include "localmapi/model/RowSource.h"
#include "localmapi/pst/source/Mailbox.h"

#include <memory>

namespace localmapi::pst {

// The folders right below a folder, search folders among them; below the visible tree also those that are lost from
// their own place.
std::unique_ptr<RowSource> FolderRows(MailboxPtr mailbox, Folder& folder);

// The messages of a folder, or its hidden messages, by the table that lists them.
std::unique_ptr<RowSource> MessageRows(MailboxPtr mailbox, Folder& folder, NodeType table);

std::unique_ptr<RowSource> ReceiveFolderRows(MailboxPtr mailbox);

}  // namespace localmapi::pst
