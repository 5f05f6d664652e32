// The COM objects that administer profiles: IProfAdmin, IMsgServiceAdmin, IProviderAdmin. They keep nothing: each call
// reads and changes what is in the profiles folder then, and what it changed counts at once.
//
// Nothing shows windows: flags that ask for a dialog are passed over, and where only a dialog could help the call fails.
#pragma once

#include "localmapi/com/ComObject.h"
#include "localmapi/com/ComPtr.h"
#include "localmapi/profile/ProfileStorage.h"
#include "mapi/MapiProfileInterfaces.h"
#include "platform/WideText.h"

namespace localmapi::profile {

// With a lock of its own.
ComPtr<IProfAdmin> MakeProfileAdmin(ProfileStorage storage);

// For a profile that there is; IProfAdmin::AdminServices looks first. What it gives shares `lock`.
ComPtr<IMsgServiceAdmin> MakeServiceAdmin(ProfileStorage storage, CStringW profileName, SharedLock lock);

ComPtr<IProviderAdmin> MakeProviderAdmin(ProfileStorage storage, CStringW profileName, const MAPIUID& service,
                                         SharedLock lock);

}  // namespace localmapi::profile
