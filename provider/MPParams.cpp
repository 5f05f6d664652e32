#include "provider/MPParams.h"

#include <limits>

namespace {

constexpr bool IsBlank(WCHAR unit) noexcept {
    return unit == ' ' || (unit >= '\t' && unit <= '\r');
}

constexpr bool IsDigit(WCHAR unit) noexcept {
    return unit >= '0' && unit <= '9';
}

// The number that a text begins with, held to the range of `Number`; 0 when it begins with none.
template <typename Number>
Number ToNumber(WideView text) noexcept {
    using Limits = std::numeric_limits<Number>;
    std::size_t at = 0;
    while (at < text.size() && IsBlank(text[at])) {
        ++at;
    }
    const bool isNegative = at < text.size() && text[at] == '-';
    if (at < text.size() && (text[at] == '-' || text[at] == '+')) {
        ++at;
    }
    // Counted downwards, since there is one more number below 0 than above it.
    Number value = 0;
    for (; at < text.size() && IsDigit(text[at]); ++at) {
        const Number digit = static_cast<Number>(text[at] - '0');
        if (value < (Limits::min() + digit) / 10) {
            return isNegative ? Limits::min() : Limits::max();
        }
        value = static_cast<Number>(value * 10 - digit);
    }
    if (isNegative) {
        return value;
    }
    return value == Limits::min() ? Limits::max() : static_cast<Number>(-value);
}

bool ToFlag(WideView text) noexcept {
    return text == "1"_w;
}

}  // namespace

CMPParams CMPParams::parse(const std::vector<CStringW>& pieces, std::size_t startIndex) {
    CMPParams params;
    std::size_t index = startIndex;
    const auto take = [&](auto& field, auto convert) {
        if (index < pieces.size()) {
            field = convert(pieces[index++]);
        }
    };
    const auto asText = [](const CStringW& piece) { return piece; };

    take(params.m_bodySizeLimit, ToNumber<std::int64_t>);
    take(params.m_attachmentSizeLimit, ToNumber<std::int64_t>);
    take(params.m_reservedFlag, ToFlag);
    take(params.m_reservedNumber, ToNumber<std::int32_t>);
    take(params.m_previewMode, ToFlag);
    take(params.m_tempFolder, asText);
    take(params.m_application, asText);
    take(params.m_logName, asText);
    take(params.m_logPeriodHours, ToNumber<std::int32_t>);
    return params;
}
