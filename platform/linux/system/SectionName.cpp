// The rule by which a section's name becomes the name of a shared memory object; docs/named-sections.md tells it too.
#include "platform/NamedSection.h"
#include "platform/linux/system/Utf8.h"

#include <string_view>

namespace {

__extension__ using Hash128 = unsigned __int128;

constexpr std::size_t kLongestName = 250;  // file names end at 255 bytes, and the C library keeps some for itself
constexpr std::size_t kHashSuffix = 33;    // '#' and 32 digits

// FNV-1a, 128 bits: the published offset basis and prime.
Hash128 Fnv1a(std::string_view bytes) noexcept {
    constexpr Hash128 kOffsetBasis = Hash128{0x6C62272E07BB0142} << 64 | 0x62B821756295C58D;
    constexpr Hash128 kPrime = Hash128{1} << 88 | 0x13B;
    Hash128 hash = kOffsetBasis;
    for (const char byte : bytes) {
        hash = (hash ^ static_cast<unsigned char>(byte)) * kPrime;
    }
    return hash;
}

constexpr bool StandsForItself(unsigned char byte) noexcept {
    return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || (byte >= '0' && byte <= '9') || byte == '-'
           || byte == '.' || byte == '_';
}

// `bytes` in percent form, as far as it fits into `room`.
std::string PercentEncoded(std::string_view bytes, std::size_t room) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string out;
    for (const char character : bytes) {
        const auto byte = static_cast<unsigned char>(character);
        if (out.size() + (StandsForItself(byte) ? 1 : 3) > room) {
            break;
        }
        if (StandsForItself(byte)) {
            out.push_back(character);
        } else {
            out.append({'%', kDigits[byte >> 4], kDigits[byte & 15]});
        }
    }
    return out;
}

std::string HexDigits(Hash128 number) {
    std::string digits;
    for (int shift = 124; shift >= 0; shift -= 4) {
        digits.push_back("0123456789abcdef"[static_cast<unsigned>(number >> shift) & 15]);
    }
    return digits;
}

}  // namespace

std::string NamedSectionObjectName(WideView name) {
    constexpr std::string_view kPrefix = "/vx-";
    const std::string bytes = vx_system::ToUtf8(name, vx_system::Unpaired::Keep);
    std::string encoded = PercentEncoded(bytes, bytes.size() * 3);
    if (kPrefix.size() + encoded.size() > kLongestName) {
        encoded = PercentEncoded(bytes, kLongestName - kPrefix.size() - kHashSuffix) + '#' + HexDigits(Fnv1a(bytes));
    }
    return std::string(kPrefix) + encoded;
}
