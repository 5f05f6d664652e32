// What the files of profiles are called. A profile's real name stands in its file; the file's name is as close to it as
// any file system can bear, for people's sake. Any thread.
#pragma once

#include "platform/WideText.h"

#include <cstddef>

namespace localmapi::profile {

// Bytes of UTF-8 that a name of a file takes at most, without what is put behind it: some file systems take only 143.
inline constexpr std::size_t kLongestStem = 100;

// `name` with a percent sign and two digits for each byte that a file's name may not have on some system: / \ : * ? " <
// > | % ~, controls, and blanks and dots at its ends. Names that Windows keeps for devices have their first letter
// written so, and an overlong name is cut.
CStringW FileStemOf(WideView name);

// The name that FileStemOf was given, unless that had to be cut.
CStringW NameOfFileStem(WideView stem);

}  // namespace localmapi::profile
