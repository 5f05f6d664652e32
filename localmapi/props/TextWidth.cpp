// Texts from 8 bits to 16 and back, and the width that is asked for.
#include "localmapi/props/ValueTypes.h"
#include "localmapi/props/Values.h"
#include "platform/CodePage.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <optional>

namespace localmapi {

namespace {

constexpr UINT kWindowsLatin = 1252;

// The conversions count in int, and an 8-bit page gives up to four units or bytes for one.
template <class View>
View Limited(View text) noexcept {
    return text.substr(0, std::numeric_limits<int>::max() / 4);
}

// Whether texts of the page are bytes, and the system converts them. CP_ACP and its like are no numbers of pages, but
// name some. UTF-16 and UTF-32 have numbers too, which files give for texts that are not in a page at all.
bool IsBytePage(UINT codePage) noexcept {
    constexpr UINT kWidePages[] = {1200, 1201, 12000, 12001, 65005, 65006};
    return codePage <= CP_THREAD_ACP
           || (IsValidCodePage(codePage) != FALSE && std::ranges::find(kWidePages, codePage) == std::end(kWidePages));
}

std::optional<CStringW> Widened(std::string_view text, UINT codePage, DWORD flags) {
    // One unit a byte is enough for nearly every page; what needs more says how many.
    const int size = static_cast<int>(text.size());
    CStringW wide(text.size(), WCHAR{});
    int length = MultiByteToWideChar(codePage, flags, text.data(), size, wide.data(), size);
    if (length <= 0) {
        length = MultiByteToWideChar(codePage, flags, text.data(), size, nullptr, 0);
        if (length <= 0) {
            return std::nullopt;
        }
        wide.resize(static_cast<std::size_t>(length));
        length = MultiByteToWideChar(codePage, flags, text.data(), size, wide.data(), length);
    }
    wide.resize(static_cast<std::size_t>(std::max(length, 0)));
    return wide;
}

void ToWidth(SPropValue& value, bool wide, UINT codePage, ValueMemory& memory) {
    if (wide) {
        value = WideValue(CHANGE_PROP_TYPE(value.ulPropTag, PT_UNICODE), ToWide(value.Value.lpszA, codePage), memory);
    } else {
        value =
            NarrowValue(CHANGE_PROP_TYPE(value.ulPropTag, PT_STRING8), ToNarrow(value.Value.lpszW, codePage), memory);
    }
}

}  // namespace

bool IsNumberType(ULONG type) noexcept {
    const ValueType* const found = ValueTypeOf(type);
    return found != nullptr && found->kind == ValueKind::Number && !IsMultiple(type);
}

ULONG GivenType(ULONG asked, ULONG stored, bool wide) noexcept {
    stored = stored == PT_SVREID ? PT_BINARY : stored;
    if (!IsTextType(stored)) {
        return asked == PT_UNSPECIFIED || asked == stored ? stored : PT_NULL;
    }
    const ULONG multiple = stored & MV_FLAG;
    if (asked == PT_UNSPECIFIED) {
        return (wide ? PT_UNICODE : PT_STRING8) | multiple;
    }
    return IsTextType(asked) && (asked & MV_FLAG) == multiple ? asked : PT_NULL;
}

std::string ToNarrow(WideView text, UINT codePage) {
    text = Limited(text);
    if (text.empty()) {
        return {};
    }
    const UINT page = IsBytePage(codePage) ? codePage : CP_ACP;
    const int units = static_cast<int>(text.size());
    const int size = WideCharToMultiByte(page, 0, text.data(), units, nullptr, 0, nullptr, nullptr);
    std::string narrow(static_cast<std::size_t>(std::max(size, 0)), '\0');
    WideCharToMultiByte(page, 0, text.data(), units, narrow.data(), size, nullptr, nullptr);
    return narrow;
}

CStringW ToWide(std::string_view text, UINT codePage) {
    text = Limited(text);
    if (text.empty()) {
        return {};
    }
    if (IsBytePage(codePage)) {
        if (auto wide = Widened(text, codePage, 0)) {
            return *std::move(wide);
        }
    }
    auto wide = Widened(text, CP_UTF8, MB_ERR_INVALID_CHARS);
    if (!wide) {
        wide = Widened(text, kWindowsLatin, 0);
    }
    return wide ? *std::move(wide) : CStringW();
}

void ChangeWidth(SPropValue& value, ULONG type, UINT codePage, ValueMemory& memory) {
    const ULONG from = PROP_TYPE(value.ulPropTag);
    const bool wide = (type & ~MV_FLAG) == PT_UNICODE;
    if (!IsTextType(from) || !IsTextType(type) || wide == ((from & ~MV_FLAG) == PT_UNICODE)) {
        return;
    }
    if (!IsMultiple(value.ulPropTag)) {
        ToWidth(value, wide, codePage, memory);
        return;
    }
    const ULONG count = ElementsOf(value).count;
    auto* const texts = memory.Array<void*>(count);
    for (ULONG i = 0; i < count; ++i) {
        SPropValue one = ElementAt(value, i);
        ToWidth(one, wide, codePage, memory);
        texts[i] = one.Value.lpszA;
    }
    value.ulPropTag = CHANGE_PROP_TYPE(value.ulPropTag, wide ? PT_MV_UNICODE : PT_MV_STRING8);
    SetElements(value, count, texts);
}

}  // namespace localmapi
