// What the tests of profiles share: a profiles folder of their own, texts, identifiers.
#pragma once

#include "localmapi/profile/ProfileStorage.h"
#include "localmapi/props/Values.h"
#include "platform/CodePage.h"
#include "platform/Paths.h"
#include "tests/platform/system/SystemTestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#ifndef _WIN32
#include <unistd.h>
#endif

namespace localmapi::profile::testing {

inline CStringW Wide(std::string_view utf8) {
    return ToWide(utf8, CP_UTF8);
}

inline std::string Utf8(WideView text) {
    return ToNarrow(text, CP_UTF8);
}

// The identifier of sixteen bytes of this value.
inline MAPIUID UidOf(std::uint8_t byte) {
    MAPIUID uid;
    std::fill(std::begin(uid.ab), std::end(uid.ab), byte);
    return uid;
}

struct StorageFolder {
    TemporaryFolder folder;
    ProfileStorage storage{folder.Path() / "profiles"};

    // "a, b!" for a sound and a damaged one, in the order of the list.
    std::string Names() const {
        const auto listed = storage.List();
        EXPECT_TRUE(listed) << listed.Failure().text;
        std::string names;
        for (const ProfileStorage::Listed& profile : *listed) {
            names += (names.empty() ? "" : ", ") + Utf8(profile.name) + (profile.damage ? "!" : "");
        }
        return names;
    }

    void WriteFile(std::string_view name, std::string_view bytes) const {
        std::filesystem::create_directories(storage.Folder());
        std::ofstream(storage.Folder() / name, std::ios::binary) << bytes;
    }
};

// The current folder, for one scope.
class ScopedFolder {
public:
    explicit ScopedFolder(const std::filesystem::path& folder) { std::filesystem::current_path(folder); }
    ScopedFolder(const ScopedFolder&) = delete;
    ScopedFolder& operator=(const ScopedFolder&) = delete;
    ~ScopedFolder() { std::filesystem::current_path(m_before); }

private:
    std::filesystem::path m_before = std::filesystem::current_path();
};

#ifndef _WIN32

// To root nothing is forbidden: for one scope, tests of what is run as another user, who owns `folder`.
class WithoutPrivileges {
public:
    explicit WithoutPrivileges(const std::filesystem::path& folder) {
        if (m_before == 0) {
            static constexpr uid_t kNobody = 65534;
            EXPECT_EQ(::chown(folder.c_str(), kNobody, static_cast<gid_t>(-1)), 0);
            EXPECT_EQ(::seteuid(kNobody), 0);
        }
    }
    WithoutPrivileges(const WithoutPrivileges&) = delete;
    WithoutPrivileges& operator=(const WithoutPrivileges&) = delete;
    ~WithoutPrivileges() { EXPECT_EQ(::seteuid(m_before), 0); }

private:
    uid_t m_before = ::geteuid();
};

#endif

}  // namespace localmapi::profile::testing
