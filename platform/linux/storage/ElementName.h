// Names of elements: which are allowed, and the order in which a storage keeps them, [MS-CFB] 2.6.1 and 2.6.4.
#pragma once

#include "platform/ResultCodes.h"
#include "platform/WideText.h"

namespace vx_storage {

// The order of a directory: shorter names first, names of one length by their units in upper case.
struct NameLess {
    using is_transparent = void;
    bool operator()(WideView a, WideView b) const noexcept;
};

// The name for a look-up: STG_E_INVALIDNAME for null, an empty name and one over 31 units.
[[nodiscard]] HRESULT CheckName(const WCHAR* text, WideView& name) noexcept;

// The name for a new element: besides, none of the characters / \ : ! which files written elsewhere may hold.
[[nodiscard]] HRESULT CheckNewName(const WCHAR* text, WideView& name) noexcept;

}  // namespace vx_storage
