// What the tests of the MAPI utilities share: a folder of their own, and the lines that a test adds to the real log.
#pragma once

#include "platform/Paths.h"
#include "platform/WideText.h"

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

// A new, empty folder for the life of this object.
class TempFolder {
public:
    TempFolder();
    ~TempFolder();
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    const std::filesystem::path& Path() const { return m_path; }
    CStringW File(std::string_view name) const { return FromPath(m_path / name); }

private:
    std::filesystem::path m_path;
};

// The bytes of a file; empty when there is none.
std::string ReadFile(const CStringW& path);
void WriteFile(const CStringW& path, std::string_view bytes);

struct LogLine {
    std::string level;  // "ERROR", "DEBUG", ...
    std::string text;   // what was logged; its own line breaks are in it

    bool operator==(const LogLine&) const = default;
};

// The entries that the process's log gained since this object was made. The first one starts the log at its most
// talkative level.
class LogCapture {
public:
    LogCapture();
    std::vector<LogLine> Lines() const;

    // The texts of the entries of one level.
    std::vector<std::string> Texts(std::string_view level) const;

private:
    std::size_t m_start;
};
