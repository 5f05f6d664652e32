// The names by which mail and web pages call code pages.
#pragma once

#include "platform/BaseTypes.h"

#include <optional>
#include <string_view>

namespace localmapi::rtf {

// The code page of a charset name ("ISO-8859-1", "ks_c_5601-1987", "windows-1251", "cp932"): the IANA registry's names,
// their aliases, and what mail programs have made of them. Case and whatever is neither letter nor digit do not count.
// Nothing for a name that is not known. The page need not be one that this system converts. Any thread.
std::optional<UINT> CodePageOfCharset(std::string_view name);

}  // namespace localmapi::rtf
