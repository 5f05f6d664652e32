// CURIObjectData: how the host names a folder, an item or an attachment. It is no text but a record of nine fields, which
// the host received from an earlier query, stored, and hands back; the parts of the address are kept apart, so nothing
// is parsed or escaped.
//
// The fields in use depend on the type: a folder has 0 to 3 (profile, store, folder), an item 0 to 4 and 6 to 8 (its
// id, type, time of last change, read state), an attachment 0 to 6 (the id of the item that owns it, its path in that
// item), with 7 and 8 being 0 and false.
#pragma once

#include "provider/ExchObjectData.h"
#include "provider/ItemTypes.h"

#include <cstdint>

class CURIObjectData final : public RecordOf<kUriFields> {
public:
    // Nine unset fields.
    CURIObjectData() = default;

    // Borrows the host's record.
    explicit CURIObjectData(VARIANT* uri) : RecordOf(uri) {}

    // Ids are entry ids in hexadecimal, `timestamp` is in FILETIME ticks, `attachmentNum` is an attachment's path. Item
    // id and item type are left unset for types below eUriItem, the path for types below eUriAttachment.
    CURIObjectData(UriType type, const CStringW& profile, const CStringW& store, const CStringW& folder,
                   std::int64_t timestamp, bool read, const CStringW& itemId, const CStringW& attachmentNum,
                   EVxItemType itemType);

    // Makes the URI name an item in its folder.
    void SetItemId(const CStringW& itemId, EVxItemType type, std::int64_t timestamp, bool read);

    // Makes the URI name an attachment of its item, or an item embedded in it; an attachment that is no item has the
    // type eVxItemUnknown. The item id stays: it is that of the owner. Time and read state become 0 and false.
    void SetAttachmentNum(const CStringW& attachmentNum, EVxItemType type);

    // The fields. A text that is not set is null, a number 0.
    UriType GetUriType() const;
    _bstr_t ProfileName() const;
    _bstr_t StoreId() const;
    _bstr_t FolderId() const;
    _bstr_t ItemId() const;
    _bstr_t AttachmentNum() const;
    EVxItemType ItemType() const;
    std::int64_t Timestamp() const;
    bool ReadStatus() const;
};
