// The exported functions on memory, properties, rows and notifications.
#include "localmapi/utilities/Utilities.h"
#include "mapi/MapiFunctions.h"
#include "platform/Export.h"

extern "C" {

VX_EXPORT SCODE STDAPICALLTYPE MAPIAllocateBuffer(ULONG size, LPVOID* buffer) {
    return localmapi::MAPIAllocateBuffer(size, buffer);
}
VX_EXPORT SCODE STDAPICALLTYPE MAPIAllocateMore(ULONG size, LPVOID object, LPVOID* buffer) {
    return localmapi::MAPIAllocateMore(size, object, buffer);
}
VX_EXPORT ULONG STDAPICALLTYPE MAPIFreeBuffer(LPVOID buffer) {
    return localmapi::MAPIFreeBuffer(buffer);
}
VX_EXPORT LPMALLOC STDAPICALLTYPE MAPIGetDefaultMalloc() {
    return localmapi::MAPIGetDefaultMalloc();
}
VX_EXPORT void STDAPICALLTYPE FreeProws(LPSRowSet rows) {
    localmapi::FreeProws(rows);
}
VX_EXPORT void STDAPICALLTYPE FreePadrlist(LPADRLIST list) {
    localmapi::FreePadrlist(list);
}

VX_EXPORT HRESULT STDAPICALLTYPE HrGetOneProp(LPMAPIPROP object, ULONG tag, LPSPropValue* value) {
    return localmapi::HrGetOneProp(object, tag, value);
}
VX_EXPORT HRESULT STDAPICALLTYPE HrSetOneProp(LPMAPIPROP object, LPSPropValue value) {
    return localmapi::HrSetOneProp(object, value);
}
VX_EXPORT LPSPropValue STDAPICALLTYPE PpropFindProp(LPSPropValue values, ULONG count, ULONG tag) {
    return localmapi::PpropFindProp(values, count, tag);
}
VX_EXPORT SCODE STDAPICALLTYPE ScCountProps(int count, LPSPropValue values, ULONG* size) {
    return localmapi::ScCountProps(count, values, size);
}
VX_EXPORT SCODE STDAPICALLTYPE ScCopyProps(int count, LPSPropValue values, LPVOID block, ULONG* size) {
    return localmapi::ScCopyProps(count, values, block, size);
}
VX_EXPORT SCODE STDAPICALLTYPE ScRelocProps(int count, LPSPropValue values, LPVOID from, LPVOID to, ULONG* size) {
    return localmapi::ScRelocProps(count, values, from, to, size);
}
VX_EXPORT SCODE STDAPICALLTYPE ScDupPropset(int count, LPSPropValue values, LPALLOCATEBUFFER allocate,
                                            LPSPropValue* copy) {
    return localmapi::ScDupPropset(count, values, allocate, copy);
}
VX_EXPORT SCODE STDAPICALLTYPE PropCopyMore(LPSPropValue to, LPSPropValue from, LPALLOCATEMORE allocateMore,
                                            LPVOID object) {
    return localmapi::PropCopyMore(to, from, allocateMore, object);
}

VX_EXPORT HRESULT STDAPICALLTYPE HrQueryAllRows(LPMAPITABLE table, LPSPropTagArray columns, LPSRestriction restriction,
                                                LPSSortOrderSet sorts, LONG most, LPSRowSet* rows) {
    return localmapi::HrQueryAllRows(table, columns, restriction, sorts, most, rows);
}

// Nothing is ever notified, so nothing waits to be dispatched.
VX_EXPORT HRESULT STDAPICALLTYPE HrDispatchNotifications(ULONG) {
    return S_OK;
}

}  // extern "C"
