#include "host/Times.h"

#include <array>
#include <charconv>
#include <chrono>
#include <cstdio>

namespace vxhost {

namespace {

constexpr std::int64_t kTicksPerSecond = 10'000'000;
constexpr std::int64_t kSecondsPerDay = 86'400;
constexpr std::int64_t kUnixEpoch = 116'444'736'000'000'000;  // 1970-01-01
constexpr std::int64_t kEnd = 2'650'467'744'000'000'000;      // 10000-01-01
constexpr std::size_t kFewestTickDigits = 12;                 // fewer are no moment that a mailbox knows

constexpr bool IsDigit(char c) noexcept {
    return c >= '0' && c <= '9';
}

// Takes a text from its front.
class Reader {
public:
    explicit Reader(std::string_view text) : m_text(text) {}

    bool AtEnd() const noexcept { return m_text.empty(); }

    bool Take(char c) noexcept {
        if (m_text.empty() || m_text.front() != c) {
            return false;
        }
        m_text.remove_prefix(1);
        return true;
    }

    // Exactly that many digits.
    bool TakeNumber(std::size_t digits, int& number) noexcept {
        number = 0;
        for (std::size_t i = 0; i < digits; ++i) {
            if (m_text.empty() || !IsDigit(m_text.front())) {
                return false;
            }
            number = number * 10 + (m_text.front() - '0');
            m_text.remove_prefix(1);
        }
        return true;
    }

    // The digits behind a decimal point, as ticks; those below a tick are dropped. At least one.
    bool TakeFraction(std::int64_t& ticks) noexcept {
        std::int64_t unit = kTicksPerSecond;
        bool any = false;
        for (ticks = 0; !m_text.empty() && IsDigit(m_text.front()); any = true) {
            unit /= 10;
            ticks += unit * (m_text.front() - '0');
            m_text.remove_prefix(1);
        }
        return any;
    }

private:
    std::string_view m_text;
};

bool TakeDate(Reader& reader, std::int64_t& ticks) {
    int year = 0;
    int month = 0;
    int day = 0;
    if (!reader.TakeNumber(4, year) || !reader.Take('-') || !reader.TakeNumber(2, month) || !reader.Take('-')
        || !reader.TakeNumber(2, day)) {
        return false;
    }
    const std::chrono::year_month_day date(std::chrono::year(year), std::chrono::month(static_cast<unsigned>(month)),
                                           std::chrono::day(static_cast<unsigned>(day)));
    if (!date.ok()) {
        return false;
    }
    ticks = std::chrono::sys_days(date).time_since_epoch().count() * kSecondsPerDay * kTicksPerSecond + kUnixEpoch;
    return true;
}

// Hours and minutes, with or without a colon between them.
bool TakeClock(Reader& reader, bool needsColon, int& hours, int& minutes) {
    return reader.TakeNumber(2, hours) && (reader.Take(':') || !needsColon) && reader.TakeNumber(2, minutes)
           && hours < 24 && minutes < 60;
}

bool TakeTimeOfDay(Reader& reader, std::int64_t& ticks) {
    int hours = 0;
    int minutes = 0;
    int seconds = 0;
    std::int64_t fraction = 0;
    if (!TakeClock(reader, true, hours, minutes)) {
        return false;
    }
    if (reader.Take(':')) {
        if (!reader.TakeNumber(2, seconds) || seconds > 59) {
            return false;
        }
        if (reader.Take('.') && !reader.TakeFraction(fraction)) {
            return false;
        }
    }
    ticks += (std::int64_t{hours} * 3600 + minutes * 60 + seconds) * kTicksPerSecond + fraction;
    return true;
}

bool TakeZone(Reader& reader, std::int64_t& ticks) {
    if (reader.AtEnd() || reader.Take('Z') || reader.Take('z')) {
        return true;
    }
    const bool isEast = reader.Take('+');
    int hours = 0;
    int minutes = 0;
    if ((!isEast && !reader.Take('-')) || !TakeClock(reader, false, hours, minutes)) {
        return false;
    }
    const std::int64_t distance = (std::int64_t{hours} * 3600 + minutes * 60) * kTicksPerSecond;
    ticks += isEast ? -distance : distance;
    return true;
}

std::optional<std::int64_t> ParseDate(std::string_view text) {
    Reader reader(text);
    std::int64_t ticks = 0;
    if (!TakeDate(reader, ticks)) {
        return std::nullopt;
    }
    if (!reader.AtEnd()) {
        const bool hasMark = reader.Take('T') || reader.Take('t') || reader.Take(' ');
        if (!hasMark || !TakeTimeOfDay(reader, ticks) || !TakeZone(reader, ticks) || !reader.AtEnd()) {
            return std::nullopt;
        }
    }
    return ticks;
}

// A number of units before now.
std::optional<std::int64_t> ParseAge(std::int64_t count, char unit, std::int64_t now) {
    std::int64_t seconds = 0;
    switch (unit) {
        case 'm': seconds = 60; break;
        case 'h': seconds = 3600; break;
        case 'd': seconds = kSecondsPerDay; break;
        case 'w': seconds = 7 * kSecondsPerDay; break;
        default: return std::nullopt;
    }
    if (count > now / kTicksPerSecond / seconds) {
        return std::nullopt;
    }
    return now - count * seconds * kTicksPerSecond;
}

}  // namespace

std::optional<std::int64_t> ParseTime(std::string_view text, std::int64_t now) {
    std::int64_t number = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    std::optional<std::int64_t> ticks;
    if (error == std::errc() && stop == end && text.size() >= kFewestTickDigits) {
        ticks = number;
    } else if (error == std::errc() && stop + 1 == end && number >= 0) {
        ticks = ParseAge(number, *stop, now);
    } else {
        ticks = ParseDate(text);
    }
    return ticks && *ticks >= 0 && *ticks < kEnd ? ticks : std::nullopt;
}

std::string TimeText(std::int64_t ticks) {
    if (ticks <= 0 || ticks >= kEnd) {
        return {};
    }
    // Floored, so that times before 1970 come out right.
    const std::chrono::sys_seconds moment(std::chrono::seconds(ticks / kTicksPerSecond - kUnixEpoch / kTicksPerSecond));
    const auto day = std::chrono::floor<std::chrono::days>(moment);
    const std::chrono::year_month_day date(day);
    const std::chrono::hh_mm_ss clock(moment - day);
    std::array<char, 48> text;
    const int length = std::snprintf(
        text.data(), text.size(), "%04d-%02u-%02u %02d:%02d:%02d", static_cast<int>(date.year()),
        static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()), static_cast<int>(clock.hours().count()),
        static_cast<int>(clock.minutes().count()), static_cast<int>(clock.seconds().count()));
    return std::string(text.data(), static_cast<std::size_t>(length));
}

std::int64_t CurrentTime() {
    using Ticks = std::chrono::duration<std::int64_t, std::ratio<1, kTicksPerSecond>>;
    return std::chrono::duration_cast<Ticks>(std::chrono::system_clock::now().time_since_epoch()).count() + kUnixEpoch;
}

std::int64_t TicksOfMilliseconds(std::int64_t milliseconds) noexcept {
    constexpr std::int64_t kTicksPerMillisecond = kTicksPerSecond / 1000;
    constexpr std::int64_t kMost = (kEnd - kUnixEpoch) / kTicksPerMillisecond;
    if (milliseconds == 0 || milliseconds > kMost || milliseconds < -kMost) {
        return 0;
    }
    return milliseconds * kTicksPerMillisecond + kUnixEpoch;
}

}  // namespace vxhost
