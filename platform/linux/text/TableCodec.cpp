#include "platform/linux/text/TableCodec.h"

#include "platform/linux/text/BestFit.h"

#include <utility>

namespace vx_text {
namespace {

bool IsAscii(const PageMapping& mapping) noexcept {
    for (std::uint8_t byte = 0; byte < 0x80; ++byte) {
        if (mapping.Single(byte) != byte || mapping.Code(byte) != byte) {
            return false;
        }
    }
    return true;
}

}  // namespace

TableCodec::TableCodec(std::unique_ptr<const PageMapping> mapping, WCHAR replacement) noexcept
    : m_mapping(std::move(mapping)),
      m_replacement(replacement),
      m_question(static_cast<std::uint8_t>(m_mapping->Code(u'?'))),
      m_ascii(IsAscii(*m_mapping)) {}

bool TableCodec::Decode(Bytes bytes, WideSink& out) const noexcept {
    bool valid = true;
    while (!bytes.empty() && !out.Overflowed()) {
        if (m_ascii && bytes[0] < 0x80) {
            const std::size_t run = AsciiRun(bytes);
            out.PutAscii(bytes.data(), run);
            bytes = bytes.subspan(run);
            continue;
        }
        const bool isPair = m_mapping->IsLead(bytes[0]) && bytes.size() > 1 && bytes[1] != 0;
        const WCHAR unit = isPair ? m_mapping->Pair(bytes[0], bytes[1]) : m_mapping->Single(bytes[0]);
        valid = valid && unit != kNoUnit && (isPair || !IsPrivateUse(unit));
        out.Put(unit == kNoUnit ? m_replacement : unit);
        bytes = bytes.subspan(isPair ? 2 : 1);
    }
    return valid;
}

bool TableCodec::Encode(WideView text, ByteSink& out, const EncodeOptions& options) const noexcept {
    bool complete = true;
    while (!text.empty() && !out.Overflowed()) {
        if (m_ascii && text[0] < 0x80) {
            const std::size_t run = AsciiRun(std::span(text));
            out.PutAscii(text.data(), run);
            text.remove_prefix(run);
            continue;
        }
        const std::uint16_t code = CodeOf(text[0], options.bestFit);
        if (code != kNoCode) {
            PutCode(code, out);
        } else {
            complete = false;
            if (options.defaultBytes.empty()) {
                out.Put(m_question);
            } else {
                out.Put(options.defaultBytes);
            }
        }
        text.remove_prefix(1);
    }
    return complete;
}

std::uint16_t TableCodec::CodeOf(WCHAR unit, bool bestFit) const noexcept {
    std::uint16_t code = m_mapping->Code(unit);
    if (code == kNoCode && bestFit) {
        const Alike alike = LooksLike(unit);
        code = m_mapping->Code(alike.wide);
        if (code == kNoCode) {
            code = m_mapping->Code(alike.ascii);
        }
    }
    return code;
}

}  // namespace vx_text
