// Rows of a table as their file keeps them, in their own order. One thread at a time; a source borrows from the source
// that opened it and must not outlive it.
#pragma once

#include "localmapi/base/Bytes.h"
#include "localmapi/base/Result.h"
#include "localmapi/props/MapiMemory.h"
#include "mapi/MapiTypes.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace localmapi {

class RowSource {
public:
    // What a cell takes at most in a row of a table: longer values are read from the object itself.
    static constexpr std::uint64_t kLargestCell = 64 * 1024;

    virtual ~RowSource() = default;

    virtual std::size_t Count() = 0;

    // The columns that a table shows before its user chooses some, in the width that its user asked for or the stored
    // one: the table converts.
    virtual std::vector<ULONG> Columns() = 0;

    // The value of a row for a property id, in its stored type; what it points at lies in `memory`. A property that the
    // rows do not keep comes from the row's object. NotFound; TooLarge above kLargestCell; Corrupt or ReadFailed.
    virtual Status Read(std::size_t row, ULONG id, ValueMemory& memory, SPropValue& value) = 0;

    // The page of the PT_STRING8 texts of a row.
    virtual UINT CodePage(std::size_t row) = 0;

    // True when rows can be found by the bytes of this property (an entry id, a record key) without reading them all.
    virtual bool IsIndexed(ULONG id) const;

    // The row whose property of an indexed id has these bytes; nothing when none has.
    virtual std::optional<std::size_t> Find(ULONG id, ByteView key);

    // The recipients or attachments (PR_MESSAGE_RECIPIENTS, PR_MESSAGE_ATTACHMENTS) of a row's message. NotFound when
    // the rows are no messages.
    virtual Result<std::unique_ptr<RowSource>> RowsWithin(std::size_t row, ULONG objectTag);
};

}  // namespace localmapi
