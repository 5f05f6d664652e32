// BSTR: wide text that knows its own length, with Windows' layout. The pointer is to the text; the four bytes before it
// hold the text's length in bytes, the two bytes after it are zero. So a BSTR is read like any zero-terminated text,
// and may hold zeros of its own, or an odd number of bytes.
//
// Whoever holds a BSTR owns it alone and frees it with SysFreeString. A null BSTR is a text of length 0 to every
// function that only reads. Any thread may call any of these; one BSTR is not to be changed by two threads at a time.
//
// Linux: the block comes from the C library's heap and starts 8 bytes before the text. Nothing is cached after freeing.
#pragma once

#include "platform/BaseTypes.h"

#ifndef _WIN32

using BSTR = OLECHAR*;

// A copy of a zero-terminated text. Null when `psz` is null or memory is short.
BSTR SysAllocString(const OLECHAR* psz) noexcept;

// A text of `ui` code units, zeros among them too, copied from `strIn`. A null `strIn` gives `ui` units to be filled
// in. Null when memory is short or the text would have more than 2^32 - 7 bytes. Linux: units to be filled in are zero; Windows
// leaves them as they were.
BSTR SysAllocStringLen(const OLECHAR* strIn, UINT ui) noexcept;

// A block of `len` bytes under a BSTR's name, copied from `psz` unless that is null. No characters are converted.
BSTR SysAllocStringByteLen(LPCSTR psz, UINT len) noexcept;

// Puts a copy of `psz` into *pbstr and frees what was there; `psz` may lie inside it. A null `psz` leaves null there.
// TRUE, or FALSE when `pbstr` is null or memory is short, with *pbstr as it was.
INT SysReAllocString(BSTR* pbstr, const OLECHAR* psz) noexcept;

// The same with `len` code units. A null `psz` keeps as much of the former text as fits, and the rest is to be filled
// in (Linux: it is zero).
INT SysReAllocStringLen(BSTR* pbstr, const OLECHAR* psz, UINT len) noexcept;

// Frees a BSTR; nothing for null.
void SysFreeString(BSTR bstrString) noexcept;

// Whole code units, and bytes, without the two zero bytes at the end. 0 for null.
UINT SysStringLen(BSTR bstr) noexcept;
UINT SysStringByteLen(BSTR bstr) noexcept;

#endif
