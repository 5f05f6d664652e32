// Characters that look alike, for pages that lack the one that is asked for.
#pragma once

#include "platform/BaseTypes.h"

namespace vx_text {

// What may stand for a character: a wide form that East Asian pages have, then one of ASCII. 0xFFFF for neither.
struct Alike {
    WCHAR wide;
    WCHAR ascii;
};

[[nodiscard]] Alike LooksLike(WCHAR unit) noexcept;

}  // namespace vx_text
