#include "tests/localmapi/msg/support/Files.h"

#include "localmapi/props/Values.h"
#include "platform/GlobalMemory.h"
#include "platform/TaskMemory.h"
#include "tests/localmapi/support/ValueText.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>
#include <utility>

namespace localmapi::testing {

namespace {

constexpr DWORD kWriting = STGM_READWRITE | STGM_SHARE_EXCLUSIVE;
constexpr DWORD kReading = STGM_READ | STGM_SHARE_EXCLUSIVE;
constexpr UINT kUtf8 = 65001;

std::string TextOfBytes(const Bytes& bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

// The size that a damaged file tells is not believed.
Result<Bytes> ReadWhole(PropertySource& source, ULONG id) {
    constexpr std::uint64_t kMost = 64 << 20;
    VX_TRY_ASSIGN(const auto bytes, source.Open(id));
    Bytes read(static_cast<std::size_t>(std::min((*bytes).Size(), kMost)));
    VX_TRY(bytes->ReadAt(0, read));
    return read;
}

}  // namespace

MemoryFile::MemoryFile() {
    EXPECT_EQ(CreateILockBytesOnHGlobal(nullptr, TRUE, m_bytes.Receive()), S_OK);
}

MemoryFile::MemoryFile(ByteView bytes) : MemoryFile() {
    ULONG written = 0;
    EXPECT_EQ(m_bytes->WriteAt({}, bytes.Data(), static_cast<ULONG>(bytes.Size()), &written), S_OK);
}

ComPtr<IStorage> MemoryFile::Create(DWORD mode) {
    ComPtr<IStorage> root;
    EXPECT_EQ(StgCreateDocfileOnILockBytes(m_bytes.Get(), mode | kWriting | STGM_CREATE, 0, root.Receive()), S_OK);
    return root;
}

ComPtr<IStorage> MemoryFile::Open(DWORD mode) {
    ComPtr<IStorage> root;
    EXPECT_EQ(StgOpenStorageOnILockBytes(m_bytes.Get(), nullptr, mode, nullptr, 0, root.Receive()), S_OK);
    return root;
}

Bytes MemoryFile::Content() const {
    STATSTG stat{};
    EXPECT_EQ(m_bytes->Stat(&stat, STATFLAG_NONAME), S_OK);
    Bytes bytes(static_cast<std::size_t>(stat.cbSize.QuadPart));
    ULONG read = 0;
    EXPECT_EQ(m_bytes->ReadAt({}, bytes.data(), static_cast<ULONG>(bytes.size()), &read), S_OK);
    return bytes;
}

Bytes ReadFile(const std::filesystem::path& path) {
    std::ifstream stream(path, std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    return BytesOfText(text);
}

Bytes BytesOfText(std::string_view text) {
    const auto* data = reinterpret_cast<const std::byte*>(text.data());
    return {data, data + text.size()};
}

Bytes BytesOfText(WideView text) {
    Bytes bytes;
    for (const WCHAR unit : text) {
        bytes.push_back(static_cast<std::byte>(unit & 0xFF));
        bytes.push_back(static_cast<std::byte>(unit >> 8));
    }
    return bytes;
}

Bytes operator""_b(const char* text, std::size_t size) {
    return BytesOfText(std::string_view(text, size));
}

void PutStream(IStorage& storage, WideView name, ByteView bytes) {
    ComPtr<IStream> stream;
    ASSERT_EQ(storage.CreateStream(CStringW(name).c_str(), kWriting | STGM_CREATE, 0, 0, stream.Receive()), S_OK);
    ULONG written = 0;
    if (!bytes.IsEmpty()) {
        ASSERT_EQ(stream->Write(bytes.Data(), static_cast<ULONG>(bytes.Size()), &written), S_OK);
    }
}

ComPtr<IStorage> PutStorage(IStorage& storage, WideView name) {
    ComPtr<IStorage> made;
    EXPECT_EQ(storage.CreateStorage(CStringW(name).c_str(), kWriting, 0, 0, made.Receive()), S_OK);
    return made;
}

ComPtr<IStorage> StorageIn(IStorage& storage, WideView name) {
    ComPtr<IStorage> opened;
    EXPECT_EQ(storage.OpenStorage(CStringW(name).c_str(), nullptr, kReading, nullptr, 0, opened.Receive()), S_OK);
    return opened;
}

Bytes StreamIn(IStorage& storage, WideView name) {
    ComPtr<IStream> stream;
    if (FAILED(storage.OpenStream(CStringW(name).c_str(), nullptr, kReading, 0, stream.Receive()))) {
        return BytesOfText(std::string_view("no stream"));
    }
    STATSTG stat{};
    EXPECT_EQ(stream->Stat(&stat, STATFLAG_NONAME), S_OK);
    Bytes bytes(static_cast<std::size_t>(stat.cbSize.QuadPart));
    ULONG read = 0;
    EXPECT_EQ(stream->Read(bytes.data(), static_cast<ULONG>(bytes.size()), &read), S_OK);
    return bytes;
}

std::vector<std::string> ElementsOf(IStorage& storage) {
    std::vector<std::string> names;
    ComPtr<IEnumSTATSTG> cursor;
    EXPECT_EQ(storage.EnumElements(0, nullptr, 0, cursor.Receive()), S_OK);
    STATSTG stat{};
    while (cursor && cursor->Next(1, &stat, nullptr) == S_OK) {
        names.push_back(ToNarrow(stat.pwcsName, kUtf8) + (stat.type == STGTY_STORAGE ? "/" : ""));
        CoTaskMemFree(stat.pwcsName);
    }
    std::sort(names.begin(), names.end());
    return names;
}

Bytes PropertyStreamOf(std::size_t headerSize, const std::vector<EntryBytes>& entries,
                       std::vector<std::uint32_t> counts) {
    Bytes stream;
    const auto append = [&stream](std::uint64_t number, unsigned width) {
        for (unsigned i = 0; i < width; ++i) {
            stream.push_back(static_cast<std::byte>(number >> (8 * i)));
        }
    };
    if (!counts.empty()) {
        append(0, 8);
    }
    for (const std::uint32_t count : counts) {
        append(count, 4);
    }
    stream.resize(headerSize);
    for (const EntryBytes& entry : entries) {
        append(entry.tag, 4);
        append(entry.flags, 4);
        append(entry.area, 8);
    }
    return stream;
}

void PutProperties(IStorage& storage, std::size_t headerSize, const std::vector<EntryBytes>& entries) {
    PutStream(storage, "__properties_version1.0"_w, PropertyStreamOf(headerSize, entries));
}

std::string TextOf(PropertySource& source, ULONG id) {
    const auto tag = source.TagOf(id);
    if (!tag) {
        return "none";
    }
    const auto read = ReadWhole(source, id);
    if (!read) {
        return read.Failure().text;
    }
    if (PROP_TYPE(*tag) == PT_STRING8) {
        return ToNarrow(ToWide(TextOfBytes(*read), source.CodePage()), kUtf8);
    }
    CStringW text(read->size() / 2, WCHAR{0});
    for (std::size_t i = 0; i < text.size(); ++i) {
        text[i] = static_cast<WCHAR>(ByteView(*read).U16(2 * i));
    }
    return ToNarrow(text, kUtf8);
}

std::string BytesIn(PropertySource& source, ULONG id) {
    const auto read = ReadWhole(source, id);
    return read ? TextOfBytes(*read) : read.Failure().text;
}

std::string ValueOf(PropertySource& source, ULONG id) {
    Arena memory;
    SPropValue value{};
    const Status read = source.Read(id, UINT64_MAX, memory, value);
    return read ? TextOf(value) : NameOf(read.Failure().code);
}

std::string CellOf(RowSource& rows, std::size_t row, ULONG id) {
    Arena memory;
    SPropValue value{};
    const Status read = rows.Read(row, id, memory, value);
    return read ? TextOf(value) : NameOf(read.Failure().code);
}

std::string NameOf(ErrorCode code) {
    static constexpr const char* kNames[] = {"not found", "unsupported",   "corrupt",    "too large",
                                             "busy",      "access denied", "read failed"};
    return kNames[static_cast<std::size_t>(code)];
}

std::unique_ptr<MessageSource> Opened(ComPtr<IStorage> root, DiagnosticSink* sink, UINT fallbackPage) {
    auto message = msg::OpenMessageOnStorage(std::move(root),
                                             {.isWritable = false, .problems = sink, .fallbackCodePage = fallbackPage});
    EXPECT_TRUE(message) << message.Failure().text;
    return message ? *std::move(message) : nullptr;
}

std::unique_ptr<MessageSource> OpenedForWriting(ComPtr<IStorage> root, DiagnosticSink* sink) {
    auto message = msg::OpenMessageOnStorage(std::move(root), {.isWritable = true, .problems = sink});
    EXPECT_TRUE(message) << message.Failure().text;
    return message ? *std::move(message) : nullptr;
}

void Save(PropertySource& source) {
    const Status saved = source.Save();
    EXPECT_TRUE(saved) << saved.Failure().text;
}

}  // namespace localmapi::testing
