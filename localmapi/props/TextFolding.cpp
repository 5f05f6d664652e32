#include "localmapi/props/TextFolding.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

namespace localmapi {

namespace {

// Units from `first` to `last`, every one or every second, and what to add to fold their case.
struct CaseRange {
    std::uint16_t first;
    std::uint16_t last;
    std::uint16_t step;
    std::int32_t add;
};
constexpr CaseRange kCases[] = {
#include "localmapi/props/LetterCases.inc"
};
static_assert(std::ranges::is_sorted(kCases, {}, &CaseRange::first));

struct MarkedLetter {
    std::uint16_t letter;
    std::uint16_t base;
};
constexpr MarkedLetter kMarked[] = {
#include "localmapi/props/LetterBases.inc"
};
static_assert(std::ranges::is_sorted(kMarked, {}, &MarkedLetter::letter));

// Marks that stand behind the letter they belong to, in the scripts that write them often.
struct UnitRange {
    std::uint16_t first;
    std::uint16_t last;
};
constexpr UnitRange kMarks[] = {
    {0x0300, 0x036F}, {0x0483, 0x0489}, {0x0591, 0x05BD}, {0x05BF, 0x05BF}, {0x05C1, 0x05C2},
    {0x05C4, 0x05C5}, {0x05C7, 0x05C7}, {0x0610, 0x061A}, {0x064B, 0x065F}, {0x0670, 0x0670},
    {0x06D6, 0x06DC}, {0x06DF, 0x06E4}, {0x06E7, 0x06E8}, {0x06EA, 0x06ED}, {0x1AB0, 0x1ACE},
    {0x1DC0, 0x1DFF}, {0x20D0, 0x20F0}, {0x3099, 0x309A}, {0xFE20, 0xFE2F},
};
static_assert(std::ranges::is_sorted(kMarks, {}, &UnitRange::first));

bool IsMark(WCHAR unit) noexcept {
    const auto* const range = std::ranges::lower_bound(kMarks, unit, {}, &UnitRange::last);
    return range != std::end(kMarks) && unit >= range->first;
}

WCHAR WithoutMark(WCHAR unit) noexcept {
    const auto* const found = std::ranges::lower_bound(kMarked, unit, {}, &MarkedLetter::letter);
    return found != std::end(kMarked) && found->letter == unit ? static_cast<WCHAR>(found->base) : unit;
}

}  // namespace

WCHAR FoldCase(WCHAR unit) noexcept {
    if (unit < 0x80) {
        return unit >= 'A' && unit <= 'Z' ? static_cast<WCHAR>(unit - 'A' + 'a') : unit;
    }
    const auto* const range = std::ranges::lower_bound(kCases, unit, {}, &CaseRange::last);
    const bool folds = range != std::end(kCases) && unit >= range->first && (unit - range->first) % range->step == 0;
    return folds ? static_cast<WCHAR>(unit + range->add) : unit;
}

CStringW Folded(WideView text, Folding folding) {
    CStringW folded;
    folded.reserve(text.size());
    for (WCHAR unit : text) {
        if (folding.ignoreMarks && unit >= 0x80) {
            if (IsMark(unit)) {
                continue;
            }
            unit = WithoutMark(unit);
        }
        folded.push_back(folding.ignoreCase ? FoldCase(unit) : unit);
    }
    return folded;
}

int CompareWithoutCase(const WCHAR* left, const WCHAR* right) noexcept {
    for (;; ++left, ++right) {
        if (*left == *right) {
            if (*left == 0) {
                return 0;
            }
            continue;
        }
        const WCHAR a = FoldCase(*left);
        const WCHAR b = FoldCase(*right);
        if (a != b) {
            return a < b ? -1 : 1;
        }
    }
}

}  // namespace localmapi
