// Between a host's values (HostValue.h) and the VARIANTs and texts of the provider. A record or list is a VARIANT array
// on one side (ExchObject.h) and a Value of kind Array on the other; both carry the same positions, and both tell an
// empty text, block of bytes or list from one that is not given.
//
// Operations that allocate throw std::bad_alloc. Nothing is shared between threads.
#pragma once

#include "platform/Variant.h"
#include "platform/WideText.h"
#include "provider/HostValue.h"

#include <cstddef>
#include <string>

namespace VxOutlookProvider {

// How many arrays may lie inside each other. A list of records has two levels; a level is a stack frame.
inline constexpr std::size_t kMaxArrayDepth = 32;

// A VARIANT that is cleared at the end, with all that it holds.
class VariantHolder {
public:
    VariantHolder() noexcept = default;
    VariantHolder(const VariantHolder&) = delete;
    VariantHolder& operator=(const VariantHolder&) = delete;
    ~VariantHolder() { VariantClear(&m_value); }

    const VARIANT& Get() const noexcept { return m_value; }

    // To be filled in by a callee, who gives up ownership; what was held before is cleared.
    VARIANT* Put() noexcept {
        VariantClear(&m_value);
        return &m_value;
    }

private:
    VARIANT m_value = {};
};

// ---- From the host ----

// The value as a VARIANT: VT_EMPTY for null, else VT_I4, VT_I8, VT_BOOL, VT_R8, VT_BSTR with all units of the text, an
// array of VT_UI1, an array of VT_VARIANT. E_INVALIDARG, with `variant` empty, when arrays lie deeper than
// kMaxArrayDepth, or when a text, a block of bytes or an array is longer than one can be.
HRESULT ToVariant(const Value& value, VariantHolder& variant);

// The same for a URI, which is a record. E_INVALIDARG for anything but an array: who reads a URI looks for an array
// without a look at the type.
HRESULT ToUri(const Value& value, VariantHolder& variant);

// The text as a pointer, valid as long as it; null for none.
const WCHAR* ToWide(const Text& text) noexcept;

// A copy of the text with the zeros inside it; empty for none.
CStringW ToWideCopy(const Text& text);

// ---- To the host ----

// The value of a VARIANT, which stays as it is. VT_INT and VT_CY are integers. Null for VT_EMPTY, VT_NULL, a null BSTR,
// and all that a record does not hold: other types, references, arrays of other elements or of more than one dimension,
// arrays deeper than kMaxArrayDepth.
Value ToHost(const VARIANT& variant);

std::u16string ToHost(CStringW&& text);

}  // namespace VxOutlookProvider
