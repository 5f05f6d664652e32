// Libraries loaded at run time, their entry points, and the folder that system libraries come from. Any thread. On
// failure the last error says why.
//
// Linux: "name.dll" means libname.so, so one spelling serves both systems; see LoadLibraryW. Nothing is ever looked for
// in the current directory or along LD_LIBRARY_PATH.
#pragma once

#include "platform/BaseTypes.h"
#include "platform/LastError.h"

#ifndef _WIN32

// Loads a library, or counts one more load of it. `name` is an absolute path, or a bare file name, which Linux looks
// for in the system folder only. Null on failure: ERROR_MOD_NOT_FOUND when it, or a library that it needs, is missing;
// ERROR_BAD_EXE_FORMAT when the file is no library of this machine's kind.
// Linux: backslashes separate folders as slashes do; a relative path with folders is ERROR_MOD_NOT_FOUND. The last
// part "name.dll" (in any case), or "name" without an extension, becomes libname.so: first as it is spelled, then in
// lower case. Any other extension is taken as it stands.
[[nodiscard]] HMODULE LoadLibraryW(LPCWSTR name) noexcept;

// Takes one load back; the last one unloads. FALSE with ERROR_MOD_NOT_FOUND when `module` is not loaded.
BOOL FreeLibrary(HMODULE module) noexcept;

// The address that the library itself exports as `name`, not one of a library beneath it. Null with
// ERROR_PROC_NOT_FOUND, or ERROR_MOD_NOT_FOUND for a module that is not loaded. Linux: there are no ordinals.
[[nodiscard]] FARPROC GetProcAddress(HMODULE module, LPCSTR name) noexcept;

// A loaded library by the name that LoadLibraryW takes, without counting a load; null with ERROR_MOD_NOT_FOUND. Linux:
// knows what LoadLibraryW loaded; a null name (the program, on Windows) is ERROR_INVALID_PARAMETER.
[[nodiscard]] HMODULE GetModuleHandleW(LPCWSTR name) noexcept;

// The absolute path of a loaded library, or of the program for null. Gives the length without the terminator; a path
// that does not fit is cut, terminated, and gives `size` with ERROR_INSUFFICIENT_BUFFER. 0 is failure, with
// ERROR_MOD_NOT_FOUND for a module that is not loaded.
DWORD GetModuleFileNameW(HMODULE module, LPWSTR buffer, DWORD size) noexcept;

// The system folder, without a separator behind it. Gives the length without the terminator, or, when `size` WCHARs are
// too few, the room needed with it, and leaves `buffer` alone. 0 is failure.
// Linux: $VX_SYSTEM_DIR when it is an absolute path, else the folder of the library that holds this code.
UINT GetSystemDirectoryW(LPWSTR buffer, UINT size) noexcept;

#endif
