// Another program, run and waited for. One source file for each system.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace vx_testing {

class Process {
public:
    enum class Reader { Present, Gone };

    // Starts the program with these arguments, in UTF-8, and this process's environment. What it prints goes to two files
    // of `folder`, or standard output to a pipe that nobody reads.
    Process(const std::filesystem::path& program, const std::vector<std::string>& arguments,
            const std::filesystem::path& folder, Reader reader = Reader::Present);
    ~Process();

    // As the user does with Ctrl-C. False where there is no console to press it in.
    bool Interrupt();

    // Waits for its end: the exit status, or the negative number of the signal that ended it.
    int Wait();

    // What it has printed.
    std::string Output() const;
    std::string Errors() const;

private:
    struct Handles;

    std::filesystem::path m_output;
    std::filesystem::path m_errors;
    std::unique_ptr<Handles> m_handles;
};

}  // namespace vx_testing
