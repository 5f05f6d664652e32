// Values, rows and restrictions as short texts, so that a test's expectation can be read in its row.
//   7            a number, PT_LONG unless the type is told behind it: 7:I2
//   w'text'      PT_UNICODE          a'text'    PT_STRING8
//   x0102        PT_BINARY           g00020D0B  PT_CLSID, its first number
//   t123         PT_SYSTIME          !0F        PT_ERROR, the code's last byte
//   true, null, object              [1,2]      several values
#pragma once

#include "mapi/MapiRestrictions.h"
#include "mapi/MapiTypes.h"

#include <span>
#include <string>

namespace localmapi::testing {

std::string TextOf(const SPropValue& value);

// The values with '|' between them.
std::string TextOf(std::span<const SPropValue> values);
std::string TextOf(const SRow& row);

// A node and those below it: and(...), or(...), not(...), prop(3,0E1D001F,w'x') and so on.
std::string TextOf(const SRestriction& restriction);

}  // namespace localmapi::testing
