// The address book of a session: a tree of containers that holds nobody yet, and the recipients that say themselves who
// they are (one-off entry ids).
#pragma once

#include "localmapi/base/Bytes.h"
#include "localmapi/com/ComObject.h"
#include "mapi/MapiInterfaces.h"

namespace localmapi {

// `session` is what the book belongs to; may be null.
ComPtr<IAddrBook> MakeAddressBook(ComPtr<IUnknown> session, SharedLock lock);

// An entry of the book as an object: null or empty for the root container, a one-off recipient as IMailUser.
// MAPI_E_UNKNOWN_ENTRYID for the ids of address books that are not here, MAPI_E_INVALID_ENTRYID for what is too short.
HRESULT OpenAddressEntry(ByteView entryId, const ComPtr<IUnknown>& session, const SharedLock& lock,
                         ComPtr<IUnknown>& object, ULONG& type);

}  // namespace localmapi
