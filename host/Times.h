// Times as people write and read them, and as the provider has them: ticks of 100 ns since 1601-01-01 UTC. Any thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vxhost {

// A moment that was written as
//   2026-03-01, 2026-03-01T14:30, 2026-03-01T14:30:05.25   in UTC, or with Z, +02:00 or -0800 behind the time;
//                                                          a blank may stand for the T
//   30m, 12h, 7d, 2w                                       that long before `now`
//   133800000000000000                                     ticks, as records have them
// Nothing for any other text, and for a moment before 1601 or after the year 9999.
std::optional<std::int64_t> ParseTime(std::string_view text, std::int64_t now);

// "2026-03-01 14:30:05", UTC; empty for 0 and for what is out of the range.
std::string TimeText(std::int64_t ticks);

std::int64_t CurrentTime();

// The ticks of a time in milliseconds since 1970, the records' other form; 0 stays 0.
std::int64_t TicksOfMilliseconds(std::int64_t milliseconds) noexcept;

}  // namespace vxhost
