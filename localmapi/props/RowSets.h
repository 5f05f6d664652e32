// Row sets and address lists as MAPI hands them out: a root, and a root of its own for each row or entry. Any thread.
#pragma once

#include "localmapi/props/MapiMemory.h"
#include "mapi/MapiTypes.h"

#include <cstddef>
#include <memory>

namespace localmapi {

// Frees the set with its rows. Null does nothing.
inline void FreeRowSet(SRowSet* rows) noexcept {
    for (ULONG i = 0; rows != nullptr && i < rows->cRows; ++i) {
        FreeRoot(rows->aRow[i].lpProps);
    }
    FreeRoot(rows);
}

inline void FreeAddressList(ADRLIST* list) noexcept {
    for (ULONG i = 0; list != nullptr && i < list->cEntries; ++i) {
        FreeRoot(list->aEntries[i].rgPropVals);
    }
    FreeRoot(list);
}

struct FreeRowSetBlock {
    void operator()(SRowSet* rows) const noexcept { FreeRowSet(rows); }
};

// A row set as long as it is not handed out.
using RowSetPointer = std::unique_ptr<SRowSet, FreeRowSetBlock>;

// A set with room for `count` rows and none in it: cRows is 0. Throws std::bad_alloc.
inline RowSetPointer MakeRowSet(std::size_t count) {
    RowSetPointer rows(MakeRoot<SRowSet>(CbNewSRowSet(count)).release());
    rows->cRows = 0;
    return rows;
}

}  // namespace localmapi
