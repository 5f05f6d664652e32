#include "testing/mailbox_builder/items/CompoundFile.h"

#include "platform/GlobalMemory.h"
#include "platform/Storage.h"

#include <memory>

namespace mailbox_builder {
namespace {

struct Releasing {
    void operator()(IUnknown* object) const noexcept { object->Release(); }
};
template <class Interface>
using Held = std::unique_ptr<Interface, Releasing>;

constexpr DWORD kMode = STGM_CREATE | STGM_READWRITE | STGM_SHARE_EXCLUSIVE;

bool WriteStream(IStorage& storage, const CStringW& name, const Bytes& content) {
    IStream* raw = nullptr;
    if (FAILED(storage.CreateStream(name.c_str(), kMode, 0, 0, &raw))) {
        return false;
    }
    const Held<IStream> stream(raw);
    return content.empty() || SUCCEEDED(stream->Write(content.data(), static_cast<ULONG>(content.size()), nullptr));
}

// Recursion as deep as the description is.
bool Fill(IStorage& storage, const CompoundStorage& description) {
    if (FAILED(WriteClassStg(&storage, description.storageClass))) {
        return false;
    }
    for (const auto& [name, content] : description.streams) {
        if (!WriteStream(storage, name, content)) {
            return false;
        }
    }
    for (const CompoundStorage& inner : description.storages) {
        IStorage* raw = nullptr;
        if (FAILED(storage.CreateStorage(inner.name.c_str(), kMode, 0, 0, &raw))) {
            return false;
        }
        const Held<IStorage> child(raw);
        // The times of an element would be those of the making: equal descriptions give equal files.
        const FILETIME never{};
        if (!Fill(*child, inner) || FAILED(child->Commit(STGC_DEFAULT))) {
            return false;
        }
        (void)storage.SetElementTimes(inner.name.c_str(), &never, &never, &never);
    }
    return true;
}

Bytes ContentOf(ILockBytes& array) {
    STATSTG facts{};
    if (FAILED(array.Stat(&facts, STATFLAG_NONAME))) {
        return {};
    }
    Bytes bytes(static_cast<std::size_t>(facts.cbSize.QuadPart));
    ULONG got = 0;
    if (FAILED(array.ReadAt(ULARGE_INTEGER{}, bytes.data(), static_cast<ULONG>(bytes.size()), &got))) {
        return {};
    }
    bytes.resize(got);
    return bytes;
}

}  // namespace

Bytes CompoundFileOf(const CompoundStorage& root) {
    ILockBytes* rawArray = nullptr;
    if (FAILED(CreateILockBytesOnHGlobal(nullptr, TRUE, &rawArray))) {
        return {};
    }
    const Held<ILockBytes> array(rawArray);
    IStorage* rawRoot = nullptr;
    if (FAILED(StgCreateDocfileOnILockBytes(array.get(), kMode, 0, &rawRoot))) {
        return {};
    }
    const Held<IStorage> storage(rawRoot);
    if (!Fill(*storage, root) || FAILED(storage->Commit(STGC_DEFAULT))) {
        return {};
    }
    return ContentOf(*array);
}

}  // namespace mailbox_builder
