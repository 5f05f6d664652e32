#include "platform/linux/text/UnicodeCodecs.h"

namespace vx_text {
namespace {

// Whether `text` pairs its surrogates.
bool IsWellFormed(WideView text) noexcept {
    for (std::size_t i = 0; i < text.size();) {
        const auto [value, units] = FirstCodePoint(text.substr(i));
        if (units == 1 && IsSurrogate(text[i])) {
            return false;
        }
        i += units;
    }
    return true;
}

void PutUnit32(std::uint32_t value, ByteOrder order, ByteSink& out) noexcept {
    const auto byte = [value](int shift) { return static_cast<std::uint8_t>(value >> shift); };
    if (order == ByteOrder::Little) {
        out.Put({byte(0), byte(8), byte(16), byte(24)});
    } else {
        out.Put({byte(24), byte(16), byte(8), byte(0)});
    }
}

}  // namespace

bool Utf16Codec::Decode(Bytes bytes, WideSink& out) const noexcept {
    const std::size_t low = m_order == ByteOrder::Little ? 0 : 1;
    bool valid = true;
    bool awaitsLow = false;  // the unit before was a high surrogate
    for (; bytes.size() >= 2 && !out.Overflowed(); bytes = bytes.subspan(2)) {
        const auto unit = static_cast<WCHAR>(bytes[low] | bytes[1 - low] << 8);
        valid = valid && IsLowSurrogate(unit) == awaitsLow;
        awaitsLow = IsHighSurrogate(unit);
        out.Put(unit);
    }
    if (bytes.size() == 1) {
        out.Put(kReplacement);
    }
    return valid && !awaitsLow && bytes.empty();
}

bool Utf16Codec::Encode(WideView text, ByteSink& out, const EncodeOptions&) const noexcept {
    for (const WCHAR unit : text) {
        const auto low = static_cast<std::uint8_t>(unit);
        const auto high = static_cast<std::uint8_t>(unit >> 8);
        if (m_order == ByteOrder::Little) {
            out.Put({low, high});
        } else {
            out.Put({high, low});
        }
    }
    return IsWellFormed(text);
}

bool Utf32Codec::Decode(Bytes bytes, WideSink& out) const noexcept {
    const bool little = m_order == ByteOrder::Little;
    bool valid = true;
    for (; bytes.size() >= 4 && !out.Overflowed(); bytes = bytes.subspan(4)) {
        std::uint32_t value = 0;
        for (std::size_t i = 0; i < 4; ++i) {
            value = value << 8 | bytes[little ? 3 - i : i];
        }
        if (value > 0x10FFFF || (value >= 0xD800 && value <= 0xDFFF)) {
            value = kReplacement;
            valid = false;
        }
        PutCodePoint(value, out);
    }
    if (!bytes.empty() && bytes.size() < 4) {
        out.Put(kReplacement);
        valid = false;
    }
    return valid;
}

bool Utf32Codec::Encode(WideView text, ByteSink& out, const EncodeOptions&) const noexcept {
    bool valid = true;
    while (!text.empty() && !out.Overflowed()) {
        auto [value, units] = FirstCodePoint(text);
        if (units == 1 && IsSurrogate(text[0])) {
            value = kReplacement;
            valid = false;
        }
        PutUnit32(value, m_order, out);
        text.remove_prefix(units);
    }
    return valid;
}

}  // namespace vx_text
