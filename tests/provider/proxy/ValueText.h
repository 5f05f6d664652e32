// How tests print values: null, 1, 1L, true, 0.5, "a", <01FF>, [1, 2].
#pragma once

#include "provider/HostValue.h"

#include <ostream>
#include <string>

namespace VxOutlookProvider {

inline std::string HexDigits(std::uint32_t value, int digits) {
    std::string text;
    for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4) {
        text += "0123456789ABCDEF"[value >> shift & 0xF];
    }
    return text;
}

// Printable ASCII as it is, "\x" and four digits for any other unit.
inline std::string TextOfUnits(std::u16string_view units) {
    std::string text;
    for (const char16_t unit : units) {
        const bool isPlain = unit >= u' ' && unit < 0x7F;
        text += isPlain ? std::string(1, static_cast<char>(unit)) : "\\x" + HexDigits(unit, 4);
    }
    return text;
}

inline std::string TextOf(const Value& value) {
    std::string text;
    switch (value.GetKind()) {
        case Value::Kind::Null: return "null";
        case Value::Kind::Int32: return std::to_string(value.Integer());
        case Value::Kind::Int64: return std::to_string(value.Integer()) + "L";
        case Value::Kind::Bool: return value.Boolean() ? "true" : "false";
        case Value::Kind::Double: return std::to_string(value.Real());
        case Value::Kind::Text: return '"' + TextOfUnits(value.String()) + '"';
        case Value::Kind::Bytes:
            for (const std::uint8_t byte : value.Data()) {
                text += HexDigits(byte, 2);
            }
            return "<" + text + ">";
        case Value::Kind::Array:
            for (const Value& element : value.Elements()) {
                text += (text.empty() ? "" : ", ") + TextOf(element);
            }
            return "[" + text + "]";
    }
    return "?";
}

inline void PrintTo(const Value& value, std::ostream* out) {
    *out << TextOf(value);
}

}  // namespace VxOutlookProvider
