// How the properties of a set are read.
#include "localmapi/msg/PropertySet.h"

#include "localmapi/base/Format.h"
#include "localmapi/msg/ElementNames.h"
#include "localmapi/props/Values.h"

#include <algorithm>

namespace localmapi::msg {

namespace {

// The bytes of a value that is in memory, without its terminator.
class HeldSource final : public ByteSource {
public:
    HeldSource(std::shared_ptr<const StreamValue> value, ULONG tag)
        : m_value(std::move(value)), m_bytes(WithoutTerminator(tag, m_value->main)) {}

    std::uint64_t Size() const noexcept override { return m_bytes.Size(); }
    Status ReadAt(std::uint64_t offset, std::span<std::byte> out) override {
        return MemorySource(m_bytes).ReadAt(offset, out);
    }

private:
    std::shared_ptr<const StreamValue> m_value;
    ByteView m_bytes;  // of m_value
};

Error TooLarge(const std::string& name, std::uint64_t limit) {
    return Error{ErrorCode::TooLarge, name + " is larger than " + std::to_string(limit) + " bytes"};
}

}  // namespace

std::string PropertySet::NameOf(ULONG tag) const {
    return m_storage != nullptr ? m_storage->NameOf(ValueName(tag)) : "property " + Hex(tag);
}

Error PropertySet::NotFound(ULONG id) const {
    return Error{ErrorCode::NotFound,
                 (m_storage != nullptr ? m_storage->Path() : std::string()) + "property " + Hex(id) + " is not there"};
}

const PropertySet::Property* PropertySet::Find(ULONG id) const noexcept {
    const auto found =
        std::lower_bound(m_properties.begin(), m_properties.end(), id,
                         [](const Property& property, ULONG wanted) { return PROP_ID(property.tag) < wanted; });
    return found != m_properties.end() && PROP_ID(found->tag) == id ? &*found : nullptr;
}

PropertySet::Property* PropertySet::Find(ULONG id) noexcept {
    return const_cast<Property*>(std::as_const(*this).Find(id));
}

std::vector<ULONG> PropertySet::Tags() const {
    std::vector<ULONG> tags;
    tags.reserve(m_properties.size());
    for (const Property& property : m_properties) {
        tags.push_back(property.tag);
    }
    return tags;
}

std::optional<ULONG> PropertySet::TagOf(ULONG id) const {
    const Property* property = Find(id);
    return property != nullptr ? std::optional(property->tag) : std::nullopt;
}

std::optional<std::int32_t> PropertySet::Long(ULONG id) const {
    const Property* property = Find(id);
    return property != nullptr && PROP_TYPE(property->tag) == PT_LONG
               ? std::optional(static_cast<std::int32_t>(static_cast<std::uint32_t>(property->area)))
               : std::nullopt;
}

bool PropertySet::HasObjectStorage(ULONG tag) const {
    const auto found = m_elements.find({tag, kMain});
    return found != m_elements.end() && found->second.isStorage;
}

std::uint64_t PropertySet::SizeOf(ULONG id) {
    const Property* property = Find(id);
    if (property == nullptr || PROP_TYPE(property->tag) == PT_CLSID) {
        return 0;
    }
    const auto source = OpenStreamOf(*property);
    return source ? (*source)->Size() : 0;
}

Result<std::unique_ptr<ByteSource>> PropertySet::Open(ULONG id) {
    const Property* property = Find(id);
    if (property == nullptr) {
        return NotFound(id);
    }
    if (PROP_TYPE(property->tag) == PT_CLSID) {
        return Error{ErrorCode::Unsupported, NameOf(property->tag) + " is no value that is read by position"};
    }
    return OpenStreamOf(*property);
}

// The main stream of a value of the forms Stream and Object.
Result<std::unique_ptr<ByteSource>> PropertySet::OpenStreamOf(const Property& property) {
    const ULONG tag = property.tag;
    const ValueForm form = FormOf(tag);
    if ((form != ValueForm::Stream && form != ValueForm::Object) || HasObjectStorage(tag)) {
        return Error{ErrorCode::Unsupported, NameOf(tag) + " is no value that is read by position"};
    }
    if (property.inMemory != nullptr) {
        return std::unique_ptr<ByteSource>(std::make_unique<HeldSource>(property.inMemory, tag));
    }
    VX_TRY_ASSIGN(auto stream, m_storage->OpenStream(ValueName(tag)));
    VX_TRY_ASSIGN(std::uint64_t size, stream->Size());
    if (IsText(tag)) {
        // A text that cannot be read to its end is given as far as it goes.
        std::array<std::byte, 2> tail{};
        const std::size_t count = size < tail.size() ? static_cast<std::size_t>(size) : tail.size();
        if (stream->ReadAt(size - count, std::span(tail).first(count))) {
            size = SizeWithoutTerminator(tag, size, ByteView(tail.data(), count));
        }
    }
    return std::unique_ptr<ByteSource>(std::make_unique<StreamSource>(std::move(stream), size));
}

Status PropertySet::Read(ULONG id, std::uint64_t limit, ValueMemory& memory, SPropValue& value) {
    const Property* property = Find(id);
    if (property == nullptr) {
        return NotFound(id);
    }
    const ULONG tag = property->tag;
    switch (FormOf(tag)) {
        case ValueForm::Parts: return ReadParts(*property, limit, memory, value);
        case ValueForm::Object:
            value = {};
            value.ulPropTag = tag;
            return {};
        default: break;
    }
    std::optional<SPropValue> read;
    if (FormOf(tag) == ValueForm::Area) {
        read = ValueOfArea(tag, property->area, memory);
    } else {
        VX_TRY_ASSIGN(const Bytes bytes, MainBytes(*property, limit));
        read = ValueFromBytes(tag, bytes, memory);
    }
    if (!read) {
        return Error{ErrorCode::Corrupt, NameOf(tag) + " has too few bytes for its type"};
    }
    value = *read;
    return {};
}

// The main stream, without a terminator.
Result<Bytes> PropertySet::MainBytes(const Property& property, std::uint64_t limit) {
    const ULONG tag = property.tag;
    Bytes bytes;
    if (property.inMemory != nullptr) {
        bytes = property.inMemory->main;
    } else {
        VX_TRY_ASSIGN(const auto stream, m_storage->OpenStream(ValueName(tag)));
        VX_TRY_ASSIGN(const std::uint64_t size, stream->Size());
        if (size > limit && size - limit > TerminatorSize(tag)) {
            return TooLarge(NameOf(tag), limit);
        }
        VX_TRY_ASSIGN(bytes, stream->ReadAll(size));
    }
    bytes.resize(static_cast<std::size_t>(SizeWithoutTerminator(tag, bytes.size(), bytes)));
    if (bytes.size() > limit) {
        return TooLarge(NameOf(tag), limit);
    }
    return bytes;
}

Status PropertySet::ReadParts(const Property& property, std::uint64_t limit, ValueMemory& memory, SPropValue& value) {
    VX_TRY_ASSIGN(const Bytes lengths, MainBytes(property, limit));
    std::vector<Bytes> loaded;
    const std::vector<Bytes>* parts = &loaded;
    if (property.inMemory != nullptr) {
        parts = &property.inMemory->parts;
    } else {
        VX_TRY_ASSIGN(loaded, LoadParts(property, lengths.size() / LengthEntrySize(property.tag), limit));
    }
    const std::vector<ByteView> views(parts->begin(), parts->end());
    value = ValueOfParts(property.tag, views, memory);
    return {};
}

// Values that are missing are left out; their number is that of the main stream's entries, whatever those say.
Result<std::vector<Bytes>> PropertySet::LoadParts(const Property& property, std::size_t count, std::uint64_t limit) {
    std::vector<Bytes> parts;
    const ULONG tag = property.tag;
    std::uint64_t total = 0;
    for (auto at = m_elements.upper_bound({tag, kMain}); at != m_elements.end() && at->first.tag == tag; ++at) {
        if (at->first.place > count || at->second.isStorage) {
            continue;
        }
        total += at->second.size;
        if (total > limit) {
            return TooLarge(NameOf(tag), limit);
        }
        const CStringW name = ValueName(tag, static_cast<std::uint32_t>(at->first.place - 1));
        VX_TRY_ASSIGN(const auto stream, m_storage->OpenStream(name));
        VX_TRY_ASSIGN(Bytes bytes, stream->ReadAll(limit));
        parts.push_back(std::move(bytes));
    }
    if (parts.empty()) {
        return Error{ErrorCode::NotFound, NameOf(tag) + " lacks all of its values"};
    }
    if (parts.size() < count) {
        m_problems->Report(NameOf(tag) + " lacks " + std::to_string(count - parts.size()) + " of its "
                           + std::to_string(count) + " values; they are left out");
    }
    return parts;
}

}  // namespace localmapi::msg
