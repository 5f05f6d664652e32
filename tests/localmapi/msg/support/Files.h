// Message files in memory for tests: structured storages, made or opened there, and what is in them.
#pragma once

#include "localmapi/base/Bytes.h"
#include "localmapi/com/ComPtr.h"
#include "localmapi/model/MessageSource.h"
#include "localmapi/msg/MessageOnStorage.h"
#include "platform/Storage.h"
#include "platform/WideText.h"

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace localmapi::testing {

// A compound file in memory.
class MemoryFile {
public:
    MemoryFile();
    explicit MemoryFile(ByteView bytes);

    // A new root in it, which replaces what the file was.
    ComPtr<IStorage> Create(DWORD mode = STGM_DIRECT);

    // The root of the file; null, with a failure of the test, when it is none.
    ComPtr<IStorage> Open(DWORD mode = STGM_READ | STGM_SHARE_EXCLUSIVE);

    // What the file is now.
    Bytes Content() const;

private:
    ComPtr<ILockBytes> m_bytes;
};

Bytes ReadFile(const std::filesystem::path& path);

Bytes BytesOfText(std::string_view text);

// UTF-16LE.
Bytes BytesOfText(WideView text);

// Bytes written as a literal, zeros in them too: "a\0"_b.
Bytes operator""_b(const char* text, std::size_t size);

// ---- Elements of storages, made and read without the code under test. Failures fail the test.

void PutStream(IStorage& storage, WideView name, ByteView bytes);
ComPtr<IStorage> PutStorage(IStorage& storage, WideView name);
ComPtr<IStorage> StorageIn(IStorage& storage, WideView name);

// The bytes of a stream; "no stream" in their place when there is none.
Bytes StreamIn(IStorage& storage, WideView name);

// The names of the elements, sorted; storages with a slash.
std::vector<std::string> ElementsOf(IStorage& storage);

// ---- Property streams by hand

// An entry: `area` is the number of a value of fixed size, else the size that is declared.
struct EntryBytes {
    ULONG tag;
    std::uint64_t area;
    std::uint32_t flags = 6;
};

// A property stream: a header of `headerSize` bytes, zero but for what `counts` says (next recipient, next attachment,
// recipients, attachments), then the entries.
Bytes PropertyStreamOf(std::size_t headerSize, const std::vector<EntryBytes>& entries,
                       std::vector<std::uint32_t> counts = {});

void PutProperties(IStorage& storage, std::size_t headerSize, const std::vector<EntryBytes>& entries);

// ---- What a source says

// The text of a property as UTF-8, whatever its width; "none" when there is none, and the failure when it cannot be
// read.
std::string TextOf(PropertySource& source, ULONG id);

// The bytes of a text or binary as Open gives them.
std::string BytesIn(PropertySource& source, ULONG id);

// A value as ValueText.h writes it; the failure when it cannot be read.
std::string ValueOf(PropertySource& source, ULONG id);
std::string CellOf(RowSource& rows, std::size_t row, ULONG id);

// "not found" and the like.
std::string NameOf(ErrorCode code);

// The message in a file; a failure of the test when it cannot be opened.
std::unique_ptr<MessageSource> Opened(ComPtr<IStorage> root, DiagnosticSink* sink = nullptr, UINT fallbackPage = 0);
std::unique_ptr<MessageSource> OpenedForWriting(ComPtr<IStorage> root, DiagnosticSink* sink = nullptr);

// Saves; a failure fails the test.
void Save(PropertySource& source);

}  // namespace localmapi::testing
