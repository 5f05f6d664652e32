// What the sources of the MAPI loader share: the libraries that are loaded and the pointers into them. Process-wide,
// null until loaded. Only the loader's own sources and its tests include this.
#pragma once

#include "mapi/MapiTypes.h"

#include <atomic>

// A function taken by name at run time. Reading it on one thread while another one fills it is fine: it is null or
// whole, and what it points into is loaded by then.
class ImportedFunction {
public:
    // `pointerName` is what the log calls it.
    explicit constexpr ImportedFunction(const char* pointerName) noexcept : m_name(pointerName) {}

    const char* PointerName() const noexcept { return m_name; }
    bool IsSet() const noexcept { return Address() != nullptr; }
    void Set(FARPROC function) noexcept {
        m_address.store(reinterpret_cast<AnyFunction>(function), std::memory_order_release);
    }
    void Clear() noexcept { m_address.store(nullptr, std::memory_order_relaxed); }

protected:
    using AnyFunction = void (*)();  // cast to its real type before it is called

    AnyFunction Address() const noexcept { return m_address.load(std::memory_order_acquire); }

private:
    const char* m_name;
    std::atomic<AnyFunction> m_address = nullptr;
};

template <typename Function>
class EntryPoint : public ImportedFunction {
public:
    using ImportedFunction::ImportedFunction;

    // Null until loaded.
    Function* Get() const noexcept { return reinterpret_cast<Function*>(Address()); }
};

// The path of an installed component's library, by the installer's ids. `szQualifier` may be null; `szDllPath` receives
// 8-bit text. FALSE with the last error when there is none.
using FGETCOMPONENTPATH = BOOL STDAPICALLTYPE(LPSTR szComponent, LPSTR szQualifier, LPSTR szDllPath,
                                              DWORD cchBufferSize, BOOL fInstall);

extern std::atomic<HMODULE> hModMSMAPI;    // the client's own library
extern std::atomic<HMODULE> hModMAPI;      // mapi32.dll of the system folder
extern std::atomic<HMODULE> hModMAPIStub;  // mapistub.dll of the system folder

extern EntryPoint<FGETCOMPONENTPATH> pfnFGetComponentPath;
