// A session, and the address book behind it. The maker gives a reference to the caller.
#pragma once

#include "mapi/MapiInterfaces.h"
#include "testing/scripted_mapi/Model.h"

namespace scripted_mapi {

IMAPISession* NewSession(const std::shared_ptr<Context>& context, std::shared_ptr<ProfileModel> profile);

}  // namespace scripted_mapi
