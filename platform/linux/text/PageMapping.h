// What the bytes and the pairs of bytes of a page stand for, and the reverse.
//
// A code is a byte, or a pair as lead << 8 | trail. A code stands for one UTF-16 unit or for nothing.
#pragma once

#include "platform/BaseTypes.h"

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <vector>

namespace vx_text {

inline constexpr WCHAR kNoUnit = 0xFFFF;          // no page has this non-character
inline constexpr std::uint16_t kNoCode = 0xFFFF;  // no page has pairs with this trail

// Lead bytes from first to last.
struct ByteRange {
    std::uint8_t first;
    std::uint8_t last;
};

class PageMapping {
public:
    // Nothing is mapped yet. `leads` are the bytes that begin a pair; none makes a page of single bytes.
    explicit PageMapping(std::span<const ByteRange> leads);

    // Asks the C library for each code. Null when it lacks the set.
    static std::unique_ptr<PageMapping> FromIconv(const char* name, std::span<const ByteRange> leads);

    [[nodiscard]] bool IsLead(std::uint8_t byte) const noexcept { return m_isLead[byte]; }
    [[nodiscard]] bool HasPairs() const noexcept { return !m_pairs.empty(); }

    // kNoUnit for what is not mapped, and for a lead byte alone.
    [[nodiscard]] WCHAR Single(std::uint8_t byte) const noexcept { return m_single[byte]; }
    [[nodiscard]] WCHAR Pair(std::uint8_t lead, std::uint8_t trail) const noexcept {
        return m_pairs.empty() ? kNoUnit : m_pairs[static_cast<std::size_t>(lead) << 8 | trail];
    }
    [[nodiscard]] WCHAR Unit(std::uint16_t code) const noexcept {
        return code < 0x100 ? m_single[code]
                            : Pair(static_cast<std::uint8_t>(code >> 8), static_cast<std::uint8_t>(code));
    }

    // kNoCode for a unit that the page lacks.
    [[nodiscard]] std::uint16_t Code(WCHAR unit) const noexcept { return m_codes[unit]; }

    // Building: maps a code, replacing what it stood for. A pair must begin with a lead byte.
    void Map(std::uint16_t code, WCHAR unit) noexcept;

    // Building: makes `code` the one that `unit` is written as.
    void Prefer(std::uint16_t code, WCHAR unit) noexcept { m_codes[unit] = code; }

    // Building: the last step but Prefer. Of several codes for one unit the lowest is taken, unless `preferred` names
    // another of them.
    void BuildReverse(const std::function<std::uint16_t(WCHAR)>& preferred);

private:
    void Reverse(std::uint16_t code, const std::function<std::uint16_t(WCHAR)>& preferred);

    std::array<bool, 256> m_isLead{};
    std::array<WCHAR, 256> m_single;
    std::vector<WCHAR> m_pairs;          // by code; empty for pages of single bytes
    std::vector<std::uint16_t> m_codes;  // by unit
};

}  // namespace vx_text
