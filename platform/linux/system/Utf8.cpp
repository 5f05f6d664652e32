#include "platform/linux/system/Utf8.h"

namespace vx_system {

namespace {

constexpr char32_t kReplacement = 0xFFFD;

constexpr bool IsLead(char32_t unit) noexcept {
    return unit >= 0xD800 && unit < 0xDC00;
}
constexpr bool IsTrail(char32_t unit) noexcept {
    return unit >= 0xDC00 && unit < 0xE000;
}

void AppendUtf8(char32_t point, std::string& out) {
    const auto put = [&out](char32_t byte) { out.push_back(static_cast<char>(byte)); };
    const auto continuation = [&](int shift) { put(0x80 | ((point >> shift) & 0x3F)); };
    if (point < 0x80) {
        put(point);
    } else if (point < 0x800) {
        put(0xC0 | (point >> 6));
        continuation(0);
    } else if (point < 0x10000) {
        put(0xE0 | (point >> 12));
        continuation(6);
        continuation(0);
    } else {
        put(0xF0 | (point >> 18));
        continuation(12);
        continuation(6);
        continuation(0);
    }
}

void AppendUtf16(char32_t point, CStringW& out) {
    if (point < 0x10000) {
        out.push_back(static_cast<WCHAR>(point));
    } else {
        out.push_back(static_cast<WCHAR>(0xD800 + ((point - 0x10000) >> 10)));
        out.push_back(static_cast<WCHAR>(0xDC00 + ((point - 0x10000) & 0x3FF)));
    }
}

// What a first byte says about its character: how many bytes follow, and what the next of them may be. Narrowing that
// one byte is enough to shut out overlong forms, surrogates and what lies beyond U+10FFFF.
struct FirstByte {
    int following;
    char32_t bits;
    unsigned nextFrom;
    unsigned nextTo;
};

constexpr FirstByte Classify(unsigned byte) noexcept {
    if (byte < 0x80) {
        return {0, byte, 0, 0};
    }
    if (byte >= 0xC2 && byte < 0xE0) {
        return {1, byte & 0x1F, 0x80, 0xBF};
    }
    if (byte >= 0xE0 && byte < 0xF0) {
        return {2, byte & 0x0F, byte == 0xE0 ? 0xA0U : 0x80U, byte == 0xED ? 0x9FU : 0xBFU};
    }
    if (byte >= 0xF0 && byte < 0xF5) {
        return {3, byte & 0x07, byte == 0xF0 ? 0x90U : 0x80U, byte == 0xF4 ? 0x8FU : 0xBFU};
    }
    return {0, kReplacement, 0, 0};
}

// The character at `at`, which moves behind it.
char32_t NextPoint(std::string_view bytes, std::size_t& at) noexcept {
    const FirstByte first = Classify(static_cast<unsigned char>(bytes[at++]));
    char32_t point = first.bits;
    unsigned from = first.nextFrom;
    unsigned to = first.nextTo;
    for (int i = 0; i < first.following; ++i) {
        const unsigned byte = at < bytes.size() ? static_cast<unsigned char>(bytes[at]) : 0U;
        if (byte < from || byte > to) {
            return kReplacement;
        }
        point = point << 6 | (byte & 0x3F);
        from = 0x80;
        to = 0xBF;
        ++at;
    }
    return point;
}

}  // namespace

std::string ToUtf8(WideView text, Unpaired unpaired) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        char32_t point = text[i];
        if (IsLead(point) && i + 1 < text.size() && IsTrail(text[i + 1])) {
            point = 0x10000 + ((point - 0xD800) << 10) + (text[++i] - 0xDC00U);
        } else if ((IsLead(point) || IsTrail(point)) && unpaired == Unpaired::Replace) {
            point = kReplacement;
        }
        AppendUtf8(point, out);
    }
    return out;
}

CStringW FromUtf8(std::string_view bytes) {
    CStringW out;
    out.reserve(bytes.size());
    for (std::size_t at = 0; at < bytes.size();) {
        AppendUtf16(NextPoint(bytes, at), out);
    }
    return out;
}

}  // namespace vx_system
