#include "provider/HostConversion.h"

#include "platform/Bstr.h"
#include "platform/ResultCodes.h"
#include "platform/SafeArray.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <new>
#include <optional>
#include <span>
#include <type_traits>
#include <utility>

namespace VxOutlookProvider {

namespace {

// What one text, block of bytes or array may hold: lengths of BSTRs and arrays have 32 bits, indices a sign.
constexpr std::size_t kMaxBytes = std::numeric_limits<LONG>::max();

// The one place where a UTF-16 unit of the host's becomes one of the provider's: two types of one width on Windows, one
// and the same type elsewhere.
const WCHAR* ProviderUnits(const char16_t* text) noexcept {
    static_assert(sizeof(WCHAR) == sizeof(char16_t) && alignof(WCHAR) == alignof(char16_t));
    return reinterpret_cast<const WCHAR*>(text);
}

// ---- From the host. What is filled is empty before, and cleared by its owner whatever comes ----

void FillText(VARIANT& variant, const std::u16string& text) {
    const BSTR copy = SysAllocStringLen(ProviderUnits(text.data()), static_cast<UINT>(text.size()));
    if (copy == nullptr) {
        throw std::bad_alloc();
    }
    variant.vt = VT_BSTR;
    variant.bstrVal = copy;
}

// Gives the elements, which are zero.
template <typename Element>
std::span<Element> FillArray(VARIANT& variant, VARTYPE element, std::size_t size) {
    SAFEARRAY* array = SafeArrayCreateVector(element, 0, static_cast<ULONG>(size));
    if (array == nullptr) {
        throw std::bad_alloc();
    }
    variant.vt = static_cast<VARTYPE>(VT_ARRAY | element);
    variant.parray = array;
    return {static_cast<Element*>(array->pvData), size};
}

// False for a value that no VARIANT can hold. `depth` counts the arrays around it.
bool Fill(VARIANT& variant, const Value& value, std::size_t depth);

bool FillElements(VARIANT& variant, const Value::Array& elements, std::size_t depth) {
    if (depth == kMaxArrayDepth || elements.size() > kMaxBytes / sizeof(VARIANT)) {
        return false;
    }
    const auto fields = FillArray<VARIANT>(variant, VT_VARIANT, elements.size());
    for (std::size_t i = 0; i < elements.size(); ++i) {
        if (!Fill(fields[i], elements[i], depth + 1)) {
            return false;
        }
    }
    return true;
}

bool Fill(VARIANT& variant, const Value& value, std::size_t depth) {
    switch (value.GetKind()) {
        case Value::Kind::Null: return true;
        case Value::Kind::Int32:
            variant.vt = VT_I4;
            variant.lVal = static_cast<LONG>(value.Integer());
            return true;
        case Value::Kind::Int64:
            variant.vt = VT_I8;
            variant.llVal = value.Integer();
            return true;
        case Value::Kind::Bool:
            variant.vt = VT_BOOL;
            variant.boolVal = value.Boolean() ? VARIANT_TRUE : VARIANT_FALSE;
            return true;
        case Value::Kind::Double:
            variant.vt = VT_R8;
            variant.dblVal = value.Real();
            return true;
        case Value::Kind::Text:
            if (value.String().size() > kMaxBytes / sizeof(char16_t)) {
                return false;
            }
            FillText(variant, value.String());
            return true;
        case Value::Kind::Bytes:
            if (value.Data().size() > kMaxBytes) {
                return false;
            }
            std::ranges::copy(value.Data(), FillArray<std::uint8_t>(variant, VT_UI1, value.Data().size()).begin());
            return true;
        case Value::Kind::Array: return FillElements(variant, value.Elements(), depth);
    }
    return false;
}

// ---- To the host ----

std::u16string HostUnits(WideView text) {
    return std::u16string(text.begin(), text.end());
}

// Where both sides have one type of text, it moves.
template <typename ProviderText>
std::u16string HostText(ProviderText&& text) {
    if constexpr (std::is_same_v<ProviderText, std::u16string>) {
        return std::forward<ProviderText>(text);
    } else {
        return HostUnits(text);
    }
}

// The elements, if there is one dimension of them; otherwise nothing.
template <typename Element>
std::optional<std::span<const Element>> ElementsOf(const SAFEARRAY* array) noexcept {
    if (array == nullptr || array->cDims != 1 || array->cbElements != sizeof(Element)) {
        return std::nullopt;
    }
    const auto* elements = static_cast<const Element*>(array->pvData);
    return std::span(elements, elements == nullptr ? 0 : array->rgsabound[0].cElements);
}

Value BytesOf(const SAFEARRAY* array) {
    const auto bytes = ElementsOf<std::uint8_t>(array);
    return bytes ? Value(Value::Bytes(bytes->begin(), bytes->end())) : Value();
}

// `depth` counts the arrays around the value.
Value ToHost(const VARIANT& variant, std::size_t depth);

Value ArrayOf(const SAFEARRAY* array, std::size_t depth) {
    const auto fields = ElementsOf<VARIANT>(array);
    if (!fields || depth == kMaxArrayDepth) {
        return {};
    }
    Value::Array elements;
    elements.reserve(fields->size());
    for (const VARIANT& field : *fields) {
        elements.push_back(ToHost(field, depth + 1));
    }
    return elements;
}

Value ToHost(const VARIANT& variant, std::size_t depth) {
    switch (variant.vt) {
        case VT_I4:
        case VT_INT: return std::int32_t{variant.lVal};
        case VT_I8:
        case VT_CY: return std::int64_t{variant.llVal};
        case VT_BOOL: return variant.boolVal != VARIANT_FALSE;
        case VT_R8: return variant.dblVal;
        case VT_BSTR:
            return variant.bstrVal == nullptr ? Value()
                                              : HostUnits(WideView(variant.bstrVal, SysStringLen(variant.bstrVal)));
        case VT_ARRAY | VT_UI1: return BytesOf(variant.parray);
        case VT_ARRAY | VT_VARIANT: return ArrayOf(variant.parray, depth);
        default: return {};
    }
}

}  // namespace

HRESULT ToVariant(const Value& value, VariantHolder& variant) {
    if (!Fill(*variant.Put(), value, 0)) {
        variant.Put();
        return E_INVALIDARG;
    }
    return S_OK;
}

HRESULT ToUri(const Value& value, VariantHolder& variant) {
    if (value.GetKind() != Value::Kind::Array) {
        variant.Put();
        return E_INVALIDARG;
    }
    return ToVariant(value, variant);
}

const WCHAR* ToWide(const Text& text) noexcept {
    return ProviderUnits(text.Pointer());
}

CStringW ToWideCopy(const Text& text) {
    return CStringW(ProviderUnits(text.Units().data()), text.Units().size());
}

Value ToHost(const VARIANT& variant) {
    return ToHost(variant, 0);
}

std::u16string ToHost(CStringW&& text) {
    return HostText(std::move(text));
}

}  // namespace VxOutlookProvider
