#include "localmapi/props/MapiMemory.h"
#include "localmapi/props/RowSets.h"
#include "localmapi/utilities/Utilities.h"
#include "mapi/MapiCodes.h"

namespace localmapi {

namespace {

SCODE Given(void* block, LPVOID* buffer) noexcept {
    *buffer = block;
    return block == nullptr ? MAPI_E_NOT_ENOUGH_MEMORY : S_OK;
}

}  // namespace

SCODE MAPIAllocateBuffer(ULONG size, LPVOID* buffer) noexcept {
    return buffer == nullptr ? MAPI_E_INVALID_PARAMETER : Given(AllocateRoot(size), buffer);
}

SCODE MAPIAllocateMore(ULONG size, LPVOID object, LPVOID* buffer) noexcept {
    if (buffer == nullptr) {
        return MAPI_E_INVALID_PARAMETER;
    }
    *buffer = nullptr;
    return IsRoot(object) ? Given(AllocateWith(object, size), buffer) : MAPI_E_INVALID_PARAMETER;
}

ULONG MAPIFreeBuffer(LPVOID buffer) noexcept {
    return FreeRoot(buffer) ? 0 : static_cast<ULONG>(MAPI_E_INVALID_PARAMETER);
}

LPMALLOC MAPIGetDefaultMalloc() noexcept {
    LPMALLOC allocator = nullptr;
    return SUCCEEDED(CoGetMalloc(1, &allocator)) ? allocator : nullptr;
}

void FreeProws(LPSRowSet rows) noexcept {
    FreeRowSet(rows);
}

void FreePadrlist(LPADRLIST list) noexcept {
    FreeAddressList(list);
}

}  // namespace localmapi
