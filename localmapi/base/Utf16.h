// Text from the UTF-16LE of files. Any thread.
#pragma once

#include "localmapi/base/Bytes.h"
#include "platform/WideText.h"

#include <cstddef>

namespace localmapi {

// The code units up to the first zero unit: a terminator that some writers store, or the end of what is shown. Unpaired
// surrogates stay. An odd byte at the end is left out.
inline CStringW FromUtf16(ByteView bytes) {
    std::size_t units = 0;
    while (bytes.U16(2 * units) != 0) {  // what lies outside reads as zero
        ++units;
    }
    CStringW text(units, WCHAR{0});
    for (std::size_t i = 0; i < units; ++i) {
        text[i] = static_cast<WCHAR>(bytes.U16(2 * i));
    }
    return text;
}

}  // namespace localmapi
