// The words of a call's text.
#pragma once

#include "mapi/MapiRestrictions.h"
#include "mapi/MapiTypes.h"
#include "testing/scripted_mapi/Values.h"

#include <concepts>
#include <initializer_list>
#include <span>
#include <string>

namespace scripted_mapi {

// Eight upper-case digits: flags, tags, results.
std::string Hex8(ULONG number);
std::string Hex(std::span<const BYTE> bytes);

// "null", "IMAPIFolder", or the identifier's first number for one that is not known here.
std::string InterfaceName(const IID* iid);

// "[3001001F,0FFF0102]"; "null".
std::string TagsText(const SPropTagArray* tags);

// "3001001F=Inbox": numbers decimal, booleans 0 and 1, times in ticks, bytes hexadecimal, errors eight digits.
std::string ValueText(const Value& value);
std::string ValuesText(ULONG count, const SPropValue* properties);

// "null", "content(00000000,3D09001F=MSEMS)", "property(4,0FFF0102=0A)", "and(...,...)", "or(...)", or "other".
std::string RestrictionText(const SRestriction* restriction);

// "[+30080040,-3001001F]"; "null".
std::string SortText(const SSortOrderSet* order);

// A text of a call: wide or 8-bit, as the flag says. "null".
std::string CallerText(const void* text, bool isWide);

std::string EntryIdText(ULONG size, const void* entryId);
std::string UidText(const MAPIUID* uid);

// The arguments with commas between them: texts as they are, numbers decimal.
inline std::string Word(const std::string& text) {
    return text;
}
inline std::string Word(const char* text) {
    return text;
}
template <std::integral Number>
std::string Word(Number number) {
    return std::to_string(number);
}

// "name(first,second)".
std::string JoinedCall(const std::string& name, std::initializer_list<std::string> words);

template <typename... Arguments>
std::string CallText(const std::string& name, const Arguments&... arguments) {
    return JoinedCall(name, {Word(arguments)...});
}

}  // namespace scripted_mapi
