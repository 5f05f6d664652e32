// Where results go: standard output, or a file that appears under its name when all of it is written. One thread.
#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

namespace vxhost {

class Output {
public:
    // Standard output for an empty path. A file is made at the first Write, beside its place, with ".vxhost" and a number
    // behind its name; one that is there already stays until Commit. Throws Failure when the folder is not there.
    explicit Output(std::filesystem::path file);

    // Removes what was not committed.
    ~Output();
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    // Throws Failure when it cannot be written, Interrupted when nobody reads it any more.
    void Write(std::string_view text);

    // Hands on what was written; a file gets its name, also when nothing was. Throws as Write.
    void Commit();

    std::uint64_t Bytes() const noexcept { return m_bytes; }

private:
    void Flush();
    void Open();

    std::filesystem::path m_file;       // empty: standard output
    std::filesystem::path m_temporary;  // being written; empty when there is none
    std::ofstream m_stream;
    std::string m_buffer;
    std::uint64_t m_bytes = 0;
};

}  // namespace vxhost
