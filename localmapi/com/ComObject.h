// What every COM object of this library is made on: a reference count, interfaces found by identifier, a lock, a guard
// that lets no exception out of a method, and the text of the last failure.
//
// Objects of one store or session share a lock: each method holds it, so that an object may be used from any thread,
// and two sessions never wait for each other.
#pragma once

#include "localmapi/base/Result.h"
#include "localmapi/com/ComPtr.h"
#include "mapi/MapiCodes.h"
#include "mapi/MapiTypes.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>

namespace localmapi {

using SharedLock = std::shared_ptr<std::recursive_mutex>;

// COM objects of this library that live in this process.
std::int64_t LiveObjects() noexcept;
void CountObject(int change) noexcept;

// What MAPI calls a failure of the readers.
HRESULT ResultOf(ErrorCode code) noexcept;

// Gives the HRESULT of the exception in flight: MAPI_E_NOT_ENOUGH_MEMORY, or MAPI_E_CALL_FAILED.
HRESULT ResultOfException() noexcept;

// The last failure of an object, for GetLastError.
class LastFailure {
public:
    HRESULT Set(HRESULT result, std::string text);
    HRESULT Set(const Error& error) { return Set(ResultOf(error.code), error.text); }

    // As IMAPIProp::GetLastError: a MAPIERROR about `result`, or a null pointer when the last failure was another.
    HRESULT Give(HRESULT result, ULONG flags, MAPIERROR** error) const;

private:
    HRESULT m_result = S_OK;
    std::string m_text;  // UTF-8
};

// `Interface` is what the object is. A derived class names further interfaces that it answers to in Implements, all of
// which must be bases of Interface, or hand out others itself by overriding QueryOther.
template <class Interface>
class ComObject : public Interface {
public:
    explicit ComObject(SharedLock lock) : m_lock(std::move(lock)) { CountObject(1); }
    ComObject(const ComObject&) = delete;
    ComObject& operator=(const ComObject&) = delete;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID interfaceId, void** object) override {
        if (object == nullptr) {
            return MAPI_E_INVALID_PARAMETER;
        }
        *object = nullptr;
        if (interfaceId == IID_IUnknown || Implements(interfaceId)) {
            *object = static_cast<Interface*>(this);
            AddRef();
            return S_OK;
        }
        return QueryOther(interfaceId, object);
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return m_references.fetch_add(1, std::memory_order_relaxed) + 1; }
    ULONG STDMETHODCALLTYPE Release() override {
        const ULONG left = m_references.fetch_sub(1, std::memory_order_acq_rel) - 1;
        if (left == 0) {
            // What the object holds may be shared with others of its lock, which must outlive its own release.
            const SharedLock lock = m_lock;
            const std::scoped_lock hold(*lock);
            delete this;
        }
        return left;
    }

    const SharedLock& Lock() const noexcept { return m_lock; }

protected:
    virtual ~ComObject() { CountObject(-1); }

    virtual bool Implements(REFIID interfaceId) const = 0;
    virtual HRESULT QueryOther(REFIID, void**) { return MAPI_E_INTERFACE_NOT_SUPPORTED; }

    // Runs the body of a method under the lock; an exception becomes a failure.
    template <class Body>
    HRESULT Guarded(Body&& body) noexcept {
        try {
            const std::scoped_lock hold(*m_lock);
            return std::forward<Body>(body)();
        } catch (...) {
            return ResultOfException();
        }
    }

    HRESULT Fail(HRESULT result, std::string text) { return m_failure.Set(result, std::move(text)); }
    HRESULT Fail(const Error& error) { return m_failure.Set(error); }
    HRESULT GiveLastError(HRESULT result, ULONG flags, MAPIERROR** error) noexcept {
        return Guarded([&] { return m_failure.Give(result, flags, error); });
    }

    LastFailure& Failure() noexcept { return m_failure; }

private:
    std::atomic<ULONG> m_references{1};
    SharedLock m_lock;
    LastFailure m_failure;
};

// A new object with its first reference in the pointer.
template <class Object, class... Arguments>
ComPtr<Object> MakeObject(Arguments&&... arguments) {
    return ComPtr<Object>::Adopt(new Object(std::forward<Arguments>(arguments)...));
}

}  // namespace localmapi
