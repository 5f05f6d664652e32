// All of Extended MAPI's declarations. Headers include the part that they use; sources that work with stores, messages
// and profiles at once include this.
#pragma once

#include "mapi/MapiCodes.h"
#include "mapi/MapiFlags.h"
#include "mapi/MapiFunctions.h"
#include "mapi/MapiGuids.h"
#include "mapi/MapiInterfaces.h"
#include "mapi/MapiNotifications.h"
#include "mapi/MapiProfileInterfaces.h"
#include "mapi/MapiRestrictions.h"
#include "mapi/MapiTypes.h"
#include "mapi/NamedProps.h"
#include "mapi/PropTags.h"
