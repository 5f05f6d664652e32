// The case of ASCII letters. What else a text holds stays as it is, so that the result is the same in every locale.
#pragma once

#include "platform/WideText.h"

inline void MakeLowerAscii(CStringW& text) noexcept {
    for (WCHAR& unit : text) {
        if (unit >= 'A' && unit <= 'Z') {
            unit = static_cast<WCHAR>(unit - 'A' + 'a');
        }
    }
}
