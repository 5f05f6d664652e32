// Memory under a name, which another process can open: sections backed by no file. Any thread; the bytes themselves are
// the callers' to guard.
//
// Linux: a named section is a POSIX shared memory object of the same user, mode 0600, exactly as large as asked for;
// docs/named-sections.md tells a consumer how to find it without this code. The name disappears with the last handle of
// all processes that use these functions, at the latest when they end normally; what a killed process left behind is
// replaced by the next section of that name. The memory disappears with the last handle and the last view.
#pragma once

#include "platform/BaseTypes.h"
#include "platform/LastError.h"
#include "platform/WideText.h"

#ifndef _WIN32

#include <string>

struct SECURITY_ATTRIBUTES;

inline const HANDLE INVALID_HANDLE_VALUE = reinterpret_cast<HANDLE>(static_cast<LONG_PTR>(-1));

inline constexpr DWORD PAGE_READONLY = 0x02;
inline constexpr DWORD PAGE_READWRITE = 0x04;
inline constexpr DWORD SEC_COMMIT = 0x08000000;

inline constexpr DWORD FILE_MAP_COPY = 0x0001;
inline constexpr DWORD FILE_MAP_WRITE = 0x0002;  // reads too
inline constexpr DWORD FILE_MAP_READ = 0x0004;
inline constexpr DWORD FILE_MAP_ALL_ACCESS = 0x000F001F;

// Makes a section of (sizeHigh << 32 | sizeLow) zero bytes, or opens the one that already has this name; the last error
// then is ERROR_ALREADY_EXISTS, and otherwise 0. `file` is INVALID_HANDLE_VALUE. The handle is for CloseHandle; null on
// failure: ERROR_INVALID_PARAMETER for a size of 0 or a protection other than the two above (with or without
// SEC_COMMIT), ERROR_COMMITMENT_LIMIT when the memory is not there, which is found here and not at the first write.
// Linux: a name is needed (ERROR_INVALID_PARAMETER); names compare exactly and may hold any characters, backslashes
// too; another `file` is ERROR_INVALID_HANDLE and a `security` ERROR_NOT_SUPPORTED; an existing section smaller than
// asked for is ERROR_INVALID_PARAMETER, so that a copy of the asked size always fits; a shared memory object of another
// user or of wider mode is ERROR_ACCESS_DENIED.
[[nodiscard]] HANDLE CreateFileMappingW(HANDLE file, SECURITY_ATTRIBUTES* security, DWORD protection, DWORD sizeHigh,
                                        DWORD sizeLow, LPCWSTR name) noexcept;

// Opens the section of that name for views of `access` (FILE_MAP_* bits). Null on failure: ERROR_FILE_NOT_FOUND,
// ERROR_ACCESS_DENIED, ERROR_INVALID_PARAMETER without a name. `inherit` has no effect on Linux.
[[nodiscard]] HANDLE OpenFileMappingW(DWORD access, BOOL inherit, LPCWSTR name) noexcept;

// Maps `bytes` bytes from the offset on, or all to the end with 0. The view may outlive the handle; it ends with
// UnmapViewOfFile. Null on failure: ERROR_MAPPED_ALIGNMENT unless the offset is a multiple of 65,536,
// ERROR_ACCESS_DENIED beyond the section's end or for access that the handle lacks.
[[nodiscard]] LPVOID MapViewOfFile(HANDLE section, DWORD access, DWORD offsetHigh, DWORD offsetLow,
                                   SIZE_T bytes) noexcept;

// Ends the view that begins at `base`; ERROR_INVALID_ADDRESS when none does.
BOOL UnmapViewOfFile(LPCVOID base) noexcept;

// Gives a section's handle back; ERROR_INVALID_HANDLE when it is none, or was closed already. Its views stay.
BOOL CloseHandle(HANDLE handle) noexcept;

// The name of the shared memory object, for shm_open, behind the section `name`. Exists on Linux only.
//
// "/vx-" and the name in UTF-8, where each byte but the letters and digits of ASCII and "-", "." and "_" is written as
// a percent sign and two upper-case hexadecimal digits; an unpaired surrogate counts as its three-byte form. Where that
// exceeds 250 bytes, it is cut to 217 or less, never inside a percent form, and followed by "#" and 32 lower-case
// digits: the 128-bit FNV-1a hash of the whole name's UTF-8 bytes. "#" occurs nowhere else, so a short name never
// meets a long one.
[[nodiscard]] std::string NamedSectionObjectName(WideView name);

#endif
