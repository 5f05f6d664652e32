// UTF-16 and UTF-32 in either byte order.
//
// UTF-16 passes every code unit through, lone surrogates too, so that a round trip loses nothing; those and a single
// last byte (U+FFFD) count as invalid. UTF-32 has U+FFFD for what is no character, one for a cut-off end.
#pragma once

#include "platform/linux/text/Codec.h"

namespace vx_text {

enum class ByteOrder { Little, Big };

class Utf16Codec final : public Codec {
public:
    explicit Utf16Codec(ByteOrder order) noexcept : m_order(order) {}

    bool Decode(Bytes bytes, WideSink& out) const noexcept override;
    bool Encode(WideView text, ByteSink& out, const EncodeOptions& options) const noexcept override;

private:
    ByteOrder m_order;
};

class Utf32Codec final : public Codec {
public:
    explicit Utf32Codec(ByteOrder order) noexcept : m_order(order) {}

    bool Decode(Bytes bytes, WideSink& out) const noexcept override;
    bool Encode(WideView text, ByteSink& out, const EncodeOptions& options) const noexcept override;

private:
    ByteOrder m_order;
};

}  // namespace vx_text
