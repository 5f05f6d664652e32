// What the tests of RTF and HTML share: texts as bytes and as UTF-8.
#pragma once

#include "localmapi/base/Bytes.h"
#include "platform/WideText.h"

#include <string>
#include <string_view>

namespace localmapi::testing {

// The bytes of `text`, borrowed.
inline ByteView ViewOf(std::string_view text) {
    return {reinterpret_cast<const std::byte*>(text.data()), text.size()};
}

inline std::string_view TextIn(ByteView bytes) {
    return {reinterpret_cast<const char*>(bytes.Data()), bytes.Size()};
}

// UTF-16 from and to UTF-8, independent of the converters under test. Half a surrogate pair becomes "<D800>".
CStringW FromUtf8(std::string_view text);
std::string ToUtf8(WideView text);

}  // namespace localmapi::testing
