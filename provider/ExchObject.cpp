#include "provider/ExchObject.h"

#include "provider/TextConversion.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <memory>
#include <new>

namespace {

constexpr UINT kUtf8 = 65001;
constexpr VARTYPE kRecordType = VT_ARRAY | VT_VARIANT;
constexpr VARTYPE kBytesType = VT_ARRAY | VT_UI1;

SAFEARRAY* NewVector(VARTYPE vt, std::size_t size) {
    SAFEARRAY* array =
        size > std::numeric_limits<ULONG>::max() ? nullptr : SafeArrayCreateVector(vt, 0, static_cast<ULONG>(size));
    if (array == nullptr) {
        throw std::bad_alloc();
    }
    return array;
}

// The number of elements if they are VARIANTs in one dimension, as a record's are; otherwise 0.
std::size_t FieldCount(const SAFEARRAY* array) {
    const bool isRecord = array != nullptr && array->cDims == 1 && array->cbElements == sizeof(VARIANT);
    return isRecord ? array->rgsabound[0].cElements : 0;
}

bool IsSet(const VARIANT& element) {
    return element.vt != VT_EMPTY && element.vt != VT_NULL;
}

void ClearIfSet(VARIANT& element) {
    if (IsSet(element)) {
        VariantClear(&element);
    }
}

// The text after a round trip through UTF-8, or an empty text when either conversion fails.
_bstr_t ThroughUtf8(const WCHAR* text) {
    char* utf8 = nullptr;
    UnicodeToAnsi(text, &utf8, -1, kUtf8);
    const std::unique_ptr<char[]> utf8Owner(utf8);
    WCHAR* wide = nullptr;
    AnsiToUnicode(utf8, &wide, -1, kUtf8);
    const std::unique_ptr<WCHAR[]> wideOwner(wide);
    return {wide == nullptr ? ""_w : wide};
}

}  // namespace

CExchObject::CExchObject(const CExchObject& other) {
    other.ReleaseLock();
    InitFrom(other);
}

CExchObject::~CExchObject() {
    Hold(nullptr, false);
}

void CExchObject::Init(std::size_t n) {
    Hold(NewVector(VT_VARIANT, n), true);
}

std::size_t CExchObject::Init(SAFEARRAY* array) {
    Hold(array, false);
    LONG lower = 0;
    LONG upper = -1;
    SafeArrayGetLBound(array, 1, &lower);
    SafeArrayGetUBound(array, 1, &upper);
    return static_cast<std::size_t>(std::max<std::int64_t>(std::int64_t{upper} - lower + 1, 0));
}

void CExchObject::InitFrom(const CExchObject& other) {
    SAFEARRAY* copy = nullptr;
    if (SafeArrayCopy(other.m_array, &copy) == E_OUTOFMEMORY) {
        throw std::bad_alloc();
    }
    Hold(copy, true);
}

// Takes this array in place of the one before.
void CExchObject::Hold(SAFEARRAY* array, bool owned) {
    ReleaseLock();
    if (m_owned) {
        SafeArrayDestroy(m_array);
    }
    m_array = array;
    m_owned = owned;
}

void CExchObject::EnsureLock() const {
    void* data = nullptr;
    if (m_data == nullptr && SUCCEEDED(SafeArrayAccessData(m_array, &data))) {
        m_data = static_cast<VARIANT*>(data);
        if (data == nullptr) {
            SafeArrayUnaccessData(m_array);  // an array whose elements are gone: the lock would be forgotten
        }
    }
}

void CExchObject::ReleaseLock() const {
    if (m_data != nullptr) {
        m_data = nullptr;
        SafeArrayUnaccessData(m_array);
    }
}

void CExchObject::Dettach(VARIANT* out) {
    VariantInit(out);
    out->vt = kRecordType;
    out->parray = Dettach();
}

SAFEARRAY* CExchObject::Dettach() {
    ReleaseLock();
    m_owned = false;
    return m_array;
}

VARIANT* CExchObject::Element(std::size_t index) const {
    EnsureLock();
    return m_data != nullptr && index < FieldCount(m_array) ? m_data + index : nullptr;
}

VARIANT* CExchObject::GetData(std::size_t index) {
    return Element(index);
}

const VARIANT* CExchObject::GetData(std::size_t index) const {
    return Element(index);
}

VARIANT* CExchObject::GetVariantFieldVal(std::size_t index) {
    return Element(index);
}

const VARIANT* CExchObject::GetVariantFieldVal(std::size_t index) const {
    return Element(index);
}

void CExchObject::SetVariantFieldVal(std::size_t index, VARIANT* value, bool fresh) {
    VARIANT* element = Element(index);
    if (element == nullptr || element == value) {
        return;
    }
    if (!fresh) {
        ClearIfSet(*element);
    }
    *element = *value;
}

void CExchObject::SetIntFieldVal(std::size_t index, int value, bool fresh) {
    VARIANT* element = Element(index);
    if (element == nullptr) {
        return;
    }
    if (!fresh && element->vt != VT_I4) {
        ClearIfSet(*element);
    }
    element->vt = VT_I4;
    element->lVal = value;
}

void CExchObject::SetLongLongFieldVal(std::size_t index, std::int64_t value, bool) {
    if (VARIANT* element = Element(index)) {
        ClearIfSet(*element);
        element->vt = VT_I8;
        element->llVal = value;
    }
}

void CExchObject::SetBooleanFieldVal(std::size_t index, bool value, bool) {
    if (VARIANT* element = Element(index)) {
        ClearIfSet(*element);
        element->vt = VT_BOOL;
        element->boolVal = value ? VARIANT_TRUE : VARIANT_FALSE;
    }
}

void CExchObject::SetDoubleFieldVal(std::size_t index, double value) {
    if (VARIANT* element = Element(index)) {
        element->vt = VT_R8;
        element->dblVal = value;
    }
}

void CExchObject::SetStringFieldVal(std::size_t index, const CStringW& value, bool fresh) {
    SetStringFieldVal(index, value.c_str(), fresh);
}

void CExchObject::SetStringFieldVal(std::size_t index, const WCHAR* value, bool fresh) {
    VARIANT* element = Element(index);
    if (element == nullptr) {
        return;
    }
    // Made before anything is cleared: the text may be the element's own.
    _bstr_t text = value == nullptr ? _bstr_t(""_w) : ThroughUtf8(value);
    if (value == nullptr || !fresh) {
        ClearIfSet(*element);
    }
    element->vt = VT_BSTR;
    element->bstrVal = text.Detach();
}

void CExchObject::SetBinaryBlobFieldVal(std::size_t index, const std::uint8_t* data, int size) {
    if (VARIANT* element = Element(index)) {
        SetBinaryInVariant(element, data, size);
    }
}

void CExchObject::SetBinaryInVariant(VARIANT* target, const std::uint8_t* data, int size) {
    SAFEARRAY* bytes = NewVector(VT_UI1, static_cast<std::size_t>(std::max(size, 0)));
    if (size > 0 && data != nullptr) {
        std::memcpy(bytes->pvData, data, static_cast<std::size_t>(size));
    }
    target->vt = kBytesType;
    target->parray = bytes;
}

_bstr_t CExchObject::GetStringFieldVal(std::size_t index) const {
    _bstr_t text;
    const VARIANT* element = Element(index);
    if (element != nullptr && element->vt == VT_BSTR) {
        text.Assign(element->bstrVal);
    }
    return text;
}

int CExchObject::GetIntFieldVal(std::size_t index) const {
    const VARIANT* element = Element(index);
    return element == nullptr ? 0 : element->lVal;
}

std::int64_t CExchObject::GetLongLongFieldVal(std::size_t index) const {
    return IsFieldSet(index) ? Element(index)->llVal : 0;
}

double CExchObject::GetDoubleFieldVal(std::size_t index) const {
    return IsFieldSet(index) ? Element(index)->dblVal : 0;
}

bool CExchObject::GetBooleanFieldVal(std::size_t index) const {
    return IsFieldSet(index) && Element(index)->boolVal != VARIANT_FALSE;
}

void CExchObject::GetBinaryBlobFieldVal(std::size_t index, std::string& out) const {
    out.clear();
    const VARIANT* element = Element(index);
    if (element == nullptr || (element->vt & (VT_ARRAY | VT_BYREF)) != VT_ARRAY) {
        return;
    }
    const SAFEARRAY* bytes = element->parray;
    if (bytes != nullptr && bytes->cDims == 1 && bytes->pvData != nullptr) {
        out.assign(static_cast<const char*>(bytes->pvData), bytes->rgsabound[0].cElements);
    }
}

bool CExchObject::IsFieldSet(std::size_t index) const {
    const VARIANT* element = Element(index);
    return element != nullptr && IsSet(*element);
}

int CExchObject::GetDataType(std::size_t index) const {
    const VARIANT* element = Element(index);
    switch (element == nullptr ? VARTYPE{VT_EMPTY} : element->vt) {
        case VT_I4:
        case VT_INT: return eDataInt;
        case VT_BSTR: return eDataString;
        case VT_I8:
        case VT_CY: return eDataLongLong;
        case VT_BOOL: return eDataBoolean;
        case kBytesType: return eDataBytes;
        case VT_R8: return eDataDouble;
        default: return eDataOther;
    }
}
