// Tracing of scopes: a line when one is entered and a line when it is left.
//
//   VX_SCOPE_TRACE(trace);                        "Enter", "Exit"
//   VX_SCOPE_TRACE_EX(trace); ... trace.end(hr);  "Enter", and an exit line that tells how it went
#pragma once

#include "platform/WideText.h"
#include "provider/Common/Log.h"

namespace Vx {

// Writes "Enter" at level D when made and "Exit" at level D when destroyed.
class ScopedEntryExitLogger {
public:
    ScopedEntryExitLogger(const WCHAR* file, int line, const WCHAR* function) noexcept;
    ~ScopedEntryExitLogger();
    ScopedEntryExitLogger(const ScopedEntryExitLogger&) = delete;
    ScopedEntryExitLogger& operator=(const ScopedEntryExitLogger&) = delete;

private:
    LogEntry m_entry;
};

// Writes "Enter" at level D when made, and when destroyed one of:
//
//   nothing said, as when an exception passes    "Exit  exception"            level I
//   end(text)                                    "Exit " and the text         level I
//   ok(), or end(0)                              "Exit"                       level D
//   end(hr)                                      "Exit HR=" and hr, decimal   level D, or E when hr is negative
//
// The last word counts.
class ScopedEntryExitLoggerEx {
public:
    ScopedEntryExitLoggerEx(const WCHAR* file, int line, const WCHAR* function) noexcept;
    ~ScopedEntryExitLoggerEx();
    ScopedEntryExitLoggerEx(const ScopedEntryExitLoggerEx&) = delete;
    ScopedEntryExitLoggerEx& operator=(const ScopedEntryExitLoggerEx&) = delete;

    void ok() noexcept;
    void end(HRESULT result) noexcept;
    // `text` is borrowed until the scope ends; null is the same as no text.
    void end(const WCHAR* text) noexcept;

private:
    LogEntry EntryAt(char level) const noexcept;

    const WCHAR* m_file;
    int m_line;
    const WCHAR* m_function;
    const WCHAR* m_exitText;  // not owned
    HRESULT m_result = 0;
};

}  // namespace Vx

#define VX_SCOPE_TRACE(name)    const ::Vx::ScopedEntryExitLogger name(kSourcePath, __LINE__, VX_FUNCTION)
#define VX_SCOPE_TRACE_EX(name) ::Vx::ScopedEntryExitLoggerEx name(kSourcePath, __LINE__, VX_FUNCTION)
