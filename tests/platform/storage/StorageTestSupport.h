// What the tests of structured storage share. Everything here works on both systems through the published functions.
#pragma once

#include "platform/GlobalMemory.h"
#include "platform/Storage.h"
#include "platform/TaskMemory.h"
#include "platform/WideText.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <map>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace storage_test {

using Bytes = std::vector<std::uint8_t>;

inline constexpr DWORD kExclusive = STGM_READWRITE | STGM_SHARE_EXCLUSIVE;
inline constexpr DWORD kReadOnly = STGM_READ | STGM_SHARE_EXCLUSIVE;

// One reference, released at the end.
template <class Interface>
class Held {
public:
    Held() = default;
    Held(Held&& other) noexcept : m_object(std::exchange(other.m_object, nullptr)) {}
    Held& operator=(Held&& other) noexcept {
        Reset();
        m_object = std::exchange(other.m_object, nullptr);
        return *this;
    }
    ~Held() { Reset(); }
    Interface** Put() {
        Reset();
        return &m_object;
    }
    Interface* Get() const { return m_object; }
    Interface* operator->() const { return m_object; }
    explicit operator bool() const { return m_object != nullptr; }
    void Reset() {
        if (m_object != nullptr) {
            std::exchange(m_object, nullptr)->Release();
        }
    }

private:
    Interface* m_object = nullptr;
};

// A folder of its own, gone with the test.
class TestFolder {
public:
    TestFolder() {
        static std::atomic<unsigned> s_count{0};
        m_path = std::filesystem::temp_directory_path()
                 / ("vx-storage-" + std::to_string(std::random_device{}()) + "-" + std::to_string(++s_count));
        std::filesystem::create_directories(m_path);
    }
    ~TestFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    std::filesystem::path Path(const std::string& name) const { return m_path / name; }
    CStringW Name(const std::string& name) const { return Wide(Path(name)); }

    static CStringW Wide(const std::filesystem::path& path) {
#ifdef _WIN32
        return path.wstring();
#else
        return path.u16string();
#endif
    }

private:
    std::filesystem::path m_path;
};

inline Bytes ReadFile(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

inline void WriteFile(const std::filesystem::path& path, const Bytes& bytes) {
    std::ofstream file(path, std::ios::binary);
    file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

// Several names at once. (clang 14 ends with a fault of its own on a list of wide literals.)
inline std::vector<CStringW> Wide(const std::vector<std::string>& names) {
    std::vector<CStringW> wide;
    for (const std::string& name : names) {
        wide.emplace_back(name.begin(), name.end());
    }
    return wide;
}

// Bytes that tell by their place and seed where they came from.
inline Bytes Pattern(std::size_t size, std::uint32_t seed) {
    Bytes bytes(size);
    std::uint32_t state = seed * 2654435761U + 1;
    for (std::uint8_t& byte : bytes) {
        state = state * 1664525U + 1013904223U;
        byte = static_cast<std::uint8_t>(state >> 24U);
    }
    return bytes;
}

inline LARGE_INTEGER Offset(std::int64_t value) {
    LARGE_INTEGER offset;
    offset.QuadPart = value;
    return offset;
}

inline ULARGE_INTEGER Size(std::uint64_t value) {
    ULARGE_INTEGER size;
    size.QuadPart = value;
    return size;
}

inline std::uint64_t StreamSize(IStream* stream) {
    STATSTG stat = {};
    EXPECT_EQ(stream->Stat(&stat, STATFLAG_NONAME), S_OK);
    return stat.cbSize.QuadPart;
}

// The whole stream, read from its start in pieces of `piece` bytes.
inline Bytes ReadAll(IStream* stream, ULONG piece = 100'000) {
    EXPECT_EQ(stream->Seek(Offset(0), STREAM_SEEK_SET, nullptr), S_OK);
    Bytes all;
    Bytes buffer(piece);
    for (;;) {
        ULONG got = 0;
        const HRESULT hr = stream->Read(buffer.data(), piece, &got);
        EXPECT_EQ(hr, S_OK);
        if (FAILED(hr) || got == 0) {
            return all;
        }
        all.insert(all.end(), buffer.begin(), buffer.begin() + got);
    }
}

inline void WriteAll(IStream* stream, const Bytes& bytes) {
    ULONG written = 0;
    const void* const from = bytes.empty() ? "" : static_cast<const void*>(bytes.data());
    EXPECT_EQ(stream->Write(from, static_cast<ULONG>(bytes.size()), &written), S_OK);
    EXPECT_EQ(written, bytes.size());
}

inline void AddStream(IStorage* storage, const CStringW& name, const Bytes& bytes) {
    Held<IStream> stream;
    ASSERT_EQ(storage->CreateStream(name.c_str(), kExclusive | STGM_CREATE, 0, 0, stream.Put()), S_OK);
    WriteAll(stream.Get(), bytes);
}

inline HRESULT ReadStream(IStorage* storage, const CStringW& name, Bytes& bytes) {
    Held<IStream> stream;
    const HRESULT hr = storage->OpenStream(name.c_str(), nullptr, kReadOnly, 0, stream.Put());
    if (SUCCEEDED(hr)) {
        bytes = ReadAll(stream.Get());
    }
    return hr;
}

inline bool HasStream(IStorage* storage, const CStringW& name) {
    Bytes ignored;
    return SUCCEEDED(ReadStream(storage, name, ignored));
}

// Names of the elements in the order of enumeration; storages end in '/'.
inline std::vector<CStringW> Names(IStorage* storage) {
    std::vector<CStringW> names;
    Held<IEnumSTATSTG> enumerator;
    EXPECT_EQ(storage->EnumElements(0, nullptr, 0, enumerator.Put()), S_OK);
    STATSTG stat = {};
    while (enumerator && enumerator->Next(1, &stat, nullptr) == S_OK) {
        names.emplace_back(stat.pwcsName);
        if (stat.type == STGTY_STORAGE) {
            names.back().push_back('/');
        }
        CoTaskMemFree(stat.pwcsName);
    }
    return names;
}

// All streams below a storage by their paths, "a/b/stream"; a storage without elements as "a/b/" with no bytes.
inline std::map<CStringW, Bytes> Tree(IStorage* storage, const CStringW& prefix = {}) {
    std::map<CStringW, Bytes> tree;
    for (const CStringW& name : Names(storage)) {
        if (name.back() != '/') {
            EXPECT_EQ(ReadStream(storage, name, tree[prefix + name]), S_OK);
            continue;
        }
        Held<IStorage> inner;
        const CStringW plain = name.substr(0, name.size() - 1);
        EXPECT_EQ(storage->OpenStorage(plain.c_str(), nullptr, kReadOnly, nullptr, 0, inner.Put()), S_OK);
        auto below = inner ? Tree(inner.Get(), prefix + name) : std::map<CStringW, Bytes>{};
        if (below.empty()) {
            tree[prefix + name];
        }
        tree.merge(below);
    }
    return tree;
}

// An HRESULT that prints as the eight digits everybody knows it by.
struct Code {
    HRESULT value;
    bool operator==(const Code& other) const { return value == other.value; }
    friend void PrintTo(const Code& code, std::ostream* out) {
        *out << std::hex << std::uppercase << static_cast<std::uint32_t>(code.value) << std::dec;
    }
};

}  // namespace storage_test

#define EXPECT_CODE(call, expected) EXPECT_EQ(storage_test::Code{call}, storage_test::Code{expected})
