// Page 54936: GB 18030, in which characters of Unicode have codes of one, two or four bytes. The mapping is that of the
// C library's edition: what the first edition kept in the private use area is where Unicode has it now.
#pragma once

#include "platform/linux/text/Codec.h"
#include "platform/linux/text/PageMapping.h"

#include <memory>
#include <vector>

namespace vx_text {

class Gb18030Codec final : public Codec {
public:
    // Null when the C library lacks the set.
    static std::unique_ptr<const Gb18030Codec> Create();

    // For Create, which builds the tables.
    Gb18030Codec(std::unique_ptr<const PageMapping> shortCodes, std::vector<WCHAR> fourBytes);

    // An invalid sequence is U+FFFD for its first byte; the bytes behind that one are looked at again.
    bool Decode(Bytes bytes, WideSink& out) const noexcept override;

    // A lone surrogate becomes '?'.
    bool Encode(WideView text, ByteSink& out, const EncodeOptions& options) const noexcept override;

private:
    std::unique_ptr<const PageMapping> m_short;  // codes of one and of two bytes
    std::vector<WCHAR> m_fourBytes;              // units of 81308130 to 8431A439, by their place there; 0 for none
    std::vector<std::uint16_t> m_places;         // the reverse, by unit; kNoCode for those with a shorter code
};

}  // namespace vx_text
