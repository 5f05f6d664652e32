// Values as streams, and streams as values: IStream over bytes read by position, and the other way round. Streams that
// are made here can only be read; each holds what its bytes come from.
#pragma once

#include "localmapi/base/ByteSource.h"
#include "localmapi/com/ComObject.h"
#include "localmapi/com/ComPtr.h"
#include "platform/Storage.h"

#include <cstdint>
#include <memory>

namespace localmapi {

// Bytes that belong to the source.
class OwnedBytes final : public ByteSource {
public:
    explicit OwnedBytes(Bytes bytes) : m_bytes(std::make_shared<const Bytes>(std::move(bytes))) {}
    explicit OwnedBytes(std::shared_ptr<const Bytes> bytes) : m_bytes(std::move(bytes)) {}

    std::uint64_t Size() const noexcept override { return m_bytes->size(); }
    Status ReadAt(std::uint64_t offset, std::span<std::byte> out) override {
        return MemorySource(*m_bytes).ReadAt(offset, out);
    }

private:
    std::shared_ptr<const Bytes> m_bytes;
};

// The bytes of a stream by position. The stream's own position moves.
class StreamBytes final : public ByteSource {
public:
    // `size` as the stream tells it. ReadFailed when it does not.
    static Result<std::unique_ptr<ByteSource>> Open(ComPtr<IStream> stream);

    std::uint64_t Size() const noexcept override { return m_size; }
    Status ReadAt(std::uint64_t offset, std::span<std::byte> out) override;

private:
    StreamBytes(ComPtr<IStream> stream, std::uint64_t size) : m_stream(std::move(stream)), m_size(size) {}

    ComPtr<IStream> m_stream;
    std::uint64_t m_size;
};

// All bytes of a source; TooLarge above `limit`.
Result<Bytes> ReadAll(ByteSource& source, std::uint64_t limit);

// A stream over the bytes. `keeps` is the object that they are borrowed from; null when they belong to the source.
ComPtr<IStream> MakeReadStream(std::unique_ptr<ByteSource> bytes, ComPtr<IUnknown> keeps, SharedLock lock);

// The compound file in the bytes, opened for reading. Corrupt when they are none.
Result<ComPtr<IStorage>> OpenStorageIn(std::unique_ptr<ByteSource> bytes, ComPtr<IUnknown> keeps, SharedLock lock);

// The answer of Stat for what has a size and nothing else to tell.
HRESULT TellSize(STATSTG* stat, STGTY type, std::uint64_t size) noexcept;

// Copies what is left of a source into a stream, in pieces.
HRESULT CopyToStream(ByteSource& from, IStream& to);

}  // namespace localmapi
