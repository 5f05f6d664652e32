// FILETIME and SYSTEMTIME: from one to the other, from UTC to local time, and the time now.
//
// Dates are of the Gregorian calendar. A FILETIME counts from 1601-01-01; those with the highest bit set are invalid,
// so the last one is in September 30828, while a SYSTEMTIME that is given ends with the year 30827. Any thread may call
// any of these. Linux: local time is that of TZ, else of the machine; TZ must not be set while another thread converts.
//
// Two kinds of local time exist, and they differ by an hour for half of the year in most zones:
// FileTimeToLocalFileTime and its reverse use the bias of this moment for every date, the others the bias that the
// zone's rules give for the date converted.
#pragma once

#include "platform/BaseTypes.h"

#ifndef _WIN32

struct TIME_ZONE_INFORMATION;  // Linux: no zone but the current one, which a null pointer names

// UTC calendar time of a FILETIME, the day of the week included. FALSE with ERROR_INVALID_PARAMETER for a FILETIME with
// the highest bit set.
BOOL FileTimeToSystemTime(const FILETIME* lpFileTime, SYSTEMTIME* lpSystemTime) noexcept;

// The reverse; wDayOfWeek is not looked at. FALSE with ERROR_INVALID_PARAMETER for a date or time that does not exist.
BOOL SystemTimeToFileTime(const SYSTEMTIME* lpSystemTime, FILETIME* lpFileTime) noexcept;

// Adds, or takes away, the present distance between local time and UTC, whatever the date.
// FALSE with ERROR_INVALID_PARAMETER when the result is no FILETIME.
BOOL FileTimeToLocalFileTime(const FILETIME* lpFileTime, FILETIME* lpLocalFileTime) noexcept;
BOOL LocalFileTimeToFileTime(const FILETIME* lpLocalFileTime, FILETIME* lpFileTime) noexcept;

// Local calendar time of a UTC one, by the rules of the zone at that date. lpTimeZoneInformation is null.
// FALSE with ERROR_INVALID_PARAMETER for a time that does not exist, or a result out of range.
// Linux: the zone's history is used; Windows applies this year's rules to every year.
BOOL SystemTimeToTzSpecificLocalTime(const TIME_ZONE_INFORMATION* lpTimeZoneInformation,
                                     const SYSTEMTIME* lpUniversalTime, SYSTEMTIME* lpLocalTime) noexcept;

// The reverse. An hour that a change of clocks repeats is taken as the first of the two; in an hour that it skips, the
// bias from behind the change holds.
BOOL TzSpecificLocalTimeToSystemTime(const TIME_ZONE_INFORMATION* lpTimeZoneInformation, const SYSTEMTIME* lpLocalTime,
                                     SYSTEMTIME* lpUniversalTime) noexcept;

// Now, in UTC and in local time.
void GetSystemTimeAsFileTime(FILETIME* lpSystemTimeAsFileTime) noexcept;
void GetSystemTime(SYSTEMTIME* lpSystemTime) noexcept;
void GetLocalTime(SYSTEMTIME* lpSystemTime) noexcept;

// -1, 0 or 1 as the first is earlier than, equal to or later than the second, compared as unsigned 64-bit values.
LONG CompareFileTime(const FILETIME* lpFileTime1, const FILETIME* lpFileTime2) noexcept;

#endif
