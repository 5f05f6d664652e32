#include "testing/scripted_mapi/Values.h"

#include "mapi/MapiCodes.h"
#include "testing/scripted_mapi/Script.h"

#include <algorithm>
#include <cstring>
#include <type_traits>

namespace scripted_mapi {

namespace {

template <typename T>
const T& Get(const Value& value) {
    return std::get<T>(value.data);
}

// Copies a range of plain elements into a block that goes with `root`.
template <typename T>
T* CopyMore(void* root, const T* from, std::size_t count, std::size_t extra = 0) {
    auto* to = static_cast<T*>(memory::AllocateMore((count + extra) * sizeof(T), root));
    if (count != 0) {
        std::memcpy(to, from, count * sizeof(T));
    }
    return to;
}

SBinary CopyBinary(void* root, const Bytes& bytes) {
    return {static_cast<ULONG>(bytes.size()), CopyMore(root, bytes.data(), bytes.size())};
}

FILETIME FileTime(LONGLONG ticks) {
    return {static_cast<DWORD>(ticks), static_cast<DWORD>(static_cast<ULONGLONG>(ticks) >> 32)};
}

LONGLONG Ticks(const FILETIME& time) {
    return static_cast<LONGLONG>((ULONGLONG{time.dwHighDateTime} << 32) | time.dwLowDateTime);
}

// Copies each element of a list with `copy` into an array that goes with `root`.
template <typename Element, typename List, typename Copy>
Element* CopyList(void* root, const List& list, Copy copy) {
    auto* elements = static_cast<Element*>(memory::AllocateMore(list.size() * sizeof(Element), root));
    for (std::size_t i = 0; i < list.size(); ++i) {
        elements[i] = copy(list[i]);
    }
    return elements;
}

template <typename Array, typename Element>
Array ArrayOf(std::size_t count, Element* elements) {
    return {static_cast<ULONG>(count), elements};
}

void Fill(SPropValue& property, const Value& value, void* root) {
    property.ulPropTag = value.tag;
    SPropValue::Contents& to = property.Value;
    switch (PROP_TYPE(value.tag)) {
        case PT_I2: to.i = static_cast<SHORT>(Get<LONG>(value)); break;
        case PT_LONG:
        case PT_ERROR: to.l = Get<LONG>(value); break;
        case PT_BOOLEAN: to.b = static_cast<USHORT>(Get<LONG>(value)); break;
        case PT_R4: to.flt = static_cast<float>(Get<double>(value)); break;
        case PT_DOUBLE:
        case PT_APPTIME: to.dbl = Get<double>(value); break;
        case PT_I8:
        case PT_CURRENCY: to.li.QuadPart = Get<LONGLONG>(value); break;
        case PT_SYSTIME: to.ft = FileTime(Get<LONGLONG>(value)); break;
        case PT_CLSID: to.lpguid = CopyMore(root, &Get<GUID>(value), 1); break;
        case PT_STRING8: {
            const auto& text = Get<std::string>(value);
            to.lpszA = CopyMore(root, text.data(), text.size(), 1);
            break;
        }
        case PT_UNICODE: {
            const auto& text = Get<CStringW>(value);
            to.lpszW = CopyMore(root, text.data(), text.size(), 1);
            break;
        }
        case PT_BINARY: to.bin = CopyBinary(root, Get<Bytes>(value)); break;
        case PT_MV_LONG: {
            const auto& list = Get<std::vector<LONG>>(value);
            to.MVl = ArrayOf<SLongArray>(list.size(), CopyMore(root, list.data(), list.size()));
            break;
        }
        case PT_MV_SYSTIME: {
            const auto& list = Get<std::vector<LONGLONG>>(value);
            to.MVft = ArrayOf<SDateTimeArray>(list.size(), CopyList<FILETIME>(root, list, FileTime));
            break;
        }
        case PT_MV_BINARY: {
            const auto& list = Get<std::vector<Bytes>>(value);
            to.MVbin = ArrayOf<SBinaryArray>(
                list.size(), CopyList<SBinary>(root, list, [&](const Bytes& one) { return CopyBinary(root, one); }));
            break;
        }
        case PT_MV_STRING8: {
            const auto& list = Get<std::vector<std::string>>(value);
            to.MVszA = ArrayOf<SLPSTRArray>(list.size(), CopyList<LPSTR>(root, list, [&](const std::string& one) {
                                                return CopyMore(root, one.data(), one.size(), 1);
                                            }));
            break;
        }
        case PT_MV_UNICODE: {
            const auto& list = Get<std::vector<CStringW>>(value);
            to.MVszW = ArrayOf<SWStringArray>(list.size(), CopyList<LPWSTR>(root, list, [&](const CStringW& one) {
                                                  return CopyMore(root, one.data(), one.size(), 1);
                                              }));
            break;
        }
        default: to.x = 0; break;
    }
}

Value Make(ULONG tag, decltype(Value::data) data) {
    Value value;
    value.tag = tag;
    value.data = std::move(data);
    return value;
}

}  // namespace

CStringW Wide(std::string_view text) {
    return CStringW(text.begin(), text.end());
}

std::string Ascii(WideView text) {
    std::string narrow;
    for (const WCHAR unit : text) {
        narrow += unit < 0x80 ? static_cast<char>(unit) : '?';
    }
    return narrow;
}

Value Text(ULONG tag, std::string_view text) {
    if (PROP_TYPE(tag) == PT_STRING8) {
        return Make(tag, std::string(text));
    }
    return Make(tag, Wide(text));
}

Value WideText(ULONG tag, CStringW text) {
    return Make(tag, std::move(text));
}

Value Number(ULONG tag, LONG value) {
    return Make(tag, value);
}

Value Flag(ULONG tag, bool value) {
    return Make(tag, LONG{value});
}

Value Binary(ULONG tag, Bytes bytes) {
    return Make(tag, std::move(bytes));
}

Value Time(ULONG tag, std::int64_t ticks) {
    return Make(tag, static_cast<LONGLONG>(ticks));
}

Value Texts(ULONG tag, const std::vector<std::string>& texts) {
    if (PROP_TYPE(tag) == PT_MV_STRING8) {
        return Make(tag, texts);
    }
    std::vector<CStringW> wide;
    for (const std::string& text : texts) {
        wide.push_back(Wide(text));
    }
    return Make(tag, std::move(wide));
}

Value Binaries(ULONG tag, std::vector<Bytes> binaries) {
    return Make(tag, std::move(binaries));
}

Value Real(ULONG tag, double value) {
    return Make(tag, value);
}

Value Large(ULONG tag, std::int64_t value) {
    return Make(tag, static_cast<LONGLONG>(value));
}

Value Identifier(ULONG tag, const GUID& value) {
    return Make(tag, value);
}

Value Failing(ULONG tag, SCODE error) {
    return Make(CHANGE_PROP_TYPE(tag, PT_ERROR), static_cast<LONG>(error));
}

Value Failing(ULONG tag) {
    return Failing(tag, MAPI_E_NOT_FOUND);
}

Value StreamOnly(Value value) {
    value.streamOnly = true;
    return value;
}

Value AsItIs(Value value) {
    value.asItIs = true;
    return value;
}

Bag::Bag(std::initializer_list<Value> values) {
    for (const Value& value : values) {
        Set(value);
    }
}

Bag& Bag::Set(Value value) {
    Remove(value.tag);
    m_values.push_back(std::move(value));
    return *this;
}

void Bag::Remove(ULONG tag) {
    std::erase_if(m_values, [tag](const Value& value) { return PROP_ID(value.tag) == PROP_ID(tag); });
}

const Value* Bag::Find(ULONG tag) const {
    for (const Value& value : m_values) {
        if (PROP_ID(value.tag) == PROP_ID(tag)) {
            return &value;
        }
    }
    return nullptr;
}

Value Bag::Read(ULONG tag) const {
    const Value* found = Find(tag);
    if (found == nullptr) {
        return Failing(tag);
    }
    const ULONG stored = PROP_TYPE(found->tag);
    const ULONG asked = PROP_TYPE(tag);
    if (stored == PT_ERROR || found->asItIs) {
        return *found;
    }
    if (found->streamOnly) {
        return Failing(tag, MAPI_E_NOT_ENOUGH_MEMORY);
    }
    if (asked == stored || asked == PT_UNSPECIFIED) {
        return *found;
    }
    if (stored == PT_UNICODE && asked == PT_STRING8) {
        return Make(tag, Ascii(std::get<CStringW>(found->data)));
    }
    if (stored == PT_STRING8 && asked == PT_UNICODE) {
        return Make(tag, Wide(std::get<std::string>(found->data)));
    }
    return Failing(tag);
}

Bytes Bag::BytesOf(ULONG tag) const {
    const Value* found = Find(tag);
    return found != nullptr && PROP_TYPE(found->tag) == PT_BINARY ? std::get<Bytes>(found->data) : Bytes();
}

LPSPropValue AllocateValues(const std::vector<Value>& values) {
    auto* properties = static_cast<LPSPropValue>(memory::Allocate(values.size() * sizeof(SPropValue)));
    for (std::size_t i = 0; i < values.size(); ++i) {
        Fill(properties[i], values[i], properties);
    }
    return properties;
}

Value CopyOf(const SPropValue& property) {
    const ULONG tag = property.ulPropTag;
    const SPropValue::Contents& from = property.Value;
    switch (PROP_TYPE(tag)) {
        case PT_I2: return Number(tag, from.i);
        case PT_LONG:
        case PT_ERROR: return Number(tag, from.l);
        case PT_BOOLEAN: return Number(tag, from.b);
        case PT_R4: return Real(tag, static_cast<double>(from.flt));
        case PT_DOUBLE:
        case PT_APPTIME: return Real(tag, from.dbl);
        case PT_I8:
        case PT_CURRENCY: return Large(tag, from.li.QuadPart);
        case PT_SYSTIME: return Time(tag, Ticks(from.ft));
        case PT_CLSID: return Identifier(tag, *from.lpguid);
        case PT_STRING8: return Make(tag, std::string(from.lpszA));
        case PT_UNICODE: return Make(tag, CStringW(from.lpszW));
        case PT_BINARY: return Binary(tag, Bytes(from.bin.lpb, from.bin.lpb + from.bin.cb));
        default: return Make(tag, std::monostate());
    }
}

Bytes StreamBytes(const Value& value, ULONG askedType) {
    const auto bytesOf = [](const auto& text) {
        const auto* first = reinterpret_cast<const BYTE*>(text.data());
        return Bytes(first, first + text.size() * sizeof(text[0]));
    };
    if (const auto* bytes = std::get_if<Bytes>(&value.data)) {
        return *bytes;
    }
    if (const auto* wide = std::get_if<CStringW>(&value.data)) {
        return askedType == PT_STRING8 ? bytesOf(Ascii(*wide)) : bytesOf(*wide);
    }
    if (const auto* narrow = std::get_if<std::string>(&value.data)) {
        return askedType == PT_UNICODE ? bytesOf(Wide(*narrow)) : bytesOf(*narrow);
    }
    return {};
}

}  // namespace scripted_mapi
