// Pages of one and of two bytes a character, by table.
#pragma once

#include "platform/linux/text/Codec.h"
#include "platform/linux/text/PageMapping.h"

#include <memory>

namespace vx_text {

class TableCodec final : public Codec {
public:
    // `replacement` stands for codes without a meaning.
    TableCodec(std::unique_ptr<const PageMapping> mapping, WCHAR replacement) noexcept;

    // A pair without a meaning is one replacement; a lead byte before NUL, or at the end, is one by itself. A single
    // byte whose unit is of the private use area is written as that, yet counts as invalid.
    bool Decode(Bytes bytes, WideSink& out) const noexcept override;

    bool Encode(WideView text, ByteSink& out, const EncodeOptions& options) const noexcept override;

    [[nodiscard]] const PageMapping& Mapping() const noexcept { return *m_mapping; }

private:
    // The code for `unit`, or for what looks like it; kNoCode when there is none.
    [[nodiscard]] std::uint16_t CodeOf(WCHAR unit, bool bestFit) const noexcept;

    std::unique_ptr<const PageMapping> m_mapping;
    WCHAR m_replacement;
    std::uint8_t m_question;  // the page's own default character
    bool m_ascii;             // bytes below 0x80 are ASCII
};

}  // namespace vx_text
