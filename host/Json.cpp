#include "host/Json.h"

#include "host/Text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <type_traits>
#include <vector>

namespace vxhost {

namespace {

using VxOutlookProvider::Field;
using VxOutlookProvider::FieldsOf;

// What stands behind the backslash for a unit below 0x80: 0 for one that stands for itself, 'u' for one without a short
// form.
constexpr std::array<char, 128> kEscapes = [] {
    std::array<char, 128> escapes{};
    for (std::size_t unit = 0; unit < 0x20; ++unit) {
        escapes[unit] = 'u';
    }
    escapes['\b'] = 'b';
    escapes['\t'] = 't';
    escapes['\n'] = 'n';
    escapes['\f'] = 'f';
    escapes['\r'] = 'r';
    escapes['"'] = '"';
    escapes['\\'] = '\\';
    return escapes;
}();

void AppendEscape(std::string& out, unsigned unit) {
    out += '\\';
    out += kEscapes[unit];
    if (kEscapes[unit] == 'u') {
        constexpr char kDigits[] = "0123456789abcdef";
        out += "00";
        out += kDigits[unit >> 4];
        out += kDigits[unit & 0xF];
    }
}

template <typename Unit>
constexpr bool StandsForItself(Unit unit) noexcept {
    const auto value = static_cast<std::make_unsigned_t<Unit>>(unit);
    return value < 0x80 && kEscapes[value] == 0;
}

// In runs: nearly all text is ASCII, and appending each character by itself would cost the most of all that is done
// here.
template <typename Unit>
void AppendQuoted(std::string& out, std::basic_string_view<Unit> text) {
    out += '"';
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t begin = at;
        while (at < text.size() && StandsForItself(text[at])) {
            ++at;
        }
        const std::size_t size = out.size();
        out.resize(size + at - begin);
        std::transform(text.begin() + static_cast<std::ptrdiff_t>(begin),
                       text.begin() + static_cast<std::ptrdiff_t>(at), out.begin() + static_cast<std::ptrdiff_t>(size),
                       [](Unit unit) { return static_cast<char>(unit); });
        while (at < text.size() && !StandsForItself(text[at])) {
            const auto unit = static_cast<std::make_unsigned_t<Unit>>(text[at]);
            if (unit >= 0x80) {
                AppendUtf8(out, NextCharacter(text, at));
            } else {
                AppendEscape(out, unit);
                ++at;
            }
        }
    }
    out += '"';
}

// The keys of a kind of record as they stand in its objects: with quotation marks and colon.
std::vector<std::string> QuotedKeys(RecordKind kind) {
    std::vector<std::string> keys;
    for (const Field& field : FieldsOf(kind)) {
        keys.push_back('"' + std::string(field.key) + "\":");
    }
    return keys;
}

const std::vector<std::string>& KeysOf(RecordKind kind) {
    static const std::array<std::vector<std::string>, 5> keys = {
        QuotedKeys(RecordKind::Profile), QuotedKeys(RecordKind::Store), QuotedKeys(RecordKind::Folder),
        QuotedKeys(RecordKind::Uri), QuotedKeys(RecordKind::Item)};
    return keys[static_cast<std::size_t>(kind)];
}

void AppendValue(std::string& out, const Value& value) {
    switch (value.GetKind()) {
        case Value::Kind::Int32:
        case Value::Kind::Int64: AppendJson(out, value.Integer()); break;
        case Value::Kind::Bool: out += value.Boolean() ? "true" : "false"; break;
        case Value::Kind::Double: AppendJson(out, value.Real()); break;
        case Value::Kind::Text: AppendJson(out, value.String()); break;
        default: out += "null"; break;
    }
}

bool IsLeftOut(const Value& value) {
    const Value::Kind kind = value.GetKind();
    return kind == Value::Kind::Null || kind == Value::Kind::Bytes || kind == Value::Kind::Array;
}

}  // namespace

void AppendJson(std::string& out, std::u16string_view text) {
    AppendQuoted(out, text);
}

void AppendJson(std::string& out, std::string_view text) {
    AppendQuoted(out, text);
}

void AppendJson(std::string& out, std::int64_t number) {
    std::array<char, 24> digits;
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
    out.append(digits.data(), end);
}

void AppendJson(std::string& out, double number) {
    if (!std::isfinite(number)) {
        out += "null";
        return;
    }
    std::array<char, 32> digits;
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
    out.append(digits.data(), end);
}

void AppendJson(std::string& out, RecordKind kind, const Value& record) {
    const std::vector<std::string>& keys = KeysOf(kind);
    const Value::Array& fields = record.Elements();
    char separator = '{';
    for (std::size_t i = 0; i < fields.size() && i < keys.size(); ++i) {
        if (!IsLeftOut(fields[i])) {
            out += separator;
            out += keys[i];
            AppendValue(out, fields[i]);
            separator = ',';
        }
    }
    if (separator == '{') {
        out += '{';
    }
    out += '}';
}

JsonObject& JsonObject::Key(std::string_view key) {
    if (!m_isEmpty) {
        m_out += ',';
    }
    m_isEmpty = false;
    m_out += '"';
    m_out += key;
    m_out += "\":";
    return *this;
}

JsonObject& JsonObject::Text(std::string_view key, std::string_view text) {
    Key(key);
    AppendJson(m_out, text);
    return *this;
}

JsonObject& JsonObject::Text(std::string_view key, std::u16string_view text) {
    Key(key);
    AppendJson(m_out, text);
    return *this;
}

JsonObject& JsonObject::Number(std::string_view key, std::int64_t number) {
    Key(key);
    AppendJson(m_out, number);
    return *this;
}

JsonObject& JsonObject::Flag(std::string_view key, bool flag) {
    Key(key);
    m_out += flag ? "true" : "false";
    return *this;
}

JsonObject& JsonObject::Record(std::string_view key, RecordKind kind, const Value& record) {
    Key(key);
    AppendJson(m_out, kind, record);
    return *this;
}

}  // namespace vxhost
