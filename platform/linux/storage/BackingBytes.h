// The bytes under a compound file, read and written by position: a file, a caller's byte array, or memory.
// One thread at a time.
#pragma once

#include "platform/BaseTypes.h"
#include "platform/ResultCodes.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace vx_storage {

enum class Durability { Cached, OnDisk };

class BackingBytes {
public:
    virtual ~BackingBytes() = default;

    // Reads into `out` from `offset`. `got` is less than asked only at the end of the bytes.
    [[nodiscard]] virtual HRESULT ReadAt(std::uint64_t offset, std::span<std::byte> out, std::size_t& got) = 0;
    // Writes all of `in` at `offset`, growing the bytes where needed.
    [[nodiscard]] virtual HRESULT WriteAt(std::uint64_t offset, std::span<const std::byte> in) = 0;
    [[nodiscard]] virtual HRESULT SetSize(std::uint64_t size) = 0;
    [[nodiscard]] virtual HRESULT GetSize(std::uint64_t& size) = 0;
    [[nodiscard]] virtual HRESULT Flush(Durability durability) = 0;
    // Lets go of what is underneath, though others still hold this object. Everything then fails with STG_E_REVERTED.
    virtual void Close() noexcept = 0;
};

// Bytes in memory, for images small enough.
class MemoryBytes final : public BackingBytes {
public:
    [[nodiscard]] HRESULT ReadAt(std::uint64_t offset, std::span<std::byte> out, std::size_t& got) override;
    [[nodiscard]] HRESULT WriteAt(std::uint64_t offset, std::span<const std::byte> in) override;
    [[nodiscard]] HRESULT SetSize(std::uint64_t size) override;
    [[nodiscard]] HRESULT GetSize(std::uint64_t& size) override;
    [[nodiscard]] HRESULT Flush(Durability durability) override;
    void Close() noexcept override;

private:
    std::vector<std::byte> m_bytes;
};

// Copies all of `from` to the start of `to`, and ends `to` there. What goes wrong may leave `to` in between.
[[nodiscard]] HRESULT CopyBytes(BackingBytes& from, BackingBytes& to);

// Bytes that nothing else sees and that are gone with the object: in memory up to kPendingMemoryBytes, else an unnamed
// file.
[[nodiscard]] HRESULT MakeUnnamedBytes(std::uint64_t expectedSize, std::shared_ptr<BackingBytes>& bytes);

}  // namespace vx_storage
