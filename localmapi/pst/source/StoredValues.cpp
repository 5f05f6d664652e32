#include "localmapi/pst/source/StoredValues.h"

#include "localmapi/object/ValueStreams.h"
#include "localmapi/props/Values.h"
#include "localmapi/pst/ltp/Values.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

namespace localmapi::pst {

namespace {

// A stored value by position.
class ValueBytes final : public ByteSource {
public:
    ValueBytes(ValueStream stream, std::uint64_t size) : m_stream(std::move(stream)), m_size(size) {}

    std::uint64_t Size() const noexcept override { return m_size; }
    Status ReadAt(std::uint64_t offset, std::span<std::byte> out) override {
        if (!Inside(offset, out.size(), m_size)) {
            return Error{ErrorCode::ReadFailed, "bytes past the end of a value are asked for"};
        }
        while (!out.empty()) {
            VX_TRY_ASSIGN(const std::size_t got, m_stream.ReadAt(offset, out));
            if (got == 0) {
                return Error{ErrorCode::ReadFailed, "a value ends before its size"};
            }
            offset += got;
            out = out.subspan(got);
        }
        return {};
    }

private:
    ValueStream m_stream;
    std::uint64_t m_size;
};

bool IsZeroUnit(ByteView bytes, std::size_t at, unsigned unit) {
    return bytes.Number(at, unit) == 0;
}

void CutAtTerminator(Bytes& text, unsigned unit) {
    std::size_t end = 0;
    while (end + unit <= text.size() && !IsZeroUnit(text, end, unit)) {
        end += unit;
    }
    text.resize(end);
}

SPropValue ArrayOf(ULONG tag, const ValueList& list, ValueMemory& memory) {
    SPropValue value{};
    value.ulPropTag = tag;
    const auto count = static_cast<ULONG>(list.Count());
    switch (PROP_TYPE(tag)) {
        case PT_MV_UNICODE:
            value.Value.MVszW = {count, memory.Array<LPWSTR>(count)};
            for (ULONG i = 0; i < count; ++i) {
                value.Value.MVszW.lppszW[i] = WideValue(PT_UNICODE, FromUtf16(list.At(i)), memory).Value.lpszW;
            }
            break;
        case PT_MV_STRING8:
            value.Value.MVszA = {count, memory.Array<LPSTR>(count)};
            for (ULONG i = 0; i < count; ++i) {
                Bytes text(list.At(i).Span().begin(), list.At(i).Span().end());
                CutAtTerminator(text, 1);
                value.Value.MVszA.lppszA[i] =
                    NarrowValue(PT_STRING8, {reinterpret_cast<const char*>(text.data()), text.size()}, memory)
                        .Value.lpszA;
            }
            break;
        default:
            value.Value.MVbin = {count, memory.Array<SBinary>(count)};
            for (ULONG i = 0; i < count; ++i) {
                value.Value.MVbin.lpbin[i] = BinaryValue(PT_BINARY, list.At(i), memory).Value.bin;
            }
            break;
    }
    return value;
}

}  // namespace

Bytes LittleEndian(std::uint64_t number, unsigned width) {
    Bytes bytes(width);
    for (unsigned i = 0; i < width; ++i) {
        bytes[i] = static_cast<std::byte>(number >> (8 * i));
    }
    return bytes;
}

Bytes BytesOfText(WideView text) {
    Bytes bytes;
    bytes.reserve(text.size() * 2);
    for (const WCHAR unit : text) {
        bytes.push_back(static_cast<std::byte>(unit));
        bytes.push_back(static_cast<std::byte>(unit >> 8));
    }
    return bytes;
}

std::optional<ULONG> OfferedTag(std::uint16_t id, PropertyType type) noexcept {
    if (id == PROP_ID_NULL || id == PROP_ID_INVALID) {
        return std::nullopt;
    }
    switch (type) {
        case PropertyType::Error: return std::nullopt;
        case PropertyType::ServerEntryId:
        case PropertyType::Restriction:
        case PropertyType::Actions: return PROP_TAG(PT_BINARY, id);
        default: return PROP_TAG(static_cast<ULONG>(type), id);
    }
}

Result<Bytes> WholeBytes(PropertyValue& value, UINT codePage, std::uint64_t limit) {
    if (value.bytes.Size() > limit) {
        return Error{ErrorCode::TooLarge,
                     "the value takes " + std::to_string(value.bytes.Size()) + " bytes; it is read by stream only"};
    }
    if (MayBeNarrow(value)) {
        VX_TRY_ASSIGN(const CStringW text, Text(value, codePage));
        return BytesOfText(text);
    }
    VX_TRY_ASSIGN(Bytes bytes, value.bytes.ReadAll(limit));
    if (value.type == PropertyType::Unicode) {
        CutAtTerminator(bytes, 2);
    } else if (value.type == PropertyType::String8) {
        CutAtTerminator(bytes, 1);
    }
    return bytes;
}

Status ToValue(ULONG tag, Bytes bytes, ValueMemory& memory, SPropValue& value) {
    switch (PROP_TYPE(tag)) {
        case PT_UNICODE: value = WideValue(tag, FromUtf16(bytes), memory); return {};
        case PT_STRING8:
            value = NarrowValue(tag, {reinterpret_cast<const char*>(bytes.data()), bytes.size()}, memory);
            return {};
        case PT_BINARY: value = BinaryValue(tag, bytes, memory); return {};
        case PT_MV_UNICODE:
        case PT_MV_STRING8:
        case PT_MV_BINARY: {
            VX_TRY_ASSIGN(const ValueList list,
                          ValueList::Parse(static_cast<PropertyType>(PROP_TYPE(tag)), std::move(bytes)));
            value = ArrayOf(tag, list, memory);
            return {};
        }
        default:
            if (const auto made = ValueFromBytes(tag, bytes, memory)) {
                value = *made;
                return {};
            }
            return Error{ErrorCode::Corrupt, "the value is cut short"};
    }
}

Status ToValue(ULONG tag, PropertyValue& stored, UINT codePage, std::uint64_t limit, ValueMemory& memory,
               SPropValue& value) {
    if (PROP_TYPE(tag) == PT_OBJECT) {
        value = {};
        value.ulPropTag = tag;
        return {};
    }
    // Numbers are never too large, whatever the caller has room for.
    const bool isNumber = FixedSize(stored.type) != 0;
    VX_TRY_ASSIGN(Bytes bytes, WholeBytes(stored, codePage, isNumber ? ValueStream::kTextLimit : limit));
    return ToValue(tag, std::move(bytes), memory, value);
}

Result<std::unique_ptr<ByteSource>> ToByteSource(PropertyValue stored, UINT codePage) {
    if (MayBeNarrow(stored)) {
        VX_TRY_ASSIGN(Bytes text, WholeBytes(stored, codePage, ValueStream::kTextLimit));
        return std::unique_ptr<ByteSource>(std::make_unique<OwnedBytes>(std::move(text)));
    }
    std::uint64_t size = stored.bytes.Size();
    const unsigned unit = stored.type == PropertyType::Unicode ? 2 : stored.type == PropertyType::String8 ? 1 : 0;
    if (unit != 0 && size >= unit) {
        std::array<std::byte, 2> last{};
        const auto end = std::span(last).first(unit);
        const Result<std::size_t> got = stored.bytes.ReadAt(size - unit, end);
        size -= got && *got == unit && IsZeroUnit(ByteView(end), 0, unit) ? unit : 0;
    }
    return std::unique_ptr<ByteSource>(std::make_unique<ValueBytes>(std::move(stored.bytes), size));
}

SubjectParts SplitSubjectBytes(Bytes stored, bool isWide) {
    const unsigned unit = isWide ? 2 : 1;
    SubjectParts parts{std::move(stored), 0};
    const ByteView view(parts.text);
    if (view.Has(0, 2 * std::uint64_t{unit}) && view.Number(0, unit) == 1) {
        const std::uint64_t length = view.Number(unit, unit);
        parts.text.erase(parts.text.begin(), parts.text.begin() + 2 * static_cast<std::ptrdiff_t>(unit));
        parts.prefix =
            length > 0 && (length - 1) * unit <= parts.text.size() ? static_cast<std::size_t>(length - 1) * unit : 0;
        return parts;
    }
    constexpr std::size_t kMostLetters = 3;
    std::size_t letters = 0;
    const auto isLetter = [&](std::uint64_t character) {
        return (character >= 'A' && character <= 'Z') || (character >= 'a' && character <= 'z') || character >= 0x80;
    };
    while (letters < kMostLetters && isLetter(view.Number(letters * unit, unit))) {
        ++letters;
    }
    if (letters > 0 && view.Number(letters * unit, unit) == ':' && view.Number((letters + 1) * unit, unit) == ' ') {
        parts.prefix = (letters + 2) * unit;
    }
    return parts;
}

}  // namespace localmapi::pst
