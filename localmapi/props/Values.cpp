#include "localmapi/props/Values.h"

#include "localmapi/props/ValueTypes.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace localmapi {

namespace {

// No value has more bytes: a larger count cannot have come from anything that was read.
constexpr std::uint64_t kMostBytes = std::numeric_limits<std::int32_t>::max();

GUID GuidFrom(ByteView bytes) noexcept {
    GUID guid{};
    guid.Data1 = bytes.U32(0);
    guid.Data2 = bytes.U16(4);
    guid.Data3 = bytes.U16(6);
    CopyInto(std::as_writable_bytes(std::span(guid.Data4)), bytes.Part(8));
    return guid;
}

// Puts a little-endian number of `size` bytes where a number of that size belongs.
void PutNumber(void* to, ByteView bytes, std::size_t offset, unsigned size) noexcept {
    const std::uint64_t number = bytes.Number(offset, size);
    const auto half = static_cast<std::uint16_t>(number);
    const auto word = static_cast<std::uint32_t>(number);
    const void* from = size == 2   ? static_cast<const void*>(&half)
                       : size == 4 ? static_cast<const void*>(&word)
                                   : &number;
    std::memcpy(to, from, size);
}

void PutElement(const ValueType& type, void* to, ByteView bytes, std::size_t offset) noexcept {
    if (type.kind == ValueKind::Guid) {
        const GUID guid = GuidFrom(bytes.Part(offset));
        std::memcpy(to, &guid, sizeof(guid));
    } else {
        PutNumber(to, bytes, offset, type.size);
    }
}

std::optional<SPropValue> SeveralFromBytes(ULONG tag, const ValueType& type, ByteView bytes, ValueMemory& memory) {
    if (type.kind != ValueKind::Number && type.kind != ValueKind::Guid) {
        return std::nullopt;
    }
    const std::size_t count = bytes.Size() / type.size;
    if (bytes.Size() > kMostBytes || (count == 0 && !bytes.IsEmpty())) {
        return std::nullopt;
    }
    auto* const elements = static_cast<std::byte*>(memory.Allocate(count * type.size));
    for (std::size_t i = 0; i < count; ++i) {
        PutElement(type, elements + i * type.size, bytes, i * type.size);
    }
    SPropValue value{};
    value.ulPropTag = tag;
    SetElements(value, static_cast<ULONG>(count), elements);
    return value;
}

SPropValue WideFromBytes(ULONG tag, ByteView bytes, ValueMemory& memory) {
    const std::size_t length = bytes.Size() / sizeof(WCHAR);
    auto* const text = memory.Array<WCHAR>(length + 1);
    for (std::size_t i = 0; i < length; ++i) {
        text[i] = static_cast<WCHAR>(bytes.U16(i * sizeof(WCHAR)));
    }
    text[length] = 0;
    SPropValue value{};
    value.ulPropTag = tag;
    value.Value.lpszW = text;
    return value;
}

std::optional<SPropValue> NumberFromBytes(ULONG tag, const ValueType& type, ByteView bytes) {
    SPropValue value{};
    value.ulPropTag = tag;
    if (type.type == PT_BOOLEAN && bytes.Size() == 1) {
        value.Value.b = bytes.U8(0) != 0 ? 1 : 0;
        return value;
    }
    if (bytes.Size() < type.size) {
        return std::nullopt;
    }
    PutNumber(&value.Value, bytes, 0, type.size);
    if (type.type == PT_BOOLEAN) {
        value.Value.b = value.Value.b != 0 ? 1 : 0;
    }
    return value;
}

// Whether a text or binary is there, and no larger than can be.
bool IsValidElement(const ValueType& type, const void* element) noexcept {
    if (type.kind != ValueKind::Binary) {
        const void* text = nullptr;
        std::memcpy(&text, element, sizeof(text));
        return text != nullptr;
    }
    SBinary binary;
    std::memcpy(&binary, element, sizeof(binary));
    return binary.cb <= kMostBytes && (binary.cb == 0 || binary.lpb != nullptr);
}

bool AreValid(const ValueType& type, const Elements& elements) noexcept {
    if (elements.count == 0) {
        return true;
    }
    if (elements.first == nullptr || std::uint64_t{elements.count} * type.size > kMostBytes) {
        return false;
    }
    if (type.kind == ValueKind::Number || type.kind == ValueKind::Guid) {
        return true;
    }
    const auto* const first = static_cast<const std::byte*>(elements.first);
    for (std::size_t i = 0; i < elements.count; ++i) {
        if (!IsValidElement(type, first + i * type.size)) {
            return false;
        }
    }
    return true;
}

std::uint64_t SizeOfOne(const ValueType& type, const SPropValue& value) noexcept {
    switch (type.kind) {
        case ValueKind::Number:
        case ValueKind::Guid: return type.size;
        case ValueKind::Text8: return std::strlen(value.Value.lpszA) + 1;
        case ValueKind::TextWide: return (WideView(value.Value.lpszW).size() + 1) * sizeof(WCHAR);
        case ValueKind::Binary: return value.Value.bin.cb;
        case ValueKind::None:
        case ValueKind::Tree: break;
    }
    return 0;
}

}  // namespace

SPropValue LongValue(ULONG tag, std::int32_t number) noexcept {
    SPropValue value{};
    value.ulPropTag = tag;
    value.Value.l = number;
    return value;
}

SPropValue BoolValue(ULONG tag, bool truth) noexcept {
    SPropValue value{};
    value.ulPropTag = tag;
    value.Value.b = truth ? 1 : 0;
    return value;
}

SPropValue BinaryValue(ULONG tag, ByteView bytes, ValueMemory& memory) {
    SPropValue value{};
    value.ulPropTag = tag;
    value.Value.bin.cb = static_cast<ULONG>(std::min<std::uint64_t>(bytes.Size(), kMostBytes));
    value.Value.bin.lpb = memory.Array<BYTE>(value.Value.bin.cb);
    CopyInto({reinterpret_cast<std::byte*>(value.Value.bin.lpb), value.Value.bin.cb}, bytes);
    return value;
}

SPropValue WideValue(ULONG tag, WideView text, ValueMemory& memory) {
    SPropValue value{};
    value.ulPropTag = tag;
    value.Value.lpszW = memory.Array<WCHAR>(text.size() + 1);
    value.Value.lpszW[text.copy(value.Value.lpszW, text.size())] = 0;
    return value;
}

SPropValue NarrowValue(ULONG tag, std::string_view text, ValueMemory& memory) {
    SPropValue value{};
    value.ulPropTag = tag;
    value.Value.lpszA = memory.Array<char>(text.size() + 1);
    value.Value.lpszA[text.copy(value.Value.lpszA, text.size())] = 0;
    return value;
}

std::optional<SPropValue> ValueFromBytes(ULONG tag, ByteView bytes, ValueMemory& memory) {
    const ValueType* const type = ValueTypeOf(tag);
    if (type == nullptr) {
        return std::nullopt;
    }
    if (IsMultiple(tag)) {
        return SeveralFromBytes(tag, *type, bytes, memory);
    }
    switch (type->kind) {
        case ValueKind::Number: return NumberFromBytes(tag, *type, bytes);
        case ValueKind::Binary: return BinaryValue(tag, bytes, memory);
        case ValueKind::TextWide: return WideFromBytes(tag, bytes, memory);
        case ValueKind::Text8:
            return NarrowValue(tag, {reinterpret_cast<const char*>(bytes.Data()), bytes.Size()}, memory);
        case ValueKind::Guid: break;
        case ValueKind::None:
        case ValueKind::Tree: return std::nullopt;
    }
    if (bytes.Size() < sizeof(GUID)) {
        return std::nullopt;
    }
    SPropValue value{};
    value.ulPropTag = tag;
    value.Value.lpguid = memory.Array<GUID>(1);
    *value.Value.lpguid = GuidFrom(bytes);
    return value;
}

bool IsValid(const SPropValue& value) noexcept {
    const ValueType* const type = ValueTypeOf(value.ulPropTag);
    if (type == nullptr) {
        return false;
    }
    if (IsMultiple(value.ulPropTag)) {
        return AreValid(*type, ElementsOf(value));
    }
    const bool isInline = type->kind == ValueKind::None || type->kind == ValueKind::Number;
    return isInline || IsValidElement(*type, &value.Value);
}

SPropValue ElementAt(const SPropValue& value, ULONG index) noexcept {
    const ValueType& type = *ValueTypeOf(value.ulPropTag);
    auto* const element = static_cast<std::byte*>(ElementsOf(value).first) + std::size_t{index} * type.size;
    SPropValue one{};
    one.ulPropTag = CHANGE_PROP_TYPE(value.ulPropTag, type.type);
    if (type.kind == ValueKind::Guid) {
        one.Value.lpguid = reinterpret_cast<GUID*>(element);
    } else {
        std::memcpy(&one.Value, element, type.size);
    }
    return one;
}

std::uint64_t SizeOf(const SPropValue& value) noexcept {
    const ValueType* const type = ValueTypeOf(value.ulPropTag);
    if (type == nullptr) {
        return 0;
    }
    if (!IsMultiple(value.ulPropTag)) {
        return SizeOfOne(*type, value);
    }
    std::uint64_t sum = 0;
    for (ULONG i = 0; i < ElementsOf(value).count; ++i) {
        sum += SizeOfOne(*type, ElementAt(value, i));
    }
    return sum;
}

}  // namespace localmapi
