// The bytes of a file on disk, and the sharing among all who have it open through this implementation.
#pragma once

#include "platform/linux/storage/BackingBytes.h"

#include <filesystem>
#include <string>
#include <utility>

#include <sys/stat.h>

namespace vx_storage {

// An open file descriptor; -1 is none. Closed with the holder; move-only.
class FileDescriptor {
public:
    FileDescriptor() = default;
    explicit FileDescriptor(int descriptor) noexcept : m_descriptor(descriptor) {}
    FileDescriptor(FileDescriptor&& other) noexcept : m_descriptor(std::exchange(other.m_descriptor, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        if (this != &other) {
            Reset();
            m_descriptor = std::exchange(other.m_descriptor, -1);
        }
        return *this;
    }
    ~FileDescriptor() { Reset(); }

    int Get() const noexcept { return m_descriptor; }
    explicit operator bool() const noexcept { return m_descriptor >= 0; }
    void Reset() noexcept;

private:
    int m_descriptor = -1;
};

// What an opening does and what it keeps others from doing, as a STGM value says it.
struct ShareClaim {
    bool reads = false;
    bool writes = false;
    bool deniesReading = false;
    bool deniesWriting = false;

    static ShareClaim FromMode(DWORD mode) noexcept;
};

// The STG_E_ code for an errno value of a file operation; `otherwise` for one that says nothing better.
HRESULT ResultFromErrno(int error, HRESULT otherwise) noexcept;

// Bytes of a regular file. Give up a lock by destroying or closing: it belongs to the open file.
class FileBytes final : public BackingBytes {
public:
    // Takes over an open file.
    explicit FileBytes(FileDescriptor file) noexcept : m_file(std::move(file)) {}

    // Opens a regular file for reading, or for both where `claim` writes, and makes the claim.
    // STG_E_FILENOTFOUND, STG_E_PATHNOTFOUND, STG_E_ACCESSDENIED by the file system; STG_E_SHAREVIOLATION when
    // another opening conflicts.
    [[nodiscard]] static HRESULT Open(const std::filesystem::path& path, const ShareClaim& claim,
                                      std::shared_ptr<FileBytes>& bytes);
    // Makes a new file; STG_E_FILEALREADYEXISTS when the name is taken.
    [[nodiscard]] static HRESULT Create(const std::filesystem::path& path, const ShareClaim& claim,
                                        std::shared_ptr<FileBytes>& bytes);
    // Makes a new file with a name of its own in `folder`; `path` receives it.
    [[nodiscard]] static HRESULT CreateIn(const std::filesystem::path& folder, const char* prefix,
                                          const ShareClaim& claim, std::filesystem::path& path,
                                          std::shared_ptr<FileBytes>& bytes);
    // Makes a file without a name, in the folder for temporary files.
    [[nodiscard]] static HRESULT MakeUnnamed(std::shared_ptr<FileBytes>& bytes);

    [[nodiscard]] HRESULT ReadAt(std::uint64_t offset, std::span<std::byte> out, std::size_t& got) override;
    [[nodiscard]] HRESULT WriteAt(std::uint64_t offset, std::span<const std::byte> in) override;
    [[nodiscard]] HRESULT SetSize(std::uint64_t size) override;
    [[nodiscard]] HRESULT GetSize(std::uint64_t& size) override;
    [[nodiscard]] HRESULT Flush(Durability durability) override;
    void Close() noexcept override { m_file.Reset(); }

    // Gives the file the permissions, and where allowed the owner, of another.
    void CopyPermissionsFrom(const struct stat& other) noexcept;

    // What the system knows of the file; left as it was when it cannot say.
    void Describe(struct stat& status) const noexcept;

private:
    FileDescriptor m_file;
};

// The folder for temporary files: $TMPDIR, else /tmp.
std::filesystem::path TemporaryFolder();

}  // namespace vx_storage
