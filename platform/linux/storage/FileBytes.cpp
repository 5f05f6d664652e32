#include "platform/linux/storage/FileBytes.h"

#include "platform/Storage.h"
#include "platform/linux/storage/Modes.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <limits>

#include <fcntl.h>
#include <unistd.h>

namespace vx_storage {
namespace {

constexpr mode_t kNewFilePermissions = 0666;  // less the umask
constexpr int kOpenAttempts = 8;              // each is lost only to a commit that falls into the very moment

// Sharing is kept in four bytes far beyond any contents, one for each thing that an opening does or denies: whoever
// does it holds a shared lock on its byte, and asks whether anybody holds one on the opposite byte. So readers can deny
// too, though their descriptor could not hold an exclusive lock. The locks belong to the open file: two openings in one
// process count as two, and a closed or crashed one is gone.
constexpr off_t kShareBytes = off_t{1} << 62;
enum class ShareByte : off_t { Reads, Writes, DeniesReading, DeniesWriting };

struct flock LockOf(ShareByte byte, short type) noexcept {
    struct flock lock = {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    lock.l_start = kShareBytes + static_cast<off_t>(byte);
    lock.l_len = 1;
    return lock;
}

bool SomebodyElseHolds(int file, ShareByte byte) noexcept {
    struct flock lock = LockOf(byte, F_WRLCK);
    return fcntl(file, F_OFD_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
}

// Makes the claim on an open file. False when another opening conflicts. A file system without locks grants all.
bool MakeClaim(int file, const ShareClaim& claim) noexcept {
    const struct {
        bool claimed;
        ShareByte own, opposite;
    } parts[] = {
        {claim.reads, ShareByte::Reads, ShareByte::DeniesReading},
        {claim.writes, ShareByte::Writes, ShareByte::DeniesWriting},
        {claim.deniesReading, ShareByte::DeniesReading, ShareByte::Reads},
        {claim.deniesWriting, ShareByte::DeniesWriting, ShareByte::Writes},
    };
    // First all locks, then all questions: of two that come at once, at least one sees the other.
    for (const auto& part : parts) {
        struct flock lock = LockOf(part.own, F_RDLCK);
        if (part.claimed) {
            fcntl(file, F_OFD_SETLK, &lock);
        }
    }
    return std::ranges::none_of(
        parts, [&](const auto& part) { return part.claimed && SomebodyElseHolds(file, part.opposite); });
}

// True when the path still names the open file: a commit may have renamed another one over it since it was opened.
bool StillNames(const std::filesystem::path& path, int file) noexcept {
    struct stat open = {};
    struct stat named = {};
    return fstat(file, &open) == 0 && stat(path.c_str(), &named) == 0 && open.st_dev == named.st_dev
           && open.st_ino == named.st_ino;
}

HRESULT OpenOnce(const std::filesystem::path& path, const ShareClaim& claim, FileDescriptor& file) {
    // Not waiting matters for what is no regular file: a pipe would block until somebody writes.
    file = FileDescriptor(open(path.c_str(), (claim.writes ? O_RDWR : O_RDONLY) | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!file) {
        return ResultFromErrno(errno, STG_E_ACCESSDENIED);
    }
    struct stat status = {};
    if (fstat(file.Get(), &status) != 0 || !S_ISREG(status.st_mode)) {
        return STG_E_ACCESSDENIED;
    }
    return MakeClaim(file.Get(), claim) ? S_OK : STG_E_SHAREVIOLATION;
}

}  // namespace

void FileDescriptor::Reset() noexcept {
    if (m_descriptor >= 0) {
        close(std::exchange(m_descriptor, -1));
    }
}

ShareClaim ShareClaim::FromMode(DWORD mode) noexcept {
    const DWORD share = ShareOf(mode);
    return {.reads = MayRead(mode),
            .writes = MayWrite(mode),
            .deniesReading = share == STGM_SHARE_EXCLUSIVE || share == STGM_SHARE_DENY_READ,
            .deniesWriting = share == STGM_SHARE_EXCLUSIVE || share == STGM_SHARE_DENY_WRITE};
}

HRESULT ResultFromErrno(int error, HRESULT otherwise) noexcept {
    static constexpr struct {
        int error;
        HRESULT result;
    } kRows[] = {
        {ENOENT, STG_E_FILENOTFOUND},       {ENOTDIR, STG_E_PATHNOTFOUND},     {EACCES, STG_E_ACCESSDENIED},
        {EPERM, STG_E_ACCESSDENIED},        {EISDIR, STG_E_ACCESSDENIED},      {EROFS, STG_E_DISKISWRITEPROTECTED},
        {EEXIST, STG_E_FILEALREADYEXISTS},  {EMFILE, STG_E_TOOMANYOPENFILES},  {ENFILE, STG_E_TOOMANYOPENFILES},
        {ENOSPC, STG_E_MEDIUMFULL},         {EDQUOT, STG_E_MEDIUMFULL},        {EFBIG, STG_E_MEDIUMFULL},
        {ENOMEM, STG_E_INSUFFICIENTMEMORY}, {ENAMETOOLONG, STG_E_INVALIDNAME}, {ELOOP, STG_E_PATHNOTFOUND},
        {ETXTBSY, STG_E_ACCESSDENIED},
    };
    const auto* const row = std::ranges::find(kRows, error, [](const auto& candidate) { return candidate.error; });
    return row == std::end(kRows) ? otherwise : row->result;
}

HRESULT FileBytes::Open(const std::filesystem::path& path, const ShareClaim& claim, std::shared_ptr<FileBytes>& bytes) {
    for (int attempt = 0; attempt < kOpenAttempts; ++attempt) {
        FileDescriptor file;
        if (const HRESULT hr = OpenOnce(path, claim, file); FAILED(hr)) {
            std::error_code ignored;
            const bool noFolder = hr == STG_E_FILENOTFOUND && !std::filesystem::exists(path.parent_path(), ignored);
            return noFolder ? STG_E_PATHNOTFOUND : hr;
        }
        if (StillNames(path, file.Get())) {
            bytes = std::make_shared<FileBytes>(std::move(file));
            return S_OK;
        }
    }
    return STG_E_SHAREVIOLATION;
}

HRESULT FileBytes::Create(const std::filesystem::path& path, const ShareClaim& claim,
                          std::shared_ptr<FileBytes>& bytes) {
    FileDescriptor file(open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, kNewFilePermissions));
    if (!file) {
        return errno == ENOENT ? STG_E_PATHNOTFOUND : ResultFromErrno(errno, STG_E_ACCESSDENIED);
    }
    if (!MakeClaim(file.Get(), claim)) {
        return STG_E_SHAREVIOLATION;
    }
    bytes = std::make_shared<FileBytes>(std::move(file));
    return S_OK;
}

HRESULT FileBytes::CreateIn(const std::filesystem::path& folder, const char* prefix, const ShareClaim& claim,
                            std::filesystem::path& path, std::shared_ptr<FileBytes>& bytes) {
    std::string name = (folder / (std::string(prefix) + "XXXXXX")).string();
    FileDescriptor file(mkostemp(name.data(), O_CLOEXEC));
    if (!file) {
        return ResultFromErrno(errno, STG_E_ACCESSDENIED);
    }
    path = name;
    MakeClaim(file.Get(), claim);  // never refused: nobody else knows the name yet
    bytes = std::make_shared<FileBytes>(std::move(file));
    return S_OK;
}

HRESULT FileBytes::MakeUnnamed(std::shared_ptr<FileBytes>& bytes) {
    const std::filesystem::path folder = TemporaryFolder();
    if (FileDescriptor file(open(folder.c_str(), O_RDWR | O_TMPFILE | O_CLOEXEC, S_IRUSR | S_IWUSR)); file) {
        bytes = std::make_shared<FileBytes>(std::move(file));
        return S_OK;
    }
    // A file system without unnamed files: one whose name is taken away at once.
    std::filesystem::path path;
    const HRESULT hr = CreateIn(folder, "vx-scratch-", {}, path, bytes);
    if (SUCCEEDED(hr)) {
        unlink(path.c_str());
    }
    return hr;
}

HRESULT FileBytes::ReadAt(std::uint64_t offset, std::span<std::byte> out, std::size_t& got) {
    got = 0;
    if (!m_file) {
        return STG_E_REVERTED;
    }
    constexpr auto kMaxOffset = static_cast<std::uint64_t>(std::numeric_limits<off_t>::max());
    if (offset > kMaxOffset || out.size() > kMaxOffset - offset) {
        return S_OK;  // no file reaches as far
    }
    while (got < out.size()) {
        const ssize_t count = pread(m_file.Get(), out.data() + got, out.size() - got, static_cast<off_t>(offset + got));
        if (count == 0) {
            break;
        }
        if (count < 0) {
            if (errno == EINTR) {
                continue;
            }
            return ResultFromErrno(errno, STG_E_READFAULT);
        }
        got += static_cast<std::size_t>(count);
    }
    return S_OK;
}

HRESULT FileBytes::WriteAt(std::uint64_t offset, std::span<const std::byte> in) {
    if (!m_file) {
        return STG_E_REVERTED;
    }
    std::size_t done = 0;
    while (done < in.size()) {
        const ssize_t count =
            pwrite(m_file.Get(), in.data() + done, in.size() - done, static_cast<off_t>(offset + done));
        if (count <= 0) {
            if (count < 0 && errno == EINTR) {
                continue;
            }
            return count == 0 ? STG_E_WRITEFAULT : ResultFromErrno(errno, STG_E_WRITEFAULT);
        }
        done += static_cast<std::size_t>(count);
    }
    return S_OK;
}

HRESULT FileBytes::SetSize(std::uint64_t size) {
    if (!m_file) {
        return STG_E_REVERTED;
    }
    return ftruncate(m_file.Get(), static_cast<off_t>(size)) == 0 ? S_OK : ResultFromErrno(errno, STG_E_WRITEFAULT);
}

HRESULT FileBytes::GetSize(std::uint64_t& size) {
    struct stat status = {};
    if (!m_file) {
        return STG_E_REVERTED;
    }
    if (fstat(m_file.Get(), &status) != 0) {
        return STG_E_READFAULT;
    }
    size = static_cast<std::uint64_t>(status.st_size);
    return S_OK;
}

HRESULT FileBytes::Flush(Durability durability) {
    if (!m_file) {
        return STG_E_REVERTED;
    }
    const bool done = durability == Durability::Cached || fdatasync(m_file.Get()) == 0;
    return done ? S_OK : ResultFromErrno(errno, STG_E_WRITEFAULT);
}

void FileBytes::CopyPermissionsFrom(const struct stat& other) noexcept {
    // The owner first: changing it takes set-id bits away. Only a privileged process may; the others keep their own.
    [[maybe_unused]] const bool kept = fchown(m_file.Get(), other.st_uid, other.st_gid) == 0
                                       || fchown(m_file.Get(), static_cast<uid_t>(-1), other.st_gid) == 0;
    fchmod(m_file.Get(), other.st_mode & 07777U);
}

void FileBytes::Describe(struct stat& status) const noexcept {
    fstat(m_file.Get(), &status);
}

std::filesystem::path TemporaryFolder() {
    const char* const named = std::getenv("TMPDIR");
    return named != nullptr && *named != '\0' ? named : "/tmp";
}

}  // namespace vx_storage
