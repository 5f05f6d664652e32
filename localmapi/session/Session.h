// A session: one profile, its stores, its sections and the address book, as IMAPISession.
#pragma once

#include "localmapi/com/ComPtr.h"
#include "mapi/MapiInterfaces.h"
#include "platform/WideText.h"

#include <string>

namespace localmapi {

// Opens a session on a profile; an empty name asks for the default one. MAPI_E_LOGON_FAILED when there is no such
// profile, MAPI_E_CORRUPT_DATA and the like when it cannot be read; `problem` then says what and where, in UTF-8.
HRESULT OpenSession(WideView profileName, ComPtr<IMAPISession>& session, std::string& problem);

}  // namespace localmapi
