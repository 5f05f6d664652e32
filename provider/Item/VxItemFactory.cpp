#include "provider/Item/VxItemFactory.h"

#include "provider/Item/VxContact.h"
#include "provider/Item/VxItem.h"
#include "provider/StoreAndFolder/VxOutlookAddrFolder.h"

namespace {

class ItemFactory final : public CVxItemFactory {
public:
    std::unique_ptr<CVxItem> MakeItem(EVxItemType type, CVxOutlookFolder* folder) const override {
        return CVxItem::MakeItem(type, folder);
    }

    std::unique_ptr<CVxItem> MakeAddressBookContact(CVxOutlookAddrFolder* folder, const CStringW& id,
                                                    CVxAddressBook* book) const override {
        return std::make_unique<CVxContact>(folder, id, book, folder);
    }

    IMessage* OpenMapiMessage(const CStringW& id, IMsgStore* store) const override {
        return CVxItem::OpenMapiMessage(id, store);
    }

    std::unique_ptr<CVxItem> CreateItem(CVxConnectable* parent, const CStringW& id, CVxOutlookFolder* folder,
                                        CVxOutlookStore* store, IMessage* message) const override {
        return CVxItem::CreateItem(parent, id, folder, store, message);
    }
};

}  // namespace

const CVxItemFactory& VxItems() noexcept {
    static const ItemFactory items;
    return items;
}
