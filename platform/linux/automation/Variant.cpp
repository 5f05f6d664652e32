#include "platform/Variant.h"

#include "platform/linux/automation/ValueOwnership.h"

#include <cstring>
#include <new>

namespace {

// Whether the value could be cleared, as a code.
HRESULT CheckClearable(const VARIANT& value) {
    if (!automation::IsVariantType(value.vt)) {
        return DISP_E_BADVARTYPE;
    }
    const bool ownsArray = (value.vt & (VT_ARRAY | VT_BYREF)) == VT_ARRAY && value.parray != nullptr;
    return ownsArray && value.parray->cLocks != 0 ? DISP_E_ARRAYISLOCKED : S_OK;
}

}  // namespace

void VariantInit(VARIANTARG* pvarg) noexcept {
    std::memset(pvarg, 0, sizeof(*pvarg));
}

HRESULT VariantClear(VARIANTARG* pvarg) noexcept {
    if (pvarg == nullptr) {
        return E_INVALIDARG;
    }
    const HRESULT hr = CheckClearable(*pvarg);
    if (SUCCEEDED(hr)) {
        automation::Disposal().Add(*pvarg);
    }
    return hr;
}

HRESULT VariantCopy(VARIANTARG* pvargDest, const VARIANTARG* pvargSrc) noexcept {
    if (pvargDest == nullptr || pvargSrc == nullptr) {
        return E_INVALIDARG;
    }
    if (!automation::IsVariantType(pvargSrc->vt)) {
        return DISP_E_BADVARTYPE;
    }
    HRESULT hr = CheckClearable(*pvargDest);
    if (FAILED(hr) || pvargDest == pvargSrc) {
        return hr;
    }
    // The copy is whole before the target is given up, which may be what owns the source.
    VARIANT copy = {};
    try {
        automation::Duplication copier;
        hr = copier.Copy(*pvargSrc, copy);
        if (SUCCEEDED(hr)) {
            hr = copier.Finish();
        }
    } catch (const std::bad_alloc&) {
        hr = E_OUTOFMEMORY;
    }
    VariantClear(SUCCEEDED(hr) ? pvargDest : &copy);
    if (SUCCEEDED(hr)) {
        *pvargDest = copy;
    }
    return hr;
}
