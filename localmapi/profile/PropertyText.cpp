#include "localmapi/profile/PropertyText.h"

#include "localmapi/profile/TextEscapes.h"
#include "localmapi/props/Values.h"
#include "mapi/PropTags.h"
#include "platform/CodePage.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <iterator>
#include <limits>
#include <unordered_map>
#include <vector>

namespace localmapi::profile {

namespace {

// ---- Names of properties --------------------------------------------------------------------------------------------

struct NameRow {
    std::string_view name;
    ULONG tag;
};

constexpr NameRow kNameRows[] = {
#define VX_TAG(name, type, id) {#name, PROP_TAG(type, id)},
#define VX_TEXT_TAG(name, id)  {#name, PROP_TAG(PT_UNICODE, id)},
#define VX_TEXTS_TAG(name, id) {#name, PROP_TAG(PT_MV_UNICODE, id)},
#include "mapi/PropTagRows.inc"
#undef VX_TAG
#undef VX_TEXT_TAG
#undef VX_TEXTS_TAG
};

// A text's name stands for both widths of it.
constexpr ULONG InOneWidth(ULONG tag) noexcept {
    return IsTextType(PROP_TYPE(tag)) ? CHANGE_PROP_TYPE(tag, PT_UNICODE | (PROP_TYPE(tag) & MV_FLAG)) : tag;
}

std::string NameOf(ULONG tag) {
    static const auto names = [] {
        std::unordered_map<ULONG, std::string_view> map;
        for (const NameRow& row : kNameRows) {
            map.emplace(InOneWidth(row.tag), row.name);  // of several names of a property, the first
        }
        return map;
    }();
    const auto found = names.find(InOneWidth(tag));
    if (found != names.end()) {
        return std::string(found->second);
    }
    static constexpr int kIdDigits = 4;
    std::string id = "0x";
    for (int digit = kIdDigits - 1; digit >= 0; --digit) {
        id += HexDigit(PROP_ID(tag) >> (4 * digit));
    }
    return id;
}

// 0 for what is neither a known name nor the number of an id.
ULONG IdOf(std::string_view name) {
    if (name.starts_with("0x") || name.starts_with("0X")) {
        ULONG id = 0;
        const char* end = name.data() + name.size();
        const auto parsed = std::from_chars(name.data() + 2, end, id, 16);
        return parsed.ec == std::errc() && parsed.ptr == end && id < PROP_ID_INVALID ? id : 0;
    }
    static const auto ids = [] {
        std::unordered_map<std::string_view, ULONG> map;
        for (const NameRow& row : kNameRows) {
            map.emplace(row.name, PROP_ID(row.tag));
        }
        return map;
    }();
    const auto found = ids.find(name);
    return found == ids.end() ? 0 : found->second;
}

// ---- Types ----------------------------------------------------------------------------------------------------------

struct TypeRow {
    ULONG type;
    std::string_view name;
};

constexpr TypeRow kTypeRows[] = {
    {PT_SHORT, "short"},       {PT_LONG, "long"},       {PT_FLOAT, "float"},     {PT_DOUBLE, "double"},
    {PT_CURRENCY, "currency"}, {PT_APPTIME, "apptime"}, {PT_BOOLEAN, "boolean"}, {PT_I8, "i8"},
    {PT_STRING8, "string8"},   {PT_UNICODE, "unicode"}, {PT_SYSTIME, "systime"}, {PT_CLSID, "clsid"},
    {PT_BINARY, "binary"},
};

const TypeRow* RowOf(ULONG type) noexcept {
    const auto* const row = std::ranges::find(kTypeRows, type, &TypeRow::type);
    return row == std::end(kTypeRows) ? nullptr : row;
}

constexpr std::string_view kMany = "[]";

// Calls `body(count, elements, member)` with the array of a value of several and with the member of a value of one.
// Gives what it gives, or `otherwise` for a type that has no arrays.
template <class Result, class Body>
Result WithElements(ULONG type, SPropValue::Contents& many, SPropValue::Contents& one, Result otherwise, Body body) {
    switch (type) {
        case PT_SHORT: return body(many.MVi.cValues, many.MVi.lpi, one.i);
        case PT_LONG: return body(many.MVl.cValues, many.MVl.lpl, one.l);
        case PT_FLOAT: return body(many.MVflt.cValues, many.MVflt.lpflt, one.flt);
        case PT_DOUBLE: return body(many.MVdbl.cValues, many.MVdbl.lpdbl, one.dbl);
        case PT_CURRENCY: return body(many.MVcur.cValues, many.MVcur.lpcur, one.cur);
        case PT_APPTIME: return body(many.MVat.cValues, many.MVat.lpat, one.at);
        case PT_SYSTIME: return body(many.MVft.cValues, many.MVft.lpft, one.ft);
        case PT_I8: return body(many.MVli.cValues, many.MVli.lpli, one.li);
        case PT_BINARY: return body(many.MVbin.cValues, many.MVbin.lpbin, one.bin);
        case PT_STRING8: return body(many.MVszA.cValues, many.MVszA.lppszA, one.lpszA);
        case PT_UNICODE: return body(many.MVszW.cValues, many.MVszW.lppszW, one.lpszW);
        case PT_CLSID: return body(many.MVguid.cValues, many.MVguid.lpguid, one.lpguid);
        default: return otherwise;
    }
}

// An element as the member that stands for one value, which for a GUID points at it.
template <class Element>
Element AsOne(Element& element) {
    return element;
}
GUID* AsOne(GUID& element) {
    return &element;
}

template <class Element>
void Store(const Element& one, Element& element) {
    element = one;
}
void Store(GUID* const& one, GUID& element) {
    element = *one;
}

// ---- Writing --------------------------------------------------------------------------------------------------------

template <class Number>
std::string NumberText(Number number) {
    char digits[64];  // more than the shortest form of any number takes
    return {digits, std::to_chars(digits, digits + sizeof(digits), number).ptr};
}

std::int64_t TicksOf(const FILETIME& time) noexcept {
    return static_cast<std::int64_t>(std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime);
}

std::string ValueText(ULONG type, const SPropValue::Contents& value) {
    switch (type) {
        case PT_SHORT: return NumberText(value.i);
        case PT_LONG: return NumberText(value.l);
        case PT_FLOAT: return NumberText(value.flt);
        case PT_DOUBLE: return NumberText(value.dbl);
        case PT_CURRENCY: return NumberText(value.cur.int64);
        case PT_APPTIME: return NumberText(value.at);
        case PT_BOOLEAN: return value.b != 0 ? "true" : "false";
        case PT_I8: return NumberText(value.li.QuadPart);
        case PT_SYSTIME: return NumberText(TicksOf(value.ft));
        case PT_STRING8: return QuotedBytes(value.lpszA);
        case PT_UNICODE: return Quoted(value.lpszW);
        case PT_CLSID: return HexText({reinterpret_cast<const std::byte*>(value.lpguid), sizeof(GUID)});
        default: return HexText(BytesOf(value.bin));
    }
}

std::string ListText(ULONG type, SPropValue::Contents many) {
    SPropValue::Contents one{};
    std::string text;
    WithElements(type, many, one, 0, [&](ULONG count, auto* elements, auto& member) {
        for (ULONG i = 0; i < count; ++i) {
            member = AsOne(elements[i]);
            text += (i == 0 ? "" : ", ") + ValueText(type, one);
        }
        return 0;
    });
    return text;
}

// ---- Reading --------------------------------------------------------------------------------------------------------

// False, for the reason given.
bool Refuse(std::string& reason, std::string_view what) {
    reason = what;
    return false;
}

template <class Number>
bool ParseInteger(std::string_view text, Number& number, std::string& reason) {
    const bool isHex = text.starts_with("0x");
    const char* end = text.data() + text.size();
    std::int64_t wide = 0;
    std::uint64_t bits = 0;
    const auto parsed =
        isHex ? std::from_chars(text.data() + 2, end, bits, 16) : std::from_chars(text.data(), end, wide);
    if (parsed.ec != std::errc() || parsed.ptr != end || text.empty()) {
        return Refuse(reason, "the value is no whole number");
    }
    // Bits in hexadecimal may fill the sign's place.
    const bool fits = isHex ? bits <= std::numeric_limits<std::make_unsigned_t<Number>>::max()
                            : wide >= std::numeric_limits<Number>::min() && wide <= std::numeric_limits<Number>::max();
    number = isHex ? static_cast<Number>(bits) : static_cast<Number>(wide);
    return fits || Refuse(reason, "the number is too large for its type");
}

template <class Number>
bool ParseFloating(std::string_view text, Number& number, std::string& reason) {
    const char* end = text.data() + text.size();
    const auto parsed = std::from_chars(text.data(), end, number);
    return (parsed.ec == std::errc() && parsed.ptr == end) || Refuse(reason, "the value is no number");
}

bool ParseBoolean(std::string_view text, USHORT& truth, std::string& reason) {
    truth = text == "true" ? 1 : 0;
    return text == "true" || text == "false" || Refuse(reason, "the value is neither true nor false");
}

bool ParseTime(std::string_view text, FILETIME& time, std::string& reason) {
    std::int64_t ticks = 0;
    const bool parsed = ParseInteger(text, ticks, reason);
    time.dwLowDateTime = static_cast<DWORD>(ticks);
    time.dwHighDateTime = static_cast<DWORD>(static_cast<std::uint64_t>(ticks) >> 32);
    return parsed;
}

bool ParseBytes(ULONG type, std::string_view text, ValueMemory& memory, SPropValue::Contents& value,
                std::string& reason) {
    const auto bytes = ParseHex(text);
    if (!bytes || (type == PT_CLSID && bytes->size() != sizeof(GUID))) {
        return Refuse(reason, type == PT_CLSID ? "the value is not 32 hexadecimal digits"
                                               : "the value is not pairs of hexadecimal digits");
    }
    if (type == PT_BINARY) {
        value = BinaryValue(PROP_TAG(type, 0), *bytes, memory).Value;
    } else {
        value.lpguid = memory.Array<GUID>(1);
        std::memcpy(value.lpguid, bytes->data(), sizeof(GUID));
    }
    return true;
}

bool ParseText(ULONG type, std::string_view text, ValueMemory& memory, SPropValue::Contents& value,
               std::string& reason) {
    if (type == PT_UNICODE) {
        const auto wide = ParseQuoted(text, reason);
        if (wide) {
            value = WideValue(PROP_TAG(type, 0), *wide, memory).Value;
        }
        return wide.has_value();
    }
    const auto narrow = ParseQuotedBytes(text, reason);
    if (narrow) {
        value = NarrowValue(PROP_TAG(type, 0), *narrow, memory).Value;
    }
    return narrow.has_value();
}

bool ParseValue(ULONG type, std::string_view text, ValueMemory& memory, SPropValue::Contents& value,
                std::string& reason) {
    switch (type) {
        case PT_SHORT: return ParseInteger(text, value.i, reason);
        case PT_LONG: return ParseInteger(text, value.l, reason);
        case PT_FLOAT: return ParseFloating(text, value.flt, reason);
        case PT_DOUBLE: return ParseFloating(text, value.dbl, reason);
        case PT_CURRENCY: return ParseInteger(text, value.cur.int64, reason);
        case PT_APPTIME: return ParseFloating(text, value.at, reason);
        case PT_BOOLEAN: return ParseBoolean(text, value.b, reason);
        case PT_I8: return ParseInteger(text, value.li.QuadPart, reason);
        case PT_SYSTIME: return ParseTime(text, value.ft, reason);
        case PT_STRING8:
        case PT_UNICODE: return ParseText(type, text, memory, value, reason);
        default: return ParseBytes(type, text, memory, value, reason);
    }
}

// The parts between commas that do not stand in quotation marks.
std::vector<std::string_view> SplitList(std::string_view text) {
    std::vector<std::string_view> parts;
    bool isQuoted = false;
    std::size_t begin = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (isQuoted && text[i] == '\\') {
            ++i;
        } else if (text[i] == '"') {
            isQuoted = !isQuoted;
        } else if (text[i] == ',' && !isQuoted) {
            parts.push_back(Trimmed(text.substr(begin, i - begin)));
            begin = i + 1;
        }
    }
    if (!parts.empty() || !Trimmed(text).empty()) {
        parts.push_back(Trimmed(text.substr(begin)));
    }
    return parts;
}

bool ParseList(ULONG type, std::string_view text, ValueMemory& memory, SPropValue::Contents& many,
               std::string& reason) {
    const std::vector<std::string_view> parts = SplitList(text);
    SPropValue::Contents one{};
    many = {};
    const auto parse = [&](ULONG& count, auto*& elements, auto& member) {
        count = static_cast<ULONG>(parts.size());
        elements = memory.Array<std::remove_reference_t<decltype(*elements)>>(parts.size());
        for (std::size_t i = 0; i < parts.size(); ++i) {
            if (!ParseValue(type, parts[i], memory, one, reason)) {
                return false;
            }
            Store(member, elements[i]);
        }
        return true;
    };
    return WithElements(type, many, one, false, parse) || (reason.empty() && Refuse(reason, "this type has no lists"));
}

}  // namespace

std::string PropertyLine(const SPropValue& value) {
    const ULONG type = PROP_TYPE(value.ulPropTag);
    const bool isList = (type & MV_FLAG) != 0;
    const TypeRow* row = RowOf(type & ~MV_FLAG);
    if (row == nullptr || (isList && row->type == PT_BOOLEAN)) {
        return {};
    }
    std::string line = NameOf(value.ulPropTag) + " = " + std::string(row->name);
    line += isList ? std::string(kMany) + ":" + ListText(row->type, value.Value) : ":" + ValueText(type, value.Value);
    return line;
}

std::optional<SPropValue> ParseProperty(std::string_view line, ValueMemory& memory, std::string& reason) {
    reason.clear();
    const std::size_t equals = line.find('=');
    const std::size_t colon = line.find(':', equals == std::string_view::npos ? 0 : equals);
    if (equals == std::string_view::npos || colon == std::string_view::npos) {
        reason = "the line is not of the form NAME = type:value";
        return std::nullopt;
    }
    const std::string_view name = Trimmed(line.substr(0, equals));
    std::string_view typeName = Trimmed(line.substr(equals + 1, colon - equals - 1));
    const std::string_view text = Trimmed(line.substr(colon + 1));
    const ULONG id = IdOf(name);
    if (id == 0) {
        reason = "no property is called " + std::string(name) + "; unknown ones are written by number, as 0x6748";
        return std::nullopt;
    }
    const bool isList = typeName.ends_with(kMany);
    typeName.remove_suffix(isList ? kMany.size() : 0);
    const auto* const row = std::ranges::find(kTypeRows, typeName, &TypeRow::name);
    if (row == std::end(kTypeRows)) {
        reason = "there is no type " + std::string(typeName);
        return std::nullopt;
    }
    SPropValue value{};
    value.ulPropTag = PROP_TAG(row->type | (isList ? MV_FLAG : 0), id);
    const bool parsed = isList ? ParseList(row->type, text, memory, value.Value, reason)
                               : ParseValue(row->type, text, memory, value.Value, reason);
    return parsed ? std::optional(value) : std::nullopt;
}

}  // namespace localmapi::profile
