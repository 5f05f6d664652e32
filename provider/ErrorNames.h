// The names of result codes, for the log.
#pragma once

#include "platform/BaseTypes.h"

// The symbol of a result code as text, such as "MAPI_E_NOT_FOUND": the codes of MAPI, of structured storage and a few
// of COM, 132 in all. Any other value, 0 among them, gives "0x" and eight upper-case hexadecimal digits.
//
// Never null. A symbol's text lives as long as the program. The text of an unknown code stands in one buffer, which
// the next unknown code overwrites; each thread has its own such buffer, so that two threads that report at the same
// time do not mix their texts.
const WCHAR* ErrorNameFromErrorCode(HRESULT hr);
