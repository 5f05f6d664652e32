// The objects of a store: store, folder, message, attachment. Each maker gives a reference to the caller.
#pragma once

#include "mapi/MapiInterfaces.h"
#include "testing/scripted_mapi/Model.h"

namespace scripted_mapi {

IMsgStore* NewStore(const std::shared_ptr<Context>& context, const std::shared_ptr<StoreModel>& model);
IMAPIFolder* NewFolder(const std::shared_ptr<Context>& context, const std::shared_ptr<StoreModel>& store,
                       const std::shared_ptr<FolderModel>& model);
IMessage* NewMessage(const std::shared_ptr<Context>& context, const std::shared_ptr<MessageModel>& model);

// Opens the folder or message with that id, or long-term id; null opens the root. MAPI_E_NOT_FOUND for none, and
// MAPI_E_INTERFACE_NOT_SUPPORTED for an interface that the object has not.
HRESULT OpenStoreEntry(const std::shared_ptr<Context>& context, const std::shared_ptr<StoreModel>& store, ULONG size,
                       const ENTRYID* entryId, const IID* iid, ULONG* objectType, IUnknown** object);

}  // namespace scripted_mapi
