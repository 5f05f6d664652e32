#include "testing/mailbox_builder/items/Wording.h"

#include <array>

namespace mailbox_builder {
namespace {

// Bytes of the sequence that `lead` begins; 1 for what begins none.
std::size_t SequenceLength(unsigned char lead) {
    if (lead >= 0xC2 && lead <= 0xDF) {
        return 2;
    }
    if (lead >= 0xE0 && lead <= 0xEF) {
        return 3;
    }
    return lead >= 0xF0 && lead <= 0xF4 ? 4 : 1;
}

struct Scalar {
    std::uint32_t value;
    std::size_t length;
};

Scalar Next(std::string_view utf8) {
    constexpr std::array<std::uint32_t, 5> kLeadBits = {0, 0x7F, 0x1F, 0x0F, 0x07};
    const auto lead = static_cast<unsigned char>(utf8[0]);
    const std::size_t length = SequenceLength(lead);
    if (length == 1) {
        return {lead < 0x80 ? lead : 0xFFFDu, 1};
    }
    if (length > utf8.size()) {
        return {0xFFFD, 1};
    }
    std::uint32_t value = lead & kLeadBits[length];
    for (std::size_t i = 1; i < length; ++i) {
        const auto byte = static_cast<unsigned char>(utf8[i]);
        if ((byte & 0xC0) != 0x80) {
            return {0xFFFD, 1};
        }
        value = value << 6 | (byte & 0x3F);
    }
    return {value, length};
}

}  // namespace

CStringW Wide(std::string_view utf8) {
    CStringW text;
    text.reserve(utf8.size());
    while (!utf8.empty()) {
        const Scalar scalar = Next(utf8);
        utf8.remove_prefix(scalar.length);
        if (scalar.value > 0xFFFF) {
            text.push_back(static_cast<WCHAR>(0xD800 + ((scalar.value - 0x10000) >> 10)));
            text.push_back(static_cast<WCHAR>(0xDC00 + ((scalar.value - 0x10000) & 0x3FF)));
        } else {
            text.push_back(static_cast<WCHAR>(scalar.value));
        }
    }
    return text;
}

Bytes AsBytes(std::string_view text) {
    const auto* begin = reinterpret_cast<const std::byte*>(text.data());
    return Bytes(begin, begin + text.size());
}

Bytes AsBytes(WideView text) {
    Bytes bytes;
    bytes.reserve(text.size() * 2);
    for (const WCHAR unit : text) {
        bytes.push_back(static_cast<std::byte>(unit & 0xFF));
        bytes.push_back(static_cast<std::byte>(unit >> 8));
    }
    return bytes;
}

}  // namespace mailbox_builder
