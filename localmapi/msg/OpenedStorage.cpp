#include "localmapi/msg/OpenedStorage.h"

#include "localmapi/base/Format.h"
#include "localmapi/msg/ElementNames.h"
#include "platform/TaskMemory.h"

#include <algorithm>
#include <utility>

namespace localmapi::msg {

namespace {

constexpr DWORD kReading = STGM_READ | STGM_SHARE_EXCLUSIVE;
constexpr DWORD kWriting = STGM_READWRITE | STGM_SHARE_EXCLUSIVE;

// What one call reads or writes at most; also by how much a buffer grows that a file's word is not taken for.
constexpr std::size_t kPiece = std::size_t{1} << 20;

// Open streams are forgotten once nobody has them; looked for when there are this many.
constexpr std::size_t kManyOpen = 64;

struct TaskMemoryFree {
    void operator()(void* memory) const noexcept { CoTaskMemFree(memory); }
};

}  // namespace

Error StorageFailure(HRESULT result, std::string what) {
    ErrorCode code = ErrorCode::ReadFailed;
    switch (result) {
        case STG_E_FILENOTFOUND:
        case STG_E_PATHNOTFOUND: code = ErrorCode::NotFound; break;
        case STG_E_ACCESSDENIED:
        case STG_E_DISKISWRITEPROTECTED: code = ErrorCode::AccessDenied; break;
        case STG_E_SHAREVIOLATION:
        case STG_E_LOCKVIOLATION:
        case STG_E_INUSE: code = ErrorCode::Busy; break;
        case STG_E_DOCFILECORRUPT:
        case STG_E_INVALIDHEADER: code = ErrorCode::Corrupt; break;
        default: break;
    }
    return Error{code, std::move(what) + " (" + Hex(static_cast<std::uint32_t>(result)) + ')'};
}

Result<std::uint64_t> OpenedStream::Size() {
    STATSTG stat{};
    if (const HRESULT hr = m_stream->Stat(&stat, STATFLAG_NONAME); FAILED(hr)) {
        return StorageFailure(hr, m_path + " does not tell its size");
    }
    return std::uint64_t{stat.cbSize.QuadPart};
}

Status OpenedStream::SeekTo(std::uint64_t offset) {
    LARGE_INTEGER target{};
    target.QuadPart = static_cast<LONGLONG>(offset);
    if (const HRESULT hr = m_stream->Seek(target, STREAM_SEEK_SET, nullptr); FAILED(hr)) {
        return StorageFailure(hr, m_path + " has no place " + Hex(offset));
    }
    return {};
}

Status OpenedStream::ReadAt(std::uint64_t offset, std::span<std::byte> out) {
    VX_TRY(SeekTo(offset));
    while (!out.empty()) {
        ULONG got = 0;
        const auto wanted = static_cast<ULONG>(std::min(out.size(), kPiece));
        if (const HRESULT hr = m_stream->Read(out.data(), wanted, &got); FAILED(hr)) {
            return StorageFailure(hr, m_path + " cannot be read");
        }
        if (got == 0 || got > wanted) {
            return Error{ErrorCode::ReadFailed, m_path + " ends before its size"};
        }
        out = out.subspan(got);
    }
    return {};
}

Result<Bytes> OpenedStream::ReadAll(std::uint64_t limit) {
    VX_TRY_ASSIGN(const std::uint64_t size, Size());
    const std::uint64_t wanted = std::min(size, limit);
    Bytes bytes;
    while (bytes.size() < wanted) {
        const std::size_t at = bytes.size();
        const std::size_t step = std::max(at, kPiece);
        bytes.resize(at + static_cast<std::size_t>(std::min<std::uint64_t>(wanted - at, step)));
        VX_TRY(ReadAt(at, std::span(bytes).subspan(at)));
    }
    return bytes;
}

Status OpenedStream::WriteAt(std::uint64_t offset, ByteView bytes) {
    VX_TRY(SeekTo(offset));
    while (!bytes.IsEmpty()) {
        ULONG written = 0;
        const auto wanted = static_cast<ULONG>(std::min(bytes.Size(), kPiece));
        const HRESULT hr = m_stream->Write(bytes.Data(), wanted, &written);
        if (FAILED(hr) || written == 0 || written > wanted) {
            return StorageFailure(FAILED(hr) ? hr : STG_E_MEDIUMFULL, m_path + " cannot be written");
        }
        bytes = bytes.Part(written);
    }
    return {};
}

Status OpenedStream::SetSize(std::uint64_t size) {
    ULARGE_INTEGER wanted{};
    wanted.QuadPart = size;
    if (const HRESULT hr = m_stream->SetSize(wanted); FAILED(hr)) {
        return StorageFailure(hr, m_path + " cannot be given the size " + Hex(size));
    }
    return {};
}

Result<ComPtr<IStream>> OpenedStream::Clone() {
    VX_TRY(SeekTo(0));
    ComPtr<IStream> other;
    if (const HRESULT hr = m_stream->Clone(other.Receive()); FAILED(hr)) {
        return StorageFailure(hr, m_path + " cannot be opened once more");
    }
    return other;
}

Status StreamSource::ReadAt(std::uint64_t offset, std::span<std::byte> out) {
    if (!Inside(offset, out.size(), m_size)) {
        return Error{ErrorCode::ReadFailed, "a read at " + Hex(offset) + " goes past the end of a value"};
    }
    return m_stream->ReadAt(offset, out);
}

std::string OpenedStorage::NameOf(const CStringW& name) const {
    return m_path + Printable(name);
}

DWORD OpenedStorage::Mode() const noexcept {
    return m_isWritable ? kWriting : kReading;
}

Result<std::vector<OpenedStorage::Element>> OpenedStorage::Elements() const {
    ComPtr<IEnumSTATSTG> cursor;
    if (const HRESULT hr = m_storage->EnumElements(0, nullptr, 0, cursor.Receive()); FAILED(hr)) {
        return StorageFailure(hr, "the elements of storage " + m_path + " cannot be listed");
    }
    std::vector<Element> elements;
    STATSTG stat{};
    while (cursor->Next(1, &stat, nullptr) == S_OK) {
        const std::unique_ptr<WCHAR, TaskMemoryFree> name(std::exchange(stat.pwcsName, nullptr));
        if (name != nullptr && (stat.type == STGTY_STREAM || stat.type == STGTY_STORAGE)) {
            elements.push_back({CStringW(name.get()), stat.type == STGTY_STORAGE, stat.cbSize.QuadPart});
        }
    }
    return elements;
}

std::shared_ptr<OpenedStream> OpenedStorage::FindOpen(const CStringW& name) {
    const auto found = m_open.find(name);
    return found == m_open.end() ? nullptr : found->second.lock();
}

std::shared_ptr<OpenedStream> OpenedStorage::Keep(const CStringW& name, ComPtr<IStream> stream) {
    if (m_open.size() >= kManyOpen) {
        std::erase_if(m_open, [](const auto& entry) { return entry.second.expired(); });
    }
    auto kept = std::make_shared<OpenedStream>(std::move(stream), NameOf(name));
    m_open[name] = kept;
    return kept;
}

Result<std::shared_ptr<OpenedStream>> OpenedStorage::OpenStream(const CStringW& name) {
    if (auto open = FindOpen(name)) {
        return open;
    }
    ComPtr<IStream> stream;
    if (const HRESULT hr = m_storage->OpenStream(name.c_str(), nullptr, Mode(), 0, stream.Receive()); FAILED(hr)) {
        return StorageFailure(hr, NameOf(name) + " cannot be opened");
    }
    return Keep(name, std::move(stream));
}

Result<std::shared_ptr<OpenedStream>> OpenedStorage::OpenOrCreateStream(const CStringW& name) {
    auto open = OpenStream(name);
    if (open || !open.IsNotFound()) {
        return open;
    }
    // Not found may also mean a storage of that name, which makes room.
    ComPtr<IStream> stream;
    const HRESULT hr = m_storage->CreateStream(name.c_str(), kWriting | STGM_CREATE, 0, 0, stream.Receive());
    if (FAILED(hr)) {
        return StorageFailure(hr, NameOf(name) + " cannot be made");
    }
    return Keep(name, std::move(stream));
}

Status OpenedStorage::WriteStream(const CStringW& name, ByteView bytes) {
    VX_TRY_ASSIGN(const auto stream, OpenOrCreateStream(name));
    VX_TRY(stream->SetSize(bytes.Size()));
    return stream->WriteAt(0, bytes);
}

Result<ComPtr<IStorage>> OpenedStorage::OpenStorage(const CStringW& name) const {
    ComPtr<IStorage> storage;
    const HRESULT hr = m_storage->OpenStorage(name.c_str(), nullptr, Mode(), nullptr, 0, storage.Receive());
    if (FAILED(hr)) {
        return StorageFailure(hr, NameOf(name) + " cannot be opened");
    }
    return storage;
}

Result<ComPtr<IStorage>> OpenedStorage::CreateStorage(const CStringW& name) {
    VX_TRY(Destroy(name));
    ComPtr<IStorage> storage;
    if (const HRESULT hr = m_storage->CreateStorage(name.c_str(), kWriting, 0, 0, storage.Receive()); FAILED(hr)) {
        return StorageFailure(hr, NameOf(name) + " cannot be made");
    }
    return storage;
}

Status OpenedStorage::Destroy(const CStringW& name) {
    m_open.erase(name);
    const HRESULT hr = m_storage->DestroyElement(name.c_str());
    if (FAILED(hr) && hr != STG_E_FILENOTFOUND) {
        return StorageFailure(hr, NameOf(name) + " cannot be deleted");
    }
    return {};
}

}  // namespace localmapi::msg
