// One-off entry ids: recipients that say themselves who they are, [MS-OXCDATA] 2.2.5.1. Pure functions; any thread.
#pragma once

#include "localmapi/base/Bytes.h"
#include "platform/WideText.h"

#include <optional>

namespace localmapi {

struct OneOff {
    CStringW name;
    CStringW addressType;
    CStringW address;
    bool isRich = true;  // false: MAPI_ONE_OFF_NO_RICH_INFO
};

Bytes MakeOneOff(const OneOff& recipient, bool wide);

// Nothing for an id of another kind, or one that is cut short.
std::optional<OneOff> ParseOneOff(ByteView entryId);

}  // namespace localmapi
