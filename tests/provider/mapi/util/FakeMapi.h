// A MAPI of this test program's own, in the place of the provider's loader: the program defines the functions that
// CMapiUtil calls, so the loader's are not linked in.
#pragma once

#include "mapi/MapiFunctions.h"
#include "platform/Storage.h"

#include <functional>
#include <string>
#include <vector>

// Empty at its construction, with no memory given out; one at a time.
class FakeMapi {
public:
    FakeMapi();
    ~FakeMapi();
    FakeMapi(const FakeMapi&) = delete;
    FakeMapi& operator=(const FakeMapi&) = delete;

    // Zeroed property values, or rows of two values each, as MAPI's functions would give them.
    static LPSPropValue NewProps(ULONG count);
    static LPSRowSet NewRows(ULONG count);

    // Blocks that were given and not freed, and sessions open.
    static int LiveBlocks();
    static int OpenSessions();

    // What OpenIMsgOnIStg does; the storage and the flags that it was given.
    using OpenMessage = std::function<HRESULT(IStorage* storage, ULONG flags, LPMESSAGE* message)>;
    OpenMessage openMessage;

    // What HrQueryAllRows gives, when it succeeds.
    std::function<HRESULT(LPSRowSet* rows)> queryAllRows;

    HRESULT openSessionResult = S_OK;

    // The calls of message sessions and messages, in order.
    std::vector<std::string> calls;
    bool argumentsAsExpected = true;  // of OpenIMsgSession, OpenIMsgOnIStg and HrQueryAllRows
};
