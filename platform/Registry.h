// Reading the registry: keys, values and their enumeration. Any thread; a key handle may be used by several at once.
// The functions give a Win32 error number and leave the thread's last error alone.
//
// Linux: the registry is one text file in regedit's syntax ("Windows Registry Editor Version 5.00"), in UTF-8 or, with
// a byte order mark, UTF-16 LE: $VX_REGISTRY, else registry.reg in ConfigurationFolder(). A missing, unreadable or
// oversized file is a registry without keys; a line that cannot be understood is skipped. RegOpenKeyExW looks at the
// file's time and size and reads it again after a change; a handle keeps showing what the file held when it was opened.
#pragma once

#include "platform/BaseTypes.h"
#include "platform/LastError.h"

#ifndef _WIN32

using REGSAM = DWORD;

// The roots. They need not be closed. Linux: the same file serves every user, so HKEY_CURRENT_USER is whoever reads it.
inline const HKEY HKEY_CLASSES_ROOT = reinterpret_cast<HKEY>(static_cast<ULONG_PTR>(0xFFFFFFFF80000000));
inline const HKEY HKEY_CURRENT_USER = reinterpret_cast<HKEY>(static_cast<ULONG_PTR>(0xFFFFFFFF80000001));
inline const HKEY HKEY_LOCAL_MACHINE = reinterpret_cast<HKEY>(static_cast<ULONG_PTR>(0xFFFFFFFF80000002));
inline const HKEY HKEY_USERS = reinterpret_cast<HKEY>(static_cast<ULONG_PTR>(0xFFFFFFFF80000003));

inline constexpr REGSAM KEY_QUERY_VALUE = 0x0001;
inline constexpr REGSAM KEY_SET_VALUE = 0x0002;
inline constexpr REGSAM KEY_CREATE_SUB_KEY = 0x0004;
inline constexpr REGSAM KEY_ENUMERATE_SUB_KEYS = 0x0008;
inline constexpr REGSAM KEY_NOTIFY = 0x0010;
inline constexpr REGSAM KEY_WOW64_64KEY = 0x0100;
inline constexpr REGSAM KEY_WOW64_32KEY = 0x0200;
inline constexpr REGSAM KEY_READ = 0x00020019;
inline constexpr REGSAM KEY_WRITE = 0x00020006;

inline constexpr DWORD REG_NONE = 0;       // bytes of no known kind
inline constexpr DWORD REG_SZ = 1;         // UTF-16 text with a terminator
inline constexpr DWORD REG_EXPAND_SZ = 2;  // the same, with %VARIABLES% left in place
inline constexpr DWORD REG_BINARY = 3;
inline constexpr DWORD REG_DWORD = 4;     // 4 bytes, little-endian
inline constexpr DWORD REG_MULTI_SZ = 7;  // UTF-16 texts, each terminated, and an empty one behind the last
inline constexpr DWORD REG_QWORD = 11;    // 8 bytes, little-endian

// Opens the key `subKey` (a path with backslashes) beneath `key`; null or empty opens `key` itself once more. Names
// compare without regard to case. `*result` is for RegCloseKey and is null on failure: ERROR_FILE_NOT_FOUND when there
// is no such key, ERROR_BAD_PATHNAME for a path that begins with a backslash, ERROR_INVALID_HANDLE,
// ERROR_INVALID_PARAMETER, ERROR_NOT_ENOUGH_MEMORY.
// Linux: read-only, so `access` with a right to write is ERROR_ACCESS_DENIED; the two views of KEY_WOW64_* are one.
[[nodiscard]] LSTATUS RegOpenKeyExW(HKEY key, LPCWSTR subKey, DWORD options, REGSAM access, HKEY* result) noexcept;

// Reads the value `valueName` (null or empty: the key's default value). `*type` and `*size`, each optional, receive its
// kind and its bytes, the terminator of a text counted when one is stored. With `data`, `*size` holds the room on
// entry; too little is ERROR_MORE_DATA with the size needed in `*size` and `data` untouched. Without `data` the size is
// just told. ERROR_FILE_NOT_FOUND when there is no such value; `data` without `size` is ERROR_INVALID_PARAMETER.
[[nodiscard]] LSTATUS RegQueryValueExW(HKEY key, LPCWSTR valueName, LPDWORD reserved, LPDWORD type, LPBYTE data,
                                       LPDWORD size) noexcept;

// The subkey at `index`, counted from 0; ERROR_NO_MORE_ITEMS behind the last. `*nameLength` is the room of `name` in
// WCHARs with the terminator on entry, the length without it on return; too little is ERROR_MORE_DATA. The class and
// the time are optional. Linux: the order is that of the names; a key has no class and its time is 0.
[[nodiscard]] LSTATUS RegEnumKeyExW(HKEY key, DWORD index, LPWSTR name, LPDWORD nameLength, LPDWORD reserved,
                                    LPWSTR className, LPDWORD classLength, FILETIME* lastWritten) noexcept;

// The value at `index`: its name as in RegEnumKeyExW, its kind and data as in RegQueryValueExW. The default value has
// an empty name. Linux: the order is that of the names.
[[nodiscard]] LSTATUS RegEnumValueW(HKEY key, DWORD index, LPWSTR name, LPDWORD nameLength, LPDWORD reserved,
                                    LPDWORD type, LPBYTE data, LPDWORD size) noexcept;

// Gives a handle back; ERROR_INVALID_HANDLE when it is none, or was closed already. The roots always succeed.
LSTATUS RegCloseKey(HKEY key) noexcept;

#endif
