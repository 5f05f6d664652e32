#include "provider/Common/Log.h"

#include "provider/Common/FileLogger.h"

#include <exception>
#include <memory>
#include <mutex>
#include <new>

namespace Vx {

std::atomic<FileLogger*> g_pLogger = nullptr;
std::atomic<bool> g_shuttingDown = false;

namespace {

// The logger to write to: null before the first LoggerInit and from the shutdown on.
FileLogger* WritingLogger() noexcept {
    return g_shuttingDown ? nullptr : g_pLogger.load();
}

}  // namespace

void LoggerInit(bool scannerFormat, WideView levelName, WideView productName, WideView fileBase, WideView directory,
                int hoursToKeep, bool perProcess) noexcept {
    static std::mutex oneAtATime;
    const std::scoped_lock lock(oneAtATime);
    if (g_pLogger != nullptr) {
        return;
    }
    try {
        auto logger = std::make_unique<FileLogger>(scannerFormat, levelName, productName, fileBase, directory,
                                                   hoursToKeep, perProcess);
        s_IsDebugLevel = logger->GetLogLevel() == LogLevel::Verbose;
        g_pLogger = logger.release();  // lives as long as the process, so that the last destructor can still log
    } catch (const std::exception&) {
        return;  // the process works on without a log
    }
}

void SetAppShuttingDown(bool /*shuttingDown*/) noexcept {
    g_shuttingDown = true;
}

void Log(WideView file, int line, const WCHAR* function, char level, const SYSTEMTIME* time, DWORD threadId,
         WideView message) noexcept {
    if (FileLogger* logger = WritingLogger(); logger != nullptr && time != nullptr) {
        logger->Log(file, line, function, level, *time, threadId, message);
    }
}

void SetLogDirectory(WideView directory) noexcept {
    if (FileLogger* logger = g_pLogger) {
        logger->SetLogDirectory(directory);
    }
}

LogLevel GetLogLevel() noexcept {
    FileLogger* logger = g_pLogger;
    return logger == nullptr ? LogLevel::Off : logger->GetLogLevel();
}

bool SetLogLevel(LogLevel level) noexcept {
    FileLogger* logger = g_pLogger;
    return logger != nullptr && logger->SetLogLevel(level);
}

void SetLogLevelSource(LogLevel* source) noexcept {
    if (FileLogger* logger = g_pLogger) {
        logger->SetLogLevelSource(source);
    }
}

void ResetLogLevelSource() noexcept {
    if (FileLogger* logger = g_pLogger) {
        logger->ResetLogLevelSource();
    }
}

CStringW GetLogFilePath() noexcept {
    const FileLogger* logger = g_pLogger;
    try {
        return logger == nullptr ? CStringW() : logger->GetLogFilePath();
    } catch (const std::bad_alloc&) {
        return {};
    }
}

void LogEntry::operator<<(WideView message) const noexcept {
    if (FileLogger* logger = WritingLogger()) {
        logger->Log(m_file, m_line, m_function, m_level, message);
    }
}

}  // namespace Vx
