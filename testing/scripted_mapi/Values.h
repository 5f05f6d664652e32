// Properties of scripted objects: values that own what they hold, bags of them, and their way into MAPI's memory and out
// of a caller's.
#pragma once

#include "mapi/MapiTypes.h"
#include "platform/WideText.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace scripted_mapi {

using Bytes = std::vector<BYTE>;

// One property. What `data` holds goes by the tag's type; LONG stands for PT_I2, PT_LONG, PT_BOOLEAN and PT_ERROR, and
// LONGLONG for PT_I8, PT_CURRENCY and, in FILETIME ticks, PT_SYSTIME.
struct Value {
    ULONG tag = 0;
    std::variant<std::monostate, LONG, LONGLONG, double, GUID, std::string, CStringW, Bytes, std::vector<LONG>,
                 std::vector<LONGLONG>, std::vector<std::string>, std::vector<CStringW>, std::vector<Bytes>>
        data;
    bool streamOnly = false;  // too large for GetProps, which answers MAPI_E_NOT_ENOUGH_MEMORY for it
    bool asItIs = false;      // given whatever type is asked for, as by a provider that is not to be trusted
};

// ASCII to UTF-16 and back; what is not ASCII becomes '?'.
CStringW Wide(std::string_view text);
std::string Ascii(WideView text);

// Values by what they hold. Text takes ASCII for a tag of either text type.
Value Text(ULONG tag, std::string_view text);
Value WideText(ULONG tag, CStringW text);
Value Number(ULONG tag, LONG value);
Value Flag(ULONG tag, bool value);
Value Binary(ULONG tag, Bytes bytes);
Value Time(ULONG tag, std::int64_t ticks);
Value Texts(ULONG tag, const std::vector<std::string>& texts);
Value Binaries(ULONG tag, std::vector<Bytes> binaries);
Value Real(ULONG tag, double value);
Value Large(ULONG tag, std::int64_t value);
Value Identifier(ULONG tag, const GUID& value);
// A property that answers with an error, MAPI_E_NOT_FOUND unless told.
Value Failing(ULONG tag, SCODE error);
Value Failing(ULONG tag);
Value StreamOnly(Value value);
Value AsItIs(Value value);

// Properties of one object, one for each id.
class Bag {
public:
    Bag() = default;
    Bag(std::initializer_list<Value> values);

    // Adds the value, in the place of the one with that id if there is one.
    Bag& Set(Value value);
    void Remove(ULONG tag);

    // The value with the tag's id, whatever its type; null when there is none.
    const Value* Find(ULONG tag) const;
    const std::vector<Value>& All() const { return m_values; }

    // What GetProps gives for a tag: the value, in the other kind of text if that was asked for, or one of PT_ERROR.
    Value Read(ULONG tag) const;

    // The bytes of a PT_BINARY property; empty without one.
    Bytes BytesOf(ULONG tag) const;

private:
    std::vector<Value> m_values;
};

// A block of MAPI's memory that holds the values.
LPSPropValue AllocateValues(const std::vector<Value>& values);

// A copy of a caller's property.
Value CopyOf(const SPropValue& property);

// The bytes of a property as a stream has them: text as UTF-16 or 8-bit text without its end, as the tag asks.
Bytes StreamBytes(const Value& value, ULONG askedType);

}  // namespace scripted_mapi
