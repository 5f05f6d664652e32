#include "platform/linux/storage/ElementName.h"

#include "platform/linux/UpperCase.h"
#include "platform/linux/storage/CompoundFormat.h"

#include <algorithm>
#include <iterator>

namespace vx_storage {
namespace {

constexpr WCHAR kForbidden[] = {'/', '\\', ':', '!'};

}  // namespace

bool NameLess::operator()(WideView a, WideView b) const noexcept {
    if (a.size() != b.size()) {
        return a.size() < b.size();
    }
    return std::ranges::lexicographical_compare(a, b, {}, vx_linux::UpperUnit, vx_linux::UpperUnit);
}

HRESULT CheckName(const WCHAR* text, WideView& name) noexcept {
    if (text == nullptr) {
        return STG_E_INVALIDNAME;
    }
    std::size_t units = 0;
    while (units <= kMaxNameUnits && text[units] != 0) {
        ++units;
    }
    name = WideView(text, units);
    return units >= 1 && units <= kMaxNameUnits ? S_OK : STG_E_INVALIDNAME;
}

HRESULT CheckNewName(const WCHAR* text, WideView& name) noexcept {
    const HRESULT hr = CheckName(text, name);
    const bool forbidden =
        SUCCEEDED(hr) && name.find_first_of(WideView(kForbidden, std::size(kForbidden))) != WideView::npos;
    return forbidden ? STG_E_INVALIDNAME : hr;
}

}  // namespace vx_storage
