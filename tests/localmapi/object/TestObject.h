// An object with properties in memory that can be written, and derived ones where a test wants them.
#pragma once

#include "localmapi/object/PropObject.h"
#include "mapi/MapiInterfaces.h"

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace localmapi::testing {

class ScratchProperties final : public PropertySource {
public:
    explicit ScratchProperties(UINT codePage = 1252) : m_codePage(codePage) {}

    std::vector<ULONG> Tags() override;
    std::optional<ULONG> TagOf(ULONG id) override;
    std::uint64_t SizeOf(ULONG id) override;
    Status Read(ULONG id, std::uint64_t limit, ValueMemory& memory, SPropValue& value) override;
    Result<std::unique_ptr<ByteSource>> Open(ULONG id) override;
    UINT CodePage() override { return m_codePage; }

    Status Write(const SPropValue& value) override;
    Status Remove(ULONG id) override;
    Result<ComPtr<IStream>> OpenForWriting(ULONG tag, bool replace) override;
    Status Save() override;
    bool IsWritable() const override { return isWritable; }

    void Set(const SPropValue& value) { static_cast<void>(Write(value)); }

    // Texts and binaries as the bytes that a file would have.
    void SetBytes(ULONG tag, std::string_view bytes) { m_bytes[PROP_ID(tag)] = {tag, std::string(bytes)}; }

    bool isWritable = true;
    ULONG refused = 0;     // Write says AccessDenied to this tag
    ULONG unreadable = 0;  // Read says Corrupt for this id
    unsigned saves = 0;

private:
    struct Stored {
        ULONG tag;
        std::string bytes;
    };
    UINT m_codePage;
    Arena m_memory;
    std::map<ULONG, Stored> m_bytes;       // texts and binaries, by id
    std::map<ULONG, SPropValue> m_values;  // the others
    std::map<ULONG, ComPtr<IStream>> m_streams;
};

class TestObject final : public PropObject<IMAPIProp> {
public:
    TestObject(std::unique_ptr<ScratchProperties> source, PropertyNames& names)
        : PropObject(std::move(source), nullptr, names, std::make_shared<std::recursive_mutex>()) {}

    ScratchProperties& Scratch() { return static_cast<ScratchProperties&>(Source()); }

    std::function<Result<Content>(ULONG tag)> derive;
    std::vector<ULONG> derivedTags;

protected:
    Result<Content> Derive(ULONG tag) override { return derive ? derive(tag) : PropObject::Derive(tag); }
    std::vector<ULONG> DerivedTags() override { return derivedTags; }
};

// An object, and the names that it has.
struct Subject {
    explicit Subject(UINT codePage = 1252)
        : object(MakeObject<TestObject>(std::make_unique<ScratchProperties>(codePage), names)) {}

    ScratchProperties& Scratch() { return object->Scratch(); }

    // The values of tags, or of all properties, as texts; behind them the result where it is not S_OK.
    std::string Props(const std::vector<ULONG>& tags, ULONG flags = MAPI_UNICODE);
    std::string AllProps(ULONG flags = MAPI_UNICODE);

    // The bytes of a property's stream, or the failure.
    std::string Stream(ULONG tag, ULONG flags = 0);

    PropertyNames names;
    ComPtr<TestObject> object;
};

// A result as its name where it is one that these tests know.
std::string NameOf(HRESULT result);

std::string Utf16(std::string_view ascii);
std::string ReadAllOf(IStream& stream);

}  // namespace localmapi::testing
