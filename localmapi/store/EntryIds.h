// Entry ids of stores, in the layouts that clients of MAPI know: the id of a PST file, and its wrapping that says which
// provider can read it. Pure functions; any thread.
#pragma once

#include "localmapi/base/Bytes.h"
#include "mapi/MapiTypes.h"
#include "platform/WideText.h"

#include <array>
#include <filesystem>
#include <optional>

namespace localmapi {

// PR_MDB_PROVIDER of stores on PST files, and the provider's identifier within their entry ids.
inline constexpr std::array<BYTE, 16> kPstProvider = {0x4E, 0x49, 0x54, 0x41, 0xF9, 0xBF, 0xB8, 0x01,
                                                      0x00, 0xAA, 0x00, 0x37, 0xD9, 0x6E, 0x00, 0x00};

inline ByteView PstProviderBytes() noexcept {
    return {reinterpret_cast<const std::byte*>(kPstProvider.data()), kPstProvider.size()};
}

// The entry id of the store on a file: flags, provider, two zero bytes, the path in UTF-16 with its terminator; wrapped
// as [MS-OXCDATA] 2.2.4.3 wraps store ids, with the provider's library "mspst.dll". Stable for a path.
Bytes PstStoreEntryId(const std::filesystem::path& file);

// The path in such an id, wrapped or not; nothing for other ids.
std::optional<std::filesystem::path> PathOfStoreEntryId(ByteView entryId);

}  // namespace localmapi
