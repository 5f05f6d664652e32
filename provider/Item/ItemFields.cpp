#include "provider/Item/ItemFields.h"

#include <algorithm>

LONG ImportanceOf(const SPropValue& value) noexcept {
    return value.Value.l >= 0 && value.Value.l <= 2 ? value.Value.l : -1;
}

const WCHAR* SensitivityText(const SPropValue& value) noexcept {
    switch (value.Value.l) {
        case 0: return "Normal"_w;
        case 1: return "Personal"_w;
        case 2: return "Private"_w;
        case 3: return "Confidential"_w;
        default: return "Unknown"_w;
    }
}

void JoinTexts(const SPropValue& value, CStringW& text) {
    if (!IsOfType(value, PT_MV_UNICODE) || value.Value.MVszW.lppszW == nullptr) {
        return;
    }
    for (ULONG i = 0; i < value.Value.MVszW.cValues; ++i) {
        const WCHAR* next = value.Value.MVszW.lppszW[i];
        if (next != nullptr) {
            text += text.empty() ? ""_w : ", "_w;
            text += next;
        }
    }
}

Recurrence RecurrenceOf(const SPropValue& value) noexcept {
    // [MS-OXOCAL] 2.2.1.44.1: two versions of two bytes, then the frequency, of which the low byte tells all.
    constexpr ULONG kFrequencyOffset = 4;
    const SBinary& pattern = value.Value.bin;
    if (pattern.cb <= kFrequencyOffset || pattern.lpb == nullptr) {
        return {"Unknown"_w, "Unknown"_w};
    }
    switch (pattern.lpb[kFrequencyOffset]) {
        case 9: return {"None"_w, "None"_w};
        case 10: return {"Daily"_w, "Recurrent"_w};
        case 11: return {"Weekly"_w, "Recurrent"_w};
        case 12: return {"Monthly"_w, "Recurrent"_w};
        case 13: return {"Yearly"_w, "Recurrent"_w};
        default: return {"Unknown"_w, "Unknown"_w};
    }
}
