// The names of streams and storages in a message file: [MS-OXMSG] 2.1 to 2.2. Hexadecimal digits are upper-case where
// we write them, and of any case where we read. Any thread.
#pragma once

#include "mapi/MapiTypes.h"
#include "platform/WideText.h"

#include <cstdint>
#include <optional>
#include <string>

namespace localmapi::msg {

inline constexpr WideView kPropertyStream = "__properties_version1.0"_w;
inline constexpr WideView kNameStorage = "__nameid_version1.0"_w;
inline constexpr WideView kRecipientPrefix = "__recip_version1.0_#"_w;
inline constexpr WideView kAttachmentPrefix = "__attach_version1.0_#"_w;

// "__substg1.0_0037001F": the stream, or for PT_OBJECT the storage, of a property.
CStringW ValueName(ULONG tag);

// "__substg1.0_8005101F-00000002": one of several values of variable size.
CStringW ValueName(ULONG tag, std::uint32_t index);

// "__attach_version1.0_#0000000A" and the like.
CStringW NumberedName(WideView prefix, std::uint32_t number);

// What a name of the first two forms says.
struct ValueElement {
    ULONG tag;
    std::optional<std::uint32_t> index;
};
std::optional<ValueElement> ParseValueName(WideView name);

bool HasPrefix(WideView name, WideView prefix) noexcept;

// The number behind a prefix that the name has; nothing when what follows is not up to eight hexadecimal digits.
std::optional<std::uint32_t> NumberBehind(WideView name, WideView prefix) noexcept;

// Names are equal without regard to case, as far as ASCII goes: names of this format have nothing else.
bool IsSameName(WideView left, WideView right) noexcept;

// For messages to people: what is not printable ASCII becomes a question mark.
std::string Printable(WideView name);

}  // namespace localmapi::msg
