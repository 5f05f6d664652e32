#include "testing/mailbox_builder/ValueBytes.h"

#include "platform/CodePage.h"
#include "testing/mailbox_builder/ByteWriter.h"

#include <bit>
#include <type_traits>
#include <utility>

namespace mailbox_builder {

namespace {

Bytes BytesOf(const CStringW& text) {
    ByteWriter bytes;
    for (const WCHAR unit : text) {
        bytes.U16(static_cast<std::uint16_t>(unit));
    }
    return bytes.Take();
}

Bytes BytesOf(const std::string& text) {
    const auto bytes = std::as_bytes(std::span(text));
    return Bytes(bytes.begin(), bytes.end());
}

// One value of one of the kinds that need no conversion.
Bytes ToBytes(bool value) {
    return ByteWriter().U8(value ? 1 : 0).Take();
}
Bytes ToBytes(std::int16_t value) {
    return ByteWriter().U16(static_cast<std::uint16_t>(value)).Take();
}
Bytes ToBytes(std::int32_t value) {
    return ByteWriter().U32(static_cast<std::uint32_t>(value)).Take();
}
Bytes ToBytes(std::int64_t value) {
    return ByteWriter().U64(static_cast<std::uint64_t>(value)).Take();
}
Bytes ToBytes(float value) {
    return ByteWriter().U32(std::bit_cast<std::uint32_t>(value)).Take();
}
Bytes ToBytes(double value) {
    return ByteWriter().U64(std::bit_cast<std::uint64_t>(value)).Take();
}
Bytes ToBytes(Time value) {
    return ToBytes(value.ticks);
}
Bytes ToBytes(const GUID& value) {
    return mailbox_builder::BytesOf(value);
}
Bytes ToBytes(const Bytes& value) {
    return value;
}

// Elements of one size stand side by side; others have their count and their places before them.
Bytes Join(const std::vector<Bytes>& elements, bool isFixed) {
    ByteWriter joined;
    if (!isFixed) {
        joined.U32(elements.size());
        std::size_t at = 4 + 4 * elements.size();
        for (const Bytes& element : elements) {
            joined.U32(at);
            at += element.size();
        }
    }
    for (const Bytes& element : elements) {
        joined.Append(element);
    }
    return joined.Take();
}

// Brings values of all kinds to bytes; texts to those of the type that is stored.
struct Storing {
    std::uint16_t stored;
    const TextRules& rules;

    Bytes One(const CStringW& text) const {
        return (stored & ~kMultiple) == kString8 ? BytesOf(ToCodePage(text, rules.codePage)) : BytesOf(text);
    }
    Bytes One(const Text8& text) const {
        return (stored & ~kMultiple) == kUnicode ? BytesOf(FromCodePage(text.bytes, rules.codePage))
                                                 : BytesOf(text.bytes);
    }
    template <class T>
    Bytes One(const T& value) const {
        return ToBytes(value);
    }

    StoredValue operator()(const Content& content) const { return &content; }
    template <class T>
    StoredValue operator()(const T& value) const {
        return One(value);
    }
    StoredValue operator()(const Bytes& value) const { return value; }
    template <class T>
    StoredValue operator()(const std::vector<T>& values) const {
        std::vector<Bytes> elements;
        for (const T& value : values) {
            elements.push_back(One(value));
        }
        constexpr bool kIsFixed =
            !std::is_same_v<T, CStringW> && !std::is_same_v<T, Text8> && !std::is_same_v<T, Bytes>;
        return Join(elements, kIsFixed);
    }
};

struct Sizing {
    std::uint64_t operator()(const Content& content) const noexcept { return content.size; }
    std::uint64_t operator()(const CStringW& text) const noexcept { return 2 * text.size(); }
    std::uint64_t operator()(const Text8& text) const noexcept { return text.bytes.size(); }
    std::uint64_t operator()(std::byte) const noexcept { return 1; }
    template <class T>
    std::uint64_t operator()(const T&) const noexcept {
        return sizeof(T);
    }
    template <class T>
    std::uint64_t operator()(const std::vector<T>& values) const noexcept {
        std::uint64_t size = 0;
        for (const T& value : values) {
            size += (*this)(value);
        }
        return size;
    }
    std::uint64_t operator()(const Bytes& bytes) const noexcept { return bytes.size(); }
};

template <class... T>
bool Holds(const Value& value) noexcept {
    return (std::holds_alternative<T>(value) || ...);
}

}  // namespace

unsigned FixedSize(std::uint16_t type) noexcept {
    switch (type) {
        case kBoolean: return 1;
        case kShort: return 2;
        case kLong:
        case 0x0004:
        case 0x000A: return 4;
        case 0x0005:
        case 0x0006:
        case 0x0007:
        case 0x0014:
        case kTime: return 8;
        case 0x0048: return 16;
        default: return 0;
    }
}

bool Suits(std::uint16_t type, const Value& value) noexcept {
    switch (type) {
        case kShort: return Holds<std::int16_t>(value);
        case kLong:
        case 0x000A: return Holds<std::int32_t>(value);
        case 0x0004: return Holds<float>(value);
        case 0x0005:
        case 0x0007: return Holds<double>(value);
        case 0x0006:
        case 0x0014: return Holds<std::int64_t>(value);
        case kBoolean: return Holds<bool>(value);
        case kString8:
        case kUnicode: return Holds<CStringW, Text8>(value);
        case kTime: return Holds<Time>(value);
        case 0x0048: return Holds<GUID>(value);
        case kBinary: return Holds<Bytes, Content>(value);
        case 0x00FB:
        case 0x00FD:
        case 0x00FE: return Holds<Bytes>(value);
        case kMultiple | kShort: return Holds<std::vector<std::int16_t>>(value);
        case kMultiple | kLong: return Holds<std::vector<std::int32_t>>(value);
        case kMultiple | 0x0004: return Holds<std::vector<float>>(value);
        case kMultiple | 0x0005:
        case kMultiple | 0x0007: return Holds<std::vector<double>>(value);
        case kMultiple | 0x0006:
        case kMultiple | 0x0014: return Holds<std::vector<std::int64_t>>(value);
        case kMultiple | kString8:
        case kMultiple | kUnicode: return Holds<std::vector<CStringW>, std::vector<Text8>>(value);
        case kMultiple | kTime: return Holds<std::vector<Time>>(value);
        case kMultiple | 0x0048: return Holds<std::vector<GUID>>(value);
        case kMultiple | kBinary: return Holds<std::vector<Bytes>>(value);
        default: return false;
    }
}

StoredValue ToStored(std::uint16_t stored, const Value& value, const TextRules& rules) {
    return std::visit(Storing{stored, rules}, value);
}

std::uint64_t SizeOf(const Value& value) noexcept {
    return std::visit(Sizing{}, value);
}

std::string ToCodePage(const CStringW& text, unsigned codePage) {
    const auto length = static_cast<int>(text.size());
    const int size =
        length > 0 ? WideCharToMultiByte(codePage, 0, text.data(), length, nullptr, 0, nullptr, nullptr) : 0;
    std::string bytes(static_cast<std::size_t>(size), '\0');
    if (size > 0) {
        WideCharToMultiByte(codePage, 0, text.data(), length, bytes.data(), size, nullptr, nullptr);
    }
    return bytes;
}

CStringW FromCodePage(const std::string& text, unsigned codePage) {
    const auto length = static_cast<int>(text.size());
    const int size = length > 0 ? MultiByteToWideChar(codePage, 0, text.data(), length, nullptr, 0) : 0;
    CStringW units(static_cast<std::size_t>(size), WCHAR{});
    if (size > 0) {
        MultiByteToWideChar(codePage, 0, text.data(), length, units.data(), size);
    }
    return units;
}

Bytes BytesOf(const GUID& guid) {
    ByteWriter bytes;
    bytes.U32(guid.Data1).U16(guid.Data2).U16(guid.Data3);
    for (const auto byte : guid.Data4) {
        bytes.U8(byte);
    }
    return bytes.Take();
}

}  // namespace mailbox_builder
