// What the two systems do differently for a program on the command line: arguments, terminals, Ctrl-C, the environment,
// and where the provider is told to log. One source file for each system; everything else in the room is the same.
#pragma once

#include <atomic>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vxhost {

// The arguments without the program's name, in UTF-8 (on Linux as they are given).
std::vector<std::string> Arguments(int argc, char** argv);

enum class Stream { Output, Error };

// For as long as it lives, terminals take UTF-8, output has no line ends changed, and a write to a pipe that nobody
// reads fails instead of ending the program.
class Console {
public:
    Console();
    ~Console();
    Console(const Console&) = delete;
    Console& operator=(const Console&) = delete;

    static bool IsTerminal(Stream stream);

    // Columns; 80 when that cannot be told.
    static std::size_t Width(Stream stream);

    // Whether that failure of a write (an errno) says that the reader has gone.
    static bool IsReaderGone(int error) noexcept;

private:
    unsigned m_before = 0;  // what the destructor puts back
};

// Catches Ctrl-C and the system's requests to end. The first one sets the flag and calls `raise`, on a thread of its
// own; the second one ends the process at once. One at a time. To be made before other threads are.
class Interruption {
public:
    explicit Interruption(std::function<void()> raise);
    ~Interruption();
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;

    bool IsRaised() const noexcept { return m_isRaised; }

private:
    struct Watch;

    std::atomic<bool> m_isRaised = false;
    std::function<void()> m_raise;
    std::unique_ptr<Watch> m_watch;
};

unsigned ProcessId() noexcept;

// A variable of the environment; empty when it is not set. SetVariable with an empty value removes it, and is for the
// time when there is one thread.
std::string Variable(const char* name);
void SetVariable(const char* name, const std::string& value);

// Whether the file may be opened for reading now: 0, or an errno.
int ProbeForReading(const std::filesystem::path& file);

// Whether a profile can name a file by this path: profiles take it in the system's 8-bit code page.
bool IsNameableInProfile(const std::filesystem::path& file);

// Another path of the same file that a profile can name; empty when there is none.
std::filesystem::path ShortPath(const std::filesystem::path& file);

// Makes `folder` the data path of the application `name`, where the provider looks for it: below
// HKEY_CURRENT_USER\Software. For as long as it lives; the log goes on after that. Throws Failure.
class LogRegistration {
public:
    LogRegistration(const std::string& name, const std::filesystem::path& folder,
                    const std::filesystem::path& workFolder);
    ~LogRegistration();
    LogRegistration(const LogRegistration&) = delete;
    LogRegistration& operator=(const LogRegistration&) = delete;

private:
    std::string m_before;  // what the destructor puts back
};

}  // namespace vxhost
