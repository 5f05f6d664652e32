// The log in a file: which entries are written, what a line looks like, when the file is put aside, what is deleted.
//
// The live file is <directory>/<base>.log; what was put aside has a stamp before the ".log" and lives for a number of
// hours. Lines are UTF-8 and end in "\r\n". Any thread may call any operation of a logger. Writing never throws: a line
// that cannot be written is lost, and the next one opens the file again. A writer waits for the writers before it, and
// for ten seconds more when the file cannot be put aside.
#pragma once

#include "platform/WideText.h"
#include "provider/Common/Format.h"
#include "provider/Common/Log.h"

#include <atomic>
#include <cstdint>
#include <fstream>
#include <memory>
#include <mutex>

namespace Vx {

// What to do with the open file and the old ones. 0: the file only grows, and is closed after each line. 1: it is put
// aside by size and by day, stays open between lines and is flushed after each. Other values: as 1, but closed after
// each line.
inline constexpr int s_LogArchiveProcedure = 1;

// The time and the waiting that a logger needs; a test gives its own.
class LogClock {
public:
    virtual SYSTEMTIME LocalTime() const noexcept;
    virtual void Pause(DWORD milliseconds) const noexcept;

    // The machine's own.
    static const LogClock& System() noexcept;

protected:
    ~LogClock() = default;
};

class FileLogger {
public:
    // Makes the folder (its last level only) and the file, and writes the header that says what runs where.
    //   scannerFormat  the line's layout; the program's own logger always has it
    //   levelName      a name of TranslateLogNameToLevel
    //   productName    for the header, and for the folder when `directory` is empty: a folder of this name in the
    //                  current directory
    //   fileBase       the file's name without ".log"; every file of the folder whose name begins with it is taken for
    //                  a log of this logger and deleted when older than hoursToKeep
    //   perProcess     adds the process's number to the name
    //   clock          borrowed for the logger's life
    // Throws std::bad_alloc only.
    FileLogger(bool scannerFormat, WideView levelName, WideView productName, WideView fileBase, WideView directory,
               int hoursToKeep, bool perProcess, const LogClock& clock = LogClock::System());
    virtual ~FileLogger();
    FileLogger(const FileLogger&) = delete;
    FileLogger& operator=(const FileLogger&) = delete;

    // Write a line at this moment from this thread: a format with its arguments, cut to 1023 characters; a finished
    // text; a finished text with the time and the thread of another moment. `level` is the entry's letter, `file` the
    // source's path with backslashes.
    void Log(WideView file, int line, const WCHAR* function, char level, WideView format, FormatArgs args) noexcept;
    void Log(WideView file, int line, const WCHAR* function, char level, WideView message) noexcept;
    void Log(WideView file, int line, const WCHAR* function, char level, const SYSTEMTIME& time, DWORD threadId,
             WideView message) noexcept;

    // Later lines go to the same names in another folder.
    void SetLogDirectory(WideView directory) noexcept;

    // The level, from the source cell when there is one.
    LogLevel GetLogLevel() noexcept;

    // Changes the source cell when there is one, otherwise the logger's own level. Always true.
    bool SetLogLevel(LogLevel level) noexcept;

    // From now on the level is what `source` holds, and the current level is written there. The cell must outlive the
    // logger or a ResetLogLevelSource; whoever else writes it while lines are logged does so through std::atomic_ref.
    void SetLogLevelSource(LogLevel* source) noexcept;
    void ResetLogLevelSource() noexcept;

    // The live file's full path.
    CStringW GetLogFilePath() const;

private:
    void CreateLogFilePath(WideView base, bool perProcess, WideView directory);
    void MakeHeader();
    bool CreateLogFile();
    void CloseFile() noexcept;

    bool IsWritten(char level) noexcept;
    void LogImpl(WideView file, int line, const WCHAR* function, char level, const SYSTEMTIME& time, DWORD threadId,
                 WideView message);
    WideView FormatPrefix(WideView fileName, int line, const WCHAR* function, char level, const SYSTEMTIME& time,
                          DWORD threadId) noexcept;
    void ArchiveWhenDue();
    void ArchiveLogFile(bool yesterday);
    void CheckLogFileProperties();
    void Write(WideView text);

    std::uint64_t EndOfDay(SYSTEMTIME time) const noexcept;
    SYSTEMTIME GetEndOfDayOfYesterday() const noexcept;

    std::uint64_t m_endOfDay = 0;             // FILETIME, local: when the current file has its day behind it
    std::unique_ptr<std::ofstream> m_stream;  // null while the file is closed
    CStringW m_logFilePath;                   // full path of the live file
    CStringW m_basePath;                      // the same without ".log"
    CStringW m_fileName;                      // name of the live file, with ".log"
    CStringW m_baseName;                      // without ".log" and without a process number
    CStringW m_directory;
    std::atomic<LogLevel> m_level;
    std::atomic<LogLevel*> m_levelSource = nullptr;  // not owned; overrides m_level
    CStringW m_header;
    bool m_isOpen = false;
    CStringW m_fileBase;  // as given, for SetLogDirectory
    bool m_scannerFormat;
    CStringW m_productName;
    mutable std::mutex m_lock;  // guards every field but the level, its source and those that never change
    bool m_perProcess;
    WCHAR m_line[4080] = {};        // the prefix of the line being written
    std::uint32_t m_lineCount = 0;  // lines written; file-system checks go by it
    int m_hoursToKeep;
    int m_sizeLimit;  // bytes
    CStringW m_propertiesPath;
    const LogClock& m_clock;
};

}  // namespace Vx
