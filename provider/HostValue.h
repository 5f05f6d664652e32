// What crosses the boundary between a host and InstanceProxy: values, texts, failures, and the keys of records' fields.
// Needs nothing but the standard library. Plain values, as safe on several threads as the standard library's own.
//
// Texts and blocks of bytes are made on one side and freed on the other, so both are built by the same compiler with the
// same standard library. Exceptions stay on one side: the library throws none, ThrowResult is the host's own code.
#pragma once

#include "provider/PublicApi.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace VxOutlookProvider {

// A result of the provider or of MAPI: negative for a failure.
using HResult = std::int32_t;

// A text argument: UTF-16, or none at all, which is not the same as an empty one. Made from what a host has at hand;
// the text is copied.
class Text {
public:
    Text() noexcept = default;
    Text(std::nullptr_t) noexcept {}
    Text(const char16_t* text) : m_isNull(text == nullptr), m_text(text == nullptr ? std::u16string() : text) {}
    Text(std::u16string text) noexcept : m_isNull(false), m_text(std::move(text)) {}
    Text(std::u16string_view text) : m_isNull(false), m_text(text) {}

    bool IsNull() const noexcept { return m_isNull; }

    // The units, zeros among them included; empty for none.
    const std::u16string& Units() const noexcept { return m_text; }

    // Zero-terminated, valid as long as this object; null for none.
    const char16_t* Pointer() const noexcept { return m_isNull ? nullptr : m_text.c_str(); }

private:
    bool m_isNull = true;
    std::u16string m_text;
};

// A value, a record or a list. A record is an array whose positions are the fields (FieldsOf); a field that is not set
// is null. A list is an array of records. What was given as a URI goes back in as it came out.
class Value {
public:
    using Bytes = std::vector<std::uint8_t>;
    using Array = std::vector<Value>;

    enum class Kind : std::size_t { Null, Int32, Int64, Bool, Double, Text, Bytes, Array };

    Value() noexcept = default;
    Value(std::int32_t value) noexcept : m_value(value) {}
    Value(std::int64_t value) noexcept : m_value(value) {}
    Value(bool value) noexcept : m_value(value) {}
    Value(double value) noexcept : m_value(value) {}
    Value(std::u16string value) noexcept : m_value(std::move(value)) {}
    Value(const char16_t* value) {
        if (value != nullptr) {
            m_value = std::u16string(value);
        }
    }
    Value(std::nullptr_t) noexcept {}
    template <typename T>
    Value(const T*) = delete;  // would be taken for a bool
    Value(Bytes value) noexcept : m_value(std::move(value)) {}
    Value(Array value) noexcept : m_value(std::move(value)) {}

    Kind GetKind() const noexcept { return static_cast<Kind>(m_value.index()); }
    bool IsNull() const noexcept { return GetKind() == Kind::Null; }

    // The value as it is; null when the kind is another one. T is one of the types of the constructors.
    template <typename T>
    const T* If() const noexcept {
        return std::get_if<T>(&m_value);
    }
    template <typename T>
    T* If() noexcept {
        return std::get_if<T>(&m_value);
    }

    // The value where the kind fits; 0, false or nothing where it does not.
    std::int64_t Integer() const noexcept {  // of either width
        const auto* narrow = If<std::int32_t>();
        return narrow != nullptr ? *narrow : ValueOr<std::int64_t>(0);
    }
    bool Boolean() const noexcept { return ValueOr(false); }
    double Real() const noexcept { return ValueOr(0.0); }
    const std::u16string& String() const noexcept { return ValueOrEmpty<std::u16string>(); }
    const Bytes& Data() const noexcept { return ValueOrEmpty<Bytes>(); }
    const Array& Elements() const noexcept { return ValueOrEmpty<Array>(); }

    // An element of an array; null where there is none.
    const Value& At(std::size_t index) const noexcept {
        const Array& elements = Elements();
        return index < elements.size() ? elements[index] : Empty<Value>();
    }

    friend bool operator==(const Value&, const Value&) = default;

private:
    template <typename T>
    static const T& Empty() noexcept {
        static const T empty{};
        return empty;
    }
    template <typename T>
    T ValueOr(T other) const noexcept {
        const T* value = If<T>();
        return value != nullptr ? *value : other;
    }
    template <typename T>
    const T& ValueOrEmpty() const noexcept {
        const T* value = If<T>();
        return value != nullptr ? *value : Empty<T>();
    }

    std::variant<std::monostate, std::int32_t, std::int64_t, bool, double, std::u16string, Bytes, Array> m_value;
};

// ---- Failures ----

// The name of a result code, such as "MAPI_E_NOT_FOUND"; the eight digits of one that has no name, "0x80990001". Empty
// when memory is short.
VX_PROVIDER_API std::string ResultName(HResult code) noexcept;

// The name with the number, "MAPI_E_NOT_FOUND (0x8004010F)"; the digits alone of a code that has no name.
VX_PROVIDER_API std::string ResultText(HResult code) noexcept;

// What a failed call throws; what() is the code's ResultText.
class ResultException : public std::runtime_error {
public:
    explicit ResultException(HResult code) : std::runtime_error(ResultText(code)), m_code(code) {}

    HResult Code() const noexcept { return m_code; }

private:
    HResult m_code;
};

[[noreturn]] inline void ThrowResult(HResult code) {
    throw ResultException(code);
}

// ---- Fields of records ----

enum class RecordKind { Profile, Store, Folder, Uri, Item };

struct Field {
    std::string_view key;  // ASCII; the record tables' name of the position

    // S text, I 32-bit integer, L 64-bit integer, B boolean, D double, A bytes; '-' for a field that is never set.
    char type;
};

// The fields of a kind of record by their positions; none for a kind that is not listed. Constants of the library.
VX_PROVIDER_API std::span<const Field> FieldsOf(RecordKind kind) noexcept;

// The position of a field, found by looking through the fields; std::out_of_range when there is none of that key.
inline std::size_t FieldIndex(RecordKind kind, std::string_view key) {
    const std::span<const Field> fields = FieldsOf(kind);
    for (std::size_t index = 0; index < fields.size(); ++index) {
        if (fields[index].key == key) {
            return index;
        }
    }
    throw std::out_of_range("no such field: " + std::string(key));
}

}  // namespace VxOutlookProvider
