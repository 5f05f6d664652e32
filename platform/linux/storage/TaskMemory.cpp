#include "platform/TaskMemory.h"

#include <cstdlib>
#include <limits>

#include <malloc.h>

namespace {

// The task allocator is the C library's, so that every module of the process frees what any other allocated.
class TaskAllocator final : public IMalloc {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** object) override {
        if (object == nullptr) {
            return E_POINTER;
        }
        const bool known = riid == IID_IUnknown || riid == IID_IMalloc;
        *object = known ? static_cast<IMalloc*>(this) : nullptr;
        return known ? S_OK : E_NOINTERFACE;
    }
    // It is never destroyed, so nobody counts.
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }

    void* STDMETHODCALLTYPE Alloc(SIZE_T cb) override { return CoTaskMemAlloc(cb); }
    void* STDMETHODCALLTYPE Realloc(void* pv, SIZE_T cb) override { return CoTaskMemRealloc(pv, cb); }
    void STDMETHODCALLTYPE Free(void* pv) override { CoTaskMemFree(pv); }
    SIZE_T STDMETHODCALLTYPE GetSize(void* pv) override {
        return pv == nullptr ? std::numeric_limits<SIZE_T>::max() : malloc_usable_size(pv);
    }
    int STDMETHODCALLTYPE DidAlloc(void*) override { return -1; }
    void STDMETHODCALLTYPE HeapMinimize() override { malloc_trim(0); }
};

constinit TaskAllocator g_taskAllocator;

}  // namespace

LPVOID CoTaskMemAlloc(SIZE_T cb) noexcept {
    return std::malloc(cb == 0 ? 1 : cb);
}

LPVOID CoTaskMemRealloc(LPVOID pv, SIZE_T cb) noexcept {
    if (pv != nullptr && cb == 0) {
        std::free(pv);
        return nullptr;
    }
    return std::realloc(pv, cb == 0 ? 1 : cb);
}

void CoTaskMemFree(LPVOID pv) noexcept {
    std::free(pv);
}

HRESULT CoGetMalloc(DWORD dwMemContext, LPMALLOC* ppMalloc) noexcept {
    constexpr DWORD kTaskContext = 1;
    if (ppMalloc == nullptr) {
        return E_INVALIDARG;
    }
    *ppMalloc = dwMemContext == kTaskContext ? &g_taskAllocator : nullptr;
    return dwMemContext == kTaskContext ? S_OK : E_INVALIDARG;
}
