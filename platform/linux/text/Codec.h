// What every code page can do: bytes to UTF-16 and back. Codecs are immutable once made, so any thread may use one.
#pragma once

#include "platform/WideText.h"
#include "platform/linux/text/Sink.h"

#include <array>
#include <cstdint>
#include <span>

namespace vx_text {

using Bytes = std::span<const std::uint8_t>;

inline constexpr WCHAR kReplacement = 0xFFFD;

struct EncodeOptions {
    bool bestFit = true;  // a character that the page lacks may become one that looks alike
    Bytes defaultBytes;   // for characters that the page lacks; empty for the page's own
};

class Codec {
public:
    Codec() = default;
    Codec(const Codec&) = delete;
    Codec& operator=(const Codec&) = delete;
    virtual ~Codec() = default;

    // Converts all of `bytes`, or until `out` overflows. Gives whether all of them were valid; what is not becomes the
    // page's replacement. Never reads beyond `bytes`, never allocates.
    virtual bool Decode(Bytes bytes, WideSink& out) const noexcept = 0;

    // Converts all of `text`, or until `out` overflows. Gives whether the page had all of its characters.
    virtual bool Encode(WideView text, ByteSink& out, const EncodeOptions& options) const noexcept = 0;
};

constexpr bool IsHighSurrogate(WCHAR unit) noexcept {
    return (unit & 0xFC00) == 0xD800;
}
constexpr bool IsLowSurrogate(WCHAR unit) noexcept {
    return (unit & 0xFC00) == 0xDC00;
}
constexpr bool IsSurrogate(WCHAR unit) noexcept {
    return (unit & 0xF800) == 0xD800;
}

constexpr bool IsPrivateUse(WCHAR unit) noexcept {
    return unit >= 0xE000 && unit <= 0xF8FF;
}

// One character of UTF-16: its code point, and the units it takes. A lone surrogate is itself, one unit long.
struct CodePoint {
    std::uint32_t value;
    std::size_t units;
};

// The character at the beginning of `text`, which is not empty.
constexpr CodePoint FirstCodePoint(WideView text) noexcept {
    if (text.size() > 1 && IsHighSurrogate(text[0]) && IsLowSurrogate(text[1])) {
        return {0x10000 + ((text[0] & 0x3FFu) << 10 | (text[1] & 0x3FFu)), 2};
    }
    return {text[0], 1};
}

// Puts a code point up to 0x10FFFF, as a pair of surrogates if it needs one.
inline void PutCodePoint(std::uint32_t value, WideSink& out) noexcept {
    if (value < 0x10000) {
        out.Put(static_cast<WCHAR>(value));
    } else {
        out.Put({static_cast<WCHAR>(0xD7C0 + (value >> 10)), static_cast<WCHAR>(0xDC00 | (value & 0x3FF))});
    }
}

// Puts a code of one byte, or of two: lead << 8 | trail.
inline void PutCode(std::uint16_t code, ByteSink& out) noexcept {
    if (code < 0x100) {
        out.Put(static_cast<std::uint8_t>(code));
    } else {
        out.Put({static_cast<std::uint8_t>(code >> 8), static_cast<std::uint8_t>(code)});
    }
}

}  // namespace vx_text
