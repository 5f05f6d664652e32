// The few functions that every fake client has.
#include "mapi/MapiFunctions.h"
#include "tests/provider/mapi/import/fakes/FakeControl.h"

using vx_fake_mapi::g_voidCalls;
using vx_fake_mapi::kNumber;

extern "C" {

HRESULT STDAPICALLTYPE MAPIInitialize(LPVOID) {
    return kNumber;
}

HRESULT STDAPICALLTYPE HrQueryAllRows(LPMAPITABLE, LPSPropTagArray, LPSRestriction, LPSSortOrderSet, LONG, LPSRowSet*) {
    return kNumber;
}

void STDAPICALLTYPE FreeProws(LPSRowSet) {
    ++g_voidCalls;
}
}
