// The profiles folder: a file a profile, and which of them is the default. What every program of the user shares.
//
// Any thread; any number of storages, in any number of processes, over one folder. Reading takes no lock: files are only
// ever replaced as a whole. Changing takes the folder's lock, so that of two changes at once none is lost; a process that
// is killed meanwhile leaves the old file or the new one, and its lock to the next. Nothing is kept in memory: every
// operation reads what is there now.
//
// Failures: NotFound; AccessDenied for a name that is taken, and for a folder or file that the user may not touch; Busy
// when others hold the lock for kLongestWait; Corrupt for a file that cannot be understood, with file and line in the
// text; TooLarge above kLargestFile; ReadFailed.
#pragma once

#include "localmapi/base/Result.h"
#include "localmapi/profile/Profile.h"
#include "platform/FileLock.h"
#include "platform/WideText.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace localmapi::profile {

class ProfileStorage {
public:
    static constexpr DWORD kLongestWait = 10'000;  // milliseconds
    static constexpr std::uint64_t kLargestFile = std::uint64_t{16} << 20;
    static constexpr std::size_t kLongestName = 1024;  // UTF-16 units

    // "profiles" in the configuration folder of this moment.
    ProfileStorage();

    // The folder need not exist: it is made for the first profile.
    explicit ProfileStorage(std::filesystem::path folder) : m_folder(std::move(folder)) {}

    const std::filesystem::path& Folder() const noexcept { return m_folder; }

    struct Listed {
        CStringW name;
        std::filesystem::path file;
        std::optional<Error> damage;  // why it cannot be loaded; its name then may be only what its file is called
    };

    // Sorted by name, one for each. Empty when there is no folder.
    Result<std::vector<Listed>> List() const;

    Result<Profile> Load(WideView name) const;

    // AccessDenied when there is one of that name; Unsupported for an empty or overlong name.
    Status Create(WideView name) const;

    // A damaged profile can be deleted too. A default profile that goes leaves no default.
    Status Delete(WideView name) const;

    // As Create for the new name. Renaming a default profile keeps it the default.
    Status Copy(WideView from, WideView to) const;
    Status Rename(WideView from, WideView to) const;

    // Loads, lets `change` change, and saves: all of it or, when `change` fails, nothing. Others wait meanwhile, so
    // `change` is short. It must not use a storage.
    using ChangeBody = std::function<Status(Profile& profile)>;
    Status Change(WideView name, const ChangeBody& change) const;

    // The default profile's name, as its own file spells it. NotFound when there is none.
    Result<CStringW> DefaultName() const;

    // NotFound when there is no such profile. Empty: none is the default any more.
    Status SetDefault(WideView name) const;

private:
    // What a file turned out to be.
    struct Found {
        std::filesystem::path file;
        CStringW name;
        Result<Profile> profile;
    };

    Result<std::string> ReadFile(const std::filesystem::path& file) const;
    Status WriteFile(const std::filesystem::path& file, std::string_view text) const;

    std::filesystem::path DefaultFile() const;
    std::filesystem::path LikelyFile(WideView name) const;
    Found LoadFile(const std::filesystem::path& file) const;
    Result<std::vector<Found>> LoadAll() const;
    Result<Found> Find(WideView name) const;
    Status CheckIsFree(WideView name) const;
    std::filesystem::path NewFile(WideView name) const;

    Result<FileLock> Lock() const;

    std::filesystem::path m_folder;
};

}  // namespace localmapi::profile
