// Text and bytes as descriptions of items need them; ToCodePage and BytesOf come with it. Any thread.
#pragma once

#include "localmapi/base/Bytes.h"
#include "platform/WideText.h"
#include "testing/mailbox_builder/ValueBytes.h"

#include <cstdint>
#include <string_view>

namespace mailbox_builder {

// Wide text of UTF-8. What is no UTF-8 becomes U+FFFD, byte by byte; a surrogate in three bytes stays a lone surrogate.
CStringW Wide(std::string_view utf8);

Bytes AsBytes(std::string_view text);

// UTF-16LE, without a terminator.
Bytes AsBytes(WideView text);

// A negative number as the writer of bytes takes it: two's complement.
constexpr std::uint64_t Signed(std::int64_t value) noexcept {
    return static_cast<std::uint64_t>(value);
}

}  // namespace mailbox_builder
