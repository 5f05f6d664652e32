// What the texts of an item need to be read: the code page of its 8-bit strings, and the subject's hidden prefix. Any
// thread.
#pragma once

#include "localmapi/base/StringPages.h"
#include "localmapi/pst/ltp/PropertyContext.h"
#include "platform/WideText.h"

#include <cstddef>

namespace localmapi::pst {

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
