#include "provider/Common/ScopedEntryExitLogger.h"

namespace Vx {

ScopedEntryExitLogger::ScopedEntryExitLogger(const WCHAR* file, int line, const WCHAR* function) noexcept
    : m_entry(file, line, function, 'D') {
    m_entry << "Enter"_w;
}

ScopedEntryExitLogger::~ScopedEntryExitLogger() {
    m_entry << "Exit"_w;
}

ScopedEntryExitLoggerEx::ScopedEntryExitLoggerEx(const WCHAR* file, int line, const WCHAR* function) noexcept
    : m_file(file), m_line(line), m_function(function), m_exitText(" exception"_w) {
    EntryAt('D') << "Enter"_w;
}

ScopedEntryExitLoggerEx::~ScopedEntryExitLoggerEx() {
    if (m_exitText != nullptr) {
        EntryAt('I') << LogMsg("Exit %s"_w, m_exitText);
    } else if (m_result == 0) {
        EntryAt('D') << "Exit"_w;
    } else {
        EntryAt(m_result < 0 ? 'E' : 'D') << LogMsg("Exit HR=%d"_w, m_result);
    }
}

void ScopedEntryExitLoggerEx::ok() noexcept {
    end(HRESULT{0});
}

void ScopedEntryExitLoggerEx::end(HRESULT result) noexcept {
    m_exitText = nullptr;
    m_result = result;
}

void ScopedEntryExitLoggerEx::end(const WCHAR* text) noexcept {
    m_exitText = text;
}

LogEntry ScopedEntryExitLoggerEx::EntryAt(char level) const noexcept {
    return LogEntry(m_file, m_line, m_function, level);
}

}  // namespace Vx
