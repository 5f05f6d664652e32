// MAPI's functions on memory, properties and rows, as the library exports them: names, arguments and results are the
// published ones, described beside their types in mapi/MapiFunctions.h; here stands what those leave open. Null pointers
// where something is needed give MAPI_E_INVALID_PARAMETER. No function lets an exception out. Any thread; one block by
// one thread at a time.
#pragma once

#include "mapi/MapiFunctions.h"
#include "platform/TaskMemory.h"

namespace localmapi {

// ---- Memory ---------------------------------------------------------------------------------------------------------

SCODE MAPIAllocateBuffer(ULONG size, LPVOID* buffer) noexcept;

// MAPI_E_INVALID_PARAMETER too for an object that is no root.
SCODE MAPIAllocateMore(ULONG size, LPVOID object, LPVOID* buffer) noexcept;

// 0, or MAPI_E_INVALID_PARAMETER for what is no living root.
ULONG MAPIFreeBuffer(LPVOID buffer) noexcept;

// The task allocator, with a reference for the caller; null when there is none.
LPMALLOC MAPIGetDefaultMalloc() noexcept;

void FreeProws(LPSRowSet rows) noexcept;
void FreePadrlist(LPADRLIST list) noexcept;

// ---- Properties of objects ------------------------------------------------------------------------------------------

// A property that cannot be had gives the code of its PT_ERROR, MAPI_E_NOT_FOUND mostly.
HRESULT HrGetOneProp(LPMAPIPROP object, ULONG tag, LPSPropValue* value) noexcept;

// A property that cannot be set gives the code of its problem.
HRESULT HrSetOneProp(LPMAPIPROP object, LPSPropValue value) noexcept;

// ---- Arrays of values -----------------------------------------------------------------------------------------------

LPSPropValue PpropFindProp(LPSPropValue values, ULONG count, ULONG tag) noexcept;

// The four below refuse values that are not valid, and restrictions and actions, which no one block holds:
// MAPI_E_INVALID_PARAMETER. MAPI_E_NOT_ENOUGH_MEMORY above 4 GB. `size` may be null, but for ScCountProps.
SCODE ScCountProps(int count, LPSPropValue values, ULONG* size) noexcept;

// The array comes first in the block, what its values point at behind it.
SCODE ScCopyProps(int count, LPSPropValue values, LPVOID block, ULONG* size) noexcept;

// `values` stands at the beginning of the block that ScCopyProps made, wherever that is now; its pointers are relative
// to `from` and become relative to `to`. Either may be null: so a block is made fit for a file, and fit for use again.
SCODE ScRelocProps(int count, LPSPropValue values, LPVOID from, LPVOID to, ULONG* size) noexcept;

SCODE ScDupPropset(int count, LPSPropValue values, LPALLOCATEBUFFER allocate, LPSPropValue* copy) noexcept;

// Restrictions and actions are copied deeply. What was allocated when a copy fails goes with `object`.
SCODE PropCopyMore(LPSPropValue to, LPSPropValue from, LPALLOCATEMORE allocateMore, LPVOID object) noexcept;

// ---- Tables ---------------------------------------------------------------------------------------------------------

// Works with any table. No rows are a row set too.
HRESULT HrQueryAllRows(LPMAPITABLE table, LPSPropTagArray columns, LPSRestriction restriction, LPSSortOrderSet sorts,
                       LONG most, LPSRowSet* rows) noexcept;

}  // namespace localmapi
