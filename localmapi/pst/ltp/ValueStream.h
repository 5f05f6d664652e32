// The bytes of a property's value, wherever they lie: in the record itself, in the heap, or in a node of their own. Read
// by position; a large value is never loaded whole unless asked for. One thread at a time.
#pragma once

#include "localmapi/base/Result.h"
#include "localmapi/pst/ndb/BufferCache.h"
#include "localmapi/pst/ndb/DataStream.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <utility>
#include <variant>

namespace localmapi::pst {

// Part of a block, and a share in the block.
struct HeldBytes {
    BufferHold hold;
    ByteView view;
};

// The bytes of a small number that stands in a record or a cell.
struct InlineBytes {
    std::array<std::byte, 4> bytes{};
    unsigned size = 0;
};

class ValueStream {
public:
    // An empty value.
    ValueStream() = default;

    // The low `size` bytes (4 at most) of a number, as they stand in a record or cell.
    static ValueStream Inline(std::uint32_t value, unsigned size);

    explicit ValueStream(HeldBytes bytes) : m_bytes(std::move(bytes)) {}
    explicit ValueStream(DataStream stream) : m_bytes(std::make_unique<DataStream>(std::move(stream))) {}

    std::uint64_t Size() const noexcept;

    // As DataStream::ReadAt.
    Result<std::size_t> ReadAt(std::uint64_t offset, std::span<std::byte> out);

    // The whole value; TooLarge when it is longer than `limit`. Memory grows as bytes arrive.
    Result<Bytes> ReadAll(std::uint64_t limit = kTextLimit);

    // What a single text, or a list of values, may take in memory.
    static constexpr std::uint64_t kTextLimit = std::uint64_t{64} << 20;

private:
    std::variant<InlineBytes, HeldBytes, std::unique_ptr<DataStream>> m_bytes;
};

}  // namespace localmapi::pst
