// The address book of a session: a tree of containers that holds nobody yet, and the recipients that say themselves who
// they are (one-off entry ids).
#pragma once

#include "localmapi/base/Bytes.h"
#include "localmapi/com/ComObject.h"
#include "mapi/MapiInterfaces.h"

namespace localmapi {

// `session` is what the book belongs to; may be null.
ComPtr<IAddrBook> MakeAddressBook(ComPtr<IUnknown> session, SharedLock lock);

// An entry of the book in the interface asked for, null asks for its own: an empty id is the root container, a one-off
// recipient an IMailUser. `type` may be null. MAPI_E_UNKNOWN_ENTRYID for the ids of others, MAPI_E_INVALID_ENTRYID for
// what is too short to be one.
HRESULT GiveAddressEntry(ByteView entryId, LPCIID interfaceId, const ComPtr<IUnknown>& session, const SharedLock& lock,
                         ULONG* type, LPUNKNOWN* object);

}  // namespace localmapi
