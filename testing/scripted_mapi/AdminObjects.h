// The objects that administer profiles: profiles, services, providers, sections. Each maker gives a reference to the
// caller.
#pragma once

#include "mapi/MapiProfileInterfaces.h"
#include "testing/scripted_mapi/Model.h"

namespace scripted_mapi {

IProfAdmin* NewProfAdmin(const std::shared_ptr<Context>& context);
IMsgServiceAdmin* NewServiceAdmin(const std::shared_ptr<Context>& context, std::shared_ptr<ProfileModel> profile);

// The global section, or that of a provider; MAPI_E_NOT_FOUND for an identifier of neither.
HRESULT OpenSection(const std::shared_ptr<Context>& context, const std::shared_ptr<ProfileModel>& profile,
                    const MAPIUID* uid, IProfSect** section);

}  // namespace scripted_mapi
