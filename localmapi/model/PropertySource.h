// An object's properties as its file keeps them: the seam between the file formats and the MAPI objects above. Beyond
// what a format leaves out of its files and means all the same, nothing here is computed or converted; that is done
// once, above, for all formats.
//
// One thread at a time. A source borrows from the source that opened it and must not outlive it.
#pragma once

#include "localmapi/base/ByteSource.h"
#include "localmapi/base/Result.h"
#include "localmapi/com/ComPtr.h"
#include "localmapi/model/PropertyNames.h"
#include "localmapi/props/MapiMemory.h"
#include "mapi/MapiTypes.h"
#include "platform/Storage.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace localmapi {

class PropertySource {
public:
    virtual ~PropertySource() = default;

    // The tags, as stored (PT_STRING8 or PT_UNICODE for a text), sorted by id, one for each id.
    virtual std::vector<ULONG> Tags() = 0;

    // The stored tag of an id; nothing when the object has no such property.
    virtual std::optional<ULONG> TagOf(ULONG id) = 0;

    // Bytes of a text (without terminator), binary or object. 0 for other types, and for what cannot be read.
    virtual std::uint64_t SizeOf(ULONG id) = 0;

    // The value in its stored type; what it points at lies in `memory`. PT_OBJECT comes without a value. NotFound, also
    // where the value is lost from a damaged file; TooLarge above `limit` bytes; Corrupt or ReadFailed.
    virtual Status Read(ULONG id, std::uint64_t limit, ValueMemory& memory, SPropValue& value) = 0;

    // The bytes of a text (as stored, without terminator), binary or object by position. NotFound, Corrupt, ReadFailed;
    // Unsupported for other types, and for objects that are no bytes.
    virtual Result<std::unique_ptr<ByteSource>> Open(ULONG id) = 0;

    // The page of its PT_STRING8 texts.
    virtual UINT CodePage() = 0;

    // ---- Writing. What is only read answers AccessDenied to all of it.

    // Sets a value, PT_OBJECT excepted. A property of the same id and another type is replaced.
    virtual Status Write(const SPropValue& value);

    // As Write, for a text or binary of any size.
    virtual Status Write(ULONG tag, ByteSource& bytes);

    // NotFound when there is none.
    virtual Status Remove(ULONG id);

    // A stream onto the bytes of a text or binary, empty at first when the property is new or `replace` says so. What is
    // written counts at the next Save.
    virtual Result<ComPtr<IStream>> OpenForWriting(ULONG tag, bool replace);

    // Puts what was changed where it belongs: in a file's storage, or into the object around this one.
    virtual Status Save();

    virtual bool IsWritable() const { return false; }
};

}  // namespace localmapi
