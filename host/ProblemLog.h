// What local MAPI finds wrong with mailbox files while they are read, and reads around: lines that it appends to the file
// that VX_MAPI_LOG names. Other MAPI subsystems write none. One thread.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <unordered_set>
#include <vector>

namespace vxhost {

class ProblemLog {
public:
    // To be made before MAPI is started: names `file` to it, unless the user has named one of his own, which is then
    // looked at.
    explicit ProblemLog(const std::filesystem::path& file);
    ~ProblemLog();
    ProblemLog(const ProblemLog&) = delete;
    ProblemLog& operator=(const ProblemLog&) = delete;

    // The problems since the last call, none of them twice, in UTF-8, without the path of `mailbox` before them.
    std::vector<std::string> TakeNew(const std::filesystem::path& mailbox);

private:
    std::filesystem::path m_file;
    bool m_isOurs;
    std::uintmax_t m_read = 0;                // bytes
    std::unordered_set<std::size_t> m_known;  // hashes of the lines given out
};

}  // namespace vxhost
