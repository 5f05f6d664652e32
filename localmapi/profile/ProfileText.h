// A profile as the text of its file, and back. The format is described in docs/local-mapi.md. Any thread.
#pragma once

#include "localmapi/base/Result.h"
#include "localmapi/profile/Profile.h"

#include <optional>
#include <string>
#include <string_view>

namespace localmapi::profile {

// Ends with "[end]", so that a file that was cut off is seen to be.
std::string WriteProfile(const Profile& profile);

// Corrupt when anything in the text cannot be understood: a profile is taken whole or not at all. `file` is how the
// failure's text names the place: "<file>:<line>: <what is wrong>".
Result<Profile> ParseProfile(std::string_view text, std::string_view file);

// The profile's name, also out of a text that is damaged elsewhere. Nothing when it is not there.
std::optional<CStringW> FindProfileName(std::string_view text);

// The same spelling for a file that only names a profile.
std::string WriteDefaultName(WideView name);
Result<CStringW> ParseDefaultName(std::string_view text, std::string_view file);

}  // namespace localmapi::profile
