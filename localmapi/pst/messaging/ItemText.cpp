#include "localmapi/pst/messaging/ItemText.h"

#include "localmapi/pst/ltp/Values.h"
#include "localmapi/pst/messaging/PropertyIds.h"

#include <optional>
#include <utility>

namespace localmapi::pst {

namespace {

std::optional<UINT> NumberOf(PropertyContext& properties, ULONG tag) {
    Result<PropertyValue> value = properties.Read(IdOf(tag));
    const auto number = value ? Integer(*value) : std::nullopt;
    return number ? std::optional(static_cast<UINT>(*number)) : std::nullopt;
}

}  // namespace

UINT StringPageOf(PropertyContext& properties, UINT fallback) {
    const auto declared = NumberOf(properties, PR_MESSAGE_CODEPAGE);
    if (declared && IsStringPage(*declared)) {
        return *declared;
    }
    const auto locale = NumberOf(properties, PR_MESSAGE_LOCALE_ID);
    if (const UINT page = locale ? PageOfLocale(*locale) : 0; page != 0) {
        return page;
    }
    const auto body = NumberOf(properties, PR_INTERNET_CPID);
    return body && IsStringPage(*body) ? *body : fallback;
}

Subject SplitSubject(CStringW stored) {
    Subject subject{std::move(stored), 0};
    if (subject.text.size() >= 2 && subject.text[0] == WCHAR{1}) {
        const std::size_t length = subject.text[1];
        subject.text.erase(0, 2);
        subject.prefixLength = length > 0 && length - 1 <= subject.text.size() ? length - 1 : 0;
    }
    return subject;
}

}  // namespace localmapi::pst
