// The host's side of the boundary: VARIANTs as it holds them, taken apart without the record classes.
#pragma once

#include "platform/SafeArray.h"
#include "platform/Variant.h"
#include "platform/WideText.h"
#include "provider/ExchObject.h"

#include <cstddef>
#include <span>

// A VARIANT that is cleared at the end.
class HostValue {
public:
    HostValue() { VariantInit(&m_value); }
    HostValue(const HostValue&) = delete;
    HostValue& operator=(const HostValue&) = delete;
    ~HostValue() { VariantClear(&m_value); }

    // What the record hands over.
    static HostValue From(CExchObject& record) { return HostValue(record); }

    // A record of `size` unset fields with a lower bound of its own.
    static HostValue Record(ULONG size, LONG lower = 0) {
        return HostValue(SafeArrayCreateVector(VT_VARIANT, lower, size));
    }

    VARIANT* Get() { return &m_value; }
    const VARIANT* operator->() const { return &m_value; }
    SAFEARRAY& Array() { return *m_value.parray; }
    std::span<VARIANT> Elements() { return ElementsOf(m_value); }

    static std::span<VARIANT> ElementsOf(const VARIANT& record) {
        return {static_cast<VARIANT*>(record.parray->pvData), record.parray->rgsabound[0].cElements};
    }

private:
    explicit HostValue(CExchObject& record) { record.Dettach(&m_value); }
    explicit HostValue(SAFEARRAY* array) {
        VariantInit(&m_value);
        m_value.vt = VT_ARRAY | VT_VARIANT;
        m_value.parray = array;
    }

    VARIANT m_value;
};

// The text of a VARIANT that holds one, zeros inside it too.
inline CStringW TextOf(const VARIANT& value) {
    return CStringW(value.bstrVal, SysStringLen(value.bstrVal));
}
