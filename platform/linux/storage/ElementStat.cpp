#include "platform/linux/storage/ElementStat.h"

#include "platform/TaskMemory.h"

#include <chrono>
#include <cstdint>
#include <cstring>

namespace vx_storage {

LPOLESTR CopyTaskText(WideView text) noexcept {
    auto* const copy = static_cast<LPOLESTR>(CoTaskMemAlloc((text.size() + 1) * sizeof(OLECHAR)));
    if (copy != nullptr) {
        std::memcpy(copy, text.data(), text.size() * sizeof(OLECHAR));
        copy[text.size()] = 0;
    }
    return copy;
}

HRESULT DescribeNode(const Node& node, WideView name, DWORD mode, DWORD flags, STATSTG* stat) noexcept {
    if (stat == nullptr) {
        return STG_E_INVALIDPOINTER;
    }
    *stat = {};
    if ((flags & ~static_cast<DWORD>(STATFLAG_NONAME | STATFLAG_NOOPEN)) != 0) {
        return STG_E_INVALIDFLAG;
    }
    if ((flags & STATFLAG_NONAME) == 0 && !name.empty()) {
        stat->pwcsName = CopyTaskText(name);
        if (stat->pwcsName == nullptr) {
            return E_OUTOFMEMORY;
        }
    }
    stat->grfMode = mode;
    if (node.kind == NodeKind::Stream) {
        stat->type = STGTY_STREAM;
        stat->cbSize.QuadPart = node.content.Size();
        return S_OK;
    }
    stat->type = STGTY_STORAGE;
    stat->mtime = node.modified;
    stat->ctime = node.created;
    stat->clsid = node.clsid;
    stat->grfStateBits = node.stateBits;
    return S_OK;
}

FILETIME TimeNow() noexcept {
    constexpr std::int64_t kSecondsFrom1601To1970 = 11'644'473'600;
    using Ticks = std::chrono::duration<std::int64_t, std::ratio<1, 10'000'000>>;
    const auto sinceEpoch = std::chrono::duration_cast<Ticks>(std::chrono::system_clock::now().time_since_epoch());
    const auto ticks = static_cast<std::uint64_t>((sinceEpoch + std::chrono::seconds(kSecondsFrom1601To1970)).count());
    return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32U)};
}

}  // namespace vx_storage
