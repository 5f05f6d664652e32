// A storage of a message file and the streams opened from it. An element can be opened by one object at a time, so what
// is open is shared: readers and writers of one stream work on the same object, each by position.
//
// One thread at a time. Streams and storages opened from a storage must not outlive it.
#pragma once

#include "localmapi/base/ByteSource.h"
#include "localmapi/base/Bytes.h"
#include "localmapi/base/Result.h"
#include "localmapi/com/ComPtr.h"
#include "platform/Storage.h"
#include "platform/WideText.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace localmapi::msg {

// What a failed call on an element means: NotFound, AccessDenied, Busy, Corrupt, else ReadFailed. `what` names the
// element and says what could not be done with it.
Error StorageFailure(HRESULT result, std::string what);

class OpenedStream {
public:
    OpenedStream(ComPtr<IStream> stream, std::string path) : m_stream(std::move(stream)), m_path(std::move(path)) {}

    Result<std::uint64_t> Size();

    // As ByteSource::ReadAt.
    Status ReadAt(std::uint64_t offset, std::span<std::byte> out);

    // The bytes from the start on, at most `limit` of them. Memory grows as they arrive: the size that a damaged file
    // tells is not believed.
    Result<Bytes> ReadAll(std::uint64_t limit);

    Status WriteAt(std::uint64_t offset, ByteView bytes);
    Status SetSize(std::uint64_t size);

    // Another object on the same bytes, at their start.
    Result<ComPtr<IStream>> Clone();

private:
    Status SeekTo(std::uint64_t offset);

    ComPtr<IStream> m_stream;
    std::string m_path;
};

class OpenedStorage {
public:
    struct Element {
        CStringW name;
        bool isStorage;
        std::uint64_t size;  // of a stream
    };

    // `path` names the storage in messages: "" for a file's root, else with a slash at its end.
    OpenedStorage(ComPtr<IStorage> storage, std::string path, bool isWritable)
        : m_storage(std::move(storage)), m_path(std::move(path)), m_isWritable(isWritable) {}

    const std::string& Path() const noexcept { return m_path; }
    bool IsWritable() const noexcept { return m_isWritable; }
    IStorage& Interface() const noexcept { return *m_storage; }

    // In the order of the directory.
    Result<std::vector<Element>> Elements() const;

    Result<std::shared_ptr<OpenedStream>> OpenStream(const CStringW& name);
    Result<std::shared_ptr<OpenedStream>> OpenOrCreateStream(const CStringW& name);

    // Makes `bytes` the content of a stream, which is made if need be.
    Status WriteStream(const CStringW& name, ByteView bytes);

    Result<ComPtr<IStorage>> OpenStorage(const CStringW& name) const;

    // A storage without elements; what had the name is gone.
    Result<ComPtr<IStorage>> CreateStorage(const CStringW& name);

    // Does nothing where there is none.
    Status Destroy(const CStringW& name);

    std::string NameOf(const CStringW& name) const;

private:
    std::shared_ptr<OpenedStream> FindOpen(const CStringW& name);
    std::shared_ptr<OpenedStream> Keep(const CStringW& name, ComPtr<IStream> stream);
    DWORD Mode() const noexcept;

    ComPtr<IStorage> m_storage;
    std::string m_path;
    bool m_isWritable;
    std::map<CStringW, std::weak_ptr<OpenedStream>> m_open;
};

// Part of a stream as a source.
class StreamSource final : public ByteSource {
public:
    StreamSource(std::shared_ptr<OpenedStream> stream, std::uint64_t size)
        : m_stream(std::move(stream)), m_size(size) {}

    std::uint64_t Size() const noexcept override { return m_size; }
    Status ReadAt(std::uint64_t offset, std::span<std::byte> out) override;

private:
    std::shared_ptr<OpenedStream> m_stream;
    std::uint64_t m_size;
};

}  // namespace localmapi::msg
