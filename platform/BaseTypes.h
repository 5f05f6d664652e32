// Windows' scalar types and the few structures that everything else is made of, with Windows' widths on every system:
// LONG and ULONG have 32 bits on 64-bit Linux too, and WCHAR is one UTF-16 code unit.
#pragma once

#ifdef _WIN32

#include "platform/WindowsSdk.h"

#else

#include <cstddef>
#include <cstdint>

using BYTE = std::uint8_t;
using UCHAR = std::uint8_t;
using WORD = std::uint16_t;
using USHORT = std::uint16_t;
using SHORT = std::int16_t;
using DWORD = std::uint32_t;
using ULONG = std::uint32_t;
using UINT = std::uint32_t;
using LONG = std::int32_t;
using INT = std::int32_t;
using BOOL = std::int32_t;
using LONGLONG = long long;
using ULONGLONG = unsigned long long;
using DWORD64 = unsigned long long;
using LONG_PTR = std::intptr_t;
using ULONG_PTR = std::uintptr_t;
using DWORD_PTR = std::uintptr_t;
using SIZE_T = std::size_t;
using CHAR = char;
using WCHAR = char16_t;
using OLECHAR = WCHAR;
using HRESULT = std::int32_t;
using SCODE = std::int32_t;
using LSTATUS = LONG;
using LCID = DWORD;

using LPVOID = void*;
using LPCVOID = const void*;
using LPBYTE = BYTE*;
using LPDWORD = DWORD*;
using LPLONG = LONG*;
using LPULONG = ULONG*;
using LPSTR = char*;
using LPCSTR = const char*;
using LPWSTR = WCHAR*;
using LPCWSTR = const WCHAR*;
using LPOLESTR = WCHAR*;
using LPCOLESTR = const WCHAR*;

// Handles are opaque pointers; what one points at is known only to the functions that made it.
using HANDLE = void*;
using HGLOBAL = HANDLE;
using HLOCAL = HANDLE;
using HMODULE = struct HMODULE__*;
using HINSTANCE = HMODULE;
using HWND = struct HWND__*;
using HKEY = struct HKEY__*;
using FARPROC = INT (*)();

// 64-bit values as two halves or as one, as in the SDK. The halves have no member name of their own.
union LARGE_INTEGER {
    __extension__ struct {
        DWORD LowPart;
        LONG HighPart;
    };
    struct {
        DWORD LowPart;
        LONG HighPart;
    } u;
    LONGLONG QuadPart;
};

union ULARGE_INTEGER {
    __extension__ struct {
        DWORD LowPart;
        DWORD HighPart;
    };
    struct {
        DWORD LowPart;
        DWORD HighPart;
    } u;
    ULONGLONG QuadPart;
};

// 100 ns steps since 1601-01-01 00:00 UTC, in two halves: aligned to 4 bytes, unlike a 64-bit integer.
struct FILETIME {
    DWORD dwLowDateTime;
    DWORD dwHighDateTime;
};

struct SYSTEMTIME {
    WORD wYear;          // 1601 to 30827
    WORD wMonth;         // 1 to 12
    WORD wDayOfWeek;     // 0 (Sunday) to 6
    WORD wDay;           // 1 to 31
    WORD wHour;          // 0 to 23
    WORD wMinute;        // 0 to 59
    WORD wSecond;        // 0 to 59
    WORD wMilliseconds;  // 0 to 999
};

// Fixed-point currency: the amount times 10,000.
union CY {
    __extension__ struct {
        ULONG Lo;
        LONG Hi;
    };
    LONGLONG int64;
};
using CURRENCY = CY;

#ifndef FALSE
#define FALSE 0
#endif
#ifndef TRUE
#define TRUE 1
#endif

inline constexpr std::size_t MAX_PATH = 260;

// Calling conventions that only Windows tells apart.
#define WINAPI
#define CALLBACK
#define STDMETHODCALLTYPE
#define STDAPICALLTYPE

static_assert(sizeof(void*) == 8, "only 64-bit systems are supported");
static_assert(sizeof(LONGLONG) == 8 && sizeof(LARGE_INTEGER) == 8 && alignof(LARGE_INTEGER) == 8);
static_assert(sizeof(FILETIME) == 8 && alignof(FILETIME) == 4);
static_assert(sizeof(SYSTEMTIME) == 16 && sizeof(CY) == 8 && alignof(CY) == 8);

#endif

static_assert(sizeof(WCHAR) == 2 && sizeof(LONG) == 4 && sizeof(HRESULT) == 4 && sizeof(BOOL) == 4);
