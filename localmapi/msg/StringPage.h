// In which code page the 8-bit texts of a message file are. Any thread.
#pragma once

#include "localmapi/msg/PropertySet.h"

namespace localmapi::msg {

// The page of a message's 8-bit texts: the first of these in which all of its texts are valid: what the message itself
// declares, its RTF body's page, that of its locale, that of its internet body, `fallback`, 1252, UTF-8. Where no text
// has more than ASCII, the first that is known. 1252 when all fail.
UINT StringPageOf(PropertySet& properties, UINT fallback);

}  // namespace localmapi::msg
