// What an object says about itself and its place: the properties that no file stores, or that a store must not take from
// a file. Immutable; any thread.
#pragma once

#include "localmapi/base/Bytes.h"
#include "localmapi/model/RowSource.h"
#include "localmapi/props/MapiMemory.h"
#include "mapi/MapiTypes.h"

#include <memory>
#include <utility>
#include <vector>

namespace localmapi {

class Identity {
public:
    // A number, a binary: an empty one is left out.
    void Set(ULONG tag, ULONG number);
    void Set(ULONG tag, Bytes bytes);

    bool Read(ULONG id, ValueMemory& memory, SPropValue& value) const;
    void AppendTags(std::vector<ULONG>& tags) const;

private:
    struct Entry {
        ULONG tag;
        ULONG number;
        Bytes bytes;
    };
    std::vector<Entry> m_entries;
};

// Rows that have the same value in some columns: the identity of the store that they belong to.
std::unique_ptr<RowSource> WithIdentity(std::unique_ptr<RowSource> rows, std::shared_ptr<const Identity> identity);

}  // namespace localmapi
