// What of a text does not count when texts are compared: the case of letters, and marks on them. The same on every
// system and in every locale: simple case folding and canonical decomposition as the Unicode standard has them. Any
// thread.
#pragma once

#include "platform/WideText.h"

namespace localmapi {

// The unit without its case.
WCHAR FoldCase(WCHAR unit) noexcept;

// A text without case, without marks (accents, vowel points), or without both.
struct Folding {
    bool ignoreCase = false;
    bool ignoreMarks = false;
};
CStringW Folded(WideView text, Folding folding);

// The order of two terminated texts without their case, unit by unit: below, at or above 0.
int CompareWithoutCase(const WCHAR* left, const WCHAR* right) noexcept;

}  // namespace localmapi
