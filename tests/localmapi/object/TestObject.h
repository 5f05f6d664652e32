// An object with properties in memory that can be written, and derived ones where a test wants them.
#pragma once

#include "localmapi/object/MemoryProperties.h"
#include "localmapi/object/PropObject.h"
#include "mapi/MapiInterfaces.h"

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace localmapi::testing {

// Properties that a test sets, damages and locks.
class ScratchProperties final : public PropertySource {
public:
    explicit ScratchProperties(UINT codePage = 1252) : m_codePage(codePage) {}

    std::vector<ULONG> Tags() override { return m_kept->Tags(); }
    std::optional<ULONG> TagOf(ULONG id) override { return m_kept->TagOf(id); }
    std::uint64_t SizeOf(ULONG id) override { return m_kept->SizeOf(id); }
    Status Read(ULONG id, std::uint64_t limit, ValueMemory& memory, SPropValue& value) override;
    Result<std::unique_ptr<ByteSource>> Open(ULONG id) override { return m_kept->Open(id); }
    UINT CodePage() override { return m_codePage; }

    Status Write(const SPropValue& value) override;
    Status Remove(ULONG id) override;
    bool IsWritable() const override { return true; }

    void Set(const SPropValue& value) { m_kept->Set(value); }

    // A text or binary from the bytes that a file would have.
    void SetBytes(ULONG tag, std::string_view bytes);

    ULONG refused = 0;     // Write says AccessDenied to this tag
    ULONG unreadable = 0;  // Read says Corrupt for this id

private:
    UINT m_codePage;
    std::unique_ptr<MemoryProperties> m_kept = std::make_unique<MemoryProperties>();
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

private:
    std::string Props(SPropTagArray* tags, ULONG flags);
};

// What was refused, by index, tag and the last digits of the code: "1 00360003 005|2 3701000D 302". Frees the problems.
std::string Told(SPropProblemArray* problems);

std::string Utf16(std::string_view ascii);
std::string ReadAllOf(IStream& stream);

}  // namespace localmapi::testing
