// Wide text to the ANSI code page, for the 8-bit properties of MAPI's administration.
#pragma once

#include "platform/WideText.h"
#include "provider/Common/Holders.h"

#include <cstddef>

class WLStr {
public:
    // Converts `length` characters into `out` and gives the bytes written; no terminator is added, but a length of 0
    // writes one (when outSize is above 0) and gives 0. 0 also when the bytes do not fit. With an outSize of 0 the
    // result is the number of bytes that there would be.
    static std::size_t ToAscii(const WCHAR* text, std::size_t length, char* out, std::size_t outSize) noexcept;

    // Converts `length` characters, or up to the terminator when `length` is 0, into an array of its own, terminated.
    // Null gives an empty text; so does a failed conversion. Throws std::bad_alloc.
    static VxArrayPtr<char> ToAscii(const WCHAR* text, std::size_t length = 0);
};
