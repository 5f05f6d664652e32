#include "platform/linux/automation/ValueOwnership.h"

#include "platform/linux/automation/ArrayBlock.h"

#include <cstring>
#include <new>
#include <span>
#include <utility>

namespace automation {

namespace {

constexpr int kGapInTypes = 15;  // between VT_DECIMAL and VT_I1

template <typename Element>
std::span<Element> ElementsOf(const SAFEARRAY& array, std::uint64_t first, std::uint64_t count) {
    return {static_cast<Element*>(array.pvData) + first, static_cast<std::size_t>(count)};
}

// The object of a VT_UNKNOWN or VT_DISPATCH value: IDispatch starts with IUnknown's slots.
IUnknown* InterfaceOf(const VARIANT& value) {
    return value.punkVal;
}

// VT_BYREF says that the value is somebody else's.
bool IsOwnedArray(const VARIANT& value) {
    return (value.vt & (VT_ARRAY | VT_BYREF)) == VT_ARRAY;
}

BSTR CheckedDuplicate(BSTR text) {
    BSTR copy = Duplicate(text);
    if (text != nullptr && copy == nullptr) {
        throw std::bad_alloc();
    }
    return copy;
}

}  // namespace

bool IsVariantType(VARTYPE vt) noexcept {
    const int type = vt & VT_TYPEMASK;
    const int modifiers = vt & ~VT_TYPEMASK;
    if ((modifiers & (VT_VECTOR | VT_RESERVED)) != 0 || (modifiers != 0 && type <= VT_NULL)) {
        return false;
    }
    return (type <= VT_UINT && type != kGapInTypes) || type == VT_CLSID;
}

BSTR Duplicate(BSTR text) noexcept {
    return text == nullptr ? nullptr : SysAllocStringByteLen(reinterpret_cast<LPCSTR>(text), SysStringByteLen(text));
}

void Disposal::Add(VARIANT& value) {
    if (!IsVariantType(value.vt)) {
        return;
    }
    // Empty before anything is released: an object's Release may look at the value again.
    const VARIANT held = value;
    value.vt = VT_EMPTY;
    if (IsOwnedArray(held)) {
        Add(held.parray);
    } else if (held.vt == VT_BSTR) {
        SysFreeString(held.bstrVal);
    } else if ((held.vt == VT_UNKNOWN || held.vt == VT_DISPATCH) && InterfaceOf(held) != nullptr) {
        InterfaceOf(held)->Release();
    }
}

void Disposal::Add(SAFEARRAY* array) {
    if (array != nullptr && array->cLocks == 0 && IsOurs(*array)) {
        SetLink(*array, std::exchange(m_first, array));
    }
}

void Disposal::AddElements(const SAFEARRAY& array, std::uint64_t first, std::uint64_t count) {
    switch (ContentOf(array)) {
        case Content::Plain: break;
        case Content::Texts:
            for (BSTR& text : ElementsOf<BSTR>(array, first, count)) {
                SysFreeString(std::exchange(text, nullptr));
            }
            break;
        case Content::Interfaces:
            for (IUnknown*& element : ElementsOf<IUnknown*>(array, first, count)) {
                if (IUnknown* object = std::exchange(element, nullptr)) {
                    object->Release();
                }
            }
            break;
        case Content::Variants:
            for (VARIANT& value : ElementsOf<VARIANT>(array, first, count)) {
                Add(value);
            }
            break;
    }
}

void Disposal::TakeApart() {
    while (m_first != nullptr) {
        SAFEARRAY* array = std::exchange(m_first, Link(*m_first));
        AddElements(*array, 0, ElementCount(*array));
        FreeArray(array);
    }
}

HRESULT Duplication::Copy(const VARIANT& from, VARIANT& into) {
    if (!IsVariantType(from.vt)) {
        return DISP_E_BADVARTYPE;
    }
    if (IsOwnedArray(from) && from.parray != nullptr) {
        m_nested.push_back({&from, &into});
        return S_OK;
    }
    VARIANT copy = from;
    if (from.vt == VT_BSTR) {
        copy.bstrVal = from.bstrVal == nullptr ? SysAllocStringLen(nullptr, 0) : Duplicate(from.bstrVal);
        if (copy.bstrVal == nullptr) {
            throw std::bad_alloc();
        }
    } else if ((from.vt == VT_UNKNOWN || from.vt == VT_DISPATCH) && InterfaceOf(from) != nullptr) {
        InterfaceOf(from)->AddRef();
    }
    into = copy;
    return S_OK;
}

HRESULT Duplication::CopyElements(const SAFEARRAY& from, SAFEARRAY& into) {
    const std::uint64_t count = ElementCount(from);
    switch (ContentOf(from)) {
        case Content::Plain:
            if (count != 0) {
                std::memcpy(into.pvData, from.pvData, count * from.cbElements);
            }
            break;
        case Content::Texts: {
            const auto copies = ElementsOf<BSTR>(into, 0, count);
            for (std::size_t i = 0; i < copies.size(); ++i) {
                copies[i] = CheckedDuplicate(ElementsOf<BSTR>(from, 0, count)[i]);
            }
            break;
        }
        case Content::Interfaces: {
            const auto copies = ElementsOf<IUnknown*>(into, 0, count);
            for (std::size_t i = 0; i < copies.size(); ++i) {
                copies[i] = ElementsOf<IUnknown*>(from, 0, count)[i];
                if (copies[i] != nullptr) {
                    copies[i]->AddRef();
                }
            }
            break;
        }
        case Content::Variants: {
            const auto copies = ElementsOf<VARIANT>(into, 0, count);
            for (std::size_t i = 0; i < copies.size(); ++i) {
                const HRESULT hr = Copy(ElementsOf<VARIANT>(from, 0, count)[i], copies[i]);
                if (FAILED(hr)) {
                    return hr;
                }
            }
            break;
        }
    }
    return S_OK;
}

HRESULT Duplication::Finish() {
    while (!m_nested.empty()) {
        const NestedArray nested = m_nested.back();
        m_nested.pop_back();
        const SAFEARRAY& from = *nested.from->parray;
        if (!IsOurs(from)) {
            return E_INVALIDARG;
        }
        SAFEARRAY* copy = AllocateLike(from);
        if (copy == nullptr) {
            return E_OUTOFMEMORY;
        }
        nested.into->parray = copy;
        nested.into->vt = nested.from->vt;
        const HRESULT hr = CopyElements(from, *copy);
        if (FAILED(hr)) {
            return hr;
        }
    }
    return S_OK;
}

}  // namespace automation
