// What the logger's tests share: a folder of their own, a clock that stands still, the log read back, and a logger put
// in the place of the process's.
#pragma once

#include "platform/FileTime.h"
#include "platform/Paths.h"
#include "platform/Process.h"
#include "provider/Common/FileLogger.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <vector>

// ASCII to UTF-16 and back; anything else becomes '?'.
inline CStringW Wide(std::string_view text) {
    return CStringW(text.begin(), text.end());
}

inline std::string Ascii(WideView text) {
    std::string narrow;
    for (const WCHAR unit : text) {
        narrow += unit < 0x80 ? static_cast<char>(unit) : '?';
    }
    return narrow;
}

// A new folder under the system's temporary one, deleted with everything in it.
class TemporaryFolder {
public:
    TemporaryFolder()
        : m_path(std::filesystem::temp_directory_path() / ("vx-common-" + std::to_string(std::random_device()()))) {
        std::filesystem::create_directory(m_path);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }

    const std::filesystem::path& Path() const { return m_path; }

private:
    std::filesystem::path m_path;
};

inline void WriteFile(const std::filesystem::path& path, std::string_view bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}

inline std::string ReadFile(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

// The log's lines without their ends. A last line without an end is marked, since no log may have one.
inline std::vector<std::string> ReadLines(const std::filesystem::path& path) {
    std::vector<std::string> lines;
    const std::string bytes = ReadFile(path);
    std::size_t begin = 0;
    for (std::size_t end; (end = bytes.find("\r\n", begin)) != std::string::npos; begin = end + 2) {
        lines.push_back(bytes.substr(begin, end - begin));
    }
    if (begin < bytes.size()) {
        lines.push_back("<torn>" + bytes.substr(begin));
    }
    return lines;
}

// A clock that is set by hand; or, with a step, moves on by so many seconds whenever it is read.
class FakeClock final : public Vx::LogClock {
public:
    explicit FakeClock(const SYSTEMTIME& now, unsigned secondsPerReading = 0) : m_step(secondsPerReading) { Set(now); }

    void Set(const SYSTEMTIME& now) {
        FILETIME ticks = {};
        SystemTimeToFileTime(&now, &ticks);
        m_ticks = (std::uint64_t{ticks.dwHighDateTime} << 32) | ticks.dwLowDateTime;
    }

    SYSTEMTIME LocalTime() const noexcept override {
        const std::uint64_t ticks = m_ticks.fetch_add(m_step * std::uint64_t{10'000'000});
        const FILETIME time = {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
        SYSTEMTIME now = {};
        FileTimeToSystemTime(&time, &now);
        return now;
    }

    void Pause(DWORD milliseconds) const noexcept override { m_paused += milliseconds; }

    DWORD Paused() const { return m_paused; }

private:
    mutable std::atomic<std::uint64_t> m_ticks;
    unsigned m_step;
    mutable std::atomic<DWORD> m_paused = 0;
};

inline constexpr SYSTEMTIME kLeapDay = {2024, 2, 4, 29, 13, 5, 9, 42};

// A logger in the scanner layout, named "Engine", in <folder>/logs.
struct LogFixture {
    explicit LogFixture(const char* level = "Verbose", int hoursToKeep = 12, const FakeClock* otherClock = nullptr)
        : logger(std::make_unique<Vx::FileLogger>(true, Wide(level), "Vx MAPI Engine"_w, "Engine"_w, FromPath(logs),
                                                  hoursToKeep, false, otherClock == nullptr ? clock : *otherClock)) {}

    void Write(char level, std::string_view message) {
        logger->Log("..\\Folder\\Source.cpp"_w, 77, "Function"_w, level, Wide(message));
    }

    void WriteLines(int count) {
        for (int i = 0; i < count; ++i) {
            Write('E', "line");
        }
    }

    // The lines behind the header, which is one line, the system's line and an empty one.
    std::vector<std::string> Lines() const {
        std::vector<std::string> lines = ReadLines(live);
        lines.erase(lines.begin(), lines.begin() + std::min<std::ptrdiff_t>(3, std::ssize(lines)));
        return lines;
    }

    // The files of the folder that are not the live one.
    std::vector<std::filesystem::path> Archives() const {
        std::vector<std::filesystem::path> archives;
        for (const auto& entry : std::filesystem::directory_iterator(logs)) {
            if (entry.path() != live) {
                archives.push_back(entry.path());
            }
        }
        return archives;
    }

    TemporaryFolder folder;
    std::filesystem::path logs = folder.Path() / "logs";
    std::filesystem::path live = logs / "Engine.log";
    std::filesystem::path properties = folder.Path() / "logs.properties";
    FakeClock clock{kLeapDay};
    std::unique_ptr<Vx::FileLogger> logger;
};

// Puts the process's log back as it was before any LoggerInit.
class CleanLogState {
public:
    CleanLogState() { Reset(); }
    CleanLogState(const CleanLogState&) = delete;
    CleanLogState& operator=(const CleanLogState&) = delete;
    ~CleanLogState() { Reset(); }

private:
    static void Reset() {
        const std::unique_ptr<Vx::FileLogger> owned(Vx::g_pLogger.exchange(nullptr));
        Vx::g_shuttingDown = false;
        Vx::s_IsDebugLevel = false;
    }
};

// A log of level Verbose in the place of the process's.
class InstalledLog {
public:
    InstalledLog() {
        Vx::s_IsDebugLevel = true;
        Vx::g_pLogger = m_log.logger.release();
    }

    // "LABEL function: message" for each line written so far.
    std::vector<std::string> Lines() const {
        std::vector<std::string> lines;
        for (const std::string& line : m_log.Lines()) {
            const std::size_t label = line.find("[group-Scanner] ") + 16;
            lines.push_back(line.substr(label, line.find(' ', label) - label) + " "
                            + Tail(line, line.find("[log] - ") + 8));
        }
        return lines;
    }

private:
    static std::string Tail(const std::string& line, std::size_t function) {
        const std::size_t end = line.find(" - ", function);
        return line.substr(function, end - function) + ": " + line.substr(end + 3);
    }

    LogFixture m_log;
    CleanLogState m_state;  // closes the log before its folder goes
};
