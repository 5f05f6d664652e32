// IMAPITable over the rows of a source, whatever they are: columns, order, restrictions, bookmarks and a cursor. Any
// thread, under the lock of its session or store.
//
// A table is a snapshot: its rows never change, and sinks that are advised of changes are never called. What the
// published contract leaves open:
// - Sorting and restricting is done when rows are asked for, at the latest; TBL_ASYNC, TBL_BATCH and flags that are not
//   known make no difference. Both put the cursor to the beginning and end the life of all bookmarks.
// - Rows read backward come in the order of the table, the cursor then stands at the first of them.
// - A search backward begins with the row at its origin, as one forward does; from the end, with the last row.
// - A text column that is asked for in the other width is converted in the page of its row.
// - Categories, and with them expanding and collapsing, are not provided.
#pragma once

#include "localmapi/com/ComObject.h"
#include "localmapi/com/ComPtr.h"
#include "localmapi/model/RowSource.h"
#include "mapi/MapiFlags.h"
#include "mapi/MapiInterfaces.h"

#include <memory>

namespace localmapi {

// `keeps` is the object that the source borrows from, which lives as long as the table; null when it borrows from none.
// `flags`: MAPI_UNICODE makes the texts of columns wide that ask for no width, those shown at first included.
ComPtr<IMAPITable> MakeTable(std::unique_ptr<RowSource> rows, ComPtr<IUnknown> keeps, ULONG flags, SharedLock lock,
                             ULONG tableType = TBLTYPE_SNAPSHOT);

}  // namespace localmapi
