// Calls that may change the process's current directory, as MAPI's logon and the set-up of services do.
#pragma once

#include "provider/Common/CurDirKeeper.h"

// Makes the call and goes back to the directory of before. An exception of the call passes, the directory restored.
template <typename Call>
auto KeepDirectory(Call call) {
    struct Restorer {
        CCurrDirKeeper keeper;
        ~Restorer() { keeper.Restore(); }
    };
    const Restorer restorer;
    return call();
}
