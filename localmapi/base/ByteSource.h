// Bytes read by position: the seam between the readers and the system, and the place where tests inject faults.
#pragma once

#include "localmapi/base/Bytes.h"
#include "localmapi/base/Result.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>

namespace localmapi {

// One thread at a time for each object; any number of objects may read the same file.
class ByteSource {
public:
    virtual ~ByteSource() = default;

    // Bytes that there were at opening. The file may have grown or shrunk since.
    virtual std::uint64_t Size() const noexcept = 0;

    // Fills `out` from `offset` on. ReadFailed when any of the bytes cannot be had, among them those past the end;
    // `out` then holds nothing of use.
    virtual Status ReadAt(std::uint64_t offset, std::span<std::byte> out) = 0;
};

// Opens a regular file for reading, denying nothing to other processes: they may go on writing, renaming and deleting.
// NotFound, Busy, AccessDenied, Unsupported (a folder or a device) or ReadFailed. Files beyond 4 GiB are read.
Result<std::unique_ptr<ByteSource>> OpenFileReadOnly(const std::filesystem::path& path);

// Bytes in memory as a source. They are borrowed: the owner outlives the source.
class MemorySource final : public ByteSource {
public:
    explicit MemorySource(ByteView bytes) noexcept : m_bytes(bytes) {}

    std::uint64_t Size() const noexcept override { return m_bytes.Size(); }
    Status ReadAt(std::uint64_t offset, std::span<std::byte> out) override;

private:
    ByteView m_bytes;
};

}  // namespace localmapi
