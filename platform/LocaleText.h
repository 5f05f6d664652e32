// Dates and times as text after a picture, in English. Any thread may call these.
//
// Pictures, for dates: d, dd (day), ddd, dddd (its name), M, MM, MMM, MMMM (month), y, yy (the year's last two digits),
// yyyy (all of them); for times: h, hh (12 hours), H, HH (24 hours), m, mm, s, ss, t, tt (A or P, AM or PM). A longer
// run of a letter is the longest of these. Text in single quotes stands for itself, with '' in it for a quote, and so
// does any other character. Linux: the era (g) is not provided and stands for itself.
#pragma once

#include "platform/BaseTypes.h"

#ifndef _WIN32

// Locales. Linux: these three are known, and all three are written in the invariant locale's English.
inline constexpr LCID LOCALE_USER_DEFAULT = 0x0400;
inline constexpr LCID LOCALE_INVARIANT = 0x007F;
inline constexpr LCID LOCALE_ENGLISH_US = 0x0409;

// Writes the date (the current local one when lpDate is null) after the picture, with a terminator. Gives the code
// units written, the terminator counted, or the number that there would be when cchDate is 0; 0 on failure:
//   ERROR_INSUFFICIENT_BUFFER  the text and its terminator do not fit
//   ERROR_INVALID_PARAMETER    a date that does not exist, a negative size, a size without a buffer. Linux: also an
//                              unknown locale, and a null picture, since the locale's own pictures are not provided
//   ERROR_INVALID_FLAGS        any flag. Linux: those that Windows takes together with a picture too
// wDayOfWeek is not looked at: the day's name follows from the date. Of the time, nothing is looked at.
int GetDateFormatW(LCID Locale, DWORD dwFlags, const SYSTEMTIME* lpDate, LPCWSTR lpFormat, LPWSTR lpDateStr,
                   int cchDate) noexcept;

// The same for the time of day, of which the date is not looked at.
int GetTimeFormatW(LCID Locale, DWORD dwFlags, const SYSTEMTIME* lpTime, LPCWSTR lpFormat, LPWSTR lpTimeStr,
                   int cchTime) noexcept;

#endif
