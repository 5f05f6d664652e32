// Page 52936: HZ, RFC 1843. GB 2312 between "~{" and "~}" in 7-bit text.
#pragma once

#include "platform/linux/text/Codec.h"
#include "platform/linux/text/PageMapping.h"

namespace vx_text {

class HzCodec final : public Codec {
public:
    // `gbk` is page 936's; it outlives the codec.
    explicit HzCodec(const PageMapping& gbk) noexcept : m_gbk(&gbk) {}

    // A line break ends a Chinese run that was left open. Bytes with the high bit set are read as page 936. What has no
    // meaning is a '?'; a "~" with anything unknown behind it is left standing.
    bool Decode(Bytes bytes, WideSink& out) const noexcept override;

    // Ends in ASCII; line breaks stand outside of Chinese runs.
    bool Encode(WideView text, ByteSink& out, const EncodeOptions& options) const noexcept override;

private:
    const PageMapping* m_gbk;  // not owned
};

}  // namespace vx_text
