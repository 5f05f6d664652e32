// IUnknown and the task allocator's interface: slots as published, usable from any compiler of the platform.
#pragma once

#include "platform/BaseTypes.h"
#include "platform/Guid.h"
#include "platform/ResultCodes.h"

#ifndef _WIN32

// Slots 0 to 2 of every COM interface. No virtual destructor: the slots are the contract.
struct IUnknown {
    virtual HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppvObject) = 0;
    virtual ULONG STDMETHODCALLTYPE AddRef() = 0;
    virtual ULONG STDMETHODCALLTYPE Release() = 0;
};
using LPUNKNOWN = IUnknown*;

struct IMalloc : IUnknown {
    virtual void* STDMETHODCALLTYPE Alloc(SIZE_T cb) = 0;
    virtual void* STDMETHODCALLTYPE Realloc(void* pv, SIZE_T cb) = 0;
    virtual void STDMETHODCALLTYPE Free(void* pv) = 0;
    virtual SIZE_T STDMETHODCALLTYPE GetSize(void* pv) = 0;
    virtual int STDMETHODCALLTYPE DidAlloc(void* pv) = 0;
    virtual void STDMETHODCALLTYPE HeapMinimize() = 0;
};
using LPMALLOC = IMalloc*;

inline constexpr IID IID_IUnknown = OleGuid(0x00000000);
inline constexpr IID IID_IMalloc = OleGuid(0x00000002);

#endif
