// A facade of the tests' own under the proxy: it notes what each operation gets, and gives what the test says.
#pragma once

#include "platform/BaseTypes.h"
#include "platform/ResultCodes.h"

#include <functional>
#include <string>

namespace VxOutlookProvider {

struct FakeFacade {
    HRESULT result = S_OK;
    bool fillsResults = true;  // the text "given", counts higher by 1, 2 and 3, the flag true

    // Run in the middle of InitializeVxMapi, QueryItems and SetAbort; may throw.
    std::function<void()> during;

    // The latest call: its name and arguments, as ValueText.h prints them; texts without quotes, null for none.
    std::string call;

    int live = 0;  // instances
};

FakeFacade& Facade();

}  // namespace VxOutlookProvider
