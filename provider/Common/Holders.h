// Holders that free what they hold when their scope ends: one raw pointer each, owned, and no counting. All have the
// shape of VxHolder; which operations a kind adds is told with it. A holder is used by one thread at a time.
//
// Beware of two names that differ from the standard library's: release() frees, except on VxArrayPtr, and a copy holds
// the same pointer, so only one of the two may remain in charge (releasePointer() or release() on the other).
#pragma once

#include "platform/Unknown.h"

#include <concepts>
#include <utility>

// What every holder has. `Free` is a stateless function object that frees a non-null T*.
template <typename T, typename Free>
class VxHolder {
public:
    VxHolder() noexcept = default;

    // Takes over `pointer`, which may be null, as it is: nothing is added to a reference count.
    explicit VxHolder(T* pointer) noexcept : m_pointer(pointer) {}

    // Copies the raw pointer, without any count.
    VxHolder(const VxHolder& other) noexcept : m_pointer(other.m_pointer) {}
    VxHolder(VxHolder&& other) noexcept : m_pointer(std::exchange(other.m_pointer, nullptr)) {}
    VxHolder& operator=(const VxHolder&) = delete;

    virtual ~VxHolder() { FreeHeld(); }

    // The pointer; ownership stays here.
    T* get() const noexcept { return m_pointer; }
    T* operator->() const noexcept { return m_pointer; }
    // NOLINTNEXTLINE(google-explicit-constructor): holders stand where raw pointers are asked for.
    operator T*() const noexcept { return m_pointer; }

protected:
    // Frees what is held, if anything, and holds null.
    void FreeHeld() noexcept {
        if (T* held = std::exchange(m_pointer, nullptr)) {
            Free{}(held);
        }
    }

    // Frees what is held and takes over `pointer`; with the pointer already held nothing happens.
    void Replace(T* pointer) noexcept {
        if (pointer != m_pointer) {
            FreeHeld();
            m_pointer = pointer;
        }
    }

    T* GiveUp() noexcept { return std::exchange(m_pointer, nullptr); }
    T** Address() noexcept { return &m_pointer; }
    // Takes the other's pointer and leaves null there. What was held here is not freed.
    void TakeFrom(VxHolder& other) noexcept { m_pointer = std::exchange(other.m_pointer, nullptr); }

private:
    T* m_pointer = nullptr;
};

struct VxDeleteObject {
    template <typename T>
    void operator()(T* object) const noexcept {
        delete object;
    }
};

struct VxDeleteArray {
    template <typename T>
    void operator()(T* array) const noexcept {
        delete[] array;
    }
};

struct VxReleaseInterface {
    void operator()(IUnknown* object) const noexcept { object->Release(); }
};

// An object from new.
template <typename T>
class VxPtr : public VxHolder<T, VxDeleteObject> {
public:
    using VxHolder<T, VxDeleteObject>::VxHolder;

    // Frees the object and holds null.
    void clean() noexcept { this->FreeHeld(); }
};

// An array from new[].
template <typename T>
class VxArrayPtr : public VxHolder<T, VxDeleteArray> {
public:
    using VxHolder<T, VxDeleteArray>::VxHolder;

    // Frees the array and holds null.
    void clean() noexcept { this->FreeHeld(); }

    // Frees the array and takes over another; with the array already held nothing happens.
    void set(T* array) noexcept { this->Replace(array); }

    // Gives the array up to the caller, who frees it with delete[].
    [[nodiscard]] T* release() noexcept requires std::same_as<T, unsigned char> { return this->GiveUp(); }
};

// A reference to a COM interface.
template <typename T>
class VxMapiPtr : public VxHolder<T, VxReleaseInterface> {
public:
    using VxHolder<T, VxReleaseInterface>::VxHolder;

    // The inner pointer's address, for out arguments. Nothing is freed: what is held must be null, or is lost.
    T** operator&() noexcept { return this->Address(); }

    // Releases the interface and holds null.
    void release() noexcept { this->FreeHeld(); }

    // Gives the reference up to the caller.
    [[nodiscard]] T* releasePointer() noexcept { return this->GiveUp(); }

    // Releases the interface and takes over another reference; with the pointer already held nothing happens.
    void reset(T* pointer) noexcept { this->Replace(pointer); }
};
