#include "localmapi/object/MemoryProperties.h"

#include "localmapi/object/ValueStreams.h"
#include "localmapi/props/Values.h"
#include "platform/CodePage.h"

#include <cstring>
#include <utility>

namespace localmapi {

namespace {

Error NoSuchValue() {
    return Error{ErrorCode::NotFound, "the object has no such property"};
}

// The bytes of a text without its terminator, or of a binary; nothing for other types.
std::optional<ByteView> BytesIn(const SPropValue& value) {
    const auto* text = reinterpret_cast<const std::byte*>(value.Value.lpszA);
    switch (PROP_TYPE(value.ulPropTag)) {
        case PT_STRING8: return ByteView(text, std::strlen(value.Value.lpszA));
        case PT_UNICODE: return ByteView(text, WideView(value.Value.lpszW).size() * sizeof(WCHAR));
        case PT_BINARY: return BytesOf(value.Value.bin);
        default: return std::nullopt;
    }
}

}  // namespace

void MemoryProperties::Set(const SPropValue& value) {
    SPropValue copy{};
    if (SUCCEEDED(CopyValue(value, m_memory, copy))) {
        m_values[PROP_ID(value.ulPropTag)] = copy;
    }
}

std::vector<ULONG> MemoryProperties::Tags() {
    std::vector<ULONG> tags;
    for (const auto& [id, value] : m_values) {
        tags.push_back(value.ulPropTag);
    }
    return tags;
}

std::optional<ULONG> MemoryProperties::TagOf(ULONG id) {
    const auto found = m_values.find(id);
    return found == m_values.end() ? std::nullopt : std::optional(found->second.ulPropTag);
}

std::uint64_t MemoryProperties::SizeOf(ULONG id) {
    const auto found = m_values.find(id);
    const auto bytes = found == m_values.end() ? std::nullopt : BytesIn(found->second);
    return bytes ? bytes->Size() : 0;
}

Status MemoryProperties::Read(ULONG id, std::uint64_t limit, ValueMemory& memory, SPropValue& value) {
    const auto found = m_values.find(id);
    if (found == m_values.end()) {
        return NoSuchValue();
    }
    if (SizeOf(id) > limit) {
        return Error{ErrorCode::TooLarge, "the value is read by stream only"};
    }
    CopyValue(found->second, memory, value);
    return {};
}

Result<std::unique_ptr<ByteSource>> MemoryProperties::Open(ULONG id) {
    const auto found = m_values.find(id);
    const auto bytes = found == m_values.end() ? std::nullopt : BytesIn(found->second);
    if (!bytes) {
        return NoSuchValue();
    }
    return std::unique_ptr<ByteSource>(std::make_unique<OwnedBytes>(Bytes(bytes->Span().begin(), bytes->Span().end())));
}

UINT MemoryProperties::CodePage() {
    return GetACP();
}

}  // namespace localmapi
