// Reporting of results: one log entry at level E per report, with the text of the failure, the code's name and the
// place in the source. Nothing here shows a dialog, in spite of a name below. Any thread.
//
// `file` and `function` are narrow, zero-terminated texts, as __func__ is; null prints as "(null)".
#pragma once

#include "platform/BaseTypes.h"

// Writes the report
//
//   Error: <text>             "Warning: <text>" when `hr` is 0 or positive
//   Code: <name> == 0x<hr>    name as ErrorNameFromErrorCode gives it, eight upper-case digits
//   Function <function>
//   File <file>
//   Line <line>
//
// The text is the system's for the error number `resourceId` with `fromSystem`, otherwise the string resource of that
// number. This library carries no string resources, so the latter is always empty; so is the text of a number that the
// system does not know. `isError` changes nothing.
void LogError(HRESULT hr, UINT resourceId, const char* file, int line, const char* function, bool isError,
              bool fromSystem);

// True for 0 alone. Every other value is reported, a positive success code too, and gives false.
bool CheckHResFn(HRESULT hr, const char* function, UINT resourceId, const char* file, int line);

// Reports what is not 0. True for 0 and for a positive success code.
bool WarnHResFn(HRESULT hr, const char* function, UINT resourceId, const char* file, int line);

// Reports the calling thread's last error with the system's text for it, and gives it as an HRESULT; a last error of 0
// is no error: nothing is reported and the result is 0.
HRESULT DialogOnWin32Error(const char* file, int line, const char* function);
HRESULT WarnOnWin32Error(const char* file, int line, const char* function);
