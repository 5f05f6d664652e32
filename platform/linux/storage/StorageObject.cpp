#include "platform/linux/storage/StorageObject.h"

#include "platform/linux/storage/ComObject.h"
#include "platform/linux/storage/ElementCopy.h"
#include "platform/linux/storage/ElementEnumerator.h"
#include "platform/linux/storage/ElementStat.h"
#include "platform/linux/storage/Limits.h"
#include "platform/linux/storage/Modes.h"
#include "platform/linux/storage/StreamObject.h"

#include <algorithm>
#include <span>

namespace vx_storage {
namespace {

// Asked for by its address, which no other implementation and no other module has: gives the object itself.
constexpr IID kThisImplementation = {0x3C0B6E8A, 0x91D5, 0x4F27, {0xA4, 0x58, 0x6D, 0x1F, 0x30, 0xC9, 0x72, 0x0E}};

class StorageObject final : public ComObject<StorageObject, IStorage> {
public:
    explicit StorageObject(std::shared_ptr<StorageState> storage) noexcept : m_storage(std::move(storage)) {}
    ~StorageObject();

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** object) override;

    HRESULT STDMETHODCALLTYPE CreateStream(const OLECHAR* name, DWORD mode, DWORD reserved1, DWORD reserved2,
                                           IStream** stream) override;
    HRESULT STDMETHODCALLTYPE OpenStream(const OLECHAR* name, void* reserved1, DWORD mode, DWORD reserved2,
                                         IStream** stream) override;
    HRESULT STDMETHODCALLTYPE CreateStorage(const OLECHAR* name, DWORD mode, DWORD reserved1, DWORD reserved2,
                                            IStorage** storage) override;
    HRESULT STDMETHODCALLTYPE OpenStorage(const OLECHAR* name, IStorage* priority, DWORD mode, SNB exclude,
                                          DWORD reserved, IStorage** storage) override;
    HRESULT STDMETHODCALLTYPE CopyTo(DWORD ciidExclude, const IID* rgiidExclude, SNB exclude, IStorage* to) override;
    HRESULT STDMETHODCALLTYPE MoveElementTo(const OLECHAR* name, IStorage* to, const OLECHAR* newName,
                                            DWORD flags) override;
    HRESULT STDMETHODCALLTYPE Commit(DWORD flags) override;
    HRESULT STDMETHODCALLTYPE Revert() override;
    HRESULT STDMETHODCALLTYPE EnumElements(DWORD reserved1, void* reserved2, DWORD reserved3,
                                           IEnumSTATSTG** enumerator) override;
    HRESULT STDMETHODCALLTYPE DestroyElement(const OLECHAR* name) override;
    HRESULT STDMETHODCALLTYPE RenameElement(const OLECHAR* oldName, const OLECHAR* newName) override;
    HRESULT STDMETHODCALLTYPE SetElementTimes(const OLECHAR* name, const FILETIME* created, const FILETIME* accessed,
                                              const FILETIME* modified) override;
    HRESULT STDMETHODCALLTYPE SetClass(REFCLSID clsid) override;
    HRESULT STDMETHODCALLTYPE SetStateBits(DWORD bits, DWORD mask) override;
    HRESULT STDMETHODCALLTYPE Stat(STATSTG* stat, DWORD flags) override;

private:
    HRESULT CheckReadable() const noexcept {
        return m_storage->scope->Ended() ? STG_E_REVERTED : MayRead(m_storage->mode) ? S_OK : STG_E_ACCESSDENIED;
    }
    HRESULT CheckWritable() const noexcept {
        return m_storage->scope->Ended() ? STG_E_REVERTED : MayWrite(m_storage->mode) ? S_OK : STG_E_ACCESSDENIED;
    }
    Node::Children& Children() const noexcept { return m_storage->node->children; }

    HRESULT CreateElement(const OLECHAR* name, NodeKind kind, DWORD mode, std::shared_ptr<Node>& made);
    HRESULT FindToOpen(const OLECHAR* name, NodeKind kind, std::shared_ptr<Node>& found) const;
    HRESULT FindToChange(const OLECHAR* name, std::shared_ptr<Node>& found) const;
    void Destroy(const std::shared_ptr<Node>& element);
    void OpenStreamOn(const std::shared_ptr<Node>& node, DWORD mode, IStream** stream);
    void OpenStorageOn(const std::shared_ptr<Node>& node, DWORD mode, IStorage** storage);
    bool LiesIn(IStorage* to) const;

    std::shared_ptr<StorageState> m_storage;
};

StorageObject::~StorageObject() {
    m_storage->scope->End();
    if (!m_storage->isRoot) {
        return;
    }
    const Transaction& transaction = *m_storage->transaction;
    const bool saves = !IsTransacted(m_storage->mode) && (m_storage->mode & STGM_DELETEONRELEASE) == 0;
    if (saves && transaction.Changed()) {
        // Nobody is left to hear of a failure; who wants to know calls Commit first.
        (void)Guarded([&] { return m_storage->transaction->Commit(STGC_DANGEROUSLYCOMMITMERELYTODISKCACHE); });
    }
    transaction.File()->Close();
}

HRESULT StorageObject::QueryInterface(REFIID riid, void** object) {
    if (object != nullptr && &riid == &kThisImplementation) {
        *object = this;
        AddRef();
        return S_OK;
    }
    return Answer(riid, object, IID_IStorage);
}

// --- Creating and opening elements -----------------------------------------------------------------------------------

HRESULT StorageObject::CreateElement(const OLECHAR* name, NodeKind kind, DWORD mode, std::shared_ptr<Node>& made) {
    WideView checked;
    if (const HRESULT hr = CheckNewName(name, checked); FAILED(hr)) {
        return hr;
    }
    if (const HRESULT hr = CheckWritable(); FAILED(hr)) {
        return hr;
    }
    const HRESULT fits =
        kind == NodeKind::Stream ? CheckStreamMode(mode, m_storage->mode) : CheckStorageMode(mode, m_storage->mode);
    if (FAILED(fits)) {
        return fits;
    }
    if (kind == NodeKind::Storage && m_storage->depth + 1 >= kMaxDepth) {
        return STG_E_DOCFILETOOLARGE;
    }
    const std::shared_ptr<Node> existing = m_storage->node->Find(checked);
    if (existing != nullptr && (mode & STGM_CREATE) == 0) {
        return STG_E_FILEALREADYEXISTS;
    }
    auto node = std::make_shared<Node>();
    node->kind = kind;
    node->name = checked;
    if (kind == NodeKind::Storage) {
        node->created = node->modified = TimeNow();
    }
    if (existing != nullptr) {
        Destroy(existing);
    }
    Children().emplace(node->name, node);
    m_storage->transaction->NoteChange();
    made = std::move(node);
    return S_OK;
}

HRESULT StorageObject::FindToOpen(const OLECHAR* name, NodeKind kind, std::shared_ptr<Node>& found) const {
    WideView checked;
    if (const HRESULT hr = CheckName(name, checked); FAILED(hr)) {
        return hr;
    }
    found = m_storage->node->Find(checked);
    if (found == nullptr || found->kind != kind) {
        return STG_E_FILENOTFOUND;
    }
    return found->IsOpen() ? STG_E_ACCESSDENIED : S_OK;
}

HRESULT StorageObject::CreateStream(const OLECHAR* name, DWORD mode, DWORD reserved1, DWORD reserved2,
                                    IStream** stream) {
    return Guarded([&] {
        if (stream == nullptr) {
            return STG_E_INVALIDPOINTER;
        }
        *stream = nullptr;
        if (reserved1 != 0 || reserved2 != 0) {
            return STG_E_INVALIDPARAMETER;
        }
        std::shared_ptr<Node> node;
        if (const HRESULT hr = CreateElement(name, NodeKind::Stream, mode, node); FAILED(hr)) {
            return hr;
        }
        OpenStreamOn(node, mode, stream);
        return S_OK;
    });
}

HRESULT StorageObject::OpenStream(const OLECHAR* name, void* reserved1, DWORD mode, DWORD reserved2, IStream** stream) {
    return Guarded([&] {
        if (stream == nullptr) {
            return STG_E_INVALIDPOINTER;
        }
        *stream = nullptr;
        if (reserved1 != nullptr || reserved2 != 0) {
            return STG_E_INVALIDPARAMETER;
        }
        if (m_storage->scope->Ended()) {
            return STG_E_REVERTED;
        }
        if (const HRESULT hr = CheckStreamMode(mode, m_storage->mode); FAILED(hr)) {
            return hr;
        }
        std::shared_ptr<Node> node;
        if (const HRESULT hr = FindToOpen(name, NodeKind::Stream, node); FAILED(hr)) {
            return hr;
        }
        OpenStreamOn(node, mode, stream);
        return S_OK;
    });
}

HRESULT StorageObject::CreateStorage(const OLECHAR* name, DWORD mode, DWORD reserved1, DWORD reserved2,
                                     IStorage** storage) {
    return Guarded([&] {
        if (storage == nullptr) {
            return STG_E_INVALIDPOINTER;
        }
        *storage = nullptr;
        if (reserved1 != 0 || reserved2 != 0) {
            return STG_E_INVALIDPARAMETER;
        }
        std::shared_ptr<Node> node;
        if (const HRESULT hr = CreateElement(name, NodeKind::Storage, mode, node); FAILED(hr)) {
            return hr;
        }
        OpenStorageOn(node, mode, storage);
        return S_OK;
    });
}

HRESULT StorageObject::OpenStorage(const OLECHAR* name, IStorage* priority, DWORD mode, SNB exclude, DWORD reserved,
                                   IStorage** storage) {
    return Guarded([&] {
        if (storage == nullptr) {
            return STG_E_INVALIDPOINTER;
        }
        *storage = nullptr;
        if (priority != nullptr || exclude != nullptr || reserved != 0) {
            return STG_E_INVALIDPARAMETER;
        }
        if (m_storage->scope->Ended()) {
            return STG_E_REVERTED;
        }
        if (const HRESULT hr = CheckStorageMode(mode, m_storage->mode); FAILED(hr)) {
            return hr;
        }
        std::shared_ptr<Node> node;
        if (const HRESULT hr = FindToOpen(name, NodeKind::Storage, node); FAILED(hr)) {
            return hr;
        }
        OpenStorageOn(node, mode, storage);
        return S_OK;
    });
}

void StorageObject::OpenStreamOn(const std::shared_ptr<Node>& node, DWORD mode, IStream** stream) {
    auto opened = std::make_shared<StreamState>();
    opened->transaction = m_storage->transaction;
    opened->node = node;
    opened->scope = std::make_shared<Scope>(m_storage->below);
    opened->mode = mode;
    const std::shared_ptr<Scope> scope = opened->scope;
    MakeStreamObject(std::move(opened), stream);
    node->opened = scope;
}

void StorageObject::OpenStorageOn(const std::shared_ptr<Node>& node, DWORD mode, IStorage** storage) {
    auto opened = std::make_shared<StorageState>();
    opened->ownsTransaction = IsTransacted(mode);
    opened->transaction =
        opened->ownsTransaction ? std::make_shared<Transaction>(m_storage->transaction, node) : m_storage->transaction;
    opened->node = opened->ownsTransaction ? opened->transaction->Top() : node;
    opened->scope = std::make_shared<Scope>(m_storage->below);
    opened->below = std::make_shared<Scope>(opened->scope);
    opened->mode = mode;
    opened->depth = m_storage->depth + 1;
    const std::shared_ptr<Scope> scope = opened->scope;
    MakeObject<StorageObject>(storage, std::move(opened));
    node->opened = scope;
}

// --- Elements as a whole ---------------------------------------------------------------------------------------------

HRESULT StorageObject::FindToChange(const OLECHAR* name, std::shared_ptr<Node>& found) const {
    WideView checked;
    if (const HRESULT hr = CheckName(name, checked); FAILED(hr)) {
        return hr;
    }
    if (const HRESULT hr = CheckWritable(); FAILED(hr)) {
        return hr;
    }
    found = m_storage->node->Find(checked);
    return found == nullptr ? STG_E_FILENOTFOUND : S_OK;
}

void StorageObject::Destroy(const std::shared_ptr<Node>& element) {
    element->EndOpened();
    Children().erase(element->name);
    m_storage->transaction->NoteChange();
}

HRESULT StorageObject::DestroyElement(const OLECHAR* name) {
    return Guarded([&] {
        std::shared_ptr<Node> element;
        const HRESULT hr = FindToChange(name, element);
        if (SUCCEEDED(hr)) {
            Destroy(element);
        }
        return hr;
    });
}

HRESULT StorageObject::RenameElement(const OLECHAR* oldName, const OLECHAR* newName) {
    return Guarded([&] {
        std::shared_ptr<Node> element;
        if (const HRESULT hr = FindToChange(oldName, element); FAILED(hr)) {
            return hr;
        }
        WideView checked;
        if (const HRESULT hr = CheckNewName(newName, checked); FAILED(hr)) {
            return hr;
        }
        if (m_storage->node->Find(checked) != nullptr) {
            return STG_E_FILEALREADYEXISTS;
        }
        if (element->IsOpen()) {
            return STG_E_ACCESSDENIED;
        }
        CStringW key(checked);
        CStringW name(checked);
        Node::Children::node_type entry = Children().extract(element->name);
        entry.key().swap(key);
        element->name.swap(name);
        Children().insert(std::move(entry));
        m_storage->transaction->NoteChange();
        return S_OK;
    });
}

// True when `to` is this storage or was opened from it: a copy into it would never end.
bool StorageObject::LiesIn(IStorage* to) const {
    StorageObject* other = nullptr;
    if (FAILED(to->QueryInterface(kThisImplementation, reinterpret_cast<void**>(&other)))) {
        return false;
    }
    const auto held = ComRef<StorageObject>::Attach(other);
    return held->m_storage->scope->IsUnder(m_storage->scope.get());
}

HRESULT StorageObject::CopyTo(DWORD ciidExclude, const IID* rgiidExclude, SNB exclude, IStorage* to) {
    return Guarded([&] {
        if (const HRESULT hr = CheckReadable(); FAILED(hr)) {
            return hr;
        }
        if (to == nullptr || (ciidExclude != 0 && rgiidExclude == nullptr)) {
            return STG_E_INVALIDPOINTER;
        }
        if (LiesIn(to)) {
            return STG_E_ACCESSDENIED;
        }
        CopyExclusions exclusions;
        for (const IID& iid : std::span(rgiidExclude, ciidExclude)) {
            exclusions.storages = exclusions.storages || iid == IID_IStorage;
            exclusions.streams = exclusions.streams || iid == IID_IStream;
        }
        for (SNB name = exclude; name != nullptr && *name != nullptr; ++name) {
            exclusions.names.emplace(*name);
        }
        return CopyStorage(m_storage->node, exclusions, *to);
    });
}

HRESULT StorageObject::MoveElementTo(const OLECHAR* name, IStorage* to, const OLECHAR* newName, DWORD flags) {
    return Guarded([&] {
        if (const HRESULT hr = CheckReadable(); FAILED(hr)) {
            return hr;
        }
        if (to == nullptr) {
            return STG_E_INVALIDPOINTER;
        }
        if (flags != STGMOVE_MOVE && flags != STGMOVE_COPY) {
            return STG_E_INVALIDFLAG;
        }
        WideView from;
        WideView target;
        if (FAILED(CheckName(name, from)) || FAILED(CheckNewName(newName, target))) {
            return STG_E_INVALIDNAME;
        }
        if (flags == STGMOVE_MOVE && !MayWrite(m_storage->mode)) {
            return STG_E_ACCESSDENIED;
        }
        const std::shared_ptr<Node> element = m_storage->node->Find(from);
        if (element == nullptr) {
            return STG_E_FILENOTFOUND;
        }
        if (element->IsOpen()) {
            return STG_E_ACCESSDENIED;
        }
        const CStringW targetName(target);
        if (const HRESULT hr = CopyElement(element, targetName, *to); FAILED(hr)) {
            return hr;
        }
        if (flags == STGMOVE_MOVE) {
            Destroy(element);
        }
        return S_OK;
    });
}

HRESULT StorageObject::SetElementTimes(const OLECHAR* name, const FILETIME* created, const FILETIME*,
                                       const FILETIME* modified) {
    return Guarded([&] {
        if (const HRESULT hr = CheckWritable(); FAILED(hr)) {
            return hr;
        }
        std::shared_ptr<Node> element = m_storage->node;
        if (name != nullptr) {
            if (const HRESULT hr = FindToChange(name, element); FAILED(hr)) {
                return hr;
            }
        }
        if (element->kind == NodeKind::Storage && (created != nullptr || modified != nullptr)) {
            element->created = created != nullptr ? *created : element->created;
            element->modified = modified != nullptr ? *modified : element->modified;
            m_storage->transaction->NoteChange();
        }
        return S_OK;
    });
}

// --- The storage itself ----------------------------------------------------------------------------------------------

HRESULT StorageObject::Commit(DWORD flags) {
    return Guarded([&] {
        if (m_storage->scope->Ended()) {
            return STG_E_REVERTED;
        }
        if ((flags & ~kCommitFlags) != 0) {
            return STG_E_INVALIDFLAG;
        }
        // What a storage in direct mode changes is its parent's already.
        return m_storage->ownsTransaction ? m_storage->transaction->Commit(flags) : S_OK;
    });
}

HRESULT StorageObject::Revert() {
    return Guarded([&] {
        if (m_storage->scope->Ended()) {
            return STG_E_REVERTED;
        }
        if (!IsTransacted(m_storage->mode)) {
            return S_OK;
        }
        auto below = std::make_shared<Scope>(m_storage->scope);
        if (const HRESULT hr = m_storage->transaction->Revert(); FAILED(hr)) {
            return hr;
        }
        m_storage->below->End();
        m_storage->below = std::move(below);
        m_storage->node = m_storage->transaction->Top();
        return S_OK;
    });
}

HRESULT StorageObject::EnumElements(DWORD reserved1, void* reserved2, DWORD reserved3, IEnumSTATSTG** enumerator) {
    return Guarded([&] {
        if (enumerator == nullptr) {
            return STG_E_INVALIDPOINTER;
        }
        *enumerator = nullptr;
        if (reserved1 != 0 || reserved2 != nullptr || reserved3 != 0) {
            return STG_E_INVALIDPARAMETER;
        }
        if (const HRESULT hr = CheckReadable(); FAILED(hr)) {
            return hr;
        }
        MakeEnumerator(m_storage, enumerator);
        return S_OK;
    });
}

HRESULT StorageObject::SetClass(REFCLSID clsid) {
    if (const HRESULT hr = CheckWritable(); FAILED(hr)) {
        return hr;
    }
    m_storage->node->clsid = clsid;
    m_storage->transaction->NoteChange();
    return S_OK;
}

HRESULT StorageObject::SetStateBits(DWORD bits, DWORD mask) {
    if (const HRESULT hr = CheckWritable(); FAILED(hr)) {
        return hr;
    }
    DWORD& state = m_storage->node->stateBits;
    state = (state & ~mask) | (bits & mask);
    m_storage->transaction->NoteChange();
    return S_OK;
}

HRESULT StorageObject::Stat(STATSTG* stat, DWORD flags) {
    return Guarded([&] {
        if (m_storage->scope->Ended()) {
            return STG_E_REVERTED;
        }
        const CStringW name = m_storage->isRoot ? m_storage->transaction->File()->Name() : m_storage->node->name;
        return DescribeNode(*m_storage->node, name, ReportedMode(m_storage->mode), flags, stat);
    });
}

}  // namespace

HRESULT MakeRootObject(std::shared_ptr<CompoundFile> file, DWORD mode, IStorage** object) {
    std::shared_ptr<Node> top;
    if (const HRESULT hr = file->ReadTree(top); FAILED(hr)) {
        return hr;
    }
    auto opened = std::make_shared<StorageState>();
    opened->transaction = std::make_shared<Transaction>(std::move(file), top);
    opened->ownsTransaction = true;
    opened->node = std::move(top);
    opened->scope = std::make_shared<Scope>(nullptr);
    opened->below = std::make_shared<Scope>(opened->scope);
    opened->mode = mode;
    opened->isRoot = true;
    MakeObject<StorageObject>(object, std::move(opened));
    return S_OK;
}

}  // namespace vx_storage
