// The calling thread's last error, Win32 error numbers, and message texts with inserts. Every function may be called
// from any thread; the last error of one thread is never seen by another.
#pragma once

#include "platform/BaseTypes.h"

#ifndef _WIN32

#include <cstdarg>

// The code that the last failing function of this room left on this thread; 0 on a thread that never failed. As on
// Windows, a success leaves it alone unless the function's contract says otherwise.
[[nodiscard]] DWORD GetLastError() noexcept;
void SetLastError(DWORD code) noexcept;

// The Win32 number that says what `error` (an errno value) says: ENOENT is ERROR_FILE_NOT_FOUND. 0 gives
// ERROR_SUCCESS; a value without a counterpart gives ERROR_GEN_FAILURE. Exists on Linux only.
[[nodiscard]] DWORD ErrorFromErrno(int error) noexcept;

inline constexpr DWORD ERROR_SUCCESS = 0;
inline constexpr DWORD NO_ERROR = 0;
inline constexpr DWORD ERROR_INVALID_FUNCTION = 1;
inline constexpr DWORD ERROR_FILE_NOT_FOUND = 2;
inline constexpr DWORD ERROR_PATH_NOT_FOUND = 3;
inline constexpr DWORD ERROR_TOO_MANY_OPEN_FILES = 4;
inline constexpr DWORD ERROR_ACCESS_DENIED = 5;
inline constexpr DWORD ERROR_INVALID_HANDLE = 6;
inline constexpr DWORD ERROR_NOT_ENOUGH_MEMORY = 8;
inline constexpr DWORD ERROR_BAD_FORMAT = 11;
inline constexpr DWORD ERROR_INVALID_DATA = 13;
inline constexpr DWORD ERROR_OUTOFMEMORY = 14;
inline constexpr DWORD ERROR_NOT_SAME_DEVICE = 17;
inline constexpr DWORD ERROR_NO_MORE_FILES = 18;
inline constexpr DWORD ERROR_WRITE_PROTECT = 19;
inline constexpr DWORD ERROR_SEEK = 25;
inline constexpr DWORD ERROR_WRITE_FAULT = 29;
inline constexpr DWORD ERROR_READ_FAULT = 30;
inline constexpr DWORD ERROR_GEN_FAILURE = 31;
inline constexpr DWORD ERROR_SHARING_VIOLATION = 32;
inline constexpr DWORD ERROR_LOCK_VIOLATION = 33;
inline constexpr DWORD ERROR_HANDLE_EOF = 38;
inline constexpr DWORD ERROR_NOT_SUPPORTED = 50;
inline constexpr DWORD ERROR_FILE_EXISTS = 80;
inline constexpr DWORD ERROR_CANNOT_MAKE = 82;
inline constexpr DWORD ERROR_INVALID_PARAMETER = 87;
inline constexpr DWORD ERROR_BROKEN_PIPE = 109;
inline constexpr DWORD ERROR_DISK_FULL = 112;
inline constexpr DWORD ERROR_CALL_NOT_IMPLEMENTED = 120;
inline constexpr DWORD ERROR_INSUFFICIENT_BUFFER = 122;
inline constexpr DWORD ERROR_INVALID_NAME = 123;
inline constexpr DWORD ERROR_MOD_NOT_FOUND = 126;
inline constexpr DWORD ERROR_PROC_NOT_FOUND = 127;
inline constexpr DWORD ERROR_NEGATIVE_SEEK = 131;
inline constexpr DWORD ERROR_DIR_NOT_EMPTY = 145;
inline constexpr DWORD ERROR_BAD_PATHNAME = 161;
inline constexpr DWORD ERROR_BUSY = 170;
inline constexpr DWORD ERROR_ALREADY_EXISTS = 183;
inline constexpr DWORD ERROR_BAD_EXE_FORMAT = 193;
inline constexpr DWORD ERROR_ENVVAR_NOT_FOUND = 203;
inline constexpr DWORD ERROR_FILENAME_EXCED_RANGE = 206;
inline constexpr DWORD ERROR_FILE_TOO_LARGE = 223;
inline constexpr DWORD ERROR_MORE_DATA = 234;
inline constexpr DWORD ERROR_NO_WORK_DONE = 235;
inline constexpr DWORD ERROR_NO_MORE_ITEMS = 259;
inline constexpr DWORD ERROR_DIRECTORY = 267;
inline constexpr DWORD ERROR_MR_MID_NOT_FOUND = 317;
inline constexpr DWORD ERROR_INVALID_ADDRESS = 487;
inline constexpr DWORD ERROR_INVALID_FLAGS = 1004;
inline constexpr DWORD ERROR_BADKEY = 1010;
inline constexpr DWORD ERROR_NO_UNICODE_TRANSLATION = 1113;
inline constexpr DWORD ERROR_DLL_INIT_FAILED = 1114;
inline constexpr DWORD ERROR_MAPPED_ALIGNMENT = 1132;
inline constexpr DWORD ERROR_NOT_FOUND = 1168;
inline constexpr DWORD ERROR_CANCELLED = 1223;
inline constexpr DWORD ERROR_COMMITMENT_LIMIT = 1455;
inline constexpr DWORD ERROR_TIMEOUT = 1460;
inline constexpr DWORD ERROR_CANT_RESOLVE_FILENAME = 1921;

inline constexpr DWORD FORMAT_MESSAGE_ALLOCATE_BUFFER = 0x0100;
inline constexpr DWORD FORMAT_MESSAGE_IGNORE_INSERTS = 0x0200;
inline constexpr DWORD FORMAT_MESSAGE_FROM_STRING = 0x0400;
inline constexpr DWORD FORMAT_MESSAGE_FROM_HMODULE = 0x0800;
inline constexpr DWORD FORMAT_MESSAGE_FROM_SYSTEM = 0x1000;
inline constexpr DWORD FORMAT_MESSAGE_ARGUMENT_ARRAY = 0x2000;
inline constexpr DWORD FORMAT_MESSAGE_MAX_WIDTH_MASK = 0x00FF;

// Writes a message into `buffer`, terminated, and gives its length without the terminator; 0 on failure, with the
// reason as last error. The message is the text `source` (FROM_STRING) or the system's English text for `messageId`
// (FROM_SYSTEM: a Win32 number, an HRESULT that carries one, or one of COM's general codes).
//
// In the message, %1 to %99 stand for the arguments, each followed by an optional printf format in exclamation marks
// (%3!08X!, %4!hs!; without one, zero-terminated UTF-16 text); %n is a line break, %r a carriage return, %t a tab, %%
// a percent sign, "% ", %. and %! the character itself, and %0 ends the text. Line breaks of the message become "\r\n",
// or a blank with FORMAT_MESSAGE_MAX_WIDTH_MASK. A null text prints "(null)".
//
// `arguments` is the address of a va_list or, with ARGUMENT_ARRAY, of an array of DWORD_PTR; each must hold as many
// values as the highest number in the message, since nothing can check that. With null arguments an insert is
// ERROR_INVALID_PARAMETER. IGNORE_INSERTS passes inserts and percent signs on as they stand, all but %n, %r, %t and %0.
//
// `size` counts WCHARs; too few is ERROR_INSUFFICIENT_BUFFER. With ALLOCATE_BUFFER `buffer` is really a WCHAR** that
// receives a block of at least `size` WCHARs, for LocalFree, or null on failure. A message that comes out empty counts
// as failure: ERROR_NO_WORK_DONE. An unknown number is ERROR_MR_MID_NOT_FOUND.
//
// Linux: `languageId` is ignored; narrow text is UTF-8; FROM_HMODULE, line widths other than 0 and 255, asterisks for a
// width and anything that is not a printf format for text, a character or an integer are ERROR_INVALID_PARAMETER.
DWORD FormatMessageW(DWORD flags, LPCVOID source, DWORD messageId, DWORD languageId, LPWSTR buffer, DWORD size,
                     va_list* arguments) noexcept;

inline constexpr UINT LMEM_FIXED = 0x0000;
inline constexpr UINT LMEM_ZEROINIT = 0x0040;
inline constexpr UINT LPTR = LMEM_FIXED | LMEM_ZEROINIT;

// A block of at least `bytes` bytes, for LocalFree; null with ERROR_NOT_ENOUGH_MEMORY. Linux: fixed blocks only, other
// flags are ERROR_INVALID_PARAMETER.
[[nodiscard]] HLOCAL LocalAlloc(UINT flags, SIZE_T bytes) noexcept;

// Frees what LocalAlloc or FormatMessageW gave; null is fine. Gives null.
HLOCAL LocalFree(HLOCAL block) noexcept;

#endif
