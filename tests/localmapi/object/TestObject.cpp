#include "tests/localmapi/object/TestObject.h"

#include "localmapi/base/Utf16.h"
#include "tests/localmapi/support/ValueText.h"

#include <array>
#include <cstdio>

namespace localmapi::testing {

Status ScratchProperties::Read(ULONG id, std::uint64_t limit, ValueMemory& memory, SPropValue& value) {
    return id == unreadable ? Status(Error{ErrorCode::Corrupt, "the bytes make no sense"})
                            : m_kept->Read(id, limit, memory, value);
}

Status ScratchProperties::Write(const SPropValue& value) {
    if (value.ulPropTag == refused) {
        return Error{ErrorCode::AccessDenied, "not this one"};
    }
    Set(value);
    return {};
}

Status ScratchProperties::Remove(ULONG id) {
    if (!TagOf(id)) {
        return Error{ErrorCode::NotFound, "no such property"};
    }
    auto others = std::make_unique<MemoryProperties>();
    for (const ULONG tag : Tags()) {
        Arena memory;
        SPropValue value{};
        if (PROP_ID(tag) != id && m_kept->Read(PROP_ID(tag), UINT64_MAX, memory, value)) {
            others->Set(value);
        }
    }
    m_kept = std::move(others);
    return {};
}

void ScratchProperties::SetBytes(ULONG tag, std::string_view bytes) {
    Arena memory;
    const ByteView view(reinterpret_cast<const std::byte*>(bytes.data()), bytes.size());
    switch (PROP_TYPE(tag)) {
        case PT_UNICODE: Set(WideValue(tag, FromUtf16(view), memory)); break;
        case PT_STRING8: Set(NarrowValue(tag, bytes, memory)); break;
        default: Set(BinaryValue(tag, view, memory)); break;
    }
}

namespace {

std::string Failure(HRESULT result) {
    switch (result) {
        case S_OK: return {};
        case MAPI_W_ERRORS_RETURNED: return " with errors";
        case MAPI_E_NOT_FOUND: return "not found";
        case MAPI_E_NO_SUPPORT: return "no support";
        default: return "result " + std::to_string(static_cast<std::uint32_t>(result));
    }
}

}  // namespace

std::string Subject::Props(SPropTagArray* tags, ULONG flags) {
    ULONG count = 0;
    SPropValue* values = nullptr;
    const HRESULT result = object->GetProps(tags, flags, &count, &values);
    const MapiPointer<SPropValue> hold(values);
    return TextOf(std::span(values, count)) + Failure(result);
}

std::string Subject::Props(const std::vector<ULONG>& tags, ULONG flags) {
    std::vector<ULONG> asked = {static_cast<ULONG>(tags.size())};
    asked.insert(asked.end(), tags.begin(), tags.end());
    return Props(reinterpret_cast<SPropTagArray*>(asked.data()), flags);
}

std::string Subject::AllProps(ULONG flags) {
    return Props(nullptr, flags);
}

std::string Subject::Stream(ULONG tag, ULONG flags) {
    ComPtr<IUnknown> opened;
    const HRESULT result = object->OpenProperty(tag, &IID_IStream, 0, flags, opened.Receive());
    return FAILED(result) ? Failure(result) : ReadAllOf(*QueryFor<IStream>(opened.Get(), IID_IStream));
}

std::string Told(SPropProblemArray* problems) {
    const MapiPointer<SPropProblemArray> hold(problems);
    std::string text;
    for (ULONG i = 0; problems != nullptr && i < problems->cProblem; ++i) {
        const SPropProblem& problem = problems->aProblem[i];
        char line[40];
        std::snprintf(line, sizeof line, "%u %08X %03X", static_cast<unsigned>(problem.ulIndex),
                      static_cast<unsigned>(problem.ulPropTag), static_cast<unsigned>(problem.scode) & 0xFFF);
        text += (i > 0 ? "|" : "") + std::string(line);
    }
    return text;
}

std::string Utf16(std::string_view ascii) {
    std::string bytes;
    for (const char character : ascii) {
        bytes += {character, '\0'};
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
