// Where MAPI is: the mail client's registry key, the installer's ids in it, the library that the installer names for
// them, and the system folder. The steps that AutoLoadMAPI takes, each with its lines in the log. Any thread; nothing
// here throws.
#pragma once

#include "platform/BaseTypes.h"
#include "platform/Registry.h"

#include <memory>
#include <type_traits>

// A value read from the registry: its bytes and zeros behind them, so that a text in it always ends.
using RegistryValue = std::unique_ptr<WCHAR[]>;

struct CloseRegistryKey {
    void operator()(HKEY key) const noexcept { RegCloseKey(key); }
};
using RegistryKey = std::unique_ptr<std::remove_pointer_t<HKEY>, CloseRegistryKey>;

// Reads a value of type REG_SZ, REG_DWORD or REG_MULTI_SZ and tells its type. E_INVALIDARG for a value of another type,
// an empty one, and one that is not there; E_OUTOFMEMORY; another failure of the reading itself as an HRESULT. `data`
// is then null.
HRESULT HrGetRegistryValue(HKEY key, const WCHAR* valueName, DWORD& type, RegistryValue& data) noexcept;

// The key of a mail client below HKEY_LOCAL_MACHINE\Software\Clients\Mail; null takes the default client, which the
// default value there names. Null when there is none.
RegistryKey GetMailKey(const WCHAR* client) noexcept;

// The installer's ids of a client. Each output may be null, and is then not read; a value that cannot be read leaves
// its output null.
void GetMapiMsiIds(const WCHAR* client, RegistryValue* component, RegistryValue* appLcid,
                   RegistryValue* officeLcid) noexcept;

// Takes FGetComponentPath from the system folder's mapi32.dll, or from its mapistub.dll, unless it is there already.
void LoadGetComponentPath() noexcept;

// Asks the installer for a component's library, installing it if need be. `qualifier` may be null. False when
// FGetComponentPath is missing or a step failed; `path`, of `size` code units, is then empty. A success may leave it
// empty, too.
bool GetComponentPath(const WCHAR* component, const WCHAR* qualifier, WCHAR* path, DWORD size) noexcept;

// The path of a client's MAPI library, asked for with the application's language, then Office's, then none; empty when
// the registry or the installer knows none. `path` has `size` code units.
void GetMAPIPath(const WCHAR* client, WCHAR* path, DWORD size) noexcept;

// Loads a library by its path. Null on failure.
HMODULE MyLoadLibrary(const WCHAR* path) noexcept;

// Loads a library of the system folder by its full path. Null for a null name and on failure. The folder is asked for
// once; when that failed, nothing is ever loaded from it.
HMODULE LoadFromSystemDir(const WCHAR* name) noexcept;
