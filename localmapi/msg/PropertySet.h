// The properties of one storage of a message file: of a message, a recipient or an attachment. [MS-OXMSG] 2.4.
//
// The property stream is read once. What is written stays in memory, or, where it is large or written by stream, in
// streams that the property stream does not speak of yet, until Save. Without a storage all stays in memory.
//
// One thread at a time; the storage outlives the set.
#pragma once

#include "localmapi/base/ByteSource.h"
#include "localmapi/base/Diagnostics.h"
#include "localmapi/base/Result.h"
#include "localmapi/msg/OpenedStorage.h"
#include "localmapi/msg/ValueCoding.h"
#include "localmapi/props/MapiMemory.h"
#include "mapi/MapiTypes.h"

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <vector>

namespace localmapi::msg {

// Bytes before the first entry of a property stream.
enum class HeaderSize : std::uint8_t { Message = 32, EmbeddedMessage = 24, Part = 8 };

// What texts are kept in: a message's are all wide, or all in one page. A text that its page lacks stays wide.
struct TextForm {
    bool isWide;
    std::function<UINT()> codePage;  // asked only when a text changes its width
};

class PropertySet {
public:
    // Properties of one object. Real ones have some hundreds; the ids end at 65,534.
    static constexpr std::size_t kMostProperties = 16384;

    // No properties, and no storage.
    PropertySet() = default;

    // Reads the property stream, whose elements are listed in `elements`. Where it is missing or makes no sense, the
    // streams' own names tell the properties. Never fails: what is damaged is reported and left out.
    void Load(OpenedStorage& storage, const std::vector<OpenedStorage::Element>& elements, HeaderSize header,
              Diagnostics& problems);

    // Properties that are in memory go to a storage from now on, which has none yet.
    void MoveTo(OpenedStorage& storage) noexcept { m_storage = &storage; }

    // ---- As PropertySource

    std::vector<ULONG> Tags() const;
    std::optional<ULONG> TagOf(ULONG id) const;
    std::uint64_t SizeOf(ULONG id);
    Status Read(ULONG id, std::uint64_t limit, ValueMemory& memory, SPropValue& value);
    Result<std::unique_ptr<ByteSource>> Open(ULONG id);

    // Unsupported for types that these files do not have; Corrupt for a value that is none.
    Status Write(const SPropValue& value, const TextForm& form);
    Status Write(ULONG tag, ByteSource& bytes, const TextForm& form);
    Status Remove(ULONG id);
    Result<ComPtr<IStream>> OpenForWriting(ULONG tag, bool replace, const TextForm& form);

    // Writes what is in memory, deletes what is not needed any more, and then writes the property stream with `header`
    // before it.
    Status Save(ByteView header, const TextForm& form);

    // ---- For the objects of this room

    std::optional<std::int32_t> Long(ULONG id) const;
    void SetLong(ULONG tag, std::int32_t number);

    // Sets what is missing only.
    void SetLongDefault(ULONG tag, std::int32_t number);

    // Sets what is known better than the file knows it, which is no change.
    void AssumeLong(ULONG tag, std::int32_t number);

    // The object of a property: true when the storage has one of that name.
    bool HasObjectStorage(ULONG tag) const;

    // Takes notice of a storage that was made for a property of type PT_OBJECT; `kind` is 1 for a message, 4 for
    // others.
    void SetObject(ULONG tag, std::uint32_t kind);

    // Deletes the elements of a property now, and the property.
    Status Destroy(ULONG id);

    bool HasChanges() const noexcept { return m_hasChanges; }

private:
    // The elements of a value, by tag and place: kMain for the main stream, else the index of a part.
    static constexpr std::uint64_t kMain = 0;
    struct ElementKey {
        ULONG tag;
        std::uint64_t place;
        auto operator<=>(const ElementKey&) const = default;
    };
    struct ElementFacts {
        std::uint64_t size;
        bool isStorage;
    };
    struct Property {
        ULONG tag;
        std::uint64_t area = 0;                       // of the value; what is declared where it is in streams
        std::shared_ptr<const StreamValue> inMemory;  // its streams, when they are not in the storage yet
    };

    static std::uint64_t PlaceOf(std::uint32_t part) noexcept { return std::uint64_t{part} + 1; }

    void TakeElements(const std::vector<OpenedStorage::Element>& elements);
    bool ReadPropertyStream(const std::vector<OpenedStorage::Element>& elements, HeaderSize header,
                            Diagnostics& problems);
    bool TakeEntries(ByteView entries, Diagnostics& problems);
    void TakeEntry(ULONG tag, std::uint64_t area);
    void TakeNamedElements();
    void KeepFirstOfEachId();
    bool HasElements(ULONG tag) const;

    const Property* Find(ULONG id) const noexcept;
    Property* Find(ULONG id) noexcept;
    Property& Put(ULONG tag);

    Result<std::unique_ptr<ByteSource>> OpenStreamOf(const Property& property);
    Result<Bytes> MainBytes(const Property& property, std::uint64_t limit);
    Status ReadParts(const Property& property, std::uint64_t limit, ValueMemory& memory, SPropValue& value);
    Result<std::vector<Bytes>> LoadParts(const Property& property, std::size_t count, std::uint64_t limit);

    Status WriteLarge(ULONG tag, ByteSource& bytes, ULONG targetTag, UINT codePage);
    void TakeStreamed(ULONG tag, std::uint64_t size);
    Status SaveStreamed(const TextForm& form);
    Status SaveInMemory(Property& property);
    Status DestroyAbandoned();
    Status DestroyElements(ULONG firstTag, ULONG lastTag, std::uint64_t fromPlace);
    Bytes PropertyStream(ByteView header) const;
    std::uint64_t AreaToWrite(const Property& property) const;

    Error NotFound(ULONG id) const;
    std::string NameOf(ULONG tag) const;

    OpenedStorage* m_storage = nullptr;
    Diagnostics* m_problems = nullptr;
    std::vector<Property> m_properties;                         // by id, one for each
    std::map<ElementKey, ElementFacts> m_elements;              // what the storage has
    std::map<ULONG, std::shared_ptr<OpenedStream>> m_streamed;  // by tag: what callers write to by stream
    std::set<ULONG> m_abandoned;                                // tags whose elements go at Save
    std::vector<std::array<std::byte, 16>> m_foreign;  // entries of types that we do not know, kept as they are
    bool m_hasChanges = false;
};

}  // namespace localmapi::msg
