// A section of a profile as an object with properties. What is set counts at once, for every program: SaveChanges is
// not needed.
#pragma once

#include "localmapi/com/ComObject.h"
#include "localmapi/profile/ProfileStorage.h"
#include "mapi/MapiProfileInterfaces.h"

namespace localmapi::profile {

// OpenProfileSection of whatever object has it: sessions, and the administrators of services and providers. A section
// that is not there is made at the first change when `flags` has MAPI_MODIFY; MAPI_E_NOT_FOUND else. The texts of
// failures go to `failure`. `section` gets a reference, or null.
HRESULT OpenSection(const ProfileStorage& storage, WideView profileName, const MAPIUID* uid, LPCIID interfaceId,
                    ULONG flags, const SharedLock& lock, LastFailure& failure, IProfSect** section);

}  // namespace localmapi::profile
