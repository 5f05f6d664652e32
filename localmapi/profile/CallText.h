// Texts that come in through MAPI's calls. Any thread.
#pragma once

#include "localmapi/props/Values.h"
#include "mapi/MapiFlags.h"
#include "mapi/MapiTypes.h"
#include "platform/CodePage.h"
#include "platform/WideText.h"

namespace localmapi::profile {

// The width is what `flags` says, whatever the parameter's type. Empty for a null pointer.
inline CStringW CallText(LPTSTR text, ULONG flags) {
    if (text == nullptr) {
        return {};
    }
    return (flags & MAPI_UNICODE) != 0 ? CStringW(reinterpret_cast<const WCHAR*>(text))
                                       : ToWide(reinterpret_cast<const char*>(text), CP_ACP);
}

}  // namespace localmapi::profile
