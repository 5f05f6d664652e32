#include "localmapi/base/ByteSource.h"

#include "localmapi/base/Format.h"

namespace localmapi {

Status MemorySource::ReadAt(std::uint64_t offset, std::span<std::byte> out) {
    if (!m_bytes.Has(offset, out.size())) {
        return Error{ErrorCode::ReadFailed, "the bytes at " + Hex(offset) + " lie past the end"};
    }
    CopyInto(out, m_bytes.Part(offset, out.size()));
    return {};
}

}  // namespace localmapi
