#include "platform/Bstr.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>

namespace {

// A block is 4 unused bytes, 4 of length, the text, and its two zero bytes: so the text is aligned like the block.
constexpr std::size_t kHeaderBytes = 8;
constexpr std::size_t kTerminatorBytes = sizeof(OLECHAR);

// The last length whose sum with the length field and the terminator is still a 32-bit number, as on Windows.
constexpr UINT kMaxBytes = std::numeric_limits<UINT>::max() - sizeof(UINT) - kTerminatorBytes;
constexpr UINT kMaxUnits = kMaxBytes / sizeof(OLECHAR);

BSTR TextOf(std::byte* block) {
    return reinterpret_cast<BSTR>(block + kHeaderBytes);
}
std::byte* BlockOf(BSTR text) {
    return reinterpret_cast<std::byte*>(text) - kHeaderBytes;
}

// A BSTR of `bytes` bytes of which the first `given` come from `source` and the others are zero. Null when too long or
// out of memory.
BSTR Allocate(const void* source, UINT given, UINT bytes) {
    if (bytes > kMaxBytes) {
        return nullptr;
    }
    const std::size_t size = kHeaderBytes + bytes + kTerminatorBytes;
    // Zeroed memory costs nothing for a large block that is about to be filled in.
    auto* block = static_cast<std::byte*>(given == bytes ? std::malloc(size) : std::calloc(1, size));
    if (block == nullptr) {
        return nullptr;
    }
    std::memcpy(block + kHeaderBytes - sizeof(bytes), &bytes, sizeof(bytes));
    if (given != 0) {
        std::memcpy(block + kHeaderBytes, source, given);
    }
    std::memset(block + kHeaderBytes + bytes, 0, kTerminatorBytes);
    return TextOf(block);
}

BSTR AllocateUnits(const OLECHAR* text, UINT units) {
    if (units > kMaxUnits) {
        return nullptr;
    }
    const UINT bytes = units * static_cast<UINT>(sizeof(OLECHAR));
    return Allocate(text, text == nullptr ? 0 : bytes, bytes);
}

INT Replace(BSTR& held, BSTR fresh) {
    if (fresh == nullptr) {
        return FALSE;
    }
    SysFreeString(held);
    held = fresh;
    return TRUE;
}

}  // namespace

BSTR SysAllocString(const OLECHAR* psz) noexcept {
    if (psz == nullptr) {
        return nullptr;
    }
    const std::size_t units = std::char_traits<OLECHAR>::length(psz);
    return units > kMaxUnits ? nullptr : AllocateUnits(psz, static_cast<UINT>(units));
}

BSTR SysAllocStringLen(const OLECHAR* strIn, UINT ui) noexcept {
    return AllocateUnits(strIn, ui);
}

BSTR SysAllocStringByteLen(LPCSTR psz, UINT len) noexcept {
    return Allocate(psz, psz == nullptr ? 0 : len, len);
}

INT SysReAllocString(BSTR* pbstr, const OLECHAR* psz) noexcept {
    if (pbstr == nullptr) {
        return FALSE;
    }
    if (psz == nullptr) {
        SysFreeString(*pbstr);
        *pbstr = nullptr;
        return TRUE;
    }
    return Replace(*pbstr, SysAllocString(psz));
}

INT SysReAllocStringLen(BSTR* pbstr, const OLECHAR* psz, UINT len) noexcept {
    if (pbstr == nullptr || len > kMaxUnits) {
        return FALSE;
    }
    if (psz != nullptr) {
        return Replace(*pbstr, AllocateUnits(psz, len));
    }
    const UINT bytes = len * static_cast<UINT>(sizeof(OLECHAR));
    return Replace(*pbstr, Allocate(*pbstr, std::min(SysStringByteLen(*pbstr), bytes), bytes));
}

void SysFreeString(BSTR bstrString) noexcept {
    if (bstrString != nullptr) {
        std::free(BlockOf(bstrString));
    }
}

UINT SysStringLen(BSTR bstr) noexcept {
    return SysStringByteLen(bstr) / static_cast<UINT>(sizeof(OLECHAR));
}

UINT SysStringByteLen(BSTR bstr) noexcept {
    UINT bytes = 0;
    if (bstr != nullptr) {
        std::memcpy(&bytes, BlockOf(bstr) + kHeaderBytes - sizeof(bytes), sizeof(bytes));
    }
    return bytes;
}
