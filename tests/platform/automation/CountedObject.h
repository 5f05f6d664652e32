// An object whose references a test counts.
#pragma once

#include "platform/Unknown.h"

// Lives on the test's stack: its first reference is the test's own and is never released.
class CountedObject final : public IUnknown {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** object) override {
        *object = nullptr;
        if (!IsEqualIID(riid, IID_IUnknown)) {
            return E_NOINTERFACE;
        }
        AddRef();
        *object = this;
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++m_references; }
    ULONG STDMETHODCALLTYPE Release() override { return --m_references; }

    // References beside the test's own.
    ULONG References() const { return m_references - 1; }

private:
    ULONG m_references = 1;
};
