#include "host/Progress.h"

#include "host/Summary.h"
#include "host/System.h"
#include "host/TerminalText.h"

#include <algorithm>
#include <cstdio>

namespace vxhost {

namespace {

constexpr std::chrono::milliseconds kPeriod(200);

// Before that a rate says nothing.
constexpr std::chrono::milliseconds kSettled(1000);

}  // namespace

Progress::Progress(Write write, std::size_t width)
    : m_write(std::move(write)), m_width(width), m_start(Clock::now()), m_next(m_start + kPeriod) {}

Progress Progress::OfStandardError() {
    if (!Console::IsTerminal(Stream::Error)) {
        return Progress(nullptr, 0);
    }
    const auto write = [](const std::string& text) {
        std::fwrite(text.data(), 1, text.size(), stderr);
        std::fflush(stderr);
    };
    return Progress(write, Console::Width(Stream::Error));
}

void Progress::EnterFolder(std::u16string_view path) {
    if (IsShown()) {
        m_folder = Printable(path);
    }
}

void Progress::CountItem(Clock::time_point now) {
    ++m_done;
    if (IsShown() && now >= m_next) {
        m_next = now + kPeriod;
        Show(now);
    }
}

void Progress::Clear() {
    if (m_isOnScreen) {
        m_write("\r\x1b[K");
        m_isOnScreen = false;
    }
}

void Progress::Show(Clock::time_point now) {
    m_write('\r' + Line(now) + "\x1b[K");
    m_isOnScreen = true;
}

std::string Progress::Line(Clock::time_point now) const {
    const auto elapsed = std::max(std::chrono::duration<double>(now - m_start), std::chrono::duration<double>(0.001));
    const double rate = static_cast<double>(m_done) / elapsed.count();
    std::string numbers = CountText(m_done);
    if (m_total >= m_done) {
        numbers += " of " + CountText(m_total);
    }
    numbers += " items, " + CountText(static_cast<std::uint64_t>(rate)) + "/s";
    if (m_total >= m_done && now - m_start >= kSettled && m_done > 0) {
        const double left = static_cast<double>(m_total - m_done) / rate;
        numbers += ", " + DurationText(std::chrono::seconds(static_cast<long long>(left + 0.5))) + " left";
    }
    // The last column stays free: a line that fills it makes some terminals begin the next one.
    const std::size_t room = m_width > numbers.size() + 3 ? m_width - numbers.size() - 3 : 0;
    return Fitted(Fitted(m_folder, room) + "  " + numbers, m_width > 1 ? m_width - 1 : 0);
}

}  // namespace vxhost
