// Where a written file goes: the disk, memory, or a test that counts and fails. Whoever writes a file hands its pieces
// over mostly in ascending order, and comes back to a few places (the maps of the file's space, the header).
#pragma once

#include "localmapi/base/Bytes.h"
#include "localmapi/base/Result.h"

#include <cstdint>
#include <filesystem>
#include <memory>

namespace mailbox_builder {

using localmapi::Bytes;
using localmapi::ByteView;
using localmapi::Error;
using localmapi::ErrorCode;
using localmapi::Result;
using localmapi::Status;

// One thread at a time.
class ByteSink {
public:
    virtual ~ByteSink() = default;

    // Puts `bytes` at `offset`, over what is there. What lies between the end and `offset` becomes zeros.
    virtual Status WriteAt(std::uint64_t offset, ByteView bytes) = 0;

    // All is there and stays: without this call a sink on the disk leaves nothing behind.
    virtual Status Finish() = 0;
};

// A file, created or overwritten. It is removed when the sink goes without having been finished.
Result<std::unique_ptr<ByteSink>> CreateFileSink(const std::filesystem::path& path);

// Appends to `bytes`, which is borrowed and outlives the sink.
std::unique_ptr<ByteSink> CreateMemorySink(Bytes& bytes);

}  // namespace mailbox_builder
