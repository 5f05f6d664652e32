// Where a conversion puts its result: a caller's buffer, or nowhere when only the size is asked for.
#pragma once

#include "platform/BaseTypes.h"

#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <limits>
#include <span>

namespace vx_text {

// Counts what it is given and writes it while it fits. What belongs together is put together, so that a buffer which is
// too small ends with a whole character. After the first thing that did not fit, nothing more is written.
template <typename Unit>
class Sink {
public:
    // Counts only.
    Sink() noexcept : m_buffer(nullptr), m_writable(0), m_capacity(std::numeric_limits<std::size_t>::max()) {}

    explicit Sink(std::span<Unit> buffer) noexcept
        : m_buffer(buffer.data()), m_writable(buffer.size()), m_capacity(buffer.size()) {}

    void Put(Unit unit) noexcept {
        if (m_count < m_writable) {
            m_buffer[m_count] = unit;
        }
        ++m_count;
    }

    void Put(std::span<const Unit> units) noexcept {
        if (m_count <= m_writable && units.size() <= m_writable - m_count) {
            std::memcpy(m_buffer + m_count, units.data(), units.size_bytes());
        }
        m_count += units.size();
    }

    void Put(std::initializer_list<Unit> units) noexcept { Put(std::span(units.begin(), units.size())); }

    // A run of characters below 0x80, one unit each: as many of them are written as fit.
    template <typename Source>
    void PutAscii(const Source* source, std::size_t count) noexcept {
        if (m_count < m_writable) {
            const std::size_t room = m_writable - m_count;
            Unit* const to = m_buffer + m_count;
            for (std::size_t i = 0, end = count < room ? count : room; i < end; ++i) {
                to[i] = static_cast<Unit>(source[i]);
            }
        }
        m_count += count;
    }

    [[nodiscard]] bool Overflowed() const noexcept { return m_count > m_capacity; }

    // Units put so far, those that did not fit included.
    [[nodiscard]] std::size_t Count() const noexcept { return m_count; }

private:
    Unit* m_buffer;          // not owned
    std::size_t m_writable;  // units that the buffer holds
    std::size_t m_capacity;  // the same, or no limit where nothing is written
    std::size_t m_count = 0;
};

using WideSink = Sink<WCHAR>;
using ByteSink = Sink<std::uint8_t>;

// Length of the run of characters below 0x80 at the beginning of `units`.
template <typename Unit>
[[nodiscard]] std::size_t AsciiRun(std::span<const Unit> units) noexcept {
    constexpr std::size_t kBlock = sizeof(std::uint64_t) / sizeof(Unit);
    constexpr std::uint64_t kNotAscii = sizeof(Unit) == 1 ? 0x8080808080808080 : 0xFF80FF80FF80FF80;
    std::size_t run = 0;
    for (; units.size() - run >= kBlock; run += kBlock) {
        std::uint64_t block = 0;
        std::memcpy(&block, units.data() + run, sizeof block);
        if ((block & kNotAscii) != 0) {
            break;
        }
    }
    while (run < units.size() && units[run] < 0x80) {
        ++run;
    }
    return run;
}

}  // namespace vx_text
