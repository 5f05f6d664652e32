// The properties of one object of the file as MAPI is to see them: what is stored, and what is made from other facts of
// the file where the object has it not, or not so. Rules as in PropertySource.h, whose reading half this is.
#pragma once

#include "localmapi/model/PropertySource.h"
#include "localmapi/pst/ltp/PropertyContext.h"
#include "localmapi/pst/source/StoredValues.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace localmapi::pst {

class ObjectProperties {
public:
    // `stored` is borrowed, and null for an object whose properties are lost.
    ObjectProperties(PropertyContext* stored, UINT codePage) noexcept : m_stored(stored), m_codePage(codePage) {}
    ObjectProperties(const ObjectProperties&) = delete;
    ObjectProperties& operator=(const ObjectProperties&) = delete;
    virtual ~ObjectProperties() = default;

    std::vector<ULONG> Tags();
    std::optional<ULONG> TagOf(ULONG id);
    std::uint64_t SizeOf(ULONG id);
    Status Read(ULONG id, std::uint64_t limit, ValueMemory& memory, SPropValue& value);
    Result<std::unique_ptr<ByteSource>> Open(ULONG id);
    UINT CodePage() const noexcept { return m_codePage; }

protected:
    // The ids that MadeTag may have something to say about.
    virtual std::span<const ULONG> MadeIds() const { return {}; }

    // The tag of a property that is made here and stands above the stored one; nothing for one that is as stored.
    virtual std::optional<ULONG> MadeTag(ULONG) { return std::nullopt; }

    // The bytes of such a property. TooLarge above `limit`, as far as that is known beforehand.
    virtual Result<Bytes> Make(ULONG id, std::uint64_t limit);

    virtual std::optional<ULONG> StoredTag(ULONG id);
    virtual Result<PropertyValue> OpenStored(ULONG id);

    bool IsStored(ULONG id) { return StoredTag(id).has_value(); }
    bool IsStoredAs(ULONG tag) { return StoredTag(PROP_ID(tag)) == tag; }
    std::optional<std::int64_t> StoredNumber(ULONG tag);
    PropertyContext* Stored() noexcept { return m_stored; }
    Error NoSuchProperty(ULONG id) const;

private:
    PropertyContext* m_stored;
    UINT m_codePage;
};

// A source of the model over such properties.
template <class Interface>
class SourceOf : public Interface {
public:
    std::vector<ULONG> Tags() override { return Properties().Tags(); }
    std::optional<ULONG> TagOf(ULONG id) override { return Properties().TagOf(id); }
    std::uint64_t SizeOf(ULONG id) override { return Properties().SizeOf(id); }
    Status Read(ULONG id, std::uint64_t limit, ValueMemory& memory, SPropValue& value) override {
        return Properties().Read(id, limit, memory, value);
    }
    Result<std::unique_ptr<ByteSource>> Open(ULONG id) override { return Properties().Open(id); }
    UINT CodePage() override { return Properties().CodePage(); }

protected:
    virtual ObjectProperties& Properties() = 0;
};

}  // namespace localmapi::pst
