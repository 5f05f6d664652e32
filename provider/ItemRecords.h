// The records of items and attachments: which of an object's properties goes into which field.
//
// Both connect the object first. A record that is not filled to the end belongs to a call that failed.
#pragma once

class CExchObjectData;
class CVxAttachment;
class CVxItem;

// Fills the record of an item. `isAttached` is told by mails alone. The item's error bits move into the record. Always
// true.
bool SetObjectData(CVxItem& item, CExchObjectData& data, bool isAttached);

// Fills the record of an attachment, with its bytes in the form that was asked for. Its error bits move into the record,
// those of its item are copied.
void SetBinaryObjectData(CVxAttachment& attachment, CExchObjectData& data);
