// storage_interop write FILE [large] | check FILE [large]: writes a compound file whose contents are known, or compares
// one with them. The same program on both systems, so that each reads what the other wrote.
#include "platform/Storage.h"
#include "platform/TaskMemory.h"
#include "platform/WideText.h"

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace {

using Bytes = std::vector<std::uint8_t>;

// One storage of the expected tree.
struct Folder {
    std::uint32_t classId = 0;
    std::map<CStringW, Bytes> streams;
    std::map<CStringW, Folder> folders;
};

Bytes Pattern(std::size_t size, std::uint32_t seed) {
    Bytes bytes(size);
    std::uint32_t state = seed * 2246822519U + 374761393U;
    for (std::uint8_t& byte : bytes) {
        state = state * 1664525U + 1013904223U;
        byte = static_cast<std::uint8_t>(state >> 24U);
    }
    return bytes;
}

CStringW Named(const std::string& ascii) {
    return {ascii.begin(), ascii.end()};
}

CStringW Numbered(const char* prefix, std::size_t number) {
    return Named(prefix + std::to_string(number));
}

Folder ExpectedTree(bool large) {
    Folder root;
    root.classId = 0x00020D0B;
    std::uint32_t seed = 1;
    constexpr std::size_t kSizes[] = {0, 1, 63, 64, 65, 511, 512, 513, 4095, 4096, 4097, 65537, 3'000'000};
    for (const std::size_t size : kSizes) {
        root.streams[Numbered("size", size)] = Pattern(size, seed++);
    }
    if (large) {  // more FAT sectors than the header has room for, and a second DIFAT sector
        root.streams[Named("large")] = Pattern(16'000'000, seed++);
    }
    // Names beyond ASCII: each of a length of its own among them, since not every reader knows their upper case.
    const CStringW hebrew = {0x5E9, 0x5DC, 0x5D5, 0x5DD};
    const CStringW cyrillic = {0x41F, 0x440, 0x438, 0x432, 0x435, 0x442, '!' + 1};
    const CStringW chinese = {0x6587, 0x4EF6};
    const CStringW longest(31, static_cast<WCHAR>(0x3042));
    root.streams[hebrew] = Pattern(100, seed++);
    root.streams[Named("__properties_version1.0")] = Pattern(320, seed++);
    Folder& nested = root.folders[chinese];
    nested.classId = 7;
    nested.streams[cyrillic] = Pattern(5000, seed++);
    nested.streams[longest] = Pattern(10, seed++);
    Folder& deeper = nested.folders[Named("deep")].folders[Named("and deeper")];
    deeper.streams[Named("\x05SummaryInformation")] = Pattern(4096, seed++);
    deeper.folders[Named("empty")].classId = 9;
    Folder& many = root.folders[Named("many")];
    for (std::size_t i = 0; i < 300; ++i) {
        many.streams[Numbered("__substg1.0_", 1000 + i)] = Pattern(i % 97, seed++);
    }
    return root;
}

constexpr DWORD kExclusive = STGM_READWRITE | STGM_SHARE_EXCLUSIVE;
constexpr DWORD kReadOnly = STGM_READ | STGM_SHARE_EXCLUSIVE;

std::string Printable(const CStringW& name) {
    std::string text;
    for (const WCHAR unit : name) {
        char code[8];
        std::snprintf(code, sizeof code, unit < 0x80 ? "%c" : "<%04X>", unit);
        text += code;
    }
    return text;
}

bool Succeeded(HRESULT hr, const char* what, const CStringW& name) {
    if (FAILED(hr)) {
        std::printf("%s %s: %08X\n", what, Printable(name).c_str(), static_cast<unsigned>(hr));
    }
    return SUCCEEDED(hr);
}

bool Write(IStorage* storage, const Folder& folder) {
    bool good = Succeeded(storage->SetClass(OleGuid(folder.classId)), "class", {});
    for (const auto& [name, bytes] : folder.streams) {
        IStream* stream = nullptr;
        if (!Succeeded(storage->CreateStream(name.c_str(), kExclusive, 0, 0, &stream), "create", name)) {
            return false;
        }
        ULONG written = 0;
        if (!bytes.empty()) {
            good = Succeeded(stream->Write(bytes.data(), static_cast<ULONG>(bytes.size()), &written), "write", name)
                   && written == bytes.size() && good;
        }
        stream->Release();
    }
    for (const auto& [name, inner] : folder.folders) {
        IStorage* made = nullptr;
        if (!Succeeded(storage->CreateStorage(name.c_str(), kExclusive, 0, 0, &made), "create", name)) {
            return false;
        }
        good = Write(made, inner) && good;
        made->Release();
    }
    return good;
}

bool CheckStream(IStorage* storage, const CStringW& name, const Bytes& expected) {
    IStream* stream = nullptr;
    if (!Succeeded(storage->OpenStream(name.c_str(), nullptr, kReadOnly, 0, &stream), "open", name)) {
        return false;
    }
    Bytes bytes(expected.size() + 1);
    ULONG got = 0;
    const bool read = Succeeded(stream->Read(bytes.data(), static_cast<ULONG>(bytes.size()), &got), "read", name);
    stream->Release();
    const bool same = read && got == expected.size() && std::equal(expected.begin(), expected.end(), bytes.begin());
    if (!same) {
        std::printf("%s: other bytes than written\n", Printable(name).c_str());
    }
    return same;
}

bool Check(IStorage* storage, const Folder& folder) {
    STATSTG stat = {};
    bool good = Succeeded(storage->Stat(&stat, STATFLAG_NONAME), "stat", {});
    if (!IsEqualGUID(stat.clsid, OleGuid(folder.classId))) {
        std::printf("another class than %08X\n", folder.classId);
        good = false;
    }
    IEnumSTATSTG* enumerator = nullptr;
    if (!Succeeded(storage->EnumElements(0, nullptr, 0, &enumerator), "enumerate", {})) {
        return false;
    }
    std::size_t count = 0;
    while (enumerator->Next(1, &stat, nullptr) == S_OK) {
        const CStringW name = stat.pwcsName;
        CoTaskMemFree(stat.pwcsName);
        ++count;
        const bool isStream = stat.type == STGTY_STREAM && folder.streams.count(name) != 0;
        const bool isFolder = stat.type == STGTY_STORAGE && folder.folders.count(name) != 0;
        if (!isStream && !isFolder) {
            std::printf("%s should not be there\n", Printable(name).c_str());
            good = false;
        }
    }
    enumerator->Release();
    if (count != folder.streams.size() + folder.folders.size()) {
        std::printf("%zu elements in place of %zu\n", count, folder.streams.size() + folder.folders.size());
        good = false;
    }
    for (const auto& [name, bytes] : folder.streams) {
        good = CheckStream(storage, name, bytes) && good;
    }
    for (const auto& [name, inner] : folder.folders) {
        IStorage* opened = nullptr;
        if (!Succeeded(storage->OpenStorage(name.c_str(), nullptr, kReadOnly, nullptr, 0, &opened), "open", name)) {
            return false;
        }
        good = Check(opened, inner) && good;
        opened->Release();
    }
    return good;
}

}  // namespace

int main(int argc, char** argv) {
    const bool writes = argc >= 3 && std::strcmp(argv[1], "write") == 0;
    const bool checks = argc >= 3 && std::strcmp(argv[1], "check") == 0;
    const bool large = argc == 4 && std::strcmp(argv[3], "large") == 0;
    if (!writes && !checks) {
        std::puts("storage_interop write FILE [large] | check FILE [large]");
        return 2;
    }
    const std::filesystem::path path(argv[2]);
#ifdef _WIN32
    const CStringW name = path.wstring();
#else
    const CStringW name = path.u16string();
#endif
    IStorage* root = nullptr;
    const HRESULT hr = writes ? StgCreateDocfile(name.c_str(), kExclusive | STGM_CREATE, 0, &root)
                              : StgOpenStorage(name.c_str(), nullptr, kReadOnly, nullptr, 0, &root);
    if (!Succeeded(hr, "file", name)) {
        return 1;
    }
    const Folder expected = ExpectedTree(large);
    bool good = writes ? Write(root, expected) : Check(root, expected);
    good = (!writes || Succeeded(root->Commit(STGC_DEFAULT), "commit", name)) && good;
    root->Release();
    return good ? 0 : 1;
}
