#include "platform/LocaleText.h"

#include "platform/FileTime.h"
#include "platform/LastError.h"
#include "platform/WideText.h"
#include "platform/linux/text/Sink.h"

#include <algorithm>
#include <array>
#include <climits>
#include <string_view>

namespace {

using vx_text::WideSink;

constexpr std::string_view kDays[] = {"Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday"};
constexpr std::string_view kMonths[] = {"January", "February", "March",     "April",   "May",      "June",
                                        "July",    "August",   "September", "October", "November", "December"};
constexpr std::size_t kShortName = 3;

int Fail(DWORD error) noexcept {
    SetLastError(error);
    return 0;
}

void PutNumber(unsigned value, std::size_t minimumDigits, WideSink& out) noexcept {
    std::array<char, 10> digits{};
    std::size_t first = digits.size();
    do {
        digits[--first] = static_cast<char>('0' + value % 10);
        value /= 10;
    } while (value != 0 || digits.size() - first < minimumDigits);
    out.PutAscii(digits.data() + first, digits.size() - first);
}

void PutName(std::string_view name, std::size_t letters, WideSink& out) noexcept {
    const std::string_view shown = letters > kShortName ? name : name.substr(0, kShortName);
    out.PutAscii(shown.data(), shown.size());
}

// One or two letters ask for a number, more for a name.
void PutNumberOrName(unsigned value, std::string_view name, std::size_t letters, WideSink& out) noexcept {
    if (letters < kShortName) {
        PutNumber(value, letters, out);
    } else {
        PutName(name, letters, out);
    }
}

// Writes what a run of `count` times `letter` stands for in a picture for dates; false when it stands for itself.
bool PutDateField(WCHAR letter, std::size_t count, const SYSTEMTIME& date, WideSink& out) noexcept {
    switch (letter) {
        case u'd': PutNumberOrName(date.wDay, kDays[date.wDayOfWeek], count, out); return true;
        case u'M': PutNumberOrName(date.wMonth, kMonths[date.wMonth - 1], count, out); return true;
        case u'y':
            if (count < 3) {
                PutNumber(date.wYear % 100u, count, out);
            } else {
                PutNumber(date.wYear, 4, out);
            }
            return true;
        default: return false;
    }
}

bool PutTimeField(WCHAR letter, std::size_t count, const SYSTEMTIME& time, WideSink& out) noexcept {
    const std::size_t digits = std::min<std::size_t>(count, 2);
    switch (letter) {
        case u'h': PutNumber((time.wHour + 11u) % 12u + 1u, digits, out); return true;
        case u'H': PutNumber(time.wHour, digits, out); return true;
        case u'm': PutNumber(time.wMinute, digits, out); return true;
        case u's': PutNumber(time.wSecond, digits, out); return true;
        case u't': out.PutAscii(time.wHour < 12 ? "AM" : "PM", digits); return true;
        default: return false;
    }
}

using PutField = bool (*)(WCHAR letter, std::size_t count, const SYSTEMTIME& time, WideSink& out) noexcept;

// Writes the quoted text that `picture` begins with, and gives how much of the picture that was. A quote that is left
// open ends with the picture.
std::size_t PutQuoted(WideView picture, WideSink& out) noexcept {
    for (std::size_t i = 1; i < picture.size(); ++i) {
        if (picture[i] == u'\'') {
            if (i + 1 == picture.size() || picture[i + 1] != u'\'') {
                return i + 1;
            }
            ++i;
        }
        out.Put(picture[i]);
    }
    return picture.size();
}

int Write(WideView picture, const SYSTEMTIME& time, PutField putField, WideSink& out) noexcept {
    while (!picture.empty()) {
        if (picture[0] == u'\'') {
            picture.remove_prefix(PutQuoted(picture, out));
            continue;
        }
        const std::size_t run = std::min(picture.find_first_not_of(picture[0]), picture.size());
        if (!putField(picture[0], run, time, out)) {
            out.Put(std::span(picture.data(), run));
        }
        picture.remove_prefix(run);
    }
    out.Put(u'\0');
    if (out.Overflowed() || out.Count() > INT_MAX) {
        return Fail(ERROR_INSUFFICIENT_BUFFER);
    }
    return static_cast<int>(out.Count());
}

// What both functions check before the time is looked at; 0, or the error.
DWORD CheckArguments(LCID locale, DWORD flags, LPCWSTR picture, LPCWSTR buffer, int size) noexcept {
    const bool isKnown = locale == LOCALE_USER_DEFAULT || locale == LOCALE_INVARIANT || locale == LOCALE_ENGLISH_US;
    if (!isKnown || picture == nullptr || size < 0 || (buffer == nullptr && size != 0)) {
        return ERROR_INVALID_PARAMETER;
    }
    return flags == 0 ? ERROR_SUCCESS : ERROR_INVALID_FLAGS;
}

// The given time with the fields that are not to be looked at replaced by valid ones; now, when there is none.
SYSTEMTIME Select(const SYSTEMTIME* given, bool dateCounts) noexcept {
    SYSTEMTIME time{};
    if (given == nullptr) {
        GetLocalTime(&time);
    } else if (dateCounts) {
        time.wYear = given->wYear;
        time.wMonth = given->wMonth;
        time.wDay = given->wDay;
    } else {
        time = *given;
        time.wYear = 2000;
        time.wMonth = 1;
        time.wDay = 1;
    }
    return time;
}

int Format(LCID locale, DWORD flags, const SYSTEMTIME* given, bool isDate, LPCWSTR picture, LPWSTR buffer,
           int size) noexcept {
    const DWORD error = CheckArguments(locale, flags, picture, buffer, size);
    if (error != ERROR_SUCCESS) {
        return Fail(error);
    }
    // There and back: fails for what does not exist, and finds the day of the week.
    SYSTEMTIME time = Select(given, isDate);
    FILETIME checked{};
    if (!SystemTimeToFileTime(&time, &checked) || !FileTimeToSystemTime(&checked, &time)) {
        return 0;
    }
    WideSink out = size == 0 ? WideSink() : WideSink({buffer, static_cast<std::size_t>(size)});
    return Write(picture, time, isDate ? PutDateField : PutTimeField, out);
}

}  // namespace

int GetDateFormatW(LCID Locale, DWORD dwFlags, const SYSTEMTIME* lpDate, LPCWSTR lpFormat, LPWSTR lpDateStr,
                   int cchDate) noexcept {
    return Format(Locale, dwFlags, lpDate, true, lpFormat, lpDateStr, cchDate);
}

int GetTimeFormatW(LCID Locale, DWORD dwFlags, const SYSTEMTIME* lpTime, LPCWSTR lpFormat, LPWSTR lpTimeStr,
                   int cchTime) noexcept {
    return Format(Locale, dwFlags, lpTime, false, lpFormat, lpTimeStr, cchTime);
}
