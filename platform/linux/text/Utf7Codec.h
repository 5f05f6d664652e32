// Page 65000: UTF-7, RFC 2152. Any bytes decode to something: no sequence counts as invalid, as on Windows.
#pragma once

#include "platform/linux/text/Codec.h"

namespace vx_text {

class Utf7Codec final : public Codec {
public:
    // A byte of 0x80 or above is the character of its number. Bits that do not fill a unit are dropped.
    bool Decode(Bytes bytes, WideSink& out) const noexcept override;

    // Writes directly the set D of the RFC, blank, tab, CR, LF and NUL; the optional characters are shifted. A shifted
    // run always ends with '-'.
    bool Encode(WideView text, ByteSink& out, const EncodeOptions& options) const noexcept override;
};

}  // namespace vx_text
