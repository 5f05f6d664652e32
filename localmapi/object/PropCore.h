// What IMAPIProp does, for every kind of object: values out of a source and out of what the object computes, texts in
// the width asked for, streams, names, writing. The COM face is PropObject.
//
// Methods are called under the object's lock.
#pragma once

#include "localmapi/com/ComObject.h"
#include "localmapi/model/PropertySource.h"
#include "localmapi/props/MapiMemory.h"
#include "localmapi/props/Values.h"
#include "mapi/MapiInterfaces.h"
#include "mapi/MapiTypes.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace localmapi {

// Bytes of a text or binary, and what they are. A text has no terminator.
struct Content {
    ULONG tag;
    std::unique_ptr<ByteSource> bytes;
};

class PropCore {
public:
    // Values above it come by stream: GetProps says MAPI_E_NOT_ENOUGH_MEMORY for them.
    static constexpr std::uint64_t kLargestValue = 64 * 1024;

    // Texts above it are not turned from one width to the other.
    static constexpr std::uint64_t kLargestText = std::uint64_t{512} << 20;

    // `keeps` is what the source borrows from, null when it borrows from nothing. `names` outlives the object; null for
    // an object with names of its own. `failure` is the object's.
    PropCore(std::unique_ptr<PropertySource> source, ComPtr<IUnknown> keeps, PropertyNames* names,
             const SharedLock& lock, LastFailure& failure);
    PropCore(const PropCore&) = delete;
    PropCore& operator=(const PropCore&) = delete;
    virtual ~PropCore() = default;

    // The value that `tag` asks for, in its type: PT_UNSPECIFIED asks for the stored one, where a text is wide if `wide`
    // says so and 8-bit else. A failure is what belongs into a PT_ERROR; `value` is not touched then.
    HRESULT ReadValue(ULONG tag, bool wide, ValueMemory& memory, SPropValue& value);

    // The tags of all properties, texts in one width. Sorted by id.
    std::vector<ULONG> AllTags(bool wide);

    // Bytes of a text or binary in the type that `tag` asks for. NotFound when the object has none.
    Result<Content> ReadContent(ULONG tag, bool wide);

    PropertySource& Source() noexcept { return *m_source; }
    PropertyNames& Names() noexcept { return *m_names; }
    const ComPtr<IUnknown>& Keeps() const noexcept { return m_keeps; }

protected:
    // For objects whose names come from their source: it is taken over after the construction, before any use.
    void TakeSource(std::unique_ptr<PropertySource> source) noexcept { m_source = std::move(source); }

    // Values that the object itself knows. They stand above those of the source.
    virtual bool Compute(ULONG id, ValueMemory& memory, SPropValue& value);
    virtual std::vector<ULONG> ComputedTags();

    // True for computed values that nobody can set.
    virtual bool IsFixed(ULONG id);

    // Texts and binaries that are made from others when the source has none of the type that `tag` asks for. NotFound
    // when they cannot be.
    virtual Result<Content> Derive(ULONG tag);
    virtual std::vector<ULONG> DerivedTags();

    // The page of a text in its 8-bit form.
    virtual UINT PageOf(ULONG id);

    // ---- The methods of IMAPIProp; pointers are checked here.

    HRESULT GetProps(SPropTagArray* tags, ULONG flags, ULONG* count, SPropValue** values);
    HRESULT GetPropList(ULONG flags, SPropTagArray** tags);
    HRESULT SetProps(ULONG count, const SPropValue* values, SPropProblemArray** problems);
    HRESULT DeleteProps(const SPropTagArray* tags, SPropProblemArray** problems);
    HRESULT GetNamesFromIDs(SPropTagArray** tags, const GUID* set, ULONG flags, ULONG* count, MAPINAMEID*** names);
    HRESULT GetIDsFromNames(ULONG count, MAPINAMEID** names, ULONG flags, SPropTagArray** tags);

    // OpenProperty for IID_IStream. `keeps` becomes part of the stream.
    HRESULT OpenStream(ULONG tag, ULONG interfaceOptions, ULONG flags, ComPtr<IUnknown> keeps, IUnknown** stream);

    HRESULT Save();

private:
    std::optional<SPropValue> StoredValue(ULONG tag, bool wide, ValueMemory& memory, HRESULT& failure);
    HRESULT OpenStreamForWriting(ULONG tag, bool replace, IUnknown** stream);
    Result<Content> ChangeWidthOf(Content content, ULONG type);

    ComPtr<IUnknown> m_keeps;
    std::unique_ptr<PropertySource> m_source;
    PropertyNames m_ownNames;
    PropertyNames* m_names;
    const SharedLock& m_sharedLock;
    LastFailure& m_lastFailure;
};

}  // namespace localmapi
