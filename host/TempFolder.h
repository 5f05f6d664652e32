// A folder of the run's own, removed with all that is in it when the run ends. One thread.
#pragma once

#include <filesystem>

namespace vxhost {

class TempFolder {
public:
    // Makes it in `parent`, which must be there, for this user alone. Throws Failure.
    explicit TempFolder(const std::filesystem::path& parent);
    ~TempFolder();
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    const std::filesystem::path& Path() const noexcept { return m_path; }

    // Removes what is in it.
    void Empty() noexcept;

private:
    std::filesystem::path m_path;
};

// "vxhost", the process's number, and a number that nobody can guess: a name that nothing else has.
std::string UniqueName();

}  // namespace vxhost
