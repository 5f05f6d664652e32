#include "localmapi/store/EntryIds.h"

#include "platform/Paths.h"

#include <algorithm>
#include <cstring>
#include <string_view>

namespace localmapi {

namespace {

constexpr std::size_t kFlags = 4;

// What begins every wrapped store id behind the flags.
constexpr std::array<BYTE, 16> kWrapper = {0x38, 0xA1, 0xBB, 0x10, 0x05, 0xE5, 0x10, 0x1A,
                                           0xA1, 0xBB, 0x08, 0x00, 0x2B, 0x2A, 0x56, 0xC2};

// Behind the wrapper: a version, a flag, and the name of the provider's library with its terminator and padding to a
// multiple of 4.
constexpr std::string_view kLibrary = "mspst.dll";
constexpr std::size_t kWrapperSize = (kFlags + kWrapper.size() + 2 + kLibrary.size() + 1 + 3) / 4 * 4;

constexpr std::size_t kPathAt = kFlags + kPstProvider.size() + 2;

void Append(Bytes& to, const void* from, std::size_t size) {
    const auto* begin = static_cast<const std::byte*>(from);
    to.insert(to.end(), begin, begin + size);
}

bool HasAt(ByteView bytes, std::size_t at, const std::array<BYTE, 16>& what) {
    return bytes.Has(at, what.size()) && std::memcmp(bytes.Data() + at, what.data(), what.size()) == 0;
}

}  // namespace

Bytes PstStoreEntryId(const std::filesystem::path& file) {
    Bytes id(kFlags);
    Append(id, kWrapper.data(), kWrapper.size());
    id.resize(id.size() + 2);
    Append(id, kLibrary.data(), kLibrary.size());
    id.resize(kWrapperSize);

    id.resize(id.size() + kFlags);
    Append(id, kPstProvider.data(), kPstProvider.size());
    id.resize(id.size() + 2);
    const CStringW path = FromPath(file);
    Append(id, path.c_str(), (path.size() + 1) * sizeof(WCHAR));
    return id;
}

std::optional<std::filesystem::path> PathOfStoreEntryId(ByteView entryId) {
    ByteView inner = entryId;
    if (HasAt(entryId, kFlags, kWrapper)) {
        inner = entryId.Part(kWrapperSize);
    }
    if (!HasAt(inner, kFlags, kPstProvider)) {
        return std::nullopt;
    }
    CStringW path;
    for (std::size_t at = kPathAt; inner.Has(at, sizeof(WCHAR)); at += sizeof(WCHAR)) {
        const auto unit = static_cast<WCHAR>(inner.U16(at));
        if (unit == 0) {
            break;
        }
        path.push_back(unit);
    }
    if (path.empty()) {
        return std::nullopt;
    }
    return ToPath(path);
}

}  // namespace localmapi
