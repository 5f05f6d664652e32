#include "localmapi/msg/ValueCoding.h"

#include "localmapi/props/Values.h"

#include <array>
#include <bit>
#include <cstring>
#include <string_view>

namespace localmapi::msg {

namespace {

// A little-endian number of a type's own size.
template <class Number>
void AppendRaw(Bytes& bytes, Number number) {
    if constexpr (sizeof(Number) == 8) {
        AppendNumber(bytes, std::bit_cast<std::uint64_t>(number), 8);
    } else if constexpr (sizeof(Number) == 4) {
        AppendNumber(bytes, std::bit_cast<std::uint32_t>(number), 4);
    } else {
        AppendNumber(bytes, static_cast<std::uint16_t>(number), 2);
    }
}

template <class Element>
Bytes Packed(const Element* elements, ULONG count) {
    Bytes bytes;
    bytes.reserve(std::size_t{count} * sizeof(Element));
    for (ULONG i = 0; i < count; ++i) {
        AppendRaw(bytes, elements[i]);
    }
    return bytes;
}

Bytes PackedValues(const SPropValue& value) {
    switch (PROP_TYPE(value.ulPropTag)) {
        case PT_MV_I2: return Packed(value.Value.MVi.lpi, value.Value.MVi.cValues);
        case PT_MV_LONG: return Packed(value.Value.MVl.lpl, value.Value.MVl.cValues);
        case PT_MV_R4: return Packed(value.Value.MVflt.lpflt, value.Value.MVflt.cValues);
        case PT_MV_DOUBLE: return Packed(value.Value.MVdbl.lpdbl, value.Value.MVdbl.cValues);
        case PT_MV_CURRENCY: return Packed(value.Value.MVcur.lpcur, value.Value.MVcur.cValues);
        case PT_MV_APPTIME: return Packed(value.Value.MVat.lpat, value.Value.MVat.cValues);
        case PT_MV_SYSTIME: return Packed(value.Value.MVft.lpft, value.Value.MVft.cValues);
        case PT_MV_I8: return Packed(value.Value.MVli.lpli, value.Value.MVli.cValues);
        default: break;
    }
    Bytes bytes;
    for (ULONG i = 0; i < value.Value.MVguid.cValues; ++i) {
        AppendGuid(bytes, value.Value.MVguid.lpguid[i]);
    }
    return bytes;
}

Bytes NarrowBytes(const char* text) {
    const std::string_view view(text);
    return {reinterpret_cast<const std::byte*>(view.data()),
            reinterpret_cast<const std::byte*>(view.data() + view.size())};
}

Bytes WideBytes(const WCHAR* text) {
    Bytes bytes;
    AppendUtf16(bytes, WideView(text));
    return bytes;
}

Bytes SingleValue(const SPropValue& value) {
    switch (PROP_TYPE(value.ulPropTag)) {
        case PT_STRING8: return NarrowBytes(value.Value.lpszA);
        case PT_UNICODE: return WideBytes(value.Value.lpszW);
        case PT_BINARY: {
            Bytes bytes;
            AppendBytes(bytes, BytesOf(value.Value.bin));
            return bytes;
        }
        default: break;
    }
    Bytes bytes;
    AppendGuid(bytes, *value.Value.lpguid);
    return bytes;
}

// Texts among several end with their terminator, and their lengths count it; a binary's length takes eight bytes.
StreamValue ValueInParts(const SPropValue& value) {
    StreamValue streams;
    const ULONG tag = value.ulPropTag;
    for (ULONG i = 0; i < value.Value.MVbin.cValues; ++i) {
        Bytes part;
        switch (PROP_TYPE(tag)) {
            case PT_MV_STRING8: part = NarrowBytes(value.Value.MVszA.lppszA[i]); break;
            case PT_MV_UNICODE: part = WideBytes(value.Value.MVszW.lppszW[i]); break;
            default: AppendBytes(part, BytesOf(value.Value.MVbin.lpbin[i])); break;
        }
        AppendNumber(part, 0, TerminatorSize(tag & ~MV_FLAG));
        AppendNumber(streams.main, part.size(), LengthEntrySize(tag));
        streams.parts.push_back(std::move(part));
    }
    return streams;
}

unsigned AreaSize(ULONG type) noexcept {
    switch (type) {
        case PT_I2:
        case PT_BOOLEAN: return 2;
        case PT_LONG:
        case PT_R4:
        case PT_ERROR: return 4;
        case PT_DOUBLE:
        case PT_CURRENCY:
        case PT_APPTIME:
        case PT_I8:
        case PT_SYSTIME: return 8;
        default: return 0;
    }
}

}  // namespace

ValueForm FormOf(ULONG tag) noexcept {
    const ULONG type = PROP_TYPE(tag);
    switch (type) {
        case PT_STRING8:
        case PT_UNICODE:
        case PT_BINARY:
        case PT_CLSID: return ValueForm::Stream;
        case PT_OBJECT: return ValueForm::Object;
        case PT_MV_STRING8:
        case PT_MV_UNICODE:
        case PT_MV_BINARY: return ValueForm::Parts;
        case PT_MV_CLSID: return ValueForm::Packed;
        default: break;
    }
    if (AreaSize(type) > 0) {
        return ValueForm::Area;
    }
    const ULONG single = type & ~MV_FLAG;
    const bool isNoArray = single == PT_BOOLEAN || single == PT_ERROR;
    return (type & MV_FLAG) != 0 && AreaSize(single) > 0 && !isNoArray ? ValueForm::Packed : ValueForm::Unknown;
}

unsigned TerminatorSize(ULONG tag) noexcept {
    return PROP_TYPE(tag) == PT_STRING8 ? 1 : PROP_TYPE(tag) == PT_UNICODE ? 2 : 0;
}

std::uint64_t SizeWithoutTerminator(ULONG tag, std::uint64_t size, ByteView tail) noexcept {
    if (PROP_TYPE(tag) == PT_STRING8) {
        return size >= 1 && tail.U8(tail.Size() - 1) == 0 ? size - 1 : size;
    }
    if (PROP_TYPE(tag) != PT_UNICODE) {
        return size;
    }
    if (size % 2 != 0) {
        return size - 1;
    }
    return size >= 2 && tail.U16(tail.Size() - 2) == 0 ? size - 2 : size;
}

ByteView WithoutTerminator(ULONG tag, ByteView bytes) noexcept {
    return bytes.Part(0, SizeWithoutTerminator(tag, bytes.Size(), bytes));
}

std::uint32_t DeclaredSize(ULONG tag, std::uint64_t streamSize) noexcept {
    return static_cast<std::uint32_t>(streamSize + TerminatorSize(tag));
}

std::uint64_t AreaOf(const SPropValue& value) noexcept {
    switch (PROP_TYPE(value.ulPropTag)) {
        case PT_I2: return static_cast<std::uint16_t>(value.Value.i);
        case PT_BOOLEAN: return value.Value.b != 0 ? 1 : 0;
        case PT_LONG:
        case PT_ERROR: return static_cast<std::uint32_t>(value.Value.l);
        case PT_R4: return std::bit_cast<std::uint32_t>(value.Value.flt);
        default: return static_cast<std::uint64_t>(value.Value.li.QuadPart);
    }
}

StreamValue StreamsOf(const SPropValue& value) {
    switch (FormOf(value.ulPropTag)) {
        case ValueForm::Packed: return {PackedValues(value), {}};
        case ValueForm::Parts: return ValueInParts(value);
        default: return {SingleValue(value), {}};
    }
}

unsigned LengthEntrySize(ULONG tag) noexcept {
    return PROP_TYPE(tag) == PT_MV_BINARY ? 8 : 4;
}

std::optional<SPropValue> ValueOfArea(ULONG tag, std::uint64_t area, ValueMemory& memory) {
    Bytes bytes;
    AppendNumber(bytes, area, AreaSize(PROP_TYPE(tag)));
    return ValueFromBytes(tag, bytes, memory);
}

SPropValue ValueOfParts(ULONG tag, const std::vector<ByteView>& parts, ValueMemory& memory) {
    SPropValue value{};
    value.ulPropTag = tag;
    value.Value.MVbin.cValues = static_cast<ULONG>(parts.size());
    const ULONG single = CHANGE_PROP_TYPE(tag, PROP_TYPE(tag) & ~MV_FLAG);
    const auto each = [&](auto* elements, auto member) {
        for (std::size_t i = 0; i < parts.size(); ++i) {
            const auto one = ValueFromBytes(single, WithoutTerminator(single, parts[i]), memory);
            elements[i] = one ? one->Value.*member : decltype(one->Value.*member){};
        }
        return elements;
    };
    using Contents = SPropValue::Contents;
    switch (PROP_TYPE(single)) {
        case PT_STRING8: value.Value.MVszA.lppszA = each(memory.Array<LPSTR>(parts.size()), &Contents::lpszA); break;
        case PT_UNICODE: value.Value.MVszW.lppszW = each(memory.Array<LPWSTR>(parts.size()), &Contents::lpszW); break;
        default: value.Value.MVbin.lpbin = each(memory.Array<SBinary>(parts.size()), &Contents::bin); break;
    }
    return value;
}

void AppendNumber(Bytes& bytes, std::uint64_t number, unsigned width) {
    for (unsigned i = 0; i < width; ++i) {
        bytes.push_back(static_cast<std::byte>(number >> (8 * i)));
    }
}

void AppendBytes(Bytes& bytes, ByteView more) {
    bytes.insert(bytes.end(), more.Span().begin(), more.Span().end());
}

void AppendUtf16(Bytes& bytes, WideView text) {
    for (const WCHAR unit : text) {
        AppendNumber(bytes, unit, 2);
    }
}

void AppendGuid(Bytes& bytes, const GUID& guid) {
    AppendNumber(bytes, guid.Data1, 4);
    AppendNumber(bytes, guid.Data2, 2);
    AppendNumber(bytes, guid.Data3, 2);
    for (const auto byte : guid.Data4) {
        AppendNumber(bytes, byte, 1);
    }
}

}  // namespace localmapi::msg
