#include "platform/linux/storage/ImageStore.h"

#include "platform/linux/storage/ComObject.h"
#include "platform/linux/storage/ImageWriter.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>

#include <fcntl.h>
#include <unistd.h>

namespace vx_storage {
namespace {

// The interface of a caller's byte array as ours. Reads stay within the size: arrays differ in what they answer beyond.
class LockBytes final : public BackingBytes {
public:
    explicit LockBytes(ILockBytes* bytes) noexcept : m_bytes(ComRef<ILockBytes>::Share(bytes)) {}

    HRESULT ReadAt(std::uint64_t offset, std::span<std::byte> out, std::size_t& got) override {
        got = 0;
        std::uint64_t size = 0;
        if (const HRESULT hr = GetSize(size); FAILED(hr)) {
            return hr;
        }
        const auto there =
            static_cast<std::size_t>(std::min<std::uint64_t>(out.size(), offset < size ? size - offset : 0));
        while (got < there) {
            ULONG count = 0;
            const HRESULT hr =
                m_bytes->ReadAt(ULARGE_INTEGER{.QuadPart = offset + got}, out.data() + got, Piece(there - got), &count);
            if (FAILED(hr)) {
                return hr;
            }
            if (count == 0 || count > there - got) {
                break;
            }
            got += count;
        }
        return S_OK;
    }

    HRESULT WriteAt(std::uint64_t offset, std::span<const std::byte> in) override {
        if (!m_bytes) {
            return STG_E_REVERTED;
        }
        for (std::size_t done = 0; done < in.size();) {
            ULONG count = 0;
            const HRESULT hr = m_bytes->WriteAt(ULARGE_INTEGER{.QuadPart = offset + done}, in.data() + done,
                                                Piece(in.size() - done), &count);
            if (FAILED(hr)) {
                return hr;
            }
            if (count == 0 || count > in.size() - done) {
                return STG_E_MEDIUMFULL;
            }
            done += count;
        }
        return S_OK;
    }

    HRESULT SetSize(std::uint64_t size) override {
        return m_bytes ? m_bytes->SetSize(ULARGE_INTEGER{.QuadPart = size}) : STG_E_REVERTED;
    }

    HRESULT GetSize(std::uint64_t& size) override {
        STATSTG stat = {};
        if (!m_bytes) {
            return STG_E_REVERTED;
        }
        const HRESULT hr = m_bytes->Stat(&stat, STATFLAG_NONAME);
        size = stat.cbSize.QuadPart;
        return hr;
    }

    HRESULT Flush(Durability) override { return m_bytes ? m_bytes->Flush() : STG_E_REVERTED; }
    void Close() noexcept override { m_bytes.Reset(); }

private:
    static ULONG Piece(std::size_t bytes) noexcept {
        return static_cast<ULONG>(std::min<std::size_t>(bytes, 0x40000000));
    }

    ComRef<ILockBytes> m_bytes;
};

// Puts a copy of the old image under those who still read from it.
HRESULT KeepOldImage(CompoundReader& old) {
    std::uint64_t size = 0;
    if (const HRESULT hr = old.Bytes().GetSize(size); FAILED(hr)) {
        return hr;
    }
    std::shared_ptr<BackingBytes> copy;
    if (const HRESULT hr = MakeUnnamedBytes(size, copy); FAILED(hr)) {
        return hr;
    }
    const HRESULT hr = CopyBytes(old.Bytes(), *copy);
    if (SUCCEEDED(hr)) {
        old.Rebind(std::move(copy));
    }
    return hr;
}

HRESULT WriteAndOpen(const ImageLayout& layout, const std::shared_ptr<BackingBytes>& bytes,
                     std::shared_ptr<CompoundReader>& reader) {
    if (const HRESULT hr = WriteImage(layout, *bytes); FAILED(hr)) {
        return hr;
    }
    if (const HRESULT hr = bytes->SetSize(layout.ImageBytes()); FAILED(hr)) {
        return hr;
    }
    return CompoundReader::Open(bytes, reader);
}

std::filesystem::path Resolved(const std::filesystem::path& path) {
    std::error_code failed;
    std::filesystem::path resolved = std::filesystem::canonical(path, failed);
    return failed ? std::filesystem::absolute(path) : resolved;
}

// A path as the name of a root. One that is no UTF-8 has none.
CStringW NameOf(const std::filesystem::path& path) {
    try {
        return path.u16string();
    } catch (const std::system_error&) {
        return {};
    }
}

// A file name that is taken away again unless it is kept.
class TemporaryName {
public:
    explicit TemporaryName(const std::filesystem::path& name) noexcept : m_name(name) {}
    TemporaryName(const TemporaryName&) = delete;
    TemporaryName& operator=(const TemporaryName&) = delete;
    ~TemporaryName() {
        if (!m_kept) {
            unlink(m_name.c_str());
        }
    }
    // Makes the file appear under another name, in place of what had it.
    HRESULT RenameTo(const std::filesystem::path& name) noexcept {
        m_kept = rename(m_name.c_str(), name.c_str()) == 0;
        return m_kept ? S_OK : ResultFromErrno(errno, STG_E_WRITEFAULT);
    }

private:
    const std::filesystem::path& m_name;
    bool m_kept = false;
};

// The new directory entry reaches the disk too. Best effort: some file systems cannot say.
void FlushFolder(const std::filesystem::path& folder) noexcept {
    if (const FileDescriptor handle(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)); handle) {
        fsync(handle.Get());
    }
}

}  // namespace

// In place. A first image has nothing to lose. A later one is written elsewhere first: it may take bytes from the old
// one, and a failure of that long step leaves the old one whole.
HRESULT ImageStore::Replace(const ImageLayout& layout, const std::shared_ptr<CompoundReader>& old, bool keepOld,
                            Durability durability, std::shared_ptr<CompoundReader>& reader) {
    if (old == nullptr) {
        const HRESULT hr = WriteAndOpen(layout, m_bytes, reader);
        return FAILED(hr) ? hr : m_bytes->Flush(durability);
    }
    std::shared_ptr<BackingBytes> elsewhere;
    if (const HRESULT hr = MakeUnnamedBytes(layout.ImageBytes(), elsewhere); FAILED(hr)) {
        return hr;
    }
    std::shared_ptr<CompoundReader> made;
    if (const HRESULT hr = WriteAndOpen(layout, elsewhere, made); FAILED(hr)) {
        return hr;
    }
    if (keepOld) {
        if (const HRESULT hr = KeepOldImage(*old); FAILED(hr)) {
            return hr;
        }
    }
    reader = made;
    if (const HRESULT hr = CopyBytes(*elsewhere, *m_bytes); FAILED(hr)) {
        return hr;
    }
    made->Rebind(m_bytes);
    return m_bytes->Flush(durability);
}

LockBytesStore::LockBytesStore(ILockBytes* bytes) : ImageStore(std::make_shared<LockBytes>(bytes)) {}

PathStore::PathStore(std::filesystem::path path, const ShareClaim& claim, std::shared_ptr<FileBytes> file, bool isNew)
    : ImageStore(file),
      m_path(std::move(path)),
      m_name(NameOf(m_path)),
      m_claim(claim),
      m_file(std::move(file)),
      m_isOurs(isNew),
      m_isNew(isNew) {
    Remember();
}

PathStore::~PathStore() {
    if (m_isNew) {  // it never became a compound file
        unlink(m_path.c_str());
    }
}

HRESULT PathStore::Open(const std::filesystem::path& path, const ShareClaim& claim, std::unique_ptr<PathStore>& store) {
    const std::filesystem::path resolved = Resolved(path);
    std::shared_ptr<FileBytes> file;
    const HRESULT hr = FileBytes::Open(resolved, claim, file);
    if (SUCCEEDED(hr)) {
        store = std::make_unique<PathStore>(resolved, claim, std::move(file), false);
    }
    return hr;
}

HRESULT PathStore::Create(const std::filesystem::path& path, const ShareClaim& claim,
                          std::unique_ptr<PathStore>& store) {
    std::shared_ptr<FileBytes> file;
    const HRESULT hr = FileBytes::Create(path, claim, file);
    if (SUCCEEDED(hr)) {
        store = std::make_unique<PathStore>(Resolved(path), claim, std::move(file), true);
    }
    return hr;
}

HRESULT PathStore::CreateTemporary(const ShareClaim& claim, std::unique_ptr<PathStore>& store) {
    std::filesystem::path path;
    std::shared_ptr<FileBytes> file;
    const HRESULT hr = FileBytes::CreateIn(TemporaryFolder(), "vx-", claim, path, file);
    if (SUCCEEDED(hr)) {
        store = std::make_unique<PathStore>(Resolved(path), claim, std::move(file), true);
    }
    return hr;
}

HRESULT PathStore::Replace(const ImageLayout& layout, const std::shared_ptr<CompoundReader>& old, bool keepOld,
                           Durability asked, std::shared_ptr<CompoundReader>& reader) {
    const Durability durability = m_isOurs ? Durability::Cached : asked;
    const auto inPlace = [&] {
        const HRESULT hr = ImageStore::Replace(layout, old, keepOld, durability, reader);
        Remember();
        return hr;
    };
    const bool hadNothing = m_isOurs && (m_isNew || (m_holdsNothing && !keepOld));
    if (hadNothing) {
        const HRESULT hr = ImageStore::Replace(layout, nullptr, false, durability, reader);
        Remember();
        m_isNew = m_isNew && FAILED(hr);
        m_holdsNothing = FAILED(hr) || layout.nodes.size() == 1;
        return hr;
    }
    m_holdsNothing = false;
    std::filesystem::path beside;
    std::shared_ptr<FileBytes> file;
    HRESULT hr = FileBytes::CreateIn(m_path.parent_path(), ".vx-", m_claim, beside, file);
    if (hr == STG_E_ACCESSDENIED || hr == STG_E_DISKISWRITEPROTECTED) {
        return inPlace();
    }
    if (FAILED(hr)) {
        return hr;
    }
    TemporaryName name(beside);
    file->CopyPermissionsFrom(m_known);
    std::shared_ptr<CompoundReader> made;
    hr = WriteAndOpen(layout, file, made);
    if (SUCCEEDED(hr)) {
        hr = file->Flush(durability);
    }
    if (SUCCEEDED(hr)) {
        hr = name.RenameTo(m_path);
    }
    if (FAILED(hr)) {
        return hr;
    }
    if (durability == Durability::OnDisk) {
        FlushFolder(m_path.parent_path());
    }
    m_bytes = file;
    m_file = std::move(file);
    Remember();
    reader = std::move(made);
    return S_OK;
}

bool PathStore::IsCurrent() const {
    struct stat named = {};
    return stat(m_path.c_str(), &named) == 0 && named.st_dev == m_known.st_dev && named.st_ino == m_known.st_ino
           && named.st_size == m_known.st_size && named.st_mtim.tv_sec == m_known.st_mtim.tv_sec
           && named.st_mtim.tv_nsec == m_known.st_mtim.tv_nsec;
}

void PathStore::Close() noexcept {
    struct stat named = {};
    const bool ours =
        stat(m_path.c_str(), &named) == 0 && named.st_dev == m_known.st_dev && named.st_ino == m_known.st_ino;
    if (m_deleteAtClose && ours) {
        unlink(m_path.c_str());
    }
    ImageStore::Close();
}

void PathStore::Remember() noexcept {
    m_file->Describe(m_known);
}

}  // namespace vx_storage
