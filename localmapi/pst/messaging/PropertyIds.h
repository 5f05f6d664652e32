// The half of a property tag that this engine looks properties up by, and the few ids that only PST files know.
#pragma once

#include "mapi/PropTags.h"

#include <cstdint>

namespace localmapi::pst {

constexpr std::uint16_t IdOf(ULONG tag) noexcept {
    return static_cast<std::uint16_t>(PROP_ID(tag));
}

// A folder's node in the rows of the receive folder table: [MS-PST] 2.4.5.
inline constexpr std::uint16_t kReceiveFolderId = 0x6605;

// Of an OST's store object: the GUID that its entry ids carry. Not published.
inline constexpr std::uint16_t kOstStoreGuid = 0x6615;

}  // namespace localmapi::pst
