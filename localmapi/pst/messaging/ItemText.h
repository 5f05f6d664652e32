// What the texts of an item need to be read: the code page of its 8-bit strings, and the subject's hidden prefix. Any
// thread.
#pragma once

#include "localmapi/pst/ltp/PropertyContext.h"
#include "platform/WideText.h"

#include <cstddef>

namespace localmapi::pst {

// The page of 8-bit strings where nothing in the file tells: the system's own if that is one of Windows' ANSI pages,
// else 1252.
UINT DefaultCodePage() noexcept;

// True for the pages that 8-bit strings of messages are written in: Windows' single- and double-byte pages and the ISO
// 8859 family, not UTF-7, UTF-8, UTF-16 or the 7-bit mail encodings.
bool IsStringPage(UINT codePage) noexcept;

// The ANSI page of a locale's language, 0 when the language has none.
UINT PageOfLocale(LCID locale) noexcept;

// The page of a message's 8-bit strings: its own declaration, else that of its locale, else that of its body as far as
// that says anything about strings, else `fallback`.
UINT StringPageOf(PropertyContext& properties, UINT fallback);

// A subject may begin with U+0001 and a character that is the length of a prefix ("RE: ") plus one: [MS-PST] 2.5.3.1.1.
struct Subject {
    CStringW text;                 // without the two characters
    std::size_t prefixLength = 0;  // of "RE: " and the like within the text
};
Subject SplitSubject(CStringW stored);

}  // namespace localmapi::pst
