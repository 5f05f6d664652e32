#include "localmapi/pst/source/ObjectProperties.h"

#include "localmapi/base/Format.h"
#include "localmapi/object/ValueStreams.h"
#include "localmapi/pst/ltp/Values.h"

#include <algorithm>
#include <string>
#include <utility>

namespace localmapi::pst {

namespace {

bool HasBytes(ULONG tag) noexcept {
    switch (PROP_TYPE(tag)) {
        case PT_UNICODE:
        case PT_STRING8:
        case PT_BINARY:
        case PT_OBJECT: return true;
        default: return false;
    }
}

}  // namespace

Error ObjectProperties::NoSuchProperty(ULONG id) const {
    const std::string owner = m_stored == nullptr ? "the object" : Name(m_stored->OwnerId());
    return Error{ErrorCode::NotFound, owner + ": there is no property " + Hex(id)};
}

std::optional<ULONG> ObjectProperties::StoredTag(ULONG id) {
    const PropertyContext::Record* record =
        m_stored == nullptr || id > 0xFFFF ? nullptr : m_stored->Find(static_cast<std::uint16_t>(id));
    return record == nullptr ? std::nullopt : OfferedTag(record->id, record->type);
}

Result<PropertyValue> ObjectProperties::OpenStored(ULONG id) {
    return IsStored(id) ? m_stored->Read(static_cast<std::uint16_t>(id)) : Result<PropertyValue>(NoSuchProperty(id));
}

std::optional<std::int64_t> ObjectProperties::StoredNumber(ULONG tag) {
    Result<PropertyValue> value = OpenStored(PROP_ID(tag));
    return value ? Integer(*value) : std::nullopt;
}

Result<Bytes> ObjectProperties::Make(ULONG id, std::uint64_t) {
    return NoSuchProperty(id);
}

std::vector<ULONG> ObjectProperties::Tags() {
    std::vector<ULONG> tags;
    if (m_stored != nullptr) {
        for (const PropertyContext::Record& record : m_stored->Records()) {
            if (IsStored(record.id)) {
                tags.push_back(*TagOf(record.id));
            }
        }
    }
    for (const ULONG id : MadeIds()) {
        if (const auto tag = IsStored(id) ? std::nullopt : MadeTag(id)) {
            tags.push_back(*tag);
        }
    }
    std::sort(tags.begin(), tags.end());
    return tags;
}

std::optional<ULONG> ObjectProperties::TagOf(ULONG id) {
    const auto made = MadeTag(id);
    return made ? made : StoredTag(id);
}

std::uint64_t ObjectProperties::SizeOf(ULONG id) {
    const auto tag = TagOf(id);
    if (!tag || !HasBytes(*tag)) {
        return 0;
    }
    if (const auto bytes = Open(id)) {
        return (*bytes)->Size();
    }
    if (PROP_TYPE(*tag) != PT_OBJECT) {
        return 0;
    }
    const Result<ObjectReference> object = m_stored->ReadObject(static_cast<std::uint16_t>(id));
    return object ? object->size : 0;
}

Status ObjectProperties::Read(ULONG id, std::uint64_t limit, ValueMemory& memory, SPropValue& value) {
    if (const auto made = MadeTag(id)) {
        VX_TRY_ASSIGN(Bytes bytes, Make(id, limit));
        if (HasBytes(*made) && bytes.size() > limit) {
            return Error{ErrorCode::TooLarge, "the value takes " + std::to_string(bytes.size()) + " bytes"};
        }
        return ToValue(*made, std::move(bytes), memory, value);
    }
    const auto tag = StoredTag(id);
    if (!tag) {
        return NoSuchProperty(id);
    }
    VX_TRY_ASSIGN(PropertyValue stored, OpenStored(id));
    return ToValue(*tag, stored, m_codePage, limit, memory, value);
}

Result<std::unique_ptr<ByteSource>> ObjectProperties::Open(ULONG id) {
    const auto tag = TagOf(id);
    if (!tag) {
        return NoSuchProperty(id);
    }
    if (!HasBytes(*tag)) {
        return Error{ErrorCode::Unsupported, "property " + Hex(id) + " is no text and no binary"};
    }
    if (MadeTag(id)) {
        VX_TRY_ASSIGN(Bytes bytes, Make(id, ValueStream::kTextLimit));
        return std::unique_ptr<ByteSource>(std::make_unique<OwnedBytes>(std::move(bytes)));
    }
    VX_TRY_ASSIGN(PropertyValue stored, OpenStored(id));
    if (stored.type == PropertyType::Object) {
        return Error{ErrorCode::Unsupported, "property " + Hex(id) + " is an object that is no bytes"};
    }
    return ToByteSource(std::move(stored), m_codePage);
}

}  // namespace localmapi::pst
