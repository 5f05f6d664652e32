#include "provider/Common/LogFiles.h"

#include "platform/Paths.h"

#include <chrono>
#include <climits>
#include <filesystem>
#include <fstream>
#include <limits>
#include <string_view>
#include <system_error>

namespace Vx::LogFiles {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kLongestFolder = 257;
constexpr std::streamsize kLongestPropertyLine = 100;
constexpr std::string_view kSizeKey = "size=";

// The number that a text begins with, blanks before it aside.
int LeadingNumber(std::string_view text) noexcept {
    text.remove_prefix(std::min(text.find_first_not_of(" \t\v\f\r\n"), text.size()));
    const bool isNegative = text.starts_with('-');
    if (isNegative || text.starts_with('+')) {
        text.remove_prefix(1);
    }
    std::int64_t value = 0;
    for (const char digit : text) {
        if (digit < '0' || digit > '9') {
            break;
        }
        value = std::min(value * 10 + (digit - '0'), std::int64_t{INT_MAX} + 1);
    }
    return static_cast<int>(isNegative ? -value : std::min<std::int64_t>(value, INT_MAX));
}

std::int64_t AgeInMilliseconds(const fs::directory_entry& file, std::error_code& error) {
    const auto age = fs::file_time_type::clock::now() - file.last_write_time(error);
    return std::chrono::duration_cast<std::chrono::milliseconds>(age).count();
}

}  // namespace

CStringW Join(WideView directory, WideView name) {
    CStringW path;
    path.reserve(directory.size() + 1 + name.size());
    path += directory;
    path += kPathSeparator;
    path += name;
    return path;
}

void MakeFolder(WideView directory) {
    std::error_code ignored;
    fs::create_directory(ToPath(directory), ignored);
}

bool CanBeRead(WideView path) {
    return std::ifstream(ToPath(path), std::ios::binary).is_open();
}

std::uint64_t GetLogSize(WideView path) {
    // Opened rather than asked of the folder, which on Windows learns of another handle's writes late.
    std::ifstream file(ToPath(path), std::ios::binary | std::ios::ate);
    const std::streamoff size = file.is_open() ? std::streamoff(file.tellg()) : 0;
    return size > 0 ? static_cast<std::uint64_t>(size) : 0;
}

bool Move(WideView from, WideView to) {
    std::error_code error;
    const fs::path target = ToPath(to);
    if (fs::exists(fs::symlink_status(target, error))) {
        return false;
    }
    error.clear();
    fs::rename(ToPath(from), target, error);
    return !error;
}

void CleanupOldLogFiles(WideView prefix, WideView directory, WideView currentName, int hoursToKeep) {
    if (directory.size() > kLongestFolder) {
        return;
    }
    const fs::path folder = ToPath(directory);
    const fs::path current = folder / ToPath(currentName);
    const std::int64_t limit = std::int64_t{hoursToKeep} * 3'600'000;
    std::error_code error;
    for (fs::directory_iterator file(folder, error); !error && file != fs::directory_iterator();
         file.increment(error)) {
        std::error_code ignored;
        const CStringW name = FromPath(file->path().filename());
        if (!name.starts_with(prefix) || name == currentName || file->is_directory(ignored)
            || fs::equivalent(file->path(), current, ignored)) {  // the live file under another case or a link
            continue;
        }
        std::error_code unknownAge;
        if (AgeInMilliseconds(*file, unknownAge) > limit && !unknownAge) {
            fs::remove(file->path(), ignored);
        }
    }
}

std::optional<int> ReadSizeProperty(WideView path) {
    std::ifstream file(ToPath(path));
    char line[kLongestPropertyLine + 1];
    while (file) {
        file.getline(line, std::size(line));
        const std::string_view text(line);
        if (text.starts_with(kSizeKey)) {
            return LeadingNumber(text.substr(kSizeKey.size()));
        }
        if (file.fail() && !file.eof() && !text.empty()) {  // a longer line: the rest of it is passed over
            file.clear();
            file.ignore(std::numeric_limits<std::streamsize>::max(), '\n');
        }
    }
    return std::nullopt;
}

}  // namespace Vx::LogFiles
