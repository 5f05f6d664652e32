#include "localmapi/profile/ProfileStorage.h"

#include "localmapi/base/ByteSource.h"
#include "localmapi/profile/FileNames.h"
#include "localmapi/profile/ProfileText.h"
#include "localmapi/profile/TextEscapes.h"
#include "platform/CodePage.h"
#include "platform/DurableFile.h"
#include "platform/Paths.h"

#include <algorithm>
#include <span>
#include <system_error>
#include <utility>

namespace localmapi::profile {

namespace {

namespace fs = std::filesystem;

constexpr const char* kExtension = ".profile";
constexpr const char* kLockName = "lock";
constexpr const char* kDefaultName = "default-profile.txt";

std::string TextOf(const fs::path& path) {
    return ToNarrow(FromPath(path), CP_UTF8);
}

Error NoSuchProfile(WideView name) {
    return Error{ErrorCode::NotFound, "there is no profile " + Quoted(name)};
}

Error SystemFailure(const fs::path& path, const char* action, DWORD code) {
    const bool isDenied = code == ERROR_ACCESS_DENIED || code == ERROR_WRITE_PROTECT;
    return Error{isDenied ? ErrorCode::AccessDenied : ErrorCode::ReadFailed,
                 TextOf(path) + ": " + action + " (system error " + std::to_string(code) + ")"};
}

Error SystemFailure(const fs::path& path, const char* action, const std::error_code& error) {
    const bool isDenied = error == std::errc::permission_denied || error == std::errc::read_only_file_system
                          || error == std::errc::operation_not_permitted;
    return Error{isDenied ? ErrorCode::AccessDenied : ErrorCode::ReadFailed,
                 TextOf(path) + ": " + action + " (" + error.message() + ")"};
}

CStringW StemName(const fs::path& file) {
    return NameOfFileStem(FromPath(file.stem()));
}

}  // namespace

ProfileStorage::ProfileStorage() {
    const fs::path configuration = ConfigurationFolder();
    if (!configuration.empty()) {
        std::error_code ignored;
        m_folder = fs::absolute(configuration / "profiles", ignored);  // the current folder may change
    }
}

// ---- Files ----------------------------------------------------------------------------------------------------------

Result<std::string> ProfileStorage::ReadFile(const fs::path& file) const {
    if (m_folder.empty()) {
        return Error{ErrorCode::NotFound, "there is no folder of profiles"};
    }
    const auto named = [&file](Error error) {
        error.text = TextOf(file) + ": " + error.text;
        return error;
    };
    auto source = OpenFileReadOnly(file);
    if (!source) {
        return named(source.TakeFailure());
    }
    if ((*source)->Size() > kLargestFile) {
        return named({ErrorCode::TooLarge, "the file is larger than any profile"});
    }
    std::string text(static_cast<std::size_t>((*source)->Size()), '\0');
    if (Status read = (*source)->ReadAt(0, std::as_writable_bytes(std::span(text))); !read) {
        return named(read.TakeFailure());
    }
    return text;
}

Status ProfileStorage::WriteFile(const fs::path& file, std::string_view text) const {
    if (text.size() > kLargestFile) {
        return Error{ErrorCode::TooLarge, TextOf(file) + ": the profile would become too large"};
    }
    const DWORD written = ReplaceFileContents(file, std::as_bytes(std::span(text)));
    return written == ERROR_SUCCESS ? Status() : Status(SystemFailure(file, "the file cannot be written", written));
}

fs::path ProfileStorage::DefaultFile() const {
    return m_folder / kDefaultName;
}

// The file that a profile of that name is nearly always in.
fs::path ProfileStorage::LikelyFile(WideView name) const {
    return m_folder / ToPath(FileStemOf(name) + ToWide(kExtension, CP_UTF8));
}

ProfileStorage::Found ProfileStorage::LoadFile(const fs::path& file) const {
    Result<std::string> text = ReadFile(file);
    if (!text) {
        return {file, StemName(file), text.TakeFailure()};
    }
    Result<Profile> profile = ParseProfile(*text, TextOf(file));
    CStringW name = profile ? profile->name : FindProfileName(*text).value_or(StemName(file));
    return {file, std::move(name), std::move(profile)};
}

Result<std::vector<ProfileStorage::Found>> ProfileStorage::LoadAll() const {
    if (m_folder.empty()) {
        return std::vector<Found>();
    }
    std::vector<fs::path> files;
    std::error_code error;
    fs::directory_iterator at(m_folder, error);
    for (const fs::directory_iterator end; !error && at != end; at.increment(error)) {
        if (at->path().extension() == kExtension) {
            files.push_back(at->path());
        }
    }
    if (error && error != std::errc::no_such_file_or_directory) {
        return SystemFailure(m_folder, "the folder of the profiles cannot be read", error);
    }
    std::sort(files.begin(), files.end());

    std::vector<Found> all;
    for (const fs::path& file : files) {
        Found found = LoadFile(file);
        // A file may have gone since the folder was read.
        if (!found.profile.IsNotFound()) {
            all.push_back(std::move(found));
        }
    }
    // Of two files of one name the sound one counts, then the first.
    std::stable_sort(all.begin(), all.end(), [](const Found& left, const Found& right) {
        return IsSameName(left.name, right.name) ? left.profile && !right.profile : IsNameBefore(left.name, right.name);
    });
    const auto isTwin = [](const Found& left, const Found& right) { return IsSameName(left.name, right.name); };
    all.erase(std::unique(all.begin(), all.end(), isTwin), all.end());
    return all;
}

Result<ProfileStorage::Found> ProfileStorage::Find(WideView name) const {
    if (Found found = LoadFile(LikelyFile(name)); found.profile && IsSameName(found.name, name)) {
        return found;
    }
    VX_TRY_ASSIGN(std::vector<Found> all, LoadAll());
    for (Found& found : all) {
        if (IsSameName(found.name, name)) {
            return std::move(found);
        }
    }
    return NoSuchProfile(name);
}

Status ProfileStorage::CheckIsFree(WideView name) const {
    if (name.empty() || name.size() > kLongestName) {
        return Error{ErrorCode::Unsupported, "a profile's name has 1 to " + std::to_string(kLongestName)
                                                 + " characters, not " + std::to_string(name.size())};
    }
    const Result<Found> found = Find(name);
    if (found) {
        return Error{ErrorCode::AccessDenied, "there is a profile " + Quoted(name) + " already"};
    }
    return found.IsNotFound() ? Status() : Status(found.Failure());
}

// The file that a profile of a free name is to be written to.
fs::path ProfileStorage::NewFile(WideView name) const {
    fs::path file = LikelyFile(name);
    std::error_code error;
    for (unsigned number = 2; fs::exists(fs::symlink_status(file, error)); ++number) {
        file = m_folder / ToPath(FileStemOf(name) + ToWide("~" + std::to_string(number) + kExtension, CP_UTF8));
    }
    return file;
}

Result<FileLock> ProfileStorage::Lock() const {
    if (m_folder.empty()) {
        return Error{ErrorCode::NotFound, "the system names no folder for the user's settings; set VX_HOME to one"};
    }
    std::error_code error;
    fs::create_directories(m_folder, error);
    if (error) {
        return SystemFailure(m_folder, "the folder of the profiles cannot be made", error);
    }
    FileLock lock;
    const fs::path file = m_folder / kLockName;
    const DWORD result = lock.Acquire(file, kLongestWait);
    if (result == ERROR_TIMEOUT) {
        return Error{ErrorCode::Busy, TextOf(file) + ": another program keeps the profiles locked; try again later"};
    }
    if (result != ERROR_SUCCESS) {
        return SystemFailure(file, "the profiles cannot be locked for a change", result);
    }
    return lock;
}

// ---- Operations -----------------------------------------------------------------------------------------------------

Result<std::vector<ProfileStorage::Listed>> ProfileStorage::List() const {
    VX_TRY_ASSIGN(std::vector<Found> all, LoadAll());
    std::vector<Listed> listed;
    for (Found& found : all) {
        listed.push_back({std::move(found.name), std::move(found.file),
                          found.profile ? std::nullopt : std::optional(found.profile.TakeFailure())});
    }
    return listed;
}

Result<Profile> ProfileStorage::Load(WideView name) const {
    VX_TRY_ASSIGN(Found found, Find(name));
    return std::move(found.profile);
}

Status ProfileStorage::Create(WideView name) const {
    VX_TRY_ASSIGN(const FileLock lock, Lock());
    VX_TRY(CheckIsFree(name));
    return WriteFile(NewFile(name), WriteProfile(Profile(CStringW(name))));
}

Status ProfileStorage::Delete(WideView name) const {
    VX_TRY_ASSIGN(const FileLock lock, Lock());
    VX_TRY_ASSIGN(const Found found, Find(name));
    const Result<CStringW> standard = DefaultName();
    if (standard && IsSameName(*standard, name)) {
        VX_TRY(WriteFile(DefaultFile(), WriteDefaultName({})));
    }
    std::error_code error;
    fs::remove(found.file, error);
    return error ? Status(SystemFailure(found.file, "the profile cannot be deleted", error)) : Status();
}

Status ProfileStorage::Copy(WideView from, WideView to) const {
    VX_TRY_ASSIGN(const FileLock lock, Lock());
    VX_TRY_ASSIGN(Found found, Find(from));
    VX_TRY_ASSIGN(Profile profile, std::move(found.profile));
    VX_TRY(CheckIsFree(to));
    profile.name = to;
    return WriteFile(NewFile(to), WriteProfile(profile));
}

Status ProfileStorage::Rename(WideView from, WideView to) const {
    VX_TRY_ASSIGN(const FileLock lock, Lock());
    VX_TRY_ASSIGN(Found found, Find(from));
    VX_TRY_ASSIGN(Profile profile, std::move(found.profile));
    if (!IsSameName(from, to)) {
        VX_TRY(CheckIsFree(to));
    }
    const Result<CStringW> standard = DefaultName();
    // The name in the file is what counts, and replacing it is one step. The file itself is renamed afterwards: if that
    // fails, the profile is only harder to find for people.
    profile.name = to;
    VX_TRY(WriteFile(found.file, WriteProfile(profile)));
    if (standard && IsSameName(*standard, from)) {
        VX_TRY(WriteFile(DefaultFile(), WriteDefaultName(to)));
    }
    std::error_code ignored;
    if (const fs::path better = LikelyFile(to); !fs::exists(fs::symlink_status(better, ignored))) {
        fs::rename(found.file, better, ignored);
    }
    return {};
}

Status ProfileStorage::Change(WideView name, const ChangeBody& change) const {
    VX_TRY_ASSIGN(const FileLock lock, Lock());
    VX_TRY_ASSIGN(Found found, Find(name));
    VX_TRY_ASSIGN(Profile profile, std::move(found.profile));
    VX_TRY(change(profile));
    return WriteFile(found.file, WriteProfile(profile));
}

Result<CStringW> ProfileStorage::DefaultName() const {
    const fs::path file = DefaultFile();
    Result<std::string> text = ReadFile(file);
    if (!text) {
        return text.IsNotFound() ? Error{ErrorCode::NotFound, "no profile is the default"} : text.TakeFailure();
    }
    VX_TRY_ASSIGN(CStringW name, ParseDefaultName(*text, TextOf(file)));
    if (name.empty()) {
        return Error{ErrorCode::NotFound, "no profile is the default"};
    }
    return name;
}

Status ProfileStorage::SetDefault(WideView name) const {
    VX_TRY_ASSIGN(const FileLock lock, Lock());
    if (!name.empty()) {
        VX_TRY(Find(name));
    }
    return WriteFile(DefaultFile(), WriteDefaultName(name));
}

}  // namespace localmapi::profile
