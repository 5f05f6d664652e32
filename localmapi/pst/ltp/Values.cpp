#include "localmapi/pst/ltp/Values.h"

#include "platform/CodePage.h"

#include <algorithm>
#include <array>
#include <limits>
#include <span>
#include <utility>

namespace localmapi::pst {

namespace {

constexpr UINT kUtf16Page = 1200;
constexpr UINT kUtf8Page = 65001;
constexpr UINT kWesternPage = 1252;
constexpr DWORD kStrict = 0x8;  // MB_ERR_INVALID_CHARS

std::int64_t SignExtended(std::uint64_t bits, unsigned size) {
    switch (size) {
        case 2: return static_cast<std::int16_t>(bits);
        case 4: return static_cast<std::int32_t>(bits);
        default: return static_cast<std::int64_t>(bits);
    }
}

std::optional<CStringW> Convert(ByteView bytes, UINT codePage, DWORD flags) {
    if (bytes.IsEmpty()) {
        return CStringW{};
    }
    const auto* text = reinterpret_cast<const char*>(bytes.Data());
    const int size = static_cast<int>(bytes.Size());
    const int length = MultiByteToWideChar(codePage, flags, text, size, nullptr, 0);
    if (length <= 0) {
        return std::nullopt;
    }
    CStringW wide(static_cast<std::size_t>(length), WCHAR{});
    if (MultiByteToWideChar(codePage, flags, text, size, wide.data(), length) != length) {
        return std::nullopt;
    }
    return wide;
}

}  // namespace

std::optional<std::int64_t> Integer(PropertyValue& value) {
    const unsigned size = IsMultiple(value.type) ? 0 : FixedSize(value.type);
    std::array<std::byte, 8> bytes{};
    if (size == 0 || size > bytes.size()) {
        return std::nullopt;
    }
    const Result<std::size_t> got = value.bytes.ReadAt(0, std::span(bytes).first(size));
    if (!got || *got < size) {
        return std::nullopt;
    }
    const std::uint64_t bits = ByteView(bytes.data(), size).Number(0, size);
    return value.type == PropertyType::Boolean ? std::int64_t{bits != 0} : SignExtended(bits, size);
}

CStringW FromCodePage(ByteView bytes, UINT codePage) {
    const auto end = std::find(bytes.Span().begin(), bytes.Span().end(), std::byte{0});
    const std::size_t length =
        std::min<std::size_t>(static_cast<std::size_t>(end - bytes.Span().begin()), std::numeric_limits<int>::max());
    const ByteView text = bytes.Part(0, length);
    if (codePage != kUtf16Page) {
        if (auto wide = Convert(text, codePage, 0)) {
            return *std::move(wide);
        }
    }
    if (auto wide = Convert(text, kUtf8Page, kStrict)) {
        return *std::move(wide);
    }
    return Convert(text, kWesternPage, 0).value_or(CStringW{});
}

Result<CStringW> Text(PropertyValue& value, UINT codePage) {
    if (value.type != PropertyType::Unicode && value.type != PropertyType::String8) {
        return Error{ErrorCode::Corrupt, "the property is no text"};
    }
    VX_TRY_ASSIGN(const Bytes bytes, value.bytes.ReadAll());
    const bool isNarrow = bytes.size() % 2 != 0 && std::find(bytes.begin(), bytes.end(), std::byte{0}) == bytes.end();
    return value.type == PropertyType::Unicode && !isNarrow ? FromUtf16(bytes) : FromCodePage(bytes, codePage);
}

Result<ValueList> ValueList::Parse(PropertyType type, Bytes bytes) {
    const Error broken{ErrorCode::Corrupt, "the offsets of a property's values contradict each other"};
    ValueList list;
    list.m_bytes = std::move(bytes);
    const ByteView view(list.m_bytes);
    if (view.Size() > std::numeric_limits<std::uint32_t>::max()) {
        return Error{ErrorCode::TooLarge, "the values of a property take more than 4 GiB"};
    }
    const auto size = static_cast<std::uint32_t>(view.Size());
    if (const unsigned each = FixedSize(BaseOf(type)); each != 0) {
        list.m_ends.reserve(size / each);
        for (std::uint64_t end = each; end <= size; end += each) {
            list.m_ends.push_back(static_cast<std::uint32_t>(end));
        }
        return list;
    }
    // A count, then where each element begins; the last one reaches to the end.
    const std::uint32_t count = view.U32(0);
    if (count == 0) {
        return list;
    }
    if (!view.Has(4, std::uint64_t{count} * 4)) {
        return broken;
    }
    list.m_first = view.U32(4);
    list.m_ends.reserve(count);
    std::uint32_t previous = 4 + count * 4;
    for (std::uint32_t i = 0; i < count; ++i) {
        const std::uint32_t begin = view.U32(4 + std::uint64_t{i} * 4);
        if (begin < previous || begin > size) {
            return broken;
        }
        if (i > 0) {
            list.m_ends.push_back(begin);
        }
        previous = begin;
    }
    list.m_ends.push_back(size);
    return list;
}

ByteView ValueList::At(std::size_t index) const noexcept {
    const std::uint32_t begin = index == 0 ? m_first : m_ends[index - 1];
    return ByteView(m_bytes).Part(begin, m_ends[index] - begin);
}

}  // namespace localmapi::pst
