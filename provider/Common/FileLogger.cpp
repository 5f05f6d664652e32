#include "provider/Common/FileLogger.h"

#include "platform/CodePage.h"
#include "platform/FileTime.h"
#include "platform/Paths.h"
#include "platform/Process.h"
#include "provider/Common/FileTimeHelpers.h"
#include "provider/Common/LogFiles.h"
#include "provider/Common/PlatformInfo.h"
#include "provider/Common/StringHelpers.h"

#include <algorithm>
#include <climits>
#include <cstddef>
#include <exception>
#include <ios>
#include <iterator>
#include <utility>

namespace Vx {

namespace {

constexpr int kDefaultSizeLimit = 0x500000;
constexpr std::uint64_t kTicksPerDay = 864'000'000'000;

// Lines between two looks at the file's size and day, and between two looks at logs.properties.
constexpr std::uint32_t kLinesBetweenChecks = 256;
constexpr std::uint32_t kLinesBetweenPropertyChecks = 4096;

// An archive's name may be taken, or the live file held open elsewhere, for a moment.
constexpr int kMoveRetries = 100;
constexpr DWORD kMovePause = 100;  // milliseconds

constexpr const WCHAR* kLevelNames[] = {"Off"_w, "Error"_w, "Warning"_w, "Info"_w, "Verbose"_w};

struct EntryLevel {
    char letter;
    LogLevel minimum;  // the logger's level from which on such entries are written
    const WCHAR* label;
};

constexpr EntryLevel kEntryLevels[] = {
    {'D', LogLevel::Verbose, "DEBUG"_w},
    {'E', LogLevel::Error, "ERROR"_w},
    {'I', LogLevel::Info, "INFO"_w},
    {'W', LogLevel::Warning, "WARN"_w},
};
constexpr EntryLevel kOtherEntries = {0, LogLevel::Verbose, "TRACE"_w};

const EntryLevel& LevelOfEntry(char letter) noexcept {
    const auto* row = std::find_if(std::begin(kEntryLevels), std::end(kEntryLevels),
                                   [letter](const EntryLevel& level) { return level.letter == letter; });
    return row == std::end(kEntryLevels) ? kOtherEntries : *row;
}

std::uint64_t TicksOf(const SYSTEMTIME& time) noexcept {
    FILETIME ticks = FTZero();
    SystemTimeToFileTime(&time, &ticks);
    return FileTimeTicks(ticks);
}

class SystemClock final : public LogClock {};

}  // namespace

LogLevel TranslateLogNameToLevel(WideView name) noexcept {
    for (std::size_t i = 0; i < std::size(kLevelNames); ++i) {
        if (EqualIgnoringAsciiCase(name, kLevelNames[i])) {
            return static_cast<LogLevel>(i);
        }
    }
    return LogLevel::Info;
}

const WCHAR* TranslateLogLevelToName(LogLevel level) noexcept {
    const auto index = static_cast<std::size_t>(level);
    return kLevelNames[index < std::size(kLevelNames) ? index : 0];
}

SYSTEMTIME LogClock::LocalTime() const noexcept {
    SYSTEMTIME now = {};
    GetLocalTime(&now);
    return now;
}

void LogClock::Pause(DWORD milliseconds) const noexcept {
    Sleep(milliseconds);
}

const LogClock& LogClock::System() noexcept {
    static constinit SystemClock clock;  // has nothing to destroy: usable as long as the logger, to the very end
    return clock;
}

FileLogger::FileLogger(bool scannerFormat, WideView levelName, WideView productName, WideView fileBase,
                       WideView directory, int hoursToKeep, bool perProcess, const LogClock& clock)
    : m_level(TranslateLogNameToLevel(levelName)),
      m_fileBase(fileBase),
      m_scannerFormat(scannerFormat),
      m_productName(productName),
      m_perProcess(perProcess),
      m_hoursToKeep(hoursToKeep),
      m_sizeLimit(kDefaultSizeLimit),
      m_clock(clock) {
    CreateLogFilePath(m_fileBase, m_perProcess,
                      directory.empty() ? LogFiles::Join("."_w, m_productName) : CStringW(directory));
    MakeHeader();
    if (CreateLogFile()) {
        Write(m_header);
        Write("\r\n"_w);
        CloseFile();
    }
}

FileLogger::~FileLogger() = default;

void FileLogger::CreateLogFilePath(WideView base, bool perProcess, WideView directory) {
    CStringW name = perProcess ? FormatString("%s_%d"_w, base, GetCurrentProcessId()) : CStringW(base);
    CStringW basePath = LogFiles::Join(directory, name);
    CStringW logFilePath = basePath + ".log"_w;
    CStringW fileName = std::move(name) + ".log"_w;
    CStringW folder(directory);
    CStringW baseName(base);

    m_basePath = std::move(basePath);
    m_logFilePath = std::move(logFilePath);
    m_fileName = std::move(fileName);
    m_directory = std::move(folder);
    m_baseName = std::move(baseName);
    LogFiles::CleanupOldLogFiles(m_baseName, m_directory, m_fileName, m_hoursToKeep);
}

void FileLogger::MakeHeader() {
    const SYSTEMTIME now = m_clock.LocalTime();
    m_header = FormatString("%s loaded on %02d/%02d/%02d at %02d:%02d:%02d. Log level %s\r\n%s\r\n"_w, m_productName,
                            now.wMonth, now.wDay, now.wYear % 100, now.wHour, now.wMinute, now.wSecond,
                            TranslateLogLevelToName(m_level), GetPlatformInfo());
}

bool FileLogger::CreateLogFile() {
    LogFiles::MakeFolder(m_directory);
    m_stream = std::make_unique<std::ofstream>(ToPath(m_logFilePath), std::ios::binary | std::ios::app);
    m_endOfDay = EndOfDay(m_clock.LocalTime());
    m_isOpen = m_stream->is_open() && LogFiles::CanBeRead(m_logFilePath);
    return m_isOpen;
}

void FileLogger::CloseFile() noexcept {
    m_isOpen = false;
    m_stream.reset();
}

void FileLogger::Log(WideView file, int line, const WCHAR* function, char level, WideView format,
                     FormatArgs args) noexcept {
    if (IsWritten(level)) {
        WCHAR text[1024];
        FormatText(text, std::size(text), format, args);
        Log(file, line, function, level, WideView(text));
    }
}

void FileLogger::Log(WideView file, int line, const WCHAR* function, char level, WideView message) noexcept {
    if (IsWritten(level)) {  // LogImpl decides, but the time of a muted entry need not be found out
        Log(file, line, function, level, m_clock.LocalTime(), GetCurrentThreadId(), message);
    }
}

void FileLogger::Log(WideView file, int line, const WCHAR* function, char level, const SYSTEMTIME& time, DWORD threadId,
                     WideView message) noexcept {
    try {
        LogImpl(file, line, function, level, time, threadId, message);
    } catch (...) {
        const std::scoped_lock lock(m_lock);
        if (m_isOpen) {
            CloseFile();
        }
    }
}

void FileLogger::SetLogDirectory(WideView directory) noexcept {
    const std::scoped_lock lock(m_lock);
    try {
        CreateLogFilePath(m_fileBase, m_perProcess, directory);
        CloseFile();  // the next line opens the file of the new path
    } catch (const std::exception&) {
        return;  // no memory: the log stays where it is
    }
}

LogLevel FileLogger::GetLogLevel() noexcept {
    if (LogLevel* source = m_levelSource) {
        m_level = std::atomic_ref<LogLevel>(*source).load();
    }
    return m_level;
}

bool FileLogger::SetLogLevel(LogLevel level) noexcept {
    if (LogLevel* source = m_levelSource) {
        std::atomic_ref<LogLevel>(*source).store(level);
    } else {
        m_level = level;
    }
    return true;
}

void FileLogger::SetLogLevelSource(LogLevel* source) noexcept {
    if (source != nullptr) {
        std::atomic_ref<LogLevel>(*source).store(m_level);
    }
    m_levelSource = source;
}

void FileLogger::ResetLogLevelSource() noexcept {
    m_levelSource = nullptr;
}

CStringW FileLogger::GetLogFilePath() const {
    const std::scoped_lock lock(m_lock);
    return m_logFilePath;
}

bool FileLogger::IsWritten(char level) noexcept {
    return GetLogLevel() >= LevelOfEntry(level).minimum;
}

void FileLogger::LogImpl(WideView file, int line, const WCHAR* function, char level, const SYSTEMTIME& time,
                         DWORD threadId, WideView message) {
    const std::scoped_lock lock(m_lock);
    if (!IsWritten(level)) {
        return;
    }
    const WideView fileName = file.substr(file.rfind(static_cast<WCHAR>('\\')) + 1);
    const WideView prefix = FormatPrefix(fileName, line, function, level, time, threadId);

    if (!m_isOpen) {
        CreateLogFile();
    }
    ArchiveWhenDue();
    if (!m_isOpen && !CreateLogFile()) {
        return;
    }

    Write(prefix);
    Write(message);
    Write(m_scannerFormat ? WideView("\r\n"_w) : WideView("\n"_w));
    ++m_lineCount;
    m_stream->flush();
    if (s_LogArchiveProcedure != 1 || m_stream->fail()) {
        CloseFile();  // after a failure too, so that the next line finds a stream that works, if there is one
    }
}

WideView FileLogger::FormatPrefix(WideView fileName, int line, const WCHAR* function, char level,
                                  const SYSTEMTIME& time, DWORD threadId) noexcept {
    const int length =
        m_scannerFormat
            ? Format(m_line,
                     "[log] %02d.%02d.%d %02d:%02d:%02d,%03d [group-Scanner] %s   [(%x) %s (%d)] [log] - %s - "_w,
                     time.wDay, time.wMonth, time.wYear, time.wHour, time.wMinute, time.wSecond, time.wMilliseconds,
                     LevelOfEntry(level).label, threadId, fileName, line, function)
            : Format(m_line, "%c %02d/%02d/%d %02d:%02d:%02d [%x] %s (%d) - %s - "_w, level, time.wDay, time.wMonth,
                     time.wYear, time.wHour, time.wMinute, time.wSecond, threadId, fileName, line, function);
    return {m_line, std::min(static_cast<std::size_t>(std::max(length, 0)), std::size(m_line) - 1)};
}

void FileLogger::ArchiveWhenDue() {
    if (!m_isOpen || s_LogArchiveProcedure == 0) {
        return;
    }
    if (m_lineCount % kLinesBetweenPropertyChecks == 0) {
        CheckLogFileProperties();
    }
    if (m_lineCount % kLinesBetweenChecks != 0) {
        return;
    }
    if (static_cast<std::int64_t>(LogFiles::GetLogSize(m_logFilePath)) >= m_sizeLimit) {
        ArchiveLogFile(false);
    } else if (TicksOf(m_clock.LocalTime()) > m_endOfDay) {
        ArchiveLogFile(true);
    }
}

void FileLogger::ArchiveLogFile(bool yesterday) {
    const SYSTEMTIME stamp = yesterday ? GetEndOfDayOfYesterday() : m_clock.LocalTime();
    const CStringW archivePath = m_basePath
                                 + FormatString("-[%04d-%02d-%02d@%02dh%02dm%02ds].log"_w, stamp.wYear, stamp.wMonth,
                                                stamp.wDay, stamp.wHour, stamp.wMinute, stamp.wSecond);
    CloseFile();
    LogFiles::CleanupOldLogFiles(m_baseName, m_directory, m_fileName, m_hoursToKeep);
    for (int retries = kMoveRetries; !LogFiles::Move(m_logFilePath, archivePath) && retries > 0; --retries) {
        m_clock.Pause(kMovePause);
    }
}

void FileLogger::CheckLogFileProperties() {
    if (m_propertiesPath.empty()) {
        m_propertiesPath = LogFiles::Join(LogFiles::Join(m_directory, ".."_w), "logs.properties"_w);
    }
    if (const auto kilobytes = LogFiles::ReadSizeProperty(m_propertiesPath)) {
        const std::int64_t bytes = *kilobytes == 0 ? kDefaultSizeLimit : std::int64_t{*kilobytes} * 1000;
        m_sizeLimit = static_cast<int>(std::clamp<std::int64_t>(bytes, INT_MIN, INT_MAX));
    }
}

// UTF-8, piece by piece through a buffer of the stack.
void FileLogger::Write(WideView text) {
    constexpr std::size_t kPiece = 512;
    char bytes[3 * kPiece];  // a unit takes three bytes at most, a pair of them four
    while (!text.empty()) {
        std::size_t units = std::min(text.size(), kPiece);
        if (units < text.size() && (text[units - 1] & 0xFC00) == 0xD800) {
            --units;  // the pair stays together
        }
        const int count = WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(units), bytes, sizeof(bytes),
                                              nullptr, nullptr);
        m_stream->write(bytes, std::max(count, 0));
        text.remove_prefix(units);
    }
}

// The seconds stay those of `time`.
std::uint64_t FileLogger::EndOfDay(SYSTEMTIME time) const noexcept {
    time.wHour = 23;
    time.wMinute = 59;
    time.wMilliseconds = 999;
    return TicksOf(time);
}

SYSTEMTIME FileLogger::GetEndOfDayOfYesterday() const noexcept {
    const std::uint64_t ticks = TicksOf(m_clock.LocalTime()) - kTicksPerDay;
    const FILETIME time = {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
    SYSTEMTIME yesterday = {};
    FileTimeToSystemTime(&time, &yesterday);
    yesterday.wHour = 23;
    yesterday.wMinute = 59;
    yesterday.wMilliseconds = 999;
    return yesterday;
}

}  // namespace Vx
