#include "tests/localmapi/object/TestObject.h"

#include "localmapi/object/ValueStreams.h"
#include "platform/GlobalMemory.h"
#include "tests/localmapi/support/ValueText.h"

#include <array>
#include <cstring>

namespace localmapi::testing {

namespace {

Error Missing() {
    return Error{ErrorCode::NotFound, "no such property"};
}

ByteView ViewOf(const std::string& bytes) {
    return {reinterpret_cast<const std::byte*>(bytes.data()), bytes.size()};
}

SPropValue ValueFrom(ULONG tag, const std::string& bytes, ValueMemory& memory) {
    switch (PROP_TYPE(tag)) {
        case PT_UNICODE: {
            CStringW text(bytes.size() / sizeof(WCHAR), WCHAR{});
            std::memcpy(text.data(), bytes.data(), text.size() * sizeof(WCHAR));
            return WideValue(tag, text, memory);
        }
        case PT_STRING8: return NarrowValue(tag, bytes, memory);
        default: return BinaryValue(tag, ViewOf(bytes), memory);
    }
}

}  // namespace

std::vector<ULONG> ScratchProperties::Tags() {
    std::map<ULONG, ULONG> tags;
    for (const auto& [id, stored] : m_bytes) {
        tags[id] = stored.tag;
    }
    for (const auto& [id, value] : m_values) {
        tags[id] = value.ulPropTag;
    }
    std::vector<ULONG> list;
    for (const auto& [id, tag] : tags) {
        list.push_back(tag);
    }
    return list;
}

std::optional<ULONG> ScratchProperties::TagOf(ULONG id) {
    if (const auto found = m_bytes.find(id); found != m_bytes.end()) {
        return found->second.tag;
    }
    const auto found = m_values.find(id);
    return found == m_values.end() ? std::nullopt : std::optional(found->second.ulPropTag);
}

std::uint64_t ScratchProperties::SizeOf(ULONG id) {
    const auto found = m_bytes.find(id);
    return found == m_bytes.end() ? 0 : found->second.bytes.size();
}

Status ScratchProperties::Read(ULONG id, std::uint64_t limit, ValueMemory& memory, SPropValue& value) {
    if (id == unreadable) {
        return Error{ErrorCode::Corrupt, "the bytes make no sense"};
    }
    if (SizeOf(id) > limit) {
        return Error{ErrorCode::TooLarge, "too large"};
    }
    if (const auto found = m_bytes.find(id); found != m_bytes.end()) {
        value = ValueFrom(found->second.tag, found->second.bytes, memory);
        return {};
    }
    const auto found = m_values.find(id);
    if (found == m_values.end()) {
        return Missing();
    }
    CopyValue(found->second, memory, value);
    return {};
}

Result<std::unique_ptr<ByteSource>> ScratchProperties::Open(ULONG id) {
    const auto found = m_bytes.find(id);
    if (found == m_bytes.end()) {
        return Missing();
    }
    const ByteView bytes = ViewOf(found->second.bytes);
    return std::unique_ptr<ByteSource>(std::make_unique<OwnedBytes>(Bytes(bytes.Span().begin(), bytes.Span().end())));
}

Status ScratchProperties::Write(const SPropValue& value) {
    if (value.ulPropTag == refused) {
        return Error{ErrorCode::AccessDenied, "not this one"};
    }
    const ULONG id = PROP_ID(value.ulPropTag);
    m_bytes.erase(id);
    m_values.erase(id);
    switch (PROP_TYPE(value.ulPropTag)) {
        case PT_UNICODE: {
            const WideView text(value.Value.lpszW);
            SetBytes(value.ulPropTag, {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(WCHAR)});
            break;
        }
        case PT_STRING8: SetBytes(value.ulPropTag, value.Value.lpszA); break;
        case PT_BINARY:
            SetBytes(value.ulPropTag, {reinterpret_cast<const char*>(value.Value.bin.lpb), value.Value.bin.cb});
            break;
        default: CopyValue(value, m_memory, m_values[id]);
    }
    return {};
}

Status ScratchProperties::Remove(ULONG id) {
    return m_bytes.erase(id) + m_values.erase(id) > 0 ? Status() : Status(Missing());
}

Result<ComPtr<IStream>> ScratchProperties::OpenForWriting(ULONG tag, bool) {
    if (!isWritable) {
        return Error{ErrorCode::AccessDenied, "read only"};
    }
    ComPtr<IStream> stream;
    if (FAILED(CreateStreamOnHGlobal(nullptr, TRUE, stream.Receive()))) {
        return Error{ErrorCode::ReadFailed, "no memory"};
    }
    SetBytes(tag, {});
    m_streams[PROP_ID(tag)] = stream;
    return stream;
}

Status ScratchProperties::Save() {
    ++saves;
    for (auto& [id, stream] : m_streams) {
        stream->Seek({}, STREAM_SEEK_SET, nullptr);
        m_bytes[id].bytes = ReadAllOf(*stream);
    }
    m_streams.clear();
    return {};
}

std::string Subject::Props(const std::vector<ULONG>& tags, ULONG flags) {
    auto asked = MakeRoot<SPropTagArray>(CbNewSPropTagArray(tags.size()));
    asked->cValues = static_cast<ULONG>(tags.size());
    std::copy(tags.begin(), tags.end(), asked->aulPropTag);
    ULONG count = 0;
    SPropValue* values = nullptr;
    const HRESULT result = object->GetProps(asked.get(), flags, &count, &values);
    const MapiPointer<SPropValue> hold(values);
    return TextOf(std::span(values, count)) + (result == S_OK ? "" : " " + NameOf(result));
}

std::string Subject::AllProps(ULONG flags) {
    ULONG count = 0;
    SPropValue* values = nullptr;
    const HRESULT result = object->GetProps(nullptr, flags, &count, &values);
    const MapiPointer<SPropValue> hold(values);
    return TextOf(std::span(values, count)) + (result == S_OK ? "" : " " + NameOf(result));
}

std::string Subject::Stream(ULONG tag, ULONG flags) {
    ComPtr<IUnknown> opened;
    const HRESULT result = object->OpenProperty(tag, &IID_IStream, 0, flags, opened.Receive());
    const auto stream = QueryFor<IStream>(opened.Get(), IID_IStream);
    return FAILED(result) ? NameOf(result) : ReadAllOf(*stream);
}

std::string NameOf(HRESULT result) {
    switch (result) {
        case S_OK: return "S_OK";
        case MAPI_W_ERRORS_RETURNED: return "MAPI_W_ERRORS_RETURNED";
        case MAPI_E_NOT_FOUND: return "MAPI_E_NOT_FOUND";
        case MAPI_E_NO_ACCESS: return "MAPI_E_NO_ACCESS";
        case MAPI_E_NO_SUPPORT: return "MAPI_E_NO_SUPPORT";
        case MAPI_E_CORRUPT_DATA: return "MAPI_E_CORRUPT_DATA";
        case MAPI_E_INVALID_PARAMETER: return "MAPI_E_INVALID_PARAMETER";
        case MAPI_E_INTERFACE_NOT_SUPPORTED: return "MAPI_E_INTERFACE_NOT_SUPPORTED";
        default: return "result " + std::to_string(static_cast<std::uint32_t>(result));
    }
}

std::string Utf16(std::string_view ascii) {
    std::string bytes;
    for (const char character : ascii) {
        bytes.push_back(character);
        bytes.push_back('\0');
    }
    return bytes;
}

std::string ReadAllOf(IStream& stream) {
    std::string all;
    std::array<char, 100> piece;
    ULONG got = 0;
    while (SUCCEEDED(stream.Read(piece.data(), static_cast<ULONG>(piece.size()), &got)) && got > 0) {
        all.append(piece.data(), got);
    }
    return all;
}

}  // namespace localmapi::testing
