// Page 65001. Ill-formed sequences: [Unicode] 3.9, table 3-7 and "U+FFFD Substitution of Maximal Subparts".
#pragma once

#include "platform/linux/text/Codec.h"

namespace vx_text {

class Utf8Codec final : public Codec {
public:
    bool Decode(Bytes bytes, WideSink& out) const noexcept override;
    bool Encode(WideView text, ByteSink& out, const EncodeOptions& options) const noexcept override;
};

}  // namespace vx_text
