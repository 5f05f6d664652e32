// Writing to the process's log. Any thread may log at any time; no call here throws, and none does anything before
// LoggerInit or after SetAppShuttingDown. A source that logs names itself once:
//
//   namespace { constexpr auto& kSourcePath = "StoreAndFolder\\VxOutlookStore.cpp"_w; }
//   ...
//   VX_LOG('E') << Vx::LogMsg("GetProfileTable failed (%x)"_w, hr);
//   VX_LOG('D') << Vx::LogMsgDebugOnly("EID: %s"_w, id);
//
// Levels: E error, W warning, I information, D debug.
#pragma once

#include "platform/WideText.h"
#include "provider/Common/LogMsg.h"

#include <atomic>
#include <cstddef>

namespace Vx {

class FileLogger;

// How much is written: each level writes its own entries and those of the levels before it.
enum class LogLevel : int {
    Off = 0,      // nothing
    Error = 1,    // E
    Warning = 2,  // W
    Info = 3,     // I
    Verbose = 4,  // D and whatever else
};

// "Off", "Error", "Warning", "Info", "Verbose", compared without regard to case; anything else is Info.
LogLevel TranslateLogNameToLevel(WideView name) noexcept;
// The name of a level; "Off" for a value that is none.
const WCHAR* TranslateLogLevelToName(LogLevel level) noexcept;

// The one logger: set by the first LoggerInit and never destroyed by the program. Null before that.
extern std::atomic<FileLogger*> g_pLogger;

// Set once the application goes down: from then on every log call returns at once.
extern std::atomic<bool> g_shuttingDown;

// Creates the process's logger unless there is one, and decides whether texts for level D are made (s_IsDebugLevel).
// A second call does nothing. The arguments are those of FileLogger's constructor.
void LoggerInit(bool scannerFormat, WideView levelName, WideView productName, WideView fileBase, WideView directory,
                int hoursToKeep, bool perProcess) noexcept;

// Silences the log for good, whatever the argument.
void SetAppShuttingDown(bool shuttingDown) noexcept;

// These forward to the logger (FileLogger.h); without one they do nothing and give 0 or the empty text.
void Log(WideView file, int line, const WCHAR* function, char level, const SYSTEMTIME* time, DWORD threadId,
         WideView message) noexcept;
void SetLogDirectory(WideView directory) noexcept;
LogLevel GetLogLevel() noexcept;
bool SetLogLevel(LogLevel level) noexcept;
void SetLogLevelSource(LogLevel* source) noexcept;
void ResetLogLevelSource() noexcept;
CStringW GetLogFilePath() noexcept;

// The place of a line and its level. It borrows the texts, which normally live as long as the program.
class LogEntry {
public:
    // `file` is the source's path with backslashes, of which the line shows the last part.
    LogEntry(const WCHAR* file, int line, const WCHAR* function, char level) noexcept
        : m_file(file), m_line(line), m_function(function), m_level(level) {}

    // Write the line.
    void operator<<(const LogMsg& message) const noexcept { *this << message.Text(); }
    void operator<<(WideView message) const noexcept;

private:
    const WCHAR* m_file;
    int m_line;
    const WCHAR* m_function;
    char m_level;
};

// A function's name in wide characters, as a constant of the function that asks for it.
template <std::size_t N>
struct FunctionName {
    WCHAR units[N] = {};

    explicit consteval FunctionName(const char (&name)[N]) {
        for (std::size_t i = 0; i < N; ++i) {
            units[i] = static_cast<WCHAR>(static_cast<unsigned char>(name[i]));
        }
    }
};

}  // namespace Vx

// The name of the function around it, as const WCHAR*: widened while compiling, so asking costs an address.
#define VX_FUNCTION                                                   \
    (__extension__({                                                  \
        static constexpr ::Vx::FunctionName vxFunctionName{__func__}; \
        static_cast<const WCHAR*>(vxFunctionName.units);              \
    }))

// The entry of this very line; kSourcePath is the including source's.
#define VX_LOG(level) ::Vx::LogEntry(kSourcePath, __LINE__, VX_FUNCTION, level)
