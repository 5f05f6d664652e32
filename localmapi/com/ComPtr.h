// A counted reference to a COM object. No thread rule beyond the object's own.
#pragma once

#include "platform/Unknown.h"

#include <utility>

namespace localmapi {

template <class T>
class ComPtr {
public:
    ComPtr() = default;
    ComPtr(std::nullptr_t) noexcept {}  // NOLINT(google-explicit-constructor)

    // Takes a reference of its own.
    explicit ComPtr(T* object) noexcept : m_object(object) {
        if (m_object != nullptr) {
            m_object->AddRef();
        }
    }
    ComPtr(const ComPtr& other) noexcept : ComPtr(other.m_object) {}
    ComPtr(ComPtr&& other) noexcept : m_object(std::exchange(other.m_object, nullptr)) {}
    ComPtr& operator=(ComPtr other) noexcept {
        std::swap(m_object, other.m_object);
        return *this;
    }
    ~ComPtr() {
        if (m_object != nullptr) {
            m_object->Release();
        }
    }

    // Takes over a reference that the caller holds.
    static ComPtr Adopt(T* object) noexcept {
        ComPtr pointer;
        pointer.m_object = object;
        return pointer;
    }

    // Gives the reference away.
    T* Detach() noexcept { return std::exchange(m_object, nullptr); }

    // For out parameters; what was held is released first.
    T** Receive() noexcept {
        *this = ComPtr();
        return &m_object;
    }

    T* Get() const noexcept { return m_object; }
    T* operator->() const noexcept { return m_object; }
    T& operator*() const noexcept { return *m_object; }
    explicit operator bool() const noexcept { return m_object != nullptr; }

private:
    T* m_object = nullptr;
};

// The object as another interface; null when it has none such.
template <class To, class From>
ComPtr<To> QueryFor(From* object, REFIID interfaceId) {
    void* found = nullptr;
    if (object == nullptr || FAILED(object->QueryInterface(interfaceId, &found))) {
        return {};
    }
    return ComPtr<To>::Adopt(static_cast<To*>(found));
}

}  // namespace localmapi
