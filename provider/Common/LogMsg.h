// The text of one log line, formatted while it is made. It never throws, and below 199 characters it uses no heap.
#pragma once

#include "platform/WideText.h"
#include "provider/Common/Format.h"

#include <atomic>
#include <cstddef>

namespace Vx {

// Whether the logger started at level Verbose. Set once, by LoggerInit, so that raising the level later brings debug
// lines, but none of the text that LogMsgDebugOnly makes.
extern std::atomic<bool> s_IsDebugLevel;

// Made in the expression that logs it: VX_LOG('E') << Vx::LogMsg("GetProfileTable failed (%x)"_w, hr);
class LogMsg {
public:
    LogMsg() noexcept = default;

    // Text as it is.
    explicit LogMsg(WideView text) noexcept { Assign(text); }

    // `format` as told in Format.h; without arguments it is text as it is. A null format is an empty one.
    template <typename... Args>
    explicit LogMsg(const WCHAR* format, const Args&... args) noexcept {
        Format(format, MakeFormatArgs(args...));
    }

    LogMsg(const LogMsg&) = delete;
    LogMsg& operator=(const LogMsg&) = delete;

    // Valid as long as this object. "Error in LogMsg(*)" stands for a text too long to be counted,
    // "Error in LogMsg(*)!" for one that memory did not suffice for.
    WideView Text() const noexcept { return m_inline ? WideView(m_buffer, m_length) : WideView(m_text); }

protected:
    void Format(const WCHAR* format, FormatArgs args) noexcept;
    void Assign(WideView text) noexcept;

private:
    bool m_inline = true;      // which of the two holds the text
    std::size_t m_length = 0;  // of the text in m_buffer
    WCHAR m_buffer[200];       // what is behind the text means nothing
    CStringW m_text;
};

// A text for level D: empty, and never even formatted, unless s_IsDebugLevel is set.
class LogMsgDebugOnly : public LogMsg {
public:
    LogMsgDebugOnly() noexcept = default;

    explicit LogMsgDebugOnly(WideView text) noexcept {
        if (s_IsDebugLevel.load(std::memory_order_relaxed)) {
            Assign(text);
        }
    }

    template <typename... Args>
    explicit LogMsgDebugOnly(const WCHAR* format, const Args&... args) noexcept {
        if (s_IsDebugLevel.load(std::memory_order_relaxed)) {
            Format(format, MakeFormatArgs(args...));
        }
    }
};

}  // namespace Vx
