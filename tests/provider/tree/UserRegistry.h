// A text value below a key of HKEY_CURRENT_USER\Software, for the life of this object. Linux: it is the whole registry.
// Windows: the key is made and deleted again, so it must not be there before.
#pragma once

#include "platform/BaseTypes.h"
#include "tests/provider/mapi/util/TestSupport.h"

#include <string>
#include <string_view>

class UserRegistry {
public:
    // The text is ASCII; `terminated` says whether it is stored with its end.
    UserRegistry(std::string_view key, std::string_view name, std::string_view text, bool terminated = true);
    ~UserRegistry();
    UserRegistry(const UserRegistry&) = delete;
    UserRegistry& operator=(const UserRegistry&) = delete;

    // False where the machine has such a key of its own.
    bool IsUsable() const { return m_isUsable; }

private:
    std::string m_key;
    TempFolder m_folder;
    bool m_isUsable = true;
};
