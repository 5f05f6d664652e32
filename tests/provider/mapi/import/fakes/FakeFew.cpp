// The few functions that every fake client has.
#include "mapi/MapiFunctions.h"
#include "tests/provider/mapi/import/fakes/FakeControl.h"

using vx_fake_mapi::g_lastVoidCall;
using vx_fake_mapi::OwnAnswer;

extern "C" {

HRESULT STDAPICALLTYPE MAPIInitialize(LPVOID) {
    return OwnAnswer(__func__);
}

HRESULT STDAPICALLTYPE HrQueryAllRows(LPMAPITABLE, LPSPropTagArray, LPSRestriction, LPSSortOrderSet, LONG, LPSRowSet*) {
    return OwnAnswer(__func__);
}

void STDAPICALLTYPE FreeProws(LPSRowSet) {
    g_lastVoidCall = __func__;
}
}
