// The code pages that there are, and the codec of each.
#pragma once

#include "platform/linux/text/Codec.h"

namespace vx_text {

// Which flags a page takes.
enum class FlagRule {
    None,         // 7-bit pages
    InvalidOnly,  // MB_ERR_INVALID_CHARS and WC_ERR_INVALID_CHARS
    All,          // pages of one and two bytes: all but WC_ERR_INVALID_CHARS
};

struct Page {
    UINT number;
    FlagRule flags;
    UINT maxCharSize;      // bytes
    std::size_t unitSize;  // of the page's own code units, in bytes: what a terminating zero takes
    const Codec* codec;    // lives as long as the process
};

// The page of a number; the codec is null when there is no such page, or the C library lacks its mapping. Its tables
// are built by the first call that asks for it. Throws std::bad_alloc.
[[nodiscard]] Page FindCodePage(UINT number);

}  // namespace vx_text
