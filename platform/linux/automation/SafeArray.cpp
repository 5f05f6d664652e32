#include "platform/SafeArray.h"

#include "platform/linux/automation/ArrayBlock.h"
#include "platform/linux/automation/ValueOwnership.h"

#include <atomic>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <limits>
#include <new>
#include <utility>
#include <vector>

using automation::Content;
using automation::Disposal;
using automation::Duplication;

namespace {

constexpr ULONG kMaxLocks = 0xFFFF;

// Whether the array may be taken apart or resized, as a code.
HRESULT CheckChangeable(const SAFEARRAY* array) {
    if (array == nullptr || !automation::IsOurs(*array)) {
        return E_INVALIDARG;
    }
    return array->cLocks != 0 ? DISP_E_ARRAYISLOCKED : S_OK;
}

// The bounds of dimension `dimension`, counted from 1 in the order of the indices; the descriptor has the last first.
HRESULT FindBound(const SAFEARRAY* array, UINT dimension, const SAFEARRAYBOUND** bound) {
    if (array == nullptr) {
        return E_INVALIDARG;
    }
    if (dimension == 0 || dimension > array->cDims) {
        return DISP_E_BADINDEX;
    }
    *bound = array->rgsabound + (array->cDims - dimension);
    return S_OK;
}

// Copies one element of an array of texts, interfaces or plain values out of the array.
HRESULT CopyOut(const SAFEARRAY& array, const void* element, void* out) {
    std::memcpy(out, element, array.cbElements);
    if (automation::ContentOf(array) == Content::Texts) {
        auto& text = *static_cast<BSTR*>(out);
        const BSTR lent = text;
        text = automation::Duplicate(lent);
        return lent != nullptr && text == nullptr ? E_OUTOFMEMORY : S_OK;
    }
    if (automation::ContentOf(array) == Content::Interfaces) {
        if (IUnknown* object = *static_cast<IUnknown**>(out)) {
            object->AddRef();
        }
    }
    return S_OK;
}

HRESULT PutText(BSTR& element, BSTR text) {
    const BSTR copy = automation::Duplicate(text);
    if (text != nullptr && copy == nullptr) {
        return E_OUTOFMEMORY;
    }
    SysFreeString(std::exchange(element, copy));
    return S_OK;
}

HRESULT PutInterface(IUnknown*& element, IUnknown* object) {
    if (object != nullptr) {
        object->AddRef();
    }
    if (IUnknown* former = std::exchange(element, object)) {
        former->Release();
    }
    return S_OK;
}

}  // namespace

SAFEARRAY* SafeArrayCreate(VARTYPE vt, UINT cDims, SAFEARRAYBOUND* rgsabound) noexcept {
    const automation::ElementType* type = automation::FindElementType(vt);
    if (type == nullptr || rgsabound == nullptr || cDims == 0 || cDims > std::numeric_limits<USHORT>::max()) {
        return nullptr;
    }
    if (cDims == 1) {
        return automation::AllocateArray(*type, 1, rgsabound);
    }
    try {
        const std::vector<SAFEARRAYBOUND> lastFirst(std::make_reverse_iterator(rgsabound + cDims),
                                                    std::make_reverse_iterator(rgsabound));
        return automation::AllocateArray(*type, static_cast<USHORT>(cDims), lastFirst.data());
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

SAFEARRAY* SafeArrayCreateVector(VARTYPE vt, LONG lLbound, ULONG cElements) noexcept {
    const automation::ElementType* type = automation::FindElementType(vt);
    if (type == nullptr) {
        return nullptr;
    }
    automation::ElementType inOneBlock = *type;
    inOneBlock.features = static_cast<USHORT>(type->features | automation::kOneBlock);
    const SAFEARRAYBOUND bound = {cElements, lLbound};
    return automation::AllocateArray(inOneBlock, 1, &bound);
}

HRESULT SafeArrayDestroy(SAFEARRAY* psa) noexcept {
    if (psa == nullptr) {
        return S_OK;
    }
    const HRESULT hr = CheckChangeable(psa);
    if (SUCCEEDED(hr)) {
        Disposal().Add(psa);
    }
    return hr;
}

HRESULT SafeArrayDestroyData(SAFEARRAY* psa) noexcept {
    const HRESULT hr = CheckChangeable(psa);
    if (SUCCEEDED(hr)) {
        Disposal nested;
        nested.AddElements(*psa, 0, automation::ElementCount(*psa));
        automation::DropElementMemory(*psa);
    }
    return hr;
}

HRESULT SafeArrayCopy(SAFEARRAY* psa, SAFEARRAY** ppsaOut) noexcept {
    if (ppsaOut == nullptr) {
        return E_INVALIDARG;
    }
    *ppsaOut = nullptr;
    if (psa == nullptr) {
        return S_OK;
    }
    if (!automation::IsOurs(*psa)) {
        return E_INVALIDARG;
    }
    SAFEARRAY* copy = automation::AllocateLike(*psa);
    if (copy == nullptr) {
        return E_OUTOFMEMORY;
    }
    HRESULT hr = S_OK;
    try {
        Duplication copier;
        hr = copier.CopyElements(*psa, *copy);
        if (SUCCEEDED(hr)) {
            hr = copier.Finish();
        }
    } catch (const std::bad_alloc&) {
        hr = E_OUTOFMEMORY;
    }
    if (FAILED(hr)) {
        SafeArrayDestroy(copy);
        return hr;
    }
    *ppsaOut = copy;
    return S_OK;
}

HRESULT SafeArrayRedim(SAFEARRAY* psa, SAFEARRAYBOUND* psaboundNew) noexcept {
    if (psaboundNew == nullptr) {
        return E_INVALIDARG;
    }
    const HRESULT hr = CheckChangeable(psa);
    if (FAILED(hr)) {
        return hr;
    }
    if ((psa->fFeatures & FADF_FIXEDSIZE) != 0) {
        return DISP_E_ARRAYISLOCKED;
    }
    const std::uint64_t before = automation::ElementCount(*psa);
    const std::uint64_t after = automation::ElementCountWith(*psa, psaboundNew->cElements);
    Disposal nested;
    if (after < before) {
        nested.AddElements(*psa, after, before - after);
    }
    return automation::ResizeLastDimension(*psa, *psaboundNew) ? S_OK : E_OUTOFMEMORY;
}

HRESULT SafeArrayLock(SAFEARRAY* psa) noexcept {
    if (psa == nullptr) {
        return E_INVALIDARG;
    }
    std::atomic_ref<ULONG> locks(psa->cLocks);
    ULONG held = locks.load();
    do {
        if (held >= kMaxLocks) {
            return E_UNEXPECTED;
        }
    } while (!locks.compare_exchange_weak(held, held + 1));
    return S_OK;
}

HRESULT SafeArrayUnlock(SAFEARRAY* psa) noexcept {
    if (psa == nullptr) {
        return E_INVALIDARG;
    }
    std::atomic_ref<ULONG> locks(psa->cLocks);
    ULONG held = locks.load();
    do {
        if (held == 0) {
            return E_UNEXPECTED;
        }
    } while (!locks.compare_exchange_weak(held, held - 1));
    return S_OK;
}

HRESULT SafeArrayAccessData(SAFEARRAY* psa, void** ppvData) noexcept {
    if (psa == nullptr || ppvData == nullptr) {
        return E_INVALIDARG;
    }
    const HRESULT hr = SafeArrayLock(psa);
    *ppvData = SUCCEEDED(hr) ? psa->pvData : nullptr;
    return hr;
}

HRESULT SafeArrayUnaccessData(SAFEARRAY* psa) noexcept {
    return SafeArrayUnlock(psa);
}

UINT SafeArrayGetDim(SAFEARRAY* psa) noexcept {
    return psa == nullptr ? 0 : psa->cDims;
}

UINT SafeArrayGetElemsize(SAFEARRAY* psa) noexcept {
    return psa == nullptr ? 0 : psa->cbElements;
}

HRESULT SafeArrayGetLBound(SAFEARRAY* psa, UINT nDim, LONG* plLbound) noexcept {
    if (plLbound == nullptr) {
        return E_INVALIDARG;
    }
    const SAFEARRAYBOUND* bound = nullptr;
    const HRESULT hr = FindBound(psa, nDim, &bound);
    if (SUCCEEDED(hr)) {
        *plLbound = bound->lLbound;
    }
    return hr;
}

HRESULT SafeArrayGetUBound(SAFEARRAY* psa, UINT nDim, LONG* plUbound) noexcept {
    if (plUbound == nullptr) {
        return E_INVALIDARG;
    }
    const SAFEARRAYBOUND* bound = nullptr;
    const HRESULT hr = FindBound(psa, nDim, &bound);
    if (SUCCEEDED(hr)) {
        // In unsigned arithmetic, which wraps where bounds past the largest LONG would overflow.
        *plUbound = static_cast<LONG>(static_cast<ULONG>(bound->lLbound) + bound->cElements - 1);
    }
    return hr;
}

HRESULT SafeArrayGetVartype(SAFEARRAY* psa, VARTYPE* pvt) noexcept {
    if (psa == nullptr || pvt == nullptr) {
        return E_INVALIDARG;
    }
    if ((psa->fFeatures & FADF_HAVEVARTYPE) != 0) {
        *pvt = automation::StoredType(*psa);
    } else if ((psa->fFeatures & FADF_VARIANT) != 0) {
        *pvt = VT_VARIANT;
    } else if ((psa->fFeatures & FADF_BSTR) != 0) {
        *pvt = VT_BSTR;
    } else if ((psa->fFeatures & FADF_DISPATCH) != 0) {
        *pvt = VT_DISPATCH;
    } else if ((psa->fFeatures & FADF_UNKNOWN) != 0) {
        *pvt = VT_UNKNOWN;
    } else {
        return E_INVALIDARG;
    }
    return S_OK;
}

HRESULT SafeArrayPtrOfIndex(SAFEARRAY* psa, LONG* rgIndices, void** ppvData) noexcept {
    if (psa == nullptr || rgIndices == nullptr || ppvData == nullptr || psa->pvData == nullptr) {
        return E_INVALIDARG;
    }
    std::uint64_t position = 0;
    std::uint64_t stride = 1;
    for (USHORT i = 0; i < psa->cDims; ++i) {
        const SAFEARRAYBOUND& bound = psa->rgsabound[psa->cDims - 1 - i];
        const std::int64_t offset = std::int64_t{rgIndices[i]} - bound.lLbound;
        if (offset < 0 || offset >= std::int64_t{bound.cElements}) {
            return DISP_E_BADINDEX;
        }
        position += static_cast<std::uint64_t>(offset) * stride;
        stride *= bound.cElements;
    }
    *ppvData = static_cast<std::byte*>(psa->pvData) + position * psa->cbElements;
    return S_OK;
}

HRESULT SafeArrayGetElement(SAFEARRAY* psa, LONG* rgIndices, void* pv) noexcept {
    if (pv == nullptr) {
        return E_INVALIDARG;
    }
    void* element = nullptr;
    const HRESULT hr = SafeArrayPtrOfIndex(psa, rgIndices, &element);
    if (FAILED(hr)) {
        return hr;
    }
    if (automation::ContentOf(*psa) != Content::Variants) {
        return CopyOut(*psa, element, pv);
    }
    auto* out = static_cast<VARIANT*>(pv);
    VariantInit(out);
    return VariantCopy(out, static_cast<const VARIANT*>(element));
}

HRESULT SafeArrayPutElement(SAFEARRAY* psa, LONG* rgIndices, void* pv) noexcept {
    void* element = nullptr;
    const HRESULT hr = SafeArrayPtrOfIndex(psa, rgIndices, &element);
    if (FAILED(hr)) {
        return hr;
    }
    const Content content = automation::ContentOf(*psa);
    if (content == Content::Texts) {
        return PutText(*static_cast<BSTR*>(element), static_cast<BSTR>(pv));
    }
    if (content == Content::Interfaces) {
        return PutInterface(*static_cast<IUnknown**>(element), static_cast<IUnknown*>(pv));
    }
    if (pv == nullptr) {
        return E_INVALIDARG;
    }
    if (content == Content::Variants) {
        return VariantCopy(static_cast<VARIANT*>(element), static_cast<const VARIANT*>(pv));
    }
    std::memcpy(element, pv, psa->cbElements);
    return S_OK;
}
