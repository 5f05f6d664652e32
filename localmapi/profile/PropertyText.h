// One property as a line of a profile's file, "PR_DISPLAY_NAME = unicode:"Archive"", and back. Any thread.
//
// The name is the property's published one, or its id ("0x6748") where the table of names has none of that type. The
// value is what stands behind its type:
//     short long i8 currency systime   a number; systime counts 100 ns steps from 1601, currency 1/10000
//     float double apptime             a number
//     boolean                          true or false
//     unicode string8                  a text in quotation marks, UTF-8 like the whole file; string8 is in the system's
//                                      ANSI page for those who read the property
//     binary clsid                     two hexadecimal digits a byte; clsid has 16 bytes
// A type with "[]" behind it has any number of them, separated by commas. In texts \" \\ \n \r \t and \uXXXX (a UTF-16
// unit) stand for characters, and \xXX, in string8 only, for a byte.
#pragma once

#include "localmapi/props/MapiMemory.h"
#include "mapi/MapiTypes.h"
#include "platform/WideText.h"

#include <optional>
#include <string>
#include <string_view>

namespace localmapi::profile {

// Without a line's end. Empty for a value of a type that files do not keep: objects, errors, restrictions.
std::string PropertyLine(const SPropValue& value);

// What PropertyLine wrote; what it points at lies in `memory`. Blanks around names, values and signs do not count.
// Nothing when the line is none, with what is wrong with it in `reason`.
std::optional<SPropValue> ParseProperty(std::string_view line, ValueMemory& memory, std::string& reason);

}  // namespace localmapi::profile
