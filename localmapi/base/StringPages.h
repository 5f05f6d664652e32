// The code pages that 8-bit strings of messages are written in, whatever file they are in. Any thread.
#pragma once

#include "platform/BaseTypes.h"

namespace localmapi {

// The page of 8-bit strings where nothing in the file tells: the system's own if that is one of Windows' ANSI pages,
// else 1252.
UINT DefaultCodePage() noexcept;

// True for the pages that 8-bit strings of messages are written in: Windows' single- and double-byte pages and the ISO
// 8859 family, not UTF-7, UTF-8, UTF-16 or the 7-bit mail encodings.
bool IsStringPage(UINT codePage) noexcept;

// The ANSI page of a locale's language, 0 when the language has none.
UINT PageOfLocale(LCID locale) noexcept;

}  // namespace localmapi
