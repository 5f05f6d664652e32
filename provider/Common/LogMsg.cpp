#include "provider/Common/LogMsg.h"

#include <iterator>
#include <new>
#include <stdexcept>

namespace Vx {

std::atomic<bool> s_IsDebugLevel = false;

namespace {

// Texts that the inline buffer takes: one unit is the terminator's, one is spare.
constexpr bool FitsInline(std::size_t length) noexcept {
    return length < 199;
}

}  // namespace

void LogMsg::Format(const WCHAR* format, FormatArgs args) noexcept {
    if (format == nullptr) {
        return;
    }
    if (args.empty()) {
        Assign(format);
        return;
    }
    const int length = FormatText(m_buffer, std::size(m_buffer), format, args);
    if (length < 0) {
        Assign("Error in LogMsg(*)"_w);
        return;
    }
    m_length = static_cast<std::size_t>(length);
    if (FitsInline(m_length)) {
        return;
    }
    try {
        m_text.resize(m_length);
        FormatText(m_text.data(), m_length + 1, format, args);
        m_inline = false;
    } catch (const std::exception&) {  // no memory, or beyond what a string holds
        Assign("Error in LogMsg(*)!"_w);
    }
}

void LogMsg::Assign(WideView text) noexcept {
    if (FitsInline(text.size())) {
        m_length = text.copy(m_buffer, text.size());
        return;
    }
    try {
        m_text = text;
        m_inline = false;
    } catch (const std::exception&) {
        Assign("Error in LogMsg(*)!"_w);
    }
}

}  // namespace Vx
