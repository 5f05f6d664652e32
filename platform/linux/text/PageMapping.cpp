#include "platform/linux/text/PageMapping.h"

#include "platform/linux/text/Iconv.h"

#include <algorithm>

namespace vx_text {
namespace {

// The unit that the C library has for the bytes of one code.
WCHAR AskUnit(Iconv& toUtf16, std::span<const char> code) noexcept {
    std::array<char, 8> bytes{};
    if (toUtf16.Convert(code, bytes) != 2) {
        return kNoUnit;
    }
    return static_cast<WCHAR>(static_cast<std::uint8_t>(bytes[0]) | static_cast<std::uint8_t>(bytes[1]) << 8);
}

}  // namespace

PageMapping::PageMapping(std::span<const ByteRange> leads) {
    m_single.fill(kNoUnit);
    for (const ByteRange range : leads) {
        std::fill(m_isLead.begin() + range.first, m_isLead.begin() + range.last + 1, true);
    }
    if (!leads.empty()) {
        m_pairs.assign(0x10000, kNoUnit);
    }
    m_codes.assign(0x10000, kNoCode);
}

std::unique_ptr<PageMapping> PageMapping::FromIconv(const char* name, std::span<const ByteRange> leads) {
    Iconv toUtf16("UTF-16LE", name);
    if (!toUtf16.IsOpen()) {
        return nullptr;
    }
    auto mapping = std::make_unique<PageMapping>(leads);
    for (unsigned first = 0; first < 0x100; ++first) {
        const auto lead = static_cast<std::uint8_t>(first);
        std::array<char, 2> bytes{static_cast<char>(first), 0};
        if (!mapping->IsLead(lead)) {
            mapping->m_single[lead] = AskUnit(toUtf16, std::span(bytes).first(1));
            continue;
        }
        for (unsigned trail = 0x21; trail < 0xFF; ++trail) {
            bytes[1] = static_cast<char>(trail);
            mapping->m_pairs[first << 8 | trail] = AskUnit(toUtf16, bytes);
        }
    }
    return mapping;
}

void PageMapping::Map(std::uint16_t code, WCHAR unit) noexcept {
    if (code < 0x100) {
        m_single[code] = unit;
    } else {
        m_pairs[code] = unit;
    }
}

void PageMapping::BuildReverse(const std::function<std::uint16_t(WCHAR)>& preferred) {
    for (std::uint16_t code = 0; code < 0x100; ++code) {
        Reverse(code, preferred);
    }
    for (std::size_t code = 0x100; code < m_pairs.size(); ++code) {
        Reverse(static_cast<std::uint16_t>(code), preferred);
    }
}

void PageMapping::Reverse(std::uint16_t code, const std::function<std::uint16_t(WCHAR)>& preferred) {
    const WCHAR unit = Unit(code);
    if (unit == kNoUnit) {
        return;
    }
    if (m_codes[unit] == kNoCode) {
        m_codes[unit] = code;
        return;
    }
    const std::uint16_t choice = preferred(unit);
    if (choice != kNoCode && Unit(choice) == unit) {
        m_codes[unit] = choice;
    }
}

}  // namespace vx_text
