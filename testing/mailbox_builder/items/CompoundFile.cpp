#include "testing/mailbox_builder/items/CompoundFile.h"

#include "platform/Storage.h"

#include <memory>
#include <span>
#include <utility>

namespace mailbox_builder {
namespace {

struct Releasing {
    void operator()(IUnknown* object) const noexcept { object->Release(); }
};
template <class Interface>
using Held = std::unique_ptr<Interface, Releasing>;

// The bytes of the file. What a file leaves out, the rest of a sector for example, is zero here; in a block of the
// system's it would be whatever was there before, and equal descriptions would give different files. Lives as long as
// its owner says, whatever the count.
class ZeroedBytes final : public ILockBytes {
public:
    Bytes Take() { return std::move(m_bytes); }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        if (!IsEqualGUID(iid, IID_IUnknown) && !IsEqualGUID(iid, IID_ILockBytes)) {
            *object = nullptr;
            return E_NOINTERFACE;
        }
        *object = static_cast<ILockBytes*>(this);
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }

    HRESULT STDMETHODCALLTYPE ReadAt(ULARGE_INTEGER offset, void* out, ULONG count, ULONG* got) override {
        const auto part = localmapi::ByteView(m_bytes).Part(offset.QuadPart, count);
        const std::size_t copied = localmapi::CopyInto({static_cast<std::byte*>(out), count}, part);
        if (got != nullptr) {
            *got = static_cast<ULONG>(copied);
        }
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE WriteAt(ULARGE_INTEGER offset, const void* bytes, ULONG count, ULONG* put) override {
        const auto begin = static_cast<std::size_t>(offset.QuadPart);
        if (m_bytes.size() < begin + count) {
            m_bytes.resize(begin + count);
        }
        localmapi::CopyInto(std::span(m_bytes).subspan(begin), {static_cast<const std::byte*>(bytes), count});
        if (put != nullptr) {
            *put = count;
        }
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Flush() override { return S_OK; }
    HRESULT STDMETHODCALLTYPE SetSize(ULARGE_INTEGER size) override {
        m_bytes.resize(static_cast<std::size_t>(size.QuadPart));
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override {
        return STG_E_INVALIDFUNCTION;
    }
    HRESULT STDMETHODCALLTYPE UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override {
        return STG_E_INVALIDFUNCTION;
    }
    HRESULT STDMETHODCALLTYPE Stat(STATSTG* facts, DWORD) override {
        *facts = {};
        facts->type = STGTY_LOCKBYTES;
        facts->cbSize.QuadPart = m_bytes.size();
        return S_OK;
    }

private:
    Bytes m_bytes;
};

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

}  // namespace

Bytes CompoundFileOf(const CompoundStorage& root) {
    ZeroedBytes array;
    IStorage* raw = nullptr;
    if (FAILED(StgCreateDocfileOnILockBytes(&array, kMode, 0, &raw))) {
        return {};
    }
    Held<IStorage> storage(raw);
    const bool isWritten = Fill(*storage, root) && SUCCEEDED(storage->Commit(STGC_DEFAULT));
    storage.reset();
    return isWritten ? array.Take() : Bytes();
}

}  // namespace mailbox_builder
