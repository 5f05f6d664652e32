// Whether the subsystem is in use. Each MAPIInitialize is undone by one MAPIUninitialize. Any thread.
#pragma once

#include "mapi/MapiTypes.h"

namespace localmapi {

// `init` may be null. MAPI_E_INVALID_PARAMETER for a version that is not known. The flags ask for ways of notification,
// of which there are none, and about COM's apartments, which this subsystem does without.
HRESULT Initialise(const MAPIINIT_0* init) noexcept;

// One too many does nothing.
void Uninitialise() noexcept;

bool IsInitialised() noexcept;

}  // namespace localmapi
