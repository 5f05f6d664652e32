#include "platform/linux/text/Utf8Codec.h"

namespace vx_text {
namespace {

// What a first byte says: how many bytes follow, and which the second may be. The narrower ranges keep out overlong
// forms, surrogates and what lies beyond U+10FFFF.
struct Lead {
    std::uint8_t following;
    std::uint8_t payload;  // of the first byte
    std::uint8_t secondFirst;
    std::uint8_t secondLast;
};

constexpr Lead LeadOf(std::uint8_t byte) noexcept {
    if (byte >= 0xC2 && byte <= 0xDF) {
        return {1, static_cast<std::uint8_t>(byte & 0x1F), 0x80, 0xBF};
    }
    if (byte >= 0xE0 && byte <= 0xEF) {
        return {2, static_cast<std::uint8_t>(byte & 0x0F), static_cast<std::uint8_t>(byte == 0xE0 ? 0xA0 : 0x80),
                static_cast<std::uint8_t>(byte == 0xED ? 0x9F : 0xBF)};
    }
    if (byte >= 0xF0 && byte <= 0xF4) {
        return {3, static_cast<std::uint8_t>(byte & 0x07), static_cast<std::uint8_t>(byte == 0xF0 ? 0x90 : 0x80),
                static_cast<std::uint8_t>(byte == 0xF4 ? 0x8F : 0xBF)};
    }
    return {0, 0, 0, 0};
}

// The sequence at the beginning of `bytes`, which is not empty and not ASCII: its code point, or U+FFFD and the length
// of the part that a valid sequence could have begun with.
struct Sequence {
    std::uint32_t value;
    std::size_t length;
    bool valid;
};

Sequence ReadSequence(Bytes bytes) noexcept {
    const Lead lead = LeadOf(bytes[0]);
    std::uint32_t value = lead.payload;
    std::size_t length = 1;
    for (; length <= lead.following && length < bytes.size(); ++length) {
        const std::uint8_t byte = bytes[length];
        const bool fits = length == 1 ? byte >= lead.secondFirst && byte <= lead.secondLast : (byte & 0xC0) == 0x80;
        if (!fits) {
            break;
        }
        value = value << 6 | (byte & 0x3Fu);
    }
    if (lead.following == 0 || length <= lead.following) {
        return {kReplacement, length, false};
    }
    return {value, length, true};
}

}  // namespace

bool Utf8Codec::Decode(Bytes bytes, WideSink& out) const noexcept {
    bool valid = true;
    while (!bytes.empty() && !out.Overflowed()) {
        if (bytes[0] < 0x80) {
            const std::size_t run = AsciiRun(bytes);
            out.PutAscii(bytes.data(), run);
            bytes = bytes.subspan(run);
            continue;
        }
        const Sequence sequence = ReadSequence(bytes);
        PutCodePoint(sequence.value, out);
        valid = valid && sequence.valid;
        bytes = bytes.subspan(sequence.length);
    }
    return valid;
}

bool Utf8Codec::Encode(WideView text, ByteSink& out, const EncodeOptions&) const noexcept {
    const auto tail = [](std::uint32_t bits) { return static_cast<std::uint8_t>(0x80 | (bits & 0x3F)); };
    bool valid = true;
    while (!text.empty() && !out.Overflowed()) {
        if (text[0] < 0x80) {
            const std::size_t run = AsciiRun(std::span(text));
            out.PutAscii(text.data(), run);
            text.remove_prefix(run);
            continue;
        }
        auto [value, units] = FirstCodePoint(text);
        if (units == 1 && IsSurrogate(text[0])) {
            value = kReplacement;
            valid = false;
        }
        if (value < 0x800) {
            out.Put({static_cast<std::uint8_t>(0xC0 | value >> 6), tail(value)});
        } else if (value < 0x10000) {
            out.Put({static_cast<std::uint8_t>(0xE0 | value >> 12), tail(value >> 6), tail(value)});
        } else {
            out.Put({static_cast<std::uint8_t>(0xF0 | value >> 18), tail(value >> 12), tail(value >> 6), tail(value)});
        }
        text.remove_prefix(units);
    }
    return valid;
}

}  // namespace vx_text
