// What every COM object of this part shares: the reference count, the guard that keeps exceptions in, and a holder for
// a reference.
#pragma once

#include "platform/Unknown.h"

#include <atomic>
#include <memory>
#include <new>
#include <utility>

namespace vx_storage {

// Holds one reference; empty by default; move-only.
template <class Interface>
class ComRef {
public:
    ComRef() = default;
    ComRef(ComRef&& other) noexcept : m_object(std::exchange(other.m_object, nullptr)) {}
    ComRef& operator=(ComRef&& other) noexcept {
        if (this != &other) {
            Reset();
            m_object = std::exchange(other.m_object, nullptr);
        }
        return *this;
    }
    ~ComRef() { Reset(); }

    static ComRef Attach(Interface* given) noexcept { return ComRef(given); }  // takes the reference over
    static ComRef Share(Interface* lent) noexcept {                            // adds one of its own
        if (lent != nullptr) {
            lent->AddRef();
        }
        return ComRef(lent);
    }

    Interface* Get() const noexcept { return m_object; }
    Interface* operator->() const noexcept { return m_object; }
    explicit operator bool() const noexcept { return m_object != nullptr; }

    // Where a function stores a reference that it gives.
    Interface** Put() noexcept {
        Reset();
        return &m_object;
    }
    // Hands the reference over.
    Interface* Detach() noexcept { return std::exchange(m_object, nullptr); }
    void Reset() noexcept {
        if (Interface* const last = std::exchange(m_object, nullptr); last != nullptr) {
            last->Release();
        }
    }

private:
    explicit ComRef(Interface* object) noexcept : m_object(object) {}

    Interface* m_object = nullptr;
};

// The count of an object that implements one interface and its bases. It starts at 1, for whoever makes the object;
// the last Release destroys it.
template <class Derived, class Interface>
class ComObject : public Interface {
public:
    ComObject() = default;
    ComObject(const ComObject&) = delete;
    ComObject& operator=(const ComObject&) = delete;

    ULONG STDMETHODCALLTYPE AddRef() override { return m_references.fetch_add(1, std::memory_order_relaxed) + 1; }
    ULONG STDMETHODCALLTYPE Release() override {
        const ULONG left = m_references.fetch_sub(1, std::memory_order_acq_rel) - 1;
        if (left == 0) {
            std::unique_ptr<Derived>(static_cast<Derived*>(this)).reset();
        }
        return left;
    }

protected:
    ~ComObject() = default;

    // QueryInterface for the interfaces whose IIDs are given, all of which begin at this object.
    template <class... Iids>
    HRESULT Answer(REFIID riid, void** object, const Iids&... iids) noexcept {
        if (object == nullptr) {
            return E_POINTER;
        }
        const bool known = riid == IID_IUnknown || (... || (riid == iids));
        *object = known ? static_cast<Interface*>(this) : nullptr;
        if (!known) {
            return E_NOINTERFACE;
        }
        AddRef();
        return S_OK;
    }

private:
    std::atomic<ULONG> m_references{1};
};

// Makes an object and gives its first reference to `out`.
template <class Object, class Interface, class... Arguments>
void MakeObject(Interface** out, Arguments&&... arguments) {
    *out = std::make_unique<Object>(std::forward<Arguments>(arguments)...).release();
}

// Stores through a pointer that a caller may leave out.
template <class Value>
void StoreIfWanted(Value* out, Value value) noexcept {
    if (out != nullptr) {
        *out = value;
    }
}

// Runs the body of a method; an exception becomes its result.
template <class Body>
HRESULT Guarded(Body&& body) noexcept {
    try {
        return std::forward<Body>(body)();
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (...) {
        return E_UNEXPECTED;
    }
}

}  // namespace vx_storage
