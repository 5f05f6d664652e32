// Conversions between UTF-16 and a code page into blocks that the caller owns, for the places where MAPI wants or gives
// 8-bit text. No state; any thread.
#pragma once

#include "platform/BaseTypes.h"

// Converts `length` bytes of `in` from `codePage` to UTF-16; a length of -1 takes a zero-terminated text whole.
// `*out` becomes a block from new[], zero-terminated also when `length` is given, which the caller frees with
// delete[]. Bytes that are no text in `codePage` become its replacement character.
//
// A null `in` gives S_OK with a null `*out`. E_INVALIDARG for a null `out` or a length below -1, E_OUTOFMEMORY, or the
// system's error as an HRESULT (an unknown code page is 0x80070057); `*out` is then null.
HRESULT AnsiToUnicode(const char* in, WCHAR** out, int length, UINT codePage);

// The same the other way: `length` counts UTF-16 units. What `codePage` cannot express becomes its default character;
// in UTF-8 an unpaired surrogate becomes U+FFFD.
HRESULT UnicodeToAnsi(const WCHAR* in, char** out, int length, UINT codePage);

// UnicodeToAnsi in the system's ANSI code page.
HRESULT UnicodeToAnsi(const WCHAR* in, char** out, int length);
