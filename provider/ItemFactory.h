// How the tree of folders makes and opens items without knowing their classes. The room of items implements this; the
// root of the tree (CVxDomain) hands it down.
//
// An implementation has no state that changes. Nothing it makes is connected.
#pragma once

#include "mapi/MapiInterfaces.h"
#include "platform/WideText.h"
#include "provider/ItemTypes.h"

#include <memory>

class CVxAddressBook;
class CVxConnectable;
class CVxItem;
class CVxOutlookAddrFolder;
class CVxOutlookFolder;
class CVxOutlookStore;

class CVxItemFactory {
public:
    // An item of a folder's contents table, of the class that stands for `type`, with `folder` as its parent and
    // nothing else set. Null for a type without a class.
    virtual std::unique_ptr<CVxItem> MakeItem(EVxItemType type, CVxOutlookFolder* folder) const = 0;

    // The contact with that id in the global address list. Its parent and folder are `folder`, its store is `book`.
    virtual std::unique_ptr<CVxItem> MakeAddressBookContact(CVxOutlookAddrFolder* folder, const CStringW& id,
                                                            CVxAddressBook* book) const = 0;

    // CVxItem::OpenMapiMessage: the message with that id, with a reference of the caller's; null when it cannot be
    // opened.
    virtual IMessage* OpenMapiMessage(const CStringW& id, IMsgStore* store) const = 0;

    // CVxItem::CreateItem: an item of the class that the open message's own class asks for; null when there is none.
    // The message is looked at and not kept.
    virtual std::unique_ptr<CVxItem> CreateItem(CVxConnectable* parent, const CStringW& id, CVxOutlookFolder* folder,
                                                CVxOutlookStore* store, IMessage* message) const = 0;

protected:
    ~CVxItemFactory() = default;
};
