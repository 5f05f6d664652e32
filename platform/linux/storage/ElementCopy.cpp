#include "platform/linux/storage/ElementCopy.h"

#include "platform/linux/storage/ComObject.h"
#include "platform/linux/storage/FileTally.h"
#include "platform/linux/storage/StreamCopy.h"

#include <utility>
#include <vector>

namespace vx_storage {
namespace {

constexpr DWORD kTargetMode = STGM_WRITE | STGM_SHARE_EXCLUSIVE;

// One storage that is being copied. The elements are listed first: the target may lie in the tree that is read.
struct Level {
    std::vector<std::shared_ptr<Node>> elements;
    std::size_t next = 0;
    ComRef<IStorage> target;
};

Level Begin(const Node& from, ComRef<IStorage> target) {
    Level level;
    level.elements.reserve(from.children.size());
    for (const auto& [name, child] : from.children) {
        level.elements.push_back(child);
    }
    level.target = std::move(target);
    return level;
}

HRESULT CopyProperties(const Node& from, IStorage& to) {
    const HRESULT hr = to.SetClass(from.clsid);
    return FAILED(hr) ? hr : to.SetStateBits(from.stateBits, ~DWORD{0});
}

HRESULT CreateOrOpen(IStorage& parent, const CStringW& name, ComRef<IStorage>& made) {
    const HRESULT hr = parent.CreateStorage(name.c_str(), kTargetMode, 0, 0, made.Put());
    return hr == STG_E_FILEALREADYEXISTS
               ? parent.OpenStorage(name.c_str(), nullptr, kTargetMode, nullptr, 0, made.Put())
               : hr;
}

HRESULT CopyBytesTo(const StreamContent& from, IStream& to) {
    std::uint64_t read = 0;
    std::uint64_t written = 0;
    return CopyToStream(
        to, from.Size(), from.Size(),
        [&](std::span<std::byte> part, std::size_t& got) { return from.Read(read, part, got); }, read, written);
}

HRESULT CopyStream(const Node& from, IStorage& to) {
    ComRef<IStream> target;
    const HRESULT hr = to.CreateStream(from.name.c_str(), kTargetMode | STGM_CREATE, 0, 0, target.Put());
    return FAILED(hr) ? hr : CopyBytesTo(from.content, *target.Get());
}

}  // namespace

HRESULT CopyElement(const std::shared_ptr<Node>& from, const CStringW& name, IStorage& to) {
    HRESULT copied = S_OK;
    if (from->kind == NodeKind::Stream) {
        ComRef<IStream> target;
        if (const HRESULT hr = to.CreateStream(name.c_str(), kTargetMode, 0, 0, target.Put()); FAILED(hr)) {
            return hr;
        }
        copied = CopyBytesTo(from->content, *target.Get());
    } else {
        ComRef<IStorage> target;
        if (const HRESULT hr = to.CreateStorage(name.c_str(), kTargetMode, 0, 0, target.Put()); FAILED(hr)) {
            return hr;
        }
        copied = CopyStorage(from, {}, *target.Get());
    }
    if (FAILED(copied)) {
        to.DestroyElement(name.c_str());
    }
    return copied;
}

HRESULT CopyStorage(const std::shared_ptr<Node>& from, const CopyExclusions& exclusions, IStorage& to) {
    if (const HRESULT hr = CopyProperties(*from, to); FAILED(hr)) {
        return hr;
    }
    FileTally tally;
    std::vector<Level> levels;
    levels.push_back(Begin(*from, ComRef<IStorage>::Share(&to)));
    while (!levels.empty()) {
        Level& level = levels.back();
        if (level.next == level.elements.size()) {
            levels.pop_back();
            continue;
        }
        const std::shared_ptr<Node> element = level.elements[level.next++];
        if (levels.size() == 1 && exclusions.names.contains(element->name)) {
            continue;
        }
        if (element->kind == NodeKind::Stream) {
            if (exclusions.streams) {
                continue;
            }
            if (!tally.Add(element->content)) {
                return STG_E_DOCFILECORRUPT;
            }
            if (const HRESULT hr = CopyStream(*element, *level.target.Get()); FAILED(hr)) {
                return hr;
            }
        } else if (!exclusions.storages) {
            ComRef<IStorage> target;
            if (const HRESULT hr = CreateOrOpen(*level.target.Get(), element->name, target); FAILED(hr)) {
                return hr;
            }
            if (const HRESULT hr = CopyProperties(*element, *target.Get()); FAILED(hr)) {
                return hr;
            }
            levels.push_back(Begin(*element, std::move(target)));
        }
    }
    return S_OK;
}

}  // namespace vx_storage
