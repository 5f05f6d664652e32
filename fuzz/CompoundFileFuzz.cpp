// Compound files: any bytes open or are refused; what opens is walked and read within bounds, reads the same forwards
// and backwards, and a copy of it, written by our own writer, reads back the same. A change committed to it in place
// keeps all other streams.
#include "platform/GlobalMemory.h"
#include "platform/Storage.h"
#include "platform/TaskMemory.h"
#include "platform/WideText.h"
#include "platform/linux/storage/ComObject.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <map>
#include <vector>

namespace {

using vx_storage::ComRef;
using Bytes = std::vector<std::uint8_t>;

constexpr DWORD kReadOnly = STGM_READ | STGM_SHARE_EXCLUSIVE;
constexpr DWORD kReadWrite = STGM_READWRITE | STGM_SHARE_EXCLUSIVE;
constexpr std::size_t kReadAtMost = 1 << 20;  // of one stream, and of all together sixteen times as much

void Require(bool holds) {
    if (!holds) {
        std::abort();
    }
}

ComRef<ILockBytes> Array(const std::uint8_t* data, std::size_t size) {
    const HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, size);
    if (size > 0) {
        std::memcpy(GlobalLock(block), data, size);
        GlobalUnlock(block);
    }
    ComRef<ILockBytes> bytes;
    Require(CreateILockBytesOnHGlobal(block, TRUE, bytes.Put()) == S_OK);
    return bytes;
}

// Reads forwards; what lies before damage comes with `damaged` set.
Bytes ReadForwards(IStream& stream, bool& damaged) {
    Bytes bytes;
    Bytes piece(5000);
    for (ULONG got = 1; got > 0 && bytes.size() < kReadAtMost;) {
        const auto wanted = static_cast<ULONG>(std::min<std::size_t>(kReadAtMost - bytes.size(), piece.size()));
        const HRESULT hr = stream.Read(piece.data(), wanted, &got);
        Require(hr == S_OK || hr == STG_E_DOCFILECORRUPT);
        Require(got <= wanted && (hr == S_OK || got == 0));
        damaged = damaged || FAILED(hr);
        bytes.insert(bytes.end(), piece.begin(), piece.begin() + static_cast<std::ptrdiff_t>(got));
    }
    return bytes;
}

// Reads pieces from the end to the start; each is what reading forwards gave.
void CheckBackwards(IStream& stream, const Bytes& bytes) {
    Bytes piece(700);
    for (std::size_t at = bytes.size(); at > 0;) {
        at -= std::min<std::size_t>(at, 3001);
        ULONG got = 0;
        Require(stream.Seek(LARGE_INTEGER{.QuadPart = static_cast<LONGLONG>(at)}, STREAM_SEEK_SET, nullptr) == S_OK);
        const HRESULT hr = stream.Read(piece.data(), static_cast<ULONG>(piece.size()), &got);
        // A loop that was found since ends the chain earlier than it seemed.
        Require(hr == S_OK || hr == STG_E_DOCFILECORRUPT);
        const std::size_t known = std::min<std::size_t>(got, bytes.size() - at);
        Require(std::equal(piece.begin(), piece.begin() + static_cast<std::ptrdiff_t>(known),
                           bytes.begin() + static_cast<std::ptrdiff_t>(at)));
    }
}

struct Contents {
    std::map<CStringW, Bytes> streams;  // sound ones
    bool complete = true;
    std::size_t bytes = 0;
};

void Walk(IStorage& storage, const CStringW& prefix, int depth, Contents& contents) {
    ComRef<IEnumSTATSTG> enumerator;
    Require(storage.EnumElements(0, nullptr, 0, enumerator.Put()) == S_OK);
    STATSTG stat = {};
    while (enumerator->Next(1, &stat, nullptr) == S_OK) {
        const CStringW name = stat.pwcsName;
        CoTaskMemFree(stat.pwcsName);
        Require(!name.empty() && name.size() <= 31);
        const CStringW path = prefix + static_cast<WCHAR>('/') + name;
        if (stat.type == STGTY_STORAGE) {
            ComRef<IStorage> inner;
            Require(storage.OpenStorage(name.c_str(), nullptr, kReadOnly, nullptr, 0, inner.Put()) == S_OK);
            if (depth < 40) {
                Walk(*inner.Get(), path, depth + 1, contents);
            } else {
                contents.complete = false;
            }
            continue;
        }
        ComRef<IStream> stream;
        Require(storage.OpenStream(name.c_str(), nullptr, kReadOnly, 0, stream.Put()) == S_OK);
        if (stat.cbSize.QuadPart > kReadAtMost || contents.bytes > 16 * kReadAtMost) {
            contents.complete = false;
        }
        if (contents.bytes > 16 * kReadAtMost) {
            continue;
        }
        bool damaged = false;
        Bytes bytes = ReadForwards(*stream.Get(), damaged);
        Require(damaged || bytes.size() == std::min<std::uint64_t>(stat.cbSize.QuadPart, kReadAtMost));
        CheckBackwards(*stream.Get(), bytes);
        contents.bytes += bytes.size();
        contents.complete = contents.complete && !damaged;
        if (!damaged) {
            contents.streams[path] = std::move(bytes);
        }
    }
}

void CheckCopy(IStorage& root, const Contents& contents) {
    const ComRef<ILockBytes> bytes = Array(nullptr, 0);
    ComRef<IStorage> copy;
    Require(StgCreateDocfileOnILockBytes(bytes.Get(), kReadWrite, 0, copy.Put()) == S_OK);
    if (FAILED(root.CopyTo(0, nullptr, nullptr, copy.Get()))) {
        return;  // names that nobody may create, or damage
    }
    copy.Reset();
    Require(StgOpenStorageOnILockBytes(bytes.Get(), nullptr, kReadOnly, nullptr, 0, copy.Put()) == S_OK);
    Contents copied;
    Walk(*copy.Get(), {}, 0, copied);
    Require(!contents.complete || copied.streams == contents.streams);
}

void CheckChange(const std::uint8_t* data, std::size_t size, Contents contents) {
    const ComRef<ILockBytes> bytes = Array(data, size);
    ComRef<IStorage> root;
    Require(StgOpenStorageOnILockBytes(bytes.Get(), nullptr, kReadWrite, nullptr, 0, root.Put()) == S_OK);
    const WCHAR name[] = {'n', 'e', 'w', 0};
    ComRef<IStream> stream;
    if (FAILED(root->CreateStream(name, kReadWrite | STGM_CREATE, 0, 0, stream.Put()))) {
        return;
    }
    const Bytes added(6000, 7);
    Require(stream->Write(added.data(), static_cast<ULONG>(added.size()), nullptr) == S_OK);
    stream.Reset();
    if (FAILED(root->Commit(STGC_DEFAULT)) || !contents.complete) {
        return;
    }
    root.Reset();
    Require(StgOpenStorageOnILockBytes(bytes.Get(), nullptr, kReadOnly, nullptr, 0, root.Put()) == S_OK);
    Contents changed;
    Walk(*root.Get(), {}, 0, changed);
    for (auto& [path, stored] : changed.streams) {
        const auto before = contents.streams.find(path);
        Require(stored == added || (before != contents.streams.end() && before->second == stored));
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const ComRef<ILockBytes> bytes = Array(data, size);
    ComRef<IStorage> root;
    const HRESULT hr = StgOpenStorageOnILockBytes(bytes.Get(), nullptr, kReadOnly, nullptr, 0, root.Put());
    if (FAILED(hr)) {
        Require(hr == STG_E_DOCFILECORRUPT || hr == STG_E_FILEALREADYEXISTS || hr == STG_E_OLDFORMAT);
        return 0;
    }
    Contents contents;
    Walk(*root.Get(), {}, 0, contents);
    CheckCopy(*root.Get(), contents);
    CheckChange(data, size, std::move(contents));
    return 0;
}
