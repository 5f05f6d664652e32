// The 7-bit pages that switch between character sets by escape sequences: ISO-2022-JP (RFC 1468) in its three forms,
// ISO-2022-KR (RFC 1557) and ISO-2022-CN (RFC 1922).
#pragma once

#include "platform/linux/text/Codec.h"
#include "platform/linux/text/PageMapping.h"

namespace vx_text {

enum class Iso2022Form {
    JapaneseFullwidth,  // 50220: halfwidth katakana is written as fullwidth
    JapaneseEscape,     // 50221: halfwidth katakana is designated, ESC ( I
    JapaneseShift,      // 50222: halfwidth katakana is shifted to, SO and SI
    Korean,             // 50225
    Chinese,            // 50227, of which GB 2312 is converted
};

class Iso2022Codec final : public Codec {
public:
    // `euc` holds the form's two-byte set with the high bits set: EUC-JP, page 949 or page 936. It outlives the codec.
    Iso2022Codec(Iso2022Form form, const PageMapping& euc) noexcept : m_form(form), m_euc(&euc) {}

    // Katakana may come in any of its ways, the designation of the Korean and Chinese sets may be missing, and bytes
    // with the high bit set are 8-bit katakana in the Japanese forms, EUC in the others. What has no meaning, and each
    // pair of a set that is not converted, is a '?'; an unknown escape sequence is left standing.
    bool Decode(Bytes bytes, WideSink& out) const noexcept override;

    // Ends in ASCII. ESC, SO and SI themselves cannot be written: they become '?'.
    bool Encode(WideView text, ByteSink& out, const EncodeOptions& options) const noexcept override;

private:
    Iso2022Form m_form;
    const PageMapping* m_euc;  // not owned
};

}  // namespace vx_text
