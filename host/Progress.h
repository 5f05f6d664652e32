// The line on a terminal that says how far a run has come: the folder, items done of all, their rate, the time left. It
// overwrites itself a few times a second and is gone at the end; where there is no terminal nothing is ever written.
// One thread.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

namespace vxhost {

class Progress {
public:
    using Clock = std::chrono::steady_clock;
    using Write = std::function<void(const std::string& text)>;

    // `write` gets what is to be written to a terminal of `width` columns; empty when there is none.
    Progress(Write write, std::size_t width);
    ~Progress() { Clear(); }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    // Progress of standard error: silent when that is no terminal.
    static Progress OfStandardError();

    bool IsShown() const noexcept { return m_write != nullptr; }

    // More items than were expected so far.
    void Expect(std::uint64_t items) noexcept { m_total += items; }

    void EnterFolder(std::u16string_view path);
    void CountItem() { CountItem(Clock::now()); }
    void CountItem(Clock::time_point now);

    // Removes the line, so that something else can be written; the next item brings it back.
    void Clear();

private:
    void Show(Clock::time_point now);
    std::string Line(Clock::time_point now) const;

    Write m_write;
    std::size_t m_width;
    std::string m_folder;
    std::uint64_t m_done = 0;
    std::uint64_t m_total = 0;
    Clock::time_point m_start;
    Clock::time_point m_next;  // not before then is the line written again
    bool m_isOnScreen = false;
};

}  // namespace vxhost
