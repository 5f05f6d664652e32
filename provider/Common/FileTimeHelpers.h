// FILETIMEs as single values. 0 stands for "no time".
#pragma once

#include "platform/BaseTypes.h"

#include <cstdint>

constexpr std::uint64_t FileTimeTicks(const FILETIME& time) noexcept {
    return (std::uint64_t{time.dwHighDateTime} << 32) | time.dwLowDateTime;
}

constexpr bool IsZero(const FILETIME& time) noexcept {
    return FileTimeTicks(time) == 0;
}

constexpr FILETIME FTZero() noexcept {
    return FILETIME{0, 0};
}

constexpr void CleanDateTimeValue(FILETIME& time) noexcept {
    time = FTZero();
}

constexpr bool Equal(const FILETIME& first, const FILETIME& second) noexcept {
    return FileTimeTicks(first) == FileTimeTicks(second);
}

// -1 when the first is the earlier one, otherwise 0: never positive, so it tells "before" and nothing else.
constexpr int Compare(const FILETIME& first, const FILETIME& second) noexcept {
    return FileTimeTicks(first) < FileTimeTicks(second) ? -1 : 0;
}
