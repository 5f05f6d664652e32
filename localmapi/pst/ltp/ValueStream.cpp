#include "localmapi/pst/ltp/ValueStream.h"

#include <algorithm>
#include <string>

namespace localmapi::pst {

ValueStream ValueStream::Inline(std::uint32_t value, unsigned size) {
    InlineBytes bytes;
    bytes.size = std::min<unsigned>(size, static_cast<unsigned>(bytes.bytes.size()));
    for (unsigned i = 0; i < bytes.size; ++i) {
        bytes.bytes[i] = static_cast<std::byte>(value >> (8 * i));
    }
    ValueStream stream;
    stream.m_bytes = bytes;
    return stream;
}

std::uint64_t ValueStream::Size() const noexcept {
    if (const auto* number = std::get_if<InlineBytes>(&m_bytes)) {
        return number->size;
    }
    if (const auto* held = std::get_if<HeldBytes>(&m_bytes)) {
        return held->view.Size();
    }
    return (*std::get_if<std::unique_ptr<DataStream>>(&m_bytes))->Size();
}

Result<std::size_t> ValueStream::ReadAt(std::uint64_t offset, std::span<std::byte> out) {
    if (const auto* number = std::get_if<InlineBytes>(&m_bytes)) {
        return CopyInto(out, ByteView(number->bytes.data(), number->size).Part(offset));
    }
    if (const auto* held = std::get_if<HeldBytes>(&m_bytes)) {
        return CopyInto(out, held->view.Part(offset));
    }
    return (*std::get_if<std::unique_ptr<DataStream>>(&m_bytes))->ReadAt(offset, out);
}

Result<Bytes> ValueStream::ReadAll(std::uint64_t limit) {
    if (Size() > limit) {
        return Error{ErrorCode::TooLarge,
                     "the value takes " + std::to_string(Size()) + " bytes, more than " + std::to_string(limit)};
    }
    constexpr std::uint64_t kStep = 1U << 20;
    Bytes bytes;
    while (bytes.size() < Size()) {
        const std::size_t before = bytes.size();
        bytes.resize(before + static_cast<std::size_t>(std::min(kStep, Size() - before)));
        VX_TRY_ASSIGN(const std::size_t got, ReadAt(before, std::span(bytes).subspan(before)));
        bytes.resize(before + got);
        if (got == 0) {
            break;
        }
    }
    return bytes;
}

}  // namespace localmapi::pst
