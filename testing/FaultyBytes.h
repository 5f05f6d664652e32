// A byte array whose n-th call fails, for tests of what stands on one. It lives in its test and counts references only.
#pragma once

#include "platform/ResultCodes.h"
#include "platform/Storage.h"

namespace vx_testing {

class FaultyBytes final : public ILockBytes {
public:
    explicit FaultyBytes(ILockBytes* bytes) : m_bytes(bytes) { m_bytes->AddRef(); }
    virtual ~FaultyBytes() { m_bytes->Release(); }

    int failAt = -1;  // counts down; the call that finds 0 fails, and none after it

    ULONG References() const { return m_references; }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override {
        return m_bytes->QueryInterface(id, object);
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++m_references; }
    ULONG STDMETHODCALLTYPE Release() override { return --m_references; }
    HRESULT STDMETHODCALLTYPE ReadAt(ULARGE_INTEGER at, void* out, ULONG count, ULONG* got) override {
        STATSTG stat = {};
        m_bytes->Stat(&stat, STATFLAG_NONAME);
        const bool isBeyond = at.QuadPart + count > stat.cbSize.QuadPart;  // some arrays are strict about their end
        return Fails() || isBeyond ? STG_E_READFAULT : m_bytes->ReadAt(at, out, count, got);
    }
    HRESULT STDMETHODCALLTYPE WriteAt(ULARGE_INTEGER at, const void* from, ULONG count, ULONG* done) override {
        return Fails() ? STG_E_MEDIUMFULL : m_bytes->WriteAt(at, from, count, done);
    }
    HRESULT STDMETHODCALLTYPE Flush() override { return Fails() ? STG_E_WRITEFAULT : m_bytes->Flush(); }
    HRESULT STDMETHODCALLTYPE SetSize(ULARGE_INTEGER size) override {
        return Fails() ? STG_E_MEDIUMFULL : m_bytes->SetSize(size);
    }
    HRESULT STDMETHODCALLTYPE LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override {
        return STG_E_INVALIDFUNCTION;
    }
    HRESULT STDMETHODCALLTYPE UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override {
        return STG_E_INVALIDFUNCTION;
    }
    HRESULT STDMETHODCALLTYPE Stat(STATSTG* stat, DWORD flags) override { return m_bytes->Stat(stat, flags); }

private:
    bool Fails() { return failAt >= 0 && failAt-- == 0; }

    ILockBytes* m_bytes;
    ULONG m_references = 1;
};

}  // namespace vx_testing
