// UTF-8 and UTF-16 for the system's own texts: file names, environment, messages. Never fails for what a text holds.
#pragma once

#include "platform/WideText.h"

#include <string>
#include <string_view>

namespace vx_system {

// What becomes of an unpaired surrogate, for which UTF-8 has no bytes.
enum class Unpaired {
    Replace,  // U+FFFD
    Keep      // the three bytes that the pattern of UTF-8 would give its number; distinct texts stay distinct
};

[[nodiscard]] std::string ToUtf8(WideView text, Unpaired unpaired = Unpaired::Replace);

// Every longest run of bytes that begins a character without ending it becomes one U+FFFD, and so does every byte that
// can begin none (Unicode 15.0, 3.9, U+FFFD Substitution of Maximal Subparts).
[[nodiscard]] CStringW FromUtf8(std::string_view bytes);

}  // namespace vx_system
